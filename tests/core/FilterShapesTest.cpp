#include "core/FilterShapes.h"

#include <gmock/gmock.h>

#include <stdexcept>

#include "base/Workers.h"
#include "tests/support/TestFilters.h"

// What a pull does with the change flags. All that a host sees of the shapes is in the contract
// tests of the filters.
namespace testing_support {
namespace {

// What happens at the third row that a test filter works on.
enum class AtRow { Nothing, Abort, Throw };

// The common part of the test filters: flags in the open, no parameters.
template <class Shape>
class Scripted : public Shape {
 public:
  using CPdibFilter::selfChanged;
  using CPdibFilter::sourceChanged;
  using Shape::Shape;

  bool IsDirty() override { return false; }
  void Commit() override {}
  HRESULT STDMETHODCALLTYPE SetParameter(const char*, int) override { return S_OK; }
  HRESULT STDMETHODCALLTYPE GetParameter(char*, int) override { return S_OK; }
  HRESULT STDMETHODCALLTYPE GetActiveParameter(char*, int) override { return S_OK; }

  AtRow atRow = AtRow::Nothing;
  int rowsSeen = 0;  // of narrow pictures
  int pixelsSeen = 0;

 protected:
  void CountRow() {
    if (++rowsSeen != 3) return;
    if (atRow == AtRow::Throw) throw std::runtime_error("row");
    if (atRow == AtRow::Abort) this->abort = true;
  }
};

template <bool kStrict>
class RowProbe final : public Scripted<RowFilter> {
 public:
  explicit RowProbe(const FilterClass& row)
      : Scripted(row,
                 {.sourceResult = kStrict ? SourceResult::StopsAboveZero : SourceResult::Ignored,
                  .abortMarksChange = kStrict}) {}

 private:
  void ChangeRow(BYTE*, BYTE*, int width) override {
    pixelsSeen += width;
    CountRow();
  }
};

template <bool kStrict, bool kNeedsMask = false>
class RectangleProbe final : public Scripted<RectangleFilter> {
 public:
  explicit RectangleProbe(const FilterClass& row)
      : Scripted(row, kStrict ? Policy{SourceResult::EndsUnlessZero, false} : Policy{}) {}

 private:
  bool NeedsMask() const override { return kNeedsMask; }
  bool ChangeRectangle(const PullRectangle& r) override {
    for (int i = 0; i < r.height && !abort; ++i) {
      CountRow();
      *r.Colour(i) = *r.Mask(i) = 9;
    }
    return !abort;
  }
};

template <bool kClearedAtStart>
class WholeProbe final : public Scripted<WholePictureFilter> {
 public:
  explicit WholeProbe(const FilterClass& row)
      : Scripted(row, {.flags = kClearedAtStart ? ChangeFlags::ClearedAtStart
                                                : ChangeFlags::ClearedAtEnd}) {}

 private:
  bool Rebuild() override {
    if (!EnsurePictures(0, 0, result.width, result.height) || !PullInput(*outputPicture)) {
      return false;
    }
    for (int y = 0; y < result.height && !abort; ++y) CountRow();
    return !abort;
  }
};

// One pull, with the flags before and after it.
struct FlagCase {
  const char* name;
  bool self, source;
  HRESULT upstream;
  AtRow atRow;
  HRESULT result;
  bool selfAfter, sourceAfter;
};

template <class Probe>
void CheckFlags(const std::vector<FlagCase>& cases) {
  for (const FlagCase& c : cases) {
    SCOPED_TRACE(c.name);
    Rig rig(Noise(11, 8, Masks::Noise, 3), TestClass("Test.Shape.1", 5000, 0, MakeFilter<Probe>));
    rig.Prepare();
    auto& probe = static_cast<Probe&>(rig.Filter());
    probe.atRow = c.atRow;
    probe.selfChanged = c.self;
    probe.sourceChanged = c.source;
    rig.source->results = {c.upstream};
    GuardedRows rows(11, 8);
    EXPECT_EQ(rig.Pull(rows, {0, 0, 0, 0, 11, 8}), c.result);
    EXPECT_EQ(probe.selfChanged, c.selfAfter);
    EXPECT_EQ(probe.sourceChanged, c.sourceAfter);
  }
}

TEST(FilterShapes, FlagsFollowThePolicy) {
  using enum AtRow;
  CheckFlags<RowProbe<false>>({{"complete", true, true, 0, Nothing, 0, false, false},
                               {"source stopped", true, true, 1, Nothing, 0, false, false},
                               {"abort, clear", false, false, 0, Abort, 1, false, false},
                               {"abort, set", true, true, 0, Abort, 1, true, true},
                               {"exception", true, false, 0, Throw, 1, true, false}});
  CheckFlags<RowProbe<true>>({{"complete", true, true, 0, Nothing, 0, false, false},
                              {"source stopped", true, true, 1, Nothing, 1, true, true},
                              {"source stopped, clear", false, false, 1, Nothing, 1, false, false},
                              {"source failed", true, true, E_FAIL, Nothing, 0, false, false},
                              {"abort, clear", false, false, 0, Abort, 1, true, false}});
  CheckFlags<RectangleProbe<false>>({{"complete", true, true, 0, Nothing, 0, false, false},
                                     {"source stopped", false, true, 1, Nothing, 1, false, true},
                                     {"abort, clear", false, false, 0, Abort, 1, true, false},
                                     {"exception", false, true, 0, Throw, 1, false, true}});
  CheckFlags<RectangleProbe<true>>(
      {{"source stopped", false, true, 7, Nothing, 7, false, true},
       {"source failed", true, false, E_FAIL, Nothing, E_FAIL, true, false},
       {"abort, clear", false, false, 0, Abort, 1, false, false}});
  CheckFlags<WholeProbe<true>>({{"complete", true, true, 0, Nothing, 0, false, false},
                                {"source stopped", false, true, 1, Nothing, 1, false, true},
                                {"source stopped, self", true, false, 1, Nothing, 1, true, true},
                                {"source failed", true, false, E_FAIL, Nothing, 1, true, true},
                                {"abort", false, true, 0, Abort, 1, false, true},
                                {"exception", true, false, 0, Throw, 1, true, true}});
  CheckFlags<WholeProbe<false>>({{"complete", true, true, 0, Nothing, 0, false, false},
                                 {"abort", false, true, 0, Abort, 1, true, true},
                                 {"exception", false, true, 0, Throw, 1, true, true}});
}

// As many threads are asked for as there is work for: bands have 65,536 pixels.
TEST(FilterShapes, RowsAreSharedByTheirPixels) {
  struct Workers final : IAnimWorkers {
    Workers() { base::SetWorkers(this); }
    ~Workers() { base::SetWorkers(nullptr); }
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void**) override { return E_NOINTERFACE; }
    ULONG STDMETHODCALLTYPE AddRef() override { return 1; }
    ULONG STDMETHODCALLTYPE Release() override { return 1; }
    HRESULT STDMETHODCALLTYPE Run(int count, AnimTask task, void* context) override {
      counts.push_back(count);
      for (int i = 0; i < count; ++i) task(context, i);
      return S_OK;
    }
    std::vector<int> counts;
  };
  const struct {
    int width, height;
    std::vector<int> counts;
  } cases[] = {{4096, 64, {4}}, {4096, 65, {5}}, {16, 8192, {2}}, {16, 4096, {}}, {300, 200, {}}};
  for (const auto& c : cases) {
    Rig rig(Uniform(c.width, c.height, 1, 2, 3),
            TestClass("Test.Shape.1", 5000, 0, MakeFilter<RowProbe<false>>));
    rig.Prepare();
    Workers workers;
    rig.PullWhole();
    EXPECT_EQ(workers.counts, c.counts) << c.width;
    EXPECT_EQ(static_cast<RowProbe<false>&>(rig.Filter()).pixelsSeen, c.width * c.height);
  }
}

TEST(FilterShapes, ARectangleLiesWhereTheCallerWantsIt) {
  Rig rig(Noise(11, 8, Masks::Noise, 3),
          TestClass("Test.Shape.1", 5000, 0, MakeFilter<RectangleProbe<false>>));
  rig.Prepare();
  GuardedRows rows(14, 10);
  EXPECT_EQ(rig.Pull(rows, {2, 1, 3, 2, 5, 4}), S_OK);
  EXPECT_EQ(rows.WrittenOutside(2, 1, 5, 4), "");
  EXPECT_EQ(rows.Part(2, 1, 1, 1).mask[0], 9);
  EXPECT_THAT(rig.source->requests, testing::ElementsAre(RowRequest{2, 1, 3, 2, 5, 4}));
}

// A filter that cannot do without a mask is lent one as large as what it is asked for, which the
// source fills as well.
TEST(FilterShapes, ARectangleIsLentAMask) {
  Rig rig(Noise(11, 8, Masks::Noise, 3),
          TestClass("Test.Shape.2", 5000, 0, MakeFilter<RectangleProbe<false, true>>));
  rig.Prepare();
  GuardedRows rows(14, 10);
  EXPECT_EQ(rig.Filter().ReadRows(2, 1, 3, 2, 5, 4, rows.ColourRows(), nullptr), S_OK);
  EXPECT_EQ(rows.WrittenOutside(2, 1, 5, 4), "");
  EXPECT_EQ(rows.Part(2, 4, 1, 1).colour[0], 9);
}

}  // namespace
}  // namespace testing_support
