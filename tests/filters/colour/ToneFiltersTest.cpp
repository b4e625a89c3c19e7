// The filters that measure a picture: tone value, grey point and histogram, over any texts and
// requests against naive models, and what is odd in them.
#include <gmock/gmock.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <random>

#include "tests/filters/ClassOf.h"
#include "tests/support/TestFilters.h"

namespace testing_support {
namespace {

using Table = std::array<double, 256>;  // entries that no integer holds stay infinite
using Tables = std::array<Table, 3>;    // blue, green, red
struct Range {
  int low, high;
};

constexpr int kLuminance = 3;

int LevelOf(const BYTE* pixel, int channel) {
  return channel < kLuminance ? pixel[channel]
                              : (77 * pixel[2] + 151 * pixel[1] + 28 * pixel[0]) >> 8;
}

// How often each level occurs in one channel, or in the luminance.
std::array<int, 256> Counts(const Picture& picture, int channel) {
  std::array<int, 256> counts = {};
  for (std::size_t i = 0; i < picture.colour.size(); i += 3) {
    ++counts[static_cast<std::size_t>(LevelOf(&picture.colour[i], channel))];
  }
  return counts;
}

Range Measure(const Picture& picture, int channel, int requestedPixels) {
  const auto counts = Counts(picture, channel);
  const int threshold = requestedPixels * 5 / 1000;
  Range range{0, 255};
  for (int sum = 0; sum < threshold;) sum += counts.at(static_cast<std::size_t>(range.low++));
  for (int sum = 0; sum < threshold;) sum += counts.at(static_cast<std::size_t>(range.high--));
  return range;
}

Table Ramp(Range range) {
  Table table = {};
  for (int i = std::max(range.high, 0); i < 256; ++i) table[static_cast<std::size_t>(i)] = 255;
  const float slope = static_cast<float>(255.0 / (range.high - range.low));
  for (int i = std::max(range.low + 1, 0); i < std::min(range.high, 256); ++i) {
    const double entry = std::trunc((i - range.low) * double{slope}) + table[0];
    table[static_cast<std::size_t>(i)] = static_cast<int>(entry) & 255;
  }
  return table;
}

struct ToneValue {
  int autoContrast, channelsApart, autoTone, hi, med, lo, addHi, addMed, addLo;

  std::string Text() const {
    const char* const keys[] = {"AutoContrast", "AutoContrastRGB", "AutoTone", "Hi",   "Med",
                                "Lo",           "Addhi",           "Addmed",   "Addlo"};
    const int values[] = {autoContrast, channelsApart, autoTone, hi, med, lo, addHi, addMed, addLo};
    std::string text;
    for (std::size_t i = 0; i < std::size(keys); ++i) {
      text.append(i == 0 ? "" : ",").append(keys[i]).append("=").append(std::to_string(values[i]));
    }
    return text;
  }

  Range Adjusted(Range measured) const {
    if (!autoContrast) return {lo, 255 - hi};
    return {std::clamp(measured.low + addLo, 0, 125), std::clamp(measured.high - addHi, 130, 255)};
  }

  int Midtone(const Picture& picture, Range limits, int requestedPixels) const {
    if (!autoTone) return med;
    const auto counts = Counts(picture, kLuminance);
    double sum = 0;
    for (int i = 0; i < 256; ++i) {
      const int weight = i <= limits.low ? 1 : i < limits.high ? i + 1 : 256;
      sum += double(weight) * counts[static_cast<std::size_t>(i)];
    }
    const float mean = static_cast<float>(sum / requestedPixels - 1.0);
    const double v = std::clamp(std::trunc(mean + 0.5) - 100.0, -70.0, 125.0);
    const double t = v > 0 ? 1.0 + 2 * v / 125.0 : 1.0 - 0.5 * v / -70.0;
    const double found = t > 1 ? std::max(std::trunc((1.0 - t) * 50.0), -100.0)
                               : std::min(std::trunc((1.0 - t) * 200.0), 100.0);
    return std::clamp(addMed + static_cast<int>(found), -100, 100);
  }

  // By the request that the limits were measured for, and by that of the pull.
  Tables Build(const Picture& picture, int firstPixels, int pixels) const {
    const Range all = Adjusted(Measure(picture, kLuminance, firstPixels));
    const int m = Midtone(picture, all, pixels);
    const double exponent = 1.0 - (m >= 0 ? m / 200.0 : m / 50.0);
    Tables tables;
    for (int channel = 0; channel < 3; ++channel) {
      Table& table = tables[static_cast<std::size_t>(channel)];
      table = Ramp(channelsApart ? Adjusted(Measure(picture, channel, firstPixels)) : all);
      for (double& entry : table) {
        entry = std::trunc(255 * std::pow(entry / 255, exponent) + 0.5);
      }
    }
    return tables;
  }
};

void ExpectMapped(const Picture& given, const Tables& tables, int opacity, const Picture& found) {
  for (std::size_t i = 0; i < given.colour.size(); ++i) {
    const double entry = tables[i % 3][given.colour[i]];
    if (!(std::abs(entry) < 1e7)) continue;
    const int mixed = static_cast<int>(entry) * opacity + (100 - opacity) * given.colour[i];
    ASSERT_EQ((mixed / 100) & 255, found.colour[i]) << "of " << int{given.colour[i]};
  }
  EXPECT_EQ(given.mask, found.mask);
}

int Between(std::mt19937& random, int least, int most) {
  return least + static_cast<int>(random() % static_cast<unsigned>(most - least + 1));
}

// Noise whose channels have ranges of their own.
Picture Narrow(std::mt19937& random, int width, int height) {
  Picture picture = Noise(width, height, Masks::Noise, static_cast<std::uint32_t>(random()));
  for (std::size_t channel = 0; channel < 3; ++channel) {
    const int first = Between(random, 0, 110);
    const int span = Between(random, 20, 255 - first);
    for (std::size_t i = channel; i < picture.colour.size(); i += 3) {
      picture.colour[i] = static_cast<BYTE>(first + picture.colour[i] * span / 256);
    }
  }
  return picture;
}

TEST(ToneFilters, ToneValue) {
  std::mt19937 random(21);
  for (int round = 0; round < 120; ++round) {
    const auto flag = [&] { return Between(random, 0, 1); };
    const auto correction = [&] { return flag() ? 0 : Between(random, -130, 130); };
    const ToneValue tone{flag(),
                         flag(),
                         flag(),
                         Between(random, -40, 110),
                         Between(random, -100, 100),
                         Between(random, -40, 110),
                         correction(),
                         correction(),
                         correction()};
    SCOPED_TRACE(tone.Text());
    const Picture picture = Narrow(random, Between(random, 15, 50), Between(random, 15, 50));
    Rig rig(picture, ClassOf("ZNFilter.Tonwert.1"));
    rig.Filter().SetParameter(tone.Text().c_str(), 1);
    rig.Prepare();
    const RowRequest first = AnyRequest(random, picture, 2),
                     second = AnyRequest(random, picture, 2);
    for (const RowRequest& r : {first, second}) {
      const Tables tables = tone.Build(picture, first.width * first.height, r.width * r.height);
      ExpectMapped(PartOf(picture, r), tables, 100, rig.PullPart(r));
    }
  }
}

struct GreyPoint {
  int mode;
  std::array<int, 3> grey;  // blue, green, red

  std::array<double, 3> Gammas(const std::array<double, 3>& by) const {
    const double median = std::max(std::min(by[0], by[1]), std::min(std::max(by[0], by[1]), by[2]));
    std::array<double, 3> gammas;
    std::transform(by.begin(), by.end(), gammas.begin(), [&](double value) {
      const double scaled = std::trunc(128.0 / (median < 2 ? 1 : median) * value + 0.5);
      return scaled == 128 ? 1.0 : std::log10(255.0 / 128) / std::log10(255.0 / scaled);
    });
    return gammas;
  }

  static Range Apart(Range limits) {
    limits = {std::clamp(limits.low, 0, 240), std::clamp(limits.high, 15, 255)};
    if (limits.high < limits.low) std::swap(limits.low, limits.high);
    if (limits.high - limits.low >= 10) return limits;
    if (limits.high < 129) return {limits.low, limits.low + 10};
    return {limits.high - 10, limits.high};
  }

  static Table Curve(Range limits, double gamma) {
    Table table = {};
    for (int i = limits.low; i < 256; ++i) {
      const double share = static_cast<double>(i - limits.low) / (limits.high - limits.low);
      const double entry = std::trunc(255 * std::pow(share, gamma) + 1e-9);
      table[static_cast<std::size_t>(i)] = i < limits.high ? entry : 255;
    }
    return table;
  }

  Table Line(int c) const {
    std::array<int, 3> sorted = grey;
    std::sort(sorted.begin(), sorted.end());
    Table table;
    for (int i = 0; i < 256; ++i) {
      table[static_cast<std::size_t>(i)] =
          i < c || c == 255 ? i * sorted[1] / c : (i - 255) * (255 - sorted[1]) / (255 - c) + 255;
    }
    return table;
  }

  Tables Build(const Picture& part) const {
    Tables tables;
    std::array<double, 3> by;
    std::array<Range, 3> ranges;
    for (std::size_t c = 0; c < 3; ++c) {
      const int channel = mode == 2 ? kLuminance : static_cast<int>(c);
      ranges[c] = mode == 1 ? Range{0, 255} : Measure(part, channel, part.width * part.height);
      by[c] = mode == 1 ? grey[c] : Ramp(ranges[c])[static_cast<std::size_t>(grey[c])];
    }
    for (std::size_t c = 0; c < 3; ++c) {
      tables[c] = mode == 0 ? Line(grey[c]) : Curve(Apart(ranges[c]), Gammas(by)[c]);
    }
    return tables;
  }
};

TEST(ToneFilters, GreyPoint) {
  std::mt19937 random(22);
  for (int round = 0; round < 160; ++round) {
    const auto level = [&] { return Between(random, 1, 255); };
    const GreyPoint point{round % 4, {level(), level(), level()}};
    const int opacity = round % 3 == 0 ? 100 : Between(random, 1, 99);
    const std::string text =
        "BlueG=" + std::to_string(point.grey[0]) + ",GreenG=" + std::to_string(point.grey[1]) +
        ",RedG=" + std::to_string(point.grey[2]) + ",Mode=" + std::to_string(point.mode) +
        ",Opacity=" + std::to_string(opacity);
    SCOPED_TRACE(text);
    const Picture picture = round % 5 == 0
                                ? Uniform(30, 20, 7, static_cast<BYTE>(level()), 251)
                                : Narrow(random, Between(random, 5, 40), Between(random, 5, 40));
    Rig rig(picture, ClassOf("ZNFilter.WhiteBlackGrey.1"));
    rig.Filter().SetParameter(text.c_str(), 1);
    rig.Prepare();
    const RowRequest r = AnyRequest(random, picture, 2);
    const Picture part = PartOf(picture, r);
    ExpectMapped(part, point.Build(part), opacity, rig.PullPart(r));
  }
}

Picture Equalised(const Picture& part, int intensity) {
  const auto counts = Counts(part, kLuminance);
  std::array<float, 256> curve;
  float sum = 0;
  for (std::size_t i = 0; i < 256; ++i) {
    if (counts[i] != 0) sum += static_cast<float>(std::pow(counts[i], intensity / 100.0));
    curve[i] = sum;
  }
  Picture result = part;
  for (std::size_t i = 0; i < part.colour.size(); ++i) {
    const int level = LevelOf(&part.colour[i / 3 * 3], kLuminance);
    const auto scaled = static_cast<float>(curve[static_cast<std::size_t>(level)] * (255.0 / sum));
    const double ratio = level > 0 ? double{scaled} / level : 0.0;
    result.colour[i] = static_cast<BYTE>(std::min(part.colour[i] * ratio + 0.5, 255.0));
  }
  return result;
}

TEST(ToneFilters, Histogram) {
  std::mt19937 random(23);
  for (const int intensity : {0, 1, 35, 50, 99, 100, 150, -40}) {
    const Picture picture = Narrow(random, Between(random, 5, 90), Between(random, 5, 40));
    Rig rig(picture, ClassOf("ZNFilter.Histo.1"));
    rig.Filter().SetParameter(("Intensity=" + std::to_string(intensity)).c_str(), 1);
    rig.Prepare();
    // What is counted lies at the front of the rows.
    const RowRequest r = AnyRequest(random, picture, 0);
    EXPECT_EQ(Difference(Equalised(PartOf(picture, r), intensity), rig.PullPart(r)), "")
        << intensity;
  }
}

using Bytes = std::vector<BYTE>;

// A text without `Mode` is linear again, and a pull does not wait for the Prepare.
TEST(ToneFilters, GreyPointWorksByPendingParameters) {
  Rig rig(Uniform(1, 1, 50, 100, 200), ClassOf("ZNFilter.WhiteBlackGrey.1"));
  rig.Filter().SetParameter("RedG=0, GreenG=0, BlueG=0, Mode=1", 1);
  rig.Prepare();
  GuardedRows rows(1, 1);
  const auto pull = [&] {
    EXPECT_EQ(rig.Pull(rows, {0, 0, 0, 0, 1, 1}), S_OK);
    return rows.Whole().colour;
  };
  EXPECT_EQ(pull(), Bytes({255, 255, 255}));
  rig.Filter().SetParameter("RedG=200, GreenG=100, BlueG=50", 1);
  EXPECT_EQ(pull(), Bytes({100, 100, 100}));
  EXPECT_THAT(PendingText(rig.Filter()), testing::HasSubstr("Mode=0"));
}

// Whoever filled the first rows of the caller's array is counted, and only they.
TEST(ToneFilters, HistogramCountsTheFirstRowsOfTheArray) {
  Rig rig(Uniform(2, 1, 50, 50, 50), ClassOf("ZNFilter.Histo.1"));
  rig.Prepare();
  GuardedRows rows(2, 2);
  std::fill_n(rows.ColourRows()[0], 6, BYTE{200});
  EXPECT_EQ(rig.Pull(rows, {0, 1, 0, 0, 2, 1}), S_OK);
  EXPECT_EQ(rows.Part(0, 1, 1, 1).colour, Bytes({0, 0, 0}));
  EXPECT_EQ(rows.Part(0, 0, 1, 1).colour, Bytes({200, 200, 200}));
}

// Whether channels are stretched apart is taken as it is set, all else once it is prepared.
TEST(ToneFilters, ChannelsGoApartAtOnce) {
  Picture picture = Noise(20, 20, Masks::Opaque, 4);
  for (std::size_t i = 0; i < picture.colour.size(); ++i) {
    picture.colour[i] = static_cast<BYTE>(picture.colour[i] / (2 + i % 3) + 20);
  }
  const auto pulled = [&](const char* prepared, const char* pending) {
    Rig rig(picture, ClassOf("ZNFilter.Tonwert.1"));
    rig.Filter().SetParameter(prepared, 1);
    rig.PullWhole();
    rig.Filter().SetParameter(pending, 1);
    GuardedRows rows(20, 20);
    EXPECT_EQ(rig.Pull(rows, {0, 0, 0, 0, 20, 20}), S_OK);
    return rows.Whole().colour;
  };
  const Bytes together = pulled("AutoContrastRGB=0", "");
  const Bytes apart = pulled("AutoContrastRGB=1", "");
  EXPECT_NE(together, apart);
  EXPECT_EQ(pulled("AutoContrastRGB=0", "AutoContrastRGB=1, Med=50, Addlo=30"), apart);
  EXPECT_EQ(pulled("AutoContrastRGB=1", "AutoContrastRGB=0, AutoContrast=0"), together);
}

// What one object measures on a preview, another repeats on the picture: pixels of one level come
// out alike.
TEST(ToneFilters, ToneValueRepeatsAMeasurement) {
  const FilterClass& row = ClassOf("ZNFilter.Tonwert.1");
  const std::string own = "AutoContrast=1, AutoContrastRGB=1, AutoTone=1, Hi=000, Med=000, Lo=000";
  Picture preview = Noise(30, 20, Masks::Noise, 11);
  for (auto& byte : preview.colour) byte = static_cast<BYTE>(byte / 3 + 20);
  Picture full(60, 40);
  for (int y = 0; y < 40; ++y) {
    for (int x = 0; x < 60; ++x) std::copy_n(preview.Colour(x / 2, y / 2), 3, full.Colour(x, y));
  }
  Rig first(preview, row);
  first.Filter().SetParameter((own + ", Vis=0").c_str(), 1);
  const Picture expected = first.PullWhole();
  EXPECT_EQ(ActiveText(first.Filter()), own + ", Addhi=000, Addmed=000, Addlo=000,Vis=0");
  first.Filter().SetParameter("ExParam=1", 1);
  const std::string measured = PendingText(first.Filter());
  EXPECT_EQ(measured, ActiveText(first.Filter()));
  EXPECT_THAT(measured, testing::StartsWith("ExBlit=1, AutoContrast=1, "));
  EXPECT_THAT(measured, testing::EndsWith(",Vis=0"));
  const std::string limits = ", WL=1, WH=2, RL=3, RH=4, GL=5, GH=6, BL=7, BH=8, MAUTO=9";
  first.Filter().SetParameter(("ExParam=1,ExBlit=1,Vis=1" + limits).c_str(), 1);
  EXPECT_THAT(PendingText(first.Filter()), testing::EndsWith("Addlo=000" + limits));
  Rig second(full, row);
  second.Filter().SetParameter(measured.c_str(), 1);
  const Picture got = second.PullWhole();
  for (int y = 0; y < 40; ++y) {
    for (int x = 0; x < 60; ++x) {
      ASSERT_TRUE(
          std::equal(got.Colour(x, y), got.Colour(x, y) + 3, expected.Colour(x / 2, y / 2)));
    }
  }
}

}  // namespace
}  // namespace testing_support
