// Enlargement: a bicubic filter along the rows, then across them.
#include <algorithm>
#include <array>
#include <cstring>
#include <vector>

#include "base/Rows.h"
#include "base/Workers.h"
#include "filters/pixels/resampling/BicubicKernels.h"
#include "filters/pixels/resampling/Resampling.h"

namespace kernels {
namespace {

constexpr std::size_t Size(int number) {
  return static_cast<std::size_t>(number);
}

// How pixels are kept between the passes, without a mask and with one.
struct OpaqueWay {
  using Pixel = std::array<std::uint8_t, base::kBytesPerPixel>;

  static void Read(Pixel* to, const base::RowView& from, int y) {
    std::memcpy(to->data(), from.colour[y], base::ColourBytes(from.width));
  }
  static void Stretch(Pixel* to, const Pixel* from, const std::vector<BicubicTap>& taps) {
    Choose<BicubicKernels>().stretch(to->data(), from->data(), taps.data(),
                                     static_cast<int>(taps.size()));
  }
  static void Blend(const base::WritableRows& to, int y, const Pixel* const (&rows)[4],
                    const BicubicWeights& weights) {
    const std::uint8_t* const bytes[4] = {rows[0]->data(), rows[1]->data(), rows[2]->data(),
                                          rows[3]->data()};
    Choose<BicubicKernels>().blend(to.colour[y], bytes, base::ColourBytes(to.width), weights);
    std::memset(to.mask[y], base::kOpaque, Size(to.width));
  }
};

struct MaskedWay {
  using Pixel = WeighedPixel;

  static void Read(Pixel* to, const base::RowView& from, int y) {
    Choose<BicubicKernels>().weigh(to, from.colour[y], from.mask[y], from.width);
  }
  static void Stretch(Pixel* to, const Pixel* from, const std::vector<BicubicTap>& taps) {
    Choose<BicubicKernels>().stretchMasked(to, from, taps.data(), static_cast<int>(taps.size()));
  }
  static void Blend(const base::WritableRows& to, int y, const Pixel* const (&rows)[4],
                    const BicubicWeights& weights) {
    Choose<BicubicKernels>().blendMasked(to.colour[y], to.mask[y], rows, to.width, weights);
  }
};

// Gives the rows of a picture stretched to another width. Any four neighbours are kept.
template <class Way>
class StretchedRows {
 public:
  StretchedRows(const base::RowView& source, int width)
      : source_(source),
        taps_(BicubicTaps(source.width, width)),
        padded_(Size(source.width) + 2 * kBicubicMargin) {
    for (Line& line : lines_) line.pixels.resize(Size(width) + kBicubicMargin);
  }

  // A row outside the source is its first or last one.
  const typename Way::Pixel* operator[](std::int64_t wanted) {
    const int row = static_cast<int>(std::clamp<std::int64_t>(wanted, 0, source_.height - 1));
    Line& line = lines_[row % 4];
    if (line.row != row) {
      Stretch(row, line.pixels.data());
      line.row = row;
    }
    return line.pixels.data();
  }

 private:
  struct Line {
    int row = -1;
    std::vector<typename Way::Pixel> pixels;
  };

  void Stretch(int row, typename Way::Pixel* to) {
    const auto first = padded_.begin() + kBicubicMargin;
    Way::Read(&*first, source_, row);
    const auto end = first + source_.width;
    std::fill(padded_.begin(), first, *first);
    std::fill(end, padded_.end(), end[-1]);
    Way::Stretch(to, &*first, taps_);
  }

  const base::RowView& source_;
  const std::vector<BicubicTap> taps_;
  std::vector<typename Way::Pixel> padded_;
  Line lines_[4];
};

template <class Way>
bool EnlargeBy(const base::RowView& from, const base::WritableRows& to,
               const std::atomic<bool>& abort) {
  const std::vector<BicubicTap> taps = BicubicTaps(from.height, to.height);
  return base::ForEachBand(to.height, base::RowsPerBand(to.width), [&](int first, int end) {
    StretchedRows<Way> stretched(from, to.width);
    for (int y = end - 1; y >= first; --y) {
      if (abort) return false;
      const auto [index, phase] = taps[Size(y)];
      const typename Way::Pixel* rows[4];
      for (int t = 0; t < 4; ++t) rows[t] = stretched[std::int64_t{index} - 1 + t];
      Way::Blend(to, y, rows, BicubicPhases()[phase]);
    }
    return true;
  });
}

}  // namespace

bool Enlarge(const base::RowView& from, const base::WritableRows& to, bool opaque,
             const std::atomic<bool>& abort) {
  if (from.width < kLeastEnlargedWidth) return false;
  return opaque ? EnlargeBy<OpaqueWay>(from, to, abort) : EnlargeBy<MaskedWay>(from, to, abort);
}

}  // namespace kernels
