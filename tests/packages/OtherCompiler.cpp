// A host in C++ for a compiler of the other family: its tables of virtual functions on one side,
// those of the module on the other. It lives without that family's run-time libraries.
#include <component/Fxbox4.h>
#include <core/AnimChain.h>
#include <core/AnimIcon.h>
#include <core/AnimInterfaces.h>
#include <stdio.h>
#include <string.h>

// That compiler's sign that floating point is in use.
extern "C" {
int _fltused = 1;
}

namespace {

int failures = 0;

void Check(bool right, const char* what) {
  if (right) return;
  printf("wrong: %s\n", what);
  ++failures;
}
#define CHECK(condition) Check(condition, #condition)

constexpr int kWidth = 6;
constexpr int kHeight = 5;

BYTE ByteAt(int y, int i) {
  return static_cast<BYTE>(13 * i + 29 * y);
}

class Source final : public IAnimFilterDestCallsThis {
 public:
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** result) override {
    const bool isKnown =
        memcmp(&iid, &kIid, sizeof iid) == 0 || memcmp(&iid, &IID_IUnknown, sizeof iid) == 0;
    *result = isKnown ? this : nullptr;
    if (isKnown) AddRef();
    return isKnown ? S_OK : E_NOINTERFACE;
  }
  ULONG STDMETHODCALLTYPE AddRef() override { return ++references; }
  ULONG STDMETHODCALLTYPE Release() override { return --references; }

  HRESULT STDMETHODCALLTYPE ReadRows(int destX, int destY, int srcX, int srcY, int width,
                                     int height, BYTE** colourRows, BYTE** maskRows) override {
    for (int y = 0; y < height; ++y) {
      for (int i = 0; i < 3 * width; ++i) {
        colourRows[destY + y][3 * destX + i] = ByteAt(srcY + y, 3 * srcX + i);
      }
      memset(maskRows[destY + y] + destX, 0, static_cast<size_t>(width));
    }
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE SetAbort(bool newAbort) override {
    abort = newAbort;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE Prepare(bool*, int*, bool) override {
    if (!destination) return S_OK;
    destination->SetPictureSize(kWidth, kHeight);
    destination->SetExtent(kWidth, kHeight);
    destination->SetOffset(0, 0);
    return destination->SetTargetSize(kWidth, kHeight);
  }
  HRESULT STDMETHODCALLTYPE GetInfo(int*, int*, int*, int*, int*, int*) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE AttachDestination(IUnknown* given) override {
    destination = nullptr;  // not counted
    if (!given) return S_OK;
    const HRESULT status = given->QueryInterface(IAnimFilterSrcCallsThis::kIid,
                                                 reinterpret_cast<void**>(&destination));
    if (destination) destination->Release();
    return status;
  }
  HRESULT STDMETHODCALLTYPE ReadPixel(BYTE* pixel) override {
    pixel[0] = 10, pixel[1] = 20, pixel[2] = 30, pixel[3] = 40;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE SendToSource(std::intptr_t newMessage) override {
    message = newMessage;
    return 0x77;
  }

  ULONG references = 1;
  bool abort = false;
  std::intptr_t message = 0;

 private:
  IAnimFilterSrcCallsThis* destination = nullptr;
};

// Of two interfaces, so that calls come through a step from one to the other. Its answers name the
// slots.
class Destination final : public IAnimLinkable, public IAnimFilterSrcCallsThis {
 public:
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** result) override {
    *result = nullptr;
    if (memcmp(&iid, &IID_IUnknown, sizeof iid) == 0) *result = static_cast<IAnimLinkable*>(this);
    if (memcmp(&iid, &IAnimFilterSrcCallsThis::kIid, sizeof iid) == 0) {
      *result = static_cast<IAnimFilterSrcCallsThis*>(this);
    }
    if (*result) AddRef();
    return *result ? S_OK : E_NOINTERFACE;
  }
  ULONG STDMETHODCALLTYPE AddRef() override { return ++references; }
  ULONG STDMETHODCALLTYPE Release() override { return --references; }
  HRESULT STDMETHODCALLTYPE Link(IUnknown*, int*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE Unlink() override { return E_NOTIMPL; }

  HRESULT STDMETHODCALLTYPE SetPictureSize(int, int) override { return S_OK; }
  HRESULT STDMETHODCALLTYPE SetOffset(int, int) override { return S_OK; }
  HRESULT STDMETHODCALLTYPE SetExtent(int, int) override { return S_OK; }
  HRESULT STDMETHODCALLTYPE SetTargetSize(int w, int h) override { return Note(w, h); }
  HRESULT STDMETHODCALLTYPE QuerySize(int* w, int* h, double aspect) override {
    *w = 640, *h = 480;
    return Note(aspect, 1);
  }
  HRESULT STDMETHODCALLTYPE SetZoom(double zoom) override { return Note(zoom, 2); }
  HRESULT STDMETHODCALLTYPE SetMark(int a, int b) override { return Note(a, b); }
  HRESULT STDMETHODCALLTYPE GetMark(int* a, int* b) override {
    *a = 11, *b = 12;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE Lock() override { return Note(3, 3); }
  HRESULT STDMETHODCALLTYPE Unlock() override { return Note(4, 4); }
  HRESULT STDMETHODCALLTYPE AttachSource(IUnknown*) override { return S_OK; }
  HRESULT STDMETHODCALLTYPE ExpandText(const char* text, char** expanded) override {
    static char answer[] = "expanded";
    *expanded = strcmp(text, "short") == 0 ? answer : nullptr;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE QueryPrintScale(double* scale) override {
    *scale = 2.5;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE HostCall3(std::intptr_t a, std::intptr_t b, std::intptr_t c) override {
    return static_cast<HRESULT>(100 * a + 10 * b + c);
  }
  HRESULT STDMETHODCALLTYPE HostCall1(std::intptr_t a) override {
    return static_cast<HRESULT>(a + 1000);
  }
  HRESULT STDMETHODCALLTYPE HostCall1b(std::intptr_t a) override {
    return static_cast<HRESULT>(a + 2000);
  }

  bool Noted(double a, double b) const { return first == a && second == b; }
  ULONG references = 1;

 private:
  HRESULT Note(double a, double b) {
    first = a, second = b;
    return S_OK;
  }
  double first = 0, second = 0;
};

// Strings as this compiler would return them. Their texts stay behind: what frees them is the
// library's business.
struct Text {
  const char* characters;
  ~Text() { characters = nullptr; }
};
struct IconWithTexts : IUnknown {
  virtual void STDMETHODCALLTYPE Slot3() = 0;
  virtual void STDMETHODCALLTYPE Slot4() = 0;
  virtual void STDMETHODCALLTYPE Slot5() = 0;
  virtual void STDMETHODCALLTYPE Slot6() = 0;
  virtual void STDMETHODCALLTYPE Slot7() = 0;
  virtual void STDMETHODCALLTYPE Slot8() = 0;
  virtual Text STDMETHODCALLTYPE GetIconName() = 0;
  virtual Text STDMETHODCALLTYPE GetNameKey() = 0;
  virtual bool STDMETHODCALLTYPE IsDefaultActive() = 0;
};

void CallIcon(IAnimFilter& filter) {
  IconWithTexts* icon = nullptr;
  filter.CreateIcon(IAnimFilterIcon::kIid, reinterpret_cast<void**>(&icon));
  CHECK(icon);
  if (!icon) return;
  CHECK(strcmp(icon->GetIconName().characters, "icons4_invert") == 0);
  CHECK(strcmp(icon->GetNameKey().characters, "IDS_INVERT_NAME") == 0);
  CHECK(icon->IsDefaultActive());
  CHECK(icon->Release() == 0);
}

void CallDownstream(IAnimFilterSrcCallsThis& downstream, const Destination& destination) {
  int w = 0, h = 0;
  char* expanded = nullptr;
  double scale = 0;
  CHECK(downstream.SetTargetSize(70, 50) == S_OK && destination.Noted(70, 50));
  CHECK(downstream.QuerySize(&w, &h, 1.25) == S_OK && w == 640 && h == 480);
  CHECK(destination.Noted(1.25, 1));
  CHECK(downstream.SetZoom(0.375) == S_OK && destination.Noted(0.375, 2));
  CHECK(downstream.SetMark(8, 9) == S_OK && destination.Noted(8, 9));
  CHECK(downstream.GetMark(&w, &h) == S_OK && w == 11 && h == 12);
  CHECK(downstream.Lock() == S_OK && destination.Noted(3, 3));
  CHECK(downstream.Unlock() == S_OK && destination.Noted(4, 4));
  CHECK(downstream.ExpandText("short", &expanded) == S_OK && strcmp(expanded, "expanded") == 0);
  CHECK(downstream.QueryPrintScale(&scale) == S_OK && scale == 2.5);
  CHECK(downstream.HostCall3(1, 2, 3) == 123);
  CHECK(downstream.HostCall1(4) == 1004);
  CHECK(downstream.HostCall1b(5) == 2005);
}

template <class Interface>
Interface* Query(IUnknown& object) {
  void* result = nullptr;
  object.QueryInterface(Interface::kIid, &result);
  CHECK(result);
  return static_cast<Interface*>(result);
}

// Of every interface the slots that others do not call, and the last, which lies right only if all
// before it do.
void CallFilter(IAnimFilter& filter, Source& source) {
  char text[100] = "";
  int order = 0, kind = 0;
  CHECK(filter.GetName(text, sizeof text) == S_OK && strcmp(text, "ZNFilter.Invert.1") == 0);
  CHECK(filter.GetOrder(&order) == S_OK && order == 5000);
  CHECK(filter.GetKind(&kind) == S_OK && kind == 39);
  CallIcon(filter);

  auto* const parameters = Query<IAnimFilterParameter>(filter);
  CHECK(parameters->SetNamedValue("key", "value") == S_OK);
  CHECK(parameters->GetNamedValue("key", text, sizeof text) == S_OK && strcmp(text, "value") == 0);
  parameters->Release();

  auto* const upstream = Query<IAnimFilterDestCallsThis>(filter);
  BYTE pixel[4] = {};
  constexpr BYTE kPixel[] = {245, 235, 225, 40};
  CHECK(upstream->ReadPixel(pixel) == S_OK && memcmp(pixel, kPixel, sizeof pixel) == 0);
  CHECK(upstream->SetAbort(true) == S_OK && source.abort);
  CHECK(upstream->SetAbort(false) == S_OK && !source.abort);
  CHECK(upstream->SendToSource(0x123456789A) == 0x77 && source.message == 0x123456789A);
  upstream->Release();

  Destination destination;
  auto* const downstream = Query<IAnimFilterSrcCallsThis>(filter);
  CHECK(filter.SetDestination(static_cast<IAnimLinkable*>(&destination)) == S_OK);
  CallDownstream(*downstream, destination);
  filter.SetDestination(nullptr);
  downstream->Release();
  CHECK(destination.references == 1);
  CHECK(filter.SetClassId(IID_IUnknown) == S_OK && filter.GetName(text, sizeof text) == S_OK &&
        text[0] == 0);
}

bool PullsInverted(IAnimFilterDestCallsThis& tail) {
  BYTE colour[kHeight][3 * kWidth], mask[kHeight][kWidth];
  BYTE* colourRows[kHeight];
  BYTE* maskRows[kHeight];
  for (int y = 0; y < kHeight; ++y) {
    colourRows[y] = colour[y];
    maskRows[y] = mask[y];
  }
  bool changed = false;
  int revision = 0;
  tail.Prepare(&changed, &revision, false);
  if (tail.ReadRows(0, 0, 0, 0, kWidth, kHeight, colourRows, maskRows) != S_OK) return false;
  for (int y = 0; y < kHeight; ++y) {
    for (int i = 0; i < 3 * kWidth; ++i) {
      if (colour[y][i] != 255 - ByteAt(y, i)) return false;
    }
  }
  return true;
}

void Run(Source& source, IAnimFilterCreator& creator) {
  IAnimFilterChain* chain = nullptr;
  char text[200] = "";
  int order = 0;
  CHECK(creator.GetFilterInfo(0, text, sizeof text, &order) == S_OK && order == 200);
  creator.CreateChain(IAnimFilterChain::kIid, reinterpret_cast<void**>(&chain));
  CHECK(chain);
  if (!chain) return;
  chain->SetSource(&source);
  chain->SetChainText("ZNFilter.Invert.1(Inversity=100)", "(", ")", &creator);
  chain->GetChainText(text, sizeof text, "(", ")", false);
  printf("%s\n", text);
  CHECK(strcmp(text, "ZNFilter.Invert.1(Inversity=100)") == 0);
  CHECK(chain->CheckArgument(0x1234) == 0x1234);
  IAnimFilter* filter = nullptr;
  chain->GetAt(-1, IAnimFilter::kIid, reinterpret_cast<void**>(&filter));
  auto* const tail = Query<IAnimFilterDestCallsThis>(*filter);
  CHECK(PullsInverted(*tail));
  tail->Release();
  CallFilter(*filter, source);
  filter->Release();
  chain->SetSource(nullptr);
  chain->Release();
}

}  // namespace

int main() {
  IAnimFilterCreator* creator = nullptr;
  FxboxCreateCreator(IAnimFilterCreator::kIid, reinterpret_cast<void**>(&creator));
  if (!creator) return printf("no creator\n"), 1;
  Source source;
  Run(source, *creator);
  creator->Release();
  CHECK(source.references == 1);
  return failures > 0;
}
