#include "host/ChainCheck.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <map>
#include <optional>
#include <string_view>

#include "base/CodePage.h"
#include "core/ChainText.h"
#include "host/Measurements.h"
#include "host/Texts.h"

namespace host {
namespace {

constexpr std::string_view kWhite = " \t\r\n\v\f";
constexpr std::string_view kDigits = "0123456789";
constexpr std::size_t kNone = std::string_view::npos;

// --- numbers

enum class NumberForm { Whole, Fraction, Hexadecimal, AnyText };

const char* NameOf(NumberForm form) {
  if (form == NumberForm::Whole) return "whole number";
  return form == NumberForm::Hexadecimal ? "hexadecimal number" : "number";
}

// Takes characters of the set from the front of the text; how many there were.
std::size_t Take(std::string_view& text, std::string_view set, std::size_t most = kNone) {
  const std::size_t length = std::min({text.find_first_not_of(set), text.size(), most});
  text.remove_prefix(length);
  return length;
}

bool TakeFraction(std::string_view& text) {
  const std::size_t ahead = Take(text, kDigits);
  const std::size_t behind = Take(text, ".", 1) ? Take(text, kDigits) : 0;
  if (ahead + behind == 0) return false;
  if (Take(text, "eE", 1) == 0) return true;
  Take(text, "+-", 1);
  return Take(text, kDigits) > 0;
}

bool TakeHexadecimal(std::string_view& text) {
  if (text.substr(0, 2) == "0x" || text.substr(0, 2) == "0X") text.remove_prefix(2);
  return Take(text, "0123456789abcdefABCDEF") > 0;
}

bool IsNumber(std::string_view text, NumberForm form) {
  if (form == NumberForm::AnyText) return true;
  Take(text, kWhite);
  Take(text, "+-", 1);
  const bool taken = form == NumberForm::Whole      ? Take(text, kDigits) > 0
                     : form == NumberForm::Fraction ? TakeFraction(text)
                                                    : TakeHexadecimal(text);
  return taken && text.empty();
}

// The number in a text that IsNumber takes; nothing for one that no double holds.
std::optional<double> ValueOf(std::string_view text, NumberForm form) {
  Take(text, kWhite);
  Take(text, "+", 1);
  if (form == NumberForm::Hexadecimal) {
    std::uint64_t value = 0;
    if (text.starts_with("0x") || text.starts_with("0X")) text.remove_prefix(2);
    const auto error = std::from_chars(text.data(), text.data() + text.size(), value, 16).ec;
    return error == std::errc() ? std::optional(static_cast<double>(value)) : std::nullopt;
  }
  double value = 0;
  const auto error = std::from_chars(text.data(), text.data() + text.size(), value).ec;
  return error == std::errc() && std::isfinite(value) ? std::optional(value) : std::nullopt;
}

// Half of the last place that is shown.
double RoundingOf(std::string_view shown) {
  const std::size_t point = shown.find('.');
  const std::size_t places = point == kNone ? 0 : shown.size() - point - 1;
  return 0.5 * std::pow(10.0, -static_cast<double>(places));
}

// Whether the number that a filter shows is the one that it was given.
bool IsKept(std::string_view given, std::string_view shown, NumberForm form) {
  if (given == shown || form == NumberForm::AnyText) return true;
  const auto wanted = ValueOf(given, form), kept = ValueOf(shown, form);
  if (!wanted || !kept) return false;
  constexpr double kRelative = 1e-9;  // what comes of printing and reading a double
  const double rounding = form == NumberForm::Fraction ? RoundingOf(shown) : 0;
  return std::abs(*wanted - *kept) <=
         rounding * (1 + kRelative) + std::abs(*kept) * kRelative * rounding;
}

// --- keys

// A key that a filter reads and does not print, and the one that it changes by it.
struct SilentKey {
  std::string_view progId;
  std::string_view key;
  std::string_view changes;
};

constexpr SilentKey kSilentKeys[] = {{"ZNFilter.Scale.1", "ScaleThrough", ""},
                                     {"ZNFilter.Shadow.1", "LightOn", "LightIntensity"},
                                     {"ZNFilter.Shadow.1", "ShadowOn", "ShadowDensity"}};

using KnownKeys = std::map<std::string, NumberForm, std::less<>>;

NumberForm FormOf(const ParameterDescription& row) {
  if (row.kind == ParameterKind::Text) return NumberForm::AnyText;
  const char* const format = row.printed ? std::strchr(row.printed, '%') : nullptr;
  if (format && std::strpbrk(format, "xX")) return NumberForm::Hexadecimal;
  return row.kind == ParameterKind::Double ? NumberForm::Fraction : NumberForm::Whole;
}

// Keys of a text that the library itself prints. A value that is no number leaves the key free.
void AddKeysOf(std::string_view text, KnownKeys& keys) {
  for (const ParameterItem& item : SplitParameters(text)) {
    const bool isFree = !item.value.data() || !IsNumber(item.value, NumberForm::Fraction);
    keys.emplace(item.key, isFree ? NumberForm::AnyText : NumberForm::Fraction);
  }
}

// Behind a key that may have any number there.
constexpr char kAnyNumber = '#';

std::string WithoutNumber(std::string_view key) {
  return std::string(key.substr(0, key.find_last_not_of(kDigits) + 1));
}

KnownKeys::const_iterator FindKey(const KnownKeys& keys, std::string_view key) {
  const auto known = keys.find(key);
  const std::string front = WithoutNumber(key);
  return known == keys.end() && front != key ? keys.find(front + kAnyNumber) : known;
}

KnownKeys KeysOf(const FilterEntry& entry, IAnimFilterCreator& creator) {
  KnownKeys keys;
  for (const ParameterDescription& row : entry.row->describe()) {
    keys.emplace(row.key, FormOf(row));
    if (row.isNumbered) keys.emplace(WithoutNumber(row.key) + kAnyNumber, FormOf(row));
  }
  // What any class may find in a stored text.
  keys.insert({{"ExtraParam", NumberForm::AnyText},
               {"Version", NumberForm::Whole},
               {"Vis", NumberForm::Whole},
               {"ExBlit", NumberForm::Whole},
               {"ExParam", NumberForm::Whole}});
  for (const SilentKey& silent : kSilentKeys) {
    if (silent.progId == entry.progId) keys.emplace(silent.key, NumberForm::Whole);
  }
  if (entry.row->defaultText) AddKeysOf(entry.row->defaultText, keys);
  AddKeysOf(NewFilterText(creator, entry.progId), keys);
  AddKeysOf(MeasuringText(creator, entry.progId), keys);
  return keys;
}

template <class Range, class Name>
std::vector<std::string> NamesOf(const Range& range, Name name) {
  std::vector<std::string> names;
  for (const auto& element : range) names.emplace_back(name(element));
  return names;
}

// --- items

// Views of the text that is checked.
struct Item {
  std::string_view whole;
  std::string_view name;
  std::string_view parameters;
};

class Checker {
 public:
  Checker(const ChainText& checked, const std::vector<FilterEntry>& known,
          IAnimFilterCreator& filterCreator)
      : chain(checked), text(checked.text), filters(known), creator(filterCreator) {}

  std::string Run() {
    if (chain.open.empty() || chain.close.empty()) Fail("a marker is empty");
    nameIsOpened = CountOpenMarkers() > 1;
    for (SkipWhite(); at < text.size(); SkipWhite()) {
      ++number;
      items.push_back(TakeItem());
      CheckItem(items.back());
    }
    return Joined();
  }

 private:
  // Those ahead of the first `close` tell the layouts apart.
  int CountOpenMarkers() const {
    const std::size_t end = text.find(chain.close);
    int count = 0;
    for (std::size_t found = text.find(chain.open); found < end && found != kNone;
         found = text.find(chain.open, found + chain.open.size())) {
      ++count;
    }
    return count;
  }

  void SkipWhite() { at = std::min(text.find_first_not_of(kWhite, at), text.size()); }

  Item TakeItem() {
    const std::size_t start = at;
    if (nameIsOpened) {
      if (text.compare(at, chain.open.size(), chain.open) != 0) FailMissing(chain.open, "ahead of");
      at += chain.open.size();
    }
    Item item;
    item.name = TakeUpTo(chain.open, chain.close);
    item.parameters = TakeUpTo(chain.close, {});
    item.whole = text.substr(start, at - start);
    return item;
  }

  // The text ahead of the marker, which is stepped over. `barrier` must not come first.
  std::string_view TakeUpTo(std::string_view marker, std::string_view barrier) {
    const std::size_t found = text.find(marker, at);
    const std::size_t limit = barrier.empty() ? kNone : text.find(barrier, at);
    if (found == kNone || limit < found) FailMissing(marker, "behind");
    const std::string_view taken = text.substr(at, found - at);
    at = found + marker.size();
    return taken;
  }

  void CheckItem(const Item& item) {
    current = base::ToUtf8(item.name);
    const FilterEntry* const entry = FindFilter(filters, std::string(item.name));
    if (!entry) {
      const auto names = NamesOf(filters, [](const FilterEntry& known) { return known.progId; });
      const std::string hint = Suggestion(item.name, names);
      current.clear();
      FailAt("unknown filter " + Quoted(item.name), item.name, hint);
    }
    // What a filter prints is good, even where it has no keys.
    const std::string kept = FilterTextBehind(creator, entry->progId, std::string(item.parameters));
    if (entry->row && item.parameters != kept) {
      const KnownKeys keys = KeysOf(*entry, creator);
      CheckParameters(item.parameters, keys);
      CheckKept(*entry, item.parameters, kept, keys);
    }
    current.clear();
  }

  // A filter that has no place for a number takes another one.
  void CheckKept(const FilterEntry& entry, std::string_view parameters, std::string_view kept,
                 const KnownKeys& keys) const {
    const std::vector<ParameterItem> given = SplitParameters(parameters);
    const std::vector<ParameterItem> shown = SplitParameters(kept);
    const auto isGiven = [&](std::string_view key) { return WithKey(given, key) != given.end(); };
    for (const ParameterItem& item : given) {
      const auto same = WithKey(shown, item.key);
      const bool isChanged =
          std::any_of(std::begin(kSilentKeys), std::end(kSilentKeys), [&](const SilentKey& silent) {
            return silent.progId == entry.progId && silent.changes == item.key &&
                   isGiven(silent.key);
          });
      if (same == shown.end() || item.whole.empty() || isChanged) continue;
      if (IsKept(item.value, same->value, FindKey(keys, item.key)->second)) continue;
      FailAt(Quoted(item.whole), item.whole,
             ": the filter takes " + base::ToUtf8(same->value) + " instead");
    }
  }

  static std::vector<ParameterItem>::const_iterator WithKey(const std::vector<ParameterItem>& items,
                                                            std::string_view key) {
    return std::find_if(items.begin(), items.end(), [&](const ParameterItem& item) {
      return item.key == key && item.value.data();
    });
  }

  void CheckParameters(std::string_view parameters, const KnownKeys& keys) const {
    const std::vector<ParameterItem> given = SplitParameters(parameters);
    for (const ParameterItem& item : given) {
      // A comma at the end parts it from nothing.
      if (item.whole.empty() && &item == &given.back() && given.size() > 1) continue;
      if (item.whole.empty()) FailAt("a parameter is missing", item.whole);
      if (!item.value.data() || item.key.empty()) {
        FailAt(Quoted(item.whole), item.whole, " is not Key=number");
      }
      const auto known = FindKey(keys, item.key);
      if (known == keys.end()) {
        const auto names = NamesOf(keys, [](const auto& key) { return key.first; });
        FailAt("unknown key " + Quoted(item.key), item.key, Suggestion(item.key, names));
      }
      if (!IsNumber(item.value, known->second)) {
        FailAt(Quoted(item.whole), item.whole, std::string(" is not Key=") + NameOf(known->second));
      }
    }
  }

  // The items without the white space between them. Markers that contain each other, or white space
  // that the library would take into a name, can make it see other items than these.
  std::string Joined() const {
    std::string joined;
    for (const Item& item : items) joined += item.whole;
    const auto seen = SplitChainText(joined.c_str(), chain.open.c_str(), chain.close.c_str());
    const bool same = std::equal(seen.begin(), seen.end(), items.begin(), items.end(),
                                 [](const ChainTextItem& a, const Item& b) {
                                   return a.name == b.name && a.parameters == b.parameters;
                                 });
    if (!same) throw ChainError("the markers of the chain text do not tell its items apart");
    return joined;
  }

  // Of a part of the text.
  ChainPlace PlaceOf(std::string_view part) const {
    const auto offset = static_cast<std::size_t>(part.data() - text.data());
    const std::string_view before = text.substr(0, offset);
    const std::size_t lineStart = before.rfind('\n') + 1;  // 0 when there is none
    const auto breaks = std::count(before.begin(), before.end(), '\n');
    ChainPlace place = ItemPlace();
    place.line = static_cast<int>(breaks) + 1;
    place.character = static_cast<int>(offset - lineStart) + 1;
    return place;
  }

  ChainPlace ItemPlace() const { return {std::max(number, 1), 0, 0, current}; }

  // " at character 31", in a text of several lines " at line 2, character 5".
  std::string WordsFor(const ChainPlace& place) const {
    const std::string character = "character " + std::to_string(place.character);
    if (text.find('\n') == kNone) return " at " + character;
    return " at line " + std::to_string(place.line) + ", " + character;
  }

  [[noreturn]] void FailMissing(std::string_view marker, const char* where) const {
    const std::string_view rest = text.substr(at);
    const std::size_t end = std::min(rest.find_first_of("\r\n"), rest.size());
    const std::string_view line = rest.substr(0, end);
    FailAt(Quoted(marker) + " is missing " + where + " " + Quoted(line), rest);
  }

  // Tells the place between the words in front and those behind.
  [[noreturn]] void FailAt(const std::string& front, std::string_view part,
                           const std::string& back = {}) const {
    const ChainPlace place = PlaceOf(part);
    Fail(front + WordsFor(place) + back, place);
  }

  [[noreturn]] void Fail(const std::string& what) const { Fail(what, ItemPlace()); }

  [[noreturn]] static void Fail(const std::string& what, const ChainPlace& place) {
    const std::string item = "chain item " + std::to_string(place.item);
    const std::string filter = place.filter.empty() ? "" : " (" + place.filter + ")";
    throw ChainError(item + filter + ": " + what, place);
  }

  const ChainText& chain;
  const std::string_view text;
  const std::vector<FilterEntry>& filters;
  IAnimFilterCreator& creator;
  bool nameIsOpened = false;
  std::size_t at = 0;
  std::vector<Item> items;
  int number = 0;       // of the item at hand, from 1
  std::string current;  // its filter, once that is known
};

}  // namespace

std::string WithoutRemarks(const std::string& text) {
  std::string left;
  std::size_t at = 0;
  while (at < text.size()) {
    const std::size_t end = std::min(text.find('\n', at), text.size() - 1) + 1;
    const bool isRemark = text.compare(at, 2, "//") == 0;
    left += isRemark ? "\n" : text.substr(at, end - at);
    at = end;
  }
  return left;
}

std::string CheckChainText(const ChainText& chain, const std::vector<FilterEntry>& filters,
                           IAnimFilterCreator& creator) {
  return Checker(chain, filters, creator).Run();
}

}  // namespace host
