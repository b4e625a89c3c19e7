// How controls look in a dark theme, which those of the system do not know.
#pragma once

#include <windows.h>
// behind windows.h
#include <commctrl.h>

#include <string>

#include "toolkit/windows/System.h"

namespace toolkit {

// A push or toggle button, and a check box or radio button, as NM_CUSTOMDRAW asks for them.
void DrawDarkButton(const WindowsSystem& system, const NMCUSTOMDRAW& draw, const std::wstring& text,
                    bool isDown);
void DrawDarkBox(const WindowsSystem& system, const NMCUSTOMDRAW& draw, const std::wstring& text,
                 bool isRound, bool isChecked);
// A closed combo box with the text of its choice.
void DrawDarkCombo(const WindowsSystem& system, HWND combo, HDC device, const std::wstring& text);
// The frame of an edit or list: two pixels around what is inside.
void DrawDarkFrame(const WindowsSystem& system, HWND control);

// Lines from corner to corner.
void DrawStroke(HDC device, const POINT* corners, int count, int thickness, Colour colour);
// A check mark whose left end lies at the place.
void DrawCheck(const WindowsSystem& system, HDC device, POINT place, Colour colour);

}  // namespace toolkit
