// The controls that the system draws: texts, buttons, sliders, edits and lists.
#include <windows.h>
// behind windows.h
#include <uxtheme.h>
#include <vssym32.h>
#include <windowsx.h>

#include "toolkit/ZNControls.h"
#include "toolkit/windows/Controls.h"
#include "toolkit/windows/DarkControls.h"
#include "toolkit/windows/GdiPainter.h"
#include "toolkit/windows/WideText.h"

namespace toolkit {
namespace {

// --- texts

class TextControl final : public WindowsControl {
 public:
  TextControl(HWND parent, ControlId newId, const ControlSpec& controlSpec, WindowEvents& receiver,
              WindowsSystem& shared)
      : WindowsControl(newId, controlSpec, receiver, shared) {
    Create(parent, L"STATIC", SS_LEFTNOWORDWRAP | SS_CENTERIMAGE);
  }
  void SetFont() override {
    HFONT font = Kind() == ControlKind::Heading ? system.BoldFont() : system.Font();
    SendMessageW(Handle(), WM_SETFONT, reinterpret_cast<WPARAM>(font), TRUE);
  }
};

// --- buttons

DWORD ButtonStyle(const ControlSpec& spec) {
  switch (spec.kind) {
    case ControlKind::ToggleButton:
      return BS_AUTOCHECKBOX | BS_PUSHLIKE | WS_TABSTOP;
    case ControlKind::CheckBox:
      return BS_AUTOCHECKBOX | WS_TABSTOP;
    case ControlKind::RadioButton:
      return BS_AUTORADIOBUTTON | (spec.opensGroup ? WS_GROUP | WS_TABSTOP : 0);
    default:
      return (spec.isDefault ? BS_DEFPUSHBUTTON : BS_PUSHBUTTON) | WS_TABSTOP;
  }
}

// Push and toggle buttons, check boxes and radio buttons.
class ButtonControl final : public WindowsControl {
 public:
  ButtonControl(HWND parent, ControlId newId, const ControlSpec& controlSpec,
                WindowEvents& receiver, WindowsSystem& shared)
      : WindowsControl(newId, controlSpec, receiver, shared) {
    Create(parent, L"BUTTON", ButtonStyle(controlSpec));
  }

  void SetValue(int value) override { Button_SetCheck(Handle(), value ? BST_CHECKED : 0); }

  void HandleCommand(int code) override {
    if (code != BN_CLICKED) return;
    const bool isPush = Kind() == ControlKind::Button;
    const int value = isPush ? 0 : Button_GetCheck(Handle()) == BST_CHECKED;
    if (Kind() == ControlKind::RadioButton && value == 0) return;
    events.OnValue(Id(), value);
  }

  LRESULT CustomDraw(NMCUSTOMDRAW& draw) override {
    if (!system.Colours().isDark || draw.dwDrawStage != CDDS_PREPAINT) return CDRF_DODEFAULT;
    const bool isOn = Button_GetCheck(Handle()) == BST_CHECKED;
    const bool isRound = Kind() == ControlKind::RadioButton;
    if (isRound || Kind() == ControlKind::CheckBox) {
      DrawDarkBox(system, draw, WideOf(TextOf(Handle())), isRound, isOn);
    } else {
      DrawDarkButton(system, draw, WideOf(TextOf(Handle())), isOn);
    }
    return CDRF_SKIPDEFAULT;
  }
};

class ColourControl final : public WindowsControl {
 public:
  ColourControl(HWND parent, ControlId newId, const ControlSpec& controlSpec,
                WindowEvents& receiver, WindowsSystem& shared)
      : WindowsControl(newId, controlSpec, receiver, shared) {
    Create(parent, L"BUTTON", BS_OWNERDRAW | WS_TABSTOP);
  }

  void SetColour(Colour newColour) override {
    colour = newColour;
    InvalidateRect(Handle(), nullptr, FALSE);
  }
  void HandleCommand(int code) override {
    if (code == BN_CLICKED) events.OnValue(Id(), 0);
  }
  // A button of the system's look around the colour.
  void Draw(const DRAWITEMSTRUCT& item) override {
    RECT place = item.rcItem;
    const Look& look = system.Colours();
    const bool isOff = (item.itemState & ODS_DISABLED) != 0;
    FillWith(item.hDC, place, look.window);
    HTHEME theme = look.isDark ? nullptr : OpenThemeData(Handle(), L"BUTTON");
    if (theme) {
      const int state = isOff                           ? PBS_DISABLED
                        : item.itemState & ODS_SELECTED ? PBS_PRESSED
                                                        : PBS_NORMAL;
      DrawThemeBackground(theme, item.hDC, BP_PUSHBUTTON, state, &place, nullptr);
      CloseThemeData(theme);
    } else {
      FillWith(item.hDC, place, item.itemState & ODS_FOCUS ? look.accent : look.line);
      InflateRect(&place, -1, -1);
      FillWith(item.hDC, place, look.field);
    }
    InflateRect(&place, -system.Scaled(5), -system.Scaled(5));
    FillWith(item.hDC, place, look.line);
    InflateRect(&place, -1, -1);
    FillWith(item.hDC, place, isOff ? look.line : colour);
    InflateRect(&place, 3, 3);
    const bool showsFocus = (item.itemState & ODS_FOCUS) && !(item.itemState & ODS_NOFOCUSRECT);
    if (showsFocus) DrawFocusRect(item.hDC, &place);
  }

 private:
  Colour colour;
};

// --- sliders

// The module that an address lies in, or that begins there.
HINSTANCE ModuleAt(void* address) {
  HMODULE module = nullptr;
  GetModuleHandleExW(
      GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
      static_cast<LPCWSTR>(address), &module);
  return module;
}

// A bitmap of a module's resources; none where there are no bitmaps.
class ResourceBitmap {
 public:
  ResourceBitmap(const SliderBitmaps* of, const std::string SliderBitmaps::*name) {
    if (!of) return;
    bitmap = static_cast<HBITMAP>(LoadImageA(ModuleAt(of->module), (of->*name).c_str(),
                                             IMAGE_BITMAP, 0, 0, LR_CREATEDIBSECTION));
    if (bitmap) GetObjectW(bitmap, sizeof info, &info);
  }
  ~ResourceBitmap() {
    if (bitmap) DeleteObject(bitmap);
  }
  ResourceBitmap(const ResourceBitmap&) = delete;
  ResourceBitmap& operator=(const ResourceBitmap&) = delete;

  explicit operator bool() const { return bitmap != nullptr; }
  int Height() const { return static_cast<int>(info.bmHeight); }

  // Stretched over the place; pixels of the colour in the bitmap's corner are left out.
  void Draw(HDC device, const RECT& place) const {
    HDC memory = CreateCompatibleDC(device);
    HGDIOBJ before = SelectObject(memory, bitmap);
    TransparentBlt(device, place.left, place.top, place.right - place.left,
                   place.bottom - place.top, memory, 0, 0, static_cast<int>(info.bmWidth),
                   static_cast<int>(info.bmHeight), GetPixel(memory, 0, 0));
    SelectObject(memory, before);
    DeleteDC(memory);
  }

 private:
  HBITMAP bitmap = nullptr;
  BITMAP info = {};
};

class SliderControl final : public WindowsControl {
 public:
  SliderControl(HWND parent, ControlId newId, const ControlSpec& controlSpec,
                WindowEvents& receiver, WindowsSystem& shared)
      : WindowsControl(newId, controlSpec, receiver, shared) {
    Create(parent, TRACKBAR_CLASSW, TBS_HORZ | TBS_BOTH | TBS_NOTICKS | WS_TABSTOP);
  }

  // A click beside the thumb moves it by a tenth.
  void SetRange(int least, int greatest) override {
    SendMessageW(Handle(), TBM_SETRANGEMIN, FALSE, least);
    SendMessageW(Handle(), TBM_SETRANGEMAX, TRUE, greatest);
    const int page = (greatest - least) / 10;
    SendMessageW(Handle(), TBM_SETPAGESIZE, 0, page > 1 ? page : 1);
  }
  void SetValue(int value) override { SendMessageW(Handle(), TBM_SETPOS, TRUE, value); }

  void HandleScroll() override {
    events.OnValue(Id(), static_cast<int>(SendMessageW(Handle(), TBM_GETPOS, 0, 0)));
  }

  LRESULT CustomDraw(NMCUSTOMDRAW& draw) override {
    if (draw.dwDrawStage == CDDS_PREPAINT) return CDRF_NOTIFYITEMDRAW;
    if (draw.dwDrawStage != CDDS_ITEMPREPAINT) return CDRF_DODEFAULT;
    if (draw.dwItemSpec == TBCD_CHANNEL) return DrawScale(draw);
    return draw.dwItemSpec == TBCD_THUMB ? DrawThumb(draw) : CDRF_DODEFAULT;
  }

 private:
  LRESULT DrawScale(const NMCUSTOMDRAW& draw) {
    const bool isCentred = spec.look == SliderLook::AroundZero;
    const ResourceBitmap scale(spec.look == SliderLook::Plain ? nullptr : CZNSlider::ScaleBitmaps(),
                               isCentred ? &SliderBitmaps::aroundZero : &SliderBitmaps::fromZero);
    RECT place = draw.rc;
    if (scale) {
      const int middle = (place.top + place.bottom) / 2;
      const int half = system.Scaled(scale.Height()) / 2;
      place.top = middle - half;
      place.bottom = middle + half;
      scale.Draw(draw.hdc, place);
      return CDRF_SKIPDEFAULT;
    }
    if (!system.Colours().isDark) return CDRF_DODEFAULT;
    FillWith(draw.hdc, place, system.Colours().line);
    return CDRF_SKIPDEFAULT;
  }

  LRESULT DrawThumb(const NMCUSTOMDRAW& draw) {
    const ResourceBitmap thumb(CZNSlider::ThumbBitmaps(), &SliderBitmaps::thumb);
    if (thumb && IsWindowEnabled(Handle())) {
      thumb.Draw(draw.hdc, draw.rc);
      return CDRF_SKIPDEFAULT;
    }
    if (!system.Colours().isDark) return CDRF_DODEFAULT;
    const Look& look = system.Colours();
    FillWith(draw.hdc, draw.rc, IsWindowEnabled(Handle()) ? look.accent : look.line);
    return CDRF_SKIPDEFAULT;
  }
};

// --- edits and lists

class EditControl final : public WindowsControl {
 public:
  EditControl(HWND parent, ControlId newId, const ControlSpec& controlSpec, WindowEvents& receiver,
              WindowsSystem& shared)
      : WindowsControl(newId, controlSpec, receiver, shared) {
    Create(parent, L"EDIT", ES_AUTOHSCROLL | WS_TABSTOP, WS_EX_CLIENTEDGE);
  }

  void SetText(const std::string& text) override {
    isQuiet = true;
    WindowsControl::SetText(text);
    isQuiet = false;
  }
  void HandleCommand(int code) override {
    if (code == EN_CHANGE && !isQuiet) events.OnText(Id(), TextOf(Handle()));
  }

 private:
  bool HandleMessage(UINT message, WPARAM wide, LPARAM more, LRESULT& result) override {
    return PaintsDarkFrame(message, wide, more, result);
  }

  bool isQuiet = false;
};

class ChoiceControl final : public WindowsControl {
 public:
  ChoiceControl(HWND parent, ControlId newId, const ControlSpec& controlSpec,
                WindowEvents& receiver, WindowsSystem& shared)
      : WindowsControl(newId, controlSpec, receiver, shared) {
    Create(parent, L"COMBOBOX", CBS_DROPDOWNLIST | WS_VSCROLL | WS_TABSTOP);
  }

  // The height that the system is told is that of the opened list.
  void Place(const Rect& place) override {
    Rect opened = place;
    opened.height += system.Scaled(200);
    WindowsControl::Place(opened);
  }
  void SetItems(const std::vector<std::string>& items) override {
    ComboBox_ResetContent(Handle());
    for (const std::string& item : items) {
      SendMessageW(Handle(), CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(WideOf(item).c_str()));
    }
  }
  void SetValue(int value) override { ComboBox_SetCurSel(Handle(), value); }
  void HandleCommand(int code) override {
    if (code == CBN_SELCHANGE) events.OnValue(Id(), ComboBox_GetCurSel(Handle()));
  }

 private:
  // The system also draws the choice in between; what it drew is drawn over again.
  bool HandleMessage(UINT message, WPARAM, LPARAM, LRESULT& result) override {
    if (!system.Colours().isDark) return false;
    if (message == WM_PAINT) {
      PAINTSTRUCT paint;
      HDC device = BeginPaint(Handle(), &paint);
      DrawDarkCombo(system, Handle(), device, WideOf(TextOf(Handle())));
      EndPaint(Handle(), &paint);
      result = 0;
      return true;
    }
    const bool isDrawn = message == CB_SETCURSEL || message == WM_ENABLE ||
                         message == WM_MOUSELEAVE || message == WM_LBUTTONUP ||
                         message == WM_COMMAND || message == WM_KEYDOWN;
    if (isDrawn) InvalidateRect(Handle(), nullptr, FALSE);
    return false;
  }
};

class ListControl final : public WindowsControl {
 public:
  ListControl(HWND parent, ControlId newId, const ControlSpec& controlSpec, WindowEvents& receiver,
              WindowsSystem& shared)
      : WindowsControl(newId, controlSpec, receiver, shared) {
    Create(parent, L"LISTBOX", LBS_NOTIFY | LBS_NOINTEGRALHEIGHT | WS_VSCROLL | WS_TABSTOP,
           WS_EX_CLIENTEDGE);
  }

  void SetItems(const std::vector<std::string>& items) override {
    ListBox_ResetContent(Handle());
    for (const std::string& item : items) {
      SendMessageW(Handle(), LB_ADDSTRING, 0, reinterpret_cast<LPARAM>(WideOf(item).c_str()));
    }
  }
  void SetValue(int value) override { ListBox_SetCurSel(Handle(), value); }
  void HandleCommand(int code) override {
    if (code == LBN_SELCHANGE) events.OnValue(Id(), ListBox_GetCurSel(Handle()));
  }

 private:
  bool HandleMessage(UINT message, WPARAM wide, LPARAM more, LRESULT& result) override {
    return PaintsDarkFrame(message, wide, more, result);
  }
};

}  // namespace

std::unique_ptr<WindowsControl> MakeSystemControl(HWND parent, ControlId id,
                                                  const ControlSpec& spec, WindowEvents& events,
                                                  WindowsSystem& system) {
  switch (spec.kind) {
    case ControlKind::Static:
    case ControlKind::Heading:
      return std::make_unique<TextControl>(parent, id, spec, events, system);
    case ControlKind::Button:
    case ControlKind::ToggleButton:
    case ControlKind::CheckBox:
    case ControlKind::RadioButton:
      return std::make_unique<ButtonControl>(parent, id, spec, events, system);
    case ControlKind::Slider:
      return std::make_unique<SliderControl>(parent, id, spec, events, system);
    case ControlKind::Edit:
      return std::make_unique<EditControl>(parent, id, spec, events, system);
    case ControlKind::ComboBox:
      return std::make_unique<ChoiceControl>(parent, id, spec, events, system);
    case ControlKind::List:
      return std::make_unique<ListControl>(parent, id, spec, events, system);
    case ControlKind::ColourButton:
      return std::make_unique<ColourControl>(parent, id, spec, events, system);
    case ControlKind::Canvas:
    case ControlKind::Dock:
      break;
  }
  return nullptr;
}

}  // namespace toolkit
