// The fonts of a Debian package, and no others, on every system.
#pragma once

#include <filesystem>

#include "platform/fake/FakeServices.h"

namespace testing_support {

class TestFonts {
 public:
  TestFonts() {
    Add("DejaVu Sans", "Book", 400, "DejaVuSans.ttf");
    Add("DejaVu Sans", "Bold", 700, "DejaVuSans-Bold.ttf");
    Add("DejaVu Serif", "Book", 400, "DejaVuSerif.ttf");
    fakes.fonts.defaultFamily = "DejaVu Sans";
  }

  void Add(const char* family, const char* style, int weight, const char* file) {
    AddFile(family, style, weight, std::filesystem::path(FXBOX_TEST_FONTS) / file);
  }
  void AddFile(const char* family, const char* style, int weight,
               const std::filesystem::path& file) {
    platform::FontFace face;
    face.family = family;
    face.style = style;
    face.weight = weight;
    face.file = file;
    fakes.fonts.faces.push_back(face);
  }

  platform::FakeServices fakes;

 private:
  platform::ScopedServices scope{fakes.services};
};

}  // namespace testing_support
