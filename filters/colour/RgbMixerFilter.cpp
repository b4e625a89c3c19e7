#include "filters/colour/RgbMixerFilter.h"

#include "base/Guid.h"

const FilterClass kRgbMixerClass = {
    .sortKey = 33,
    .className = "CRgbMixerFilter",
    .progId = "ZNFilter.RgbMixer.1",
    .classId = base::Guid("{DFA0E118-8844-4D1C-BC19-8229C590D98D}"),
    .order = 5000,
    .iconName = "icons4_colormixer",
    .nameKey = "IDS_RGBMIXER_NAME",
    .helpKey = "HLP_RGBMIXER",
    .defaultText =
        "BOnK=1,BOnR=0,BOnG=0,BOnB=0,BBypass=0,BRgb0=0,BCon0=1,BRgb1=0,BCon1=0,BRgb2=0,"
        "BCon2=0,BRgb3=0,BCon3=0,kR=030,kG=059,kB=011,rR=100,rG=000,rB=000,gR=000,gG=100,"
        "gB=000,bR=000,bG=000,bB=100,kC=000,rC=000,gC=000,bC=000",
    .gloss = "Channel mixer",
    .make = MakeFilter<CRgbMixerFilter>,
    .describe = CRgbMixerFilter::Describe};

namespace {

constexpr ParameterDescription Flag(const char* gloss) {
  return {.gloss = gloss};
}

constexpr ParameterDescription Weight(const char* gloss) {
  return {.least = -200, .greatest = 200, .gloss = gloss};
}

constexpr ParameterDescription Constant(const char* gloss) {
  return {.least = -100, .greatest = 100, .gloss = gloss};
}

struct Percentages {
  std::int32_t red, green, blue, constant;
};

kernels::ChannelRecipe RecipeOf(const Percentages& p, bool countAsShares, bool constantCounts) {
  const std::int64_t sum = std::int64_t{p.red} + p.green + p.blue;
  return {.blue = p.blue,
          .green = p.green,
          .red = p.red,
          .divisor = countAsShares && sum > 0 ? sum : 100,
          .constant = constantCounts ? std::int64_t{255} * p.constant / 100 : 0};
}

}  // namespace

std::span<const ParameterRow<RgbMixerParameters>> RgbMixerParameters::Rows() {
  using P = RgbMixerParameters;
  static constexpr ParameterRow<P> kRows[] = {
      {"BOnK", "BOnK=%.1d", &P::greyOn, Flag("all channels become the grey mixture")},
      {"BOnR", ",BOnR=%.1d", &P::redOn, Flag("red is mixed")},
      {"BOnG", ",BOnG=%.1d", &P::greenOn, Flag("green is mixed")},
      {"BOnB", ",BOnB=%.1d", &P::blueOn, Flag("blue is mixed")},
      {"BBypass", ",BBypass=%.1d", &P::bypass, Flag("nothing is mixed")},
      {"BRgb0", ",BRgb0=%.1d", &P::sharesGrey, Flag("weights of grey are shares of their sum")},
      {"BCon0", ",BCon0=%.1d", &P::constantOnGrey, Flag("the constant of grey counts")},
      {"BRgb1", ",BRgb1=%.1d", &P::sharesRed, Flag("weights of red are shares of their sum")},
      {"BCon1", ",BCon1=%.1d", &P::constantOnRed, Flag("the constant of red counts")},
      {"BRgb2", ",BRgb2=%.1d", &P::sharesGreen, Flag("weights of green are shares of their sum")},
      {"BCon2", ",BCon2=%.1d", &P::constantOnGreen, Flag("the constant of green counts")},
      {"BRgb3", ",BRgb3=%.1d", &P::sharesBlue, Flag("weights of blue are shares of their sum")},
      {"BCon3", ",BCon3=%.1d", &P::constantOnBlue, Flag("the constant of blue counts")},
      {"kR", ",kR=%.3d", &P::greyOfRed, Weight("red in grey, percent")},
      {"kG", ",kG=%.3d", &P::greyOfGreen, Weight("green in grey, percent")},
      {"kB", ",kB=%.3d", &P::greyOfBlue, Weight("blue in grey, percent")},
      {"rR", ",rR=%.3d", &P::redOfRed, Weight("red in red, percent")},
      {"rG", ",rG=%.3d", &P::redOfGreen, Weight("green in red, percent")},
      {"rB", ",rB=%.3d", &P::redOfBlue, Weight("blue in red, percent")},
      {"gR", ",gR=%.3d", &P::greenOfRed, Weight("red in green, percent")},
      {"gG", ",gG=%.3d", &P::greenOfGreen, Weight("green in green, percent")},
      {"gB", ",gB=%.3d", &P::greenOfBlue, Weight("blue in green, percent")},
      {"bR", ",bR=%.3d", &P::blueOfRed, Weight("red in blue, percent")},
      {"bG", ",bG=%.3d", &P::blueOfGreen, Weight("green in blue, percent")},
      {"bB", ",bB=%.3d", &P::blueOfBlue, Weight("blue in blue, percent")},
      {"kC", ",kC=%.3d", &P::greyConstant, Constant("added to grey, percent of full level")},
      {"rC", ",rC=%.3d", &P::redConstant, Constant("added to red, percent of full level")},
      {"gC", ",gC=%.3d", &P::greenConstant, Constant("added to green, percent of full level")},
      {"bC", ",bC=%.3d", &P::blueConstant, Constant("added to blue, percent of full level")}};
  return kRows;
}

RgbMixerParameters RgbMixerParameters::ActiveStart() {
  RgbMixerParameters start;
  start.bypass = true;
  return start;
}

kernels::Mixture CRgbMixerFilter::ActiveMixture() const {
  const RgbMixerParameters& a = active;
  kernels::Mixture mixed;
  if (a.bypass) return mixed;
  if (a.greyOn) {
    mixed.blue = mixed.green = mixed.red = RecipeOf(
        {a.greyOfRed, a.greyOfGreen, a.greyOfBlue, a.greyConstant}, a.sharesGrey, a.constantOnGrey);
    return mixed;
  }
  if (a.redOn) {
    mixed.red = RecipeOf({a.redOfRed, a.redOfGreen, a.redOfBlue, a.redConstant}, a.sharesRed,
                         a.constantOnRed);
  }
  if (a.greenOn) {
    mixed.green = RecipeOf({a.greenOfRed, a.greenOfGreen, a.greenOfBlue, a.greenConstant},
                           a.sharesGreen, a.constantOnGreen);
  }
  if (a.blueOn) {
    mixed.blue = RecipeOf({a.blueOfRed, a.blueOfGreen, a.blueOfBlue, a.blueConstant}, a.sharesBlue,
                          a.constantOnBlue);
  }
  return mixed;
}

void CRgbMixerFilter::Commit() {
  ParameterFilter::Commit();
  mixture = ActiveMixture();
}

void CRgbMixerFilter::ChangeRow(BYTE* colour, BYTE*, int width) {
  if (!active.bypass) kernels::Choose<kernels::MixerKernels>().mix(colour, width, mixture);
}
