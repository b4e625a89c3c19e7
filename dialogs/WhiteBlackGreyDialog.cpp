#include "dialogs/WhiteBlackGreyDialog.h"

#include <algorithm>
#include <cstring>

#include "core/Parameter.h"
#include "dialogs/PanelDialog.h"

namespace dialogs {
namespace {

constexpr char kPicker[] = "ColorPicker";

class CDlgWhiteBlackGrey final : public CDlgPanel {
 public:
  using CDlgPanel::CDlgPanel;

  bool IsPicking() const { return picker && picker->IsDown(); }

 private:
  void BuildMore() override {
    text = Words("IDS_WHITEBLACKGREY_PICK");
    picker = &Make<CZNButton>(text, CZNButton::Kind::Toggle);
    picker->onPress = [this] {
      if (Owner()) Owner()->Notify("ColorPickerChanged");
    };
  }
  toolkit::Size PlaceMore(toolkit::Point origin, int) override {
    const toolkit::Size size = picker->Preferred(text);
    picker->Place({origin.x, origin.y, size.width, size.height});
    return size;
  }

  CZNButton* picker = nullptr;
  std::string text;
};

class CWhiteBlackGreyDialog final : public CPanelDialog {
 public:
  using CPanelDialog::CPanelDialog;

  void Notify(const std::string& text) override {
    if (text != "ColorPickerChanged") return CPanelDialog::Notify(text);
    const auto self = Hold();
    if (auto* picking = Window()) TellPicker(picking->IsPicking());
  }

 private:
  std::unique_ptr<CDlgFilterBase> NewWindow() override {
    return std::make_unique<CDlgWhiteBlackGrey>(this, Class());
  }
  CDlgWhiteBlackGrey* Window() const { return static_cast<CDlgWhiteBlackGrey*>(Panel()); }

  void TellPicker(bool begins) {
    PostToPage("ToolBarNotifications", core::kMessageColorPicker,
               reinterpret_cast<std::intptr_t>(kPicker), begins);
  }

  // The mode stays.
  void Reset() override {
    if (!window) return;
    Panel()->Change([](PanelValues& values) {
      for (const char* key : {"RedG", "GreenG", "BlueG"}) values.SetNumber(key, 255);
      values.SetNumber("Opacity", 100);
    });
  }

  void OnNamedCall(const char* name, std::intptr_t text) override {
    if (std::strcmp(name, kPicker) != 0 || !text || !window) return;
    const Parameter colour(reinterpret_cast<const char*>(text));
    Panel()->Change([&](PanelValues& values) {
      const auto take = [&](const char* key, const char* tag) {
        int part = 0;
        if (colour.Get(tag, part)) values.SetNumber(key, std::clamp(part, 0, 255));
      };
      take("RedG", "Red");
      take("GreenG", "Green");
      take("BlueG", "Blue");
    });
  }

  void OnClosing() override {
    if (window && Window()->IsPicking()) TellPicker(false);
  }
};

}  // namespace

CPdibFilterDialog* NewWhiteBlackGreyDialog(const DialogClass& row) {
  return new CWhiteBlackGreyDialog(row);
}

}  // namespace dialogs
