/* A host in plain C with real windows, with the tables of fxbox.h, which links nothing of the
 * library:
 *
 *   dialogs_window_host LIBRARY     opens, shows and closes the dialog of every class over a filter
 *                                   with a picture, of which it pulls a pixel at each change
 *
 * The last line is "well", and the exit status 0, when all came out as it should. */
#include <fxbox.h>
#include <stdio.h>
#include <string.h>

#include "tests/dialogs/CDialogHost.h"

#ifdef _WIN32
#include <objbase.h>
#include <windows.h>
static void* Load(const char* name) {
  return (void*)LoadLibraryA(name);
}
static void* Find(void* library, const char* name) {
  return (void*)(uintptr_t)GetProcAddress((HMODULE)library, name);
}
#else
#include <dlfcn.h>
static void* Load(const char* name) {
  return dlopen(name, RTLD_NOW);
}
static void* Find(void* library, const char* name) {
  return dlsym(library, name);
}
#endif

static const GUID kContainer = {
    0xB196B284, 0xBAB4, 0x101A, {0xB6, 0x9C, 0x00, 0xAA, 0x00, 0x34, 0x1D, 0x07}};

/* The system's connection points, as far as they are called. */
typedef struct Point Point;
struct Point {
  const struct {
    FXBOX_UNKNOWN_SLOTS(Point)
    void *GetConnectionInterface, *GetConnectionPointContainer;
    HRESULT(FXBOX_CALL* Advise)(Point*, void*, uint32_t*);
  } * lpVtbl;
};
typedef struct Container Container;
struct Container {
  const struct {
    FXBOX_UNKNOWN_SLOTS(Container)
    void* EnumConnectionPoints;
    HRESULT(FXBOX_CALL* FindConnectionPoint)(Container*, const GUID*, Point**);
  } * lpVtbl;
};

typedef HRESULT(FXBOX_STDCALL* CreateCreator)(const GUID*, void**);
typedef HRESULT(FXBOX_STDCALL* PumpEvents)(int);

static void Release(void* object) {
  IUnknown* unknown = object;
  if (unknown) unknown->lpVtbl->Release(unknown);
}
static void* Query(void* object, const GUID* id) {
  IUnknown* unknown = object;
  void* result = 0;
  unknown->lpVtbl->QueryInterface(unknown, id, &result);
  return result;
}

/* --- a source of one grey pixel */

static HRESULT FXBOX_CALL SourceQuery(IAnimFilterDestCallsThis* self, const GUID* id,
                                      void** result) {
  const int known = memcmp(id, &IID_IUnknown, sizeof *id) == 0 ||
                    memcmp(id, &IID_IAnimFilterDestCallsThis, sizeof *id) == 0;
  *result = known ? self : 0;
  return known ? S_OK : E_NOINTERFACE;
}
static uint32_t FXBOX_CALL SourceCount(IAnimFilterDestCallsThis* self) {
  (void)self;
  return 1;
}
static HRESULT FXBOX_CALL SourceRows(IAnimFilterDestCallsThis* self, int destX, int destY, int x,
                                     int y, int width, int height, uint8_t** colour,
                                     uint8_t** mask) {
  (void)self, (void)x, (void)y;
  for (int row = destY; row < destY + height; ++row) {
    memset(colour[row] + 3 * destX, 128, 3 * (size_t)width);
    memset(mask[row] + destX, 0, (size_t)width);
  }
  return S_OK;
}
static HRESULT FXBOX_CALL SourceAbort(IAnimFilterDestCallsThis* self, bool abort) {
  (void)self, (void)abort;
  return S_OK;
}
static HRESULT FXBOX_CALL SourcePrepare(IAnimFilterDestCallsThis* self, bool* changed,
                                        int* revision, bool track) {
  (void)self, (void)revision, (void)track;
  *changed = true;
  return S_OK;
}
static HRESULT FXBOX_CALL SourceAttach(IAnimFilterDestCallsThis* self, void* destination) {
  (void)self, (void)destination;
  return S_OK;
}
static const IAnimFilterDestCallsThisVtbl kSourceTable = {
    SourceQuery,   SourceCount, SourceCount,  SourceRows, SourceAbort,
    SourcePrepare, 0,           SourceAttach, 0,          0};
static IAnimFilterDestCallsThis source = {&kSourceTable};

/* --- one dialog */

struct Run {
  IAnimFilter* filter;
  int isClosed, brackets, pulls;
};

/* What was set is in the filter's text before the change ends, and can be pulled. */
static void PullPixel(struct Run* run) {
  uint8_t colour[3] = {0, 0, 0}, mask[1] = {0};
  uint8_t *rows[] = {colour}, *masks[] = {mask};
  bool changed = false;
  int revision = -1;
  char text[8000] = "";
  IAnimFilterParameter* parameter = Query(run->filter, &IID_IAnimFilterParameter);
  IAnimFilterDestCallsThis* pull = Query(run->filter, &IID_IAnimFilterDestCallsThis);
  parameter->lpVtbl->GetParameter(parameter, text, sizeof text);
  pull->lpVtbl->Prepare(pull, &changed, &revision, false);
  pull->lpVtbl->ReadRows(pull, 0, 0, 0, 0, 1, 1, rows, masks);
  run->pulls += text[0] != 0;
  Release(pull);
  Release(parameter);
}

static void OnHostCall(void* context, const char* line) {
  struct Run* run = context;
  if (strstr(line, " 59925 ")) ++run->brackets;
  if (strstr(line, " 59908 ")) run->isClosed = 1;
  if (strstr(line, " 59926 ")) {
    PullPixel(run);
    --run->brackets;
  }
}

static void Attach(IAnimFilterDialog* dialog, IAnimFilter* filter) {
  Container* container = Query(dialog, &kContainer);
  Point* point = 0;
  uint32_t cookie = 0;
  container->lpVtbl->FindConnectionPoint(container, &IID_IAnimFilterParameter, &point);
  point->lpVtbl->Advise(point, filter, &cookie);
  Release(point);
  Release(container);
}

/* As the button of the dialog does it: its values go to the filter. */
static void Apply(IAnimFilterDialog* dialog) {
  IAnimRunnable* runnable = Query(dialog, &IID_IAnimRunnable);
  runnable->lpVtbl->Dispatch(runnable, "ButtonTop", 0, 0, 0);
  Release(runnable);
}

/* 1 when the class has no dialog, 0 when all went well. */
static int RunDialog(IAnimFilterCreator* creator, const char* progId, PumpEvents pump) {
  struct Run run = {0, 0, 0, 0};
  IAnimFilterDialog* dialog = 0;
  int status = 0;
  CDialogHost* host = NewDialogHost(0);
  creator->lpVtbl->CreateFilter(creator, progId, &IID_IAnimFilter, (void**)&run.filter);
  creator->lpVtbl->CreateFilterDialog(creator, progId, (intptr_t)DialogHostUnknown(host),
                                      &IID_IAnimFilterDialog, (void**)&dialog);
  if (!dialog) {
    Release(run.filter);
    ReleaseDialogHost(host);
    return 1;
  }
  run.filter->lpVtbl->SetSource(run.filter, &source);
  SetDialogHostHook(host, OnHostCall, &run);
  Attach(dialog, run.filter);
  if (dialog->lpVtbl->Open(dialog, 0, 0, 0) != S_OK) {
    printf("%s: no window\n", progId);
    status = 2;
  }
  dialog->lpVtbl->Show(dialog);
  for (int turns = 0; turns < 3; ++turns) pump(0);
  Apply(dialog);
  dialog->lpVtbl->Close(dialog);
  if (!run.isClosed || run.brackets != 0 || run.pulls != 1 ||
      strstr(DialogHostLog(host), "nobody's to call")) {
    printf("%s: wrong calls\n%s", progId, DialogHostLog(host));
    status = 2;
  }
  Release(dialog);
  run.filter->lpVtbl->SetSource(run.filter, 0);
  Release(run.filter);
  ReleaseDialogHost(host);
  return status;
}

static int RunAll(IAnimFilterCreator* creator, PumpEvents pump) {
  int count = 0, dialogs = 0, status = 0;
  creator->lpVtbl->GetFilterCount(creator, &count);
  for (int i = 0; i < count; ++i) {
    char name[200] = "";
    int order;
    creator->lpVtbl->GetFilterInfo(creator, i, name, sizeof name, &order);
    const int result = RunDialog(creator, name, pump);
    dialogs += result == 0;
    if (result == 2) status = 1;
  }
  printf("%d dialogs of %d classes\n", dialogs, count);
  return status || dialogs != 42;
}

int main(int argc, char** argv) {
  IAnimFilterCreator* creator = 0;
  void* library = argc > 1 ? Load(argv[1]) : 0;
  int status;
  if (!library) {
    fprintf(stderr, "the library cannot be loaded\n");
    return 2;
  }
#ifdef _WIN32
  CoInitialize(0);
#endif
  ((CreateCreator)Find(library, "FxboxCreateCreator"))(&IID_IAnimFilterCreator, (void**)&creator);
  if (!creator) return 2;
  PumpEvents pump = (PumpEvents)Find(library, "FxboxPumpEvents");
  status = RunAll(creator, pump);
  Release(creator);
  printf("%s\n", status ? "wrong" : "well");
  return status;
}
