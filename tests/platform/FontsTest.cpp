#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <set>
#include <string>

#include "platform/FontFaces.h"
#include "platform/SystemServices.h"

namespace platform {
namespace {

// The tests' packages install it; Wine hands out the fonts of the system below it.
std::vector<FontFace> FacesOf(const std::string& family) {
  std::vector<FontFace> faces;
  for (const FontFace& face : SystemFonts().Faces()) {
    if (face.family == family) faces.push_back(face);
  }
  return faces;
}

TEST(Fonts, TellsFamiliesWithTheirStylesAndFiles) {
  const std::vector<FontFace> faces = FacesOf("DejaVu Sans");
  const auto upright = [&faces](int weight) {
    return std::find_if(faces.begin(), faces.end(), [weight](const FontFace& face) {
      return face.weight == weight && face.width == 5 && !face.slanted;
    });
  };
  const auto regular = upright(400), bold = upright(700);
  ASSERT_NE(regular, faces.end());
  ASSERT_NE(bold, faces.end());
  EXPECT_EQ(regular->file.filename(), "DejaVuSans.ttf");
  EXPECT_EQ(regular->style, "Book");
  EXPECT_EQ(bold->file.filename(), "DejaVuSans-Bold.ttf");
  EXPECT_TRUE(std::ifstream(bold->file).is_open());
}

TEST(Fonts, TheDefaultFamilyIsThere) {
  EXPECT_FALSE(FacesOf(SystemFonts().DefaultFamily()).empty());
}

TEST(Fonts, FacesAreInOrderAndStandThereOnce) {
  std::vector<FontFace> faces = SystemFonts().Faces();
  ASSERT_GT(faces.size(), 1u);
  std::vector<FontFace> sorted = faces;
  std::reverse(sorted.begin(), sorted.end());
  sorted.push_back(faces.front());
  SortFaces(sorted);
  EXPECT_EQ(sorted, faces);
}

}  // namespace
}  // namespace platform
