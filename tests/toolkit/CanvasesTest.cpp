// Curves, dials, crops and questions: geometry, hits and keys, over the window system in memory.
#include <gtest/gtest.h>

#include <cmath>

#include "tests/support/Sheets.h"
#include "toolkit/ZNAngleDial.h"
#include "toolkit/ZNCropView.h"
#include "toolkit/ZNCurveEditor.h"
#include "toolkit/ZNDialog.h"
#include "toolkit/ZNMessage.h"
#include "toolkit/fake/FakeBackend.h"

namespace {

using toolkit::ControlKind;
using toolkit::FakeWindow;
using toolkit::Key;
using toolkit::MouseAction;
using toolkit::Point;

class Canvases : public testing::Test {
 protected:
  void SetUp() override { ASSERT_TRUE(dialog.CreateModeless({})); }
  FakeWindow& Window() { return *backend.LastWindow(); }
  // It is the moves that count while the button is held, and none afterwards.
  void Drag(toolkit::ControlId id, Point from, Point to) {
    Window().Mouse(id, MouseAction::Press, from);
    Window().Mouse(id, MouseAction::Move, to);
    Window().Mouse(id, MouseAction::Release, from);
    Window().Mouse(id, MouseAction::Move, {from.x + 40, from.y + 30}, 0);
  }

  toolkit::FakeBackend backend;
  toolkit::ScopedBackend scope{&backend};
  CZNDialog dialog;
  int changes = 0;
};

// --- dial

TEST_F(Canvases, DialPointsWhereTheMouseIs) {
  constexpr toolkit::Size kSize = {101, 101};
  EXPECT_EQ(CZNAngleDial::DegreesAt(kSize, {90, 50}), 0);
  EXPECT_EQ(CZNAngleDial::DegreesAt(kSize, {50, 10}), 90);
  EXPECT_EQ(CZNAngleDial::DegreesAt(kSize, {10, 50}), 180);
  EXPECT_EQ(CZNAngleDial::DegreesAt(kSize, {50, 90}), -90);
  EXPECT_EQ(CZNAngleDial::DegreesAt(kSize, {60, 40}), 45);
}

TEST_F(Canvases, DialTurnsByMouseAndKeys) {
  auto& dial = dialog.Make<CZNAngleDial>("Direction", ValueRange{0, 3600, 1, 0}, 3600);
  dial.Place({0, 0, 101, 101});
  dial.onChange = [&] { ++changes; };
  Window().Mouse(dial.Id(), MouseAction::Move, {50, 10}, 0);
  EXPECT_EQ(changes, 0) << "not held";
  Drag(dial.Id(), {50, 10}, {50, 90});
  EXPECT_EQ(dial.Value(), 2700) << "below the centre, in the range";
  EXPECT_EQ(changes, 2);
  Window().Mouse(dial.Id(), MouseAction::Move, {90, 50}, 0);
  EXPECT_EQ(dial.Value(), 2700) << "let go";
  dial.Focus();
  Window().Press(Key::Left);
  EXPECT_EQ(dial.Value(), 2710);
  Window().Press(Key::PageDown);
  EXPECT_EQ(dial.Value(), 2610);
  EXPECT_TRUE(Window().Wheel(dial.Id(), -1));
  EXPECT_EQ(dial.Value(), 2600);
  EXPECT_EQ(Window().At(dial.Id()).valueText, "2600");
}

// --- curve

class Curves : public Canvases {
 protected:
  void SetUp() override {
    Canvases::SetUp();
    class Editor : public CZNCurveEditor {
     public:
      Editor(CZNDialog& owner) : CZNCurveEditor(owner, "Curve", 12) {}
      void Show(const PanelValues&) override {}
      void Store(PanelValues&) const override {}
    };
    editor = &dialog.Make<Editor>();
    editor->Place({0, 0, 255 + 12, 255 + 12});  // a margin of six, so that a pixel is a level
    editor->onChange = [&] { ++changes; };
  }
  static Point At(int x, int y) { return {6 + x, 6 + 255 - y}; }
  using Nodes = std::vector<editing::CurveNode>;

  CZNCurveEditor* editor = nullptr;
};

TEST_F(Curves, APressMakesANodeAndADragMovesIt) {
  Drag(editor->Id(), At(100, 150), At(120, 90));
  EXPECT_EQ(editor->Curve().nodes, (Nodes{{0, 0}, {120, 90}, {255, 255}}));
  EXPECT_EQ(changes, 2);
  EXPECT_EQ(Window().At(editor->Id()).valueText, "120, 90");
  Drag(editor->Id(), At(124, 94), At(124, 94));
  EXPECT_EQ(editor->Curve().Count(), 3) << "near a node it is taken";
  EXPECT_EQ(editor->Curve().nodes[1], (editing::CurveNode{124, 94}));
}

TEST_F(Curves, NodesKeepTheirOrderAndTheSquare) {
  editor->SetCurve({{0, 0}, {100, 100}, {200, 200}, {255, 255}}, false);
  Drag(editor->Id(), At(100, 100), At(230, 100));
  EXPECT_EQ(editor->Curve().nodes[1], (editing::CurveNode{199, 100}));
  Drag(editor->Id(), At(0, 0), At(-20, -20));
  EXPECT_EQ(editor->Curve().nodes[0], (editing::CurveNode{0, 0}));
  Drag(editor->Id(), At(200, 200), At(210, 400));
  EXPECT_EQ(editor->Curve().nodes.size(), 3u) << "dragged far out it goes";
  Drag(editor->Id(), At(0, 0), At(0, 400));
  EXPECT_EQ(editor->Curve().nodes.size(), 3u) << "an end stays";
  EXPECT_EQ(editor->Curve().nodes[0].y, 255);
}

TEST_F(Curves, KeysMoveChooseInsertAndRemove) {
  editor->Focus();
  Window().Press(Key::Insert);
  EXPECT_EQ(editor->Curve().nodes, (Nodes{{0, 0}, {127, 127}, {255, 255}}));
  Window().Press(Key::Up);
  Window().Press(Key::Right);
  EXPECT_EQ(editor->Curve().nodes[1], (editing::CurveNode{128, 128}));
  for (const int node : {0, 1, 2, 2}) {
    Window().Press(node == 0 ? Key::PageUp : Key::PageDown);
    EXPECT_EQ(editor->Curve().current, node);
  }
  Window().Press(Key::Delete);
  EXPECT_EQ(editor->Curve().Count(), 3) << "an end stays";
  Window().Press(Key::PageUp);
  Window().Press(Key::Delete);
  EXPECT_EQ(editor->Curve().Count(), 2);
  EXPECT_EQ(changes, 4);
  EXPECT_FALSE(Window().Press(Key::Tab));
}

TEST_F(Curves, HoldsNoMoreNodesThanTheFilterTakes) {
  for (int i = 0; i < 20; ++i) editor->AddNode();
  EXPECT_EQ(editor->Curve().Count(), 12);
  for (int i = 0; i < 20; ++i) editor->ThinOut();
  EXPECT_EQ(editor->Curve().Count(), 2);
  EXPECT_EQ(changes, 20);
}

// --- crop

class Crops : public Canvases {
 protected:
  void SetUp() override {
    Canvases::SetUp();
    view = &dialog.Make<CZNCropView>("Crop", std::array<const char*, 4>{"L", "R", "B", "T"});
    view->SetPictureSize({200, 100});
    view->Place({0, 0, 212, 112});  // the picture lies at 6, 6 in its own size
    view->onChange = [&] { ++changes; };
  }
  void Expect(double left, double right, double bottom, double top) {
    EXPECT_NEAR(view->Edges().left, left, 1e-9);
    EXPECT_NEAR(view->Edges().right, right, 1e-9);
    EXPECT_NEAR(view->Edges().bottom, bottom, 1e-9);
    EXPECT_NEAR(view->Edges().top, top, 1e-9);
  }

  CZNCropView* view = nullptr;
};

TEST_F(Crops, HandlesAreCornersSidesAndTheInside) {
  EXPECT_EQ(view->PicturePlace({212, 112}), (toolkit::Rect{6, 6, 200, 100}));
  EXPECT_EQ(view->HandleAt({6, 6}), CZNCropView::kLeft | CZNCropView::kTop);
  EXPECT_EQ(view->HandleAt({206, 106}), CZNCropView::kRight | CZNCropView::kBottom);
  EXPECT_EQ(view->HandleAt({100, 8}), CZNCropView::kTop);
  EXPECT_EQ(view->HandleAt({100, 50}), CZNCropView::kWhole);
  // As far out as a hand may be, and a pixel farther.
  const int reach = 7, left = 6 - reach, right = 206 + reach, top = 6 - reach, bottom = 106 + reach;
  for (const int out : {0, 1}) {
    const auto of = [&](int side) { return out ? int{CZNCropView::kNothing} : side; };
    EXPECT_EQ(view->HandleAt({left - out, 50}), of(CZNCropView::kLeft));
    EXPECT_EQ(view->HandleAt({right - 1 + out, 50}), of(CZNCropView::kRight));
    EXPECT_EQ(view->HandleAt({100, top - out}), of(CZNCropView::kTop));
    EXPECT_EQ(view->HandleAt({100, bottom - 1 + out}), of(CZNCropView::kBottom));
  }
  view->SetPictureSize({100, 100});
  EXPECT_EQ(view->HandleAt({10, 50}), CZNCropView::kNothing);
}

TEST_F(Crops, DragsMoveEdgesAndTheWhole) {
  Drag(view->Id(), {6, 6}, {56, 31});
  Expect(0.25, 1, 0, 0.75);
  Drag(view->Id(), {130, 70}, {110, 60});
  Expect(0.15, 0.9, 0.1, 0.85);
  Drag(view->Id(), {130, 70}, {0, -400});
  Expect(0, 0.75, 0.25, 1);
  Drag(view->Id(), {60, 60}, {60, 400});
  Expect(0, 0.75, 0, 0.75);
  Drag(view->Id(), {156, 60}, {-900, 60});
  Expect(0, 0.01, 0, 0.75);
  EXPECT_EQ(changes, 5);
  Drag(view->Id(), {180, 20}, {100, 20});
  EXPECT_EQ(changes, 5) << "outside nothing is held";
}

TEST_F(Crops, ADragKeepsToTheRatio) {
  view->SetRatio(1);
  Drag(view->Id(), {206, 106}, {156, 106});
  const auto& edges = view->Edges();
  EXPECT_NEAR((edges.right - edges.left) * 200, (edges.top - edges.bottom) * 100, 0.1);
  EXPECT_EQ(changes, 1);
}

TEST_F(Crops, KeysMoveIt) {
  Drag(view->Id(), {6, 6}, {106, 56});
  view->Focus();
  EXPECT_TRUE(Window().Press(Key::Left));
  EXPECT_TRUE(Window().Press(Key::Up));
  Expect(0.49, 0.99, 0.01, 0.51);
  for (int i = 0; i < 60; ++i) Window().Press(Key::Right);
  Expect(0.5, 1, 0.01, 0.51);
}

// --- questions

TEST(Messages, GiveTheButtonOrTheLast) {
  toolkit::FakeBackend backend;
  const toolkit::ScopedBackend scope(&backend);
  const auto ask = [] { return ZNAskButton("Title", "Two\nlines", {"&Yes", "&No"}); };
  backend.Post([&] {
    FakeWindow& window = *backend.LastWindow();
    window.Click(window.ByName("Yes", ControlKind::Button));
  });
  EXPECT_EQ(ask(), 0);
  backend.Post([&] { backend.LastWindow()->AskToClose(); });
  EXPECT_EQ(ask(), 1);
  EXPECT_EQ(ask(), 1) << "nobody is there";
  backend.refusesWindows = true;
  EXPECT_EQ(ask(), 1);
  EXPECT_EQ(backend.Counts(), toolkit::BackendCounts());
}

TEST(Messages, AskForText) {
  toolkit::FakeBackend backend;
  const toolkit::ScopedBackend scope(&backend);
  const auto ask = [] { return ZNAskText("Title", "Name", "old", "OK", "Cancel"); };
  backend.Post([&] {
    FakeWindow& window = *backend.LastWindow();
    const auto edit = window.ByName("Name", ControlKind::Edit);
    EXPECT_EQ(window.At(edit).text, "old");
    window.Type(edit, "new");
    window.Press(Key::Enter);
  });
  EXPECT_EQ(ask(), "new");
  backend.Post([&] { backend.LastWindow()->Press(Key::Escape); });
  EXPECT_EQ(ask(), std::nullopt);
}

// --- all of it

TEST_F(Canvases, AndQuestionsAreAsTheirSheetSays) {
  class Editor : public CZNCurveEditor {
   public:
    using CZNCurveEditor::CZNCurveEditor;
    void Show(const PanelValues&) override {}
    void Store(PanelValues&) const override {}
  };
  auto& dial = dialog.Make<CZNAngleDial>("Direction", ValueRange{0, 3600, 1, 0}, 3600);
  auto& curve = dialog.Make<Editor>("Curve", 12);
  auto& crop = dialog.Make<CZNCropView>("Crop", std::array<const char*, 4>{"L", "R", "B", "T"});
  dial.Place({10, 20, 90, 80});
  dial.SetValue(300);
  curve.Place({110, 20, 140, 130});
  curve.SetCurve({{0, 30}, {60, 120}, {160, 140}, {255, 220}}, false);
  crop.Place({10, 160, 200, 120});
  crop.SetPictureSize({300, 200});
  Drag(crop.Id(), {20, 10}, {60, 30});
  testing_support::ToldControls told;
  std::string sheet = testing_support::Drawn(Window(), told);
  // In use: with the keys, a histogram, another curve behind, in the dark and larger.
  curve.onHistogram = [] {
    CZNCurveEditor::Histogram histogram = {};
    for (std::size_t i = 0; i < 256; i += 60) histogram[i] = static_cast<unsigned>(i + 1);
    return histogram;
  };
  RCNodeCurve behind;
  behind.nodes = {{0, 255}, {255, 0}};
  curve.SetBehind({behind});
  curve.SetPercent(true);
  curve.SetCurve({{0, 30}, {60, 120}, {160, 140}, {255, 220}}, true);
  backend.isDark = true;
  backend.scale = 150;
  Window().ChangeLook();
  for (CZNCanvas* const canvas : std::initializer_list<CZNCanvas*>{&dial, &curve, &crop}) {
    canvas->Focus();
    Window().Press(Key::Right);
    Window().Mouse(canvas->Id(), MouseAction::Move, {70, 60}, 0);
    sheet += testing_support::Drawn(Window(), told);
  }
  for (const int scale : {100, 150}) {
    backend.scale = scale;
    for (int i = 0; i < 2; ++i) {
      backend.Post([&] {
        sheet += testing_support::Drawn(*backend.LastWindow());
        backend.LastWindow()->AskToClose();
      });
      i == 0 ? void(ZNAskButton("Title", "Two\nlines", {"&Yes", "&Not at all"}))
             : void(ZNAskText("Title", "Name of it", "old", "OK", "Cancel"));
    }
  }
  testing_support::ExpectSheet(sheet, FXBOX_SOURCE "/tests/toolkit/drawn.txt");
}

}  // namespace
