#include "platform/linux/ProfileText.h"

#include <algorithm>

#include "base/CodePage.h"

namespace platform {
namespace {

constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";

bool SameText(std::string_view a, std::string_view b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                    [](char x, char y) { return base::ToLower(x) == base::ToLower(y); });
}

// Control characters count as blanks, among them the end mark that old editors wrote.
std::string_view Trimmed(std::string_view text) {
  const auto isBlank = [](char c) { return static_cast<unsigned char>(c) <= ' '; };
  while (!text.empty() && isBlank(text.front())) text.remove_prefix(1);
  while (!text.empty() && isBlank(text.back())) text.remove_suffix(1);
  return text;
}

std::string_view WithoutQuotes(std::string_view value) {
  const bool quoted = value.size() > 1 && value.front() == value.back() &&
                      (value.front() == '"' || value.front() == '\'');
  return quoted ? value.substr(1, value.size() - 2) : value;
}

std::optional<std::string_view> SectionName(std::string_view line) {
  if (!line.starts_with('[')) return std::nullopt;
  const std::size_t close = line.rfind(']');
  if (close == std::string_view::npos) return std::nullopt;
  return Trimmed(line.substr(1, close - 1));
}

// The name in front of the equals sign; nothing for comments and for lines without a sign.
std::optional<std::string_view> KeyName(std::string_view line) {
  const std::size_t equals = line.find('=');
  if (line.starts_with(';') || equals == std::string_view::npos) return std::nullopt;
  return Trimmed(line.substr(0, equals));
}

}  // namespace

ProfileText::ProfileText(std::string bytes)
    : text(std::move(bytes)), start(text.starts_with(kUtf8Mark) ? kUtf8Mark.size() : 0) {}

bool ProfileText::IsNarrow() const {
  return !text.starts_with("\xFF\xFE") && !text.starts_with("\xFE\xFF");
}

ProfileText::Line ProfileText::LineAt(std::size_t begin) const {
  const std::size_t feed = std::min(text.find('\n', begin), text.size());
  const std::size_t end = feed > begin && text[feed - 1] == '\r' ? feed - 1 : feed;
  return {begin, end, std::min(feed + 1, text.size())};
}

std::string_view ProfileText::Content(const Line& line) const {
  return Trimmed(std::string_view(text).substr(line.begin, line.end - line.begin));
}

template <class Visit>
void ProfileText::VisitLines(std::size_t begin, Visit visit) const {
  while (begin < text.size()) {
    const Line line = LineAt(begin);
    if (!visit(line)) return;
    begin = line.next;
  }
}

std::string ProfileText::Decoded(std::string_view part) const {
  return start > 0 ? base::FromUtf8(part) : std::string(part);
}

std::string ProfileText::Encoded(std::string_view part) const {
  return start > 0 ? base::ToUtf8(part) : std::string(part);
}

std::optional<std::size_t> ProfileText::FindSection(std::string_view name) const {
  std::optional<std::size_t> found;
  if (!IsNarrow()) return found;
  VisitLines(start, [&](const Line& line) {
    const auto section = SectionName(Content(line));
    if (section && SameText(Decoded(*section), Trimmed(name))) found = line.next;
    return !found;
  });
  return found;
}

// Calls `visit(line, name)` for the keys of the section that begins here until it says false.
template <class Visit>
void ProfileText::VisitKeys(std::size_t sectionBegin, Visit visit) const {
  VisitLines(sectionBegin, [&](const Line& line) {
    const std::string_view content = Content(line);
    if (SectionName(content)) return false;
    const auto name = KeyName(content);
    return !name || visit(line, Decoded(*name));
  });
}

std::string ProfileText::Read(std::string_view section, std::string_view key) const {
  std::string value;
  const auto begin = FindSection(section);
  if (!begin) return value;
  VisitKeys(*begin, [&](const Line& line, const std::string& name) {
    if (!SameText(name, Trimmed(key))) return true;
    const std::string_view content = Content(line);
    value = Decoded(WithoutQuotes(Trimmed(content.substr(content.find('=') + 1))));
    return false;
  });
  return value;
}

// A line of its own, even where the line before it has no end.
void ProfileText::InsertLine(std::size_t at, const std::string& line) {
  const std::size_t firstFeed = text.find('\n');
  const bool feedOnly =
      firstFeed != std::string::npos && (firstFeed == 0 || text[firstFeed - 1] != '\r');
  const char* const end = feedOnly ? "\n" : "\r\n";
  const bool behindOpenLine = at > start && text[at - 1] != '\n';
  text.insert(at, std::string(behindOpenLine ? end : "").append(line).append(end));
}

void ProfileText::Write(std::string_view section, std::string_view key,
                        std::optional<std::string_view> value) {
  auto begin = FindSection(section);
  std::optional<Line> found;
  if (begin) {
    VisitKeys(*begin, [&](const Line& line, const std::string& name) {
      if (SameText(name, Trimmed(key))) found = line;
      return !found;
    });
  }
  if (found && value) {
    const std::size_t from = text.find('=', found->begin) + 1;
    text.replace(from, found->end - from, Encoded(*value));
  } else if (found) {
    text.erase(found->begin, found->next - found->begin);
  } else if (value) {
    if (!begin) {
      InsertLine(text.size(), std::string("[").append(Encoded(section)).append("]"));
      begin = text.size();
    }
    // Behind the last line of the section that holds something, ahead of blank ones.
    std::size_t at = *begin;
    VisitLines(*begin, [&](const Line& line) {
      if (SectionName(Content(line))) return false;
      if (!Content(line).empty()) at = line.next;
      return true;
    });
    InsertLine(at, Encoded(key) + "=" + Encoded(*value));
  }
}

std::vector<std::string> ProfileText::Sections() const {
  std::vector<std::string> names;
  if (!IsNarrow()) return names;
  VisitLines(start, [&](const Line& line) {
    if (const auto name = SectionName(Content(line))) names.push_back(Decoded(*name));
    return true;
  });
  return names;
}

std::vector<std::string> ProfileText::Keys(std::string_view section) const {
  std::vector<std::string> names;
  if (const auto begin = FindSection(section)) {
    VisitKeys(*begin, [&](const Line&, const std::string& name) {
      names.push_back(name);
      return true;
    });
  }
  return names;
}

}  // namespace platform
