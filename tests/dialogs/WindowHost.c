/* A host in plain C with real windows, which knows the library from its tables alone:
 *
 *   dialogs_window_host LIBRARY             opens, shows and closes the dialog of every class
 *   dialogs_window_host LIBRARY PROGID      opens one and tells what happens, until it is closed
 *
 * Lines: "slider X Y WIDTH HEIGHT", its place on the screen, where the system tells it; "ready";
 * "text TEXT" and "pixel B G R" at the end of each change, when the picture was pulled anew;
 * "closed". The last line is "well", and the exit status 0, when all came out as it should. */
#include <stdint.h>
#include <stdio.h>
#include <string.h>

#include "tests/dialogs/CDialogHost.h"

#ifdef _WIN32
#include <objbase.h>
#include <windows.h>
#define CALL STDMETHODCALLTYPE
static void* Load(const char* name) {
  return (void*)LoadLibraryA(name);
}
static void* Find(void* library, const char* name) {
  return (void*)(uintptr_t)GetProcAddress((HMODULE)library, name);
}
static void Sleep10(void) {
  Sleep(10);
}
static BOOL CALLBACK TellSlider(HWND child, LPARAM unused) {
  char name[40] = "";
  RECT place;
  (void)unused;
  GetClassNameA(child, name, sizeof name);
  if (strcmp(name, "msctls_trackbar32") != 0) return TRUE;
  GetWindowRect(child, &place);
  printf("slider %ld %ld %ld %ld\n", (long)place.left, (long)place.top,
         (long)(place.right - place.left), (long)(place.bottom - place.top));
  return FALSE;
}
static void TellPlaces(void* window) {
  EnumChildWindows((HWND)window, TellSlider, 0);
}
#else
#include <dlfcn.h>
#include <time.h>
#define CALL
static void* Load(const char* name) {
  return dlopen(name, RTLD_NOW);
}
static void* Find(void* library, const char* name) {
  return dlsym(library, name);
}
static void TellPlaces(void* window) {
  (void)window;
}
static void Sleep10(void) {
  const struct timespec pause = {0, 10000000};
  nanosleep(&pause, 0);
}
#endif

typedef int32_t Status;
typedef uint8_t Id[16];

static const Id kUnknown = {0, 0, 0, 0, 0, 0, 0, 0, 0xC0, 0, 0, 0, 0, 0, 0, 0x46};
static const Id kCreator = {0x7E, 0x1F, 0x5D, 0xA9, 0x0C, 0x6B, 0x43, 0x4D,
                            0x8A, 0x2E, 0x5F, 0x9C, 0x3E, 0x7D, 0x1B, 0x68};
static const Id kFilter = {0x4D, 0x12, 0xE7, 0x22, 0x5A, 0x0B, 0x9C, 0x44,
                           0xBC, 0x15, 0x21, 0x3E, 0x7B, 0x98, 0x32, 0x4B};
static const Id kPull = {0x7B, 0x5C, 0x41, 0x4D, 0x61, 0x88, 0x93, 0x44,
                         0x9F, 0xE9, 0x75, 0x82, 0x11, 0x92, 0x45, 0x08};
static const Id kParameter = {0x9C, 0x19, 0x3A, 0x66, 0x80, 0x2C, 0x70, 0x40,
                              0x8D, 0x31, 0xB2, 0x4C, 0x5F, 0x3E, 0x73, 0x05};
static const Id kDialog = {0x0A, 0x7D, 0x5B, 0x0E, 0xB6, 0x54, 0x59, 0x4B,
                           0x8F, 0x5E, 0x2B, 0x1B, 0x6C, 0x1D, 0x9A, 0x41};
static const Id kContainer = {0x84, 0xB2, 0x96, 0xB1, 0xB4, 0xBA, 0x1A, 0x10,
                              0xB6, 0x9C, 0x00, 0xAA, 0x00, 0x34, 0x1D, 0x07};

/* The operation of an object's table at a place, as a function of the given type. */
#define SLOT(object, place, type) ((type)(*(void***)(object))[place])

typedef Status(CALL* QueryCall)(void*, const uint8_t*, void**);
typedef uint32_t(CALL* CountCall)(void*);
typedef Status(CALL* CreateCall)(void*, const char*, const uint8_t*, void**);
typedef Status(CALL* CreateDialogCall)(void*, const char*, intptr_t, const uint8_t*, void**);
typedef Status(CALL* NumberCall)(void*, int*);
typedef Status(CALL* InfoCall)(void*, int, char*, int, int*);
typedef Status(CALL* TextCall)(void*, char*, int);
typedef Status(CALL* ObjectCall)(void*, void*);
typedef Status(CALL* FindCall)(void*, const uint8_t*, void**);
typedef Status(CALL* AdviseCall)(void*, void*, uint32_t*);
typedef Status(CALL* OpenCall)(void*, intptr_t, intptr_t, intptr_t);
typedef Status(CALL* PlainCall)(void*);
typedef Status(CALL* PrepareCall)(void*, uint8_t*, int*, int);
typedef Status(CALL* RowsCall)(void*, int, int, int, int, int, int, uint8_t**, uint8_t**);
typedef Status(CALL* PumpCall)(int);
typedef Status(CALL* WindowCall)(void*, void**);

static void Release(void* object) {
  if (object) SLOT(object, 2, CountCall)(object);
}
static void* Query(void* object, const uint8_t* id) {
  void* result = 0;
  SLOT(object, 0, QueryCall)(object, id, &result);
  return result;
}

/* --- a source of one grey pixel: ReadRows, SetAbort, Prepare, GetInfo and the rest */

static Status CALL SourceQuery(void* self, const uint8_t* id, void** result) {
  const int known = memcmp(id, kUnknown, 16) == 0 || memcmp(id, kPull, 16) == 0;
  *result = known ? self : 0;
  return known ? 0 : (Status)0x80004002u;
}
static uint32_t CALL SourceCount(void* self) {
  (void)self;
  return 1;
}
static Status CALL SourceRows(void* self, int destX, int destY, int x, int y, int width, int height,
                              uint8_t** colour, uint8_t** mask) {
  int row;
  (void)self, (void)x, (void)y;
  for (row = destY; row < destY + height; ++row) {
    memset(colour[row] + 3 * destX, 128, 3 * (size_t)width);
    memset(mask[row] + destX, 0, (size_t)width);
  }
  return 0;
}
static Status CALL SourcePrepare(void* self, uint8_t* changed, int* revision, int track) {
  (void)self, (void)revision, (void)track;
  *changed = 1;
  return 0;
}
static Status CALL SourceNothing(void* self) {
  (void)self;
  return 0;
}
static void* kSourceTable[] = {(void*)(uintptr_t)SourceQuery,   (void*)(uintptr_t)SourceCount,
                               (void*)(uintptr_t)SourceCount,   (void*)(uintptr_t)SourceRows,
                               (void*)(uintptr_t)SourceNothing, (void*)(uintptr_t)SourcePrepare,
                               (void*)(uintptr_t)SourceNothing, (void*)(uintptr_t)SourceNothing,
                               (void*)(uintptr_t)SourceNothing, (void*)(uintptr_t)SourceNothing};
static void** source = kSourceTable;

/* --- one dialog */

struct Run {
  void* filter;
  int isClosed, brackets;
};

static void PullPixel(void* filter) {
  uint8_t colour[3] = {0, 0, 0}, mask[1] = {0}, changed = 0;
  uint8_t* rows[] = {colour};
  uint8_t* masks[] = {mask};
  int revision = -1;
  void* pull = Query(filter, kPull);
  SLOT(pull, 5, PrepareCall)(pull, &changed, &revision, 0);
  SLOT(pull, 3, RowsCall)(pull, 0, 0, 0, 0, 1, 1, rows, masks);
  printf("pixel %d %d %d\n", colour[0], colour[1], colour[2]);
  Release(pull);
}

static void OnHostCall(void* context, const char* line) {
  struct Run* run = context;
  if (strstr(line, " 59925 ")) ++run->brackets;
  if (strstr(line, " 59908 ")) run->isClosed = 1;
  if (strstr(line, " 59926 ")) {
    char text[8000] = "";
    void* parameter = Query(run->filter, kParameter);
    SLOT(parameter, 4, TextCall)(parameter, text, sizeof text);
    Release(parameter);
    printf("text %s\n", text);
    PullPixel(run->filter);
    --run->brackets;
  }
  fflush(stdout);
}

static void Attach(void* dialog, void* filter) {
  void* container = Query(dialog, kContainer);
  void* point = 0;
  uint32_t cookie = 0;
  SLOT(container, 4, FindCall)(container, kParameter, &point);
  SLOT(point, 5, AdviseCall)(point, filter, &cookie);
  Release(point);
  Release(container);
}

static void StayOpen(void* dialog, const struct Run* run, PumpCall pump) {
  void* window = 0;
  int turns;
  for (turns = 0; turns < 5; ++turns, Sleep10()) pump(0);
  SLOT(dialog, 15, WindowCall)(dialog, &window);
  TellPlaces(window);
  printf("ready\n");
  fflush(stdout);
  while (!run->isClosed && pump(1) == 0) {
  }
  printf("closed\n");
}

/* 1 when the class has no dialog, 0 when all went well. */
static int RunDialog(void* creator, const char* progId, PumpCall pump, int stays) {
  struct Run run = {0, 0, 0};
  void* dialog = 0;
  int turns, status = 0;
  CDialogHost* host = NewDialogHost(0);
  SLOT(creator, 3, CreateCall)(creator, progId, kFilter, &run.filter);
  SLOT(creator, 4, CreateDialogCall)
  (creator, progId, (intptr_t)DialogHostUnknown(host), kDialog, &dialog);
  if (!dialog) {
    Release(run.filter);
    ReleaseDialogHost(host);
    return 1;
  }
  SLOT(run.filter, 10, ObjectCall)(run.filter, &source);
  SetDialogHostHook(host, OnHostCall, &run);
  Attach(dialog, run.filter);
  if (SLOT(dialog, 9, OpenCall)(dialog, 0, 0, 0) != 0) {
    printf("%s: no window\n", progId);
    status = 2;
  }
  SLOT(dialog, 11, PlainCall)(dialog);
  if (stays) {
    StayOpen(dialog, &run, pump);
  } else {
    for (turns = 0; turns < 3; ++turns) pump(0);
    SLOT(dialog, 10, PlainCall)(dialog);
  }
  if (!run.isClosed || run.brackets != 0 || strstr(DialogHostLog(host), "nobody's to call")) {
    printf("%s: wrong calls\n%s", progId, DialogHostLog(host));
    status = 2;
  }
  Release(dialog);
  SLOT(run.filter, 10, ObjectCall)(run.filter, 0);
  Release(run.filter);
  ReleaseDialogHost(host);
  return status;
}

static int RunAll(void* creator, PumpCall pump) {
  int count = 0, dialogs = 0, status = 0, i;
  SLOT(creator, 5, NumberCall)(creator, &count);
  for (i = 0; i < count; ++i) {
    char name[200] = "";
    int order, result;
    SLOT(creator, 8, InfoCall)(creator, i, name, sizeof name, &order);
    result = RunDialog(creator, name, pump, 0);
    dialogs += result == 0;
    if (result == 2) status = 1;
  }
  printf("%d dialogs of %d classes\n", dialogs, count);
  return status || dialogs != 42;
}

int main(int argc, char** argv) {
  void* creator = 0;
  void* library = argc > 1 ? Load(argv[1]) : 0;
  int status;
  if (!library) {
    fprintf(stderr, "the library cannot be loaded\n");
    return 2;
  }
#ifdef _WIN32
  CoInitialize(0);
#endif
  ((Status(CALL*)(const uint8_t*, void**))Find(library, "FxboxCreateCreator"))(kCreator, &creator);
  if (!creator) return 2;
  PumpCall pump = (PumpCall)Find(library, "FxboxPumpEvents");
  status = argc > 2 ? RunDialog(creator, argv[2], pump, 1) : RunAll(creator, pump);
  Release(creator);
  printf("%s\n", status ? "wrong" : "well");
  return status;
}
