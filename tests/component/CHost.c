/* A host in plain C that knows the library from its tables alone: it includes none of its headers.
 *
 *   c-host               Windows: the library is registered
 *   c-host libfxbox4.so  Linux: the library is loaded, and announces its classes to its own runtime
 *
 * The exit status is 0 when everything came out as it should. */
#include <stdbool.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#ifdef _WIN32
#include <objbase.h>
#include <windows.h>
#define CALL STDMETHODCALLTYPE
#define WIDE(text) L##text
typedef WCHAR Wide;
#else
#include <dlfcn.h>
#include <uchar.h>
#define CALL
#define WIDE(text) u##text
typedef char16_t Wide;
typedef int32_t HRESULT;
typedef struct {
  uint32_t Data1;
  uint16_t Data2, Data3;
  uint8_t Data4[8];
} GUID;
#define S_OK 0
#define E_NOINTERFACE ((HRESULT)0x80004002u)
#define CLSCTX_INPROC_SERVER 1u

/* The runtime comes with the library. */
static HRESULT (*CoInitialize)(void*);
static void (*CoUninitialize)(void);
static HRESULT (*CoCreateInstance)(const GUID*, void*, uint32_t, const GUID*, void**);
static HRESULT (*CLSIDFromProgID)(const Wide*, GUID*);
static HRESULT (*ProgIDFromCLSID)(const GUID*, Wide**);
static void (*CoTaskMemFree)(void*);
#endif

static const GUID kUnknown = {0, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
static const GUID kCategoriesManager = {0x0002E005, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
static const GUID kCategoryInformation = {0x0002E013, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
static const GUID kFilterCategory = {
    0x50988255, 0xCF5D, 0x4E19, {0x85, 0xBF, 0x9E, 0x17, 0xED, 0x51, 0xFF, 0x1D}};
static const GUID kFilter = {
    0x22E7124D, 0x0B5A, 0x449C, {0xBC, 0x15, 0x21, 0x3E, 0x7B, 0x98, 0x32, 0x4B}};
static const GUID kSourceCalls = {
    0x96AFC5EB, 0x1824, 0x4836, {0xBA, 0x35, 0x58, 0x0C, 0x97, 0x57, 0x23, 0xF3}};
static const GUID kDestinationCalls = {
    0x4D415C7B, 0x8861, 0x4493, {0x9F, 0xE9, 0x75, 0x82, 0x11, 0x92, 0x45, 0x08}};
static const GUID kParameter = {
    0x663A199C, 0x2C80, 0x4070, {0x8D, 0x31, 0xB2, 0x4C, 0x5F, 0x3E, 0x73, 0x05}};
static const GUID kChain = {
    0xD3B7A9C4, 0x3E52, 0x4F0A, {0xB6, 0xD1, 0x90, 0xA5, 0xC7, 0xE8, 0x1F, 0x24}};
static const GUID kCreator = {
    0xA95D1F7E, 0x6B0C, 0x4D43, {0x8A, 0x2E, 0x5F, 0x9C, 0x3E, 0x7D, 0x1B, 0x68}};

/* Every interface begins so. An object is a pointer to its table. */
#define UNKNOWN_SLOTS(Object)                                  \
  HRESULT(CALL* QueryInterface)(Object*, const GUID*, void**); \
  uint32_t(CALL* AddRef)(Object*);                             \
  uint32_t(CALL* Release)(Object*);

#define INTERFACE_OBJECT(Name)            \
  typedef struct Name Name;               \
  typedef struct Name##Table Name##Table; \
  struct Name {                           \
    const Name##Table* table;             \
  };

INTERFACE_OBJECT(Object)
struct ObjectTable {
  UNKNOWN_SLOTS(Object)
};

INTERFACE_OBJECT(Classes)
struct ClassesTable {
  UNKNOWN_SLOTS(Classes)
  HRESULT(CALL* Next)(Classes*, uint32_t, GUID*, uint32_t*);
};

INTERFACE_OBJECT(Categories)
struct CategoriesTable {
  UNKNOWN_SLOTS(Categories)
  HRESULT(CALL* EnumCategories)(Categories*, uint32_t, void**);
  HRESULT(CALL* GetCategoryDesc)(Categories*, const GUID*, uint32_t, Wide**);
  HRESULT(CALL* EnumClassesOfCategories)
  (Categories*, uint32_t, const GUID*, uint32_t, const GUID*, Classes**);
};

INTERFACE_OBJECT(Filter)
struct FilterTable {
  UNKNOWN_SLOTS(Filter)
  HRESULT(CALL* GetName)(Filter*, char*, int);
  HRESULT(CALL* CreateIcon)(Filter*, const GUID*, void**);
  HRESULT(CALL* GetOrder)(Filter*, int*);
  HRESULT(CALL* GetKind)(Filter*, int*);
};

INTERFACE_OBJECT(Parameters)
struct ParametersTable {
  UNKNOWN_SLOTS(Parameters)
  HRESULT(CALL* SetParameter)(Parameters*, const char*, int);
  HRESULT(CALL* GetParameter)(Parameters*, char*, int);
};

/* What the source calls: the host's destination offers it. */
INTERFACE_OBJECT(Downstream)
struct DownstreamTable {
  UNKNOWN_SLOTS(Downstream)
  HRESULT(CALL* SetPictureSize)(Downstream*, int, int);
  HRESULT(CALL* SetOffset)(Downstream*, int, int);
  HRESULT(CALL* SetExtent)(Downstream*, int, int);
  HRESULT(CALL* SetTargetSize)(Downstream*, int, int);
  HRESULT(CALL* QuerySize)(Downstream*, int*, int*, double);
  HRESULT(CALL* SetZoom)(Downstream*, double);
  HRESULT(CALL* SetMark)(Downstream*, int, int);
  HRESULT(CALL* GetMark)(Downstream*, int*, int*);
  HRESULT(CALL* Lock)(Downstream*);
  HRESULT(CALL* Unlock)(Downstream*);
  HRESULT(CALL* AttachSource)(Downstream*, Object*);
  HRESULT(CALL* ExpandText)(Downstream*, const char*, char**);
  HRESULT(CALL* QueryPrintScale)(Downstream*, double*);
  HRESULT(CALL* HostCall3)(Downstream*, intptr_t, intptr_t, intptr_t);
  HRESULT(CALL* HostCall1)(Downstream*, intptr_t);
  HRESULT(CALL* HostCall1b)(Downstream*, intptr_t);
};

/* What the destination calls: the host's source offers it. */
INTERFACE_OBJECT(Upstream)
struct UpstreamTable {
  UNKNOWN_SLOTS(Upstream)
  HRESULT(CALL* ReadRows)(Upstream*, int, int, int, int, int, int, uint8_t**, uint8_t**);
  HRESULT(CALL* SetAbort)(Upstream*, bool);
  HRESULT(CALL* Prepare)(Upstream*, bool*, int*, bool);
  HRESULT(CALL* GetInfo)(Upstream*, int*, int*, int*, int*, int*, int*);
  HRESULT(CALL* AttachDestination)(Upstream*, Object*);
  HRESULT(CALL* ReadPixel)(Upstream*, uint8_t*);
  HRESULT(CALL* SendToSource)(Upstream*, intptr_t);
};

INTERFACE_OBJECT(Creator)
INTERFACE_OBJECT(Chain)
struct ChainTable {
  UNKNOWN_SLOTS(Chain)
  HRESULT(CALL* SetSource)(Chain*, Object*);
  HRESULT(CALL* SetDestination)(Chain*, Object*);
  HRESULT(CALL* GetCount)(Chain*, int*);
  HRESULT(CALL* GetAt)(Chain*, int, const GUID*, void**);
  HRESULT(CALL* FindByName)(Chain*, const char*, const GUID*, void**);
  HRESULT(CALL* Insert)(Chain*, Object*);
  HRESULT(CALL* InsertAt)(Chain*, int, Object*);
  HRESULT(CALL* RemoveAll)(Chain*);
  HRESULT(CALL* RemoveAt)(Chain*, int);
  HRESULT(CALL* RemoveByNameLocked)(Chain*, const char*);
  HRESULT(CALL* RemoveByName)(Chain*, const char*);
  HRESULT(CALL* TouchChain)(Chain*, intptr_t, intptr_t);
  HRESULT(CALL* GetChainText)(Chain*, char*, int, const char*, const char*, bool);
  HRESULT(CALL* SetChainTextLocked)(Chain*, const char*, const char*, const char*, Creator*);
};

struct CreatorTable {
  UNKNOWN_SLOTS(Creator)
  HRESULT(CALL* CreateFilter)(Creator*, const char*, const GUID*, void**);
  HRESULT(CALL* CreateFilterDialog)(Creator*, const char*, intptr_t, const GUID*, void**);
  HRESULT(CALL* GetFilterCount)(Creator*, int*);
  HRESULT(CALL* CreateFilterAt)(Creator*, int, const GUID*, void**);
  HRESULT(CALL* CreateChain)(Creator*, const GUID*, void**);
  HRESULT(CALL* GetFilterInfo)(Creator*, int, char*, int, int*);
};

static int failures = 0;

#define CHECK(condition)                                                     \
  do {                                                                       \
    if (!(condition)) {                                                      \
      fprintf(stderr, "%s:%d: wrong: %s\n", __FILE__, __LINE__, #condition); \
      ++failures;                                                            \
    }                                                                        \
  } while (0)

/* Without it nothing else makes sense. */
#define NEED(condition)        \
  do {                         \
    CHECK(condition);          \
    if (failures > 0) exit(1); \
  } while (0)

static bool SameId(const GUID* a, const GUID* b) {
  return memcmp(a, b, sizeof(GUID)) == 0;
}

/* --- the picture source: width 7, height 5, every byte from its place */

enum { kWidth = 7, kHeight = 5 };

typedef struct {
  Upstream base;
  uint32_t references;
  Downstream* destination; /* not counted: the host ends the chain before the source */
  bool abort;
} Source;

static uint8_t ColourAt(int x, int y, int channel) {
  return (uint8_t)(17 * x + 31 * y + 67 * channel + 5);
}
static uint8_t MaskAt(int x, int y) {
  return (uint8_t)(x * y * 9);
}

static HRESULT CALL SourceQuery(Upstream* self, const GUID* id, void** result) {
  *result = SameId(id, &kUnknown) || SameId(id, &kDestinationCalls) ? self : NULL;
  if (!*result) return E_NOINTERFACE;
  ++((Source*)self)->references;
  return S_OK;
}
static uint32_t CALL SourceAddRef(Upstream* self) {
  return ++((Source*)self)->references;
}
static uint32_t CALL SourceRelease(Upstream* self) {
  return --((Source*)self)->references;
}
static HRESULT CALL SourceReadRows(Upstream* self, int destX, int destY, int srcX, int srcY,
                                   int width, int height, uint8_t** colour, uint8_t** mask) {
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      for (int c = 0; c < 3; ++c) {
        colour[destY + y][3 * (destX + x) + c] = ColourAt(srcX + x, srcY + y, c);
      }
      mask[destY + y][destX + x] = MaskAt(srcX + x, srcY + y);
    }
  }
  return ((Source*)self)->abort ? 1 : S_OK;
}
static HRESULT CALL SourceSetAbort(Upstream* self, bool abort) {
  ((Source*)self)->abort = abort;
  return S_OK;
}
static HRESULT CALL SourcePrepare(Upstream* self, bool* changed, int* revision, bool track) {
  Downstream* to = ((Source*)self)->destination;
  (void)changed, (void)revision, (void)track;
  if (!to) return S_OK;
  to->table->SetPictureSize(to, kWidth, kHeight);
  to->table->SetExtent(to, kWidth, kHeight);
  to->table->SetOffset(to, 0, 0);
  to->table->SetTargetSize(to, 4 * kWidth, 4 * kHeight);
  return S_OK;
}
static HRESULT CALL SourceGetInfo(Upstream* self, int* w, int* h, int* x, int* y, int* ew,
                                  int* eh) {
  (void)self;
  *w = *ew = kWidth;
  *h = *eh = kHeight;
  *x = *y = 0;
  return S_OK;
}
static HRESULT CALL SourceAttach(Upstream* self, Object* destination) {
  Source* source = (Source*)self;
  source->destination = NULL;
  if (!destination) return S_OK;
  HRESULT status =
      destination->table->QueryInterface(destination, &kSourceCalls, (void**)&source->destination);
  if (source->destination) source->destination->table->Release(source->destination);
  return status;
}
static HRESULT CALL SourceReadPixel(Upstream* self, uint8_t* pixel) {
  (void)self;
  for (int c = 0; c < 3; ++c) pixel[c] = ColourAt(0, 0, c);
  return S_OK;
}
static HRESULT CALL SourceSend(Upstream* self, intptr_t message) {
  (void)self, (void)message;
  return S_OK;
}
static const UpstreamTable kSourceTable = {
    SourceQuery,   SourceAddRef,  SourceRelease, SourceReadRows,  SourceSetAbort,
    SourcePrepare, SourceGetInfo, SourceAttach,  SourceReadPixel, SourceSend};

/* --- the destination: notes what it is told */

typedef struct {
  Downstream base;
  uint32_t references;
  int width, height, targetWidth, locks, unlocks;
} Destination;

static HRESULT CALL DestinationQuery(Downstream* self, const GUID* id, void** result) {
  *result = SameId(id, &kUnknown) || SameId(id, &kSourceCalls) ? self : NULL;
  if (!*result) return E_NOINTERFACE;
  ++((Destination*)self)->references;
  return S_OK;
}
static uint32_t CALL DestinationAddRef(Downstream* self) {
  return ++((Destination*)self)->references;
}
static uint32_t CALL DestinationRelease(Downstream* self) {
  return --((Destination*)self)->references;
}
static HRESULT CALL DestinationSize(Downstream* self, int w, int h) {
  ((Destination*)self)->width = w;
  ((Destination*)self)->height = h;
  return S_OK;
}
static HRESULT CALL DestinationTarget(Downstream* self, int w, int h) {
  (void)h;
  ((Destination*)self)->targetWidth = w;
  return S_OK;
}
static HRESULT CALL DestinationPair(Downstream* self, int a, int b) {
  (void)self, (void)a, (void)b;
  return S_OK;
}
static HRESULT CALL DestinationQuerySize(Downstream* self, int* w, int* h, double aspect) {
  (void)self, (void)aspect;
  *w = *h = -1;
  return S_OK;
}
static HRESULT CALL DestinationZoom(Downstream* self, double zoom) {
  (void)self, (void)zoom;
  return S_OK;
}
static HRESULT CALL DestinationGetMark(Downstream* self, int* a, int* b) {
  (void)self;
  *a = *b = 0;
  return S_OK;
}
static HRESULT CALL DestinationLock(Downstream* self) {
  ++((Destination*)self)->locks;
  return S_OK;
}
static HRESULT CALL DestinationUnlock(Downstream* self) {
  ++((Destination*)self)->unlocks;
  return S_OK;
}
static HRESULT CALL DestinationAttach(Downstream* self, Object* source) {
  (void)self, (void)source;
  return S_OK;
}
static HRESULT CALL DestinationExpand(Downstream* self, const char* text, char** expanded) {
  (void)self, (void)text;
  *expanded = NULL;
  return S_OK;
}
static HRESULT CALL DestinationScale(Downstream* self, double* scale) {
  (void)self;
  *scale = 1.0;
  return S_OK;
}
static HRESULT CALL DestinationCall3(Downstream* self, intptr_t a, intptr_t b, intptr_t c) {
  (void)self, (void)a, (void)b, (void)c;
  return S_OK;
}
static HRESULT CALL DestinationCall1(Downstream* self, intptr_t a) {
  (void)self, (void)a;
  return S_OK;
}
static const DownstreamTable kDestinationTable = {
    DestinationQuery,  DestinationAddRef, DestinationRelease, DestinationSize,
    DestinationPair,   DestinationPair,   DestinationTarget,  DestinationQuerySize,
    DestinationZoom,   DestinationPair,   DestinationGetMark, DestinationLock,
    DestinationUnlock, DestinationAttach, DestinationExpand,  DestinationScale,
    DestinationCall3,  DestinationCall1,  DestinationCall1};

/* --- what the host does */

static void* Create(const Wide* progId, const GUID* interfaceId) {
  GUID classId;
  void* object = NULL;
  NEED(CLSIDFromProgID(progId, &classId) == S_OK);
  NEED(CoCreateInstance(&classId, NULL, CLSCTX_INPROC_SERVER, interfaceId, &object) == S_OK);
  return object;
}

static bool IsOurs(const Wide* progId) {
  static const Wide kPrefix[] = WIDE("ZNFilter.");
  return memcmp(progId, kPrefix, sizeof kPrefix - sizeof(Wide)) == 0;
}

static void CountTheCategory(void) {
  Categories* categories = NULL;
  Classes* classes = NULL;
  GUID classId;
  int ours = 0;
  NEED(CoCreateInstance(&kCategoriesManager, NULL, CLSCTX_INPROC_SERVER, &kCategoryInformation,
                        (void**)&categories) == S_OK);
  NEED(categories->table->EnumClassesOfCategories(categories, 1, &kFilterCategory, 0, NULL,
                                                  &classes) == S_OK);
  while (classes->table->Next(classes, 1, &classId, NULL) == S_OK) {
    Wide* progId = NULL;
    if (ProgIDFromCLSID(&classId, &progId) == S_OK && IsOurs(progId)) ++ours;
    CoTaskMemFree(progId);
  }
  CHECK(ours == 46);
  classes->table->Release(classes);
  categories->table->Release(categories);
}

static void ListThroughTheCreator(Creator* creator) {
  int count = 0, ours = 0, lastKind = -1;
  CHECK(creator->table->GetFilterCount(creator, &count) == S_OK);
  for (int i = 0; i < count; ++i) {
    char name[200] = "", ownName[200] = "";
    int order = 0, ownOrder = 0, kind = -1;
    Filter* filter = NULL;
    CHECK(creator->table->GetFilterInfo(creator, i, name, sizeof name, &order) == S_OK);
    NEED(creator->table->CreateFilterAt(creator, i, &kFilter, (void**)&filter) == S_OK);
    filter->table->GetName(filter, ownName, sizeof ownName);
    filter->table->GetOrder(filter, &ownOrder);
    filter->table->GetKind(filter, &kind);
    CHECK(strcmp(name, ownName) == 0);
    CHECK(order == ownOrder);
    CHECK(kind >= lastKind);
    lastKind = kind;
    if (strncmp(name, "ZNFilter.", 9) == 0) ++ours;
    CHECK(filter->table->Release(filter) == 0);
  }
  CHECK(ours == 46);
}

static void PullAndCompare(Upstream* tail, int bandHeight) {
  uint8_t colour[kHeight][3 * kWidth + 2], mask[kHeight][kWidth + 2];
  uint8_t* colourRows[kHeight];
  uint8_t* maskRows[kHeight];
  memset(colour, 0xA5, sizeof colour);
  memset(mask, 0xA5, sizeof mask);
  for (int y = 0; y < kHeight; ++y) colourRows[y] = colour[y], maskRows[y] = mask[y];
  for (int y = 0; y < kHeight; y += bandHeight) {
    int height = y + bandHeight <= kHeight ? bandHeight : kHeight - y;
    CHECK(tail->table->ReadRows(tail, 0, y, 0, y, kWidth, height, colourRows, maskRows) == S_OK);
  }
  for (int y = 0; y < kHeight; ++y) {
    for (int x = 0; x < kWidth; ++x) {
      for (int c = 0; c < 3; ++c) CHECK(colour[y][3 * x + c] == 255 - ColourAt(x, y, c));
      CHECK(mask[y][x] == MaskAt(x, y));
    }
    CHECK(colour[y][3 * kWidth] == 0xA5 && mask[y][kWidth] == 0xA5);
  }
}

static void StopAPull(Upstream* tail) {
  uint8_t colour[3 * kWidth], mask[kWidth];
  uint8_t *colourRow = colour, *maskRow = mask;
  tail->table->SetAbort(tail, true);
  CHECK(tail->table->ReadRows(tail, 0, 0, 0, 0, kWidth, 1, &colourRow, &maskRow) != S_OK);
  tail->table->SetAbort(tail, false);
}

static void RunAChain(Chain* chain, Creator* creator) {
  static const char kText[] = "ZNFilter.Invert.1(Inversity=100)ZNFilter.Sepia.1(Sepia=000)";
  Source source = {{&kSourceTable}, 1, NULL, false};
  Destination destination = {{&kDestinationTable}, 1, 0, 0, 0, 0, 0};
  Parameters* parameters = NULL;
  Upstream* tail = NULL;
  char text[500] = "";
  bool changed = false;
  int count = 0, revision = -1, w = 0, h = 0, x = 9, y = 9, ew = 0, eh = 0;

  CHECK(chain->table->SetSource(chain, (Object*)&source) == S_OK);
  CHECK(chain->table->SetDestination(chain, (Object*)&destination) == S_OK);
  CHECK(chain->table->SetChainTextLocked(chain, kText, "(", ")", creator) == S_OK);
  CHECK(chain->table->GetCount(chain, &count) == S_OK && count == 2);
  CHECK(destination.locks > 0 && destination.locks == destination.unlocks);
  CHECK(chain->table->GetChainText(chain, text, sizeof text, "(", ")", false) == S_OK);
  CHECK(strcmp(text, kText) == 0);

  NEED(chain->table->GetAt(chain, 1, &kDestinationCalls, (void**)&tail) == S_OK);
  CHECK(tail->table->Prepare(tail, &changed, &revision, true) == S_OK && changed);
  CHECK(tail->table->GetInfo(tail, &w, &h, &x, &y, &ew, &eh) == S_OK);
  CHECK(w == kWidth && h == kHeight && x == 0 && y == 0 && ew == kWidth && eh == kHeight);
  CHECK(destination.width == kWidth && destination.height == kHeight);
  CHECK(destination.targetWidth == 4 * kWidth);
  PullAndCompare(tail, kHeight);
  PullAndCompare(tail, 2);
  StopAPull(tail);
  PullAndCompare(tail, 1);

  NEED(chain->table->FindByName(chain, "ZNFilter.Invert.1", &kParameter, (void**)&parameters) ==
       S_OK);
  CHECK(parameters->table->GetParameter(parameters, text, sizeof text) == S_OK);
  CHECK(strcmp(text, "Inversity=100") == 0);
  parameters->table->Release(parameters);

  tail->table->Release(tail);
  CHECK(chain->table->RemoveAll(chain) == S_OK);
  CHECK(chain->table->SetSource(chain, NULL) == S_OK);
  CHECK(chain->table->SetDestination(chain, NULL) == S_OK);
  CHECK(source.references == 1 && destination.references == 1);
}

static void RunTheHost(void) {
  Creator* creator = Create(WIDE("ZNFilter.Creator.1"), &kCreator);
  Chain* chain = Create(WIDE("ZNFilter.Chain"), &kChain);
  CountTheCategory();
  ListThroughTheCreator(creator);
  RunAChain(chain, creator);
  CHECK(chain->table->Release(chain) == 0);
  CHECK(creator->table->Release(creator) == 0);
}

#ifdef _WIN32

int main(void) {
  NEED(CoInitialize(NULL) == S_OK);
  RunTheHost();
  CoUninitialize();
  return failures > 0;
}

#else

typedef HRESULT (*StatusFunction)(void);
typedef HRESULT (*GetClassObjectFunction)(const GUID*, const GUID*, void**);

static void* FindFunction(void* library, const char* name) {
  void* function = dlsym(library, name);
  if (!function) fprintf(stderr, "%s is not exported\n", name);
  NEED(function != NULL);
  return function;
}

static const GUID kClassFactory = {1, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};

INTERFACE_OBJECT(Factory)
struct FactoryTable {
  UNKNOWN_SLOTS(Factory)
  HRESULT(CALL* CreateInstance)(Factory*, Object*, const GUID*, void**);
  HRESULT(CALL* LockServer)(Factory*, int);
};

/* Without the runtime: straight from the exported function. */
static void AskTheLibraryItself(void* library) {
  GetClassObjectFunction getClassObject = FindFunction(library, "DllGetClassObject");
  StatusFunction canUnload = FindFunction(library, "DllCanUnloadNow");
  GUID chainClass;
  Factory* factory = NULL;
  Chain* chain = NULL;
  CHECK(canUnload() == S_OK);
  NEED(CLSIDFromProgID(WIDE("ZNFilter.Chain.1"), &chainClass) == S_OK);
  NEED(getClassObject(&chainClass, &kClassFactory, (void**)&factory) == S_OK);
  NEED(factory->table->CreateInstance(factory, NULL, &kChain, (void**)&chain) == S_OK);
  CHECK(factory->table->Release(factory) == 0);
  CHECK(canUnload() != S_OK);
  CHECK(chain->table->Release(chain) == 0);
  CHECK(canUnload() == S_OK);
}

int main(int argc, char** argv) {
  NEED(argc == 2);
  void* library = dlopen(argv[1], RTLD_NOW | RTLD_LOCAL);
  if (!library) fprintf(stderr, "%s\n", dlerror());
  NEED(library != NULL);
  CoInitialize = FindFunction(library, "CoInitialize");
  CoUninitialize = FindFunction(library, "CoUninitialize");
  CoCreateInstance = FindFunction(library, "CoCreateInstance");
  CLSIDFromProgID = FindFunction(library, "CLSIDFromProgID");
  ProgIDFromCLSID = FindFunction(library, "ProgIDFromCLSID");
  CoTaskMemFree = FindFunction(library, "CoTaskMemFree");
  StatusFunction registerServer = FindFunction(library, "DllRegisterServer");
  StatusFunction unregisterServer = FindFunction(library, "DllUnregisterServer");

  NEED(CoInitialize(NULL) == S_OK);
  RunTheHost();
  AskTheLibraryItself(library);
  CHECK(registerServer() == S_OK);
  RunTheHost();
  CHECK(unregisterServer() == S_OK);
  CoUninitialize();
  CHECK(dlclose(library) == 0);
  return failures > 0;
}

#endif
