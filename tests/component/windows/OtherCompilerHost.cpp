// A host as the other compiler family lays it out: other rules for virtual tables, thunks and
// returned structures. It calls the slots of every interface, in both directions.
//
//   host.exe PATH-OF-THE-DLL
#include <windows.h>

#include <objbase.h>
#include <stdint.h>
#include <stdio.h>
#include <string.h>

#include "core/AnimChain.h"
#include "core/AnimIcon.h"
#include "core/AnimInterfaces.h"
#include "tests/support/Check.h"

// That compiler's sign that floating point is in use.
extern "C" {
int _fltused = 1;
}

namespace {

constexpr GUID kAnyClass = {1, 2, 3, {4, 5, 6, 7, 8, 9, 10, 11}};

// The string class of the library as this compiler would return it. Its texts stay behind: what
// frees them is not part of this test.
struct Text {
  const char* characters;
  ~Text() { characters = nullptr; }
};

struct Icon : IUnknown {
  virtual HRESULT STDMETHODCALLTYPE IconCall1(intptr_t a, intptr_t b) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetLabel(char* buffer, int size) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetLongLabel(char* buffer, int size) = 0;
  virtual HRESULT STDMETHODCALLTYPE IconCall4() = 0;
  virtual HRESULT STDMETHODCALLTYPE GetAttribute(const char* name, char* buffer, int size) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetDisplayName(char* buffer, int size) = 0;
  virtual Text STDMETHODCALLTYPE GetIconName() = 0;
  virtual Text STDMETHODCALLTYPE GetNameKey() = 0;
  virtual bool STDMETHODCALLTYPE IsDefaultActive() = 0;
};

#define NEED(condition)       \
  do {                        \
    CHECK(condition);         \
    if (failures > 0) return; \
  } while (0)

bool Same(const char* a, const char* b) {
  return strcmp(a, b) == 0;
}

template <class Interface>
Interface* Query(IUnknown* object) {
  void* result = nullptr;
  object->QueryInterface(Interface::kIid, &result);
  return static_cast<Interface*>(result);
}

// --- the host's own objects, which live longer than all references to them

template <class Interface>
class HostObject : public IAnimLinkable, public Interface {
 public:
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** result) override {
    *result = nullptr;
    if (IsEqualGUID(iid, IAnimLinkable::kIid) || IsEqualGUID(iid, IID_IUnknown))
      *result = Unknown();
    if (IsEqualGUID(iid, Interface::kIid)) *result = static_cast<Interface*>(this);
    if (*result) ++references;
    return *result ? S_OK : E_NOINTERFACE;
  }
  ULONG STDMETHODCALLTYPE AddRef() override { return ++references; }
  ULONG STDMETHODCALLTYPE Release() override { return --references; }
  HRESULT STDMETHODCALLTYPE Link(IUnknown*, int*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE Unlink() override { return E_NOTIMPL; }

  IUnknown* Unknown() { return static_cast<IAnimLinkable*>(this); }

  ULONG references = 1;
  bool attached = false;
};

// Answers the requests that arrive from the chain and notes their arguments.
class Source final : public HostObject<IAnimFilterDestCallsThis> {
 public:
  HRESULT STDMETHODCALLTYPE ReadRows(int destX, int destY, int srcX, int srcY, int width,
                                     int height, BYTE** colourRows, BYTE** maskRows) override {
    const int now[] = {destX, destY, srcX, srcY, width, height};
    memcpy(request, now, sizeof now);
    for (int i = 0; i < 3 * width; ++i) colourRows[destY][3 * destX + i] = BYTE(i + 1);
    for (int i = 0; i < width; ++i) maskRows[destY][destX + i] = BYTE(i + 100);
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE SetAbort(bool newAbort) override {
    abort = newAbort;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE Prepare(bool* changed, int* revision, bool trackRevision) override {
    tracked = trackRevision;
    *changed = true;
    *revision = 7;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE GetInfo(int*, int*, int*, int*, int*, int*) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE AttachDestination(IUnknown* newDestination) override {
    attached = newDestination != nullptr;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE ReadPixel(BYTE* pixel) override {
    pixel[0] = 10, pixel[1] = 20, pixel[2] = 30, pixel[3] = 40;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE SendToSource(intptr_t newMessage) override {
    message = newMessage;
    return 0x77;
  }

  int request[6] = {};
  bool abort = false, tracked = false;
  intptr_t message = 0;
};

// Is told about the picture, and answers questions.
class Destination final : public HostObject<IAnimFilterSrcCallsThis> {
 public:
  HRESULT STDMETHODCALLTYPE SetPictureSize(int w, int h) override { return Note(size, w, h); }
  HRESULT STDMETHODCALLTYPE SetOffset(int x, int y) override { return Note(offset, x, y); }
  HRESULT STDMETHODCALLTYPE SetExtent(int w, int h) override { return Note(extent, w, h); }
  HRESULT STDMETHODCALLTYPE SetTargetSize(int w, int h) override { return Note(target, w, h); }
  HRESULT STDMETHODCALLTYPE QuerySize(int* w, int* h, double newAspect) override {
    aspect = newAspect;
    *w = 640, *h = 480;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE SetZoom(double newZoom) override {
    zoom = newZoom;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE SetMark(int a, int b) override { return Note(mark, a, b); }
  HRESULT STDMETHODCALLTYPE GetMark(int* a, int* b) override {
    *a = 11, *b = 12;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE Lock() override { return ++locks, S_OK; }
  HRESULT STDMETHODCALLTYPE Unlock() override { return ++unlocks, S_OK; }
  HRESULT STDMETHODCALLTYPE AttachSource(IUnknown* newSource) override {
    attached = newSource != nullptr;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE ExpandText(const char* text, char** expanded) override {
    static char answer[] = "expanded";
    *expanded = Same(text, "short") ? answer : nullptr;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE QueryPrintScale(double* scale) override {
    *scale = 2.5;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE HostCall3(intptr_t a, intptr_t b, intptr_t c) override {
    return HRESULT(100 * a + 10 * b + c);
  }
  HRESULT STDMETHODCALLTYPE HostCall1(intptr_t a) override { return HRESULT(a + 1000); }
  HRESULT STDMETHODCALLTYPE HostCall1b(intptr_t a) override { return HRESULT(a + 2000); }

  int size[2] = {}, offset[2] = {}, extent[2] = {}, target[2] = {}, mark[2] = {};
  double aspect = 0, zoom = 0;
  int locks = 0, unlocks = 0;

 private:
  HRESULT Note(int (&pair)[2], int a, int b) {
    pair[0] = a, pair[1] = b;
    return S_OK;
  }
};

bool Is(const int (&pair)[2], int a, int b) {
  return pair[0] == a && pair[1] == b;
}

// --- of every interface the slots: some that lie before others, and the last, which lies right
// only if all before it do

void CallFilter(IAnimFilter* filter, Source& source, Destination& destination) {
  char text[100] = "";
  int order = 0, kind = 0;
  CHECK(filter->GetName(text, sizeof text) == S_OK && Same(text, "ZNFilter.Invert.1"));
  CHECK(filter->GetOrder(&order) == S_OK && order == 5000);
  CHECK(filter->GetKind(&kind) == S_OK && kind == 39);
  CHECK(filter->SetSource(source.Unknown()) == S_OK && source.attached);
  CHECK(filter->SetDestination(destination.Unknown()) == S_OK && destination.attached);
  void* neighbour = nullptr;
  CHECK(filter->GetSource(IAnimFilterDestCallsThis::kIid, &neighbour) == S_OK &&
        neighbour == static_cast<IAnimFilterDestCallsThis*>(&source));
  source.Release();
  CHECK(filter->GetDestination(IAnimFilterSrcCallsThis::kIid, &neighbour) == S_OK &&
        neighbour == static_cast<IAnimFilterSrcCallsThis*>(&destination));
  destination.Release();
  CHECK(filter->SetClassId(kAnyClass) == S_OK && filter->GetName(text, sizeof text) == S_OK &&
        Same(text, ""));
}

void CallIcon(IAnimFilter* filter) {
  Icon* icon = nullptr;
  NEED(filter->CreateIcon(IAnimFilterIcon::kIid, reinterpret_cast<void**>(&icon)) == S_OK);
  CHECK(Same(icon->GetIconName().characters, "icons4_invert"));
  CHECK(Same(icon->GetNameKey().characters, "IDS_INVERT_NAME"));
  CHECK(icon->IsDefaultActive());
  IAnimLinkable* linkable = Query<IAnimLinkable>(icon);
  NEED(linkable);
  CHECK(linkable->Unlink() == S_OK);
  linkable->Release();
  CHECK(icon->Release() == 0);
}

void CallDownstream(IAnimFilter* filter, Destination& destination) {
  auto* downstream = Query<IAnimFilterSrcCallsThis>(filter);
  NEED(downstream);
  CHECK(downstream->SetPictureSize(7, 5) == S_OK);
  CHECK(downstream->SetOffset(1, 2) == S_OK);
  CHECK(downstream->SetExtent(3, 4) == S_OK);
  CHECK(downstream->SetTargetSize(70, 50) == S_OK && Is(destination.target, 70, 50));
  int w = 0, h = 0;
  CHECK(downstream->QuerySize(&w, &h, 1.25) == S_OK && w == 640 && h == 480);
  CHECK(destination.aspect == 1.25);
  CHECK(downstream->SetZoom(0.375) == S_OK && destination.zoom == 0.375);
  CHECK(downstream->SetMark(8, 9) == S_OK && Is(destination.mark, 8, 9));
  CHECK(downstream->GetMark(&w, &h) == S_OK && w == 11 && h == 12);
  CHECK(downstream->Lock() == S_OK && destination.locks == 1);
  CHECK(downstream->Unlock() == S_OK && destination.unlocks == 1);
  char* expanded = nullptr;
  CHECK(downstream->ExpandText("short", &expanded) == S_OK && Same(expanded, "expanded"));
  double scale = 0;
  CHECK(downstream->QueryPrintScale(&scale) == S_OK && scale == 2.5);
  CHECK(downstream->HostCall3(1, 2, 3) == 123);
  CHECK(downstream->HostCall1(4) == 1004);
  CHECK(downstream->HostCall1b(5) == 2005);
  downstream->Release();
}

void CallParameters(IAnimFilter* filter) {
  auto* parameters = Query<IAnimFilterParameter>(filter);
  NEED(parameters);
  char text[100] = "";
  CHECK(parameters->SetParameter("Inversity=100", 0) == S_OK);
  CHECK(parameters->SetNamedValue("key", "value") == S_OK);
  CHECK(parameters->GetNamedValue("key", text, sizeof text) == S_OK && Same(text, "value"));
  parameters->Release();
}

void CallUpstream(IAnimFilter* filter, Source& source, Destination& destination) {
  auto* upstream = Query<IAnimFilterDestCallsThis>(filter);
  NEED(upstream);
  bool changed = false;
  int revision = -1;
  CHECK(upstream->Prepare(&changed, &revision, true) == S_OK && changed && source.tracked);
  CHECK(Is(destination.size, 7, 5) && Is(destination.offset, 1, 2) && Is(destination.extent, 3, 4));
  int w = 0, h = 0, x = 0, y = 0, ew = 0, eh = 0;
  CHECK(upstream->GetInfo(&w, &h, &x, &y, &ew, &eh) == S_OK);
  CHECK(w == 7 && h == 5 && x == 1 && y == 2 && ew == 3 && eh == 4 && !source.tracked);

  BYTE colour[12] = {}, mask[4] = {};
  BYTE *colourRows[] = {nullptr, nullptr, colour}, *maskRows[] = {nullptr, nullptr, mask};
  CHECK(upstream->ReadRows(1, 2, 3, 4, 2, 1, colourRows, maskRows) == S_OK);
  constexpr int kRequest[] = {1, 2, 3, 4, 2, 1};
  constexpr BYTE kColour[] = {0, 0, 0, 254, 253, 252, 251, 250, 249, 0, 0, 0};
  constexpr BYTE kMask[] = {0, 100, 101, 0};
  CHECK(memcmp(source.request, kRequest, sizeof kRequest) == 0);
  CHECK(memcmp(colour, kColour, sizeof colour) == 0 && memcmp(mask, kMask, sizeof mask) == 0);
  CHECK(upstream->SetAbort(true) == S_OK && source.abort);
  CHECK(upstream->SetAbort(false) == S_OK && !source.abort);
  BYTE pixel[4] = {};
  constexpr BYTE kPixel[] = {245, 235, 225, 40};
  CHECK(upstream->ReadPixel(pixel) == S_OK && memcmp(pixel, kPixel, sizeof pixel) == 0);
  CHECK(upstream->SendToSource(0x123456789A) == 0x77 && source.message == 0x123456789A);
  upstream->Release();
}

IAnimFilter* NewFilter(IAnimFilterCreator* creator, const char* progId) {
  void* filter = nullptr;
  CHECK(creator->CreateFilter(progId, IAnimFilter::kIid, &filter) == S_OK);
  return static_cast<IAnimFilter*>(filter);
}

void CallCreator(IAnimFilterCreator* creator) {
  int count = 0, order = 0;
  char name[100] = "";
  CHECK(creator->GetFilterCount(&count) == S_OK && count >= 46);
  CHECK(creator->GetFilterInfo(0, name, sizeof name, &order) == S_OK &&
        Same(name, "ZNFilter.RotCrop.1") && order == 200);
}

void CallChain(IAnimFilterChain* chain, IAnimFilterCreator* creator, Source& source,
               Destination& destination) {
  char text[200] = "";
  int count = -1;
  void* found = nullptr;
  CHECK(chain->SetSource(source.Unknown()) == S_OK);
  CHECK(chain->SetDestination(destination.Unknown()) == S_OK);
  IAnimFilter* sepia = NewFilter(creator, "ZNFilter.Sepia.1");
  NEED(sepia);
  CHECK(chain->Insert(sepia) == S_OK && chain->GetCount(&count) == S_OK && count == 1);
  CHECK(chain->GetAt(0, IAnimFilter::kIid, &found) == S_OK && found == sepia);
  CHECK(sepia->Release() > 0);
  CHECK(chain->RemoveAt(0) == S_OK && sepia->Release() == 0);
  destination.locks = destination.unlocks = 0;
  CHECK(chain->TouchChain(1, 2) == S_OK && destination.locks == 1 && destination.unlocks == 1);
  CHECK(chain->SetChainText("ZNFilter.Sepia.1<Sepia=060>", "<", ">", creator) == S_OK);
  CHECK(chain->GetChainText(text, sizeof text, "[", "]", false) == S_OK &&
        Same(text, "ZNFilter.Sepia.1[Sepia=060]"));
  CHECK(chain->GetChainText(text, sizeof text, "[", "]", true) == S_OK &&
        !Same(text, "ZNFilter.Sepia.1[Sepia=060]"));
  CHECK(chain->CheckArgument(0) == S_OK && chain->CheckArgument(0x1234) == 0x1234);
  CHECK(chain->RemoveAll() == S_OK);
  CHECK(chain->SetSource(nullptr) == S_OK && chain->SetDestination(nullptr) == S_OK);
  CHECK(source.references == 1 && destination.references == 1);
}

using GetClassObject = HRESULT(STDAPICALLTYPE*)(REFCLSID, REFIID, void**);
using CreateCreator = HRESULT(STDAPICALLTYPE*)(REFIID, void**);
using CanUnload = HRESULT(STDAPICALLTYPE*)();

template <class Function>
Function Find(HMODULE library, const char* name) {
  return reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(library, name)));
}

IAnimFilterChain* NewChain(HMODULE library) {
  const auto getClassObject = Find<GetClassObject>(library, "DllGetClassObject");
  IClassFactory* factory = nullptr;
  void* chain = nullptr;
  if (!getClassObject) return nullptr;
  getClassObject(kChainClassId, IID_IClassFactory, reinterpret_cast<void**>(&factory));
  if (!factory) return nullptr;
  CHECK(factory->CreateInstance(nullptr, IAnimFilterChain::kIid, &chain) == S_OK);
  factory->Release();
  return static_cast<IAnimFilterChain*>(chain);
}

void UseLibrary(HMODULE library) {
  const auto createCreator = Find<CreateCreator>(library, "FxboxCreateCreator");
  NEED(createCreator);
  IAnimFilterCreator* creator = nullptr;
  NEED(createCreator(IAnimFilterCreator::kIid, reinterpret_cast<void**>(&creator)) == S_OK);
  CallCreator(creator);

  Source source;
  Destination destination;
  IAnimFilter* filter = NewFilter(creator, "ZNFilter.Invert.1");
  NEED(filter);
  CallIcon(filter);
  CallFilter(filter, source, destination);
  CallDownstream(filter, destination);
  CallParameters(filter);
  CallUpstream(filter, source, destination);
  filter->SetSource(nullptr);
  filter->SetDestination(nullptr);
  CHECK(filter->Release() == 0);

  IAnimFilterChain* chain = NewChain(library);
  NEED(chain);
  CallChain(chain, creator, source, destination);
  CHECK(chain->Release() == 0);
  CHECK(creator->Release() == 0);

  const auto canUnload = Find<CanUnload>(library, "DllCanUnloadNow");
  CHECK(canUnload && canUnload() == S_OK);
}

LONG WINAPI TellOfACrash(EXCEPTION_POINTERS* crash) {
  fprintf(stderr, "exception %lx\n", crash->ExceptionRecord->ExceptionCode);
  fflush(stderr);
  ExitProcess(86);
}

}  // namespace

int main(int argc, char** argv) {
  SetUnhandledExceptionFilter(TellOfACrash);
  if (argc != 2) return 2;
  HMODULE library = LoadLibraryA(argv[1]);
  CHECK(library != nullptr);
  if (library) {
    CHECK(CoInitialize(nullptr) == S_FALSE);  // the library has done it for this thread
    UseLibrary(library);
    CoUninitialize();
    CHECK(FreeLibrary(library));
    CHECK(!GetModuleHandleA("Fxbox4.dll"));
    CHECK(CoInitialize(nullptr) == S_OK);  // and has taken it back
    CoUninitialize();
  }
  return failures > 0;
}
