#include "tests/filters/colour/PointModel.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <functional>
#include <map>
#include <stdexcept>

namespace testing_support {
namespace {

using Int = std::int64_t;

struct Pixel {
  Int b, g, r, m;
};

// A number of the text, or what it is without the key.
struct Text {
  std::string text;
  Int operator()(const char* key, Int absent) const {
    const char* at = std::strstr(text.c_str(), key);
    int value = 0;
    if (!at || !at[std::strlen(key)] || std::sscanf(at + std::strlen(key) + 1, "%d", &value) != 1) {
      return absent;
    }
    return value;
  }
};

Int Byte(Int value) {
  return ((value % 256) + 256) % 256;
}
Int Clamp(Int value) {
  return value < 0 ? 0 : value > 255 ? 255 : value;
}
// A double as a 32-bit number, wrapped.
Int Truncate(double value) {
  return static_cast<std::int32_t>(static_cast<std::uint32_t>(static_cast<Int>(value)));
}

struct Hls {
  double h, l, s;
};

Hls ToHls(Int red, Int green, Int blue) {
  const double r = static_cast<double>(red) / 255.0;
  const double g = static_cast<double>(green) / 255.0;
  const double b = static_cast<double>(blue) / 255.0;
  const double max = std::fmax(r, std::fmax(g, b));
  const double min = std::fmin(r, std::fmin(g, b));
  Hls hls{0, (max + min) * 0.5, 0};
  if (max == min) return hls;
  hls.s = hls.l <= 0.5 ? (max - min) / (max + min) : (max - min) / (2.0 - (max + min));
  hls.h = r == max   ? (g - b) / (max - min)
          : g == max ? (b - r) / (max - min) + 2.0
                     : (r - g) / (max - min) + 4.0;
  hls.h *= 60.0;
  if (hls.h < 0) hls.h += 360.0;
  return hls;
}

Pixel FromHls(double hue, double l, double s) {
  double r = l, g = l, b = l;
  if (s > 0.000001) {
    const double min = l <= 0.5 ? l * (1 - s) : l - s * (1 - l);
    const double max = 2 * l - min;
    if (hue >= 360.0) hue = 0.0;
    const double h = hue / 60.0;
    const double d = max - min;
    const int sector = static_cast<int>(std::floor(h));
    const double up = min + d * (h - sector);
    const double down = min + d * (sector + 1 - h);
    const double table[6][3] = {{max, up, min},   {down, max, min}, {min, max, up},
                                {min, down, max}, {up, min, max},   {max, min, down}};
    r = table[sector][0];
    g = table[sector][1];
    b = table[sector][2];
  }
  return {Byte(Truncate(b * 255.0)), Byte(Truncate(g * 255.0)), Byte(Truncate(r * 255.0)), 0};
}

using PixelChange = std::function<void(Pixel&)>;

void ForEachPixel(Picture& picture, const PixelChange& change) {
  for (int y = 0; y < picture.height; ++y) {
    for (int x = 0; x < picture.width; ++x) {
      BYTE* const c = picture.Colour(x, y);
      Pixel pixel{c[0], c[1], c[2], picture.Mask(x, y)};
      change(pixel);
      c[0] = static_cast<BYTE>(pixel.b);
      c[1] = static_cast<BYTE>(pixel.g);
      c[2] = static_cast<BYTE>(pixel.r);
      picture.Mask(x, y) = static_cast<BYTE>(pixel.m);
    }
  }
}

template <class Change>
void ForColours(Pixel& p, Change change) {
  for (Int* c : {&p.b, &p.g, &p.r}) *c = change(*c);
}

Int KeptByte(const Text& text, const char* key) {
  return Byte((100 - Byte(text(key, 0))) * 255 / 100);
}

void Sepia(Picture& picture, const Text& text) {
  const Int k = KeptByte(text, "Sepia");
  ForEachPixel(picture, [&](Pixel& p) {
    const Int l = (151 * p.g + 77 * p.r + 28 * p.b) >> 8;
    p.r = Clamp(((l + 49) * (255 - k) + k * p.r) / 255);
    p.g = Clamp(((l - 13) * (255 - k) + k * p.g) / 255);
    p.b = Clamp(((l - 55) * (255 - k) + k * p.b) / 255);
  });
}

void Invert(Picture& picture, const Text& text) {
  const Int k = text("Inversity", 0);
  ForEachPixel(picture, [&](Pixel& p) {
    ForColours(p, [&](Int c) { return Byte(((255 - c) * k + (100 - k) * c) / 100); });
  });
}

void BlackWhite(Picture& picture, const Text& text) {
  const Int k = text("BlackWhiteNess", 100);
  ForEachPixel(picture, [&](Pixel& p) {
    const Int grey = (71 * p.b + 707 * p.g + 222 * p.r) / 1000;
    ForColours(p, [&](Int c) { return Byte(((100 - k) * c + k * grey) / 100); });
  });
}

void Transparency(Picture& picture, const Text& text) {
  const Int k = KeptByte(text, "Transparency");
  ForEachPixel(picture, [&](Pixel& p) { p.m = Byte(255 - (255 - p.m) * k / 255); });
}

void Colour(Picture& picture, const Text& text) {
  const Int r = text("Red", 0) * 255 / 100;
  const Int g = text("Green", 0) * 255 / 100;
  const Int b = text("Blue", 0) * 255 / 100;
  ForEachPixel(picture, [&](Pixel& p) {
    p = {Clamp(p.b + b), Clamp(p.g + g), Clamp(p.r + r), p.m};
  });
}

void DuoColour(Picture& picture, const Text& text) {
  const auto byte = [&](const char* key, Int absent) { return Byte(text(key, absent)); };
  const Hls first = ToHls(byte("ColorRed", 0), byte("ColorGreen", 0), byte("ColorBlue", 0));
  const Hls second = ToHls(byte("Red2", 255), byte("Green2", 255), byte("Blue2", 255));
  const double k = static_cast<double>(text("Intensity", 100)) / 100.0;
  ForEachPixel(picture, [&](Pixel& p) {
    const double l = ToHls(p.r, p.g, p.b).l;
    const double drawn = l * (l - (1 - second.l)) + (first.l + l) * (1 - l);
    const double n = drawn < 0.0 ? 0.0 : drawn > 1.0 ? 1.0 : drawn;
    const Pixel a = FromHls(first.h, n, first.s);
    const Pixel b = FromHls(second.h, n, second.s);
    const auto mix = [&](Int dark, Int light, Int c) {
      return Clamp(Truncate(static_cast<double>(light) * (l * k) +
                            static_cast<double>(dark) * ((1 - l) * k) +
                            static_cast<double>(c) * (1 - k)));
    };
    p = {mix(a.b, b.b, p.b), mix(a.g, b.g, p.g), mix(a.r, b.r, p.r), p.m};
  });
}

void AdoptColour(Picture& picture, const Text& text) {
  const auto byte = [&](const char* key) { return Byte(text(key, 0)); };
  const Hls target = ToHls(byte("ColorRed"), byte("ColorGreen"), byte("ColorBlue"));
  const Int intensity = text("Intensity", 100);
  double sum = 0, total = 0, maximum = 0, minimum = 1;
  ForEachPixel(picture, [&](Pixel& p) {
    const double l = ToHls(p.r, p.g, p.b).l;
    sum += static_cast<double>(255 - p.m) * l;
    total += static_cast<double>(255 - p.m);
    maximum = std::fmax(maximum, l);
    minimum = std::fmin(minimum, l);
  });
  const double mean = total != 0 ? sum / total : 0;
  double a = 1;
  double b = target.l - mean;
  if (maximum + b > 1.0) {
    a = (1 - target.l) / (maximum - mean);
    b = 1 - a * maximum;
  } else if (minimum + b < 0) {
    a = target.l / (mean - minimum);
    b = -a * minimum;
  }
  if (intensity == 0) return;
  const double k = static_cast<double>(intensity) / 100.0;
  ForEachPixel(picture, [&](Pixel& p) {
    const double mapped = ToHls(p.r, p.g, p.b).l * a + b;
    const Pixel full = FromHls(target.h,
                               mapped < 0.0   ? 0.0
                               : mapped > 2.0 ? 2.0
                                              : mapped,
                               target.s);
    const auto mix = [&](Int before, Int after) {
      return intensity == 100 ? after
                              : Byte(Truncate(static_cast<double>(before) * (1 - k) +
                                              static_cast<double>(after) * k));
    };
    p = {mix(p.b, full.b), mix(p.g, full.g), mix(p.r, full.r), p.m};
  });
}

void InvertMask(Picture& picture, const Text& text) {
  const Pixel fill{Byte(text("Blue", 255)), Byte(text("Green", 255)), Byte(text("Red", 255)), 0};
  const Int t = text("Transparency", 0);
  ForEachPixel(picture, [&](Pixel& p) {
    const Int a = p.m * t;
    const Int w = (100 - t) * (255 - p.m);
    if (a + w == 0) {
      p.m = 255;
      return;
    }
    const auto mix = [&](Int to, Int c) { return Byte((to * a + c * w) / (a + w)); };
    p = {mix(fill.b, p.b), mix(fill.g, p.g), mix(fill.r, p.r),
         Byte(((255 - p.m) * t + (100 - t) * p.m) / 100)};
  });
}

void Background(Picture& picture, const Text& text) {
  const Pixel c{Byte(text("Blue", 180)), Byte(text("Green", 180)), Byte(text("Red", 180)), 0};
  const Int k = text("Transparency", 0) * 255 / 100;
  if (k > 254) return;
  ForEachPixel(picture, [&](Pixel& p) {
    const Int n = p.m * k / 255;
    const auto put = [&](Int behind, Int front) {
      const Int sum = front * (255 - p.m) + p.m * (behind * (255 - k) / 255);
      return Byte(n == 0 ? sum / 255 : sum / (255 - n));
    };
    p = {put(c.b, p.b), put(c.g, p.g), put(c.r, p.r), Byte(n)};
  });
}

const std::map<std::string, void (*)(Picture&, const Text&)>& Models() {
  static const std::map<std::string, void (*)(Picture&, const Text&)> models = {
      {"ZNFilter.Sepia.1", Sepia},
      {"ZNFilter.Invert.1", Invert},
      {"ZNFilter.BlackWhiteness.1", BlackWhite},
      {"ZNFilter.Transparency.1", Transparency},
      {"ZNFilter.RGBColor.1", Colour},
      {"ZNFilter.DuoColor.1", DuoColour},
      {"ZNFilter.AdoptColor.1", AdoptColour},
      {"ZNFilter.InvertMask.1", InvertMask},
      {"ZNFilter.ImgBg.1", Background},
      {"ZNFilter.Zero.1", [](Picture&, const Text&) {}}};
  return models;
}

}  // namespace

bool HasModel(const std::string& progId) {
  return Models().count(progId) != 0;
}

Picture ApplyModel(const ModelStep& step, const Picture& picture) {
  Picture result = picture;
  Models().at(step.progId)(result, Text{step.parameters});
  return result;
}

}  // namespace testing_support
