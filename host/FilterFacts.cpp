#include "host/FilterFacts.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdio>

#include "base/CodePage.h"
#include "host/Measurements.h"

namespace host {
namespace {

std::string Utf8(const char* codePageText) {
  return codePageText ? base::ToUtf8(codePageText) : std::string();
}

// A default text with the numbers that a dialog fills in, each at its first choice.
std::string FilledIn(std::string text) {
  constexpr std::string_view kOpen = "%d";
  for (std::size_t at = text.find(kOpen); at != std::string::npos; at = text.find(kOpen)) {
    text.replace(at, kOpen.size(), 1, '0');
  }
  return text;
}

std::string NumberText(double number) {
  std::array<char, 400> text;
  const auto end =
      std::to_chars(text.data(), text.data() + text.size(), number, std::chars_format::fixed).ptr;
  return {text.data(), end};
}

constexpr char kHexadecimal[] = "hexadecimal";
constexpr char kText[] = "text";

const char* KindName(const ParameterDescription& row) {
  if (row.kind == ParameterKind::Flag) return "0 or 1";
  if (row.kind == ParameterKind::Hexadecimal) return kHexadecimal;
  if (row.kind == ParameterKind::Text) return kText;
  return row.kind == ParameterKind::Double ? "number" : "whole number";
}

KeyFacts KeyFactsOf(const ParameterDescription& row, const std::string& newText) {
  KeyFacts facts{Utf8(row.key), KindName(row), {}, row.least, row.greatest, Utf8(row.gloss)};
  facts.isNumbered = row.isNumbered;
  if (row.kind == ParameterKind::Flag) facts.greatest = 1;
  for (const ParameterItem& item : SplitParameters(newText)) {
    if (item.key == row.key && item.value.data()) facts.defaultValue = base::ToUtf8(item.value);
  }
  return facts;
}

constexpr char kExact[] = "exact";
constexpr char kScaled[] = "scaled";
constexpr char kMeasured[] = "measured";
constexpr char kAt100[] = "100 %";

// Classes whose keys name lengths in pixels of the full picture, and that know the zoom.
constexpr std::string_view kScaledClasses[] = {
    "CScaleFilter",       "CScale100Filter",  "CPrintScaleFilter", "CUnsharpMaskFilter",
    "CBlurGaussFilter",   "CBlurSelFilter",   "CSchattenFilter",   "CRedEyeFilter",
    "CPasspartoutFilter", "CRauchglasFilter", "CTextFilter",       "WaterSignFilter"};

// Classes that look at single pixels or count them, whatever the zoom is.
constexpr std::string_view kAt100Classes[] = {"CScharfFilter",    "CWeichFilter",  "CStaubFilter",
                                              "CFindEdgesFilter", "CEmbossFilter", "COffsetFilter",
                                              "CHistoFilter"};

const char* PreviewOf(const FilterEntry& entry, IAnimFilterCreator& creator) {
  const auto isIn = [&](const auto& classes) {
    return std::find(std::begin(classes), std::end(classes), entry.row->className) !=
           std::end(classes);
  };
  if (!MeasuringText(creator, entry.progId).empty()) return kMeasured;
  return isIn(kScaledClasses) ? kScaled : isIn(kAt100Classes) ? kAt100 : kExact;
}

std::string NoteOf(const FilterEntry& entry) {
  return entry.row ? "" : "class of another module: its keys are not known here";
}

// Three quarters of the range: strong enough to be seen where 0 means nothing.
std::string ExampleParameter(const KeyFacts& key) {
  const double value = key.least + (key.greatest - key.least) * 0.75;
  if (key.kind == "number") return key.key + "=" + NumberText(std::round(value * 100) / 100);
  std::array<char, 16> text;
  std::snprintf(text.data(), text.size(), "%.3d", static_cast<int>(value));
  return key.key + "=" + (key.kind == "0 or 1" ? "1" : text.data());
}

// Of one thing of those that the front key counts.
std::string NumberedExample(const std::vector<KeyFacts>& keys) {
  std::string parameters = keys.front().key + "=1";
  for (const KeyFacts& key : keys) {
    if (key.isNumbered) parameters += ", " + ExampleParameter(key);
  }
  return parameters;
}

std::string ExampleOf(const FilterEntry& entry, const FilterFacts& facts) {
  std::string parameters = facts.defaultText.value_or(facts.newText);
  if (entry.row && entry.row->example) {
    parameters = entry.row->example;
  } else if (!facts.keys.empty()) {
    parameters = facts.keys.back().isNumbered ? NumberedExample(facts.keys)
                                              : ExampleParameter(facts.keys.front());
  }
  return facts.progId + "(" + parameters + ")";
}

}  // namespace

FilterFacts FactsOf(const FilterEntry& entry, IAnimFilterCreator& creator) {
  FilterFacts facts;
  facts.progId = base::ToUtf8(entry.progId);
  facts.order = entry.order;
  facts.note = NoteOf(entry);
  const std::string newText = NewFilterText(creator, entry.progId);
  facts.newText = base::ToUtf8(newText);
  if (entry.row) {
    if (entry.row->iconName) facts.icon = Utf8(entry.row->iconName);
    facts.className = Utf8(entry.row->className);
    facts.gloss = Utf8(entry.row->gloss);
    facts.defaultText = DefaultTextOf(entry);
  }
  if (IsOwnClass(entry)) {
    for (const auto& row : entry.row->describe()) facts.keys.push_back(KeyFactsOf(row, newText));
    facts.preview = PreviewOf(entry, creator);
  }
  facts.example = ExampleOf(entry, facts);
  return facts;
}

std::optional<std::string> DefaultTextOf(const FilterEntry& entry) {
  if (!entry.row || !entry.row->defaultText) return std::nullopt;
  return FilledIn(Utf8(entry.row->defaultText));
}

std::string PreviewText(const std::string& preview) {
  if (preview == kExact) return "exact: it shows each pixel as the full result has it";
  if (preview == kScaled) return "scaled: lengths follow the zoom, to whole pixels";
  if (preview == kMeasured) return "measured: it uses what the full picture measures";
  return "100 %: the work is on single pixels, so judge it on a part in full size (--rect)";
}

bool HasRange(const KeyFacts& key) {
  return key.kind != kText;
}

std::string RangeText(const KeyFacts& key) {
  if (!HasRange(key)) return {};
  if (key.kind == kHexadecimal) {
    std::array<char, 32> text;
    std::snprintf(text.data(), text.size(), "%.6x to %.6x", static_cast<unsigned>(key.least),
                  static_cast<unsigned>(key.greatest));
    return text.data();
  }
  return NumberText(key.least) + " to " + NumberText(key.greatest);
}

}  // namespace host
