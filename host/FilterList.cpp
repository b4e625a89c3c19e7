#include "host/FilterList.h"

#include <algorithm>
#include <numeric>
#include <span>

#include "base/CodePage.h"
#include "component/Fxbox4.h"
#include "core/AnimInterfaces.h"
#include "platform/component/ComPtr.h"

namespace host {
namespace {

const FilterClass* RowOf(const std::string& progId) {
  int count = 0;
  const FilterClass* const first = FxboxFilterClasses(&count);
  for (const FilterClass& row : std::span(first, static_cast<std::size_t>(count))) {
    if (row.progId == progId) return &row;
  }
  return nullptr;
}

std::string_view Trimmed(std::string_view text) {
  constexpr char kWhite[] = " \t\r\n\v\f";
  const std::size_t first = text.find_first_not_of(kWhite);
  if (first == std::string_view::npos) return text.substr(text.size());
  return text.substr(first, text.find_last_not_of(kWhite) - first + 1);
}

ParameterItem ItemOf(std::string_view piece) {
  const std::string_view whole = Trimmed(piece);
  const std::size_t equals = whole.find('=');
  if (equals == std::string_view::npos) return {whole, whole, {}};
  return {whole, whole.substr(0, equals), whole.substr(equals + 1)};
}

bool SameLetter(char a, char b) {
  return base::ToLower(a) == base::ToLower(b);
}

// How many letters have to be put in, left out or exchanged.
std::size_t Distance(std::string_view a, std::string_view b) {
  std::vector<std::size_t> row(b.size() + 1);
  std::iota(row.begin(), row.end(), std::size_t{0});
  for (std::size_t i = 0; i < a.size(); ++i) {
    std::size_t corner = row[0];
    row[0] = i + 1;
    for (std::size_t j = 0; j < b.size(); ++j) {
      const std::size_t exchanged = corner + (SameLetter(a[i], b[j]) ? 0 : 1);
      corner = row[j + 1];
      row[j + 1] = std::min({exchanged, row[j] + 1, row[j + 1] + 1});
    }
  }
  return row[b.size()];
}

bool Contains(std::string_view whole, std::string_view part) {
  return std::search(whole.begin(), whole.end(), part.begin(), part.end(), SameLetter) !=
         whole.end();
}

platform::ComPtr<IAnimFilterParameter> MakeFilter(IAnimFilterCreator& creator,
                                                  const std::string& progId) {
  platform::ComPtr<IAnimFilterParameter> filter;
  creator.CreateFilter(progId.c_str(), IAnimFilterParameter::kIid, filter.PutVoid());
  return filter;
}

// A buffer that is too small stays as it is.
std::string TextOf(IAnimFilterParameter& filter) {
  constexpr std::size_t kLargest = std::size_t{1} << 24;
  for (std::size_t size = 4096; size <= kLargest; size *= 2) {
    std::vector<char> text(size, 0);
    filter.GetParameter(text.data(), static_cast<int>(size));
    if (text[0]) return text.data();
  }
  return {};
}

}  // namespace

std::vector<FilterEntry> ListFilters(IAnimFilterCreator& creator) {
  std::vector<FilterEntry> filters;
  int count = 0;
  creator.GetFilterCount(&count);
  for (int i = 0; i < count; ++i) {
    char name[256] = "";
    FilterEntry entry;
    if (FAILED(creator.GetFilterInfo(i, name, sizeof name, &entry.order))) continue;
    entry.progId = name;
    entry.row = RowOf(entry.progId);
    if (!entry.progId.empty()) filters.push_back(std::move(entry));
  }
  return filters;
}

const FilterEntry* FindFilter(const std::vector<FilterEntry>& filters, const std::string& progId) {
  const auto found = std::find_if(filters.begin(), filters.end(),
                                  [&](const FilterEntry& entry) { return entry.progId == progId; });
  return found == filters.end() ? nullptr : &*found;
}

std::string NewFilterText(IAnimFilterCreator& creator, const std::string& progId) {
  const auto filter = MakeFilter(creator, progId);
  return filter ? TextOf(*filter.Get()) : "";
}

std::string FilterTextBehind(IAnimFilterCreator& creator, const std::string& progId,
                             const std::string& parameters) {
  const auto filter = MakeFilter(creator, progId);
  if (!filter) return {};
  filter->SetParameter(parameters.c_str(), 1);
  return TextOf(*filter.Get());
}

std::vector<ParameterItem> SplitParameters(std::string_view text) {
  std::vector<ParameterItem> items;
  if (Trimmed(text).empty()) return items;
  for (;;) {
    const std::size_t comma = text.find(',');
    items.push_back(ItemOf(text.substr(0, comma)));
    if (comma == std::string_view::npos) return items;
    text.remove_prefix(comma + 1);
  }
}

std::string Suggestion(std::string_view misspelt, const std::vector<std::string>& words) {
  constexpr std::size_t kShortest = 3;
  constexpr std::size_t kFurthest = 2;
  if (misspelt.size() < kShortest) return {};
  const std::string* best = nullptr;
  std::size_t least = kFurthest + 1;
  for (const std::string& word : words) {
    const std::size_t distance = Contains(word, misspelt) ? 0 : Distance(misspelt, word);
    if (distance < least) {
      best = &word;
      least = distance;
    }
  }
  return best ? ", did you mean \"" + base::ToUtf8(*best) + "\"?" : "";
}

}  // namespace host
