// The desk's window over the window system in memory: what a person does, and what comes of it.
#include "desk/DeskWindow.h"

#include <gmock/gmock.h>

#include <chrono>
#include <thread>

#include "base/CodePage.h"
#include "host/Texts.h"
#include "tests/platform/Support.h"
#include "toolkit/fake/FakeBackend.h"

namespace {

using testing::HasSubstr;
using toolkit::ControlKind;
using toolkit::Key;
using toolkit::MouseAction;
using toolkit::Point;
using toolkit::Rect;

class Desk : public testing::Test {
 protected:
  Desk() {
    desk::DeskOptions options;
    options.state = folder / "state";
    window = std::make_unique<desk::DeskWindow>(options);
    EXPECT_TRUE(window->Open());
    native = backend.LastWindow();
    WritePicture();
  }
  ~Desk() override { window.reset(); }

  void WritePicture() {
    MemoryPicture picture("test", 320, 200, true, true);
    for (int y = 0; y < 200; ++y) {
      std::fill_n(picture.MaskRows()[y], 320, BYTE{0});
      for (int x = 0; x < 320 * 3; ++x)
        picture.ColourRows()[y][x] = static_cast<BYTE>(x / 5 + y / 4);
    }
    imageio::WriteImage(folder / "photo.ppm", imageio::Format::Pnm, 320, 200,
                        {picture.ColourRows(), picture.MaskRows()});
  }
  template <class Condition>
  bool Await(Condition condition) {
    for (int i = 0; i < 3000 && !condition(); ++i) {
      backend.Pump(false);
      std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return condition();
  }
  bool OpenPicture() {
    native->DropFiles({folder / "photo.ppm"});
    return Await([&] { return window->Work().Shown().stage == desk::RenderStage::Full; });
  }
  toolkit::ControlId Canvas(const char* name) { return native->ByName(name, ControlKind::Canvas); }
  void ClickAt(const char* canvas, Point place) {
    native->Mouse(Canvas(canvas), MouseAction::Press, place);
    native->Mouse(Canvas(canvas), MouseAction::Release, place);
  }
  void DragTo(const char* canvas, Point from, Point to) {
    native->Mouse(Canvas(canvas), MouseAction::Press, from);
    native->Mouse(Canvas(canvas), MouseAction::Move, {(from.x + to.x) / 2, (from.y + to.y) / 2});
    native->Mouse(Canvas(canvas), MouseAction::Move, to);
    native->Mouse(Canvas(canvas), MouseAction::Release, to);
  }
  // Rows of the chain are this high.
  static int RowMiddle(int row) { return row * 44 + 22; }
  std::string Order() {
    std::string order;
    for (const auto& item : window->Work().Chain().Items()) {
      order += item.progId.substr(9, 2) + (item.isOn ? " " : "- ");
    }
    return order;
  }
  void Add(const char* progId) { window->Work().AddFilter(progId); }
  bool Press(Key key, char32_t character, bool control = false) {
    toolkit::KeyEvent event{key, character};
    event.control = control;
    return native->Press(event);
  }

  testing_support::TemporaryFolder folder;
  toolkit::FakeBackend backend;
  toolkit::ScopedBackend scope{&backend};
  std::unique_ptr<desk::DeskWindow> window;
  toolkit::FakeWindow* native = nullptr;
};

TEST_F(Desk, AddsAFilterThatIsSearchedAndEditsItInItsDialog) {
  ASSERT_TRUE(OpenPicture());
  native->Type(native->ByName("Search for filters", ControlKind::Edit), "sepia");
  ClickAt("Filters", {60, 30 + 15});
  EXPECT_EQ(Order(), "Se ");
  toolkit::FakeWindow* const dialog = backend.LastWindow();
  ASSERT_NE(dialog, native) << "its dialog is open";
  const auto slider = dialog->ByName("Strength", ControlKind::Slider);
  ASSERT_NE(slider, 0);
  ASSERT_TRUE(dialog->Slide(slider, 60));
  ASSERT_TRUE(dialog->Slide(slider, 70));
  EXPECT_EQ(window->Work().Chain().Items()[0].parameters, "Sepia=070");
  native->Focus(Canvas("Chain"));  // where one types, the keys are the field's
  EXPECT_TRUE(Press(Key::Character, 'z', true));
  EXPECT_EQ(window->Work().Chain().Items()[0].parameters, "Sepia=000") << "one movement, one step";
  EXPECT_EQ(dialog->At(slider).value, 0) << "the dialog follows";
  Press(Key::Character, 'y', true);
  EXPECT_EQ(dialog->At(slider).value, 70);
}

TEST_F(Desk, EditsSeveralFiltersAtOnce) {
  ASSERT_TRUE(OpenPicture());
  Add("ZNFilter.Sepia.1");
  Add("ZNFilter.Invert.1");
  Add("ZNFilter.Sepia.1");
  ClickAt("Chain", {150, RowMiddle(0)});
  auto& chain = window->Work().Chain();
  chain.Select({chain.Items()[0].id, chain.Items()[2].id});
  ASSERT_TRUE(native->Click(native->ByName("Edit", ControlKind::Button)));
  toolkit::FakeWindow* const dialog = backend.LastWindow();
  ASSERT_TRUE(dialog->Slide(dialog->ByName("Strength", ControlKind::Slider), 25));
  EXPECT_EQ(chain.Items()[0].parameters, "Sepia=025");
  EXPECT_EQ(chain.Items()[2].parameters, "Sepia=025");
  chain.Undo();
  EXPECT_EQ(chain.Items()[0].parameters, chain.Items()[2].parameters);
  EXPECT_EQ(chain.Items()[0].parameters, "Sepia=000");
}

TEST_F(Desk, WorksOnTheChainWithTheMouse) {
  Add("ZNFilter.Sepia.1");
  Add("ZNFilter.Invert.1");
  Add("ZNFilter.Emboss.1");
  DragTo("Chain", {150, RowMiddle(2)}, {150, 3});
  EXPECT_EQ(Order(), "Em Se In ");
  DragTo("Chain", {150, RowMiddle(0)}, {150, RowMiddle(9)});
  EXPECT_EQ(Order(), "Se In Em ");
  ClickAt("Chain", {20, RowMiddle(1)});
  EXPECT_EQ(Order(), "Se In- Em ");
  DragTo("Chain", {150, RowMiddle(1)}, {152, RowMiddle(1) + 2});
  EXPECT_EQ(Order(), "Se In- Em ") << "a hand that trembles";
  Press(Key::Delete, 0);
  EXPECT_EQ(Order(), "Se Em ");
  Press(Key::Character, 'z', true);
  Press(Key::Character, 'z', true);
  EXPECT_EQ(Order(), "Se In Em ");
}

TEST_F(Desk, TakesFiltersThatAreDraggedToTheirPlace) {
  Add("ZNFilter.Sepia.1");
  Add("ZNFilter.Invert.1");
  native->Type(native->ByName("Search for filters", ControlKind::Edit), "emboss");
  const Rect from = native->At(Canvas("Filters")).place, to = native->At(Canvas("Chain")).place;
  const Point start{60, 45};
  const Point betweenBoth{to.x - from.x + 100, to.y - from.y + 44};
  DragTo("Filters", start, betweenBoth);
  EXPECT_EQ(Order(), "Se Em In ");
  DragTo("Filters", start, {500, 5000});
  EXPECT_EQ(Order(), "Se Em In ") << "dropped nowhere";
}

TEST_F(Desk, ZoomsToThePointer) {
  ASSERT_TRUE(OpenPicture());
  const auto canvas = Canvas("Picture");
  const auto painted = native->Paint(canvas);
  EXPECT_GE(painted.Count("DrawPicture"), 1);
  native->Mouse(canvas, MouseAction::Move, {300, 200}, 0);
  EXPECT_TRUE(native->Wheel(canvas, 2));
  EXPECT_TRUE(Press(Key::Character, '0', true));
  native->Mouse(canvas, MouseAction::Move, {2, 2}, 0);
  native->Mouse(canvas, MouseAction::Leave, {}, 0);
}

TEST_F(Desk, CropsByHandlesInThePicture) {
  ASSERT_TRUE(OpenPicture());
  Add("ZNFilter.Crop.1");
  ASSERT_TRUE(Await([&] { return window->Work().Renderer().IsIdle(); }));
  const Rect view = native->At(Canvas("Picture")).place;
  const int left = (view.width - 320) / 2, top = (view.height - 200) / 2;
  DragTo("Picture", {left, top + 100}, {left + 80, top + 100});
  const auto frame = desk::CropOf(window->Work().Chain().Items()[0].parameters);
  EXPECT_NEAR(frame.left, 0.25, 0.01);
  EXPECT_EQ(frame.right, 1);
  window->Work().Chain().Select({});
  ASSERT_TRUE(Await([&] {
    return window->Work().Shown().after && window->Work().Shown().after->Width() == 240;
  }));
}

TEST_F(Desk, MarksRedEyesByClicks) {
  ASSERT_TRUE(OpenPicture());
  Add("ZNFilter.RedEye.1");
  const Rect view = native->At(Canvas("Picture")).place;
  const int left = (view.width - 320) / 2, top = (view.height - 200) / 2;
  ClickAt("Picture", {left + 80, top + 50});
  const std::string text = window->Work().Chain().Items()[0].parameters;
  EXPECT_NEAR(desk::NumberIn(text, "X1", 0), 0.25, 0.01) << text;
  EXPECT_NEAR(desk::NumberIn(text, "Y1", 0), 0.75, 0.01) << text;
  ClickAt("Picture", {left + 81, top + 50});
  EXPECT_EQ(desk::NumberIn(window->Work().Chain().Items()[0].parameters, "N", -1), 0) << "no more";
}

TEST_F(Desk, ShowsAMessageForEachBadFile) {
  std::vector<std::filesystem::path> files;
  for (int i = 0; i < 100; ++i) {
    files.push_back(folder.Path() / ("bad" + std::to_string(i) + ".png"));
    testing_support::WriteFile(files.back(), "bad");
  }
  Add("ZNFilter.Sepia.1");
  native->DropFiles(files);
  EXPECT_EQ(window->Work().Messages().size(), 100u);
  toolkit::FakeWindow* const messages = backend.LastWindow();
  ASSERT_NE(messages, native);
  EXPECT_EQ(messages->At(messages->ByName("Messages", ControlKind::List)).items.size(), 100u);
  EXPECT_EQ(Order(), "Se ");
}

TEST_F(Desk, EndsWithItsWindow) {
  ASSERT_TRUE(OpenPicture());
  native->Press(Key::Escape);
  EXPECT_TRUE(window->IsOpen()) << "Escape ends nothing";
  native->AskToClose();
  EXPECT_FALSE(window->IsOpen());
  EXPECT_FALSE(native->isVisible);
}

// Nobody answers the question in this window system, which is as good as "Cancel".
TEST_F(Desk, LeavesNoChainUnsaved) {
  ASSERT_TRUE(OpenPicture());
  Add("ZNFilter.Sepia.1");
  native->AskToClose();
  EXPECT_TRUE(window->IsOpen());
  ASSERT_TRUE(window->Work().SaveChain(host::Utf8Of(window->Work().ChainFile())));
  native->AskToClose();
  EXPECT_FALSE(window->IsOpen());
}

}  // namespace
