// The frame kernels over vectors of any width.
#pragma once

#include <cstdint>

#include "filters/frames/FrameKernelLoops.h"
#include "filters/pixels/MaskMixLoops.h"

namespace kernels {
namespace {

// Of masks s that lie over masks t. Where neither is there, the colour below keeps a weight.
[[gnu::always_inline]] inline HalfWeights ComposeWeights(Words s, Words t) {
  const Words laid = (255 - s) * 255;
  const Words kept = (255 - t) * s;
  const Words keep = kept - (Words)((laid | kept) == 0);
  return {laid, keep, laid + keep};
}

[[gnu::always_inline]] inline void ComposeBlock(std::uint8_t* colour, std::uint8_t* mask,
                                                const std::uint8_t* overColour,
                                                const std::uint8_t* overMask) {
  const auto over = Load<Bytes>(overMask);
  if (!IsAny(~over)) return;
  if (!IsAny(over)) {
    StoreBlock(colour, LoadBlock(overColour));
    return Store(mask, Bytes{});
  }
  const auto below = Load<Bytes>(mask);
  const auto lowOver = (Words)UnpackLow(over, Bytes{}), highOver = (Words)UnpackHigh(over, Bytes{});
  const auto low = (Words)UnpackLow(below, Bytes{}), high = (Words)UnpackHigh(below, Bytes{});
  const Planes mixed =
      MixPlanes<WideQuarterMix>(Split(LoadBlock(overColour)), Split(LoadBlock(colour)),
                                ComposeWeights(lowOver, low), ComposeWeights(highOver, high));
  StoreBlock(colour, Join(mixed));
  Store(mask, Pack(PartsOf255(lowOver * low), PartsOf255(highOver * high)));
}

inline void ComposeInBlocks(std::uint8_t* colour, std::uint8_t* mask,
                            const std::uint8_t* overColour, const std::uint8_t* overMask,
                            int width) {
  for (; width >= kPixels; width -= kPixels) {
    ComposeBlock(colour, mask, overColour, overMask);
    colour += kBlockBytes;
    mask += kPixels;
    overColour += kBlockBytes;
    overMask += kPixels;
  }
  ComposeRow(colour, mask, overColour, overMask, width);
}

constexpr FrameKernels kFrameVectorLoops = {ComposeInBlocks, AddReliefLoop, SmoothLoop,  ReliefLoop,
                                            GrowLoop,        BlurLoop,      FractionLoop};

}  // namespace
}  // namespace kernels
