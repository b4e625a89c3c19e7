// A picture in one flat block: the private work picture of the filters.
#pragma once

#include <wtypes.h>

#include <cstddef>
#include <memory>

#include "base/Dib.h"
#include "base/Export.h"
#include "base/KvInterfaces.h"
#include "base/RowView.h"

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
  // Both planes, with anything in their rows: for whoever overwrites or clears them.
  MemoryPicture(const char* name, int width, int height);
  // Copies packed bitmaps, either of which may be null.
  MemoryPicture(const char* name, const BYTE* image, const BYTE* mask, int value3, int value4,
                int value1, int value2);
  // Reads what Serialize wrote. Not valid when the stream holds something else, ends early, or its
  // sizes contradict each other. What lies behind the picture may be read as well, up to 100 bytes.
  explicit MemoryPicture(IKvRead* stream);
  virtual ~MemoryPicture();
  MemoryPicture(const MemoryPicture&) = delete;
  MemoryPicture& operator=(const MemoryPicture&) = delete;

  // Whether there can be a picture of this size with both planes.
  static bool CanHold(int width, int height);

  bool IsValid() const { return block && width != 0 && height != 0; }
  // Image bits to 0, mask bits to 255.
  void Clear();
  // Writes the block: 0 and its size as they are, everything from 8 on compressed. False without a
  // block and when compressing failed; whether the stream took everything, its owner knows.
  bool Serialize(IKvWrite* stream) const;

  int Width() const { return width; }
  int Height() const { return height; }
  // One pointer a row; null without the plane.
  BYTE** ColourRows() const { return imageRows.get(); }
  BYTE** MaskRows() const { return maskRows.get(); }
  // Both planes, and as much of them as a smaller picture has.
  base::WritableRows Rows() const { return Rows(width, height); }
  base::WritableRows Rows(int partWidth, int partHeight) const {
    return {ColourRows(), MaskRows(), partWidth, partHeight};
  }
  BYTE* Block() const { return block; }
  BYTE* Image() const { return image; }
  BYTE* Mask() const { return mask; }
  // The values 1 to 4.
  int Value(int number) const { return values[number - 1]; }

 protected:
  MemoryPicture() = default;

  // What is to be written into a fresh block.
  struct Content {
    int width = 1, height = 1;  // of a blank picture
    const BYTE* image = nullptr;
    const BYTE* mask = nullptr;   // to be copied; null: blank
    std::size_t imageBytes = 0;   // 0: without image
    std::size_t maskBytes = 0;    // 0: without mask
    std::size_t statedBytes = 0;  // what the block says of its size
    int values[4] = {};           // 1 to 4
    bool isPossible = false;
    bool isCleared = true;  // a blank picture

    // Of the block; 0 when there can be none.
    std::size_t Bytes() const;
    // Into any memory.
    void WriteTo(BYTE* newBlock) const;
  };
  static Content BlankContent(int width, int height, bool wantImage, bool wantMask);
  static Content ContentOf(const BYTE* image, const BYTE* mask, const int (&values)[4]);

  // Whether a block says that nobody ever made a picture in it.
  static bool IsBlank(const BYTE* block, std::size_t bytes);
  // The bytes of the picture at the beginning of a block of this size; 0 when it holds none, or one
  // that would reach beyond its end.
  static std::size_t PictureBytes(const BYTE* block, std::size_t bytes);
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
  // Of the block, whatever it says of its size.
  std::size_t BlockBytes() const;
  // A block of the picture's own.
  void Build(const Content& content);
};
