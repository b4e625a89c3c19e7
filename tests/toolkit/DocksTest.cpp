// Windows inside of windows, windows that wait for others, and what is dropped on them.
#include <gtest/gtest.h>

#include "core/DataXferObj.h"
#include "platform/component/ComPtr.h"
#include "toolkit/ZNDialog.h"
#include "toolkit/ZNMessage.h"
#include "toolkit/fake/FakeBackend.h"

namespace {

using toolkit::ControlKind;
using toolkit::FakeWindow;
using toolkit::Key;

// A window that counts its shortcuts and what is dropped on it.
class Counting : public CZNDialog {
 public:
  int keys = 0, cancels = 0, drops = 0, overs = 0;
  bool usesKeys = true;

 private:
  bool OnAnyKey(const toolkit::KeyEvent&) override {
    ++keys;
    return usesKeys;
  }
  void OnCancel() override { ++cancels; }
  void OnDragOver(std::optional<toolkit::Point> place) override { overs += place ? 1 : 0; }
  bool OnDrop(IDataObject*, toolkit::Point place) override {
    ++drops;
    return place.x > 10;
  }
};

class Docks : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_TRUE(outer.CreateModeless({.title = "Outer", .isTool = false}));
    ASSERT_TRUE(inner->CreateModeless({.title = "Inner", .owner = outer.Handle()}));
    dock = &outer.Make<CZNDock>("Dialog");
    dock->onChange = [this] { ++changes; };
    edit = &inner->Make<CZNEdit>("Name");
    inner->Native()->SetClientSize({300, 120});
    outer.Show();
  }
  FakeWindow& Outer() { return *backend.Window(0); }
  FakeWindow& Inner() { return *backend.Window(1); }

  toolkit::FakeBackend backend;
  toolkit::ScopedBackend scope{&backend};
  Counting outer;
  std::unique_ptr<Counting> inner = std::make_unique<Counting>();
  CZNDock* dock = nullptr;
  CZNEdit* edit = nullptr;
  int changes = 0;
};

TEST_F(Docks, TellWhatTheGuestWants) {
  EXPECT_EQ(dock->Wanted(), toolkit::Size());
  int other = 0;
  EXPECT_FALSE(dock->Take(&other)) << "no window of ours";
  EXPECT_FALSE(dock->Take(outer.Handle())) << "in itself";
  ASSERT_TRUE(dock->Take(inner->Handle()));
  EXPECT_EQ(dock->Wanted(), toolkit::Size()) << "it is hidden";
  inner->Show();
  EXPECT_EQ(dock->Wanted(), (toolkit::Size{300, 120}));
  EXPECT_EQ(changes, 1);
  inner->Native()->SetClientSize({310, 220});
  EXPECT_EQ(dock->Wanted(), (toolkit::Size{310, 220}));
  inner->Hide();
  EXPECT_EQ(changes, 3);
  inner->Show();
  dock->GiveBack();
  EXPECT_EQ(dock->Wanted(), toolkit::Size());
  inner->Hide();
  EXPECT_EQ(changes, 4) << "a window for itself again";
}

TEST_F(Docks, EitherWindowMayGoFirst) {
  ASSERT_TRUE(dock->Take(inner->Handle()));
  inner->Show();
  inner.reset();
  EXPECT_EQ(dock->Wanted(), toolkit::Size());
  EXPECT_EQ(changes, 2);
  auto other = std::make_unique<Counting>();
  auto outlived = std::make_unique<CZNDialog>();
  ASSERT_TRUE(outlived->CreateModeless({}));
  ASSERT_TRUE(other->CreateModeless({}));
  ASSERT_TRUE(other->Make<CZNDock>("Other").Take(outlived->Handle()));
  other.reset();
  outlived->Show();
  EXPECT_TRUE(outlived->IsVisible());
}

TEST_F(Docks, KeysGoToTheGuestFirstAndThenToItsHost) {
  ASSERT_TRUE(dock->Take(inner->Handle()));
  Inner().Press(Key::F5);
  EXPECT_EQ(inner->keys, 1);
  EXPECT_EQ(outer.keys, 0);
  inner->usesKeys = false;
  Inner().Press(Key::F5);
  EXPECT_EQ(outer.keys, 1);
  Inner().Focus(edit->Id());
  Inner().Press(Key::Character, 's');
  EXPECT_EQ(inner->keys, 2) << "where one types, letters are the text's";
  EXPECT_EQ(outer.keys, 1);
}

TEST_F(Docks, AQuestionBlocksTheWindowThatAsks) {
  auto& button = outer.Make<CZNButton>("Press");
  int presses = 0;
  button.onPress = [&] { ++presses; };
  backend.Post([&] {
    EXPECT_FALSE(Outer().Click(button.Id()));
    EXPECT_FALSE(Outer().Press(Key::F5));
    EXPECT_TRUE(Inner().Type(edit->Id(), "x")) << "it does not wait";
    backend.LastWindow()->Press(Key::Escape);
  });
  EXPECT_EQ(ZNAskButton("Title", "Text", {"OK", "Cancel"}, outer.Handle()), 1);
  EXPECT_EQ(presses, 0);
  EXPECT_TRUE(Outer().Click(button.Id()));
  EXPECT_EQ(presses, 1);
}

TEST_F(Docks, ObjectsComeToWindowsThatTakeThem) {
  const auto object = platform::ComPtr<CDataXferObj>::Attach(new CDataXferObj);
  EXPECT_FALSE(Outer().DropObject(object.Get(), {20, 5})) << "it takes none";
  Counting taking;
  ASSERT_TRUE(taking.CreateModeless({.title = "Taking", .takesObjects = true}));
  EXPECT_TRUE(backend.LastWindow()->DropObject(object.Get(), {20, 5}));
  EXPECT_FALSE(backend.LastWindow()->DropObject(object.Get(), {5, 5})) << "of no use there";
  EXPECT_EQ(taking.drops, 2);
  EXPECT_EQ(taking.overs, 2);
}

}  // namespace
