// BMP pictures of 24 bits, or of 32 bits with a head that tells where alpha lies.
#include <array>
#include <vector>

#include "base/Dib.h"
#include "imageio/Decoder.h"
#include "imageio/Encoder.h"

namespace imageio {
namespace {

constexpr std::uint32_t kFileHeadBytes = 14;
constexpr std::uint32_t kPlainHeadBytes = 40;
constexpr std::uint32_t kAlphaHeadBytes = 108;
constexpr std::uint32_t kBitFields = 3;
constexpr std::uint32_t kColourSpaceSrgb = 0x73524742;  // "sRGB"
constexpr std::uint32_t kDotsPerMetre = 3780;           // 96 an inch

class HeadWriter {
 public:
  void Word(std::uint32_t value) { Put(value, 2); }
  void Long(std::uint32_t value) { Put(value, 4); }
  std::vector<BYTE> bytes;

 private:
  void Put(std::uint32_t value, int count) {
    for (int i = 0; i < count; ++i, value >>= 8) bytes.push_back(static_cast<BYTE>(value));
  }
};

std::uint32_t DotsAMetre(double anInch) {
  const double dots = PixelsAMetre(anInch);
  return dots >= 1 && dots < 1e9 ? static_cast<std::uint32_t>(dots) : kDotsPerMetre;
}

std::vector<BYTE> HeadOf(const Picture& picture, std::uint64_t dataBytes,
                         const Resolution& resolution) {
  const bool alpha = picture.HasAlpha();
  const std::uint32_t pictureHead = alpha ? kAlphaHeadBytes : kPlainHeadBytes;
  const std::uint32_t dataAt = kFileHeadBytes + pictureHead;
  HeadWriter head;
  head.Word(0x4D42);  // "BM"
  head.Long(static_cast<std::uint32_t>(dataAt + dataBytes));
  head.Long(0);
  head.Long(dataAt);
  head.Long(pictureHead);
  head.Long(static_cast<std::uint32_t>(picture.Width()));
  head.Long(static_cast<std::uint32_t>(picture.Height()));
  head.Word(1);
  head.Word(alpha ? 32 : 24);
  head.Long(alpha ? kBitFields : 0);
  head.Long(static_cast<std::uint32_t>(dataBytes));
  head.Long(DotsAMetre(resolution.x));
  head.Long(DotsAMetre(resolution.y));
  head.Long(0);
  head.Long(0);
  if (alpha) {
    for (const std::uint32_t field : {0x00FF0000u, 0x0000FF00u, 0x000000FFu, 0xFF000000u}) {
      head.Long(field);
    }
    head.Long(kColourSpaceSrgb);
    head.bytes.resize(dataAt);  // no colour space of its own
  }
  return head.bytes;
}

}  // namespace

bool WriteBmp(Output& output, const Picture& picture, const WriteOptions& options,
              const Progress& progress) {
  const std::int64_t stride = base::DibStride(8 * picture.Channels(), picture.Width());
  const auto dataBytes = static_cast<std::uint64_t>(stride * picture.Height());
  if (dataBytes > 0xFFFFFFFF - kFileHeadBytes - kAlphaHeadBytes) {
    throw ImageError("the picture is too large for this kind of file");
  }
  const std::vector<BYTE> head =
      HeadOf(picture, dataBytes, options.metadata.resolution.InBothDirections());
  output.Write(head.data(), head.size());
  std::vector<BYTE> row(static_cast<std::size_t>(stride));
  for (int y = picture.Height() - 1; y >= 0; --y) {
    picture.Interleave(y, false, row.data());
    output.Write(row.data(), row.size());
    if (!ReportStep(progress, picture.Height() - y, picture.Height())) return false;
  }
  return true;
}

}  // namespace imageio
