// Any bytes as a preset of the gradation filter: what is read prints to a text that reads the same.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "editing/GradationPreset.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  const std::string text(reinterpret_cast<const char*>(bytes), size);
  std::string error;
  const auto preset = ReadGradationPreset(text, error);
  if (!preset) {
    if (error.empty()) std::abort();
    return 0;
  }
  const std::string printed = PrintGradationPreset(*preset);
  const auto again = ReadGradationPreset(printed, error);
  if (!again || PrintGradationPreset(*again) != printed) std::abort();
  if (!(again->curves == preset->curves)) std::abort();

  // The curves that it holds can be drawn, or not, without harm.
  GradCurvesParameters curves;
  ReadParameters(ParameterTextOf(*preset).c_str(), curves);
  if (!(curves == preset->curves)) std::abort();
  for (const GradCurvesParameters::Curve& curve : curves.curves) {
    const std::span nodes(curve.nodes, static_cast<std::size_t>(curve.count));
    editing::ByteTable table = editing::IdentityTable();
    editing::BuildSplineTable(nodes, table);
    editing::BuildLineTable(nodes, table);
  }
  return 0;
}
