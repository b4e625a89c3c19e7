#include "core/DragText.h"

#include "core/TransferFormats.h"

namespace core {
namespace {

struct Markers {
  std::string_view start;
  std::string_view end;
};

constexpr Markers kFit = {"##KVVeltrane_DND_FILTERCHAIN_IA##",
                          "##KVVeltrane_DND_FILTERCHAIN_IA_END##"};
constexpr Markers kNotFit = {"##KVVeltrane_DND_FILTERCHAIN##",
                             "##KVVeltrane_DND_FILTERCHAIN_END##"};

constexpr std::string_view kNewLine = "\r\n";
constexpr std::size_t kNone = std::string_view::npos;

bool Holds(std::string_view text, std::string_view part) {
  return text.find(part) != kNone;
}

// Also of an empty text, which has no line to end.
bool IsLastLineEnded(std::string_view text) {
  return text.rfind('\n') + 1 == text.size();
}

struct Place {
  std::size_t first = kNone;
  std::size_t end = kNone;
};

// Between the first end marker that has a start marker ahead of it and the nearest of those: an
// earlier one belongs to a text that was cut off.
Place FindPair(std::string_view text, const Markers& markers) {
  const std::size_t anyStart = text.find(markers.start);
  if (anyStart == kNone) return {};
  const std::size_t end = text.find(markers.end, anyStart + markers.start.size());
  if (end == kNone) return {};
  return {text.substr(0, end).rfind(markers.start) + markers.start.size(), end};
}

DragContent TakeApart(std::string_view inside) {
  const std::size_t mark = inside.find(kSecondTextMark);
  DragContent content;
  content.chain = inside.substr(0, mark);
  if (mark == kNone) return content;
  std::string_view second = inside.substr(mark + kSecondTextMark.size());
  if (second.ends_with(kNewLine)) second.remove_suffix(kNewLine.size());
  content.second = second;
  return content;
}

// Its ends must not make a marker, or an earlier "&&", with what will stand beside them.
bool CanBeReadBack(std::string_view chain, std::string_view second) {
  if (Holds(chain, kSecondTextMark) || (chain.ends_with('&') && !second.empty())) return false;
  return !HoldsDragMarker(std::string("##").append(chain).append("##"));
}

}  // namespace

bool HoldsDragMarker(std::string_view text) {
  return Holds(text, kFit.start) || Holds(text, kFit.end) || Holds(text, kNotFit.start) ||
         Holds(text, kNotFit.end);
}

std::optional<std::string> MakeDragText(std::string_view chain, std::string_view second) {
  if (!CanBeReadBack(chain, second)) return std::nullopt;
  if (chain.empty()) return std::string();
  const Markers& markers = IsFitForIA(std::string(chain).c_str()) ? kFit : kNotFit;
  std::string text(markers.start);
  text += chain;
  if (!second.empty() && !second.starts_with(kSecondTextMark)) text += kSecondTextMark;
  text += second;
  if (!IsLastLineEnded(second)) text += kNewLine;
  text += markers.end;
  return text;
}

std::optional<DragContent> ReadDragText(std::string_view text) {
  const Place fit = FindPair(text, kFit);
  const Place notFit = FindPair(text, kNotFit);
  const Place pair = fit.first < notFit.first ? fit : notFit;
  if (pair.first == kNone) return std::nullopt;
  return TakeApart(text.substr(pair.first, pair.end - pair.first));
}

bool AddDraggedChain(IDataObject* object, std::string_view chain, std::string_view second) {
  const auto text = MakeDragText(chain, second);
  if (!object || !text || text->empty()) return false;
  const std::string alone(chain);
  const bool isFit = IsFitForIA(alone.c_str());
  AddTransferText(object, isFit ? TransferFormat::FilterChainFitForIA : TransferFormat::FilterChain,
                  alone.c_str());
  AddPlainText(object, text->c_str());
  return true;
}

std::optional<DragContent> ReadDraggedChain(IDataObject* object) {
  // Some programs give a text whatever format is asked for, and a chain holds no marker.
  auto chain = ReadAnyFilterChain(object);
  if (chain && !HoldsDragMarker(*chain)) return DragContent{std::move(*chain), {}};
  const auto text = ReadPlainText(object);
  return text ? ReadDragText(*text) : std::nullopt;
}

}  // namespace core
