// The arithmetic of the filters that draw each pixel anew by its lightness, on plain rows.
//
// Rows and widths as in PointKernels.h.
#pragma once

#include <cstddef>
#include <cstdint>

#include "filters/pixels/ColourConversion.h"
#include "filters/pixels/simd/Simd.h"

namespace kernels {

// Two colours that a picture is drawn with: the first in the shadows, the second in the highlights.
struct DuoColours {
  double hue1 = 0.0, lightness1 = 0.0, saturation1 = 0.0;
  double hue2 = 0.0, lightness2 = 0.0, saturation2 = 0.0;
  double share = 0.0;  // of the drawn picture in the result, 1.0 at 100 percent
  bool operator==(const DuoColours&) const = default;
};
DuoColours MakeDuoColours(Colour shadows, Colour highlights, int percent);

// Limited to 0..255.
void DuoColour(std::uint8_t* colour, int width, const DuoColours& duo);

// How light a picture is, pixels weighted by their opacity; the extremes count every pixel.
struct LightnessStatistics {
  double sum = 0.0;
  double total = 0.0;
  double maximum = 0.0;
  double minimum = 1.0;

  // 0 where nothing is opaque.
  double Mean() const { return total != 0.0 ? sum / total : 0.0; }
};

// Lightness l becomes l * factor + offset.
struct LightnessMap {
  double factor = 1.0;
  double offset = 0.0;
};

// Adds a row. The sums depend on the order of rows in their last bits: start at row 0.
void AddLightness(const std::uint8_t* colour, const std::uint8_t* mask, int width,
                  LightnessStatistics& statistics);

// The map that brings the mean to `target`, with the spread compressed only as far as keeps the
// extremes between black and white.
LightnessMap FitLightness(const LightnessStatistics& statistics, double target);

// A colour that a picture takes hue and saturation from.
struct AdoptedColour {
  double hue = 0.0, saturation = 0.0;
  LightnessMap map;
  int percent = 0;  // of the coloured picture in the result; 0 copies the source

  // Bit by bit, so that a map that is no number equals itself.
  bool IsSame(const AdoptedColour& other) const;
};

// Writes the coloured source row. A mapped lightness is limited to 0..2, not to 1: the low eight
// bits of what lies above white are kept. The rows are the same or do not overlap.
void AdoptColour(std::uint8_t* colour, const std::uint8_t* source, int width,
                 const AdoptedColour& adopted);

// DuoColour or AdoptColour for many rows, byte for byte the same: a lightness follows from the
// largest and the smallest channel of a pixel alone, and the table holds what is drawn for each
// such pair. 1 MiB, so never on a stack, and without contents until it is filled. Any number of
// threads may read it, none while one fills.
class DrawnTable {
 public:
  // What is drawn over a pixel, weighted with its share.
  struct alignas(32) Drawn {
    double blue, green, red;
  };

  // The number of pixels that take as long without a table as filling one.
  static constexpr int kWorthFrom = 256 * 257 / 2;

  void Fill(const DuoColours& duo);
  void Fill(const AdoptedColour& adopted);

  // Each after the Fill of its own.
  void DuoColour(std::uint8_t* colour, int width) const;
  void AdoptColour(std::uint8_t* colour, const std::uint8_t* source, int width) const;

  // Entries by the largest channel, then by the smallest.
  const Drawn* Entries() const { return drawn_; }
  static constexpr std::size_t NumberOf(std::size_t largest, std::size_t smallest) {
    return largest * (largest + 1) / 2 + smallest;
  }
  // The share of the pixel that is kept.
  double Kept() const { return kept_; }

 private:
  template <class Parameters>
  void Fill(double share, const Parameters& parameters);

  double kept_;
  Drawn drawn_[kWorthFrom];
};

// What is done for many rows, at the speed of a vector unit.
struct LightnessKernels {
  // Writes what the table's entries add to the kept part of each pixel: for a kept share of 0..1,
  // where no sum leaves 0..255. The rows are the same or do not overlap.
  void (*draw)(std::uint8_t* colour, const std::uint8_t* source, int width,
               const DrawnTable& table);
  decltype(&AddLightness) addLightness;

  // For Choose.
  static const LightnessKernels& Plain();
  static const LightnessKernels& Avx2();
  static const LightnessKernels& Avx512();
};

}  // namespace kernels
