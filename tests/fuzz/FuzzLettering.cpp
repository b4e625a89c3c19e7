// Any bytes as the parameters of text and watermark, drawn on a small picture.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "base/PercentText.h"
#include "filters/text/TextFilter.h"
#include "filters/text/WaterSignFilter.h"

namespace {

// What a struct prints it reads back.
template <class Parameters>
Parameters ReadTwice(const std::string& text) {
  Parameters once;
  ReadParameters(text.c_str(), once);
  const std::string printed = PrintParameters(once);
  Parameters twice;
  ReadParameters(printed.c_str(), twice);
  if (PrintParameters(twice) != printed) std::abort();
  return once;
}

void Draw(const LetteringParameters& parameters) {
  constexpr int kWidth = 40;
  constexpr int kHeight = 30;
  const auto overlay = MakeOverlay(parameters, parameters.text, kWidth, kHeight);
  if (!overlay) return;
  std::uint8_t colour[3 * kWidth] = {};
  std::uint8_t mask[kWidth] = {};
  for (int y = 0; y < kHeight; ++y) overlay->ComposeRow(colour, mask, 0, y, kWidth);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  const std::string text(reinterpret_cast<const char*>(bytes), size);
  if (base::PercentDecode(base::PercentEncode(text)) != text) std::abort();
  Draw(ReadTwice<TextParameters>(text));
  Draw(ReadTwice<WaterSignParameters>(text));
  return 0;
}
