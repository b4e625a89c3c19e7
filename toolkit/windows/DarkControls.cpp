#include "toolkit/windows/DarkControls.h"

namespace toolkit {
namespace {

constexpr int kBoxSize = 13;
constexpr int kBoxGap = 5;
constexpr UINT kOneLine = DT_SINGLELINE | DT_VCENTER;

void FrameWith(HDC device, RECT place, Colour line, Colour inside) {
  FillWith(device, place, line);
  InflateRect(&place, -1, -1);
  FillWith(device, place, inside);
}

bool HidesFocus(HWND control) {
  return (SendMessageW(control, WM_QUERYUISTATE, 0, 0) & UISF_HIDEFOCUS) != 0;
}

void WriteText(const WindowsSystem& system, HDC device, RECT place, const std::wstring& text,
               UINT how, bool isOff) {
  const Look& look = system.Colours();
  HGDIOBJ before = SelectObject(device, system.Font());
  SetBkMode(device, TRANSPARENT);
  SetTextColor(device, RefOf(isOff ? look.line : look.text));
  DrawTextW(device, text.c_str(), -1, &place, how | kOneLine);
  SelectObject(device, before);
}

UINT PrefixesOf(HWND control) {
  const bool areHidden = (SendMessageW(control, WM_QUERYUISTATE, 0, 0) & UISF_HIDEACCEL) != 0;
  return areHidden ? DT_HIDEPREFIX : 0;
}

void DrawRound(HDC device, const RECT& place, Colour line, Colour inside) {
  HPEN pen = CreatePen(PS_SOLID, 1, RefOf(line));
  HBRUSH brush = CreateSolidBrush(RefOf(inside));
  HGDIOBJ penBefore = SelectObject(device, pen);
  HGDIOBJ brushBefore = SelectObject(device, brush);
  Ellipse(device, place.left, place.top, place.right, place.bottom);
  SelectObject(device, brushBefore);
  SelectObject(device, penBefore);
  DeleteObject(brush);
  DeleteObject(pen);
}

}  // namespace

void DrawStroke(HDC device, const POINT* corners, int count, int thickness, Colour colour) {
  HPEN pen = CreatePen(PS_SOLID, thickness, RefOf(colour));
  HGDIOBJ before = SelectObject(device, pen);
  Polyline(device, corners, count);
  SelectObject(device, before);
  DeleteObject(pen);
}

void DrawCheck(const WindowsSystem& system, HDC device, POINT place, Colour colour) {
  const int unit = system.Scaled(3);
  const POINT corners[] = {
      place, {place.x + unit, place.y + unit}, {place.x + 3 * unit, place.y - unit}};
  DrawStroke(device, corners, 3, system.Scaled(2), colour);
}

void DrawDarkButton(const WindowsSystem& system, const NMCUSTOMDRAW& draw, const std::wstring& text,
                    bool isDown) {
  const Look& look = system.Colours();
  const bool isPressed = (draw.uItemState & CDIS_SELECTED) || isDown;
  const bool hasFocus = (draw.uItemState & CDIS_FOCUS) != 0;
  FrameWith(draw.hdc, draw.rc, hasFocus ? look.accent : look.line,
            isPressed ? look.accent : look.field);
  WriteText(system, draw.hdc, draw.rc, text, DT_CENTER | PrefixesOf(draw.hdr.hwndFrom),
            (draw.uItemState & CDIS_DISABLED) != 0);
}

void DrawDarkBox(const WindowsSystem& system, const NMCUSTOMDRAW& draw, const std::wstring& text,
                 bool isRound, bool isChecked) {
  const Look& look = system.Colours();
  const bool isOff = (draw.uItemState & CDIS_DISABLED) != 0;
  const int size = system.Scaled(kBoxSize), middle = (draw.rc.top + draw.rc.bottom) / 2;
  const RECT box = {draw.rc.left, middle - size / 2, draw.rc.left + size, middle - size / 2 + size};
  FillWith(draw.hdc, draw.rc, look.window);
  const bool isHot = (draw.uItemState & CDIS_HOT) != 0;
  const Colour line = isHot ? look.accent : look.line;
  if (isRound) {
    DrawRound(draw.hdc, box, line, look.field);
    RECT dot = box;
    InflateRect(&dot, -size / 3, -size / 3);
    if (isChecked) DrawRound(draw.hdc, dot, look.text, look.text);
  } else {
    FrameWith(draw.hdc, box, line, look.field);
    const POINT mark = {box.left + size / 6, middle};
    if (isChecked) DrawCheck(system, draw.hdc, mark, isOff ? look.line : look.text);
  }
  RECT place = draw.rc;
  place.left = box.right + system.Scaled(kBoxGap);
  WriteText(system, draw.hdc, place, text, DT_LEFT | PrefixesOf(draw.hdr.hwndFrom), isOff);
  if ((draw.uItemState & CDIS_FOCUS) && !HidesFocus(draw.hdr.hwndFrom)) {
    place.left -= 2;
    DrawFocusRect(draw.hdc, &place);
  }
}

void DrawDarkCombo(const WindowsSystem& system, HWND combo, HDC device, const std::wstring& text) {
  const Look& look = system.Colours();
  const bool isOff = !IsWindowEnabled(combo);
  RECT place;
  GetClientRect(combo, &place);
  FrameWith(device, place, GetFocus() == combo ? look.accent : look.line, look.field);
  const int unit = system.Scaled(3), middle = (place.top + place.bottom) / 2;
  const int right = place.right - system.Scaled(8);
  const POINT arrow[] = {{right - 2 * unit, middle - unit / 2},
                         {right - unit, middle + unit / 2},
                         {right, middle - unit / 2}};
  DrawStroke(device, arrow, 3, system.Scaled(1), isOff ? look.line : look.text);
  place.left += system.Scaled(5);
  place.right = right - 2 * unit;
  WriteText(system, device, place, text, DT_LEFT | DT_NOPREFIX | DT_END_ELLIPSIS, isOff);
}

void DrawDarkFrame(const WindowsSystem& system, HWND control) {
  const Look& look = system.Colours();
  RECT place;
  GetWindowRect(control, &place);
  OffsetRect(&place, -place.left, -place.top);
  HDC device = GetWindowDC(control);
  HBRUSH line = CreateSolidBrush(RefOf(GetFocus() == control ? look.accent : look.line));
  FrameRect(device, &place, line);
  InflateRect(&place, -1, -1);
  FrameRect(device, &place, system.FieldBrush());
  DeleteObject(line);
  ReleaseDC(control, device);
}

}  // namespace toolkit
