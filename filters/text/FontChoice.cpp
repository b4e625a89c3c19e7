#include "filters/text/FontChoice.h"

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <map>
#include <mutex>
#include <optional>
#include <utility>

#include "platform/Services.h"

namespace text {
namespace {

using platform::FontFace;

constexpr int kRegular = 400;
constexpr int kBold = 700;
constexpr int kLeastBold = 600;  // what counts as bold of itself
constexpr int kNormalWidth = 5;

// Families with many letters, in the order in which they are asked: free ones first, which are the
// same on every system.
constexpr const char* kFallbacks[] = {"DejaVu Sans",
                                      "Noto Sans",
                                      "Noto Sans Arabic",
                                      "Noto Sans Hebrew",
                                      "Noto Sans Thai",
                                      "Noto Sans Devanagari",
                                      "Noto Sans CJK SC",
                                      "Noto Sans CJK JP",
                                      "Noto Sans CJK KR",
                                      "Noto Sans Symbols",
                                      "Noto Sans Symbols2",
                                      "Liberation Sans",
                                      "FreeSans",
                                      "Segoe UI",
                                      "Arial",
                                      "Tahoma",
                                      "Microsoft YaHei",
                                      "Yu Gothic",
                                      "Malgun Gothic",
                                      "Nirmala UI",
                                      "Leelawadee UI",
                                      "Segoe UI Symbol",
                                      "Segoe UI Historic"};

char Lower(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

bool SameName(std::string_view a, std::string_view b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                    [](char x, char y) { return Lower(x) == Lower(y); });
}

// How far a face is from what is wanted: width counts most, then slant, then weight.
int Distance(const FontFace& face, bool bold, bool italic) {
  return std::abs(face.width - kNormalWidth) * 10000 + (face.slanted != italic ? 5000 : 0) +
         std::abs(face.weight - (bold ? kBold : kRegular));
}

std::vector<const FontFace*> FacesOf(std::string_view family, bool bold, bool italic) {
  std::vector<const FontFace*> faces;
  for (const FontFace& face : platform::CurrentServices().fonts->Faces()) {
    if (SameName(face.family, family)) faces.push_back(&face);
  }
  std::stable_sort(faces.begin(), faces.end(), [&](const FontFace* a, const FontFace* b) {
    return Distance(*a, bold, italic) < Distance(*b, bold, italic);
  });
  return faces;
}

std::vector<std::uint8_t> ReadFile(const std::filesystem::path& file) {
  std::ifstream stream(file, std::ios::binary | std::ios::ate);
  const std::streamoff size = stream ? static_cast<std::streamoff>(stream.tellg()) : 0;
  constexpr std::streamoff kMost = std::streamoff{1} << 28;
  if (size <= 0 || size > kMost) return {};
  std::vector<std::uint8_t> bytes(static_cast<std::size_t>(size));
  stream.seekg(0);
  stream.read(reinterpret_cast<char*>(bytes.data()), size);
  bytes.resize(static_cast<std::size_t>(stream.gcount()));
  return bytes;
}

// The fonts that were opened last, for all filters.
class OpenFonts {
 public:
  std::shared_ptr<Font> Get(const FontFace& face) {
    const std::pair key(face.file, face.index);
    {
      const std::lock_guard guard(lock_);
      const auto found = fonts_.find(key);
      if (found != fonts_.end()) return found->second;
    }
    std::shared_ptr<Font> font = Font::Open(ReadFile(face.file), face.index);
    const std::lock_guard guard(lock_);
    if (fonts_.size() >= kMost) fonts_.clear();
    if (font) fonts_.emplace(key, font);
    return font;
  }

 private:
  static constexpr std::size_t kMost = 24;
  std::mutex lock_;
  std::map<std::pair<std::filesystem::path, int>, std::shared_ptr<Font>> fonts_;
};

OpenFonts& AllOpenFonts() {
  static OpenFonts fonts;
  return fonts;
}

std::optional<ChosenFont> OpenFamily(std::string_view family, bool bold, bool italic) {
  for (const FontFace* const face : FacesOf(family, bold, italic)) {
    std::shared_ptr<Font> font = AllOpenFonts().Get(*face);
    if (!font) continue;
    return ChosenFont{std::move(font), bold && face->weight < kLeastBold, italic && !face->slanted};
  }
  return std::nullopt;
}

}  // namespace

FamilyChoice ChooseFamily(std::string_view name) {
  platform::Fonts& fonts = *platform::CurrentServices().fonts;
  if (name.empty()) return {fonts.DefaultFamily(), false};
  for (const FontFace& face : fonts.Faces()) {
    if (SameName(face.family, name)) return {face.family, false};
  }
  return {fonts.DefaultFamily(), true};
}

FontChoice::FontChoice(std::string_view family, bool bold, bool italic)
    : isBold(bold), isItalic(italic) {
  if (Add(ChooseFamily(family).family)) return;
  // The file is broken: the default family, and then whatever there is.
  if (Add(ChooseFamily({}).family)) return;
  while (fonts.empty() && AddNextFallback()) {
  }
}

bool FontChoice::Add(const std::string& family) {
  std::optional<ChosenFont> font = OpenFamily(family, isBold, isItalic);
  if (!font) return false;
  fonts.push_back(*std::move(font));
  return true;
}

bool FontChoice::AddNextFallback() {
  if (nextFallback >= std::size(kFallbacks)) return false;
  Add(kFallbacks[nextFallback++]);
  return true;
}

std::size_t FontChoice::NumberFor(char32_t letter) {
  for (std::size_t number = 0;; ++number) {
    while (number >= fonts.size()) {
      if (!AddNextFallback()) return 0;
    }
    if (fonts[number].font->HasLetter(letter)) return number;
  }
}

}  // namespace text
