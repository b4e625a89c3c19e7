// Which fonts a text is written in: the family that was asked for, and others for letters that it
// lacks.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "base/Export.h"
#include "filters/text/Font.h"

namespace text {

struct ChosenFont {
  std::shared_ptr<Font> font;
  // The family lacks the style; the letters get it otherwise.
  bool makeBold = false, makeSlanted = false;
};

// The family that stands for a name, which is compared without the case of ASCII letters: its own
// spelling, or the system's default where there is no such family. An empty name is the default.
struct FamilyChoice {
  std::string family;  // empty when the system has no fonts at all
  bool isSubstitute = false;
};
FXBOX_API FamilyChoice ChooseFamily(std::string_view name);

// The fonts of one text. Opens them as they are needed; what was opened is kept for the process, a
// few files. A file that is broken counts as missing. One thread at a time.
class FontChoice {
 public:
  FontChoice(std::string_view family, bool bold, bool italic);

  // Without any font there are no letters.
  bool IsEmpty() const { return fonts.empty(); }
  const ChosenFont& First() const { return fonts.front(); }
  const ChosenFont& At(std::size_t number) const { return fonts[number]; }
  // The first of the fonts that has the letter; 0 where none has.
  std::size_t NumberFor(char32_t letter);

 private:
  bool Add(const std::string& family);
  bool AddNextFallback();

  bool isBold, isItalic;
  std::vector<ChosenFont> fonts;
  std::size_t nextFallback = 0;
};

}  // namespace text
