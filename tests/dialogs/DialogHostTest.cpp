// The component between a dialog's window, its filters and the host.
#include <olectl.h>

#include "core/PdibFilter.h"
#include "core/TransferFormats.h"
#include "tests/dialogs/DialogRig.h"
#include "tests/filters/ClassOf.h"
#include "tests/support/Sheets.h"
#include "toolkit/Shortcut.h"

namespace {

using platform::ComPtr;
using testing_support::DialogRig;
using testing_support::TextFilter;
using toolkit::ControlKind;

constexpr char kSepia[] = "ZNFilter.Sepia.1";

// The number behind the ProgID of an instance id is the process's.
std::string Plain(std::string log) {
  for (std::size_t at = 0; (at = log.find("ZNFilter.", at)) != log.npos; ++at) {
    const std::size_t number = log.find_first_of("# \n", at);
    if (number == log.npos || log[number] != '#') continue;
    log.replace(at, log.find_first_not_of("0123456789", number + 1) - at, "ID");
  }
  return log;
}

// What the host is told in a change, and at the end.
constexpr char kChange[] = "messages 5 page=1 59925 0 4\nmessages 5 page=1 59926 0 4\n";
constexpr char kClosing[] =
    "messages 15 page=1\n"
    "messages 16 page=1 nobody\n"
    "messages 5 page=1 59908 \"ID\" 0\n"
    "registry 8 ID\n";

class DialogHost : public DialogRig {
 protected:
  void SetUp() override { Make(kSepia); }
  std::string Log() { return Plain(TakeLog()); }
  bool IsMixed() {
    const auto note = Window().ByName("No common values", ControlKind::Static);
    return Window().At(note).isVisible;
  }
};

// --- linking

TEST_F(DialogHost, LinkWantsThreeOfTheFourInterfaces) {
  EXPECT_EQ(linkStatus, 0);
  for (const int lacks : std::initializer_list<int>{HOST_REGISTRY, HOST_PAGE, HOST_MESSAGES, 15}) {
    auto* wrong = NewDialogHost(lacks);
    int status = 0;
    const auto linkable = ComPtr<IAnimLinkable>::Query(dialog.Get());
    EXPECT_EQ(linkable->Link(static_cast<IUnknown*>(DialogHostUnknown(wrong)), &status), S_OK);
    EXPECT_EQ(status, -1) << lacks;
    EXPECT_EQ(DialogHostReferences(wrong), 1) << "nothing of a refused host is kept";
    EXPECT_EQ(dialog->Open(0, 0, 0), S_FALSE);
    EXPECT_EQ(dialog->Show(), S_OK);
    EXPECT_EQ(dialog->HostForward(5), E_FAIL);
    EXPECT_EQ(dialog->Close(), S_OK);
    EXPECT_STREQ(DialogHostLog(wrong), "");
    ReleaseDialogHost(wrong);
  }
  EXPECT_EQ(DialogHostReferences(host), 1) << "the first host was let go";
  EXPECT_EQ(ComPtr<IAnimLinkable>::Query(dialog.Get())->Link(nullptr, nullptr), S_OK);
}

TEST(DialogLink, TheOptionalInterfaceMayBeMissing) {
  auto* host = NewDialogHost(HOST_OPTIONAL);
  const auto linkable = ComPtr<IAnimLinkable>::Query(
      ComPtr<IUnknown>::Attach(dialogs::NewFilterDialog(kSepia)).Get());
  int status = -1;
  linkable->Link(static_cast<IUnknown*>(DialogHostUnknown(host)), &status);
  EXPECT_EQ(status, 0);
  EXPECT_EQ(DialogHostReferences(host), 4);
  linkable->Unlink();
  EXPECT_EQ(DialogHostReferences(host), 1);
  ReleaseDialogHost(host);
}

TEST_F(DialogHost, NamesItsClass) {
  char name[40] = "untouched";
  EXPECT_EQ(dialog->GetName(name, 16), E_FAIL);
  EXPECT_STREQ(name, "untouched");
  EXPECT_EQ(dialog->GetName(name, 17), S_OK);
  EXPECT_STREQ(name, kSepia);
  EXPECT_EQ(dialog->HostForward(77), S_OK);
  EXPECT_EQ(TakeLog(), "registry 11 77\n");
}

TEST_F(DialogHost, ConnectionPointHoldsTheFilters) {
  const auto container = ComPtr<IConnectionPointContainer>::Query(dialog.Get());
  ComPtr<IConnectionPoint> point;
  EXPECT_EQ(container->FindConnectionPoint(IAnimFilter::kIid, point.Put()), CONNECT_E_NOCONNECTION);
  ASSERT_EQ(container->FindConnectionPoint(IAnimFilterParameter::kIid, point.Put()), S_OK);
  const auto filter = ComPtr<TextFilter>::Attach(new TextFilter("Sepia=010"));
  DWORD first = 0, second = 0;
  EXPECT_EQ(point->Advise(nullptr, &first), E_POINTER);
  EXPECT_EQ(point->Advise(filter.Get(), &first), S_OK);
  EXPECT_EQ(point->Advise(filter.Get(), &second), S_OK);
  EXPECT_EQ(point->Unadvise(first), S_OK);
  EXPECT_EQ(point->Unadvise(first), CONNECT_E_NOCONNECTION);
  EXPECT_EQ(point->Unadvise(99), CONNECT_E_NOCONNECTION);
  ComPtr<IEnumConnections> list;
  ASSERT_EQ(point->EnumConnections(list.Put()), S_OK);
  CONNECTDATA data = {};
  ASSERT_EQ(list->Next(1, &data, nullptr), S_OK);
  EXPECT_EQ(data.dwCookie, second);
  data.pUnk->Release();
  EXPECT_EQ(list->Next(1, &data, nullptr), S_FALSE);
}

// --- opening, closing

TEST_F(DialogHost, OpensAndClosesInOrder) {
  OpenDialog();
  EXPECT_EQ(Log(),
            "registry 7 ID runnable\n"
            "messages 14 ZN_FilterDialog_Dispatcher\n"
            "messages 16 page=1 receiver\n");
  EXPECT_EQ(Window().title, "Sepia");
  EXPECT_FALSE(Window().isVisible);
  EXPECT_FALSE(Window().isOnTop);
  dialog->Show();
  EXPECT_EQ(Log(),
            "registry 9 ID\n"
            "messages 14 GalleryPage\n"
            "messages 5 page=2 58741 handle\n"
            "messages 15 page=2\n");
  EXPECT_TRUE(Window().isVisible);
  EXPECT_EQ(Window().activations, 1);
  dialog->Close();
  EXPECT_EQ(Log(), kClosing);
  EXPECT_EQ(backend.Counts(), toolkit::BackendCounts());
  EXPECT_EQ(DialogHostReferences(host), 1);
}

TEST_F(DialogHost, CountsThePagesThatHaveItOpen) {
  OpenDialog();
  OpenDialog();
  EXPECT_EQ(backend.WindowsMade(), 1u);
  dialog->Close();
  EXPECT_EQ(backend.Counts().windows, 1);
  EXPECT_GT(DialogHostReferences(host), 1);
  dialog->Close();
  EXPECT_EQ(backend.Counts().windows, 0);
  TakeLog();
  dialog->Close();
  EXPECT_EQ(TakeLog(), "") << "nobody is there to be told";
}

TEST_F(DialogHost, GivesTheWindowsHandle) {
  AnimWindowHandle handle = this;
  EXPECT_EQ(dialog->GetWindowHandle(&handle), 1);
  EXPECT_EQ(handle, nullptr);
  OpenDialog();
  EXPECT_EQ(dialog->GetWindowHandle(&handle), S_OK);
  EXPECT_EQ(handle, Window().Handle());
}

TEST_F(DialogHost, WorksWithoutAWindowSystem) {
  backend.refusesWindows = true;
  TextFilter* const filter = Attach("Sepia=050");
  EXPECT_EQ(dialog->Open(0, 0, 0), S_FALSE);
  EXPECT_EQ(Log(),
            "page 19 ButtonTop 0\n"
            "registry 7 ID runnable\n"
            "messages 14 ZN_FilterDialog_Dispatcher\n"
            "messages 16 page=1 receiver\n");
  Call("ButtonTop");
  EXPECT_TRUE(filter->given.empty()) << "there is nothing to give";
  Call("bu_lock");
  EXPECT_NE(Log().find("page 19 ButtonLock 1\n"), std::string::npos);
  int unlocked = 1;
  EXPECT_EQ(Call("LockUnlocked", &unlocked), 0);
  EXPECT_EQ(unlocked, 0);
  dialog->Close();
}

TEST_F(DialogHost, GoesOnTopInAModeAndReadsNothing) {
  Attach("Sepia=050");
  dialog->SetModeValue(9);
  OpenDialog();
  EXPECT_TRUE(Window().isOnTop);
  EXPECT_EQ(Position("Strength"), 0);
  EXPECT_FALSE(IsMixed());
  EXPECT_FALSE(Window().At(Window().ByName("Apply", ControlKind::Button)).isEnabled);
  TakeLog();
  Window().Slide(Slider("Strength"), 3);
  EXPECT_EQ(Log(), "messages 5 page=1 59925 9 4\nmessages 5 page=1 59926 9 4\n");
}

TEST_F(DialogHost, ClosesWithItsWindow) {
  OpenDialog();
  TakeLog();
  Window().AskToClose();
  EXPECT_EQ(Log(), kClosing);
  EXPECT_EQ(backend.Counts(), toolkit::BackendCounts());
  EXPECT_EQ(DialogHostReferences(host), 2) << "the messages stay linked";
}

// --- the common text

TEST_F(DialogHost, ShowsTheDefaultOverNoFilter) {
  OpenDialog();
  EXPECT_EQ(Position("Strength"), 0);
  EXPECT_TRUE(IsMixed());
  Window().Slide(Slider("Strength"), 30);
  EXPECT_EQ(Position("Strength"), 30) << "the default comes once";
  int enabled = 0;
  EXPECT_EQ(Call("ButtonTopCopyEnabled", &enabled), 1);
  EXPECT_EQ(enabled, 1);
}

// Of filters whose number one has gone again, too.
TEST_F(DialogHost, ShowsWhatAllFiltersHold) {
  const struct {
    std::vector<std::string> texts;
    bool isFirstGone;
    int position;
    bool isMixed;
  } cases[] = {{{"Sepia=040"}, false, 40, false},
               {{"Sepia=040", "Sepia=040"}, false, 40, false},
               {{"Sepia=011", "Sepia=022"}, false, 0, true},
               {{"Sepia=011", "Sepia=022"}, true, 22, false},
               {{"Sepia=033," + std::string(5000, 'x')}, false, 33, false}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.texts[0].substr(0, 20));
    Make(kSepia);
    for (const std::string& text : c.texts) Attach(text);
    if (c.isFirstGone) ComPtr<IConnectionPoint>::Query(dialog.Get())->Unadvise(1);
    OpenDialog();
    EXPECT_EQ(Position("Strength"), c.position);
    EXPECT_EQ(IsMixed(), c.isMixed);
    EXPECT_EQ(Call("ButtonTopCopyEnabled"), c.isMixed);
    dialog->Close();
  }
}

TEST_F(DialogHost, LeavesTheControlsOverDifferentFilters) {
  TextFilter* const first = Attach("Sepia=040");
  OpenDialog();
  TextFilter* const second = Attach("Sepia=041");
  dialog->Show();
  EXPECT_EQ(Position("Strength"), 40);
  EXPECT_TRUE(IsMixed());
  TakeLog();
  Call("ButtonTop");
  EXPECT_EQ(Log(), kChange);
  EXPECT_EQ(first->text, "Sepia=040");
  EXPECT_EQ(second->text, "Sepia=040");
  EXPECT_FALSE(IsMixed());
}

TEST_F(DialogHost, AFilterWithoutATextCountsAsDifferent) {
  TextFilter* const mute = Attach("Sepia=010");
  mute->answers = false;
  TextFilter* const other = Attach("Sepia=020");
  OpenDialog();
  EXPECT_TRUE(IsMixed());
  Call("ButtonTop");
  EXPECT_TRUE(mute->given.empty()) << "no value was changed";
  EXPECT_EQ(other->given, std::vector<std::string>{"Sepia=000"});
  Window().Slide(Slider("Strength"), 7);
  EXPECT_EQ(mute->given, std::vector<std::string>{"Sepia=007"});
}

TEST_F(DialogHost, AnnouncesTheFirstChangeOnce) {
  Attach("Sepia=040");
  dialog->SetFirstChange();
  OpenDialog();
  EXPECT_TRUE(IsMixed()) << "counts as different until it is announced";
  EXPECT_EQ(Position("Strength"), 0);
  TakeLog();
  Call("ButtonTop");
  EXPECT_EQ(Log(),
            "messages 5 page=1 59925 0 4\n"
            "messages 5 page=1 59911 \"ID\" 0\n"
            "messages 5 page=1 59926 0 4\n");
  EXPECT_FALSE(IsMixed());
  Call("ButtonTop");
  EXPECT_EQ(Log(), kChange);
  dialog->SetFirstChange();
  dialog->ClearFirstChange();
  Call("ButtonTop");
  EXPECT_EQ(Log().find("59911"), std::string::npos);
}

TEST_F(DialogHost, TheLockKeepsTheTextWhenTheFiltersGo) {
  Attach("Sepia=040");
  OpenDialog();
  Window().Click(Window().ByName("Lock", ControlKind::ToggleButton));
  EXPECT_EQ(Call("LockUnlocked"), 0);
  ComPtr<IConnectionPoint>::Query(dialog.Get())->Unadvise(1);
  dialog->Show();
  EXPECT_EQ(Position("Strength"), 40);
  EXPECT_TRUE(IsMixed());
  Window().Click(Window().ByName("Lock", ControlKind::ToggleButton));
  EXPECT_EQ(Call("LockUnlocked"), 1);
}

// --- changes

TEST_F(DialogHost, EachRealChangeIsOneUpdate) {
  TextFilter* const filter = Attach("Sepia=040");
  OpenDialog();
  dialog->Show();
  for (const bool echoes : {false, true}) {
    backend.echoes = echoes;
    TakeLog();
    filter->given.clear();
    const int from = Position("Strength");
    Window().Slide(Slider("Strength"), from);
    EXPECT_EQ(Log(), "");
    Window().Slide(Slider("Strength"), from + 1);
    EXPECT_EQ(Log(), kChange);
    EXPECT_EQ(filter->given.size(), 1u);
  }
  EXPECT_EQ(filter->text, "Sepia=042");
}

TEST_F(DialogHost, ResetMessageBringsTheDefaultBack) {
  TextFilter* const filter = Attach("Sepia=040");
  OpenDialog();
  const auto receiver = ComPtr<IAnimMessageReceiver>::Query(dialog.Get());
  EXPECT_EQ(receiver->OnHostMessage(nullptr), E_POINTER);
  for (const AnimMessage& other :
       {AnimMessage{1, 57808, 0, 2}, AnimMessage{1, 57808, 1, 3}, AnimMessage{1, 57809, 1, 2}}) {
    receiver->OnHostMessage(&other);
  }
  EXPECT_TRUE(filter->given.empty());
  const AnimMessage reset = {1, 57808, 1, 2};
  receiver->OnHostMessage(&reset);
  EXPECT_EQ(filter->text, "Sepia=000");
  EXPECT_EQ(Position("Strength"), 0);
}

// --- the debug window

TEST_F(DialogHost, AKeyOpensAWindowThatGivesTheFiltersAnyText) {
  TextFilter* const filter = Attach("Sepia=033");
  OpenDialog();
  toolkit::FakeWindow& own = Window();
  EXPECT_FALSE(own.Press(toolkit::ShortcutOf("Ctrl+D")));
  EXPECT_TRUE(own.Press(toolkit::ShortcutOf("Ctrl+Shift+D")));
  toolkit::FakeWindow& debug = Window();
  ASSERT_NE(&debug, &own);
  const auto edit = debug.ByName("Parameter", toolkit::ControlKind::Edit);
  EXPECT_EQ(debug.At(edit).text, "Sepia=033");
  EXPECT_EQ(testing_support::Drawn(debug),
            "Debug 420x42\n ; 8,8 337x26 7 ParameterSepia=033 ; 353,8 59x26 2 &Apply\n");
  TakeLog();
  debug.Type(edit, "Sepia=077");
  EXPECT_TRUE(debug.Click(debug.ByName("Apply", toolkit::ControlKind::Button)));
  EXPECT_EQ(filter->given, std::vector<std::string>{"Sepia=077"});
  EXPECT_EQ(Log(), kChange);
  EXPECT_EQ(own.At(own.ByName("Strength", toolkit::ControlKind::Slider)).value, 77);
  dialog->Close();
  DropDialog();
  EXPECT_EQ(backend.Counts(), toolkit::BackendCounts()) << "it goes with the dialog";
}

// --- named calls

TEST_F(DialogHost, NamedCallsAnswerAsTheyShould) {
  OpenDialog();
  TakeLog();
  EXPECT_EQ(runnable->Dispatch(nullptr, 0, 0, 0), E_POINTER);
  EXPECT_EQ(Call("TimerCallback"), -1);
  EXPECT_EQ(Log(), "");
  EXPECT_EQ(Call("TimerCallback", "UpdateFilter"), -1);
  EXPECT_EQ(Log(), kChange);
  EXPECT_EQ(Call("CheckDragDrop"), -2);
  EXPECT_EQ(Call("ButtonClose"), 0);
  EXPECT_EQ(Call("NobodyKnowsThis", "text"), 0);
  EXPECT_EQ(Call("GetContexthelp"), 0);
  EXPECT_EQ(Log(), "");
  Call("GetContexthelp", "some help");
  EXPECT_EQ(Log(),
            "messages 14 ToolBarNotifications\n"
            "messages 5 page=4 57953 \"some help\" 0\n"
            "messages 15 page=4\n");
  struct {
    const char* name;
    const char* number;
  } const bubbles[] = {{"GenerateBubbleHelpText", "57361"},
                       {"ShowBubbleHelpText", "57362"},
                       {"HideBubbleHelpText", "57363"}};
  for (const auto& bubble : bubbles) {
    EXPECT_EQ(runnable->Dispatch(bubble.name, 12, 0, 0), 0);
    EXPECT_EQ(Log(), "messages 14 GalleryPage\nmessages 5 page=2 " + std::string(bubble.number) +
                         " 12 0\nmessages 15 page=2\n");
  }
}

TEST_F(DialogHost, LocalizeAsksTheHostFirst) {
  SetDialogHostWords(host, "IDS_POWER", "Kraft", &testing_support::SetString);
  char words[20] = "untouched";
  EXPECT_EQ(Call("Localize", "IDS_POWER", words, 5), 0);
  EXPECT_STREQ(words, "untouched") << "one byte too short";
  EXPECT_EQ(Call("Localize", "IDS_POWER", words, 6), 0);
  EXPECT_STREQ(words, "Kraft");
  Call("Localize", "IDS_COLOR_GREEN", words, sizeof words);
  EXPECT_STREQ(words, "Green") << "our own";
  backend.language = "de";
  Call("Localize", "IDS_COLOR_GREEN", words, sizeof words);
  EXPECT_STREQ(words, "Gr\xFCn") << "in the code page";
  Call("Localize", "IDS_NO_SUCH_KEY", words, sizeof words);
  EXPECT_STREQ(words, "IDS_NO_SUCH_KEY");
  EXPECT_EQ(Call("Localize", nullptr, nullptr, 10), 0);
  OpenDialog();
  EXPECT_NE(Slider("Kraft"), 0);
}

TEST_F(DialogHost, IconsAskTheSameHostForTheirName) {
  const FilterClass& row = testing_support::ClassOf(kSepia);
  const auto filter = ComPtr<FilterObject>::Attach(row.make(row));
  ComPtr<IAnimFilterIcon> icon;
  ASSERT_EQ(filter->CreateIcon(IAnimFilterIcon::kIid, icon.PutVoid()), S_OK);
  const auto linkable = ComPtr<IAnimLinkable>::Query(icon.Get());
  const auto name = [&] {
    char text[40] = "";
    linkable->Link(static_cast<IUnknown*>(DialogHostUnknown(host)), nullptr);
    icon->GetDisplayName(text, sizeof text);
    return std::string(text);
  };
  EXPECT_EQ(name(), row.gloss);
  SetDialogHostWords(host, "IDS_SEPIA_NAME", "Alte Fotografie", &testing_support::SetString);
  EXPECT_EQ(name(), "Alte Fotografie");
}

TEST_F(DialogHost, TheCopyButtonHasAMenu) {
  TextFilter* const filter = Attach("Sepia=040");
  TextFilter* const other = Attach("Sepia=050");
  OpenDialog();
  const auto choose = [&](std::size_t entry) {
    bool canCopy = false;
    backend.onMenu = [&](const std::vector<toolkit::MenuEntry>& entries) {
      EXPECT_EQ(entries.size(), 2u);
      canCopy = entries.at(0).isEnabled;
      return entries.at(entry).id;
    };
    const auto apply = Window().ByName("Apply", ControlKind::Button);
    EXPECT_TRUE(Window().ContextMenu(apply, {3, 4}));
    const toolkit::Rect place = Window().At(apply).place;
    EXPECT_EQ(backend.menuPlace, (toolkit::Point{place.x + 3, place.y + 4}));
    return canCopy;
  };
  Window().Slide(Slider("Strength"), 30);
  filter->text = "Sepia=001";
  dialog->Show();
  EXPECT_TRUE(IsMixed());
  EXPECT_TRUE(choose(0));
  EXPECT_EQ(filter->text, "Sepia=030");
  EXPECT_EQ(other->text, "Sepia=030");
  TakeLog();
  EXPECT_FALSE(IsMixed());
}

TEST_F(DialogHost, DeleteTellsTheHostInOrder) {
  OpenDialog();
  TakeLog();
  const std::string told =
      "messages 14 ZN_FilterDialog_Dispatcher\n"
      "messages 5 page=1 59925 0 4\n"
      "messages 5 page=1 59937 \"ID\" 0\n"
      "messages 5 page=1 59961 \"ID\" 0\n"
      "messages 5 page=1 59926 0 4\n";
  Window().Click(Window().ByName("Remove", ControlKind::Button));
  EXPECT_EQ(Log(), told);
  backend.onMenu = [](const auto& entries) { return entries.at(1).id; };
  Window().ContextMenu(Window().ByName("Apply", ControlKind::Button), {3, 4});
  EXPECT_EQ(Log(), told);
}

TEST_F(DialogHost, DragsTheFilterOut) {
  Attach("Sepia=040");
  OpenDialog();
  std::string id, filter, parameter;
  DWORD allowedEffects = 0;
  backend.onDrag = [&](IDataObject* object, IDropSource* source, std::uint32_t allowed,
                       std::uint32_t& effect) {
    id = ReadTransferText(object, TransferFormat::FilterDialogFitForIA).value_or("none");
    filter = ReadTransferText(object, TransferFormat::FilterFitForIA).value_or("none");
    parameter = ReadFilterParameter(object).value_or("none");
    allowedEffects = allowed;
    EXPECT_EQ(source->QueryContinueDrag(TRUE, MK_LBUTTON), 262401);
    EXPECT_EQ(source->QueryContinueDrag(FALSE, MK_LBUTTON), 0);
    EXPECT_EQ(source->QueryContinueDrag(FALSE, 0), 262400);
    EXPECT_EQ(source->GiveFeedback(1), 262402);
    effect = 2;
    return toolkit::DragEnd::Dropped;
  };
  TakeLog();
  EXPECT_TRUE(Window().BeginDrag(Window().ByName("Apply", ControlKind::Button)) ||
              Call("ButtonTopDrag") == 0);
  EXPECT_EQ(Plain(id), "ID");
  EXPECT_EQ(filter, id);
  EXPECT_EQ(parameter, "Sepia=040");
  EXPECT_EQ(allowedEffects, 3u);
  EXPECT_EQ(Log(),
            "messages 14 ProcessFilterHistoryPage\n"
            "messages 5 page=3 59953 \"ID\" 0\n"
            "messages 15 page=3\n"
            "messages 14 ProcessFilterHistoryPage\n"
            "messages 5 page=3 59954 \"ID\" 0\n"
            "messages 15 page=3\n");
}

TEST_F(DialogHost, DocksWhenTheHostSaysSo) {
  OpenDialog();
  Window().Move({12, 34});
  SetDialogHostAnswer(host, 1);
  TakeLog();
  const auto dock = Window().ByName("Dock", ControlKind::ToggleButton);
  Window().Click(dock);
  EXPECT_EQ(Log(), "messages 5 page=1 59970 \"FilterId=\"ID\";\r\nPosX=12;\r\nPosY=34;\r\n\" 0\n");
  EXPECT_EQ(Window().At(dock).value, 1);
  SetDialogHostAnswer(host, 0);
  Window().Click(dock);
  EXPECT_EQ(Window().At(dock).value, 0);
  Window().Click(dock);
  EXPECT_EQ(Window().At(dock).value, 0) << "a host that cannot dock";
}

TEST_F(DialogHost, HelpKeySendsTheHelpText) {
  OpenDialog();
  TakeLog();
  EXPECT_TRUE(Window().Press(toolkit::Key::F1));
  EXPECT_NE(TakeLog().find("57953 \"Tones the picture"), std::string::npos);
}

// --- hosts that act from inside

class ActingHost : public DialogHost {
 protected:
  // Does `action` at the first line that holds `part`.
  void ActAt(std::string part, std::function<void()> action) {
    wanted = std::move(part);
    act = std::move(action);
    SetDialogHostHook(
        host,
        [](void* context, const char* line) {
          auto& rig = *static_cast<ActingHost*>(context);
          if (!rig.act || std::string(line).find(rig.wanted) == std::string::npos) return;
          std::exchange(rig.act, nullptr)();
        },
        this);
  }

  std::string wanted;
  std::function<void()> act;
};

TEST_F(ActingHost, MayCloseTheDialogInEveryCall) {
  for (const char* part : {"registry 7", "14 ZN_Filter",   "16 page=1 receiver",
                           "59925",      "59926",          "registry 9",
                           "58741",      "14 GalleryPage", "15 page=2",
                           "57953",      "59937",          "59961",
                           "59911",      "59953",          "59954",
                           "15 page=1",  "nobody",         "59908",
                           "registry 8", "59970"}) {
    SCOPED_TRACE(part);
    Make(kSepia);
    TextFilter* const filter = Attach("Sepia=040");
    auto* const kept = dialog.Get();
    ActAt(part, [kept] { kept->Close(); });
    dialog->SetFirstChange();
    dialog->Open(0, 0, 0);
    dialog->Show();
    if (backend.LastWindow()) Window().Slide(Slider("Strength"), 50);
    Call("ButtonTop");
    Call("GetContexthelp", "text");
    Call("ButtonTopDrag");
    Call("ButtonTopDelete");
    Call("DockFilterDialog");
    EXPECT_FALSE(filter->text.empty());
    dialog->Close();
    EXPECT_FALSE(act) << "the call was never made";
    SetDialogHostHook(host, nullptr, nullptr);
    DropDialog();
    EXPECT_EQ(backend.Counts(), toolkit::BackendCounts());
    EXPECT_EQ(DialogHostReferences(host), 1);
    ReleaseDialogHost(std::exchange(host, nullptr));
  }
}

TEST_F(ActingHost, MayTakeTheFilterAwayInsideAChange) {
  Attach("Sepia=040");
  OpenDialog();
  ActAt("59925", [&] {
    ComPtr<IConnectionPoint>::Query(dialog.Get())->Unadvise(1);
    filters.clear();
  });
  Window().Slide(Slider("Strength"), 50);
  EXPECT_FALSE(act);
  EXPECT_EQ(Position("Strength"), 50);
  EXPECT_TRUE(IsMixed());
}

TEST_F(ActingHost, MayDropItsLastReferenceInsideAChange) {
  OpenDialog();
  auto* const kept = dialog.Get();
  ActAt("59926", [&] {
    DropDialog();
    kept->Close();
  });
  Window().Slide(Slider("Strength"), 50);
  EXPECT_FALSE(act);
  EXPECT_EQ(backend.Counts(), toolkit::BackendCounts());
}

}  // namespace
