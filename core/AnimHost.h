// What a host gives to the dialogs of filters: four interfaces, of which the dialogs use a few
// operations each. The operations are told by their place in the table, counted from 0 at
// QueryInterface; the places between are the host's own and are never called.
#pragma once

#include <unknwn.h>

#include <cstdint>

#include "base/Guid.h"

class KvString;
struct IDataObject;
struct IDropSource;

namespace core {

// One place of a table that is the host's own.
template <int Place>
struct HostSlot {};

// The places `First` to `Last` of a table behind those of `Base`. Those that `Base` has of its own
// need not be called by this name any more.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Woverloaded-virtual"
template <class Base, int First, int Last>
struct HostSlots : HostSlots<Base, First, Last - 1> {
  using HostSlots<Base, First, Last - 1>::HostOperation;
  virtual HRESULT STDMETHODCALLTYPE HostOperation(HostSlot<Last>) { return E_NOTIMPL; }

 protected:
  ~HostSlots() = default;
};
template <class Base, int First>
struct HostSlots<Base, First, First> : Base {
  virtual HRESULT STDMETHODCALLTYPE HostOperation(HostSlot<First>) { return E_NOTIMPL; }

 protected:
  ~HostSlots() = default;
};
#pragma GCC diagnostic pop

}  // namespace core

// All calls come on the thread of the user interface. Texts belong to the caller and live as long
// as the call. A failure code of the host is passed over.

// Knows which dialogs are open. Required.
struct IAnimHostRegistry : core::HostSlots<IUnknown, 3, 6> {
  static constexpr IID kIid = base::Guid("{3287659F-6510-4CA9-8E82-C43B1B855B2A}");

  // 7, 8: a dialog is there under this id, reached through its IAnimRunnable; and is gone.
  virtual HRESULT STDMETHODCALLTYPE RegisterDialog(const char* instanceId, IUnknown* runnable) = 0;
  virtual HRESULT STDMETHODCALLTYPE UnregisterDialog(const char* instanceId) = 0;
  // 9: the dialog is to be seen.
  virtual HRESULT STDMETHODCALLTYPE ShowDialog(const char* instanceId) = 0;
  virtual HRESULT STDMETHODCALLTYPE HostOperation10() { return E_NOTIMPL; }
  // 11: what IAnimFilterDialog::HostForward is called with.
  virtual HRESULT STDMETHODCALLTYPE Forward(std::intptr_t a) = 0;

 protected:
  ~IAnimHostRegistry() = default;
};

// Not asked for anything; a host may lack it.
struct IAnimHostOptional : IUnknown {
  static constexpr IID kIid = base::Guid("{719FA30C-3BEB-47D9-8771-893D20CCFE01}");

 protected:
  ~IAnimHostOptional() = default;
};

namespace core {

// The tables of the next two interfaces up to the first operation that is used.
struct HostPageFront : HostSlots<IUnknown, 3, 18> {
  // 19: the state of a button of the page, "ButtonTop" or "ButtonLock".
  virtual HRESULT STDMETHODCALLTYPE SetButtonState(const char* button, int state) = 0;

 protected:
  ~HostPageFront() = default;
};
struct HostMessagesFront : HostSlots<IUnknown, 3, 4> {
  // 5: `a` and `b` are numbers or pointers by the message; *result, which is 0 before, is the
  // page's answer.
  virtual HRESULT STDMETHODCALLTYPE Post(int page, int message, std::intptr_t a, std::intptr_t b,
                                         std::intptr_t* result) = 0;

 protected:
  ~HostMessagesFront() = default;
};

}  // namespace core

// The page that shows the dialog. Required.
struct IAnimHostPage : core::HostSlots<core::HostPageFront, 20, 42> {
  static constexpr IID kIid = base::Guid("{F8510991-2AC9-4D86-921D-B6B848FC52CB}");

  // 43: assigns the words for a key, in the system's code page, to a string that is there. A host
  // that has no KvString does it with FxboxSetString. Empty where it has no words.
  virtual HRESULT STDMETHODCALLTYPE Localize(const char* key, KvString* words) = 0;

 protected:
  ~IAnimHostPage() = default;
};

// Posts messages to pages and receives theirs. Required.
struct IAnimHostMessages : core::HostSlots<core::HostMessagesFront, 6, 13> {
  static constexpr IID kIid = base::Guid("{C7F1AC4B-C573-4C9B-8CA4-CD0ABE4C8C83}");

  // 14, 15: looks up a page by its name, and lets go of it. *page is 0 when there is none.
  virtual HRESULT STDMETHODCALLTYPE FindPage(const char* name, int* page) = 0;
  virtual HRESULT STDMETHODCALLTYPE ReleasePage(int page) = 0;
  // 16: the IAnimMessageReceiver that gets the page's messages from now on; null for nobody.
  virtual HRESULT STDMETHODCALLTYPE SetReceiver(int page, IUnknown* receiver) = 0;

 protected:
  ~IAnimHostMessages() = default;
};

// An interface of ours that a host's registry may have beside the other: it then carries the drags
// that begin in a dialog. Without it the window system does.
struct IAnimHostDrag : IUnknown {
  static constexpr IID kIid = base::Guid("{C9B5C0E2-4D57-4D0A-9A6C-6E0E7B1B8E35}");

  // As DoDragDrop: waits for the end and answers DRAGDROP_S_DROP or DRAGDROP_S_CANCEL.
  virtual HRESULT STDMETHODCALLTYPE Drag(IDataObject* object, IDropSource* source, DWORD allowed,
                                         DWORD* effect) = 0;

 protected:
  ~IAnimHostDrag() = default;
};

namespace core {

// Messages by number.
inline constexpr int kMessageBracketBegin = 59925;  // a: mode value, b: 4
inline constexpr int kMessageBracketEnd = 59926;    // the same
inline constexpr int kMessageFirstChange = 59911;   // a: instance id
inline constexpr int kMessageClosed = 59908;        // a: instance id
inline constexpr int kMessageDelete1 = 59937;       // a: instance id
inline constexpr int kMessageDelete2 = 59961;       // a: instance id
inline constexpr int kMessageDragBegin = 59953;     // a: instance id
inline constexpr int kMessageDragEnd = 59954;       // a: instance id
inline constexpr int kMessageWindowShown = 58741;   // a: window's handle
inline constexpr int kMessageContextHelp = 57953;   // a: text
inline constexpr int kMessageMakeBubble = 57361;    // a: what the call came with
inline constexpr int kMessageShowBubble = 57362;
inline constexpr int kMessageHideBubble = 57363;
inline constexpr int kMessageReset = 57808;  // received: first word not 0, second word 2
inline constexpr int kBracketKind = 4;

// Messages of our own, in the same manner. A host that does not know them answers 0.
//
// A dialog wants to be docked, undocked or has moved. a: the tag list text with FilterId, PosX and
// PosY; the result is 1 when the host has docked it.
inline constexpr int kMessageDock = 59970;
inline constexpr int kMessageUndock = 59971;
inline constexpr int kMessageUpdateDocked = 59972;
// A dialog waits for the colour under the pointer. a: "ColorPicker", b: 1 begins and 0 ends it. The
// host calls Dispatch("ColorPicker", text) with the tag list text Red, Green, Blue on each click.
inline constexpr int kMessageColorPicker = 57954;

}  // namespace core
