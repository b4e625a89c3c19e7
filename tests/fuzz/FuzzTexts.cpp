// Any bytes as each kind of text that comes from outside; the last byte says which.
#include <array>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

#include "base/PercentText.h"
#include "core/DragText.h"
#include "core/Parameter.h"
#include "core/PdibFilterChain.h"
#include "core/PdibFilterCreator.h"
#include "editing/GradationPreset.h"
#include "filters/FilterClasses.h"
#include "filters/text/TextFilter.h"
#include "filters/text/WaterSignFilter.h"
#include "platform/component/ComPtr.h"
#include "platform/linux/ProfileText.h"

namespace {

using platform::ComPtr;

void Demand(bool isRight) {
  if (!isRight) std::abort();
}

// A chain text, with the parameter texts that it brings, and pulls through the result.
void ChainText(const std::string& text) {
  static const auto creator =
      ComPtr<IAnimFilterCreator>::Attach(new CPdibFilterCreator(FilterClasses()));
  const auto chain = ComPtr<IAnimFilterChain>::Attach(new CPdibFilterChain);
  chain->SetChainText(text.c_str(), "(", ")", creator.Get());
  chain->UpdateChain(text.c_str(), "(", ")", creator.Get());
  // A text that the chain hands out makes no change when it comes back.
  std::vector<char> first(1 << 16), second(1 << 16);
  const int room = static_cast<int>(first.size());
  if (FAILED(chain->GetChainText(first.data(), room, "(", ")", false))) return;
  chain->SetChainText(first.data(), "(", ")", creator.Get());
  Demand(SUCCEEDED(chain->GetChainText(second.data(), room, "(", ")", false)));
  std::uint8_t pixel[4] = {1, 2, 3, 4};
  ComPtr<IAnimFilterDestCallsThis> tail;
  chain->GetAt(-1, IAnimFilterDestCallsThis::kIid, tail.PutVoid());
  int unused = 0;
  if (tail) tail->GetInfo(&unused, &unused, &unused, &unused, &unused, &unused);
  if (tail) tail->ReadPixel(pixel);
  chain->RemoveAll();
}

// A text that holds a dragged chain; what is read is written and read again.
void DragText(const std::string& text) {
  const auto read = core::ReadDragText(text);
  if (!read || read->chain.empty() || core::HoldsDragMarker("##" + read->chain + "##") ||
      core::HoldsDragMarker(read->second) || read->second.starts_with(core::kSecondTextMark) ||
      read->second.ends_with('\n')) {
    return;
  }
  const auto written = core::MakeDragText(read->chain, read->second);
  Demand(written && core::ReadDragText(*written) == read);
}

// A preset of the gradation filter: what is read prints to a text that reads the same.
void Preset(const std::string& text) {
  std::string error;
  const auto preset = ReadGradationPreset(text, error);
  Demand(preset || !error.empty());
  if (!preset) return;
  const std::string printed = PrintGradationPreset(*preset);
  const auto again = ReadGradationPreset(printed, error);
  Demand(again && PrintGradationPreset(*again) == printed && again->curves == preset->curves);
  // The curves that it holds can be drawn, or not, without harm.
  GradCurvesParameters curves;
  ReadParameters(ParameterTextOf(*preset).c_str(), curves);
  Demand(curves == preset->curves);
  for (const GradCurvesParameters::Curve& curve : curves.curves) {
    const std::span nodes(curve.nodes, static_cast<std::size_t>(curve.count));
    editing::ByteTable table = editing::IdentityTable();
    editing::BuildSplineTable(nodes, table);
    editing::BuildLineTable(nodes, table);
  }
}

// The parameters of a lettering, which reads back what it prints, drawn on a small picture.
template <class Parameters>
void Lettering(const std::string& text) {
  Parameters once, twice;
  ReadParameters(text.c_str(), once);
  const std::string printed = PrintParameters(once);
  ReadParameters(printed.c_str(), twice);
  Demand(PrintParameters(twice) == printed);
  Demand(base::PercentDecode(base::PercentEncode(text)) == text);
  constexpr int kWidth = 40, kHeight = 30;
  const LetteringParameters& lettering = once;
  const auto overlay = MakeOverlay(lettering, lettering.text, kWidth, kHeight);
  std::uint8_t colour[3 * kWidth] = {}, mask[kWidth] = {};
  for (int y = 0; overlay && y < kHeight; ++y) overlay->ComposeRow(colour, mask, 0, y, kWidth);
}

// A settings file, which is read, changed and read again.
void ProfileText(const std::string& text) {
  platform::ProfileText profile(text);
  for (const std::string& section : profile.Sections()) {
    for (const std::string& key : profile.Keys(section)) profile.Read(section, key);
  }
  if (!profile.IsNarrow()) return;
  profile.Write("Section", "Key", "value");
  Demand(profile.Read("section", "key") == "value");
  profile.Write("Section", "Key", std::nullopt);
  profile.Write(text, text, text);
  profile.Read(text, text);
}

// A tag list, and a second one beside it.
void TagList(const std::string& text) {
  const std::size_t half = text.size() / 2;
  const std::string tag = text.substr(0, text.size() % 5);
  const Parameter left(text.substr(0, half));
  Parameter right(text.substr(half));
  static_cast<void>(left == right);
  static_cast<void>(left.GetDouble(tag.c_str()));
  static_cast<void>(right.GetPtr(tag.c_str()));
  right.RemoveTag(tag.c_str());
  // What was set is read back, whatever stood there, as long as nothing hides the item.
  const std::string value = text.substr(0, text.find('\0'));
  Parameter fresh;
  fresh.Set("tag", value.c_str());
  Demand(fresh.GetString("tag").ToStdString() == value);
  right.Set(tag.c_str(), value.c_str());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  constexpr std::array kKinds = {
      ChainText,   DragText, Preset, Lettering<TextParameters>, Lettering<WaterSignParameters>,
      ProfileText, TagList};
  if (size == 0) return 0;
  const std::string text(reinterpret_cast<const char*>(bytes), size - 1);
  kKinds[bytes[size - 1] % kKinds.size()](text);
  return 0;
}
