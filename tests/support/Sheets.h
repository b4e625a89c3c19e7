// Windows in memory as lines of a sheet: what is in them, where it lies, what is drawn.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>
#include <string>
#include <utility>

#include "toolkit/fake/FakeBackend.h"

namespace testing_support {

// A visible control with its place, its kind and what it says; a canvas also with what it draws.
inline std::string Drawn(toolkit::FakeWindow& window, toolkit::ControlId id) {
  const toolkit::FakeControl& control = window.At(id);
  const auto [x, y, width, height] = control.place;
  std::ostringstream words;
  words << x << "," << y << " " << width << "x" << height << " "
        << static_cast<int>(control.spec.kind) << " " << control.spec.name << control.text
        << (control.valueText.empty() ? "" : "=") << control.valueText
        << (control.isEnabled ? "" : " off");
  for (const auto& row : control.rows)
    words << (&row == &control.rows[0] ? "" : ",") << " " << row.name;
  if (control.spec.kind != toolkit::ControlKind::Canvas) return words.str();
  for (const std::string& call : window.Paint(id).calls) words << " | " << call;
  return words.str();
}

// All of a window. With `known` those controls alone that are not as they were there, where they
// are noted then. For `folder`, which has another name in each run, stands "FOLDER".
inline std::string Drawn(toolkit::FakeWindow& window, std::set<std::string>* known = nullptr,
                         const std::string& folder = "") {
  const auto nameless = [&folder](std::string text) {
    for (std::size_t at; !folder.empty() && (at = text.find(folder)) != text.npos;) {
      text.replace(at, folder.size(), "FOLDER");
    }
    return text;
  };
  const std::string title = nameless(window.title) + " " + std::to_string(window.client.width) +
                            "x" + std::to_string(window.client.height) + "\n";
  std::string lines;
  std::set<std::string> now;
  for (toolkit::ControlId id = 1; id <= window.ControlCount(); ++id) {
    if (!window.At(id).isVisible) continue;
    const std::string words = nameless(Drawn(window, id));
    now.insert(words);
    if (!known || known->count(words) == 0) lines += " ; " + words;
  }
  if (known) *known = std::move(now);
  // No line is longer than a hundred letters, where it has a blank.
  std::string wrapped;
  for (std::size_t from = 0, lineStart = 0; from < lines.size();) {
    const std::size_t end = std::min(lines.find(' ', from + 1), lines.size());
    if (end - lineStart > 100) wrapped += "\n ", lineStart = from;
    wrapped += lines.substr(from, end - from);
    from = end;
  }
  return title + wrapped + "\n";
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
