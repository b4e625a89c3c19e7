#include "desk/DeskSettings.h"

#include <algorithm>
#include <charconv>
#include <string>

#include "desk/WorkFile.h"

namespace desk {
namespace {

constexpr int kWidest = 4000;

// The number behind "key=" at the start of a line, where it is one from 0 to `most`.
int NumberOf(const std::string& text, const std::string& key, int most, int otherwise) {
  const std::string beginning = "\n" + key + "=";
  const std::string lines = "\n" + text;
  const std::size_t at = lines.find(beginning);
  if (at == lines.npos) return otherwise;
  int number = -1;
  std::from_chars(lines.data() + at + beginning.size(), lines.data() + lines.size(), number);
  return number >= 0 && number <= most ? number : otherwise;
}

}  // namespace

DeskSettings ReadSettings(const std::filesystem::path& file) {
  const std::string text = ReadTextFile(file).value_or("");
  const DeskSettings usual;
  DeskSettings settings;
  settings.dialog =
      static_cast<DialogPlace>(NumberOf(text, "dialog", 2, static_cast<int>(usual.dialog)));
  settings.theme =
      static_cast<toolkit::ThemeChoice>(NumberOf(text, "theme", 2, static_cast<int>(usual.theme)));
  settings.left = NumberOf(text, "left", kWidest, usual.left);
  settings.right = NumberOf(text, "right", kWidest, usual.right);
  return settings;
}

void WriteSettings(const std::filesystem::path& file, const DeskSettings& settings) {
  WriteTextFile(file, "dialog=" + std::to_string(static_cast<int>(settings.dialog)) +
                          "\ntheme=" + std::to_string(static_cast<int>(settings.theme)) +
                          "\nleft=" + std::to_string(settings.left) +
                          "\nright=" + std::to_string(settings.right) + "\n");
}

}  // namespace desk
