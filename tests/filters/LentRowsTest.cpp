#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstring>
#include <memory>
#include <thread>
#include <utility>

#include "tests/filters/ClassOf.h"
#include "tests/filters/EveryClass.h"
#include "tests/support/TestFilters.h"

// Whoever reads rows where they lie gives out the same bytes as who has them copied, whatever is
// asked for and in whatever order.
namespace testing_support {
namespace {

using platform::ComPtr;

struct Item {
  const FilterClass* row;
  std::string text;
};

// A chain over a picture. A barrier is a filter that passes rows on and lends none.
class Chain : public Rig {
 public:
  enum class Between { Nothing, Barriers };
  Chain(const Picture& picture, const std::vector<Item>& items, bool sourceLends,
        Between between = Between::Nothing)
      : Rig(picture, FiltersOf(items, between)) {
    source->lends = sourceLends;
    for (std::size_t i = 0; i <= items.size(); ++i) PrepareAnew();
  }
  ~Chain() {
    EXPECT_EQ(source->misuseOfLent, "");
    EXPECT_FALSE(source->lent) << "rows were not given back";
  }

  void PrepareAnew() {
    bool changed = false;
    int known = -1;
    Tail().Prepare(&changed, &known, false);
  }
  void Show(const Picture& picture) {
    source->picture = picture;
    source->revision++;
  }
  RowRequest Whole() const { return {0, 0, 0, 0, destination->width, destination->height}; }

 private:
  static std::vector<ComPtr<FilterObject>> FiltersOf(const std::vector<Item>& items,
                                                     Between between) {
    std::vector<ComPtr<FilterObject>> filters;
    for (const Item& item : items) {
      if (between == Between::Barriers && !filters.empty()) {
        filters.push_back(Make(TestClass("Test.Barrier.1", 5000, 0, MakeFilter<RecordingFilter>)));
      }
      filters.push_back(Make(*item.row));
      filters.back()->SetParameter(item.text.c_str(), 1);
    }
    return filters;
  }
};

// What a pull answers and leaves in the caller's rows, all around them included.
struct Pulled {
  HRESULT answer;
  Picture rows;
};
Pulled PullFrom(Rig& rig, const RowRequest& request) {
  GuardedRows rows(std::max(1, request.destX + request.width) + 2,
                   std::max(1, request.destY + request.height) + 2);
  const HRESULT answer = rig.Pull(rows, request);
  return {answer, rows.Whole()};
}

void ExpectEqualPulls(Rig& copying, Rig& lending, const RowRequest& request) {
  const Pulled expected = PullFrom(copying, request);
  const Pulled got = PullFrom(lending, request);
  EXPECT_EQ(expected.answer, got.answer);
  EXPECT_EQ(Difference(expected.rows, got.rows), "") << testing::PrintToString(request);
}

// Texts that make a class work in each of its ways.
std::vector<std::string> TextsOf(const FilterClass& row) {
  const std::string progId = row.progId;
  std::mt19937 random(7);
  std::vector<std::string> texts = {row.defaultText ? row.defaultText : "",
                                    TextWithSmallNumbers(row, random),
                                    TextWithSmallNumbers(row, random)};
  if (progId == "ZNFilter.Rotate.1") {
    texts.insert(texts.end(), {"Angle=90", "Angle=180,MirrorOn=1", "Angle=277.5"});
  }
  if (progId == "ZNFilter.Scale.1") {
    for (const char* size :
         {"9,MaximumVerticalSize=8", "60,MaximumVerticalSize=40", "430,MaximumVerticalSize=390"}) {
      texts.push_back(std::string("KeepProportions=0,AllowEnlarge=1,MaximumHorizontalSize=") +
                      size);
    }
  }
  if (progId == "ZNFilter.Tonwert.1") {
    texts.insert(texts.end(), {"AutoTone=1,AutoContrastRGB=1,AutoContrast=1", "ExBlit=1,WL=20"});
  }
  if (progId == "ZNFilter.WhiteBlackGrey.1") {
    for (const char* mode : {"FilterOn=1,Mode=2", "FilterOn=1,Mode=3", "FilterOn=0"}) {
      texts.push_back(std::string("RedG=120,GreenG=200,BlueG=90,Opacity=080,") + mode);
    }
  }
  if (progId == "ZNFilter.GradCurves.1") texts.push_back("FilterOn=0");
  if (progId == "ZNFilter.Shadow.1") {
    for (const char* kind : {"InnerOn=0", "InnerOn=0,LightIntensity=60", "InnerOn=1,Size=2"}) {
      texts.push_back(std::string("ShadowDensity=70,ShadowBlur=6,ShadowDistance=4,") + kind);
    }
  }
  if (progId == "ZNFilter.AdoptColor.1") texts.push_back("Intensity=080,ColorRed=200,ExBlit=0");
  if (progId == "ZNFilter.Passpartout.1") {
    texts.insert(texts.end(), {"Borderhori=-4,Borderverti=-3,Transparency=40,Radius=6",
                               "Borderhori=5,Borderverti=2,Poscorhori=-17,Poscorverti=12",
                               "BordersizeOn=0,TotalHori=30,TotalVerti=60,Poscorverti=-40"});
  }
  if (progId == "ZNFilter.Crop.1" || progId == "ZNFilter.RotCrop.1") {
    texts.push_back("LeftMargin=0.2,RightMargin=0.8,BottomMargin=0.1,TopMargin=0.9,FixRatioOn=0");
  }
  for (const char* three : {"Sharpness", "Blurness", "EdgeEnhance", "EmbossStrength"}) {
    if (!row.defaultText || !std::strstr(row.defaultText, three)) continue;
    texts.push_back(std::string(three) + "=060");
  }
  return texts;
}

class LentRows : public testing::TestWithParam<const FilterClass*> {};

// In any order of pulls and changes: a source that lends at times, and one that never does.
TEST_P(LentRows, GiveTheSameBytes) {
  std::mt19937 random(11);
  const std::vector<std::string> texts = TextsOf(*GetParam());
  const std::vector<NamedPicture> pictures = TestPictures();
  for (int round = 0; round < 40; ++round) {
    SCOPED_TRACE(round);
    const Item item{GetParam(), texts[random() % texts.size()]};
    const Picture& first = pictures[random() % pictures.size()].picture;
    Chain copying(first, {item}, false);
    Chain lending(first, {item}, true);
    for (int step = 0; step < 8; ++step) {
      const auto both = [&](auto&& change) {
        change(copying);
        change(lending);
      };
      const auto choice = static_cast<std::uint32_t>(random());
      const Picture& other = pictures[(choice / 8) % pictures.size()].picture;
      const std::string& text = texts[(choice / 8) % texts.size()];
      switch (choice % 8) {
        case 0:
          lending.source->lends = !lending.source->lends;
          break;
        case 1:
          both([&](Chain& chain) { chain.Show(other); });
          break;
        case 2:
          both([&](Chain& chain) { chain.Filter().SetParameter(text.c_str(), 1); });
          break;
        default:
          break;
      }
      both([&](Chain& chain) { chain.Prepare(); });
      ASSERT_EQ(copying.Whole(), lending.Whole());
      const int farthest = 3;
      const RowRequest part = AnyRequest(random, copying.source->picture, farthest);
      ExpectEqualPulls(copying, lending, random() % 2 ? copying.Whole() : part);
    }
    if (HasFailure()) FAIL() << item.text;
  }
}

// Of pictures that are large enough to be shared, wide and high, whether they are lent or not.
TEST_P(LentRows, AreSharedByWorkers) {
  int turn = 0;
  for (const Picture& picture :
       {Noise(620, 300, Masks::Opaque, 1), Noise(60, 3500, Masks::Noise, 2)}) {
    for (const std::string& text : TextsOf(*GetParam())) {
      SCOPED_TRACE(text);
      Chain alone(picture, {{GetParam(), text}}, false);
      const RowRequest whole = alone.Whole();
      if (whole.width * whole.height > 2000000) continue;  // paper around a narrow picture
      RowRequest part = whole;
      part.width = (whole.width + 1) / 2;
      const Picture expected = PullFrom(alone, whole).rows;
      for (const bool lends : {false, true}) {
        constexpr int kThreads[] = {3, 16, 2, 1};
        const LentWorkers workers(kThreads[turn++ % 4]);
        Chain shared(picture, {{GetParam(), text}}, lends);
        ASSERT_EQ(Difference(expected, PullFrom(shared, whole).rows), "");
        ExpectEqualPulls(alone, shared, part);
      }
    }
  }
}

// The filter in front of others and behind them, so that each lends to the next one.
TEST_P(LentRows, TravelThroughAChain) {
  const Picture picture = Noise(41, 37, Masks::Steps, 3);
  for (const Item& other :
       {Item{&ClassOf("ZNFilter.Sharpen.1"), "Sharpness=060"},
        Item{&ClassOf("ZNFilter.Rotate.1"), "Angle=90"},
        Item{&ClassOf("ZNFilter.Scale.1"), "MaximumHorizontalSize=19,MaximumVerticalSize=19"},
        Item{&ClassOf("ZNFilter.Tonwert.1"), "AutoContrast=1"},
        Item{&ClassOf("ZNFilter.Crop.1"), "LeftMargin=0.2,TopMargin=0.8,FixRatioOn=0"},
        Item{&ClassOf("ZNFilter.Offset.1"), "OffsetX=3"},
        Item{&ClassOf("ZNFilter.Passpartout.1"), "Borderhori=7,Borderverti=5,Radius=9"},
        Item{&ClassOf("ZNFilter.ImgBg.1"), "Blue=20,Transparency=30"}}) {
    for (const std::string& text : TextsOf(*GetParam())) {
      const Item own{GetParam(), text};
      const Item last{&ClassOf("ZNFilter.Blur.1"), "Blurness=050"};
      for (const auto& items : {std::vector{own, other, last}, std::vector{other, own, last}}) {
        SCOPED_TRACE(items[0].row->progId + (" " + items[0].text) + " | " + items[1].text);
        Chain apart(picture, items, false, Chain::Between::Barriers);
        Chain joined(picture, items, true);
        ASSERT_EQ(apart.Whole(), joined.Whole());
        ExpectEqualPulls(apart, joined, apart.Whole());
        ExpectEqualPulls(apart, joined, {1, 2, 3, 4, 9, 8});
        for (Chain* chain : {&apart, &joined}) chain->source->revision++, chain->Prepare();
        ExpectEqualPulls(apart, joined, apart.Whole());
        // Who has lent has done its work.
        EXPECT_FALSE(joined.Prepare());
        if (HasFailure()) return;
      }
    }
  }
}

// A source that fails is asked no more often than it would be without lending, and the answer is
// the same.
TEST_P(LentRows, AreNotAskedForTwiceWhereTheSourceFails) {
  const Picture picture = Noise(31, 27, Masks::Noise, 4);
  for (const std::string& text : TextsOf(*GetParam())) {
    SCOPED_TRACE(text);
    const std::vector<Item> items = {{GetParam(), text},
                                     {&ClassOf("ZNFilter.Sharpen.1"), "Sharpness=060"}};
    Chain apart(picture, items, false, Chain::Between::Barriers);
    Chain joined(picture, items, false);
    for (Chain* chain : {&apart, &joined}) chain->source->results = {1};
    for (int pull = 0; pull < 3; ++pull) {
      ExpectEqualPulls(apart, joined, apart.Whole());
      EXPECT_EQ(apart.source->requests, joined.source->requests);
    }
  }
}

TEST_P(LentRows, AbortsLeaveALaterPullWhole) {
  const Picture picture = Noise(620, 400, Masks::Noise, 5);
  const std::vector<std::string> texts = TextsOf(*GetParam());
  const std::vector<Item> items = {{&ClassOf("ZNFilter.Rotate.1"), "Angle=90"},
                                   {GetParam(), texts.back()}};
  Chain reference(picture, items, false, Chain::Between::Barriers);
  const Picture whole = PullFrom(reference, reference.Whole()).rows;
  const LentWorkers workers(3);
  for (int round = 0; round < 6; ++round) {
    Chain chain(picture, items, true);
    std::atomic<bool> started{round == 0};
    chain.source->onLend = [&] { started = true; };
    std::thread other([&] {
      while (!started) std::this_thread::yield();
      std::this_thread::sleep_for(std::chrono::microseconds(round * 300));
      chain.Tail().SetAbort(true);
    });
    PullFrom(chain, chain.Whole());
    started = true;
    other.join();
    chain.Tail().SetAbort(false);
    chain.source->onLend = nullptr;
    chain.PrepareAnew();
    ASSERT_EQ(Difference(whole, PullFrom(chain, chain.Whole()).rows), "");
  }
}

INSTANTIATE_TEST_SUITE_P(All, LentRows, testing::ValuesIn(EveryClass()),
                         [](const auto& tested) { return std::string(tested.param->className); });

// A source that hands itself out for any id seems to lend, and does not.
TEST(LentRowsOfAChain, AreNotAskedOfWhoAnswersEveryQuery) {
  const std::vector<Item> turn = {{&ClassOf("ZNFilter.Rotate.1"), "Angle=90"}};
  const Picture picture = Noise(20, 9, Masks::Noise, 3);
  Chain copying(picture, turn, false);
  Chain simple(picture, turn, true);
  simple.source->answersEveryQuery = true;
  ExpectEqualPulls(copying, simple, copying.Whole());
  EXPECT_EQ(simple.source->loans, 0);
  EXPECT_EQ(simple.source->requests, copying.source->requests);
}

// One thread pulls the end of a chain, another a filter in the middle of it, which lends its rows
// to the next one, and a third one prepares.
TEST(LentRowsOfAChain, AreSharedByThreads) {
  const Picture picture = Noise(90, 70, Masks::Noise, 6);
  const std::vector<Item> items = {
      {&ClassOf("ZNFilter.Crop.1"), "LeftMargin=0.1,FixRatioOn=0"},
      {&ClassOf("ZNFilter.Scale.1"), "MaximumHorizontalSize=60,MaximumVerticalSize=60"},
      {&ClassOf("ZNFilter.Rotate.1"), "Angle=90"},
      {&ClassOf("ZNFilter.Sharpen.1"), "Sharpness=060"}};
  Chain chain(picture, items, true);
  const Picture whole = PullFrom(chain, chain.Whole()).rows;
  std::atomic<int> pulling{2};
  const auto pull = [&](FilterObject& filter, const RowRequest& request) {
    for (int round = 0; round < 60; ++round) {
      bool changed = false;
      int known = -1;
      filter.Prepare(&changed, &known, false);
      GuardedRows rows(request.width + 2, request.height + 2);
      EXPECT_EQ(filter.ReadRows(0, 0, 0, 0, request.width, request.height, rows.ColourRows(),
                                rows.MaskRows()),
                S_OK);
      if (request == chain.Whole()) {
        EXPECT_EQ(Difference(whole, rows.Whole()), "");
      }
    }
    --pulling;
  };
  std::thread tail([&] { pull(chain.Tail(), chain.Whole()); });
  std::thread middle([&] { pull(chain.Filter(1), {0, 0, 0, 0, 20, 20}); });
  while (pulling > 0) chain.PrepareAnew();
  tail.join();
  middle.join();
}

// A thread that waits for a lender is freed by an abort; who has lent nothing takes nothing back.
TEST(LentRowsOfAChain, AreWaitedForAndGivenBackByTheBorrower) {
  Chain chain(Noise(20, 10, Masks::Noise, 7), {{&ClassOf("ZNFilter.Zero.1"), ""}}, true);
  FilterObject& lender = chain.Filter();
  const BYTE* const* colour = nullptr;
  const BYTE* const* mask = nullptr;
  EXPECT_EQ(lender.ReturnRows(), E_UNEXPECTED);
  EXPECT_EQ(lender.LendRows(20, 10, nullptr, &mask), E_POINTER);
  EXPECT_EQ(lender.LendRows(21, 10, &colour, &mask), 1) << "more than there is";
  ASSERT_EQ(lender.LendRows(20, 10, &colour, &mask), S_OK);
  EXPECT_EQ(colour[9][59], *(chain.source->picture.Colour(19, 9) + 2));
  GuardedRows rows(20, 10);
  EXPECT_EQ(chain.Pull(rows, chain.Whole()), 1) << "the same thread would wait for itself";
  std::atomic<bool> started{false};
  HRESULT answers[2] = {};
  std::thread other([&] {
    answers[0] = lender.ReturnRows();
    started = true;
    GuardedRows waiting(20, 10);
    answers[1] = chain.Pull(waiting, chain.Whole());
  });
  while (!started) std::this_thread::yield();
  lender.SetAbort(true);
  other.join();
  EXPECT_EQ(answers[0], E_UNEXPECTED) << "another thread's loan";
  EXPECT_EQ(answers[1], 1);
  lender.SetAbort(false);
  EXPECT_EQ(lender.ReturnRows(), S_OK);
  EXPECT_EQ(lender.ReturnRows(), E_UNEXPECTED);
  EXPECT_EQ(chain.Pull(rows, chain.Whole()), S_OK);
}

}  // namespace
}  // namespace testing_support
