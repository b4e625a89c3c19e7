// Each key of the frame filters by chance, against naive models.
#include "tests/filters/frames/FrameModels.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cmath>
#include <random>

#include "tests/filters/ClassOf.h"
#include "tests/support/TestFilters.h"

namespace testing_support {
namespace {

class Chance {
 public:
  explicit Chance(std::uint32_t seed) : random(seed) {}
  int Between(int least, int greatest) {
    return least + static_cast<int>(random() % static_cast<std::uint32_t>(greatest - least + 1));
  }
  // Off in every other case.
  int Maybe(int least, int greatest) { return random() % 2 ? Between(least, greatest) : 0; }
  double Zoom() {
    constexpr double kZooms[] = {1, 1, 0.5, 0.3, 1.5};
    return kZooms[random() % 5];
  }
  Picture Given() {
    const int width = Between(1, 20), height = Between(1, 20);
    const auto masks = static_cast<Masks>(Between(0, 4));
    return Noise(width, height, masks, static_cast<std::uint32_t>(Between(1, 1000000)));
  }

 private:
  std::mt19937 random;
};

// "Key=number," for each pair.
std::string TextOf(std::initializer_list<std::pair<const char*, int>> items) {
  std::string text;
  for (const auto& [key, number] : items) {
    text.append(key).append("=").append(std::to_string(number)).append(",");
  }
  return text;
}

// What panes and mats have in common.
template <class Numbers>
std::string FrameText(const Numbers& n) {
  return TextOf({{"Borderhori", n.hori},
                 {"Borderverti", n.verti},
                 {"Red", n.red},
                 {"Green", n.green},
                 {"Blue", n.blue},
                 {"Poscorhori", n.shiftHori},
                 {"Poscorverti", n.shiftVerti},
                 {"Transparency", n.transparency}});
}

void ExpectEqual(const Picture& expected, const char* progId, const Picture& given,
                 const std::string& text, double zoom) {
  Rig rig(given, ClassOf(progId));
  rig.Filter().SetZoom(zoom);
  rig.Filter().SetParameter(text.c_str(), 1);
  ASSERT_EQ(Difference(expected, rig.PullWhole()), "")
      << progId << "(" << text << ") at zoom " << zoom << " on " << given.width << " x "
      << given.height;
}

TEST(FrameModels, SmokedGlass) {
  Chance chance(1);
  for (int round = 0; round < 300; ++round) {
    PaneNumbers n = {chance.Between(0, 110),  chance.Between(0, 110),  chance.Maybe(-5, 120),
                     chance.Between(0, 255),  chance.Between(0, 255),  chance.Between(0, 255),
                     chance.Maybe(-120, 120), chance.Maybe(-120, 120), chance.Maybe(0, 100)};
    // As far as the numbers of texts reach.
    int* const numbers[] = {&n.hori, &n.verti, &n.shiftHori, &n.shiftVerti};
    if (round % 10 == 0) *numbers[chance.Between(0, 3)] = chance.Between(0, 1) ? INT_MAX : -INT_MAX;
    const Picture given = chance.Given();
    const double zoom = chance.Zoom();
    ExpectEqual(PaneOver(given, n, zoom), "ZNFilter.Rauchglas.1", given,
                FrameText(n) + TextOf({{"Radius", n.radius}}), zoom);
  }
  const Picture given = chance.Given();
  ExpectEqual(PaneOver(given, {}, 1), "ZNFilter.Rauchglas.1", given, "", 1);
}

// The pane lies over whatever is asked for, as if that were all of the picture.
TEST(FrameModels, SmokedGlassOverARequest) {
  std::mt19937 random(4);
  const Picture given = Noise(30, 24, Masks::Noise, 7);
  PaneNumbers n;
  n.hori = n.verti = 60;
  n.radius = 80;
  n.transparency = 30;
  Rig rig(given, ClassOf("ZNFilter.Rauchglas.1"));
  rig.Filter().SetParameter((FrameText(n) + TextOf({{"Radius", n.radius}})).c_str(), 1);
  rig.Prepare();
  for (int round = 0; round < 40; ++round) {
    const RowRequest r = AnyRequest(random, given, 4);
    EXPECT_EQ(Difference(PaneOver(PartOf(given, r), n, 1), rig.PullPart(r)), "")
        << testing::PrintToString(r);
  }
}

TEST(FrameModels, Passepartout) {
  Chance chance(2);
  for (int round = 0; round < 400; ++round) {
    const MatNumbers n = {chance.Between(0, 2) > 0, chance.Between(-12, 9), chance.Between(-12, 9),
                          chance.Between(1, 50),    chance.Between(1, 50),  chance.Between(0, 255),
                          chance.Between(0, 255),   chance.Between(0, 255), chance.Maybe(-9, 9),
                          chance.Maybe(-9, 9),      chance.Maybe(0, 100)};
    const Picture given = chance.Given();
    const double zoom = chance.Zoom();
    ExpectEqual(MatAround(given, n, zoom), "ZNFilter.Passpartout.1", given,
                FrameText(n) + TextOf({{"BordersizeOn", n.bordersOn},
                                       {"TotalHori", n.totalHori},
                                       {"TotalVerti", n.totalVerti},
                                       {"Radius", 0}}),
                zoom);
  }
  const Picture given = chance.Given();
  ExpectEqual(MatAround(given, {}, 1), "ZNFilter.Passpartout.1", given, "Radius=0", 1);
}

TEST(FrameModels, Shadow) {
  Chance chance(3);
  for (int round = 0; round < 400; ++round) {
    const ShadowNumbers n = {chance.Between(0, 3600), chance.Between(0, 1),
                             chance.Maybe(0, 120),    chance.Between(0, 120),
                             chance.Maybe(0, 24),     chance.Maybe(0, 6),
                             chance.Maybe(-3, 9),     chance.Between(0, 255),
                             chance.Between(0, 255),  chance.Between(0, 255)};
    const Picture given = chance.Given();
    const double zoom = chance.Zoom();
    ExpectEqual(ShadowOf(given, n, zoom), "ZNFilter.Shadow.1", given,
                TextOf({{"LightDirection", n.direction},
                        {"InnerOn", n.innerOn},
                        {"LightIntensity", n.intensity},
                        {"ShadowDensity", n.density},
                        {"ShadowBlur", n.blur},
                        {"Size", n.size},
                        {"ShadowDistance", n.distance},
                        {"ShadowRed", n.red},
                        {"ShadowGreen", n.green},
                        {"ShadowBlue", n.blue}}),
                zoom);
  }
  const Picture given = chance.Given();
  ExpectEqual(ShadowOf(given, {}, 1), "ZNFilter.Shadow.1", given, "", 1);
  // So wide that passes over the mask run in several groups of columns.
  const Picture wide = Noise(60000, 5, Masks::Noise, 3);
  ExpectEqual(ShadowOf(wide, {.density = 90, .blur = 22, .size = 3}, 1), "ZNFilter.Shadow.1", wide,
              "ShadowDensity=90,ShadowBlur=22,Size=3", 1);
  // The old keys: no light, and a shadow of full strength or none, whatever stands beside them.
  ShadowNumbers full;
  full.density = 100;
  ExpectEqual(ShadowOf(given, full, 1), "ZNFilter.Shadow.1", given,
              "LightIntensity=50,LightOn=0,ShadowOn=1,ShadowDensity=30", 1);
  ExpectEqual(ShadowOf(given, {}, 1), "ZNFilter.Shadow.1", given, "ShadowDensity=30,ShadowOn=0", 1);
}

// Pixel by pixel, as the frame is described.
TEST(FrameModels, SoftFrame) {
  Chance chance(4);
  for (int round = 0; round < 300; ++round) {
    const int most = round % 20 ? 20 : 160;
    const Picture given = Noise(chance.Between(1, most), chance.Between(1, most),
                                round % 2 ? Masks::Opaque : Masks::Noise, 1);
    const int width = given.width, height = given.height;
    const int left = chance.Between(0, 1), top = chance.Between(0, 1), right = chance.Between(0, 1);
    const int bottom = chance.Between(0, 1), soft = chance.Between(0, 1);
    const int frame = chance.Between(-10, 120);
    const double reach = std::clamp(frame, 0, 100) * std::min(width, height) / 200.0;
    Picture expected = given;
    for (int y = 0; reach >= 0.5 && y < height; ++y) {
      for (int x = 0; x < width; ++x) {
        const double a = std::min(left ? x + 0.5 : reach, right ? width - x - 0.5 : reach);
        const double b = std::min(top ? height - y - 0.5 : reach, bottom ? y + 0.5 : reach);
        const double u = 1 - std::min(a / reach, 1.0), v = 1 - std::min(b / reach, 1.0);
        const double t = soft ? 1 - std::min(std::sqrt(u * u + v * v), 1.0) : 1 - std::max(u, v);
        BYTE& mask = expected.Mask(x, y);
        mask = static_cast<BYTE>(255 - std::trunc((255 - mask) * (t * t * (3 - 2 * t))));
      }
    }
    ExpectEqual(expected, "ZNFilter.SoftFrame.1", given,
                TextOf({{"SoftCorner", soft},
                        {"FrameWidth", frame},
                        {"Links", left},
                        {"Oben", top},
                        {"Rechts", right},
                        {"Unten", bottom}}),
                chance.Zoom());
  }
}

}  // namespace
}  // namespace testing_support
