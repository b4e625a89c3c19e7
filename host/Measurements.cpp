#include "host/Measurements.h"

#include <algorithm>

namespace host {
namespace {

using platform::ComPtr;

constexpr char kPrintMeasured[] = "ExParam=1";
constexpr std::string_view kMeasuredMark = "ExBlit=1";

std::string ActiveText(IAnimFilterParameter& filter) {
  char text[16384] = "";
  filter.GetActiveParameter(text, sizeof text);
  return text;
}

std::string MeasuredText(IAnimFilterParameter& filter) {
  const std::string text = ActiveText(filter);
  return text.starts_with(kMeasuredMark) ? text : std::string();
}

bool Measures(IAnimFilterCreator& creator, IAnimFilter& filter) {
  char name[256] = "";
  filter.GetName(name, sizeof name);
  return !MeasuringText(creator, name).empty();
}

}  // namespace

std::string MeasuringText(IAnimFilterCreator& creator, const std::string& progId) {
  ComPtr<IAnimFilterParameter> filter;
  creator.CreateFilter(progId.c_str(), IAnimFilterParameter::kIid, filter.PutVoid());
  if (!filter) return {};
  filter->SetParameter(kPrintMeasured, 0);
  return MeasuredText(*filter.Get());
}

bool StartMeasuring(const Pipeline& pipeline, IAnimFilterCreator& creator) {
  bool any = false;
  for (const auto& filter : pipeline.Filters()) {
    // Others may take a text without their keys for an order to reset them.
    if (!Measures(creator, *filter.Get())) continue;
    ComPtr<IAnimFilterParameter>::Query(filter.Get())->SetParameter(kPrintMeasured, 0);
    any = true;
  }
  return any;
}

Measurements TakeMeasurements(const Pipeline& pipeline) {
  Measurements measurements;
  for (const auto& filter : pipeline.Filters()) {
    const auto parameter = ComPtr<IAnimFilterParameter>::Query(filter.Get());
    measurements.push_back(parameter ? MeasuredText(*parameter.Get()) : std::string());
  }
  return measurements;
}

void RepeatMeasurements(const Pipeline& pipeline, const Measurements& measurements) {
  const auto filters = pipeline.Filters();
  for (std::size_t i = 0; i < std::min(filters.size(), measurements.size()); ++i) {
    if (measurements[i].empty()) continue;
    ComPtr<IAnimFilterParameter>::Query(filters[i].Get())->SetParameter(measurements[i].c_str(), 0);
  }
}

}  // namespace host
