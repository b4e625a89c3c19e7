// The fonts of the system, as fontconfig knows them.
#include <fontconfig/fontconfig.h>

#include <memory>

#include "platform/FontFaces.h"
#include "platform/SystemServices.h"

namespace platform {
namespace {

template <class Object, void (*destroy)(Object*)>
struct Destroyer {
  void operator()(Object* object) const { destroy(object); }
};
using Config = std::unique_ptr<FcConfig, Destroyer<FcConfig, FcConfigDestroy>>;
using Pattern = std::unique_ptr<FcPattern, Destroyer<FcPattern, FcPatternDestroy>>;
using ObjectSet = std::unique_ptr<FcObjectSet, Destroyer<FcObjectSet, FcObjectSetDestroy>>;
using FontSet = std::unique_ptr<FcFontSet, Destroyer<FcFontSet, FcFontSetDestroy>>;

std::string TextOf(FcPattern* pattern, const char* object, int number = 0) {
  FcChar8* text = nullptr;
  const bool found = FcPatternGetString(pattern, object, number, &text) == FcResultMatch;
  return found ? reinterpret_cast<const char*>(text) : std::string();
}

int NumberOf(FcPattern* pattern, const char* object, int otherwise) {
  int number = 0;
  return FcPatternGetInteger(pattern, object, 0, &number) == FcResultMatch ? number : otherwise;
}

// From percent of the normal width to the nine classes of font files.
int WidthClass(int percent) {
  constexpr int kLeastPercent[] = {0, 57, 69, 82, 94, 107, 119, 138, 175};
  int width = 0;
  for (const int least : kLeastPercent) width += percent >= least ? 1 : 0;
  return width;
}

// The faces of a pattern differ in the family's name alone.
void AddFaces(FcPattern* pattern, std::vector<FontFace>& faces) {
  FontFace face;
  face.style = TextOf(pattern, FC_STYLE);
  face.weight = FcWeightToOpenType(NumberOf(pattern, FC_WEIGHT, FC_WEIGHT_REGULAR));
  face.width = WidthClass(NumberOf(pattern, FC_WIDTH, FC_WIDTH_NORMAL));
  face.slanted = NumberOf(pattern, FC_SLANT, FC_SLANT_ROMAN) != FC_SLANT_ROMAN;
  face.file = TextOf(pattern, FC_FILE);
  face.index = NumberOf(pattern, FC_INDEX, 0);
  for (int i = 0;; ++i) {
    face.family = TextOf(pattern, FC_FAMILY, i);
    if (face.family.empty()) return;
    faces.push_back(face);
  }
}

std::vector<FontFace> ReadFaces(FcConfig* config) {
  const Pattern any(FcPatternCreate());
  FcPatternAddBool(any.get(), FC_OUTLINE, FcTrue);
  FcPatternAddBool(any.get(), FC_SCALABLE, FcTrue);
  // A variable font counts by its named instances.
  FcPatternAddBool(any.get(), FC_VARIABLE, FcFalse);
  const ObjectSet wanted(FcObjectSetBuild(FC_FAMILY, FC_STYLE, FC_WEIGHT, FC_WIDTH, FC_SLANT,
                                          FC_FILE, FC_INDEX, nullptr));
  const FontSet found(FcFontList(config, any.get(), wanted.get()));
  std::vector<FontFace> faces;
  for (int i = 0; found && i < found->nfont; ++i) AddFaces(found->fonts[i], faces);
  SortFaces(faces);
  return faces;
}

std::string ReadDefaultFamily(FcConfig* config) {
  const Pattern sought(FcPatternCreate());
  FcPatternAddString(sought.get(), FC_FAMILY, reinterpret_cast<const FcChar8*>("sans-serif"));
  FcPatternAddBool(sought.get(), FC_OUTLINE, FcTrue);
  FcConfigSubstitute(config, sought.get(), FcMatchPattern);
  FcDefaultSubstitute(sought.get());
  FcResult result = FcResultNoMatch;
  const Pattern match(FcFontMatch(config, sought.get(), &result));
  return match ? TextOf(match.get(), FC_FAMILY) : std::string();
}

class FontconfigFonts final : public Fonts {
 public:
  FontconfigFonts() {
    const Config config(FcInitLoadConfigAndFonts());
    if (!config) return;
    faces = ReadFaces(config.get());
    defaultFamily = ReadDefaultFamily(config.get());
  }
  const std::vector<FontFace>& Faces() override { return faces; }
  const std::string& DefaultFamily() override { return defaultFamily; }

 private:
  std::vector<FontFace> faces;
  std::string defaultFamily;
};

}  // namespace

Fonts& SystemFonts() {
  static FontsWhenAsked<FontconfigFonts> fonts;
  return fonts;
}

}  // namespace platform
