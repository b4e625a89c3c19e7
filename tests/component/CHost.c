/* A host in plain C that has the tables of fxbox.h and links nothing of the library: it finds the
 * classes by their names.
 *
 *   c-host               Windows: the library is registered
 *   c-host libfxbox4.so  Linux: the library is loaded, and announces its classes to its own runtime
 *
 * The exit status is 0 when everything came out as it should. */
#include <fxbox.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "tests/support/Check.h"

#ifdef _WIN32
#include <objbase.h>
#define WIDE(text) L##text
typedef WCHAR Wide;
#else
#include <dlfcn.h>
#include <uchar.h>
#define WIDE(text) u##text
typedef char16_t Wide;
#define CLSCTX_INPROC_SERVER 1u

/* The runtime comes with the library. */
static HRESULT (*CoInitialize)(void*);
static void (*CoUninitialize)(void);
static HRESULT (*CoCreateInstance)(const GUID*, void*, uint32_t, const GUID*, void**);
static HRESULT (*CLSIDFromProgID)(const Wide*, GUID*);
static HRESULT (*ProgIDFromCLSID)(const GUID*, Wide**);
static void (*CoTaskMemFree)(void*);
#endif

static const GUID kCategoriesManager = {0x0002E005, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
static const GUID kCategoryInformation = {0x0002E013, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};

/* The system's interfaces, as far as they are called. */
typedef struct Classes Classes;
struct Classes {
  const struct {
    FXBOX_UNKNOWN_SLOTS(Classes)
    HRESULT(FXBOX_CALL* Next)(Classes*, uint32_t, GUID*, uint32_t*);
  } * lpVtbl;
};
typedef struct Categories Categories;
struct Categories {
  const struct {
    FXBOX_UNKNOWN_SLOTS(Categories)
    HRESULT(FXBOX_CALL* EnumCategories)(Categories*, uint32_t, void**);
    HRESULT(FXBOX_CALL* GetCategoryDesc)(Categories*, const GUID*, uint32_t, Wide**);
    HRESULT(FXBOX_CALL* EnumClassesOfCategories)
    (Categories*, uint32_t, const GUID*, uint32_t, const GUID*, Classes**);
  } * lpVtbl;
};

/* Without it nothing else makes sense. */
#define NEED(condition)        \
  do {                         \
    CHECK(condition);          \
    if (failures > 0) exit(1); \
  } while (0)

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
  NEED(categories->lpVtbl->EnumClassesOfCategories(categories, 1, &FXBOX_FilterCategory, 0, NULL,
                                                   &classes) == S_OK);
  while (classes->lpVtbl->Next(classes, 1, &classId, NULL) == S_OK) {
    Wide* progId = NULL;
    if (ProgIDFromCLSID(&classId, &progId) == S_OK && IsOurs(progId)) ++ours;
    CoTaskMemFree(progId);
  }
  CHECK(ours == 46);
  classes->lpVtbl->Release(classes);
  categories->lpVtbl->Release(categories);
}

/* What travels along a chain, other hosts show. */
static void RunAChain(IAnimFilterChain* chain, IAnimFilterCreator* creator) {
  static const char kText[] = "ZNFilter.Invert.1(Inversity=100)ZNFilter.Sepia.1(Sepia=000)";
  char text[500] = "";
  int count = 0;
  CHECK(chain->lpVtbl->SetChainTextLocked(chain, kText, "(", ")", creator) == S_OK);
  CHECK(chain->lpVtbl->GetCount(chain, &count) == S_OK && count == 2);
  CHECK(chain->lpVtbl->GetChainText(chain, text, sizeof text, "(", ")", false) == S_OK);
  CHECK(strcmp(text, kText) == 0);
  CHECK(chain->lpVtbl->RemoveAll(chain) == S_OK);
}

static void RunTheHost(void) {
  IAnimFilterCreator* creator = Create(WIDE("ZNFilter.Creator.1"), &IID_IAnimFilterCreator);
  IAnimFilterChain* chain = Create(WIDE("ZNFilter.Chain"), &IID_IAnimFilterChain);
  CountTheCategory();
  RunAChain(chain, creator);
  CHECK(chain->lpVtbl->Release(chain) == 0);
  CHECK(creator->lpVtbl->Release(creator) == 0);
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
