// What a screen reader finds in the real windows of the dialogs of all classes, on Windows. The
// last line is "well", and the exit status 0, when all is well.
#include <windows.h>
// After it.
#include <commctrl.h>
#include <oleacc.h>

#include <cstdio>
#include <vector>

#include "platform/windows/Text.h"
#include "tests/dialogs/OpenDialog.h"

template <>
inline const IID& platform::IidOf<IAccessible>() {
  return __uuidof(IAccessible);
}

namespace {

using testing_support::OpenDialog;
using testing_support::PumpFor;

struct Told {
  HWND window = nullptr;
  platform::ComPtr<IAccessible> object;
  long role = 0, state = 0;
  std::string name, value;
};

VARIANT Self() {
  VARIANT self = {};
  self.vt = VT_I4;
  self.lVal = CHILDID_SELF;
  return self;
}

std::string TextOf(BSTR text) {
  const std::string utf8 = text ? platform::Utf8Of({text, SysStringLen(text)}) : std::string();
  SysFreeString(text);
  return utf8;
}

void Renew(Told& told) {
  VARIANT number = {};
  BSTR text = nullptr;
  if (SUCCEEDED(told.object->get_accRole(Self(), &number)) && number.vt == VT_I4) {
    told.role = number.lVal;
  }
  if (SUCCEEDED(told.object->get_accState(Self(), &number)) && number.vt == VT_I4) {
    told.state = number.lVal;
  }
  told.name = told.object->get_accName(Self(), &text) == S_OK ? TextOf(text) : "";
  text = nullptr;
  told.value = told.object->get_accValue(Self(), &text) == S_OK ? TextOf(text) : "";
}

BOOL CALLBACK AddWindow(HWND window, LPARAM to) {
  if (IsWindowVisible(window)) reinterpret_cast<std::vector<HWND>*>(to)->push_back(window);
  return TRUE;
}

// What a reader meets in the dialog that is open, in the order of the windows.
std::vector<Told> Read() {
  std::vector<HWND> tops, windows;
  EnumThreadWindows(GetCurrentThreadId(), AddWindow, reinterpret_cast<LPARAM>(&tops));
  for (HWND top : tops) EnumChildWindows(top, AddWindow, reinterpret_cast<LPARAM>(&windows));
  std::vector<Told> all;
  for (HWND window : windows) {
    Told told;
    void* object = nullptr;
    AccessibleObjectFromWindow(window, static_cast<DWORD>(OBJID_CLIENT),
                               platform::IidOf<IAccessible>(), &object);
    if (!object) continue;
    told.window = window;
    told.object = platform::ComPtr<IAccessible>::Attach(static_cast<IAccessible*>(object));
    Renew(told);
    all.push_back(told);
  }
  return all;
}

bool TakesFocus(const Told& told) {
  return GetWindowLongPtrW(told.window, GWL_STYLE) & WS_TABSTOP;
}

void Print(const Told& told) {
  char kind[40] = "";
  GetClassNameA(told.window, kind, sizeof kind);
  std::printf("%s role %ld state %lx focus %d \"%s\" = \"%s\"\n", kind, told.role, told.state,
              TakesFocus(told), told.name.c_str(), told.value.c_str());
}

bool IsA(const Told& told, const wchar_t* kind) {
  wchar_t name[40] = L"";
  GetClassNameW(told.window, name, 40);
  return lstrcmpiW(name, kind) == 0;
}

int Expect(bool isWell, const char* what, const Told& told) {
  if (isWell) return 0;
  std::printf("%s: ", what);
  Print(told);
  return 1;
}

// Wine has no roles for these, which are the system's.
bool IsSystemsOwn(const Told& told) {
  return IsA(told, L"Button") || IsA(told, L"ComboBox") || IsA(told, L"ListBox");
}

// The label ahead, of which the system makes the name of a choice; Wine takes what is chosen.
std::string NameOf(const Told& told) {
  if (!IsA(told, L"ComboBox") && !IsA(told, L"ListBox")) return told.name;
  wchar_t kind[40] = L"", text[200] = L"";
  HWND const ahead = GetWindow(told.window, GW_HWNDPREV);
  GetClassNameW(ahead, kind, 40);
  GetWindowTextW(ahead, text, 200);
  return lstrcmpiW(kind, L"Static") == 0 ? platform::Utf8Of(text) : "";
}

// What can be worked with has a name, and the role of what it does.
int CheckControls(const std::vector<Told>& all) {
  int failures = all.empty();
  for (const Told& told : all) {
    if (!TakesFocus(told) || !IsWindowEnabled(told.window)) continue;
    failures += Expect(!NameOf(told).empty(), "no name", told);
    const bool hasRole = told.role != 0 && told.role != ROLE_SYSTEM_CLIENT;
    failures += Expect(hasRole || IsSystemsOwn(told), "no role", told);
    failures += Expect(told.state & STATE_SYSTEM_FOCUSABLE, "cannot have the focus", told);
    if (IsA(told, TRACKBAR_CLASSW)) {
      failures += Expect(told.role == ROLE_SYSTEM_SLIDER && !told.value.empty(), "no slider", told);
    }
  }
  return failures;
}

// Keys move the slider, and its value is told.
int CheckSlider(toolkit::Backend& backend, Told slider) {
  int failures = Expect(slider.name == "Strength" && slider.value == "0", "before", slider);
  SetFocus(slider.window);
  for (int i = 0; i < 5; ++i) {
    SendMessageW(slider.window, WM_KEYDOWN, VK_RIGHT, 0);
    SendMessageW(slider.window, WM_KEYUP, VK_RIGHT, 0);
  }
  PumpFor(backend, 50);
  Renew(slider);
  failures += Expect(slider.value == "5", "after five steps", slider);
  return failures + Expect(slider.state & STATE_SYSTEM_FOCUSED, "without focus", slider);
}

// A reader may hold what has gone.
int CheckOutlived(Told slider) {
  Renew(slider);
  return Expect(slider.state & STATE_SYSTEM_UNAVAILABLE, "still there", slider) +
         Expect(slider.name == "Strength", "another name", slider);
}

int CheckSepia(toolkit::Backend& backend, const DialogClass& row) {
  std::vector<Told> sliders;
  int failures = 0;
  {
    const OpenDialog open(row);
    PumpFor(backend, 50);
    for (const Told& told : Read()) {
      if (told.role == ROLE_SYSTEM_SLIDER) sliders.push_back(told);
    }
    if (sliders.size() != 1) return 1;
    failures += CheckSlider(backend, sliders[0]);
  }
  return failures + CheckOutlived(sliders[0]);
}

int Check(toolkit::Backend& backend, const DialogClass& row) {
  const OpenDialog open(row);
  PumpFor(backend, 20);
  const int failures = CheckControls(Read());
  if (failures) std::printf("%s: %d wrong\n", row.className, failures);
  return failures;
}

}  // namespace

int main() {
  CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
  toolkit::Backend* const system = toolkit::CurrentBackend(nullptr);
  if (!system) return 2;
  testing_support::ObservedBackend backend(*system);
  const toolkit::ScopedBackend scope(&backend);
  int failures = 0;
  for (const DialogClass* row : dialogs::DialogClasses()) {
    failures += Check(backend, *row);
    if (std::string(row->progId) == "ZNFilter.Sepia.1") failures += CheckSepia(backend, *row);
  }
  std::printf("%s\n", failures ? "wrong" : "well");
  return failures != 0;
}
