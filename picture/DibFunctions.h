/* Packed bitmaps for hosts in any language: a block of memory that holds a head, a colour table and
 * rows. The header compiles as C and as C++.
 *
 * Blocks. A bitmap is a handle of GlobalAlloc and its kin, reached by GlobalLock; its size is what
 * GlobalSize says, and nothing outside is ever read or written. Functions that give a bitmap give a
 * new moveable block that the caller frees with DibFree or GlobalFree, or hands to the clipboard.
 * Arguments stay the caller's.
 *
 * Shapes. What is taken: a head of the system's (12, 40 or more bytes, one plane), 1, 4, 8, 16, 24
 * or 32 bits, bit fields and run lengths, rows from the bottom up or, with a negative height, from
 * the top down, each filled up to 4 bytes, colours as 4 bytes blue, green, red, 0. A bit count of
 * -8 is a plane of 8 bits without a colour table. At most 2^bits colours, 0 in the head counts as
 * all of them; on more than 8 bits a colour table may stand in front of the rows. The stated size
 * of the rows is not trusted.
 * What is given: a head of 40 bytes (with three fields behind it where 16 or 32 bits need them), no
 * run lengths, rows from the bottom up unless it is said otherwise, no more than 2^31 - 1 bytes.
 *
 * Masks. 0 is opaque, 255 means that nothing is there.
 *
 * Failure. Null or 0 for a null handle, a damaged head, a block that is too short, arguments out of
 * range, and lack of memory; then nothing has changed. Nothing is thrown.
 *
 * Threads. Any thread; a bitmap belongs to one at a time. */
#ifndef FXBOX_PICTURE_DIB_FUNCTIONS_H
#define FXBOX_PICTURE_DIB_FUNCTIONS_H

#include <stddef.h> /* NOLINT(modernize-deprecated-headers): C */
#include <stdint.h> /* NOLINT(modernize-deprecated-headers): C */

#include "base/Export.h"

#ifdef __cplusplus
extern "C" {
#endif

/* HGLOBAL. */
typedef void* DibHandle; /* NOLINT(modernize-use-using): C */

/* In pixels, from the top left corner; the sides are at least 1. */
typedef struct DibRectangle { /* NOLINT(modernize-use-using): C */
  int32_t x;
  int32_t y;
  int32_t width;
  int32_t height;
} DibRectangle;

/* Where to paint: the one that is not null. */
typedef struct DibTarget { /* NOLINT(modernize-use-using): C */
  void* device;            /* a device context (HDC) of Windows; elsewhere there is none */
  DibHandle bitmap;        /* of 24 bits, without run lengths */
} DibTarget;

/* --- making and reading */

/* A blank bitmap of 1, 4, 8, 16, 24, 32 or -8 bits: bits 0, in 8-bit planes 255. Colours: black and
 * white; the 16 standard colours; the same repeated to 256. */
FXBOX_API DibHandle DibCreate(int bits, int width, int height);

/* The same with rows from the top down when the height is negative, and with a colour table of
 * `count` colours 0xRRGGBB, at most 2^bits; 0 for the standard ones. More than 8 bits take none. */
FXBOX_API DibHandle DibCreateEx(int bits, int width, int height, const uint32_t* colours,
                                int count);

/* 1 when the block is freed. */
FXBOX_API int DibFree(DibHandle dib);

/* Reads a BMP file; the name is in the system's code page (on Linux the bytes of the name). Depth
 * and colours stay, run lengths are unpacked. */
FXBOX_API DibHandle DibOpenFile(const char* file);

/* The same from a bitmap resource of a loaded module, null for the program. On Windows `name` is a
 * name or a number in the lowest 16 bits, as FindResource takes it. Elsewhere the module exports
 * the bytes between two symbols, NAME_start and NAME_end, and `module` is what dlopen gave. */
FXBOX_API DibHandle DibOpenFromModule(void* module, const char* name);

/* The same from memory, which holds a BMP file or a packed bitmap. */
FXBOX_API DibHandle DibReadDib(const void* bytes, size_t size);

/* Bytes of the BMP file that would hold the bitmap as it is: 14 and those of its parts. */
FXBOX_API uint32_t DIBFileSize(DibHandle dib);

/* --- changing */

/* The bitmap in another size. Up to 8 bits the nearest pixels with their colours, depth and colour
 * table stay. Above, a bitmap of 24 bits: in a direction that shrinks a pixel is the mean of what
 * it covers, in one that grows pixels are repeated. */
FXBOX_API DibHandle DibScale(DibHandle dib, int width, int height);

/* How the colour table of a bitmap of up to 8 bits is meant. Usage 0: its entries become the
 * colours 0xRRGGBB, as many as there are of both. Usage 1: it becomes 16-bit numbers of palette
 * entries, 0 upwards, in the first half of its place; the colours are not looked at. All other
 * functions expect colours, so turn it back before. In place; not for the head of 12 bytes. */
FXBOX_API int DibSetUsage(DibHandle dib, const uint32_t* colours, int count, int usage);

/* Gives a bitmap of up to 8 bits the colours 0xRRGGBB, no more than it has, and each pixel the
 * colour that is nearest to its own: the least sum of squared differences, the first on a tie. In
 * place; not for run lengths, planes and the head of 12 bytes. */
FXBOX_API int DibMapToPalette(DibHandle dib, const uint32_t* colours, int count);

/* The bitmap with 24 bits. */
FXBOX_API DibHandle Make24BitDib(DibHandle dib);

/* The bitmap in 256 greys, 8 bits: (77 red + 151 green + 28 blue) / 256. */
FXBOX_API DibHandle GolorGray(DibHandle dib);

/* --- painting */

/* Paints the part `from` of the bitmap (null: all) into the rectangle `to` (null: at 0, 0 in its
 * own size); the nearest pixel where the sizes differ. `from` lies within the bitmap; of `to` the
 * part within the target is painted. 1 also when that is none. */
FXBOX_API int DIBPaint(const DibTarget* target, const DibRectangle* to, DibHandle dib,
                       const DibRectangle* from);

/* The same through a mask of the bitmap's size, 8 or -8 bits, whose bytes count, not its colours:
 * (new * (255 - mask) + old * mask) / 255. */
FXBOX_API int DIBDrawWithMask(const DibTarget* target, const DibRectangle* to, DibHandle dib,
                              DibHandle mask, const DibRectangle* from);

/* --- masks */

/* A mask of 8 bits with 256 greys from rows of `width` bytes; rows[0] is the bottom row. */
FXBOX_API DibHandle ConvertMaskArrayToDib(const uint8_t* const* rows, int width, int height);

/* The other way; the mask has 8 or -8 bits and exactly this size, of which `width` bytes a row are
 * written. */
FXBOX_API int ConvertMaskDibToArray(DibHandle mask, uint8_t* const* rows, int width, int height);

#ifdef __cplusplus
}
#endif

#endif
