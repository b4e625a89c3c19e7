// Windows in memory as lines of a sheet: what is in them, where it lies, what is drawn. What stands
// there already is told by a mark: `"` for each word that a call begins with like the last one of
// its name, for all that it ends with like that, and for the name of the control before; "..5" for
// five calls as in the last look.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "toolkit/fake/FakeBackend.h"

namespace testing_support {

// What was told of each control: its line, its rows, its calls; and how often it was to be redrawn.
struct ToldControl {
  std::vector<std::string> look;
  int redraws = -1;
};
using ToldControls = std::map<toolkit::ControlId, ToldControl>;

inline std::string Joined(const std::vector<std::string>& words, const char* between = " ") {
  std::string text;
  for (const std::string& word : words) text += (&word == &words[0] ? "" : between) + word;
  return text;
}

// A call without the words that the last one of its name has as well.
inline std::string Shortened(const std::string& call,
                             std::map<std::string, std::vector<std::string>>& calls) {
  std::istringstream stream(call);
  std::vector<std::string> words;
  for (std::string word; std::getline(stream, word, ' ');) words.push_back(word);
  std::vector<std::string> last = std::exchange(calls[words[0]], words);
  const auto back = std::mismatch(words.rbegin(), words.rend(), last.rbegin(), last.rend());
  words.erase(std::max(back.first.base(), words.begin() + 1), words.end());
  const bool hasSame = words.size() < calls[words[0]].size();
  for (std::size_t i = 1; i < std::min(words.size(), last.size()) && words[i] == last[i]; ++i) {
    words[i] = "\"";
  }
  return Joined(words) + (hasSame ? " \"" : "");
}

// The calls of a canvas, behind `told`, those of the last look.
inline std::string CallsText(const std::vector<std::string>& calls,
                             const std::vector<std::string>& told) {
  std::string text;
  std::map<std::string, std::vector<std::string>> last;
  for (std::size_t i = 0, same = 0; i <= calls.size(); ++i) {
    const bool isSame = i < calls.size() && i < told.size() && calls[i] == told[i];
    if (!isSame && same) text += " | .." + std::to_string(std::exchange(same, 0));
    same += isSame;
    if (i < calls.size() && !isSame) text += " | " + Shortened(calls[i], last);
  }
  return text;
}

// A control with its place, its kind and what it says, its rows, and, of a canvas, what it draws.
inline std::vector<std::string> Look(toolkit::FakeWindow& window, toolkit::ControlId id) {
  const toolkit::FakeControl& control = window.At(id);
  const auto [x, y, width, height] = control.place;
  std::ostringstream words;
  words << x << "," << y << " " << width << "x" << height << " "
        << static_cast<int>(control.spec.kind) << " " << control.spec.name << control.text
        << (control.valueText.empty() ? "" : "=") << control.valueText
        << (control.isEnabled ? "" : " off");
  std::vector<std::string> rows;
  if (control.spec.kind == toolkit::ControlKind::List) {
    for (const std::string& item : control.items) rows.push_back(" " + item);
  }
  for (const auto& row : control.rows) {
    const char* const check = !row.isChecked ? "" : *row.isChecked ? " on" : " off";
    rows.push_back(" " + row.name + check + (row.isSelected ? "*" : ""));
  }
  std::vector<std::string> look = {words.str(), Joined(rows, ",")};
  if (control.spec.kind != toolkit::ControlKind::Canvas) return look;
  const auto painter = window.Paint(id);
  look.insert(look.end(), painter.calls.begin(), painter.calls.end());
  return look;
}

// Its look as words; nothing where it was told.
inline std::string LookText(const std::vector<std::string>& look,
                            const std::vector<std::string>& told) {
  if (look == told) return "";
  const auto callsOf = [](const std::vector<std::string>& of) {
    return std::vector<std::string>(of.begin() + std::min<std::ptrdiff_t>(2, std::ssize(of)),
                                    of.end());
  };
  const bool sameRows = !told.empty() && !look[1].empty() && look[1] == told[1];
  return " ; " + look[0] + (sameRows ? " .." : look[1]) + CallsText(callsOf(look), callsOf(told));
}

// Whether a canvas that draws something else in the same place was told to. The system itself has
// all drawn anew where places or colours change.
inline bool IsRedrawn(const ToldControl& now, const ToldControl& before) {
  const auto front = [](const ToldControl& of) {
    return of.look[0].substr(0, of.look[0].find(' ', of.look[0].find(' ') + 1)) + of.look[2];
  };
  const bool isCanvas = now.look.size() > 2 && before.look.size() > 2;
  if (!isCanvas || front(now) != front(before) || now.redraws > before.redraws) return true;
  return std::equal(now.look.begin() + 2, now.look.end(), before.look.begin() + 2,
                    before.look.end());
}

// All controls that are visible. With `told` those alone that are not as they were there, where
// they are noted then.
inline std::string Controls(toolkit::FakeWindow& window, ToldControls& told) {
  std::string text, name;
  for (toolkit::ControlId id = 1; id <= window.ControlCount(); ++id) {
    const toolkit::FakeControl& control = window.At(id);
    if (!control.isVisible) {
      if (told.erase(id)) text += " ; no " + control.spec.name + control.text;
      continue;
    }
    const ToldControl now = {Look(window, id), control.redraws};
    const ToldControl before = std::exchange(told[id], now);
    std::string words = LookText(now.look, before.look);
    EXPECT_TRUE(IsRedrawn(now, before)) << control.spec.name << " draws something else, unasked";
    const std::string same = " " + std::exchange(name, control.spec.name);
    const std::size_t at = words.find(same + control.text);
    if (!name.empty() && same == " " + name && at != words.npos)
      words.replace(at, same.size(), " \"");
    text += words;
  }
  return text;
}

// As lines of up to a hundred letters, where there are blanks.
inline std::string Wrapped(const std::string& text) {
  std::string lines;
  for (std::size_t from = 0, lineStart = 0; from < text.size();) {
    const std::size_t end = std::min(text.find(' ', from + 1), text.size());
    if (end - lineStart > 99) lines += "\n ", lineStart = from;
    lines += text.substr(from, end - from);
    from = end;
  }
  return lines + "\n";
}

inline std::string TitleAndSize(const toolkit::FakeWindow& window) {
  return window.title + " " + std::to_string(window.client.width) + "x" +
         std::to_string(window.client.height) + (window.spec.isTool ? "" : " main") + "\n";
}

// With "FOLDER" for a folder that has another name in each run.
inline std::string Nameless(std::string text, const std::string& folder) {
  for (std::size_t at; !folder.empty() && (at = text.find(folder)) != text.npos;) {
    text.replace(at, folder.size(), "FOLDER");
  }
  return text;
}

// All of a window.
inline std::string Drawn(toolkit::FakeWindow& window, ToldControls& told,
                         const std::string& folder = "") {
  return Nameless(TitleAndSize(window), folder) + Wrapped(Nameless(Controls(window, told), folder));
}
inline std::string Drawn(toolkit::FakeWindow& window, const std::string& folder = "") {
  ToldControls nothing;
  return Drawn(window, nothing, folder);
}

// Compares with a sheet that was read through. Where it differs, the new one is written to the
// working folder: read what has changed, then copy it.
inline void ExpectSheet(const std::string& lines, const std::filesystem::path& sheet) {
  std::stringstream wanted;
  wanted << std::ifstream(sheet, std::ios::binary).rdbuf();
  if (lines == wanted.str()) return;
  std::ofstream(sheet.filename(), std::ios::binary) << lines;
  ADD_FAILURE() << "compare " << std::filesystem::current_path() / sheet.filename();
}

}  // namespace testing_support
