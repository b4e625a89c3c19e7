#include "tests/filters/frames/FrameModels.h"

#include <algorithm>
#include <cmath>

namespace testing_support {
namespace {

// The larger picture is blank where the other one does not lie.
void Put(const Picture& source, Picture& target, int left, int top) {
  for (int y = 0; y < source.height; ++y) {
    for (int x = 0; x < source.width; ++x) {
      const int u = x + left, v = y + top;
      if (u < 0 || v < 0 || u >= target.width || v >= target.height) continue;
      std::copy_n(source.Colour(x, y), 3, target.Colour(u, v));
      target.Mask(u, v) = source.Mask(x, y);
    }
  }
}

// Of the plane at (x, y), 255 outside.
int MaskAt(const Picture& picture, int x, int y) {
  const bool isInside = x >= 0 && y >= 0 && x < picture.width && y < picture.height;
  return isInside ? picture.Mask(x, y) : 255;
}

double Softened(const Picture& picture, int x, int y, int channel, double share) {
  double sum = 0;
  for (int k = 0; k < 9; ++k) {
    const int u = x + k % 3 - 1, v = y + k / 3 - 1;
    const double weight = (k == 4 ? 5 : 4) / 37.0 * share + (k == 4 ? 1 - share : 0);
    const bool counts = MaskAt(picture, u, v) != 255;
    sum += weight * (counts ? picture.Colour(u, v)[channel] : picture.Colour(x, y)[channel]);
  }
  return std::clamp(sum + 1.0 / (1 << 20), 0.0, 255.0);
}

void Compose(const BYTE* over, int s, BYTE* colour, BYTE& mask) {
  const int t = mask;
  if (s == 255) return;
  const long long p = (255 - s) * 255, q = (255 - t) * s;
  for (int i = 0; i < 3; ++i) {
    if (s == 0 || t == 255) {
      colour[i] = over[i];
    } else if (t == 0) {
      colour[i] = static_cast<BYTE>((over[i] * (255 - s) + colour[i] * s) / 255);
    } else {
      colour[i] = static_cast<BYTE>((over[i] * p + colour[i] * q) / (p + q));
    }
  }
  mask = static_cast<BYTE>(s * t / 255);
}

void ComposeOver(const Picture& over, Picture& under) {
  for (int y = 0; y < over.height; ++y) {
    for (int x = 0; x < over.width; ++x) {
      Compose(over.Colour(x, y), over.Mask(x, y), under.Colour(x, y), under.Mask(x, y));
    }
  }
}

// One pass over what lies `margin` within the plane.
template <class Value>
void Pass(Picture& picture, int margin, Value value) {
  const Picture old = picture;
  for (int y = margin; y < picture.height - margin; ++y) {
    for (int x = margin; x < picture.width - margin; ++x) {
      picture.Mask(x, y) = static_cast<BYTE>(value(old, x, y));
    }
  }
}

int SumAround(const Picture& p, int x, int y) {
  int sum = 0;
  for (int k = 0; k < 9; ++k) sum += p.Mask(x + k % 3 - 1, y + k / 3 - 1);
  return sum;
}

// In the first column of a pass the left terms are those of columns 0 and 1.
void Grow(Picture& picture, int passes) {
  for (int j = passes; j > 0; --j) {
    Pass(picture, j, [&](const Picture& p, int x, int y) {
      const auto column = [&](int at) { return std::min(p.Mask(at, y - 1), p.Mask(at, y + 1)); };
      const bool isFirst = x == j;
      return std::min({column(isFirst ? 0 : x - 1), column(isFirst ? 1 : x), column(x + 1),
                       p.Mask(x, y), p.Mask(x + 1, y)});
    });
  }
}

void Blur(Picture& picture, int blur) {
  for (int j = blur / 5; j > 0; --j) {
    Pass(picture, j, [&](const Picture& p, int x, int y) {
      const auto column = [&](int at) {
        return p.Mask(at, y - 1) + p.Mask(at, y) + p.Mask(at, y + 1);
      };
      const bool isFirst = x == j;
      const int sum = column(isFirst ? 0 : x - 1) + column(isFirst ? 1 : x) + column(x + 1);
      return (sum * 4 + p.Mask(x, y)) / 37;
    });
  }
  constexpr int kCentre[] = {0, 216801, 171457, 126113, 80769};
  constexpr int kAround[] = {0, 5668, 11336, 17004, 22672};
  const int q = blur % 5;
  if (q < 1) return;
  Pass(picture, 1, [&](const Picture& p, int x, int y) {
    return (p.Mask(x, y) * kCentre[q] + (SumAround(p, x, y) - p.Mask(x, y)) * kAround[q]) >> 18;
  });
}

int Sign(int value) {
  return (value > 0) - (value < 0);
}

// The light on the edges of the mask, which `given` lies within at (left, top).
void AddRelief(Picture& picture, const Picture& given, int left, int top, const ShadowNumbers& n,
               int dx, int dy) {
  Picture light = picture;
  for (int pass = 0; pass < std::max(n.intensity - 50, 0) + 15; ++pass) {
    Pass(light, 1, [](const Picture& p, int x, int y) {
      int sum = 0;
      for (int k = 0; k < 9; ++k) {
        const int weight = (k % 3 == 1 ? 2 : 1) * (k / 3 == 1 ? 2 : 1);
        sum += weight * p.Mask(x + k % 3 - 1, y + k / 3 - 1);
      }
      return sum >> 4;
    });
  }
  const int a = 5 * Sign(dx), b = 5 * Sign(dy);
  const int slopes[] = {a + b, b, b - a, a, 0, -a, a - b, -b, -(a + b)};
  Pass(light, 1, [&](const Picture& p, int x, int y) {
    int sum = 0;
    for (int k = 0; k < 9; ++k) {
      sum += static_cast<int>(slopes[k] * n.intensity / 500.0 * 4096) *
             p.Mask(x + k % 3 - 1, y + k / 3 - 1);
    }
    return std::clamp(sum / 4096 + 128, 0, 255);
  });
  for (int i = 0; i < 3 * given.width * given.height; ++i) {
    const int x = left + i / 3 % given.width, y = top + i / 3 / given.width;
    const int change = light.Mask(x, y) - 128;
    BYTE& c = picture.Colour(x, y)[i % 3];
    c = static_cast<BYTE>(std::clamp(c + (n.innerOn ? -change : change), 0, 255));
  }
}

}  // namespace

Picture PaneOver(Picture picture, const PaneNumbers& n, double zoom) {
  const Picture given = picture;
  const int w = picture.width, h = picture.height;
  const long long rw = 1LL * n.hori * w / 100, rh = 1LL * n.verti * h / 100;
  const long long left = (w - rw) / 2 * (n.shiftHori + 100LL) / 100;
  const long long top = (h - rh) / 2 * (n.shiftVerti + 100LL) / 100;
  const auto limited = [](long long value, int size) {
    return static_cast<int>(std::clamp(value, 0LL, size - 1LL));
  };
  const int x0 = limited(left, w), x1 = limited(left + rw, w);
  const int y0 = limited(top, h), y1 = limited(top + rh, h);
  const int r = std::clamp(n.radius, 0, 100);
  const bool blurs = r > 0 && (x1 - x0 + 1 >= 3 || y1 - y0 + 1 >= 3);
  const int k = n.transparency * 255 / 100;
  const int tint[] = {n.blue, n.green, n.red};
  for (int y = y0; y <= y1; ++y) {
    for (int x = x0; x <= x1; ++x) {
      for (int i = 0; i < 3; ++i) {
        BYTE& c = picture.Colour(x, y)[i];
        if (blurs) c = static_cast<BYTE>(Softened(given, x, y, i, r * zoom / 100));
        if (n.transparency < 100 && k <= 254) {
          c = static_cast<BYTE>(c * k / 255 + tint[i] * (255 - k) / 255);
        }
      }
    }
  }
  return picture;
}

Picture MatAround(const Picture& given, const MatNumbers& n, double zoom) {
  const auto scaled = [zoom](int value, double least = -1e9, double greatest = 1e9) {
    const auto round = [zoom](double v) { return static_cast<int>(std::round(v * zoom)); };
    return std::max(round(std::max(least, -1e6)),
                    std::min(round(std::min(greatest, 1e6)), round(value)));
  };
  const bool borders = n.bordersOn != 0;
  const int bx = scaled(n.hori, -50, 1000), by = scaled(n.verti, -50, 1000);
  const int w = given.width, h = given.height;
  const int sx = scaled(n.shiftHori), sy = scaled(n.shiftVerti);
  const int width = borders ? w + 2 * std::max(bx, 0) : std::max(scaled(n.totalHori, 1, 10000), w);
  const int height =
      borders ? h + 2 * std::max(by, 0) : std::max(scaled(n.totalVerti, 1, 10000), h);
  Picture picture(width, height);
  Put(given, picture, sx + (borders ? std::max(bx, 0) : (width - w) / 2),
      sy + (borders ? std::max(by, 0) : (height - h) / 2));
  int left = borders ? std::abs(bx) + sx : sx + (width - w) / 2;
  int right = borders ? sx - std::abs(bx) + width - 1 : left + w - 1;
  int top = borders ? std::abs(by) + sy : sy + (height - h) / 2;
  int bottom = borders ? sy - std::abs(by) + height - 1 : top + h - 1;
  left = std::min(std::max(left, 0), width);
  right = std::max(std::min(right, width - 1), 0);
  top = std::min(std::max(top, 0), height);
  bottom = std::max(std::min(bottom, height - 1), 0);
  const int k = n.transparency * 255 / 100;
  const int mat[] = {n.blue, n.green, n.red};
  const auto f = static_cast<float>(n.transparency / 100.0);
  const float g = 1.0f - f;
  const auto paint = [&](int x, int y, bool glazed) {
    for (int i = 0; i < 3; ++i) {
      BYTE& c = picture.Colour(x, y)[i];
      const float mixed = static_cast<float>(c) * f + static_cast<float>(mat[i]) * g;
      c = static_cast<BYTE>(glazed ? static_cast<int>(mixed) : mat[i]);
    }
    picture.Mask(x, y) = static_cast<BYTE>(glazed ? 0 : k);
  };
  const auto glazes = [&](int border) { return borders && border < 0 && n.transparency != 0; };
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      const bool isSide = glazes(by) && bx >= 0 && (x < bx + sx || x >= width - bx - sx);
      if (y < top) paint(x, y, glazes(by) && !isSide);
      if (y > bottom) paint(x, y, glazes(by));
      if (y < top || y > bottom) continue;
      if (x < left) paint(x, y, glazes(bx));
      if (x > right) paint(x, y, glazes(bx));
      if (x < left || x > right || k > 254) continue;
      const int m = picture.Mask(x, y), rest = m * k / 255;
      for (int i = 0; i < 3; ++i) {
        BYTE& c = picture.Colour(x, y)[i];
        const int sum = c * (255 - m) + m * (mat[i] * (255 - k) / 255);
        c = static_cast<BYTE>(sum / (rest == 0 ? 255 : 255 - rest));
      }
      picture.Mask(x, y) = static_cast<BYTE>(rest);
    }
  }
  return picture;
}

Picture ShadowOf(const Picture& given, const ShadowNumbers& n, double zoom) {
  const auto scaled = [zoom](int value) { return static_cast<int>(value * zoom); };
  const int most = static_cast<int>(255 * zoom);
  const int blur = scaled(n.blur);
  const int size = std::clamp(scaled(n.size), 0, most);
  const int distance = std::clamp(scaled(n.distance), 0, most);
  const int d = n.direction;
  const int dx = std::clamp(d <= 1800 ? d / 225 - 4 : 4 - (d - 1800) / 225, -2, 2);
  const int dy = std::clamp(d < 900     ? -(d / 225)
                            : d <= 2700 ? (d - 900) / 225 - 4
                                        : 4 - (d - 2700) / 225,
                            -2, 2);
  int ox = 0, oy = 0, left = n.intensity != 0, right = left, top = left, bottom = left;
  if (n.density != 0) {
    ox = dx * distance / 2;
    oy = dy * distance / 2;
    const int base = blur / 5 != 0 ? blur / 5 : (n.intensity || blur || size) ? 1 : 0;
    const int e = size + base;
    const auto side = [&](int away) {
      int margin = std::max(e + away, 0);
      if (n.intensity != 0) margin = std::max(margin, 1);
      return size != 0 && n.innerOn ? std::max(margin, e) : margin;
    };
    left = side(-ox);
    right = side(ox);
    top = side(-oy);
    bottom = side(oy);
  }
  Picture picture(given.width + left + right, given.height + top + bottom);
  Put(given, picture, left, top);
  if (n.intensity != 0) AddRelief(picture, given, left, top, n, dx, dy);
  if (n.density == 0) return picture;

  const int fill[] = {n.blue, n.green, n.red};
  const auto shadow = [&](int x, int y, bool grows) {
    Picture cast(picture.width, picture.height);
    Put(given, cast, x, y);
    if (size != 0 && grows) Grow(cast, size);
    Blur(cast, blur);
    for (std::size_t i = 0; i < cast.colour.size(); ++i) {
      cast.colour[i] = static_cast<BYTE>(fill[i % 3]);
    }
    return cast;
  };
  const auto attenuate = [&](Picture& cast, int percent) {
    const int strength = n.density * std::clamp(percent, 50, 100) * 255 / 10000;
    for (BYTE& m : cast.mask) m = static_cast<BYTE>(255 - (255 - m) * strength / 255);
  };
  Picture cast = shadow(left + ox, top + oy, !n.innerOn);
  if (!n.innerOn) {
    attenuate(cast, 100);
    ComposeOver(picture, cast);
    return cast;
  }
  for (std::size_t i = 0; i < cast.mask.size(); ++i) {
    const int m = 255 - cast.mask[i], r = picture.mask[i];
    cast.mask[i] = static_cast<BYTE>(255 - std::min((255 - r) * (255 - m) / 255, 255));
  }
  attenuate(cast, 100);
  for (int y = top; y < top + given.height; ++y) {
    for (int x = left; x < left + given.width; ++x) {
      Compose(cast.Colour(x, y), cast.Mask(x, y), picture.Colour(x, y), picture.Mask(x, y));
    }
  }
  if (size == 0) return picture;
  Picture glow = shadow(left, top, true);
  attenuate(glow, n.density * 85 / 100);
  ComposeOver(picture, glow);
  return glow;
}

}  // namespace testing_support
