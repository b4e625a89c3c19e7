// The interfaces of a filter's dialog, beside those of the system's connection points and drags and
// IAnimLinkable.
#pragma once

#include <unknwn.h>

#include <cstdint>

#include "base/Guid.h"

// A window's handle: HWND, or on Linux GtkWindow*.
using AnimWindowHandle = void*;

// Edits the parameter text of the filters that are attached through the connection point. All
// operations come on the thread of the user interface.
struct IAnimFilterDialog : IUnknown {
  static constexpr IID kIid = base::Guid("{0E5B7D0A-54B6-4B59-8F5E-2B1B6C1D9A41}");

  // The ProgID of the class. E_FAIL, and nothing written, when it is not shorter than `size`.
  virtual HRESULT STDMETHODCALLTYPE GetName(char* buffer, int size) = 0;
  // Hands `a` on to the host's registry. E_FAIL without one.
  virtual HRESULT STDMETHODCALLTYPE HostForward(std::intptr_t a) = 0;
  // Hand their arguments on to the class. No class here looks at them: S_OK.
  virtual HRESULT STDMETHODCALLTYPE ClassForward1(std::intptr_t a, std::intptr_t b) = 0;
  virtual HRESULT STDMETHODCALLTYPE ClassForward2(std::intptr_t a, std::intptr_t b) = 0;
  virtual HRESULT STDMETHODCALLTYPE ClassForward3(std::intptr_t a, std::intptr_t b) = 0;
  virtual HRESULT STDMETHODCALLTYPE ClassForward4(std::intptr_t a, std::intptr_t b) = 0;
  // A page opens the dialog: makes the window, hidden, above the window `c` where that is the
  // handle of one, shows the filters' text in it and registers with the host. `a` and `b` are not
  // looked at. S_FALSE where no window could be made; the dialog works all the same. Each Open
  // wants a Close; from the first to the last the dialog keeps itself alive.
  virtual HRESULT STDMETHODCALLTYPE Open(std::intptr_t a, std::intptr_t b, std::intptr_t c) = 0;
  virtual HRESULT STDMETHODCALLTYPE Close() = 0;
  // Shows and activates the window.
  virtual HRESULT STDMETHODCALLTYPE Show() = 0;
  // The next change is to be announced to the host.
  virtual HRESULT STDMETHODCALLTYPE SetFirstChange() = 0;
  virtual HRESULT STDMETHODCALLTYPE ClearFirstChange() = 0;
  // Not 0: the window goes on top when it opens and does not show what the filters hold.
  virtual HRESULT STDMETHODCALLTYPE SetModeValue(std::intptr_t value) = 0;
  // 1, and null, without a window.
  virtual HRESULT STDMETHODCALLTYPE GetWindowHandle(AnimWindowHandle* result) = 0;

 protected:
  ~IAnimFilterDialog() = default;
};

// What a host calls by name.
struct IAnimRunnable : IUnknown {
  static constexpr IID kIid = base::Guid("{7D3C2F18-0B0E-4E57-9C43-5A86D2F1B7C4}");

  virtual HRESULT STDMETHODCALLTYPE RunCall1() = 0;
  // Hands `a` on to the class.
  virtual HRESULT STDMETHODCALLTYPE RunCall2(std::intptr_t a) = 0;
  virtual HRESULT STDMETHODCALLTYPE RunCall3() = 0;
  virtual HRESULT STDMETHODCALLTYPE RunCall4() = 0;
  // Hands `a` on to the class.
  virtual HRESULT STDMETHODCALLTYPE RunCall5(std::intptr_t a) = 0;
  // The named calls. The arguments are numbers or pointers by the name; those that a name does not
  // use may be left out:
  //
  //   "TimerCallback" (text)            answers -1
  //   "Localize" (key, buffer, size)    the words for a key; nothing where they do not fit
  //   "GetContexthelp" (text or null)
  //   "bu_lock"                         the lock button was used
  //   "CheckDragDrop"                   answers -2
  //   "ButtonTop"                       gives all filters what the window shows
  //   "ButtonTopCopyEnabled" (int*)     whether that would change something; also in the answer
  //   "ButtonTopDelete"                 removes the filter from the host's chains
  //   "ButtonTopDrag"                   drags the filter out of the dialog
  //   "LockUnlocked" (int*)             1 while the lock button is up; also in the answer
  //   "GenerateBubbleHelpText", "ShowBubbleHelpText", "HideBubbleHelpText" (any)
  //   "ButtonClose"
  //   "ColorPicker" (text)              see core::kMessageColorPicker
  //
  // Any other name goes to the class. S_OK where nothing else is said; E_POINTER for a null name.
  virtual HRESULT STDMETHODCALLTYPE Dispatch(const char* name, std::intptr_t a, std::intptr_t b,
                                             std::intptr_t c) = 0;

 protected:
  ~IAnimRunnable() = default;
};

// A message of a host's page.
struct AnimMessage {
  std::int32_t page;
  std::int32_t number;
  std::intptr_t first;   // "first word"
  std::intptr_t second;  // "second word"
};
static_assert(sizeof(AnimMessage) == 8 + 2 * sizeof(std::intptr_t));

struct IAnimMessageReceiver : IUnknown {
  static constexpr IID kIid = base::Guid("{B86F9D54-1E7A-4A0C-8B6D-3F0E9C7A2D15}");

  virtual HRESULT STDMETHODCALLTYPE OnHostMessage(const AnimMessage* record) = 0;

 protected:
  ~IAnimMessageReceiver() = default;
};

namespace core {

// A new dialog object for a filter class, with one reference, which is the caller's; null where the
// class has none.
using DialogMaker = IUnknown* (*)(const char* progId);

// The module sets the maker at its start; filters ask it. Null: no class has a dialog.
void SetDialogMaker(DialogMaker maker);
DialogMaker CurrentDialogMaker();

}  // namespace core
