#include "toolkit/windows/AccessibleControl.h"

#include <oleacc.h>
#include <oleauto.h>

#include "platform/component/ComObject.h"
#include "platform/component/ComPtr.h"
#include "toolkit/windows/WideText.h"

namespace platform {

// Not IID_IAccessible: the library of oleacc has code under that name.
template <>
inline const IID& IidOf<IAccessible>() {
  return __uuidof(IAccessible);
}

}  // namespace platform

namespace toolkit {
namespace {

long RoleOf(const ControlSpec& spec) {
  if (spec.kind == ControlKind::Slider) return ROLE_SYSTEM_SLIDER;
  if (spec.kind == ControlKind::ColourButton) return ROLE_SYSTEM_PUSHBUTTON;
  switch (spec.role) {
    case CanvasRole::Adjustable:
      return ROLE_SYSTEM_SLIDER;
    case CanvasRole::List:
      return ROLE_SYSTEM_LIST;
    case CanvasRole::Status:
      return ROLE_SYSTEM_STATUSBAR;
    case CanvasRole::Border:
      return ROLE_SYSTEM_SEPARATOR;
    default:
      return ROLE_SYSTEM_GRAPHIC;
  }
}

void SetLong(VARIANT* result, long value) {
  result->vt = VT_I4;
  result->lVal = value;
}

// Child 0 is the control itself, the rows count from 1.
class AccessibleControl final : public platform::ComObject<AccessibleControl, IAccessible> {
 public:
  AccessibleControl(std::shared_ptr<AccessibleContent> told, IDispatch* parentObject)
      : content(std::move(told)), parent(parentObject) {}
  ~AccessibleControl() {
    if (parent) parent->Release();
  }

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** result) override {
    const bool isBase = base::SameGuid(iid, IID_IDispatch);
    return ComObject::QueryInterface(isBase ? platform::IidOf<IAccessible>() : iid, result);
  }
  HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* count) override {
    if (!count) return E_POINTER;
    *count = 0;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo** info) override {
    if (info) *info = nullptr;
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE Invoke(DISPID, REFIID, LCID, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO*,
                                   UINT*) override {
    return E_NOTIMPL;
  }

  HRESULT STDMETHODCALLTYPE get_accParent(IDispatch** result) override {
    if (!result) return E_POINTER;
    *result = parent;
    if (!parent) return S_FALSE;
    parent->AddRef();
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE get_accChildCount(long* count) override {
    if (!count) return E_POINTER;
    *count = static_cast<long>(content->rows.size());
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE get_accChild(VARIANT, IDispatch** result) override {
    if (!result) return E_POINTER;
    *result = nullptr;
    return S_FALSE;  // rows are told by this object
  }
  HRESULT STDMETHODCALLTYPE get_accName(VARIANT child, BSTR* result) override {
    const CanvasRow* row = nullptr;
    if (!Find(child, row, result)) return E_INVALIDARG;
    return Give(row ? WideOf(row->name) : content->name, result);
  }
  HRESULT STDMETHODCALLTYPE get_accValue(VARIANT child, BSTR* result) override {
    const CanvasRow* row = nullptr;
    if (!Find(child, row, result)) return E_INVALIDARG;
    return row ? S_FALSE : Give(content->value, result);
  }
  HRESULT STDMETHODCALLTYPE get_accDescription(VARIANT, BSTR* result) override {
    return None(result);
  }
  HRESULT STDMETHODCALLTYPE get_accRole(VARIANT child, VARIANT* result) override {
    const CanvasRow* row = nullptr;
    if (!Find(child, row, result)) return E_INVALIDARG;
    const long ofRow = row && row->isChecked ? ROLE_SYSTEM_CHECKBUTTON : ROLE_SYSTEM_LISTITEM;
    SetLong(result, row ? ofRow : content->role);
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE get_accState(VARIANT child, VARIANT* result) override {
    const CanvasRow* row = nullptr;
    if (!Find(child, row, result)) return E_INVALIDARG;
    SetLong(result, row ? StateOf(*row) : OwnState());
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE get_accHelp(VARIANT, BSTR* result) override { return None(result); }
  HRESULT STDMETHODCALLTYPE get_accHelpTopic(BSTR* file, VARIANT, long* topic) override {
    if (topic) *topic = 0;
    return None(file);
  }
  HRESULT STDMETHODCALLTYPE get_accKeyboardShortcut(VARIANT, BSTR* result) override {
    return None(result);
  }
  HRESULT STDMETHODCALLTYPE get_accFocus(VARIANT* result) override {
    if (!result) return E_POINTER;
    result->vt = VT_EMPTY;
    if (content->window && GetFocus() == content->window) SetLong(result, CHILDID_SELF);
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE get_accSelection(VARIANT* result) override {
    if (!result) return E_POINTER;
    result->vt = VT_EMPTY;
    for (std::size_t i = content->rows.size(); i > 0; --i) {
      if (content->rows[i - 1].isSelected) SetLong(result, static_cast<long>(i));
    }
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE get_accDefaultAction(VARIANT, BSTR* result) override {
    return None(result);
  }
  HRESULT STDMETHODCALLTYPE accSelect(long flags, VARIANT child) override {
    const CanvasRow* row = nullptr;
    if (!Find(child, row, &child) || !content->window) return E_INVALIDARG;
    if (flags & SELFLAG_TAKEFOCUS) SetFocus(content->window);
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE accLocation(long* left, long* top, long* width, long* height,
                                        VARIANT child) override {
    const CanvasRow* row = nullptr;
    if (!top || !width || !height || !Find(child, row, left)) return E_INVALIDARG;
    const RECT place = OnScreen(row);
    *left = place.left;
    *top = place.top;
    *width = place.right - place.left;
    *height = place.bottom - place.top;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE accNavigate(long direction, VARIANT from, VARIANT* result) override {
    const CanvasRow* row = nullptr;
    if (!Find(from, row, result)) return E_INVALIDARG;
    result->vt = VT_EMPTY;
    const auto count = static_cast<long>(content->rows.size());
    const bool isStep = direction == NAVDIR_NEXT || direction == NAVDIR_PREVIOUS;
    const long to = direction == NAVDIR_FIRSTCHILD  ? 1
                    : direction == NAVDIR_LASTCHILD ? count
                    : direction == NAVDIR_NEXT      ? from.lVal + 1
                                                    : from.lVal - 1;
    if ((isStep && !row) || to < 1 || to > count) return S_FALSE;
    SetLong(result, to);
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE accHitTest(long x, long y, VARIANT* result) override {
    if (!result) return E_POINTER;
    result->vt = VT_EMPTY;
    const POINT place = {x, y};
    const RECT own = OnScreen(nullptr);
    if (!PtInRect(&own, place)) return S_FALSE;
    SetLong(result, CHILDID_SELF);
    for (std::size_t i = 0; i < content->rows.size(); ++i) {
      const RECT row = OnScreen(&content->rows[i]);
      if (PtInRect(&row, place)) SetLong(result, static_cast<long>(i) + 1);
    }
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE accDoDefaultAction(VARIANT) override { return DISP_E_MEMBERNOTFOUND; }
  HRESULT STDMETHODCALLTYPE put_accName(VARIANT, BSTR) override { return DISP_E_MEMBERNOTFOUND; }
  HRESULT STDMETHODCALLTYPE put_accValue(VARIANT, BSTR) override { return DISP_E_MEMBERNOTFOUND; }

 private:
  // The row that is meant, null for the control itself; false where there is none such.
  bool Find(const VARIANT& child, const CanvasRow*& row, const void* result) const {
    if (!result || child.vt != VT_I4 || child.lVal < 0) return false;
    const auto index = static_cast<std::size_t>(child.lVal);
    if (index > content->rows.size()) return false;
    row = index > 0 ? &content->rows[index - 1] : nullptr;
    return true;
  }
  static HRESULT Give(const std::wstring& text, BSTR* result) {
    *result = text.empty() ? nullptr : SysAllocString(text.c_str());
    return text.empty() ? S_FALSE : *result ? S_OK : E_OUTOFMEMORY;
  }
  static HRESULT None(BSTR* result) {
    if (!result) return E_POINTER;
    *result = nullptr;
    return S_FALSE;
  }
  long OwnState() const {
    HWND const window = content->window;
    if (!window) return STATE_SYSTEM_UNAVAILABLE;
    const bool takesFocus = GetWindowLongPtrW(window, GWL_STYLE) & WS_TABSTOP;
    return (takesFocus ? STATE_SYSTEM_FOCUSABLE : 0) |
           (GetFocus() == window ? STATE_SYSTEM_FOCUSED : 0) |
           (IsWindowEnabled(window) ? 0 : STATE_SYSTEM_UNAVAILABLE) |
           (IsWindowVisible(window) ? 0 : STATE_SYSTEM_INVISIBLE);
  }
  static long StateOf(const CanvasRow& row) {
    return STATE_SYSTEM_SELECTABLE | (row.isSelected ? STATE_SYSTEM_SELECTED : 0) |
           (row.isChecked.value_or(false) ? STATE_SYSTEM_CHECKED : 0);
  }
  RECT OnScreen(const CanvasRow* row) const {
    RECT place = {};
    GetClientRect(content->window, &place);
    if (row) place = {row->place.x, row->place.y, row->place.Right(), row->place.Bottom()};
    MapWindowPoints(content->window, nullptr, reinterpret_cast<POINT*>(&place), 2);
    return place;
  }

  std::shared_ptr<AccessibleContent> content;
  IDispatch* parent;
};

}  // namespace

AccessibleContent ContentOf(const ControlSpec& spec) {
  AccessibleContent content;
  content.name = WideOf(spec.name);
  content.role = RoleOf(spec);
  return content;
}

LRESULT AnswerWithAccessible(HWND window, const std::shared_ptr<AccessibleContent>& content,
                             WPARAM wide) {
  content->window = window;
  void* parent = nullptr;
  AccessibleObjectFromWindow(window, static_cast<DWORD>(OBJID_WINDOW),
                             platform::IidOf<IAccessible>(), &parent);
  const auto object = platform::ComPtr<IAccessible>::Attach(
      new AccessibleControl(content, static_cast<IAccessible*>(parent)));
  return LresultFromObject(platform::IidOf<IAccessible>(), wide, object.Get());
}

}  // namespace toolkit
