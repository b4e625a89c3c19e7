#include "core/ChainText.h"

#include <string_view>

namespace {

// Counts the markers ahead of `end`.
int CountAhead(std::string_view text, std::string_view marker, std::size_t end) {
  int count = 0;
  for (std::size_t at = text.find(marker); at < end; at = text.find(marker, at + marker.size())) {
    ++count;
  }
  return count;
}

}  // namespace

std::vector<ChainTextItem> SplitChainText(const char* text, const char* open, const char* close) {
  std::vector<ChainTextItem> items;
  if (!text || !open || !close || !*text || !*open || !*close) return items;
  constexpr std::size_t kNone = std::string_view::npos;
  const std::string_view all = text;
  const std::string_view opening = open;
  const std::string_view closing = close;
  const std::size_t firstClose = all.find(closing);
  if (firstClose == kNone) return items;
  const int opens = CountAhead(all, opening, firstClose);
  if (opens == 0) return items;
  const bool nameIsOpened = opens >= 2;

  for (std::size_t at = 0;;) {
    const std::size_t end = all.find(closing, at);
    std::size_t nameAt = at;
    if (nameIsOpened) {
      nameAt = all.find(opening, at);
      if (nameAt == kNone) break;
      nameAt += opening.size();
    }
    const std::size_t nameEnd = all.find(opening, nameAt);
    if (end == kNone || nameEnd == kNone || nameEnd > end) break;
    const std::size_t parametersAt = nameEnd + opening.size();
    if (parametersAt > end) break;
    items.push_back({std::string(all.substr(nameAt, nameEnd - nameAt)),
                     std::string(all.substr(parametersAt, end - parametersAt))});
    at = end + closing.size();
  }
  return items;
}
