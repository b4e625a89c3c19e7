// fxbox fonts: the families that texts can be written in.
#include <iostream>
#include <map>
#include <memory>
#include <vector>

#include "filters/text/FontChoice.h"
#include "platform/Services.h"
#include "program/Commands.h"
#include "program/Json.h"
#include "program/Messages.h"

namespace program {
namespace {

using platform::FontFace;
using Families = std::map<std::string, std::vector<FontFace>>;

struct FontsOptions {
  bool json = false;
};

constexpr char kExamples[] = R"(Examples:
  fxbox fonts
      the default family has a star
  fxbox text-key --key Font "DejaVu Serif"
      prints Font=DejaVu%20Serif, for a chain text)";

Families ListFamilies() {
  Families families;
  for (const FontFace& face : platform::CurrentServices().fonts->Faces()) {
    families[face.family].push_back(face);
  }
  return families;
}

Json JsonOf(const std::vector<FontFace>& faces) {
  Json list = Json::array();
  for (const FontFace& face : faces) {
    list.push_back({{"style", face.style},
                    {"weight", face.weight},
                    {"slanted", face.slanted},
                    {"file", Utf8Of(face.file)},
                    {"index", face.index}});
  }
  return list;
}

void Print(const Families& families, const std::string& defaultFamily) {
  for (const auto& [family, faces] : families) {
    std::cout << (family == defaultFamily ? "* " : "  ") << family << ": ";
    const char* between = "";
    for (const FontFace& face : faces) {
      std::cout << between << face.style;
      between = ", ";
    }
    std::cout << '\n';
  }
}

void PrintAsJson(const Families& families, const std::string& defaultFamily) {
  Json json = Json::array();
  for (const auto& [family, faces] : families) {
    json.push_back(
        {{"family", family}, {"default", family == defaultFamily}, {"faces", JsonOf(faces)}});
  }
  PrintJson(json);
}

int ListFonts(const FontsOptions& options) {
  const Families families = ListFamilies();
  const std::string defaultFamily = text::ChooseFamily({}).family;
  options.json ? PrintAsJson(families, defaultFamily) : Print(families, defaultFamily);
  return kDone;
}

}  // namespace

void AddFontsCommand(const Command& program) {
  const auto options = std::make_shared<FontsOptions>();
  const Command command = program.Add("fonts", "List the fonts for texts");
  command.Flag("--json", options->json, "As JSON, with files");
  command.Footer(kExamples);
  command.Runs([options] { return ListFonts(*options); });
}

}  // namespace program
