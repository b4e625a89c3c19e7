// A host as the other compiler family lays it out: other rules for virtual tables, thunks and
// returned structures. It declares every interface itself and calls every slot, in both directions.
//
//   host.exe PATH-OF-THE-DLL
#include <windows.h>

#include <objbase.h>
#include <stdint.h>
#include <stdio.h>
#include <string.h>

// That compiler's sign that floating point is in use.
extern "C" {
int _fltused = 1;
}

#define SLOT virtual HRESULT STDMETHODCALLTYPE

namespace {

constexpr GUID kChainClass = {
    0x6E280DD9, 0x4FF3, 0x4EB6, {0x8B, 0x56, 0xF7, 0xC4, 0x5A, 0x43, 0xC5, 0x1E}};
constexpr GUID kInvertClass = {
    0xA0F819E8, 0x8CD3, 0x48AC, {0x9F, 0x2A, 0x49, 0x27, 0x9D, 0x07, 0x97, 0xC4}};
constexpr GUID kAnyClass = {1, 2, 3, {4, 5, 6, 7, 8, 9, 10, 11}};

struct IAnimFilter : IUnknown {
  static constexpr GUID kId = {
      0x22E7124D, 0x0B5A, 0x449C, {0xBC, 0x15, 0x21, 0x3E, 0x7B, 0x98, 0x32, 0x4B}};
  SLOT GetName(char* buffer, int size) = 0;
  SLOT CreateIcon(REFIID iid, void** result) = 0;
  SLOT GetOrder(int* order) = 0;
  SLOT GetKind(int* kind) = 0;
  SLOT GetDestination(REFIID iid, void** result) = 0;
  SLOT GetSource(REFIID iid, void** result) = 0;
  SLOT SetDestination(IUnknown* destination) = 0;
  SLOT SetSource(IUnknown* source) = 0;
  SLOT CreateFilterDialog(REFIID iid, void** result) = 0;
  SLOT SetClassId(REFCLSID classId) = 0;
};

struct IAnimFilterSrcCallsThis : IUnknown {
  static constexpr GUID kId = {
      0x96AFC5EB, 0x1824, 0x4836, {0xBA, 0x35, 0x58, 0x0C, 0x97, 0x57, 0x23, 0xF3}};
  SLOT SetPictureSize(int width, int height) = 0;
  SLOT SetOffset(int x, int y) = 0;
  SLOT SetExtent(int width, int height) = 0;
  SLOT SetTargetSize(int width, int height) = 0;
  SLOT QuerySize(int* width, int* height, double aspect) = 0;
  SLOT SetZoom(double zoom) = 0;
  SLOT SetMark(int a, int b) = 0;
  SLOT GetMark(int* a, int* b) = 0;
  SLOT Lock() = 0;
  SLOT Unlock() = 0;
  SLOT AttachSource(IUnknown* source) = 0;
  SLOT ExpandText(const char* text, char** expanded) = 0;
  SLOT QueryPrintScale(double* scale) = 0;
  SLOT HostCall3(intptr_t a, intptr_t b, intptr_t c) = 0;
  SLOT HostCall1(intptr_t a) = 0;
  SLOT HostCall1b(intptr_t a) = 0;
};

struct IAnimFilterDestCallsThis : IUnknown {
  static constexpr GUID kId = {
      0x4D415C7B, 0x8861, 0x4493, {0x9F, 0xE9, 0x75, 0x82, 0x11, 0x92, 0x45, 0x08}};
  SLOT ReadRows(int destX, int destY, int srcX, int srcY, int width, int height, BYTE** colourRows,
                BYTE** maskRows) = 0;
  SLOT SetAbort(bool abort) = 0;
  SLOT Prepare(bool* changed, int* revision, bool trackRevision) = 0;
  SLOT GetInfo(int* width, int* height, int* offsetX, int* offsetY, int* extentWidth,
               int* extentHeight) = 0;
  SLOT AttachDestination(IUnknown* destination) = 0;
  SLOT ReadPixel(BYTE* pixel) = 0;
  SLOT SendToSource(intptr_t message) = 0;
};

struct IAnimFilterParameter : IUnknown {
  static constexpr GUID kId = {
      0x663A199C, 0x2C80, 0x4070, {0x8D, 0x31, 0xB2, 0x4C, 0x5F, 0x3E, 0x73, 0x05}};
  SLOT SetParameter(const char* text, int flag) = 0;
  SLOT GetParameter(char* buffer, int size) = 0;
  SLOT GetActiveParameter(char* buffer, int size) = 0;
  SLOT SetNamedValue(const char* key, const char* value) = 0;
  SLOT GetNamedValue(const char* key, char* buffer, int size) = 0;
};

// The string class of the library as this compiler would return it. Its texts stay behind: what
// frees them is not part of this test.
struct Text {
  const char* characters;
  ~Text() { characters = nullptr; }
};

struct IAnimFilterIcon : IUnknown {
  static constexpr GUID kId = {
      0xC2A4A3B1, 0x0F0E, 0x4E1B, {0x8D, 0x8B, 0x6C, 0x5B, 0x0C, 0x9C, 0x7E, 0x52}};
  SLOT IconCall1(intptr_t a, intptr_t b) = 0;
  SLOT GetLabel(char* buffer, int size) = 0;
  SLOT GetLongLabel(char* buffer, int size) = 0;
  SLOT IconCall4() = 0;
  SLOT GetAttribute(const char* name, char* buffer, int size) = 0;
  SLOT GetDisplayName(char* buffer, int size) = 0;
  virtual Text STDMETHODCALLTYPE GetIconName() = 0;
  virtual Text STDMETHODCALLTYPE GetNameKey() = 0;
  virtual bool STDMETHODCALLTYPE IsDefaultActive() = 0;
};

struct IAnimLinkable : IUnknown {
  static constexpr GUID kId = {
      0x5B0E1C36, 0x7A5D, 0x4C1E, {0x9D, 0x0C, 0x2C, 0x8F, 0x6A, 0x8B, 0x41, 0xE7}};
  SLOT Link(IUnknown* host, int* status) = 0;
  SLOT Unlink() = 0;
};

struct IAnimFilterCreator : IUnknown {
  static constexpr GUID kId = {
      0xA95D1F7E, 0x6B0C, 0x4D43, {0x8A, 0x2E, 0x5F, 0x9C, 0x3E, 0x7D, 0x1B, 0x68}};
  SLOT CreateFilter(const char* progId, REFIID iid, void** result) = 0;
  SLOT CreateFilterDialog(const char* progId, intptr_t host, REFIID iid, void** result) = 0;
  SLOT GetFilterCount(int* count) = 0;
  SLOT CreateFilterAt(int index, REFIID iid, void** result) = 0;
  SLOT CreateChain(REFIID iid, void** result) = 0;
  SLOT GetFilterInfo(int index, char* name, int size, int* order) = 0;
};

struct IAnimFilterChain : IUnknown {
  static constexpr GUID kId = {
      0xD3B7A9C4, 0x3E52, 0x4F0A, {0xB6, 0xD1, 0x90, 0xA5, 0xC7, 0xE8, 0x1F, 0x24}};
  SLOT SetSource(IUnknown* source) = 0;
  SLOT SetDestination(IUnknown* destination) = 0;
  SLOT GetCount(int* count) = 0;
  SLOT GetAt(int index, REFIID iid, void** result) = 0;
  SLOT FindByName(const char* name, REFIID iid, void** result) = 0;
  SLOT Insert(IUnknown* filter) = 0;
  SLOT InsertAt(int index, IUnknown* filter) = 0;
  SLOT RemoveAll() = 0;
  SLOT RemoveAt(int index) = 0;
  SLOT RemoveByNameLocked(const char* name) = 0;
  SLOT RemoveByName(const char* name) = 0;
  SLOT TouchChain(intptr_t a, intptr_t b) = 0;
  SLOT GetChainText(char* buffer, int size, const char* open, const char* close, bool active) = 0;
  SLOT SetChainTextLocked(const char* text, const char* open, const char* close,
                          IAnimFilterCreator* creator) = 0;
  SLOT SetChainText(const char* text, const char* open, const char* close,
                    IAnimFilterCreator* creator) = 0;
  SLOT UpdateChain(const char* text, const char* open, const char* close,
                   IAnimFilterCreator* creator) = 0;
  SLOT CheckArgument(intptr_t argument) = 0;
};

int failures = 0;

void Check(bool right, const char* what, int line) {
  if (right) return;
  fprintf(stderr, "line %d: wrong: %s\n", line, what);
  ++failures;
}
#define CHECK(condition) Check(condition, #condition, __LINE__)
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
  object->QueryInterface(Interface::kId, &result);
  return static_cast<Interface*>(result);
}

// --- the host's own objects, which live longer than all references to them

template <class Interface>
class HostObject : public IAnimLinkable, public Interface {
 public:
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** result) override {
    *result = nullptr;
    if (IsEqualGUID(iid, IAnimLinkable::kId) || IsEqualGUID(iid, IID_IUnknown)) *result = Unknown();
    if (IsEqualGUID(iid, Interface::kId)) *result = static_cast<Interface*>(this);
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

// A dialog may be there or not.
void CheckDialog(HRESULT status, void* dialog) {
  CHECK((status == S_OK) == (dialog != nullptr));
  if (dialog) static_cast<IUnknown*>(dialog)->Release();
}

// --- slot by slot

void CallFilter(IAnimFilter* filter, Source& source, Destination& destination) {
  char text[100] = "";
  int order = 0, kind = 0;
  CHECK(filter->GetName(text, sizeof text) == S_OK && Same(text, "ZNFilter.Invert.1"));
  CHECK(filter->GetOrder(&order) == S_OK && order == 5000);
  CHECK(filter->GetKind(&kind) == S_OK && kind == 39);
  IUnknown* none = filter;
  CHECK(filter->GetSource(IID_IUnknown, reinterpret_cast<void**>(&none)) == E_NOINTERFACE && !none);
  CHECK(filter->SetSource(source.Unknown()) == S_OK && source.attached);
  CHECK(filter->SetDestination(destination.Unknown()) == S_OK && destination.attached);
  void* neighbour = nullptr;
  CHECK(filter->GetSource(IAnimFilterDestCallsThis::kId, &neighbour) == S_OK &&
        neighbour == static_cast<IAnimFilterDestCallsThis*>(&source));
  source.Release();
  CHECK(filter->GetDestination(IAnimFilterSrcCallsThis::kId, &neighbour) == S_OK &&
        neighbour == static_cast<IAnimFilterSrcCallsThis*>(&destination));
  destination.Release();
  void* dialog = nullptr;
  const HRESULT status = filter->CreateFilterDialog(IID_IUnknown, &dialog);
  CheckDialog(status, dialog);
  CHECK(filter->SetClassId(kAnyClass) == S_OK && filter->GetName(text, sizeof text) == S_OK &&
        Same(text, ""));
  CHECK(filter->SetClassId(kInvertClass) == S_OK && filter->GetName(text, sizeof text) == S_OK &&
        Same(text, "ZNFilter.Invert.1"));
}

void CallIcon(IAnimFilter* filter) {
  IAnimFilterIcon* icon = nullptr;
  char text[100] = "untouched";
  NEED(filter->CreateIcon(IAnimFilterIcon::kId, reinterpret_cast<void**>(&icon)) == S_OK);
  CHECK(icon->IconCall1(1, 2) == S_OK);
  CHECK(icon->GetLabel(text, sizeof text) == S_OK && !Same(text, "untouched"));
  CHECK(icon->GetLongLabel(text, sizeof text) == S_OK);
  CHECK(icon->IconCall4() == S_OK);
  CHECK(icon->GetAttribute("IsActive", text, sizeof text) == S_OK && Same(text, "1"));
  CHECK(icon->GetDisplayName(text, sizeof text) == S_OK);
  CHECK(Same(icon->GetIconName().characters, "icons4_invert"));
  CHECK(Same(icon->GetNameKey().characters, "IDS_INVERT_NAME"));
  CHECK(icon->IsDefaultActive());
  IAnimLinkable* linkable = Query<IAnimLinkable>(icon);
  NEED(linkable);
  int status = 5;
  linkable->Link(nullptr, &status);
  CHECK(status == 0 || status == -1);
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
  CHECK(parameters->GetParameter(text, sizeof text) == S_OK && Same(text, "Inversity=100"));
  CHECK(parameters->GetActiveParameter(text, sizeof text) == S_OK && !Same(text, "Inversity=100"));
  CHECK(parameters->SetNamedValue("key", "value") == S_OK);
  CHECK(parameters->GetNamedValue("key", text, sizeof text) == S_OK && Same(text, "value"));
  CHECK(parameters->GetNamedValue("key", text, 5) == E_FAIL);
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
  CHECK(upstream->ReadRows(1, 2, 3, 4, 2, 1, colourRows, maskRows) != S_OK);
  CHECK(upstream->SetAbort(false) == S_OK && !source.abort);

  BYTE pixel[4] = {};
  constexpr BYTE kPixel[] = {245, 235, 225, 40};
  CHECK(upstream->ReadPixel(pixel) == S_OK && memcmp(pixel, kPixel, sizeof pixel) == 0);
  CHECK(upstream->SendToSource(0x123456789A) == 0x77 && source.message == 0x123456789A);
  upstream->Release();
}

// The two slots that link one side only.
void CallLinks(IAnimFilter* filter, Source& source, Destination& destination) {
  auto* upstream = Query<IAnimFilterDestCallsThis>(filter);
  auto* downstream = Query<IAnimFilterSrcCallsThis>(filter);
  CHECK(upstream->AttachDestination(nullptr) == S_OK && destination.references == 1);
  CHECK(downstream->AttachSource(nullptr) == S_OK && source.references == 1);
  CHECK(upstream->AttachDestination(destination.Unknown()) == S_OK && destination.references == 2);
  CHECK(downstream->AttachSource(source.Unknown()) == S_OK && source.references == 2);
  CHECK(filter->SetSource(nullptr) == S_OK && source.references == 1);
  CHECK(filter->SetDestination(nullptr) == S_OK && destination.references == 1);
  upstream->Release();
  downstream->Release();
}

void CallCreator(IAnimFilterCreator* creator) {
  int count = 0, order = 0;
  char name[100] = "";
  IAnimFilter* filter = nullptr;
  CHECK(creator->GetFilterCount(&count) == S_OK && count >= 46);
  CHECK(creator->GetFilterInfo(0, name, sizeof name, &order) == S_OK &&
        Same(name, "ZNFilter.RotCrop.1") && order == 200);
  CHECK(creator->GetFilterInfo(count, name, sizeof name, &order) == E_FAIL);
  CHECK(creator->CreateFilterAt(0, IAnimFilter::kId, reinterpret_cast<void**>(&filter)) == S_OK &&
        filter->Release() == 0);
  CHECK(creator->CreateFilter("ZNFilter.Invert", IAnimFilter::kId,
                              reinterpret_cast<void**>(&filter)) == E_FAIL &&
        !filter);
  void* dialog = nullptr;
  const HRESULT status = creator->CreateFilterDialog("ZNFilter.Invert.1", 0, IID_IUnknown, &dialog);
  CheckDialog(status, dialog);
}

IAnimFilter* NewFilter(IAnimFilterCreator* creator, const char* progId) {
  void* filter = nullptr;
  CHECK(creator->CreateFilter(progId, IAnimFilter::kId, &filter) == S_OK);
  return static_cast<IAnimFilter*>(filter);
}

int CountOf(IAnimFilterChain* chain) {
  int count = -1;
  CHECK(chain->GetCount(&count) == S_OK);
  return count;
}

void CallChain(IAnimFilterChain* chain, IAnimFilterCreator* creator, Source& source,
               Destination& destination) {
  char text[200] = "";
  void* found = nullptr;
  CHECK(chain->SetSource(source.Unknown()) == S_OK);
  CHECK(chain->SetDestination(destination.Unknown()) == S_OK);
  IAnimFilter* sepia = NewFilter(creator, "ZNFilter.Sepia.1");
  IAnimFilter* zero = NewFilter(creator, "ZNFilter.Zero.1");
  NEED(sepia && zero);
  CHECK(chain->Insert(sepia) == S_OK && chain->InsertAt(0, zero) == S_OK && CountOf(chain) == 2);
  CHECK(chain->GetAt(0, IAnimFilter::kId, &found) == S_OK && found == zero);
  CHECK(zero->Release() > 0);
  CHECK(chain->FindByName("ZNFilter.Sepia.1", IAnimFilter::kId, &found) == S_OK && found == sepia);
  CHECK(sepia->Release() > 0);
  CHECK(chain->FindByName("nobody", IAnimFilter::kId, &found) == 1);
  CHECK(chain->RemoveAt(0) == S_OK && CountOf(chain) == 1);
  CHECK(chain->RemoveByName("ZNFilter.Sepia.1") == S_OK && CountOf(chain) == 0);
  CHECK(chain->Insert(sepia) == S_OK && CountOf(chain) == 1);
  CHECK(chain->RemoveByNameLocked("ZNFilter.Sepia.1") == S_OK && CountOf(chain) == 0);
  CHECK(sepia->Release() == 0 && zero->Release() == 0);

  destination.locks = destination.unlocks = 0;
  CHECK(chain->TouchChain(1, 2) == S_OK && destination.locks == 1 && destination.unlocks == 1);
  CHECK(chain->SetChainTextLocked("ZNFilter.Sepia.1(Sepia=050)", "(", ")", creator) == S_OK);
  CHECK(destination.locks > 1 && destination.locks == destination.unlocks);
  CHECK(chain->SetChainText("ZNFilter.Sepia.1<Sepia=060>", "<", ">", creator) == S_OK);
  CHECK(chain->GetChainText(text, sizeof text, "[", "]", false) == S_OK &&
        Same(text, "ZNFilter.Sepia.1[Sepia=060]"));
  CHECK(chain->GetChainText(text, sizeof text, "[", "]", true) == S_OK &&
        !Same(text, "ZNFilter.Sepia.1[Sepia=060]"));
  CHECK(chain->UpdateChain("ZNFilter.Sepia.1(Sepia=070)", "(", ")", creator) == S_OK);
  CHECK(chain->GetChainText(text, sizeof text, "(", ")", false) == S_OK &&
        Same(text, "ZNFilter.Sepia.1(Sepia=070)"));
  CHECK(chain->CheckArgument(0) == S_OK && chain->CheckArgument(0x1234) == 0x1234);
  CHECK(chain->RemoveAll() == S_OK && CountOf(chain) == 0);
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
  getClassObject(kChainClass, IID_IClassFactory, reinterpret_cast<void**>(&factory));
  if (!factory) return nullptr;
  CHECK(factory->CreateInstance(nullptr, IAnimFilterChain::kId, &chain) == S_OK);
  factory->Release();
  return static_cast<IAnimFilterChain*>(chain);
}

void UseLibrary(HMODULE library) {
  const auto createCreator = Find<CreateCreator>(library, "FxboxCreateCreator");
  NEED(createCreator);
  IAnimFilterCreator* creator = nullptr;
  NEED(createCreator(IAnimFilterCreator::kId, reinterpret_cast<void**>(&creator)) == S_OK);
  CallCreator(creator);

  Source source;
  Destination destination;
  IAnimFilter* filter = NewFilter(creator, "ZNFilter.Invert.1");
  NEED(filter);
  CallFilter(filter, source, destination);
  CallIcon(filter);
  CallDownstream(filter, destination);
  CallParameters(filter);
  CallUpstream(filter, source, destination);
  CallLinks(filter, source, destination);
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
