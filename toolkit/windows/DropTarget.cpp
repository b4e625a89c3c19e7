#include "toolkit/windows/DropTarget.h"

#include <shellapi.h>

#include "platform/component/ComObject.h"
#include "platform/component/SystemInterfaces.h"

namespace platform {

template <>
inline const IID& IidOf<IDropTarget>() {
  return IID_IDropTarget;
}

}  // namespace platform

namespace toolkit {
namespace {

FORMATETC FileFormat() {
  return {CF_HDROP, nullptr, DVASPECT_CONTENT, -1, TYMED_HGLOBAL};
}

std::vector<std::filesystem::path> FilesOf(IDataObject* object) {
  constexpr UINT kCount = 0xFFFFFFFF;
  std::vector<std::filesystem::path> files;
  FORMATETC format = FileFormat();
  STGMEDIUM medium = {};
  if (FAILED(object->GetData(&format, &medium))) return files;
  const auto dropped = static_cast<HDROP>(medium.hGlobal);
  for (UINT i = 0; i < DragQueryFileW(dropped, kCount, nullptr, 0); ++i) {
    std::wstring name(DragQueryFileW(dropped, i, nullptr, 0) + 1, L'\0');
    name.resize(DragQueryFileW(dropped, i, name.data(), static_cast<UINT>(name.size())));
    files.emplace_back(name);
  }
  ReleaseStgMedium(&medium);
  return files;
}

class DropTarget final : public platform::ComObject<DropTarget, IDropTarget> {
 public:
  DropTarget(HWND target, const WindowSpec& spec, WindowEvents& receiver)
      : window(target),
        takesFiles(spec.takesFiles),
        takesObjects(spec.takesObjects),
        events(receiver) {}

  HRESULT STDMETHODCALLTYPE DragEnter(IDataObject* object, DWORD keys, POINTL place,
                                      DWORD* effect) override {
    if (!object || !effect) return E_POINTER;
    FORMATETC format = FileFormat();
    hasFiles = object->QueryGetData(&format) == S_OK;
    return DragOver(keys, place, effect);
  }
  HRESULT STDMETHODCALLTYPE DragOver(DWORD, POINTL place, DWORD* effect) override {
    if (!effect) return E_POINTER;
    const bool isTaken = hasFiles ? takesFiles : takesObjects;
    if (isTaken && !hasFiles) events.OnObjectOver(InClient(place));
    *effect = isTaken ? DROPEFFECT_COPY & *effect : DROPEFFECT_NONE;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE DragLeave() override {
    if (!hasFiles) events.OnObjectOver(std::nullopt);
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE Drop(IDataObject* object, DWORD keys, POINTL place,
                                 DWORD* effect) override {
    if (!object || !effect) return E_POINTER;
    DragOver(keys, place, effect);
    if (*effect == DROPEFFECT_NONE) return S_OK;
    if (hasFiles) {
      events.OnFilesDropped(FilesOf(object));
    } else if (!events.OnObjectDropped(object, InClient(place))) {
      *effect = DROPEFFECT_NONE;
    }
    return S_OK;
  }

 private:
  Point InClient(POINTL place) const {
    POINT inClient = {place.x, place.y};
    ScreenToClient(window, &inClient);
    return {static_cast<int>(inClient.x), static_cast<int>(inClient.y)};
  }

  HWND window;
  bool takesFiles, takesObjects;
  WindowEvents& events;
  bool hasFiles = false;
};

}  // namespace

DropRegistration::DropRegistration(HWND target, const WindowSpec& spec, WindowEvents& events)
    : window(target) {
  const auto made = platform::ComPtr<IDropTarget>::Attach(new DropTarget(window, spec, events));
  RegisterDragDrop(window, made.Get());
}

DropRegistration::~DropRegistration() {
  RevokeDragDrop(window);
}

}  // namespace toolkit
