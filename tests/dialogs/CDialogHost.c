#include "tests/dialogs/CDialogHost.h"

#include <stdarg.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

typedef int32_t Status;

static const uint8_t kUnknown[16] = {0, 0, 0, 0, 0, 0, 0, 0, 0xC0, 0, 0, 0, 0, 0, 0, 0x46};
/* Registry, optional, page, messages. */
static const uint8_t kIds[4][16] = {{0x9F, 0x65, 0x87, 0x32, 0x10, 0x65, 0xA9, 0x4C, 0x8E, 0x82,
                                     0xC4, 0x3B, 0x1B, 0x85, 0x5B, 0x2A},
                                    {0x0C, 0xA3, 0x9F, 0x71, 0xEB, 0x3B, 0xD9, 0x47, 0x87, 0x71,
                                     0x89, 0x3D, 0x20, 0xCC, 0xFE, 0x01},
                                    {0x91, 0x09, 0x51, 0xF8, 0xC9, 0x2A, 0x86, 0x4D, 0x92, 0x1D,
                                     0xB6, 0xB8, 0x48, 0xFC, 0x52, 0xCB},
                                    {0x4B, 0xAC, 0xF1, 0xC7, 0x73, 0xC5, 0x9B, 0x4C, 0x8C, 0xA4,
                                     0xCD, 0x0A, 0xBE, 0x4C, 0x8C, 0x83}};
static const char* const kNames[] = {"registry", "optional", "page", "messages"};

enum { kSlots = 64 };

/* What an interface pointer leads to. */
struct Face {
  void* const* table;
  CDialogHost* host;
};

struct CDialogHost {
  struct Face faces[4];
  void* tables[4][kSlots];
  int lacks;
  long references;
  char* log;
  size_t logLength;
  CDialogHostHook hook;
  void* hookContext;
  char key[64], words[64];
  int32_t (*setString)(void*, const char*);
  intptr_t answer;
  int pages;
};

static CDialogHost* HostOf(void* face) {
  return ((struct Face*)face)->host;
}

static int FaceIndex(void* face) {
  return (int)((struct Face*)face - HostOf(face)->faces);
}

static void Note(void* face, const char* format, ...) {
  char line[600];
  CDialogHost* host = HostOf(face);
  int length = snprintf(line, sizeof line, "%s ", kNames[FaceIndex(face)]);
  va_list arguments;
  va_start(arguments, format);
  length += vsnprintf(line + length, sizeof line - (size_t)length, format, arguments);
  va_end(arguments);
  if (length >= (int)sizeof line) length = (int)sizeof line - 1;
  host->log = realloc(host->log, host->logLength + (size_t)length + 2);
  memcpy(host->log + host->logLength, line, (size_t)length);
  host->logLength += (size_t)length;
  memcpy(host->log + host->logLength, "\n", 2);
  host->logLength += 1;
  if (host->hook) host->hook(host->hookContext, line);
}

static Status Query(void* face, const uint8_t* id, void** result) {
  CDialogHost* host = HostOf(face);
  int i;
  *result = 0;
  if (memcmp(id, kUnknown, 16) == 0) *result = &host->faces[0];
  for (i = 0; i < 4; ++i) {
    if (memcmp(id, kIds[i], 16) == 0 && !(host->lacks & 1 << i)) *result = &host->faces[i];
  }
  if (!*result) return (Status)0x80004002u;
  ++host->references;
  return 0;
}

static uint32_t AddReference(void* face) {
  return (uint32_t)++HostOf(face)->references;
}

static uint32_t ReleaseReference(void* face) {
  CDialogHost* host = HostOf(face);
  const long left = --host->references;
  if (left == 0) {
    free(host->log);
    free(host);
  }
  return (uint32_t)left;
}

static Status Unexpected(void* face) {
  Note(face, "an operation that is nobody's to call");
  return (Status)0x80004001u;
}

static Status Register(void* face, const char* instance, void* runnable) {
  Note(face, "7 %s %s", instance, runnable ? "runnable" : "nothing");
  return 0;
}
static Status Unregister(void* face, const char* instance) {
  Note(face, "8 %s", instance);
  return 0;
}
static Status ShowDialog(void* face, const char* instance) {
  Note(face, "9 %s", instance);
  return 0;
}
static Status Forward(void* face, intptr_t a) {
  Note(face, "11 %ld", (long)a);
  return 0;
}

static Status SetButton(void* face, const char* button, int state) {
  Note(face, "19 %s %d", button, state);
  return 0;
}
static Status Localize(void* face, const char* key, void* words) {
  CDialogHost* host = HostOf(face);
  if (!host->setString || strcmp(key, host->key) != 0) return (Status)0x80004005u;
  return host->setString(words, host->words);
}

/* Messages whose first argument is a text. */
static int HasText(int message) {
  static const int kWithText[] = {59911, 59908, 59937, 59961, 59953, 59954,
                                  57953, 59970, 59971, 59972, 57954};
  size_t i;
  for (i = 0; i < sizeof kWithText / sizeof *kWithText; ++i) {
    if (kWithText[i] == message) return 1;
  }
  return 0;
}

static Status Post(void* face, int page, int message, intptr_t a, intptr_t b, intptr_t* result) {
  if (HasText(message)) {
    Note(face, "5 page=%d %d \"%s\" %ld", page, message, a ? (const char*)a : "", (long)b);
  } else if (message == 58741) {
    Note(face, "5 page=%d %d %s", page, message, a ? "handle" : "none");
  } else {
    Note(face, "5 page=%d %d %ld %ld", page, message, (long)a, (long)b);
  }
  *result = HostOf(face)->answer;
  return 0;
}
static Status FindPage(void* face, const char* name, int* page) {
  static const char* const kPages[] = {"", "ZN_FilterDialog_Dispatcher", "GalleryPage",
                                       "ProcessFilterHistoryPage", "ToolBarNotifications"};
  int i;
  *page = 0;
  for (i = 1; i < 5; ++i) {
    if (strcmp(kPages[i], name) == 0) *page = i;
  }
  ++HostOf(face)->pages;
  Note(face, "14 %s", name);
  return 0;
}
static Status ReleasePage(void* face, int page) {
  --HostOf(face)->pages;
  Note(face, "15 page=%d", page);
  return 0;
}
static Status SetReceiver(void* face, int page, void* receiver) {
  Note(face, "16 page=%d %s", page, receiver ? "receiver" : "nobody");
  return 0;
}

/* A function pointer as a table's entry. */
#define SLOT(face, place, function) host->tables[face][place] = (void*)(uintptr_t)(function)

CDialogHost* NewDialogHost(int lacks) {
  CDialogHost* host = calloc(1, sizeof *host);
  int face, place;
  host->lacks = lacks;
  host->references = 1;
  host->log = calloc(1, 1);
  for (face = 0; face < 4; ++face) {
    host->faces[face].table = host->tables[face];
    host->faces[face].host = host;
    for (place = 3; place < kSlots; ++place) SLOT(face, place, Unexpected);
    SLOT(face, 0, Query);
    SLOT(face, 1, AddReference);
    SLOT(face, 2, ReleaseReference);
  }
  SLOT(0, 7, Register);
  SLOT(0, 8, Unregister);
  SLOT(0, 9, ShowDialog);
  SLOT(0, 11, Forward);
  SLOT(2, 19, SetButton);
  SLOT(2, 43, Localize);
  SLOT(3, 5, Post);
  SLOT(3, 14, FindPage);
  SLOT(3, 15, ReleasePage);
  SLOT(3, 16, SetReceiver);
  return host;
}

void* DialogHostUnknown(CDialogHost* host) {
  return &host->faces[0];
}

void SetDialogHostHook(CDialogHost* host, CDialogHostHook hook, void* context) {
  host->hook = hook;
  host->hookContext = context;
}

const char* DialogHostLog(CDialogHost* host) {
  return host->log;
}

void ForgetDialogHostLog(CDialogHost* host) {
  host->logLength = 0;
  host->log[0] = 0;
}

void SetDialogHostWords(CDialogHost* host, const char* key, const char* words,
                        int32_t (*setString)(void*, const char*)) {
  snprintf(host->key, sizeof host->key, "%s", key);
  snprintf(host->words, sizeof host->words, "%s", words);
  host->setString = setString;
}

void SetDialogHostAnswer(CDialogHost* host, intptr_t answer) {
  host->answer = answer;
}

long DialogHostReferences(CDialogHost* host) {
  return host->references;
}

void ReleaseDialogHost(CDialogHost* host) {
  ReleaseReference(&host->faces[0]);
}
