/* A host in plain C at the functions for packed bitmaps of the shared library. The exit status is 0
 * when everything came out as it should. */
#include <stdio.h>

#include "picture/DibFunctions.h"
#include "tests/support/Check.h"

#ifdef _WIN32
#include <windows.h>
#else
/* They come with the library. */
void* GlobalAlloc(unsigned flags, size_t size);
void* GlobalLock(void* block);
int GlobalUnlock(void* block);
size_t GlobalSize(void* block);
#endif

enum { kHead = 40 };

static void Paint(void) {
  static const uint32_t colours[2] = {0x102030, 0xA0B0C0};
  DibHandle target = DibCreate(24, 5, 4), dib = DibCreateEx(1, 3, 2, colours, 2);
  DibTarget to = {NULL, target};
  DibRectangle place = {1, 1, 3, 2};
  uint8_t* bytes;
  CHECK(target != NULL && dib != NULL && GlobalSize(dib) == kHead + 8 + 2 * 4);
  bytes = GlobalLock(dib);
  CHECK(bytes != NULL && bytes[0] == kHead && bytes[kHead + 4] == 0xC0);
  bytes[kHead + 8] = 0x40; /* the middle of the bottom row */
  GlobalUnlock(dib);
  CHECK(DIBPaint(&to, &place, dib, NULL) == 1);
  /* 5 x 4 pixels in rows of 16 bytes; the painted bottom row is the second from below. */
  bytes = (uint8_t*)GlobalLock(target) + kHead + 16;
  CHECK(bytes[2] == 0 && bytes[3] == 0x30 && bytes[6] == 0xC0 && bytes[8] == 0xA0 &&
        bytes[12] == 0);
  GlobalUnlock(target);
  CHECK(DIBFileSize(dib) == 14 + kHead + 8 + 2 * 4);
  CHECK(DibFree(dib) == 1 && DibFree(target) == 1);
}

/* The others are there for C as well. */
static void Refuse(void) {
  CHECK(ConvertMaskArrayToDib(NULL, 3, 2) == NULL && ConvertMaskDibToArray(NULL, NULL, 3, 2) == 0);
  CHECK(DibReadDib("BM", 2) == NULL && DibOpenFile("no such file.bmp") == NULL);
  CHECK(DibOpenFromModule(NULL, "no_such_bitmap") == NULL);
  CHECK(DibScale(NULL, 1, 1) == NULL && Make24BitDib(NULL) == NULL && GolorGray(NULL) == NULL);
  CHECK(DibSetUsage(NULL, NULL, 0, 0) == 0 && DibMapToPalette(NULL, NULL, 0) == 0);
  CHECK(DIBDrawWithMask(NULL, NULL, NULL, NULL, NULL) == 0);
}

/* A bitmap that this program carries. */
#ifndef _WIN32
__attribute__((visibility("default"))) const uint8_t host_bitmap_start[kHead + 4] = {
    [0] = kHead, [4] = 1, [8] = 1, [12] = 1, [14] = 24, [kHead] = 9, [kHead + 1] = 8};
/* Behind it in the file, as a linker that puts files into programs would define it. */
__asm__(".globl host_bitmap_end\n.set host_bitmap_end, host_bitmap_start + 44\n");

#define OWN_BITMAP "host_bitmap"
#else
#define OWN_BITMAP "HOSTBITMAP"
#endif

static void ReadOwnBitmap(void) {
  DibHandle dib = DibOpenFromModule(NULL, OWN_BITMAP);
  const uint8_t* bytes = dib ? GlobalLock(dib) : NULL;
  CHECK(bytes != NULL && bytes[kHead] == 9 && bytes[kHead + 1] == 8);
  if (bytes) GlobalUnlock(dib);
  DibFree(dib);
}

int main(void) {
  Paint();
  Refuse();
  ReadOwnBitmap();
  return failures > 0;
}
