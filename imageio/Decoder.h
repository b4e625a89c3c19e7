// What every decoder of a picture format implements, and how its rows reach the caller.
#pragma once

#include <memory>
#include <string>

#include "imageio/ImageFile.h"
#include "imageio/RowSink.h"
#include "imageio/Source.h"

namespace imageio {

struct Size {
  int width = 0;
  int height = 0;
  bool operator==(const Size&) const = default;
};

// What the head of a file tells. The size is the stored one, before the orientation is applied.
struct Head {
  Size size;
  bool hasMask = false;
  int orientation = 1;  // 1 to 8 in the numbering of EXIF and TIFF
  Metadata metadata;
  std::vector<std::string> notes;  // as in ImageInfo
};

// One picture file of one format. A decoder's constructor reads the head, so that an object always
// has a valid one; the source must outlive it. Failures are ImageErrors.
class Decoder {
 public:
  virtual ~Decoder() = default;

  const Head& GetHead() const { return head; }
  void LimitWork(const WorkLimit& limit) { workLimit = limit; }

  // Chooses the smallest size not below `wanted` in which the format can decode by itself; the
  // following calls of Decode give it. Most formats know their full size only.
  virtual Size Reduce(Size /*wanted*/) { return head.size; }

  // Whether the first row that Decode hands out is the top one as stored.
  virtual bool BeginsAtTop() const { return true; }

  // Hands every row to the sink exactly once, from the top to the bottom or the other way around.
  // False as soon as the sink wants no more.
  virtual bool Decode(RowSink& sink) = 0;

 protected:
  // Takes the size that the file claims. An ImageError where the picture would not fit the
  // pipeline, before anybody allocates for it.
  void SetSize(std::int64_t width, std::int64_t height);
  // Notes that a sample loses its lower bits.
  void NoteBits(int bits);

  Head head;
  WorkLimit workLimit;
};

std::unique_ptr<Decoder> OpenPnm(Source& source);  // PAM too
std::unique_ptr<Decoder> OpenPng(Source& source);
std::unique_ptr<Decoder> OpenJpeg(Source& source);
std::unique_ptr<Decoder> OpenTiff(Source& source);
std::unique_ptr<Decoder> OpenBmp(Source& source);

// A message of one of the C libraries in the form of our own: small initial, no full stop.
std::string LibraryMessage(const char* text);

// Some formats store a resolution as whole pixels a metre: the whole number an inch that this comes
// from, if there is one.
double PixelsAnInch(std::uint32_t aMetre);
// The other way around.
double PixelsAMetre(double anInch);

// A row of 8-bit samples, `stride` bytes from pixel to pixel, as blue, green, red and mask.
// Channels: 1 grey, 2 grey and alpha, 3 red, green, blue, 4 with alpha.
void StoreSamples(const BYTE* samples, int width, int channels, int stride, const RowBuffer& row);

// Rounds value / limit to a share of 255; a value beyond the limit counts as the limit.
constexpr BYTE ScaleToByte(std::uint32_t value, std::uint32_t limit) {
  return static_cast<BYTE>((std::uint64_t{value < limit ? value : limit} * 255 + limit / 2) /
                           limit);
}

// Light that two filters let through, each 0 to 255; the product rounded.
constexpr BYTE MultiplyBytes(int a, int b) {
  return static_cast<BYTE>((a * b + 127) / 255);
}

}  // namespace imageio
