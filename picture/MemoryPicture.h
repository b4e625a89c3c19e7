// A picture in one flat block: the private work picture of the filters.
#pragma once

#include <wtypes.h>

#include <cstddef>
#include <memory>

#include "base/Dib.h"
#include "base/Export.h"

// The block, all fields 32-bit little-endian, at any address that is a multiple of 4:
//
//   0        0
//   4        total size of the block
//   8        not written
//   12..27   four values of the host's, passed through
//   28       n, byte size of the image bitmap, 0 when there is none
//   32       image bitmap, packed, 24 bits
//   32 + n   byte size of the mask bitmap, 0 when there is none
//   36 + n   mask bitmap, packed, bit count -8: an 8-bit plane without colour table
//
// Its form does not depend on where it lies. Rows are padded to 4 bytes; row 0 is the bottom row.
//
// One thread at a time. A picture that could not be made (sides whose product is too large, no
// memory) is not valid and has null pointers; no constructor throws for it.
class FXBOX_API MemoryPicture {
 public:
  // A blank picture, colour 0 and mask 255. Sizes below 1 become 1. The name is for the reader of
  // the code alone. Width and height are those of the image: 0 without one.
  MemoryPicture(const char* name, int width, int height, bool wantImage, bool wantMask);
  // Copies packed bitmaps, either of which may be null.
  MemoryPicture(const char* name, const BYTE* image, const BYTE* mask, int value3, int value4,
                int value1, int value2);
  virtual ~MemoryPicture();
  MemoryPicture(const MemoryPicture&) = delete;
  MemoryPicture& operator=(const MemoryPicture&) = delete;

  bool IsValid() const { return block && width != 0 && height != 0; }
  // Image bits to 0, mask bits to 255.
  void Clear();

  int Width() const { return width; }
  int Height() const { return height; }
  // One pointer a row; null without the plane.
  BYTE** ColourRows() const { return imageRows.get(); }
  BYTE** MaskRows() const { return maskRows.get(); }
  BYTE* Block() const { return block; }
  BYTE* Image() const { return image; }
  BYTE* Mask() const { return mask; }
  // The values 1 to 4.
  int Value(int number) const { return values[number - 1]; }

 protected:
  MemoryPicture() = default;
  // Makes pointers and row tables from a block that holds a picture.
  void Attach(BYTE* newBlock);

  BYTE* block = nullptr;
  int width = 0;
  int height = 0;
  int values[4] = {};
  std::unique_ptr<BYTE*[]> imageRows;
  std::unique_ptr<BYTE*[]> maskRows;
  bool shared = false;  // the block belongs to somebody else
  BYTE* image = nullptr;
  BYTE* mask = nullptr;

 private:
  // Allocates and writes the head; false when the sizes do not fit a block.
  bool Allocate(std::size_t imageBytes, std::size_t maskBytes, std::size_t statedBytes,
                const int (&newValues)[4]);
};
