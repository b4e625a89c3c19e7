#include "filters/colour/MixerKernels.h"

#include "base/Arithmetic.h"
#include "base/Rows.h"

namespace kernels {
namespace {

std::uint8_t Mixed(const ChannelRecipe& recipe, std::int64_t blue, std::int64_t green,
                   std::int64_t red) {
  const std::int64_t sum = recipe.blue * blue + recipe.green * green + recipe.red * red;
  return base::ClampByte(sum / recipe.divisor + recipe.constant);
}

}  // namespace

void MixChannels(std::uint8_t* colour, int width, const Mixture& mixture) {
  for (int x = 0; x < width; ++x, colour += base::kBytesPerPixel) {
    const std::uint8_t blue = colour[base::kBlue];
    const std::uint8_t green = colour[base::kGreen];
    const std::uint8_t red = colour[base::kRed];
    colour[base::kBlue] = Mixed(mixture.blue, blue, green, red);
    colour[base::kGreen] = Mixed(mixture.green, blue, green, red);
    colour[base::kRed] = Mixed(mixture.red, blue, green, red);
  }
}

const MixerKernels& MixerKernels::Plain() {
  static constexpr MixerKernels kPlain = {MixChannels};
  return kPlain;
}

}  // namespace kernels
