#include <gtest/gtest.h>

#include <set>
#include <string>

#include "filters/FilterClasses.h"
#include "tests/support/Allocations.h"
#include "tests/support/TestFilters.h"

namespace testing_support {
namespace {

// Their work in floating point lives for one pull.
const std::set<std::string> kHoldNothing = {"CBlurGaussFilter", "CUnsharpMaskFilter",
                                            "CBlurSelFilter"};

// Keep a sample of what came in for their dialogs, from the first pull on.
const std::set<std::string> kKeepSample = {"CGradCurvesFilter"};

// Compute the caller's rows from neighbours, three rows of which they keep aside in each pull:
// colours, and what does not count.
const std::set<std::string> kKeepRows = {"CRauchglasFilter", "CScharfFilter", "CWeichFilter",
                                         "CFindEdgesFilter", "CEmbossFilter"};
constexpr long kMostRows = 6;

// A pull of a point filter works in the caller's rows alone; one of a filter that keeps a picture
// does so from its second pull on.
TEST(FilterAllocation, PullsAllocateNothing) {
  GuardedRows rows(67, 41);
  int keepers = 0;
  for (const FilterClass& row : FilterClasses()) {
    SCOPED_TRACE(row.className);
    Rig rig(Noise(67, 41, Masks::Noise, 1), row);
    if (row.defaultText) rig.Filter().SetParameter(row.defaultText, 1);
    rig.source->requests.reserve(100);
    rig.Prepare();
    const long before = AllocationCount();
    ASSERT_EQ(rig.Pull(rows, {0, 0, 0, 0, 67, 41}), S_OK);
    const long first = AllocationCount() - before;
    ASSERT_EQ(rig.Pull(rows, {0, 0, 0, 0, 67, 41}), S_OK);
    const long second = AllocationCount() - before - first;
    if (kHoldNothing.contains(row.className)) {
      EXPECT_EQ(second, first);
      continue;
    }
    if (kKeepRows.contains(row.className)) {
      EXPECT_LE(second, kMostRows);
      continue;
    }
    EXPECT_EQ(second, 0);
    // A filter that passes requests on is pulled through twice.
    const bool keepsPicture = rig.source->requests.size() != 2;
    EXPECT_EQ(first > 0, keepsPicture || kKeepSample.contains(row.className));
    keepers += keepsPicture;
  }
  EXPECT_GT(keepers, 0) << "nothing was counted";
}

}  // namespace
}  // namespace testing_support
