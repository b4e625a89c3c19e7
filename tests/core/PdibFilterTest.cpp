#include "core/PdibFilter.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <climits>

#include "core/AnimIcon.h"
#include "tests/support/TestFilters.h"

namespace testing_support {
namespace {

using platform::ComPtr;
using testing::ElementsAre;
using testing::IsEmpty;

// Opens what a test looks at. Doubles the size of its picture when told to.
class Probe final : public RecordingFilter {
 public:
  using CPdibFilter::EnsurePictures;
  using CPdibFilter::inputPicture;
  using CPdibFilter::outputPicture;
  using CPdibFilter::ReadVisibility;
  using CPdibFilter::revision;
  using CPdibFilter::selfChanged;
  using CPdibFilter::sourceChanged;
  using CPdibFilter::VisibilityText;
  using CPdibFilter::visible;
  using RecordingFilter::RecordingFilter;

  void Commit() override {
    ++commits;
    RecordingFilter::Commit();
    if (!doubles) return;
    output.width = output.extentWidth = 2 * input.width;
    output.height = output.extentHeight = 2 * input.height;
    output.offsetX = output.offsetY = 0;
  }
  void MapSize(int w, int h, int* inW, int* inH) override {
    *inW = doubles ? w / 2 : w;
    *inH = doubles ? h / 2 : h;
  }
  HRESULT STDMETHODCALLTYPE SetTargetSize(int w, int h) override {
    ++targets;
    return RecordingFilter::SetTargetSize(w, h);
  }

  bool doubles = false;
  int commits = 0;
  int targets = 0;
};

const FilterClass& ProbeClass() {
  static const FilterClass& row = TestClass("Test.Probe.1", 700, 8, MakeFilter<Probe>);
  return row;
}

ComPtr<Probe> MakeProbe() {
  return ComPtr<Probe>::Attach(static_cast<Probe*>(ProbeClass().make(ProbeClass())));
}

ULONG References(IUnknown* object) {
  object->AddRef();
  return object->Release();
}

// A probe between two ends, all flags as after a complete pull.
struct ProbeRig {
  ProbeRig() : rig(Gradient(8, 6, Masks::Opaque), ProbeClass()) { Settle(); }
  Probe& probe() { return static_cast<Probe&>(rig.Filter()); }
  void Settle() {
    rig.Prepare();
    probe().selfChanged = probe().sourceChanged = false;
    rig.destination->TakeCalls();
  }
  Rig rig;
};

TEST(PdibFilterLinking, OneCallSetsBothDirections) {
  const auto a = MakeProbe();
  const auto b = MakeProbe();
  for (const bool fromLeft : {true, false}) {
    a->selfChanged = a->sourceChanged = b->selfChanged = b->sourceChanged = false;
    if (fromLeft) {
      a->SetDestination(static_cast<IAnimFilter*>(b.Get()));
    } else {
      b->SetSource(static_cast<IAnimFilter*>(a.Get()));
    }
    ComPtr<IAnimFilter> right, left;
    EXPECT_EQ(a->GetDestination(IAnimFilter::kIid, right.PutVoid()), S_OK);
    EXPECT_EQ(b->GetSource(IAnimFilter::kIid, left.PutVoid()), S_OK);
    EXPECT_TRUE(right == b.Get() && left == a.Get());
    // Who is called marks its own change, who is attached that of its source.
    EXPECT_EQ(a->selfChanged, fromLeft);
    EXPECT_EQ(a->sourceChanged, !fromLeft);
    EXPECT_EQ(b->selfChanged, !fromLeft);
    EXPECT_EQ(b->sourceChanged, fromLeft);
    right.Reset();
    left.Reset();
    // Null clears one side alone.
    a->SetDestination(nullptr);
    EXPECT_EQ(a->GetDestination(IAnimFilter::kIid, right.PutVoid()), E_NOINTERFACE);
    EXPECT_FALSE(right);
    EXPECT_EQ(b->GetSource(IAnimFilter::kIid, left.PutVoid()), S_OK);
    left.Reset();
    b->SetSource(nullptr);
    EXPECT_EQ(b->GetSource(IAnimFilter::kIid, left.PutVoid()), E_NOINTERFACE);
    EXPECT_EQ(References(static_cast<IAnimFilter*>(a.Get())), 1u);
    EXPECT_EQ(References(static_cast<IAnimFilter*>(b.Get())), 1u);
  }
}

TEST(PdibFilterLinking, ExchangesReferencesAndMarksEveryCall) {
  const auto probe = MakeProbe();
  const auto first = ComPtr<TestSource>::Attach(new TestSource(Picture(1, 1)));
  const auto second = ComPtr<TestSource>::Attach(new TestSource(Picture(1, 1)));
  probe->SetSource(first.Get());
  probe->selfChanged = false;
  probe->SetSource(first.Get());
  EXPECT_TRUE(probe->selfChanged);
  EXPECT_EQ(first->attachCount, 2);
  EXPECT_EQ(References(first.Get()), 2u);
  probe->SetSource(second.Get());
  EXPECT_EQ(References(first.Get()), 1u);
  EXPECT_EQ(References(second.Get()), 2u);
  // An object without the wanted interface counts as none.
  const auto destination = ComPtr<TestDestination>::Attach(new TestDestination);
  probe->SetSource(destination.Get());
  EXPECT_EQ(References(second.Get()), 1u);
  EXPECT_EQ(References(destination.Get()), 1u);
  probe->AttachDestination(destination.Get());
  EXPECT_EQ(destination->attachCount, 0);
  for (const auto& end : {first, second}) end->AttachDestination(nullptr);
  probe->AttachDestination(nullptr);
}

TEST(PdibFilterPrepare, CommitsOnceAndTellsSizesEveryTime) {
  ProbeRig test;
  Probe& probe = test.probe();
  probe.commits = probe.targets = 0;
  struct Case {
    const char* name;
    std::function<void()> change;
    bool commits;
  };
  const Case cases[] = {
      {"nothing", [] {}, false},
      {"parameter", [&] { probe.SetParameter("new", 1); }, true},
      {"the same parameter", [&] { probe.SetParameter("new", 1); }, false},
      {"size", [&] { test.rig.source->picture = Picture(9, 6); }, true},
      {"extent", [&] { test.rig.source->extentHeight = 4; }, true},
      {"offset", [&] { test.rig.source->offsetX = -2; }, true},
      {"target", [&] { test.rig.source->targetWidth = test.rig.source->targetHeight = 50; }, true},
  };
  for (const Case& step : cases) {
    SCOPED_TRACE(step.name);
    probe.commits = 0;
    step.change();
    const bool changed = test.rig.Prepare();
    EXPECT_EQ(changed, step.commits);
    EXPECT_EQ(probe.commits, step.commits ? 1 : 0);
    EXPECT_EQ(probe.selfChanged, step.commits);
    const std::vector<std::string> calls = test.rig.destination->TakeCalls();
    ASSERT_GE(calls.size(), 3u);
    const TestSource& source = *test.rig.source.Get();
    EXPECT_EQ(calls[calls.size() - 3],
              std::string("SetPictureSize ") + std::to_string(source.picture.width) + " 6");
    EXPECT_EQ(calls[calls.size() - 2],
              std::string("SetExtent ") + std::to_string(source.picture.width) + " " +
                  std::to_string(source.extentHeight > 0 ? source.extentHeight : 6));
    EXPECT_EQ(calls.back(), std::string("SetOffset ") + std::to_string(source.offsetX) + " 0");
    test.Settle();
  }
}

TEST(PdibFilterPrepare, SendsTheTargetSizeOnBeforeTheCommit) {
  ProbeRig test;
  test.rig.source->targetWidth = 100;
  test.rig.source->targetHeight = 80;
  test.rig.Prepare();
  // Once from the source's telling, once more as the values are taken over.
  EXPECT_THAT(test.rig.destination->TakeCalls(),
              ElementsAre("SetTargetSize 100 80", "SetTargetSize 100 80", "SetPictureSize 8 6",
                          "SetExtent 8 6", "SetOffset 0 0"));
}

TEST(PdibFilterPrepare, OneWalkCarriesAChangeThroughTheChain) {
  const auto head = MakeProbe();
  head->doubles = true;
  const auto tail = MakeProbe();
  Rig rig(Picture(5, 4), {ComPtr<CPdibFilter>(head.Get()), ComPtr<CPdibFilter>(tail.Get())});
  EXPECT_TRUE(rig.Prepare());
  EXPECT_THAT(rig.destination->TakeCalls(),
              ElementsAre("SetTargetSize -1 -1", "SetTargetSize -1 -1", "SetPictureSize 10 8",
                          "SetExtent 10 8", "SetOffset 0 0"));
  EXPECT_EQ(tail->commits, 1);
}

TEST(PdibFilterPrepare, RevisionsTellEachConsumerOfItsOwn) {
  ProbeRig test;
  Probe& probe = test.probe();
  const auto prepare = [&](int& revision, bool before = false) {
    bool changed = before;
    EXPECT_EQ(probe.Prepare(&changed, &revision, true), S_OK);
    return changed;
  };
  int first = -1;
  int second = -1;
  EXPECT_TRUE(prepare(first));
  EXPECT_TRUE(prepare(second));
  EXPECT_FALSE(prepare(first));
  EXPECT_FALSE(prepare(second));
  EXPECT_TRUE(prepare(first, true)) << "what was set stays set";

  probe.SetParameter("a", 1);
  EXPECT_TRUE(prepare(first));
  EXPECT_EQ(first, second + 1);
  // The first consumer pulls and clears the flags; the second learns of the change all the same.
  probe.selfChanged = false;
  EXPECT_TRUE(prepare(second));
  EXPECT_EQ(second, first);
  EXPECT_FALSE(prepare(second));
  EXPECT_FALSE(prepare(first));
  // A consumer that is behind catches up with the change; it makes no new one.
  probe.SetParameter("b", 1);
  EXPECT_TRUE(prepare(first));
  EXPECT_TRUE(prepare(second));
  EXPECT_EQ(second, first);
  // A change that nobody pulled counts again and again.
  probe.sourceChanged = true;
  const int before = first;
  EXPECT_TRUE(prepare(first));
  EXPECT_TRUE(prepare(first));
  EXPECT_EQ(first, before + 2);
  EXPECT_EQ(probe.revision, first);
}

TEST(PdibFilterPrepare, KeepsTheSourcesRevisionOnlyWhenAsked) {
  ProbeRig test;
  TestSource& source = *test.rig.source.Get();
  source.prepares.clear();
  test.rig.Prepare();
  EXPECT_THAT(source.prepares, ElementsAre(std::pair(1, true)));
  EXPECT_FALSE(test.probe().sourceChanged);
  source.revision = 2;
  EXPECT_TRUE(test.rig.Prepare());
  EXPECT_TRUE(test.probe().sourceChanged);
  test.probe().sourceChanged = false;
  source.prepares.clear();
  int revision = test.rig.revision;
  bool changed = false;
  test.probe().Prepare(&changed, &revision, false);
  EXPECT_THAT(source.prepares, ElementsAre(std::pair(-1, false)));
  EXPECT_TRUE(changed && test.probe().sourceChanged);
}

TEST(PdibFilter, GetInfoPreparesFirst) {
  ProbeRig test;
  test.probe().doubles = true;
  test.probe().SetParameter("wide", 1);
  test.rig.source->offsetX = 3;
  int got[6] = {};
  EXPECT_EQ(test.probe().GetInfo(&got[0], &got[1], &got[2], &got[3], &got[4], &got[5]), S_OK);
  EXPECT_THAT(got, ElementsAre(16, 12, 0, 0, 16, 12));
  test.probe().doubles = false;
  test.probe().SetParameter("as it is", 1);
  test.rig.source->extentWidth = 7;
  EXPECT_EQ(test.probe().GetInfo(&got[0], &got[1], &got[2], &got[3], &got[4], &got[5]), S_OK);
  EXPECT_THAT(got, ElementsAre(8, 6, 3, 0, 7, 6));
  EXPECT_TRUE(test.probe().sourceChanged);
}

TEST(PdibFilter, QuerySizeAsksTheDestination) {
  ProbeRig test;
  struct Case {
    int wantedW, wantedH;
    bool doubles;
    int w, h;
  };
  for (const Case& c : {Case{40, 30, false, 40, 30}, Case{40, 30, true, 20, 15},
                        Case{0, 30, false, -1, -1}, Case{40, -1, true, -1, -1}}) {
    test.rig.destination->wantedWidth = c.wantedW;
    test.rig.destination->wantedHeight = c.wantedH;
    test.probe().doubles = c.doubles;
    int w = 7;
    int h = 7;
    EXPECT_EQ(test.probe().QuerySize(&w, &h, 1.25), S_OK);
    EXPECT_EQ(w, c.w);
    EXPECT_EQ(h, c.h);
    EXPECT_EQ(test.rig.destination->askedAspect, 1.25);
  }
  int w = 7;
  int h = 7;
  EXPECT_EQ(MakeProbe()->QuerySize(&w, &h, 1.0), S_OK);
  EXPECT_EQ(w, -1);
  EXPECT_EQ(h, -1);
}

TEST(PdibFilter, ForwardsToItsNeighbours) {
  ProbeRig test;
  Probe& probe = test.probe();
  char* expanded = nullptr;
  double scale = 0;
  int a = 0;
  int b = 0;
  test.rig.destination->marks[0] = 4;
  test.rig.destination->marks[1] = 5;
  probe.SetZoom(0.5);
  probe.SetMark(1, 2);
  EXPECT_EQ(probe.GetMark(&a, &b), S_OK);
  EXPECT_EQ(a + b, 9);
  EXPECT_EQ(probe.ExpandText("$date", &expanded), S_FALSE);
  EXPECT_EQ(probe.QueryPrintScale(&scale), S_OK);
  EXPECT_EQ(scale, 2.5);
  EXPECT_EQ(probe.HostCall3(1, 2, 3), S_OK);
  EXPECT_EQ(probe.HostCall1(-4), S_OK);
  EXPECT_EQ(probe.HostCall1b(5), S_OK);
  probe.Lock();
  probe.Unlock();
  EXPECT_THAT(test.rig.destination->TakeCalls(),
              ElementsAre("SetZoom 0.500000", "SetMark 1 2", "ExpandText $date", "HostCall3 1 2 3",
                          "HostCall1 -4", "HostCall1b 5"));
  EXPECT_EQ(test.rig.destination->TakeLocks(), "LU");
  probe.SendToSource(77);
  probe.SetAbort(true);
  EXPECT_THAT(test.rig.source->messages, ElementsAre(77));
  EXPECT_THAT(test.rig.source->aborts, ElementsAre(true));

  const auto alone = MakeProbe();
  EXPECT_EQ(alone->SetZoom(1), S_OK);
  EXPECT_EQ(alone->SetMark(1, 2), S_OK);
  EXPECT_EQ(alone->GetMark(&a, &b), S_OK);
  EXPECT_EQ(alone->Lock(), S_OK);
  EXPECT_EQ(alone->Unlock(), S_OK);
  EXPECT_EQ(alone->ExpandText("x", &expanded), S_OK);
  EXPECT_EQ(expanded, nullptr);
  EXPECT_EQ(alone->QueryPrintScale(&scale), S_OK);
  EXPECT_EQ(alone->HostCall3(1, 2, 3), S_OK);
  EXPECT_EQ(alone->HostCall1(1), E_FAIL);
  EXPECT_EQ(alone->HostCall1b(1), S_OK);
  EXPECT_EQ(alone->SetAbort(true), S_OK);
}

TEST(PdibFilter, KeepsWorkPicturesByTheMemoryRule) {
  const auto probe = MakeProbe();
  struct Case {
    int w, h;
    int keptW, keptH;  // the picture that is there afterwards
  };
  // Each case starts from what the one before left.
  const Case cases[] = {{40, 20, 40, 20}, {20, 10, 40, 20},  // exactly a quarter stays
                        {19, 10, 19, 10},                    // one column less does not
                        {19, 11, 19, 11}, {19, 11, 19, 11}, {1, 52, 1, 52}, {1, 13, 1, 52},
                        {1, 12, 1, 12},   {3, 3, 3, 3},     {0, 2, 1, 2}};
  for (const bool asInput : {true, false}) {
    for (const Case& c : cases) {
      SCOPED_TRACE(std::to_string(c.w) + "x" + std::to_string(c.h));
      EXPECT_TRUE(asInput ? probe->EnsurePictures(c.w, c.h, 0, 0)
                          : probe->EnsurePictures(0, 0, c.w, c.h));
      const auto& picture = asInput ? probe->inputPicture : probe->outputPicture;
      ASSERT_TRUE(picture);
      EXPECT_EQ(picture->Width(), c.keptW);
      EXPECT_EQ(picture->Height(), c.keptH);
      EXPECT_TRUE(picture->ColourRows() && picture->MaskRows());
    }
  }
  MemoryPicture* const input = probe->inputPicture.get();
  EXPECT_TRUE(probe->EnsurePictures(0, 0, 0, 0));
  EXPECT_EQ(probe->inputPicture.get(), input);
  // Too large for a picture block: none, and the other one all the same.
  EXPECT_FALSE(probe->EnsurePictures(INT_MAX, INT_MAX, 4, 4));
  EXPECT_FALSE(probe->inputPicture);
  ASSERT_TRUE(probe->outputPicture);
  EXPECT_EQ(probe->outputPicture->Width(), 4);
}

TEST(PdibFilter, NamedValuesNeedRoomForTheirEnd) {
  const auto probe = MakeProbe();
  EXPECT_EQ(probe->SetNamedValue("key", "value"), S_OK);
  EXPECT_EQ(probe->SetNamedValue("Key", "other"), S_OK);
  EXPECT_EQ(probe->SetNamedValue("", "empty"), S_OK);
  struct Case {
    const char* key;
    int size;
    const char* result;  // null: it fails and writes nothing
  };
  for (const Case& c : {Case{"key", 6, "value"}, Case{"key", 5, nullptr}, Case{"key", 0, nullptr},
                        Case{"key", -1, nullptr}, Case{"none", 9, nullptr}, Case{"Key", 9, "other"},
                        Case{"", 9, "empty"}}) {
    char buffer[10] = "xxxxxxxxx";
    EXPECT_EQ(probe->GetNamedValue(c.key, buffer, c.size), c.result ? S_OK : E_FAIL) << c.key;
    EXPECT_STREQ(buffer, c.result ? c.result : "xxxxxxxxx");
  }
  probe->SetNamedValue("key", "");
  char buffer[2] = "x";
  EXPECT_EQ(probe->GetNamedValue("key", buffer, 1), S_OK);
  EXPECT_STREQ(buffer, "");
}

TEST(PdibFilter, KnowsItsClass) {
  const auto probe = MakeProbe();
  const int length = static_cast<int>(std::string(ProbeClass().progId).size());
  for (int size = -1; size <= length + 2; ++size) {
    std::string buffer(static_cast<std::size_t>(length) + 4, 'x');
    EXPECT_EQ(probe->GetName(buffer.data(), size), S_OK);
    if (size < 1) {
      EXPECT_EQ(buffer[0], 'x');
    } else {
      EXPECT_STREQ(buffer.c_str(), size > length ? ProbeClass().progId : "");
    }
    for (std::size_t i = static_cast<std::size_t>(std::max(0, size)); i < buffer.size(); ++i) {
      EXPECT_EQ(buffer[i], 'x');
    }
  }
  int order = 0;
  int kind = 0;
  probe->GetOrder(&order);
  probe->GetKind(&kind);
  EXPECT_EQ(order, 700);
  EXPECT_EQ(kind, 8);
  // A class that nobody knows has no name.
  EXPECT_EQ(probe->SetClassId(base::Guid("{00000001-0002-0003-0004-000000000005}")), S_OK);
  char name[8] = "x";
  probe->GetName(name, 8);
  EXPECT_STREQ(name, "");
}

TEST(PdibFilter, BaseReadRowsPassesRowsAndKeepsFailedPullsMarked) {
  ProbeRig test;
  Probe& probe = test.probe();
  GuardedRows rows(12, 9);
  struct Case {
    HRESULT result;
    bool marked;
  };
  for (const Case& c : {Case{S_OK, false}, Case{1, true}, Case{E_FAIL, true}, Case{S_OK, false}}) {
    rows.Reset();
    probe.selfChanged = probe.sourceChanged = !c.marked;
    if (c.result != S_OK) test.rig.source->results = {c.result};
    EXPECT_EQ(test.rig.Pull(rows, {2, 1, 3, 2, 4, 3}), c.result);
    EXPECT_EQ(probe.selfChanged, c.marked);
    EXPECT_EQ(probe.sourceChanged, c.marked);
    EXPECT_THAT(rows.WrittenOutside(2, 1, 4, 3), IsEmpty());
    EXPECT_EQ(rows.Part(2, 1, 1, 1).colour[0], *test.rig.source->picture.Colour(3, 2));
  }
  probe.SetSource(nullptr);
  probe.sourceChanged = true;
  EXPECT_NE(test.rig.Pull(rows, {0, 0, 0, 0, 4, 3}), S_OK);
  EXPECT_FALSE(probe.selfChanged);
  EXPECT_TRUE(probe.sourceChanged);
}

TEST(PdibFilter, VisibilityIsReadWithoutAChange) {
  ProbeRig test;
  struct Case {
    const char* text;
    bool visible;
  };
  for (const Case& c : {Case{"A=1", true}, Case{"A=1,Vis=0", false}, Case{"A=1", false},
                        Case{"Vis=x", false}, Case{"Vis=7", true}}) {
    test.probe().ReadVisibility(c.text);
    EXPECT_EQ(test.probe().visible, c.visible) << c.text;
    EXPECT_STREQ(test.probe().VisibilityText(), c.visible ? "" : ",Vis=0");
  }
  EXPECT_FALSE(test.rig.Prepare());
}

TEST(PdibFilter, MakesTheIconOfItsClass) {
  void* nothing = &nothing;
  EXPECT_EQ(MakeProbe()->CreateIcon(IAnimFilterIcon::kIid, &nothing), E_NOINTERFACE);
  EXPECT_EQ(nothing, nullptr);

  static FilterClass row = TestClass("Test.Icon.1");
  row.iconName = "icons_test";
  row.nameKey = "IDS_TEST";
  row.gloss = "Test name";
  const auto filter = Make(row);
  ComPtr<IAnimFilterIcon> icon;
  ASSERT_EQ(filter->CreateIcon(IAnimFilterIcon::kIid, icon.PutVoid()), S_OK);
  alignas(KvString) char store[sizeof(KvString)];
  KvString* text = icon->GetIconName(reinterpret_cast<KvString*>(store));
  EXPECT_STREQ(*text, "icons_test");
  text->~KvString();
  text = icon->GetNameKey(reinterpret_cast<KvString*>(store));
  EXPECT_STREQ(*text, "IDS_TEST");
  text->~KvString();
  const auto linkable = ComPtr<IAnimLinkable>::Query(icon.Get());
  ASSERT_TRUE(linkable);
  int status = 5;
  EXPECT_EQ(linkable->Link(nullptr, &status), S_OK);
  EXPECT_EQ(status, 0);
  struct Case {
    const char* attribute;  // null: the display name
    int size;
    const char* result;
  };
  for (const Case& c :
       {Case{nullptr, 10, "Test name"}, Case{nullptr, 9, "x"}, Case{"Name", 10, "Test name"},
        Case{"IsActive", 2, "1"}, Case{"IsActive", 1, "x"}, Case{"isactive", 9, "x"}}) {
    char buffer[16] = "x";
    EXPECT_EQ(c.attribute ? icon->GetAttribute(c.attribute, buffer, c.size)
                          : icon->GetLabel(buffer, c.size),
              S_OK);
    EXPECT_STREQ(buffer, c.result);
  }
}

}  // namespace
}  // namespace testing_support
