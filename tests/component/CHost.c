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

#include "tests/support/Check.h"

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
static const GUID kSourceCalls = {
    0x96AFC5EB, 0x1824, 0x4836, {0xBA, 0x35, 0x58, 0x0C, 0x97, 0x57, 0x23, 0xF3}};
static const GUID kDestinationCalls = {
    0x4D415C7B, 0x8861, 0x4493, {0x9F, 0xE9, 0x75, 0x82, 0x11, 0x92, 0x45, 0x08}};
static const GUID kChain = {
    0xD3B7A9C4, 0x3E52, 0x4F0A, {0xB6, 0xD1, 0x90, 0xA5, 0xC7, 0xE8, 0x1F, 0x24}};
static const GUID kCreator = {
    0xA95D1F7E, 0x6B0C, 0x4D43, {0x8A, 0x2E, 0x5F, 0x9C, 0x3E, 0x7D, 0x1B, 0x68}};

/* Every interface begins so. An object is a pointer to its table. */
#define UNKNOWN_SLOTS                                        \
  HRESULT(CALL* QueryInterface)(void*, const GUID*, void**); \
  uint32_t(CALL* AddRef)(void*);                             \
  uint32_t(CALL* Release)(void*);

#define INTERFACE_OBJECT(Name)            \
  typedef struct Name Name;               \
  typedef struct Name##Table Name##Table; \
  struct Name {                           \
    const Name##Table* table;             \
  };

INTERFACE_OBJECT(Object)
struct ObjectTable {
  UNKNOWN_SLOTS
};

INTERFACE_OBJECT(Classes)
struct ClassesTable {
  UNKNOWN_SLOTS
  HRESULT(CALL* Next)(Classes*, uint32_t, GUID*, uint32_t*);
};

INTERFACE_OBJECT(Categories)
struct CategoriesTable {
  UNKNOWN_SLOTS
  HRESULT(CALL* EnumCategories)(Categories*, uint32_t, void**);
  HRESULT(CALL* GetCategoryDesc)(Categories*, const GUID*, uint32_t, Wide**);
  HRESULT(CALL* EnumClassesOfCategories)
  (Categories*, uint32_t, const GUID*, uint32_t, const GUID*, Classes**);
};

/* What the source calls: the first filter offers it. */
INTERFACE_OBJECT(Downstream)
struct DownstreamTable {
  UNKNOWN_SLOTS
  HRESULT(CALL* SetPictureSize)(Downstream*, int, int);
  HRESULT(CALL* SetOffset)(Downstream*, int, int);
  HRESULT(CALL* SetExtent)(Downstream*, int, int);
  HRESULT(CALL* SetTargetSize)(Downstream*, int, int);
};

/* What the destination calls: the host's source offers it. */
INTERFACE_OBJECT(Upstream)
struct UpstreamTable {
  UNKNOWN_SLOTS
  HRESULT(CALL* ReadRows)(Upstream*, int, int, int, int, int, int, uint8_t**, uint8_t**);
  HRESULT(CALL* SetAbort)(Upstream*, bool);
  HRESULT(CALL* Prepare)(Upstream*, bool*, int*, bool);
  HRESULT(CALL* GetInfo)(Upstream*, int*, int*, int*, int*, int*, int*);
  HRESULT(CALL* AttachDestination)(Upstream*, Object*);
  HRESULT(CALL* ReadPixel)(Upstream*, uint8_t*);
  HRESULT(CALL* SendToSource)(Upstream*, intptr_t);
};

INTERFACE_OBJECT(Chain)
struct ChainTable {
  UNKNOWN_SLOTS
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
  HRESULT(CALL* SetChainTextLocked)(Chain*, const char*, const char*, const char*, Object*);
};

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
  const UpstreamTable* table;
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

static uint32_t CALL SourceAddRef(void* self) {
  return ++((Source*)self)->references;
}
static uint32_t CALL SourceRelease(void* self) {
  return --((Source*)self)->references;
}
static HRESULT CALL SourceQuery(void* self, const GUID* id, void** result) {
  *result = SameId(id, &kUnknown) || SameId(id, &kDestinationCalls) ? self : NULL;
  if (*result) SourceAddRef(self);
  return *result ? S_OK : E_NOINTERFACE;
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
static HRESULT CALL SourceAttach(Upstream* self, Object* destination) {
  Source* source = (Source*)self;
  source->destination = NULL;
  if (!destination) return S_OK;
  HRESULT status =
      destination->table->QueryInterface(destination, &kSourceCalls, (void**)&source->destination);
  if (source->destination) source->destination->table->Release(source->destination);
  return status;
}

/* What nobody asks this source for. */
static HRESULT CALL SourceGetInfo(Upstream* self, int* w, int* h, int* x, int* y, int* ew,
                                  int* eh) {
  (void)self, (void)w, (void)h, (void)x, (void)y, (void)ew, (void)eh;
  return S_OK;
}
static HRESULT CALL SourceReadPixel(Upstream* self, uint8_t* pixel) {
  (void)self, (void)pixel;
  return S_OK;
}
static HRESULT CALL SourceSend(Upstream* self, intptr_t message) {
  (void)self, (void)message;
  return S_OK;
}
static const UpstreamTable kSourceTable = {
    SourceQuery,   SourceAddRef,  SourceRelease, SourceReadRows,  SourceSetAbort,
    SourcePrepare, SourceGetInfo, SourceAttach,  SourceReadPixel, SourceSend};

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

static void RunAChain(Chain* chain, Object* creator) {
  static const char kText[] = "ZNFilter.Invert.1(Inversity=100)ZNFilter.Sepia.1(Sepia=000)";
  Source source = {.table = &kSourceTable, .references = 1};
  Upstream* tail = NULL;
  char text[500] = "";
  bool changed = false;
  int count = 0, revision = -1, w = 0, h = 0, x = 9, y = 9, ew = 0, eh = 0;

  CHECK(chain->table->SetSource(chain, (Object*)&source) == S_OK);
  CHECK(chain->table->SetChainTextLocked(chain, kText, "(", ")", creator) == S_OK);
  CHECK(chain->table->GetCount(chain, &count) == S_OK && count == 2);
  CHECK(chain->table->GetChainText(chain, text, sizeof text, "(", ")", false) == S_OK);
  CHECK(strcmp(text, kText) == 0);

  NEED(chain->table->GetAt(chain, 1, &kDestinationCalls, (void**)&tail) == S_OK);
  CHECK(tail->table->Prepare(tail, &changed, &revision, true) == S_OK && changed);
  CHECK(tail->table->GetInfo(tail, &w, &h, &x, &y, &ew, &eh) == S_OK);
  CHECK(w == kWidth && h == kHeight && x == 0 && y == 0 && ew == kWidth && eh == kHeight);
  PullAndCompare(tail, kHeight);
  PullAndCompare(tail, 2);
  StopAPull(tail);
  PullAndCompare(tail, 1);

  tail->table->Release(tail);
  CHECK(chain->table->RemoveAll(chain) == S_OK);
  CHECK(chain->table->SetSource(chain, NULL) == S_OK);
  CHECK(source.references == 1);
}

static void RunTheHost(void) {
  Object* creator = Create(WIDE("ZNFilter.Creator.1"), &kCreator);
  Chain* chain = Create(WIDE("ZNFilter.Chain"), &kChain);
  CountTheCategory();
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

static void* FindFunction(void* library, const char* name) {
  void* function = dlsym(library, name);
  if (!function) fprintf(stderr, "%s is not exported\n", name);
  NEED(function != NULL);
  return function;
}

/* Without the runtime: straight from the exported function. */
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
  StatusFunction canUnload = FindFunction(library, "DllCanUnloadNow");
  StatusFunction registerServer = FindFunction(library, "DllRegisterServer");
  StatusFunction unregisterServer = FindFunction(library, "DllUnregisterServer");

  NEED(CoInitialize(NULL) == S_OK);
  RunTheHost();
  CHECK(registerServer() == S_OK);
  RunTheHost();
  CHECK(unregisterServer() == S_OK);
  CHECK(canUnload() == S_OK);
  CoUninitialize();
  CHECK(dlclose(library) == 0);
  return failures > 0;
}

#endif
