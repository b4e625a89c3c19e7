#include "filters/colour/ColCorExFilter.h"

#include <deque>
#include <string>
#include <vector>

#include "base/Guid.h"

const FilterClass kColCorExClass = {
    .sortKey = 17,
    .className = "CColCorExFilter",
    .progId = "ZNFilter.Gamma.1",
    .classId = base::Guid("{F8B92EC5-6892-4BA6-9855-3627D3C293CB}"),
    .order = 5000,
    .iconName = "icons4_colorbalance",
    .nameKey = "IDS_CCEX_NAME",
    .helpKey = "HLP_CCEX",
    .defaultText =
        "S10=0,S20=0,S30=0,S40=0,S50=0,S11=0,S21=0,S31=0,S41=0,S51=0,S12=0,S22=0,S32=0,S42=0,"
        "S52=0,S13=0,S23=0,S33=0,S43=0,S53=0,S14=0,S24=0,S34=0,S44=0,S54=0,S15=0,S25=0,S35=0,"
        "S45=0,S55=0,S16=0,S26=0,S36=0,S46=0,S56=0",
    .gloss = "Colour balance",
    .make = MakeFilter<CColCorExFilter>,
    .describe = CColCorExFilter::Describe};

namespace {

using P = ColCorExParameters;

constexpr const char* kRangeNames[P::kRanges] = {"all colours", "reds",  "yellows", "greens",
                                                 "cyans",       "blues", "magentas"};
constexpr const char* kSliderNames[P::kSliders] = {
    "-100 cyan to 100 red", "-100 magenta to 100 green", "-100 yellow to 100 blue", "lightness",
    "saturation"};

const std::int32_t& ValueAt(const P& parameters, int number) {
  return parameters.values[static_cast<std::size_t>(number)];
}

// The rows, and the texts that they point to.
class Table {
 public:
  Table() {
    for (int number = 0; number < P::kRanges * P::kSliders; ++number) Add(number);
  }
  std::span<const ParameterRow<P>> Rows() const { return rows_; }

 private:
  void Add(int number) {
    const int range = number / P::kSliders;
    const int slider = number % P::kSliders;
    const char* const key = Keep("S", std::to_string(10 * (slider + 1) + range));
    const char* const printed = Keep(number > 0 ? "," : "", std::string(key).append("=%d"));
    const char* const gloss =
        Keep(kRangeNames[range], std::string(": ").append(kSliderNames[slider]));
    rows_.push_back({key, printed, {ValueAt, number}, {.least = -100, .gloss = gloss}});
  }
  const char* Keep(const char* front, const std::string& rest) {
    return texts_.emplace_back(front).append(rest).c_str();
  }

  std::deque<std::string> texts_;
  std::vector<ParameterRow<P>> rows_;
};

}  // namespace

std::span<const ParameterRow<ColCorExParameters>> ColCorExParameters::Rows() {
  static const Table table;
  return table.Rows();
}

ColCorExParameters ColCorExParameters::ActiveStart() {
  ColCorExParameters start;
  start.values.fill(-1);
  return start;
}

kernels::BalanceSlider CColCorExFilter::Slider(int number) const {
  const auto value = [&](int range) { return ValueAt(active, range * P::kSliders + number); };
  return {value(0), {value(1), value(2), value(3), value(4), value(5), value(6)}};
}

void CColCorExFilter::Commit() {
  ParameterFilter::Commit();
  kernels::BuildBalance({Slider(0), Slider(1), Slider(2), Slider(3), Slider(4)}, balance);
}

void CColCorExFilter::ChangeRow(BYTE* colour, BYTE*, int width) {
  kernels::Choose<kernels::BalanceKernels>().balance(colour, width, balance);
}
