#include <gtest/gtest.h>
#include <sys/resource.h>

#include <cstring>
#include <string>
#include <vector>

#include "filters/FilterClasses.h"
#include "platform/LargeBlock.h"
#include "tests/support/TestFilters.h"

// Pages that the system has to map while rows are pulled: what it gives, it clears first, which
// takes longer than most filters do.
namespace testing_support {
namespace {

// Two planes of a little less than 4 MiB, which are mapped in small pages.
constexpr int kWidth = 1100;
constexpr int kHeight = 900;
constexpr long kPages = 4L * kWidth * kHeight / 4096;
// Tables and rows to work in; a tenth of a picture.
constexpr long kFew = kPages / 10;

long PageFaults() {
  rusage usage = {};
  getrusage(RUSAGE_THREAD, &usage);
  return usage.ru_minflt;
}

// Texts with which a class keeps pictures.
std::vector<std::string> TextsOf(const FilterClass& row) {
  const std::string progId = row.progId;
  if (progId == "ZNFilter.Rotate.1") return {"Angle=90", "Angle=187.5", "MirrorOn=1"};
  if (progId == "ZNFilter.Scale100.1") {
    return {"HorizontalProz=050,VerticalProz=050", "HorizontalProz=150,VerticalProz=150"};
  }
  return {row.defaultText ? row.defaultText : ""};
}

class Faults {
 public:
  explicit Faults(const Picture& of) : picture(of) {}

  // Of two pulls of one filter, each after a change of the picture.
  struct OfPulls {
    long first = 0, second = 0;
  };
  OfPulls Count(const FilterClass& row, const std::string& text) {
    Rig rig(picture, row);
    rig.Filter().SetParameter(text.c_str(), 1);
    OfPulls faults;
    faults.first = CountPull(rig);
    ++rig.source->revision;
    faults.second = CountPull(rig);
    return faults;
  }

 private:
  long CountPull(Rig& rig) {
    rig.Prepare();
    const int width = rig.destination->width;
    const int height = rig.destination->height;
    const RowRequest whole{
        0, 0, 0, 0, std::min(width, rows.Width()), std::min(height, rows.Height())};
    const long before = PageFaults();
    EXPECT_EQ(rig.Pull(rows, whole), S_OK);
    return PageFaults() - before;
  }

  const Picture picture;
  GuardedRows rows{kWidth * 2, kHeight * 2};
};

TEST(PageFaults, ComeInTheFirstPullAlone) {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
  GTEST_SKIP() << "a sanitizer wants blocks freed";
#endif
  Faults faults(Gradient(kWidth, kHeight, Masks::Steps));
  long most = 0;
  for (const FilterClass& row : FilterClasses()) {
    for (const std::string& text : TextsOf(row)) {
      SCOPED_TRACE(row.className + (" " + text));
      platform::FreeKeptBlocks();
      const Faults::OfPulls own = faults.Count(row, text);
      most = std::max(most, own.first);
      EXPECT_LE(own.second, kFew);
      // A filter that comes after it finds the blocks of this one.
      EXPECT_LE(faults.Count(row, text).first, kFew);
    }
  }
  EXPECT_GT(most, kPages / 2) << "nothing was counted";
}

}  // namespace
}  // namespace testing_support
