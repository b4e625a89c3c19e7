#include "core/PdibFilter.h"

#include <gmock/gmock.h>

#include <climits>
#include <functional>
#include <future>

#include "core/AnimIcon.h"
#include "tests/support/TestFilters.h"

namespace testing_support {
namespace {

using platform::ComPtr;
using testing::ElementsAre;

// Opens what a test looks at. Doubles the size of its picture when told to.
class Probe final : public RecordingFilter {
 public:
  using CPdibFilter::abort;
  using CPdibFilter::destination;
  using CPdibFilter::EnsurePictures;
  using CPdibFilter::HoldState;
  using CPdibFilter::inputPicture;
  using CPdibFilter::outputPicture;
  using CPdibFilter::ReadVisibility;
  using CPdibFilter::revision;
  using CPdibFilter::selfChanged;
  using CPdibFilter::source;
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

  HRESULT STDMETHODCALLTYPE SetAbort(bool newAbort) override {
    if (watched) abortSeen = watched->abort;
    return RecordingFilter::SetAbort(newAbort);
  }

  bool doubles = false;
  int commits = 0;
  const Probe* watched = nullptr;  // whose abort flag is looked at when this one is told
  bool abortSeen = true;
};

const FilterClass& ProbeClass() {
  static const FilterClass& row = TestClass("Test.Probe.1", 700, 8, MakeFilter<Probe>);
  return row;
}

ComPtr<Probe> MakeProbe() {
  return ComPtr<Probe>::Attach(static_cast<Probe*>(ProbeClass().make(ProbeClass())));
}

template <class Interface>
bool SameObject(Interface* linked, FilterObject& filter) {
  return ComPtr<IAnimFilter>::Query(linked) == &filter;
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
    EXPECT_TRUE(SameObject(a->destination.Get(), *b.Get()));
    EXPECT_TRUE(SameObject(b->source.Get(), *a.Get()));
    // Who is called marks its own change, who is attached that of its source.
    EXPECT_TRUE(a->selfChanged == fromLeft && a->sourceChanged == !fromLeft);
    EXPECT_TRUE(b->selfChanged == !fromLeft && b->sourceChanged == fromLeft);
    // Null clears one side alone; so does an object without the wanted interface.
    a->SetDestination(nullptr);
    EXPECT_FALSE(a->destination);
    EXPECT_TRUE(SameObject(b->source.Get(), *a.Get()));
    b->SetSource(ComPtr<TestDestination>::Attach(new TestDestination).Get());
    EXPECT_FALSE(b->source);
    EXPECT_EQ(References(static_cast<IAnimFilter*>(a.Get())), 1u);
    EXPECT_EQ(References(static_cast<IAnimFilter*>(b.Get())), 1u);
  }
}

TEST(PdibFilterLinking, AFilterIsNoNeighbourOfItsOwn) {
  const auto probe = MakeProbe();
  const auto itself = static_cast<IAnimFilter*>(probe.Get());
  EXPECT_EQ(probe->SetSource(itself), E_INVALIDARG);
  EXPECT_EQ(probe->SetDestination(itself), E_INVALIDARG);
  EXPECT_EQ(probe->AttachSource(itself), E_INVALIDARG);
  EXPECT_EQ(probe->AttachDestination(itself), E_INVALIDARG);
  EXPECT_FALSE(probe->source || probe->destination);
}

TEST(PdibFilterPrepare, CommitsOnceAndTellsSizesEveryTime) {
  ProbeRig test;
  Probe& probe = test.probe();
  probe.commits = 0;
  struct Case {
    const char* name;
    std::function<void()> change;
    bool commits;
    std::vector<std::string> told;
  };
  TestSource& source = *test.rig.source.Get();
  const std::vector<std::string> first = {"SetPictureSize 8 6", "SetExtent 8 6", "SetOffset 0 0"};
  const Case cases[] = {
      {"nothing", [] {}, false, first},
      {"parameter", [&] { probe.SetParameter("new", 1); }, true, first},
      {"the same parameter", [&] { probe.SetParameter("new", 1); }, false, first},
      {"size, extent and offset",
       [&] {
         source.picture = Picture(9, 6);
         source.extentHeight = 4;
         source.offsetX = -2;
       },
       true,
       {"SetPictureSize 9 6", "SetExtent 9 4", "SetOffset -2 0"}},
      {"target",
       [&] { source.targetWidth = source.targetHeight = 50; },
       true,
       {"SetPictureSize 9 6", "SetExtent 9 4", "SetOffset -2 0"}},
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
    EXPECT_EQ(std::vector(calls.end() - 3, calls.end()), step.told);
    test.Settle();
  }
}

// A target size goes on twice: as the source tells it, and as the values are taken over.
TEST(PdibFilterPrepare, OneWalkCarriesAChangeThroughTheChain) {
  const auto head = MakeProbe();
  head->doubles = true;
  const auto tail = MakeProbe();
  Rig rig(Picture(5, 4), {ComPtr<FilterObject>(head.Get()), ComPtr<FilterObject>(tail.Get())});
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

// As a consumer that has seen nothing yet: the source counts as changed, and nobody's revision is
// used up.
TEST(PdibFilterPrepare, GetInfoKnowsNoRevision) {
  ProbeRig test;
  Probe& probe = test.probe();
  TestSource& source = *test.rig.source.Get();
  source.picture = Picture(9, 7);
  source.extentWidth = 5;
  source.extentHeight = 6;
  source.offsetX = -2;
  source.offsetY = 3;
  source.prepares.clear();
  const int before = probe.revision;
  int info[6] = {};
  EXPECT_EQ(probe.GetInfo(&info[0], &info[1], &info[2], &info[3], &info[4], &info[5]), S_OK);
  EXPECT_THAT(info, ElementsAre(9, 7, -2, 3, 5, 6));
  EXPECT_THAT(source.prepares, ElementsAre(std::pair(-1, false)));
  EXPECT_TRUE(probe.sourceChanged);
  EXPECT_EQ(probe.revision, before);
  EXPECT_EQ(probe.GetInfo(nullptr, nullptr, nullptr, nullptr, nullptr, nullptr), S_OK);
  // A consumer that keeps a revision learns of it.
  EXPECT_TRUE(test.rig.Prepare());
}

// An abort is with the source before a filter behind it stops.
TEST(PdibFilter, AnAbortRunsToTheSourceFirst) {
  const auto head = MakeProbe();
  const auto tail = MakeProbe();
  head->watched = tail.Get();
  Rig rig(Picture(5, 4), {ComPtr<FilterObject>(head.Get()), ComPtr<FilterObject>(tail.Get())});
  EXPECT_EQ(tail->SetAbort(true), S_OK);
  EXPECT_FALSE(head->abortSeen);
  EXPECT_TRUE(head->abort && tail->abort);
  EXPECT_THAT(rig.source->aborts, ElementsAre(true));
  tail->SetAbort(false);
  EXPECT_TRUE(head->abortSeen);
  EXPECT_FALSE(head->abort || tail->abort);
}

// What changes or shows a field waits for who holds the state.
TEST(PdibFilter, TheStateGuardsItsFields) {
  const auto probe = MakeProbe();
  const std::function<void()> kCalls[] = {[&] { probe->SetPictureSize(1, 2); },
                                          [&] { probe->SetExtent(1, 2); },
                                          [&] { probe->SetOffset(1, 2); },
                                          [&] { probe->SetTargetSize(1, 2); },
                                          [&] { probe->SetMark(1, 2); },
                                          [&] { probe->SetNamedValue("a", "b"); },
                                          [&] {
                                            int size[6];
                                            probe->GetInfo(&size[0], &size[1], &size[2], &size[3],
                                                           &size[4], &size[5]);
                                          },
                                          [&] {
                                            char value[4];
                                            probe->GetNamedValue("a", value, 4);
                                          },
                                          [&] {
                                            bool changed = false;
                                            int revision = -1;
                                            probe->Prepare(&changed, &revision, true);
                                          }};
  for (const auto& call : kCalls) {
    auto held = probe->HoldState();
    auto other = std::async(std::launch::async, call);
    EXPECT_EQ(other.wait_for(std::chrono::milliseconds(10)), std::future_status::timeout)
        << &call - kCalls;
    held.unlock();
    other.get();
  }
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

TEST(PdibFilter, ForwardsToItsNeighbours) {
  ProbeRig test;
  Probe& probe = test.probe();
  char* expanded = nullptr;
  double scale = 0;
  probe.SetZoom(0.5);
  probe.SetMark(1, 2);
  int mark[2] = {};
  probe.GetMark(&mark[0], &mark[1]);
  EXPECT_THAT(mark, ElementsAre(11, 12));
  EXPECT_EQ(probe.ExpandText("$date", &expanded), S_FALSE);
  probe.QueryPrintScale(&scale);
  EXPECT_EQ(scale, 2.5);
  probe.HostCall3(1, 2, 3);
  probe.HostCall1(-4);
  probe.HostCall1b(5);
  probe.Lock();
  probe.Unlock();
  EXPECT_THAT(test.rig.destination->TakeCalls(),
              ElementsAre("SetZoom 0.500000", "SetMark 1 2", "ExpandText $date", "HostCall3 1 2 3",
                          "HostCall1 -4", "HostCall1b 5"));
  EXPECT_EQ(test.rig.destination->TakeLocks(), "LU");
  probe.SendToSource(77);
  EXPECT_THAT(test.rig.source->messages, ElementsAre(77));
  EXPECT_EQ(MakeProbe()->HostCall1(1), E_FAIL) << "alone";
}

TEST(PdibFilter, TextsNeedRoomForTheirEnd) {
  const auto probe = MakeProbe();
  probe->SetNamedValue("key", "value");
  probe->SetNamedValue("Key", "other");
  struct Case {
    const char* key;  // null: the filter's name
    int size;
    const char* result;  // null: it fails and writes nothing
  };
  for (const Case& c : {Case{"key", 6, "value"}, Case{"key", 5, nullptr}, Case{"key", -1, nullptr},
                        Case{"none", 9, nullptr}, Case{"Key", 9, "other"},
                        Case{nullptr, 13, "Test.Probe.1"}, Case{nullptr, 12, ""}}) {
    char buffer[16] = "xxxxxxxxxxxxxxx";
    EXPECT_EQ(c.key ? probe->GetNamedValue(c.key, buffer, c.size) : probe->GetName(buffer, c.size),
              c.result ? S_OK : E_FAIL);
    EXPECT_STREQ(buffer, c.result ? c.result : "xxxxxxxxxxxxxxx") << c.size;
  }
  // A class that nobody knows has no name.
  EXPECT_EQ(probe->SetClassId(base::Guid("{00000001-0002-0003-0004-000000000005}")), S_OK);
  char name[8] = "x";
  probe->GetName(name, 8);
  EXPECT_STREQ(name, "");
}

TEST(PdibFilter, VisibilityIsReadWithoutAChange) {
  ProbeRig test;
  for (const auto& [text, visible] :
       {std::pair("A=1", true), {"A=1,Vis=0", false}, {"A=1", false}, {"Vis=7", true}}) {
    test.probe().ReadVisibility(text);
    EXPECT_STREQ(test.probe().VisibilityText(), visible ? "" : ",Vis=0") << text;
  }
  EXPECT_FALSE(test.rig.Prepare());
}

TEST(PdibFilter, MakesTheIconOfItsClass) {
  FilterClass row = TestClass("Test.Icon.1");
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
  linkable->Link(nullptr, nullptr);
  struct Case {
    const char* attribute;  // null: the display name
    int size;
    const char* result;
  };
  for (const Case& c :
       {Case{nullptr, 10, "Test name"}, Case{nullptr, 9, "x"}, Case{"Name", 10, "Test name"},
        Case{"IsActive", 2, "1"}, Case{"IsActive", 1, "x"}, Case{"isactive", 9, "x"}}) {
    char buffer[16] = "x";
    c.attribute ? icon->GetAttribute(c.attribute, buffer, c.size) : icon->GetLabel(buffer, c.size);
    EXPECT_STREQ(buffer, c.result);
  }
}

}  // namespace
}  // namespace testing_support
