#include "dialogs/RotateDialog.h"

#include <algorithm>

#include "base/Arithmetic.h"
#include "dialogs/PanelDialog.h"

namespace dialogs {
namespace {

class CDlgRotate final : public CDlgPanel {
 public:
  using CDlgPanel::CDlgPanel;

 private:
  struct Turn {
    const char* caption;
    double angle;
  };
  static constexpr Turn kTurns[] = {
      {"IDB_ANGLE0", 0}, {"IDB_ANGLE90", 90}, {"IDB_ANGLE180", 180}, {"IDB_ANGLE270", 270}};

  void BuildMore() override {
    for (const Turn& turn : kTurns) {
      texts.push_back(Words(turn.caption));
      auto& button = Make<CZNButton>(texts.back());
      button.onPress = [this, angle = turn.angle] {
        Change([&](PanelValues& changed) { changed.SetNumber("Angle", angle); });
      };
      buttons.push_back(&button);
    }
    buttons[2]->SetBubble(Words("IDS_DREH_180"));
    texts.push_back(Words("IDS_DREH_45CW"));
    buttons.push_back(&Make<CZNButton>(texts.back()));
    buttons.back()->onPress = [this] {
      Change([](PanelValues& changed) {
        const double turned = changed.Number("Angle") - 45;
        changed.SetNumber("Angle", turned < -360 ? turned + 360 : turned);
      });
    };
  }

  toolkit::Size PlaceMore(toolkit::Point origin, int) override {
    const int gap = System().Scaled(8);
    toolkit::Size size = {-gap, 0};
    for (std::size_t i = 0; i < buttons.size(); ++i) {
      const toolkit::Size wanted = buttons[i]->Preferred(texts[i]);
      size.width += gap;
      buttons[i]->Place({origin.x + size.width, origin.y, wanted.width, wanted.height});
      size = {size.width + wanted.width, std::max(size.height, wanted.height)};
    }
    return size;
  }

  std::vector<std::string> texts;
  std::vector<CZNButton*> buttons;
};

class CDlgPad final : public CDlgPanel {
 public:
  using CDlgPanel::CDlgPanel;

 private:
  void Complete(PanelValues& completed, const char* changedKey) override {
    if (changedKey) {
      const auto part = [&](const char* key) {
        return static_cast<unsigned>(base::TruncateToInt32(completed.Number(key))) & 0xFF;
      };
      completed.SetNumber("PadColor",
                          part("PadRed") << 16 | part("PadGreen") << 8 | part("PadBlue"));
      return;
    }
    const auto colour = static_cast<unsigned>(completed.Number("PadColor"));
    completed.SetNumber("PadRed", colour >> 16 & 0xFF);
    completed.SetNumber("PadGreen", colour >> 8 & 0xFF);
    completed.SetNumber("PadBlue", colour & 0xFF);
  }
};

template <class Window>
class CWindowDialog final : public CPanelDialog {
 public:
  using CPanelDialog::CPanelDialog;

 private:
  std::unique_ptr<CDlgFilterBase> NewWindow() override {
    return std::make_unique<Window>(this, Class());
  }
};

}  // namespace

CPdibFilterDialog* NewRotateDialog(const DialogClass& row) {
  return new CWindowDialog<CDlgRotate>(row);
}

CPdibFilterDialog* NewPadDialog(const DialogClass& row) {
  return new CWindowDialog<CDlgPad>(row);
}

}  // namespace dialogs
