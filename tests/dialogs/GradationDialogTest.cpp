// The curves of the gradation dialog and its presets.
#include <fstream>
#include <sstream>

#include "core/PresetFiles.h"
#include "filters/colour/tone/GradCurvesFilter.h"
#include "platform/PathText.h"
#include "platform/fake/FakeServices.h"
#include "tests/dialogs/DialogRig.h"
#include "tests/platform/Support.h"
#include "tests/support/TestFilters.h"

namespace {

using testing_support::DialogRig;
using testing_support::TextFilter;
using toolkit::ControlId;
using toolkit::ControlKind;
using toolkit::MouseAction;

class GradationDialog : public DialogRig {
 protected:
  void SetUp() override {
    fakes.process.program = folder / "Program.exe";
    testing_support::WriteFile(
        folder / "Tesmar.inf",
        "[ZNGallery]\r\nCompany=A\r\nProduct=B\r\nVersion=1\r\nShortId=ID\r\n");
    testing_support::WriteFile(
        folder / "Sennet.ini",
        "[ZNGallery_#_Locations]\r\nFilter=" + platform::PathText(folder.Path()) + "\r\n");
    folders = *core::FindPresetFolders("Gradation");
    std::filesystem::create_directories(folders.factory);
    Make("ZNFilter.GradCurves.1");
    filter = Attach("nL=02, nR=02, nG=02, nB=02, xL1=000, xL2=255, yL1=000, yL2=255");
    OpenDialog();
  }
  ControlId Canvas() { return Window().ByName("Curve", ControlKind::Canvas); }
  ControlId Presets() { return Window().ByName("Preset", ControlKind::ComboBox); }
  void BendCurve(toolkit::Point place) {
    Window().Mouse(Canvas(), MouseAction::Press, place);
    Window().Mouse(Canvas(), MouseAction::Release, place);
  }
  void Press(const char* button) {
    // The dialog's own window is the first.
    auto& window = *backend.Window(0);
    EXPECT_TRUE(window.Click(window.ByName(button, ControlKind::Button)));
  }
  // What the next question is answered with.
  void Answer(const char* button, const char* text = nullptr) {
    backend.Post([this, button, text] {
      auto& question = *backend.LastWindow();
      if (text) question.Type(question.ByName("Name of the preset", ControlKind::Edit), text);
      EXPECT_TRUE(question.Click(question.ByName(button, ControlKind::Button))) << button;
    });
  }
  static std::string Content(const std::filesystem::path& file) {
    std::stringstream text;
    text << std::ifstream(file, std::ios::binary).rdbuf();
    return text.str();
  }

  testing_support::TemporaryFolder folder;
  platform::FakeServices fakes;
  platform::ScopedServices services{fakes.services};
  core::PresetFolders folders;
  TextFilter* filter = nullptr;
};

TEST_F(GradationDialog, SendsTheWholeTextOnEachChange) {
  BendCurve({100, 60});
  ASSERT_EQ(filter->given.size(), 1u);
  const std::string& text = filter->given[0];
  EXPECT_TRUE(text.starts_with("nL=3, nR=2, nG=2, nB=2, xL1=0, xL2=")) << text;
  EXPECT_TRUE(text.ends_with("yB12=255, Linear=0,YIQOn=0,FilterOn=1,")) << text;
  EXPECT_LT(text.find("xB12="), text.find("yL1="));
}

TEST_F(GradationDialog, EditsTheChannelOnShow) {
  Window().Choose(Window().ByName("Channel", ControlKind::ComboBox), 2);
  EXPECT_TRUE(filter->given.empty()) << "what is shown is no change";
  BendCurve({100, 60});
  EXPECT_TRUE(filter->text.starts_with("nL=2, nR=2, nG=3, nB=2, "));
  Window().Click(Window().ByName("Show this curve alone", ControlKind::CheckBox));
  Window().Click(Window().ByName("Show the grid", ControlKind::CheckBox));
  EXPECT_EQ(filter->given.size(), 1u);
  Window().Click(Window().ByName("Straight lines", ControlKind::CheckBox));
  EXPECT_NE(filter->text.find("Linear=1,"), std::string::npos);
}

// A picture of one colour stands as one bar at that colour's level, once a pull has brought it.
TEST_F(GradationDialog, ShowsWhatTheHostsPictureHasInIt) {
  testing_support::Picture picture(8, 8);
  for (int i = 0; i < 64; ++i) picture.Colour(i % 8, i / 8)[2] = 100;  // red
  std::fill(picture.mask.begin(), picture.mask.end(), BYTE{0});
  testing_support::Rig rig(picture, kGradCurvesClass);
  Connect(static_cast<IAnimFilter*>(&rig.Filter()));
  const auto bars = [&] { return Window().Paint(Canvas()).Count("FillRect") - 1; };
  EXPECT_EQ(bars(), 0);
  rig.PullWhole();
  const int redraws = Window().At(Canvas()).redraws;
  Window().Mouse(Canvas(), MouseAction::Move, {5, 5}, 0);
  EXPECT_EQ(Window().At(Canvas()).redraws, redraws + 1) << "the mouse came in";
  EXPECT_EQ(bars(), 1);
  const auto placeOfBar = [&](int channel) {
    Window().Choose(Window().ByName("Channel", ControlKind::ComboBox), channel);
    int x = -1;
    for (const std::string& call : Window().Paint(Canvas()).calls) {
      if (call.starts_with("FillRect") && call.find(" 0,0 ") == std::string::npos) {
        x = std::stoi(call.substr(9));
      }
    }
    return x;
  };
  const int luminance = placeOfBar(0), red = placeOfBar(1), blue = placeOfBar(3);
  EXPECT_LT(blue, luminance);
  EXPECT_LT(luminance, red);
  EXPECT_NEAR(red - blue, 101, 3) << "level 100, on a canvas of 258 pixels for 256 levels";
}

TEST_F(GradationDialog, SavesLoadsAndDeletesPresets) {
  BendCurve({100, 60});
  const std::string bent = filter->text;
  Answer("OK", "My set 1");
  Press("Save ...");
  const auto file = folders.user / "My set 1.fp2";
  EXPECT_TRUE(Content(file).starts_with("Gradation, Version 2\nCurve=1\nYIQ=0\nChannel=0\n"));
  EXPECT_EQ(Window().At(Presets()).items, std::vector<std::string>{"My set 1"});
  BendCurve({200, 60});
  EXPECT_NE(filter->text, bent);
  Window().Choose(Presets(), 0);
  EXPECT_NE(filter->text, bent) << "it was chosen already";
  Answer("No");
  Press("Delete");
  EXPECT_TRUE(std::filesystem::exists(file));
  Answer("Yes");
  Press("Delete");
  EXPECT_FALSE(std::filesystem::exists(file));
  EXPECT_TRUE(Window().At(Presets()).items.empty());
}

TEST_F(GradationDialog, AsksBeforeItOverwrites) {
  Answer("OK", "one");
  Press("Save ...");
  const std::string before = Content(folders.user / "one.fp2");
  BendCurve({100, 60});
  Answer("OK", "one");
  Answer("No");
  Press("Save ...");
  EXPECT_EQ(Content(folders.user / "one.fp2"), before);
  Answer("OK", "one");
  Answer("Yes");
  Press("Save ...");
  EXPECT_NE(Content(folders.user / "one.fp2"), before);
}

TEST_F(GradationDialog, RefusesNamesThatAreNone) {
  for (const char* name : {"", "../one", "a.b"}) {
    Answer("OK", name);
    Answer("OK");
    Press("Save ...");
  }
  EXPECT_FALSE(std::filesystem::exists(folders.user));
  Answer("Cancel", "good");
  Press("Save ...");
  EXPECT_FALSE(std::filesystem::exists(folders.user));
}

TEST_F(GradationDialog, LoadsSuppliedSetsAndTellsOfBrokenOnes) {
  dialog->Close();
  DropDialog();
  ReleaseDialogHost(std::exchange(host, nullptr));
  testing_support::WriteFile(folders.factory / "bad.fp2", "nonsense");
  std::string good =
      "Gradation, Version 2\nCurve=0\nYIQ=1\nChannel=1\nPercent=0\nGrid=1\nOnlyActive=0\n";
  for (int curve = 0; curve < 4; ++curve) {
    good += "Count=  2\nSelected=  1\n#  1 (x, y)=  0,  9\n#  2 (x, y)=255,255\n";
  }
  testing_support::WriteFile(folders.factory / "good.fp2", good);
  std::string old = "Gradation, Version 1\n";
  for (int curve = 0; curve < 4; ++curve) {
    old += "Anzahl=  2\nSelektierter=  1\n#  1 (x, y)=  0,  7\n#  2 (x, y)=255,255\n";
  }
  testing_support::WriteFile(folders.factory / "old.fp2", old);
  Make("ZNFilter.GradCurves.1");
  filter = Attach("nL=02");
  OpenDialog();
  const std::size_t windows = backend.WindowsMade();
  EXPECT_EQ(Window().At(Presets()).items, (std::vector<std::string>{"bad", "good", "old"}));
  backend.Post([&] { backend.LastWindow()->Press(toolkit::Key::Escape); });
  Window().Choose(Presets(), 0);
  EXPECT_EQ(backend.WindowsMade(), windows + 1) << "told in a window";
  EXPECT_TRUE(filter->given.empty());
  Window().Choose(Presets(), 1);
  EXPECT_EQ(backend.WindowsMade(), windows + 1) << "nothing is asked";
  ASSERT_EQ(filter->given.size(), 1u);
  EXPECT_NE(filter->text.find("yG1=9, "), std::string::npos);
  EXPECT_NE(filter->text.find("Linear=1,YIQOn=1,"), std::string::npos);
  EXPECT_EQ(Window().At(Window().ByName("Channel", ControlKind::ComboBox)).value, 1);
  // One of the first version is taken in any case.
  Answer("No");
  Window().Choose(Presets(), 2);
  EXPECT_NE(filter->text.find("yG1=7, "), std::string::npos);
  EXPECT_EQ(Content(folders.factory / "old.fp2"), old);
  Window().Choose(Presets(), 1);
  Answer("Yes");
  Window().Choose(Presets(), 2);
  EXPECT_TRUE(Content(folders.factory / "old.fp2").starts_with("Gradation, Version 2\n"));
}

}  // namespace
