// Controls and windows, over the window system in memory.
#include <gtest/gtest.h>

#include "toolkit/ZNDialog.h"
#include "toolkit/fake/FakeBackend.h"

namespace {

using toolkit::ControlKind;
using toolkit::FakeWindow;
using toolkit::Key;

class Controls : public testing::Test {
 protected:
  void SetUp() override { ASSERT_TRUE(dialog.CreateModeless({.title = "Test"})); }
  FakeWindow& Window() { return *backend.LastWindow(); }

  toolkit::FakeBackend backend;
  toolkit::ScopedBackend scope{&backend};
  // Without focus a wheel is the parent's.
  template <class Value>
  void ExpectWheel(toolkit::ControlId id, double notches, Value value, double from, double to) {
    Window().Focus(0);
    EXPECT_FALSE(Window().Wheel(id, notches));
    EXPECT_EQ(value(), from);
    Window().Focus(id);
    EXPECT_TRUE(Window().Wheel(id, notches));
    EXPECT_EQ(value(), to);
  }

  CZNDialog dialog;
  int changes = 0;
};

TEST_F(Controls, SliderReportsEachRealChangeOnce) {
  for (const bool echoes : {false, true}) {
    backend.echoes = echoes;
    changes = 0;
    auto& slider =
        dialog.Make<CZNSlider>("Radius", ValueRange{0.1, 50, 0.1, 1}, toolkit::SliderLook::Plain);
    slider.onChange = [&] { ++changes; };
    slider.SetValue(2.7);
    EXPECT_EQ(changes, 0);
    EXPECT_EQ(Window().At(slider.Id()).greatest, 499);
    EXPECT_EQ(Window().At(slider.Id()).value, 26);
    EXPECT_EQ(Window().At(slider.Id()).valueText, "2.7");
    EXPECT_TRUE(Window().Slide(slider.Id(), 26));
    EXPECT_EQ(changes, 0) << "it was there already";
    EXPECT_TRUE(Window().Slide(slider.Id(), 2));
    EXPECT_EQ(changes, 1);
    EXPECT_EQ(slider.Value(), 0.3) << "the double next to three tenths";
  }
}

TEST_F(Controls, SliderKeepsAValueOutsideItsRangeUntilItMoves) {
  auto& slider = dialog.Make<CZNSlider>("Power", ValueRange{}, toolkit::SliderLook::Plain);
  slider.onChange = [&] { ++changes; };
  slider.SetValue(150);
  EXPECT_EQ(slider.Value(), 150);
  EXPECT_EQ(Window().At(slider.Id()).value, 100);
  Window().Slide(slider.Id(), 100);
  EXPECT_EQ(slider.Value(), 150);
  EXPECT_EQ(changes, 0);
  Window().Slide(slider.Id(), 99);
  EXPECT_EQ(slider.Value(), 99);
  EXPECT_EQ(changes, 1);
}

TEST_F(Controls, SliderKeysAndWheel) {
  auto& slider = dialog.Make<CZNSlider>("Power", ValueRange{}, toolkit::SliderLook::Plain);
  slider.onChange = [&] { ++changes; };
  slider.SetValue(50);
  ExpectWheel(
      slider.Id(), 1, [&] { return slider.Value(); }, 50, 51);
  slider.SetValue(50);
  changes = 0;
  struct {
    Key key;
    double value;
  } const steps[] = {{Key::Right, 51},  {Key::Left, 50},     {Key::Up, 51},   {Key::Down, 50},
                     {Key::PageUp, 60}, {Key::PageDown, 50}, {Key::End, 100}, {Key::Home, 0}};
  for (const auto& step : steps) {
    EXPECT_TRUE(Window().Press(step.key));
    EXPECT_EQ(slider.Value(), step.value);
  }
  EXPECT_EQ(changes, 8);
  EXPECT_TRUE(Window().Press(Key::Left)) << "used at the end of the range too";
  EXPECT_EQ(changes, 8);
  EXPECT_TRUE(Window().Wheel(slider.Id(), 2));
  EXPECT_EQ(slider.Value(), 2);
  EXPECT_FALSE(Window().Press(Key::Tab));
}

TEST_F(Controls, NumberFieldTakesWhatLiesInTheRange) {
  auto& field = dialog.Make<CZNNumberField>("Size", ValueRange{15, 90, 1, 0});
  field.onChange = [&] { ++changes; };
  Window().Type(field.Id(), "4");
  EXPECT_EQ(field.Value(), 15) << "the person is still typing";
  Window().Type(field.Id(), "45");
  EXPECT_EQ(field.Value(), 45);
  EXPECT_EQ(changes, 1);
  Window().Type(field.Id(), " 45,0 ");
  EXPECT_EQ(changes, 1);
  Window().Type(field.Id(), "4500");
  Window().Focus(0);
  EXPECT_EQ(field.Value(), 90);
  EXPECT_EQ(Window().At(field.Id()).text, "90");
  Window().Type(field.Id(), "nonsense");
  Window().Press(Key::Enter);
  EXPECT_EQ(Window().At(field.Id()).text, "90");
  Window().Press(Key::Down);
  EXPECT_EQ(field.Value(), 89);
  EXPECT_EQ(changes, 3);
  ExpectWheel(
      field.Id(), -3, [&] { return field.Value(); }, 89, 86);
  EXPECT_EQ(Window().At(field.Id()).text, "86");
}

TEST_F(Controls, ChoicesReportOnlyChanges) {
  auto& box = dialog.Make<CZNCheckBox>("Mirror");
  auto& combo = dialog.Make<CZNComboBox>("Channel", std::vector<std::string>{"All", "Red", "Blue"});
  CZNRadioGroup radio(dialog, {"Border", "Size"});
  for (auto* change : {&box.onChange, &combo.onChange, &radio.onChange}) {
    *change = [&] { ++changes; };
  }
  ExpectWheel(
      combo.Id(), -9, [&] { return combo.Chosen(); }, -1, 2);
  ExpectWheel(
      combo.Id(), 9, [&] { return combo.Chosen(); }, 2, 0);
  changes = 0;
  radio.Choose(0);
  box.SetChecked(true);
  combo.Choose(1);
  EXPECT_EQ(changes, 0);
  EXPECT_TRUE(Window().Click(box.Id()));
  EXPECT_FALSE(box.IsChecked());
  EXPECT_TRUE(Window().Choose(combo.Id(), 1));
  EXPECT_TRUE(Window().Choose(combo.Id(), 2));
  EXPECT_TRUE(Window().Click(radio.Button(0).Id()));
  EXPECT_TRUE(Window().Click(radio.Button(1).Id()));
  EXPECT_EQ(radio.Chosen(), 1);
  EXPECT_EQ(Window().At(radio.Button(0).Id()).value, 0);
  EXPECT_EQ(changes, 3);
  box.Enable(false);
  EXPECT_FALSE(Window().Click(box.Id()));
}

TEST_F(Controls, ColourButtonTakesBackWhatWasOnlyTried) {
  auto& button = dialog.Make<CZNColorButton>("Colour");
  std::vector<toolkit::Colour> seen;
  button.onChange = [&] { seen.push_back(button.Value()); };
  button.SetValue({1, 2, 3});
  backend.onColour = [](toolkit::Colour, const auto& onTry) {
    onTry({9, 9, 9});
    onTry({9, 9, 9});
    return std::nullopt;
  };
  Window().Click(button.Id());
  EXPECT_EQ(seen, (std::vector<toolkit::Colour>{{9, 9, 9}, {1, 2, 3}}));
  backend.onColour = [](toolkit::Colour, const auto&) { return toolkit::Colour{4, 5, 6}; };
  Window().Click(button.Id());
  EXPECT_EQ(Window().At(button.Id()).colour, (toolkit::Colour{4, 5, 6}));
}

TEST(Dialogs, WithoutAWindowSystemKeepsItsValues) {
  const toolkit::ScopedBackend none(nullptr);
  CZNDialog dialog;
  EXPECT_FALSE(dialog.CreateModeless({}));
  auto& slider = dialog.Make<CZNSlider>("Power", ValueRange{}, toolkit::SliderLook::Plain);
  slider.SetValue(5);
  dialog.Show();
  EXPECT_EQ(slider.Value(), 5);
  EXPECT_EQ(dialog.RunModal(), 0);
  std::string reason;
  EXPECT_EQ(toolkit::CurrentBackend(&reason), nullptr);
  EXPECT_FALSE(reason.empty());
}

// A host may close the dialog from inside the change that a control reports.
TEST(Dialogs, CanBeBuriedInsideTheirOwnEvents) {
  toolkit::FakeBackend backend;
  const toolkit::ScopedBackend scope(&backend);
  auto dialog = std::make_unique<CZNDialog>();
  dialog->CreateModeless({});
  auto& slider = dialog->Make<CZNSlider>("Power", ValueRange{}, toolkit::SliderLook::Plain);
  int changes = 0;
  slider.onChange = [&] {
    ++changes;
    CZNDialog::Bury(std::move(dialog));
    EXPECT_EQ(backend.Counts().windows, 1) << "its event is on its way";
    EXPECT_FALSE(backend.Window(0)->isVisible);
    backend.Window(0)->Slide(slider.Id(), 7);  // of no effect any more
  };
  backend.Window(0)->Slide(slider.Id(), 5);
  EXPECT_EQ(changes, 1);
  EXPECT_EQ(backend.Counts(), toolkit::BackendCounts());
}

TEST(Dialogs, RunModalEndsWithTheAnswer) {
  toolkit::FakeBackend backend;
  const toolkit::ScopedBackend scope(&backend);
  CZNDialog dialog;
  dialog.CreateModeless({});
  auto& yes = dialog.Make<CZNButton>("&Yes");
  yes.onPress = [&] { dialog.EndModal(6); };
  backend.Post([&] { backend.Window(0)->Click(yes.Id()); });
  EXPECT_EQ(dialog.RunModal(), 6);
  backend.Post([&] { backend.Window(0)->Press(Key::Escape); });
  EXPECT_EQ(dialog.RunModal(), 0);
  EXPECT_EQ(dialog.RunModal(), 0) << "no event can come any more";
  EXPECT_FALSE(dialog.IsVisible());
}

TEST(Values, NumbersAreReadAndShownInEveryLocale) {
  EXPECT_EQ(NumberText(2.7, 1), "2.7");
  EXPECT_EQ(NumberText(-0.04, 1), "0.0");
  EXPECT_EQ(NumberText(-100, 0), "-100");
  EXPECT_EQ(NumberOf("2,5"), 2.5);
  EXPECT_EQ(NumberOf(" +3 "), 3);
  for (const char* wrong : {"", " ", "1 2", "x", "1e999", "nan", "inf", "--1", "1.2.3"}) {
    EXPECT_EQ(NumberOf(wrong), std::nullopt) << wrong;
  }
}

}  // namespace
