// The words that stand in the sources of a folder, for tests that hold them against tables.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <fstream>
#include <initializer_list>
#include <iterator>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace testing_support {

// Every word of letters, digits and "_" in quotation marks, of the files .cpp in the folder and
// those below, that has `front` directly ahead of it. (The library's regular expressions would do
// it in a line, and take longer to compile than the rest of a test.)
inline std::vector<std::string> QuotedWords(const std::filesystem::path& folder,
                                            std::string_view front = "") {
  const auto isInWord = [](unsigned char c) { return std::isalnum(c) != 0 || c == '_'; };
  const std::string mark = std::string(front) + '"';
  std::vector<std::string> words;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
    if (entry.path().extension() != ".cpp") continue;
    std::ifstream file(entry.path());
    const std::string text(std::istreambuf_iterator<char>(file), {});
    for (std::size_t at = text.find(mark); at != text.npos; at = text.find(mark, at + 1)) {
      const auto begin = text.begin() + static_cast<std::ptrdiff_t>(at + mark.size());
      const auto end = std::find_if_not(begin, text.end(), isInWord);
      if (end != begin && end != text.end() && *end == '"') words.emplace_back(begin, end);
    }
  }
  return words;
}

inline bool StartsWithAny(std::string_view word, std::initializer_list<std::string_view> fronts) {
  return std::any_of(fronts.begin(), fronts.end(),
                     [&](std::string_view front) { return word.starts_with(front); });
}

// The keys of a file of words. Each stands there once, with words.
inline std::set<std::string> KeysOfWords(const std::string& name) {
  std::set<std::string> keys;
  std::ifstream file(name);
  for (std::string line; std::getline(file, line);) {
    if (line.empty() || line[0] == '#') continue;
    EXPECT_TRUE(keys.insert(line.substr(0, line.find('='))).second) << line;
    EXPECT_LT(line.find('=') + 1, line.size()) << line;
  }
  return keys;
}

}  // namespace testing_support
