// The text of a settings file: reading and changing single lines of it.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace platform {

// See Profiles in platform/Services.h for the form of the text. The first section of a name and the
// first key in it count. Any bytes are taken; what has no such form is passed over and kept. Texts
// go in and out in the code page; a file that begins with the byte order mark of UTF-8 holds them
// in UTF-8.
class ProfileText {
 public:
  explicit ProfileText(std::string bytes);

  // False for a text in UTF-16, which is neither read nor changed.
  bool IsNarrow() const;
  std::string Read(std::string_view section, std::string_view key) const;
  // Nothing deletes the key. Lines that are new end as the file's first line does.
  void Write(std::string_view section, std::string_view key, std::optional<std::string_view> value);
  std::vector<std::string> Sections() const;
  std::vector<std::string> Keys(std::string_view section) const;
  const std::string& Bytes() const { return text; }

 private:
  // Part of the text, without the line's end.
  struct Line {
    std::size_t begin;
    std::size_t end;
    std::size_t next;
  };

  Line LineAt(std::size_t begin) const;
  std::string_view Content(const Line& line) const;
  // Calls `visit` for every line from `begin` on until it says false.
  template <class Visit>
  void VisitLines(std::size_t begin, Visit visit) const;
  std::string Decoded(std::string_view part) const;
  std::string Encoded(std::string_view part) const;
  // Where the lines of the section begin.
  std::optional<std::size_t> FindSection(std::string_view name) const;
  template <class Visit>
  void VisitKeys(std::size_t sectionBegin, Visit visit) const;
  void InsertLine(std::size_t at, const std::string& line);

  std::string text;
  std::size_t start;  // behind the byte order mark
};

}  // namespace platform
