#include "core/FilterShapes.h"

#include <gmock/gmock.h>

#include "base/Workers.h"
#include "tests/support/TestFilters.h"

// How rows are shared and where rectangles lie. All else that a host sees of the shapes is in the
// contract tests of the filters.
namespace testing_support {
namespace {

// The common part of the test filters: no parameters.
template <class Shape>
class Probe : public Shape {
 public:
  using Shape::Shape;
  bool IsDirty() override { return false; }
  void Commit() override {}
  HRESULT STDMETHODCALLTYPE SetParameter(const char*, int) override { return S_OK; }
  HRESULT STDMETHODCALLTYPE GetParameter(char*, int) override { return S_OK; }
  HRESULT STDMETHODCALLTYPE GetActiveParameter(char*, int) override { return S_OK; }
};

class RowProbe final : public Probe<RowFilter> {
 public:
  explicit RowProbe(const FilterClass& row) : Probe(row, {}) {}
  int pixelsSeen = 0;

 private:
  void ChangeRow(BYTE*, BYTE*, int width) override { pixelsSeen += width; }
};

template <bool kNeedsMask>
class RectangleProbe final : public Probe<RectangleFilter> {
 public:
  explicit RectangleProbe(const FilterClass& row) : Probe(row, {}) {}

 private:
  bool NeedsMask() const override { return kNeedsMask; }
  bool ChangeRectangle(const PullRectangle& r) override {
    for (int i = 0; i < r.height; ++i) *r.Colour(i) = *r.Mask(i) = 9;
    return true;
  }
};

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
            TestClass("Test.Shape.1", 5000, 0, MakeFilter<RowProbe>));
    rig.Prepare();
    Workers workers;
    rig.PullWhole();
    EXPECT_EQ(workers.counts, c.counts) << c.width;
    EXPECT_EQ(static_cast<RowProbe&>(rig.Filter()).pixelsSeen, c.width * c.height);
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
          TestClass("Test.Shape.2", 5000, 0, MakeFilter<RectangleProbe<true>>));
  rig.Prepare();
  GuardedRows rows(14, 10);
  EXPECT_EQ(rig.Filter().ReadRows(2, 1, 3, 2, 5, 4, rows.ColourRows(), nullptr), S_OK);
  EXPECT_EQ(rows.WrittenOutside(2, 1, 5, 4), "");
  EXPECT_EQ(rows.Part(2, 4, 1, 1).colour[0], 9);
}

}  // namespace
}  // namespace testing_support
