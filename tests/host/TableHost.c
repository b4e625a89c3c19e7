/* A host in plain C that uses the tables of fxbox.h: a source of its own, which lends its rows, a
 * chain, bands of rows. */
#include <fxbox.h>
#include <stddef.h>
#include <stdio.h>
#include <string.h>

#include "tests/support/Check.h"

enum { kWidth = 6, kHeight = 5 };

typedef struct {
  const IAnimFilterDestCallsThisVtbl* lpVtbl; /* first: so it is an IAnimFilterDestCallsThis */
  IAnimRowLender lender;                      /* the second interface of the same object */
  uint32_t references;
  IAnimFilterSrcCallsThis* destination; /* not counted */
  uint8_t colour[kHeight][3 * kWidth];
  uint8_t opaque[kWidth]; /* the mask of every row */
  const uint8_t *colourRows[kHeight], *maskRows[kHeight];
  int loans, returns;
} Source;

static Source* SourceOf(IAnimRowLender* lender) {
  return (Source*)((uint8_t*)lender - offsetof(Source, lender));
}

static bool IsSame(const GUID* a, const GUID* b) {
  return memcmp(a, b, sizeof *a) == 0;
}

static uint8_t ByteAt(int y, int i) {
  return (uint8_t)(13 * i + 29 * y);
}

static HRESULT FXBOX_CALL Query(IAnimFilterDestCallsThis* self, const GUID* iid, void** result) {
  *result = IsSame(iid, &IID_IUnknown) || IsSame(iid, &IID_IAnimFilterDestCallsThis) ? self : NULL;
  if (IsSame(iid, &IID_IAnimRowLender)) *result = &((Source*)self)->lender;
  if (*result) ++((Source*)self)->references;
  return *result ? S_OK : E_NOINTERFACE;
}
static uint32_t FXBOX_CALL AddRef(IAnimFilterDestCallsThis* self) {
  return ++((Source*)self)->references;
}
static uint32_t FXBOX_CALL Release(IAnimFilterDestCallsThis* self) {
  return --((Source*)self)->references;
}
static HRESULT FXBOX_CALL QueryLender(IAnimRowLender* self, const GUID* iid, void** result) {
  return Query((IAnimFilterDestCallsThis*)SourceOf(self), iid, result);
}
static uint32_t FXBOX_CALL AddRefLender(IAnimRowLender* self) {
  return ++SourceOf(self)->references;
}
static uint32_t FXBOX_CALL ReleaseLender(IAnimRowLender* self) {
  return --SourceOf(self)->references;
}
/* The picture stays in memory as long as the source: there is nothing to do but to say where. */
static HRESULT FXBOX_CALL LendRows(IAnimRowLender* self, int width, int height,
                                   const uint8_t* const** colourRows,
                                   const uint8_t* const** maskRows) {
  Source* source = SourceOf(self);
  if (width > kWidth || height > kHeight) return 1;
  *colourRows = source->colourRows;
  *maskRows = source->maskRows;
  ++source->loans;
  return S_OK;
}
static HRESULT FXBOX_CALL ReturnRows(IAnimRowLender* self) {
  ++SourceOf(self)->returns;
  return S_OK;
}
static const IAnimRowLenderVtbl kLenderTable = {QueryLender, AddRefLender, ReleaseLender, LendRows,
                                                ReturnRows};

static HRESULT FXBOX_CALL ReadRows(IAnimFilterDestCallsThis* self, int destX, int destY, int srcX,
                                   int srcY, int width, int height, uint8_t** colourRows,
                                   uint8_t** maskRows) {
  for (int y = 0; y < height; ++y) {
    memcpy(&colourRows[destY + y][3 * destX], &((Source*)self)->colour[srcY + y][3 * srcX],
           3 * (size_t)width);
    memset(maskRows[destY + y] + destX, 0, (size_t)width);
  }
  return S_OK;
}
static HRESULT FXBOX_CALL SetAbort(IAnimFilterDestCallsThis* self, bool abort) {
  (void)self, (void)abort;
  return S_OK;
}
static HRESULT FXBOX_CALL Prepare(IAnimFilterDestCallsThis* self, bool* changed, int* revision,
                                  bool trackRevision) {
  IAnimFilterSrcCallsThis* to = ((Source*)self)->destination;
  (void)changed, (void)revision, (void)trackRevision;
  if (!to) return S_OK;
  to->lpVtbl->SetPictureSize(to, kWidth, kHeight);
  to->lpVtbl->SetExtent(to, kWidth, kHeight);
  to->lpVtbl->SetOffset(to, 0, 0);
  to->lpVtbl->SetTargetSize(to, kWidth, kHeight);
  return S_OK;
}
static HRESULT FXBOX_CALL GetInfo(IAnimFilterDestCallsThis* self, int* width, int* height,
                                  int* offsetX, int* offsetY, int* extentWidth, int* extentHeight) {
  (void)self;
  *width = *extentWidth = kWidth, *height = *extentHeight = kHeight;
  *offsetX = *offsetY = 0;
  return S_OK;
}
static HRESULT FXBOX_CALL AttachDestination(IAnimFilterDestCallsThis* self, void* destination) {
  Source* source = (Source*)self;
  IUnknown* given = destination;
  source->destination = NULL;
  if (!given) return S_OK;
  HRESULT status = given->lpVtbl->QueryInterface(given, &IID_IAnimFilterSrcCallsThis,
                                                 (void**)&source->destination);
  if (source->destination) source->destination->lpVtbl->Release(source->destination);
  return status;
}
static HRESULT FXBOX_CALL ReadPixel(IAnimFilterDestCallsThis* self, uint8_t* pixel) {
  (void)self, (void)pixel;
  return S_OK;
}
static HRESULT FXBOX_CALL SendToSource(IAnimFilterDestCallsThis* self, intptr_t message) {
  (void)self, (void)message;
  return S_OK;
}
static const IAnimFilterDestCallsThisVtbl kSourceTable = {
    Query,   AddRef,  Release,           ReadRows,  SetAbort,
    Prepare, GetInfo, AttachDestination, ReadPixel, SendToSource};

/* Pulls all rows in bands through one filter, which inverts the picture or turns it half around. */
static void PullThrough(IAnimFilterChain* chain, IAnimFilterCreator* creator, const char* text,
                        int band) {
  uint8_t colour[kHeight][3 * kWidth], mask[kHeight][kWidth];
  uint8_t *colourRows[kHeight], *maskRows[kHeight];
  IAnimFilterDestCallsThis* tail = NULL;
  bool inverts = strstr(text, "Invert") != NULL;
  int width = 0, height = 0, ignored = 0;
  for (int y = 0; y < kHeight; ++y) colourRows[y] = colour[y], maskRows[y] = mask[y];
  CHECK(chain->lpVtbl->SetChainTextLocked(chain, text, "(", ")", creator) == S_OK);
  CHECK(chain->lpVtbl->GetAt(chain, -1, &IID_IAnimFilterDestCallsThis, (void**)&tail) == S_OK);
  CHECK(tail->lpVtbl->GetInfo(tail, &width, &height, &ignored, &ignored, &ignored, &ignored) ==
        S_OK);
  CHECK(width == kWidth && height == kHeight);
  for (int y = 0; y < kHeight; y += band) {
    int rows = y + band <= kHeight ? band : kHeight - y;
    CHECK(tail->lpVtbl->ReadRows(tail, 0, y, 0, y, kWidth, rows, colourRows, maskRows) == S_OK);
  }
  for (int y = 0; y < kHeight; ++y) {
    for (int i = 0; i < 3 * kWidth; ++i) {
      int turned = ByteAt(kHeight - 1 - y, 3 * (kWidth - 1 - i / 3) + i % 3);
      CHECK(colour[y][i] == (inverts ? 255 - ByteAt(y, i) : turned));
    }
  }
  tail->lpVtbl->Release(tail);
}

/* The last slots of the tables, which lie right only if all before them do. */
static void CheckLastSlots(IAnimFilterCreator* creator, IAnimFilterChain* chain) {
  IAnimFilter* filter = NULL;
  IAnimFilterParameter* parameter = NULL;
  char text[200] = "";
  int order = 0;
  CHECK(creator->lpVtbl->GetFilterInfo(creator, 0, text, sizeof text, &order) == S_OK);
  CHECK(strncmp(text, "ZNFilter.", 9) == 0 && order > 0);
  CHECK(chain->lpVtbl->CheckArgument(chain, 77) == 77);
  CHECK(chain->lpVtbl->GetAt(chain, 0, &IID_IAnimFilter, (void**)&filter) == S_OK);
  CHECK(filter->lpVtbl->QueryInterface(filter, &IID_IAnimFilterParameter, (void**)&parameter) ==
        S_OK);
  CHECK(parameter->lpVtbl->SetNamedValue(parameter, "Note", "kept") == S_OK);
  CHECK(parameter->lpVtbl->GetNamedValue(parameter, "Note", text, sizeof text) == S_OK);
  CHECK(strcmp(text, "kept") == 0);
  parameter->lpVtbl->Release(parameter);
  filter->lpVtbl->Release(filter);
}

int main(void) {
  Source source = {.lpVtbl = &kSourceTable, .lender = {&kLenderTable}, .references = 1};
  IAnimFilterCreator* creator = NULL;
  IAnimFilterChain* chain = NULL;

#ifdef _WIN32
  CoInitialize(NULL);
#endif
  for (int y = 0; y < kHeight; ++y) {
    source.colourRows[y] = source.colour[y], source.maskRows[y] = source.opaque;
    for (int i = 0; i < 3 * kWidth; ++i) source.colour[y][i] = ByteAt(y, i);
  }
  CHECK(FxboxCreateCreator(&IID_IAnimFilterCreator, (void**)&creator) == S_OK);
  if (!creator) return 1;
  CHECK(creator->lpVtbl->CreateChain(creator, &IID_IAnimFilterChain, (void**)&chain) == S_OK);
  CHECK(chain->lpVtbl->SetSource(chain, &source) == S_OK);
  PullThrough(chain, creator, "ZNFilter.Invert.1(Inversity=100)", 2);
  CheckLastSlots(creator, chain);
  /* A filter that must see the whole picture reads the rows that it is lent. */
  CHECK(source.loans == 0);
  PullThrough(chain, creator, "ZNFilter.Rotate.1(Angle=180)", kHeight);
  CHECK(source.loans == 1 && source.returns == 1);

  chain->lpVtbl->RemoveAll(chain);
  chain->lpVtbl->SetSource(chain, NULL);
  chain->lpVtbl->Release(chain);
  creator->lpVtbl->Release(creator);
  CHECK(source.references == 1);
  return failures > 0;
}
