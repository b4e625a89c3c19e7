#include "core/FilterShapes.h"

#include <gmock/gmock.h>

#include <climits>
#include <cstring>
#include <stdexcept>

#include "tests/support/TestFilters.h"

namespace testing_support {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

// What a test filter does at its n-th row.
struct Script {
  int abortAtRow = -1;
  bool throws = false;
};

// The common part of the three test filters: flags in the open, no parameters, a script.
template <class Shape>
class Scripted : public Shape {
 public:
  using CPdibFilter::abort;
  using CPdibFilter::inputPicture;
  using CPdibFilter::outputPicture;
  using CPdibFilter::selfChanged;
  using CPdibFilter::sourceChanged;
  using Shape::Shape;

  bool IsDirty() override { return false; }
  void Commit() override {}
  HRESULT STDMETHODCALLTYPE SetParameter(const char*, int) override { return S_OK; }
  HRESULT STDMETHODCALLTYPE GetParameter(char*, int) override { return S_OK; }
  HRESULT STDMETHODCALLTYPE GetActiveParameter(char*, int) override { return S_OK; }

  Script script;
  int rowsSeen = 0;

 protected:
  // Aborts or throws at the scripted row, as another thread or an exhausted memory would.
  void CountRow() {
    if (++rowsSeen != script.abortAtRow) return;
    if (script.throws) throw std::runtime_error("row");
    this->abort = true;
  }
};

void InvertRow(BYTE* bytes, std::size_t count) {
  for (std::size_t i = 0; i < count; ++i) bytes[i] = static_cast<BYTE>(255 - bytes[i]);
}

template <bool kStops, bool kMarks, bool kMask>
class RowProbe final : public Scripted<RowFilter> {
 public:
  explicit RowProbe(const FilterClass& row)
      : Scripted(row,
                 {.stopsWithSource = kStops, .abortMarksChange = kMarks, .worksOnMask = kMask}) {}

  std::vector<const BYTE*> order;

 private:
  void ChangeRow(BYTE* colour, BYTE* mask, int width) override {
    CountRow();
    BYTE* const plane = kMask ? mask : colour;
    order.push_back(plane);
    InvertRow(plane, static_cast<std::size_t>(width) * (kMask ? 1 : 3));
  }
};
using PlainRow = RowProbe<false, false, false>;
using StrictRow = RowProbe<true, true, false>;
using MaskRow = RowProbe<false, false, true>;

class RectangleProbe final : public Scripted<RectangleFilter> {
 public:
  explicit RectangleProbe(const FilterClass& row) : Scripted(row) {}

 private:
  bool ChangeRectangle(const PullRectangle& r) override {
    for (int i = r.height - 1; i >= 0; --i) {
      if (abort) return false;
      CountRow();
      if (r.width > 0) InvertRow(r.Colour(i), static_cast<std::size_t>(r.width) * 3);
      if (r.width > 0) std::memset(r.Mask(i), 9, static_cast<std::size_t>(r.width));
    }
    return true;
  }
};

template <bool kClearedAtStart, bool kInOutput>
class WholeProbe final : public Scripted<WholePictureFilter> {
 public:
  explicit WholeProbe(const FilterClass& row)
      : Scripted(row, {kInOutput ? Cache::OutputPicture : Cache::InputPicture,
                       kClearedAtStart ? ChangeFlags::ClearedAtStart : ChangeFlags::ClearedAtEnd}) {
  }

  int rebuilds = 0;
  int abortAtCopiedRow = -1;
  int copied = 0;

 private:
  bool Rebuild() override {
    ++rebuilds;
    rowsSeen = 0;
    const auto& picture = kInOutput ? outputPicture : inputPicture;
    if (!(kInOutput ? EnsurePictures(0, 0, output.width, output.height)
                    : EnsurePictures(output.width, output.height, 0, 0)) ||
        !PullInput(*picture)) {
      return false;
    }
    for (int y = 0; y < output.height; ++y) {
      if (abort) return false;
      CountRow();
      InvertRow(picture->ColourRows()[y], static_cast<std::size_t>(output.width) * 3);
    }
    return true;
  }
  void CopyRow(const BYTE* colour, const BYTE* mask, BYTE* toColour, BYTE* toMask,
               int width) override {
    if (++copied == abortAtCopiedRow) abort = true;
    Scripted::CopyRow(colour, mask, toColour, toMask, width);
  }
};

template <class Probe>
struct ShapeRig {
  explicit ShapeRig(Picture picture = Noise(11, 8, Masks::Noise, 3))
      : rig(std::move(picture), TestClass("Test.Shape.1", 5000, 0, MakeFilter<Probe>)) {
    rig.Prepare();
  }
  Probe& probe() { return static_cast<Probe&>(rig.Filter()); }
  TestSource& source() { return *rig.source.Get(); }
  Rig rig;
};

// What one pull does with the flags. Each case starts with the given ones.
struct FlagCase {
  const char* name;
  bool self, source;  // before
  std::deque<HRESULT> upstream;
  Script script;
  HRESULT result;
  bool selfAfter, sourceAfter;
};

template <class Probe>
void CheckFlags(const std::vector<FlagCase>& cases) {
  for (const FlagCase& c : cases) {
    SCOPED_TRACE(c.name);
    ShapeRig<Probe> test;
    test.probe().script = c.script;
    test.probe().selfChanged = c.self;
    test.probe().sourceChanged = c.source;
    test.source().results = c.upstream;
    GuardedRows rows(11, 8);
    EXPECT_EQ(test.rig.Pull(rows, {0, 0, 0, 0, 11, 8}), c.result);
    EXPECT_EQ(test.probe().selfChanged, c.selfAfter);
    EXPECT_EQ(test.probe().sourceChanged, c.sourceAfter);
  }
}

TEST(RowFilter, FlagsFollowThePolicy) {
  const Script none;
  const Script abort{.abortAtRow = 3};
  const Script fails{.abortAtRow = 3, .throws = true};
  CheckFlags<PlainRow>({{"complete", true, true, {}, none, 0, false, false},
                        {"source stopped", true, true, {1}, none, 0, false, false},
                        {"abort, clear", false, false, {}, abort, 1, false, false},
                        {"abort, set", true, true, {}, abort, 1, true, true},
                        {"exception", true, false, {}, fails, 1, true, false}});
  CheckFlags<StrictRow>({{"complete", true, true, {}, none, 0, false, false},
                         {"source stopped", true, true, {1}, none, 1, true, true},
                         {"source stopped, clear", false, false, {1}, none, 1, false, false},
                         {"source failed", true, true, {E_FAIL}, none, 0, false, false},
                         {"abort, clear", false, false, {}, abort, 1, true, false}});
}

TEST(RowFilter, ChangesRowsFromLastToFirstInPlace) {
  ShapeRig<PlainRow> test;
  GuardedRows rows(14, 10);
  ASSERT_EQ(test.rig.Pull(rows, {2, 1, 3, 2, 5, 4}), S_OK);
  std::vector<const BYTE*> expected;
  for (int i = 3; i >= 0; --i) expected.push_back(rows.ColourRows()[1 + i] + 6);
  EXPECT_EQ(test.probe().order, expected);
  EXPECT_THAT(rows.WrittenOutside(2, 1, 5, 4), IsEmpty());
  EXPECT_THAT(test.source().requests, ElementsAre(RowRequest{2, 1, 3, 2, 5, 4}));
  const Picture part = rows.Part(2, 1, 5, 4);
  EXPECT_EQ(*part.Colour(4, 3), 255 - *test.source().picture.Colour(7, 5));
  EXPECT_EQ(part.Mask(4, 3), test.source().picture.Mask(7, 5));
}

TEST(RowFilter, AbortLeavesTheFirstRowsAsTheSourceGaveThem) {
  for (int abortAt = 1; abortAt <= 8; ++abortAt) {
    ShapeRig<PlainRow> test;
    test.probe().script.abortAtRow = abortAt;
    GuardedRows rows(11, 8);
    EXPECT_EQ(test.rig.Pull(rows, {0, 0, 0, 0, 11, 8}), abortAt < 8 ? 1 : 0);
    const Picture got = rows.Whole();
    for (int y = 0; y < 8; ++y) {
      const int before = *test.source().picture.Colour(0, y);
      EXPECT_EQ(*got.Colour(0, y), y >= 8 - abortAt ? 255 - before : before) << y;
    }
    // The flag stays until it is taken back.
    const HRESULT again = test.rig.Pull(rows, {0, 0, 0, 0, 11, 8});
    EXPECT_EQ(again, 1);
    test.probe().SetAbort(false);
    EXPECT_EQ(test.rig.Pull(rows, {0, 0, 0, 0, 11, 8}), 0);
  }
}

TEST(RowFilter, ToleratesWhatAHostMayPass) {
  ShapeRig<PlainRow> colour;
  ShapeRig<MaskRow> mask;
  GuardedRows rows(11, 8);
  for (Rig* rig : {&colour.rig, &mask.rig}) {
    for (const RowRequest& r : {RowRequest{0, 0, 0, 0, 0, 8}, RowRequest{0, 0, 0, 0, 11, 0},
                                RowRequest{0, 0, 0, 0, -3, 8}, RowRequest{0, 0, 0, 0, 11, -1},
                                RowRequest{0, 0, 0, 0, 11, INT_MIN}}) {
      EXPECT_EQ(rig->Pull(rows, r), S_OK) << testing::PrintToString(r);
    }
    EXPECT_THAT(rows.WrittenOutside(0, 0, 0, 0), IsEmpty());
    // One plane is enough.
    EXPECT_EQ(rig->Tail().ReadRows(0, 0, 0, 0, 11, 8, rows.ColourRows(), nullptr), S_OK);
    EXPECT_EQ(rig->Tail().ReadRows(0, 0, 0, 0, 11, 8, nullptr, rows.MaskRows()), S_OK);
    rows.Reset();
  }
  colour.probe().SetSource(nullptr);
  EXPECT_NE(colour.rig.Pull(rows, {0, 0, 0, 0, 11, 8}), S_OK);
  EXPECT_THAT(rows.WrittenOutside(0, 0, 0, 0), IsEmpty());
  mask.source().throwsInReadRows = true;
  EXPECT_EQ(mask.rig.Pull(rows, {0, 0, 0, 0, 11, 8}), 1);
}

TEST(RowFilter, ReadPixelIsARowOfOne) {
  ShapeRig<PlainRow> colour;
  ShapeRig<MaskRow> mask;
  const BYTE given[4] = {10, 20, 30, 40};
  BYTE pixel[4] = {};
  std::memcpy(colour.source().pixel, given, 4);
  std::memcpy(mask.source().pixel, given, 4);
  EXPECT_EQ(colour.probe().ReadPixel(pixel), S_OK);
  EXPECT_THAT(pixel, ElementsAre(245, 235, 225, 40));
  EXPECT_EQ(mask.probe().ReadPixel(pixel), S_OK);
  EXPECT_THAT(pixel, ElementsAre(10, 20, 30, 215));
  colour.source().pixelResult = E_FAIL;
  EXPECT_EQ(colour.probe().ReadPixel(pixel), E_FAIL);
  EXPECT_EQ(colour.probe().ReadPixel(nullptr), E_POINTER);
}

TEST(RectangleFilter, StopsWithTheSourceAndMarksAnAbort) {
  const Script none;
  const Script abort{.abortAtRow = 3};
  CheckFlags<RectangleProbe>({{"complete", true, true, {}, none, 0, false, false},
                              {"source stopped", false, true, {1}, none, 1, false, true},
                              {"abort, clear", false, false, {}, abort, 1, true, false},
                              {"exception", false, true, {}, {3, true}, 1, false, true}});
  ShapeRig<RectangleProbe> test;
  GuardedRows rows(14, 10);
  EXPECT_EQ(test.rig.Pull(rows, {2, 1, 3, 2, 5, 4}), S_OK);
  EXPECT_THAT(rows.WrittenOutside(2, 1, 5, 4), IsEmpty());
  EXPECT_EQ(rows.Part(2, 1, 1, 1).mask[0], 9);
  EXPECT_EQ(test.probe().rowsSeen, 4);
  EXPECT_THAT(test.source().requests, ElementsAre(RowRequest{2, 1, 3, 2, 5, 4}));
  test.probe().SetSource(nullptr);
  EXPECT_NE(test.rig.Pull(rows, {0, 0, 0, 0, 5, 4}), S_OK);
}

TEST(WholePictureFilter, FlagsFollowThePolicy) {
  const Script none;
  const Script abort{.abortAtRow = 3};
  const Script fails{.abortAtRow = 3, .throws = true};
  CheckFlags<WholeProbe<true, true>>(
      {{"complete", true, true, {}, none, 0, false, false},
       {"source stopped", false, true, {1}, none, 1, false, true},
       {"source stopped, self", true, false, {1}, none, 1, true, true},
       {"source failed", true, false, {E_FAIL}, none, 1, true, true},
       {"abort", false, true, {}, abort, 1, false, true},
       {"exception", true, false, {}, fails, 1, true, true}});
  CheckFlags<WholeProbe<false, false>>({{"complete", true, true, {}, none, 0, false, false},
                                        {"abort", false, true, {}, abort, 1, true, true},
                                        {"exception", false, true, {}, fails, 1, true, true}});
}

template <class Probe>
void CheckCache() {
  ShapeRig<Probe> test;
  Picture expected = test.source().picture;
  InvertRow(expected.colour.data(), expected.colour.size());
  GuardedRows rows(11, 8);
  for (int y = 0; y < 8; ++y) ASSERT_EQ(test.rig.Pull(rows, {0, y, 0, y, 11, 1}), S_OK);
  EXPECT_EQ(Difference(expected, rows.Whole()), "");
  EXPECT_EQ(test.probe().rebuilds, 1);
  EXPECT_THAT(test.source().requests, ElementsAre(RowRequest{0, 0, 0, 0, 11, 8}));
  // An abort while rows are given out keeps the picture.
  test.probe().abortAtCopiedRow = test.probe().copied + 3;
  rows.Reset();
  EXPECT_EQ(test.rig.Pull(rows, {0, 0, 0, 0, 11, 8}), 1);
  EXPECT_THAT(rows.WrittenOutside(0, 5, 11, 3), IsEmpty());
  test.probe().SetAbort(false);
  // A picture of another size is pulled anew.
  test.source().picture = Noise(5, 4, Masks::Noise, 8);
  test.source().revision++;
  expected = test.source().picture;
  InvertRow(expected.colour.data(), expected.colour.size());
  EXPECT_EQ(Difference(expected, test.rig.PullWhole()), "");
}

TEST(WholePictureFilter, PullsOnceAndAnswersFromTheCache) {
  CheckCache<WholeProbe<true, true>>();
  CheckCache<WholeProbe<false, false>>();
}

// The part of the request that lies inside the picture arrives at its place; nothing else changes.
TEST(WholePictureFilter, CutsRequestsToThePicture) {
  ShapeRig<WholeProbe<true, true>> test;
  constexpr int kSide = 20;
  for (const RowRequest& r :
       {RowRequest{3, 2, -3, -2, 14, 12}, RowRequest{0, 0, 9, 6, 8, 9},
        RowRequest{5, 5, -4, 3, 4, 2}, RowRequest{0, 0, 11, 0, 3, 3}, RowRequest{0, 0, 0, 8, 3, 3},
        RowRequest{2, 2, 0, 0, 0, 4}, RowRequest{2, 2, 0, 0, -4, 4},
        RowRequest{2, 2, INT_MAX, INT_MAX, 4, 4},
        RowRequest{2, 2, INT_MIN, INT_MIN, INT_MAX, INT_MAX},
        RowRequest{1, 1, 0, 0, INT_MAX, INT_MAX}}) {
    SCOPED_TRACE(testing::PrintToString(r));
    GuardedRows rows(kSide, kSide);
    EXPECT_EQ(test.rig.Pull(rows, r), S_OK);
    const auto cut = [](int dest, int src, int length, int size) {
      const std::int64_t first = std::max<std::int64_t>(0, src);
      const std::int64_t end = std::min<std::int64_t>(size, std::int64_t{src} + length);
      return std::pair(static_cast<int>(dest + first - src),
                       static_cast<int>(std::max<std::int64_t>(0, end - first)));
    };
    const auto [x, w] = cut(r.destX, r.srcX, r.width, 11);
    const auto [y, h] = cut(r.destY, r.srcY, r.height, 8);
    if (w == 0 || h == 0) {
      EXPECT_THAT(rows.WrittenOutside(0, 0, 0, 0), IsEmpty());
      continue;
    }
    EXPECT_THAT(rows.WrittenOutside(x, y, w, h), IsEmpty());
    const Picture part = rows.Part(x, y, w, h);
    const Picture& whole = test.source().picture;
    const int srcX = std::max(0, r.srcX);
    const int srcY = std::max(0, r.srcY);
    EXPECT_EQ(*part.Colour(0, 0), 255 - *whole.Colour(srcX, srcY));
    EXPECT_EQ(part.Mask(w - 1, h - 1), whole.Mask(srcX + w - 1, srcY + h - 1));
  }
}

TEST(WholePictureFilter, SurvivesPicturesThatCannotBe) {
  GuardedRows rows(4, 4);
  {
    ShapeRig<WholeProbe<true, true>> huge;
    huge.rig.Filter().SetPictureSize(INT_MAX, INT_MAX);
    huge.source().AttachDestination(nullptr);
    bool changed = false;
    huge.rig.Filter().Prepare(&changed, &huge.rig.revision, true);
    EXPECT_EQ(huge.rig.Pull(rows, {0, 0, 0, 0, 4, 4}), 1);
    EXPECT_TRUE(huge.probe().sourceChanged);
  }
  ShapeRig<WholeProbe<false, true>> test;
  EXPECT_EQ(test.rig.Tail().ReadRows(0, 0, 0, 0, 4, 4, rows.ColourRows(), nullptr), S_OK);
  EXPECT_EQ(test.rig.Tail().ReadRows(0, 0, 0, 0, 4, 4, nullptr, rows.MaskRows()), S_OK);
  test.probe().SetSource(nullptr);
  EXPECT_EQ(test.rig.Pull(rows, {0, 0, 0, 0, 4, 4}), 1);
}

}  // namespace
}  // namespace testing_support
