#include "tests/support/Pictures.h"

#include <algorithm>

namespace testing_support {
namespace {

BYTE Byte(int value) {
  return static_cast<BYTE>(value & 255);
}

void FillMask(Picture& picture, Masks masks, std::mt19937& random) {
  for (int y = 0; y < picture.height; ++y) {
    for (int x = 0; x < picture.width; ++x) {
      const bool edge = x == 0 || y == 0 || x == picture.width - 1 || y == picture.height - 1;
      const bool open = masks == Masks::Nothing || (masks == Masks::Edges && edge);
      picture.Mask(x, y) = open ? 255 : 0;
      if (masks == Masks::Steps) picture.Mask(x, y) = Byte(x * 17 + y);
      if (masks == Masks::Noise) {
        // The two extremes often, all others too.
        picture.Mask(x, y) = Byte(std::clamp(static_cast<int>(random() % 400) - 72, 0, 255));
      }
    }
  }
}

}  // namespace

Picture::Picture(int w, int h)
    : width(w),
      height(h),
      colour(static_cast<std::size_t>(w) * static_cast<std::size_t>(h) * 3, BYTE{0}),
      mask(static_cast<std::size_t>(w) * static_cast<std::size_t>(h), BYTE{255}) {}

std::string Difference(const Picture& expected, const Picture& actual) {
  const auto text = [](const Picture& picture, int x, int y) {
    const BYTE* colour = picture.Colour(x, y);
    return std::string("(") + std::to_string(colour[0]) + " " + std::to_string(colour[1]) + " " +
           std::to_string(colour[2]) + " mask " + std::to_string(picture.Mask(x, y)) + ")";
  };
  if (expected.width != actual.width || expected.height != actual.height) {
    return std::string("size ") + std::to_string(actual.width) + "x" +
           std::to_string(actual.height) + " in place of " + std::to_string(expected.width) + "x" +
           std::to_string(expected.height);
  }
  for (int y = 0; y < expected.height; ++y) {
    for (int x = 0; x < expected.width; ++x) {
      if (!std::equal(expected.Colour(x, y), expected.Colour(x, y) + 3, actual.Colour(x, y)) ||
          expected.Mask(x, y) != actual.Mask(x, y)) {
        return std::string("at ") + std::to_string(x) + "," + std::to_string(y) + ": " +
               text(actual, x, y) + " in place of " + text(expected, x, y);
      }
    }
  }
  return {};
}

void PrintTo(const Picture& picture, std::ostream* out) {
  *out << "picture " << picture.width << "x" << picture.height;
}

Picture Uniform(int width, int height, BYTE blue, BYTE green, BYTE red, BYTE mask) {
  Picture picture(width, height);
  for (std::size_t i = 0; i < picture.mask.size(); ++i) {
    picture.colour[3 * i] = blue;
    picture.colour[3 * i + 1] = green;
    picture.colour[3 * i + 2] = red;
    picture.mask[i] = mask;
  }
  return picture;
}

Picture Gradient(int width, int height, Masks masks) {
  Picture picture(width, height);
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      BYTE* const colour = picture.Colour(x, y);
      colour[0] = Byte(x * 255 / std::max(1, width - 1));
      colour[1] = Byte(y * 255 / std::max(1, height - 1));
      colour[2] = Byte((x + y) * 7);
    }
  }
  std::mt19937 random(1);
  FillMask(picture, masks, random);
  return picture;
}

Picture Noise(int width, int height, Masks masks, std::uint32_t seed) {
  Picture picture(width, height);
  std::mt19937 random(seed);
  for (BYTE& byte : picture.colour) byte = Byte(static_cast<int>(random() >> 8));
  FillMask(picture, masks, random);
  return picture;
}

const std::vector<NamedPicture>& TestPictures() {
  static const std::vector<NamedPicture> pictures = {
      {"one pixel", Uniform(1, 1, 200, 30, 90, 40)},
      {"one row, worked on in pieces", Noise(837, 1, Masks::Noise, 2)},
      {"one column", Noise(1, 29, Masks::Noise, 3)},
      {"width 3", Gradient(3, 4, Masks::Opaque)},
      {"gradient", Gradient(64, 33, Masks::Opaque)},
      {"noise", Noise(67, 41, Masks::Noise, 4)},
      {"opaque noise", Noise(33, 17, Masks::Opaque, 5)},
      {"steps", Gradient(48, 16, Masks::Steps)},
      {"frame", Noise(31, 19, Masks::Edges, 6)},
      {"all masked", Noise(17, 9, Masks::Nothing, 7)},
      {"black", Uniform(16, 5, 0, 0, 0)},
      {"white", Uniform(15, 5, 255, 255, 255)}};
  return pictures;
}

std::string RandomText(std::mt19937& random, std::size_t longest) {
  const bool printable = random() % 2 == 0;
  std::string text(random() % (longest + 1), ' ');
  for (char& c : text) {
    c = static_cast<char>(printable ? 32 + random() % 95 : 1 + random() % 255);
  }
  return text;
}

}  // namespace testing_support
