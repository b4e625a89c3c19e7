// Whole pictures for tests, and makers of the pictures that find faults.
#pragma once

#include <wtypes.h>

#include <cstdint>
#include <ostream>
#include <random>
#include <string>
#include <vector>

namespace testing_support {

// Planes without padding: 3 bytes a pixel in the order blue, green, red, and 1 byte of mask. A new
// picture is what a cleared one is: colour 0, mask 255.
struct Picture {
  Picture() = default;
  Picture(int w, int h);

  BYTE* Colour(int x, int y) { return colour.data() + 3 * At(x, y); }
  const BYTE* Colour(int x, int y) const { return colour.data() + 3 * At(x, y); }
  BYTE& Mask(int x, int y) { return mask[At(x, y)]; }
  BYTE Mask(int x, int y) const { return mask[At(x, y)]; }
  bool operator==(const Picture&) const = default;

  int width = 0;
  int height = 0;
  std::vector<BYTE> colour;
  std::vector<BYTE> mask;

 private:
  std::size_t At(int x, int y) const {
    return static_cast<std::size_t>(y) * static_cast<std::size_t>(width) +
           static_cast<std::size_t>(x);
  }
};

// Empty when they are equal, else the first pixel that differs, for a failure message.
std::string Difference(const Picture& expected, const Picture& actual);
void PrintTo(const Picture& picture, std::ostream* out);

enum class Masks { Opaque, Nothing, Noise, Edges, Steps };

Picture Uniform(int width, int height, BYTE blue, BYTE green, BYTE red, BYTE mask = 0);
Picture Gradient(int width, int height, Masks masks);
Picture Noise(int width, int height, Masks masks, std::uint32_t seed);

struct NamedPicture {
  const char* name;
  Picture picture;
};
// One pixel, one row, one column, sizes around vector widths, every kind of mask, black, white.
const std::vector<NamedPicture>& TestPictures();

// Any printable text, and any bytes but 0, up to this length.
std::string RandomText(std::mt19937& random, std::size_t longest);

}  // namespace testing_support
