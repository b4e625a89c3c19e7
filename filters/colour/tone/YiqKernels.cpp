#include "filters/colour/tone/YiqKernels.h"

#include <cstddef>

#include "base/Rows.h"
#include "filters/colour/tone/YiqArithmetic.h"

namespace kernels {
namespace {

using base::kBlue;
using base::kGreen;
using base::kRed;

}  // namespace

void MapLuminance(std::uint8_t* colour, int width, const ByteTable& table) {
  for (int x = 0; x < width; ++x, colour += base::kBytesPerPixel) {
    const int index = LuminanceIndex(colour[kRed], colour[kGreen], colour[kBlue]);
    const Rgb<double> rgb = {static_cast<double>(colour[kRed]), static_cast<double>(colour[kGreen]),
                             static_cast<double>(colour[kBlue])};
    const Rgb<double> mapped = WithLuminance<double>(rgb, table[static_cast<std::size_t>(index)]);
    colour[kRed] = static_cast<std::uint8_t>(mapped.red);
    colour[kGreen] = static_cast<std::uint8_t>(mapped.green);
    colour[kBlue] = static_cast<std::uint8_t>(mapped.blue);
  }
}

const YiqKernels& YiqKernels::Plain() {
  static constexpr YiqKernels kPlain = {MapLuminance};
  return kPlain;
}

}  // namespace kernels
