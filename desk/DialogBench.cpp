#include "desk/DialogBench.h"

#include <utility>

#include "core/AnimSample.h"
#include "core/GrowingText.h"
#include "host/QuietDialogHost.h"
#include "platform/component/ComObject.h"
#include "platform/component/SystemInterfaces.h"

namespace desk {

using platform::ComPtr;

namespace {

std::string TextOf(IAnimFilterParameter& filter) {
  return core::GrowingText(
      [&](char* buffer, int size) { return filter.GetParameter(buffer, size); });
}

// A filter that stands in no chain, for a dialog to edit; the picture that the dialog may ask for
// comes from the one that does.
class EditedFilter final
    : public platform::ComObject<EditedFilter, IAnimFilterParameter, IAnimPictureSample> {
 public:
  EditedFilter(ComPtr<IAnimFilterParameter> editedCopy, DialogBench::LiveFilter liveFilter,
               int ofItem)
      : copy(std::move(editedCopy)), live(std::move(liveFilter)), item(ofItem) {}

  HRESULT STDMETHODCALLTYPE SetParameter(const char* text, int flag) override {
    return copy->SetParameter(text, flag);
  }
  HRESULT STDMETHODCALLTYPE GetParameter(char* buffer, int size) override {
    return copy->GetParameter(buffer, size);
  }
  HRESULT STDMETHODCALLTYPE GetActiveParameter(char* buffer, int size) override {
    return copy->GetActiveParameter(buffer, size);
  }
  HRESULT STDMETHODCALLTYPE SetNamedValue(const char* key, const char* value) override {
    return copy->SetNamedValue(key, value);
  }
  HRESULT STDMETHODCALLTYPE GetNamedValue(const char* key, char* buffer, int size) override {
    return copy->GetNamedValue(key, buffer, size);
  }
  HRESULT STDMETHODCALLTYPE ReadSample(BYTE* pixels, int most, int* count) override {
    if (!count) return E_POINTER;
    *count = 0;
    const auto filter = live ? live(item) : ComPtr<IAnimFilter>();
    const auto sample = ComPtr<IAnimPictureSample>::Query(filter.Get());
    return sample ? sample->ReadSample(pixels, most, count) : S_OK;
  }

 private:
  ComPtr<IAnimFilterParameter> copy;
  DialogBench::LiveFilter live;
  int item;
};

}  // namespace

// The host's side of the dialog, for as long as the bench wants to hear of it.
class BenchHost final : public host::QuietDialogHost<BenchHost> {
 public:
  explicit BenchHost(DialogBench& ofBench) : bench(&ofBench) {}

  void Forget() { bench = nullptr; }
  bool waitsForColour = false;
  ComPtr<IAnimRunnable> runnable;

  HRESULT STDMETHODCALLTYPE RegisterDialog(const char*, IUnknown* opened) override {
    runnable = ComPtr<IAnimRunnable>::Query(opened);
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE UnregisterDialog(const char*) override {
    runnable.Reset();
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE Post(int, int message, std::intptr_t, std::intptr_t b,
                                 std::intptr_t* result) override {
    const ComPtr<BenchHost> self(this);
    if (bench) Handle(message, b, result);
    return S_OK;
  }

 private:
  void Handle(int message, std::intptr_t b, std::intptr_t* result) {
    switch (message) {
      case core::kMessageBracketEnd:
        return bench->Take();
      case core::kMessageDelete1:
        isDeleting = true;
        return;
      case core::kMessageDelete2:
        if (std::exchange(isDeleting, false) && bench->onDelete) bench->onDelete(bench->edited);
        return;
      case core::kMessageClosed:
        return bench->Forget();
      case core::kMessageColorPicker:
        waitsForColour = b != 0;
        if (bench->onPicker) bench->onPicker();
        return;
      case core::kMessageDock:
      case core::kMessageUndock:
        if (result && bench->onDock) *result = bench->onDock(message == core::kMessageDock);
        return;
      default:
        return;
    }
  }

  DialogBench* bench;
  bool isDeleting = false;
};

DialogBench::DialogBench(IAnimFilterCreator& filterCreator, LiveFilter liveFilter)
    : creator(filterCreator), live(std::move(liveFilter)) {}

DialogBench::~DialogBench() {
  Close();
}

bool DialogBench::Open(const std::vector<ChainItem>& items, void* ownerWindow) {
  std::vector<int> wanted;
  for (const ChainItem& item : items) wanted.push_back(item.id);
  if (items.empty()) return false;
  if (dialog && wanted == edited) return dialog->Show() == S_OK;
  Close();
  host = ComPtr<BenchHost>::Attach(new BenchHost(*this));
  creator.CreateFilterDialog(items[0].progId.c_str(), host->AsArgument(), IAnimFilterDialog::kIid,
                             dialog.PutVoid());
  const auto point = ComPtr<IConnectionPoint>::Query(dialog.Get());
  if (!point) return false;
  progId = items[0].progId;
  for (const ChainItem& item : items) {
    ComPtr<IAnimFilterParameter> copy;
    creator.CreateFilter(progId.c_str(), IAnimFilterParameter::kIid, copy.PutVoid());
    if (!copy || item.progId != progId) continue;
    copy->SetParameter(item.parameters.c_str(), 1);
    filters.push_back(
        ComPtr<IAnimFilterParameter>::Attach(new EditedFilter(std::move(copy), live, item.id)));
    edited.push_back(item.id);
    DWORD cookie = 0;
    point->Advise(filters.back().Get(), &cookie);
  }
  const bool isOpen = dialog->Open(0, 0, reinterpret_cast<std::intptr_t>(ownerWindow)) == S_OK;
  if (isOpen) {
    if (onOpening) onOpening();
    dialog->Show();
  } else {
    Close();
  }
  return isOpen;
}

void DialogBench::Close() {
  Leave(true);
}

// The person closed the window.
void DialogBench::Forget() {
  Leave(false);
}

void DialogBench::Leave(bool isOpen) {
  const auto gone = std::exchange(dialog, {});
  const auto goneHost = std::exchange(host, {});
  if (goneHost) goneHost->Forget();
  edited.clear();
  filters.clear();
  if (gone && isOpen) gone->Close();
  if (gone && onClosed) onClosed();
}

void* DialogBench::Window() const {
  AnimWindowHandle handle = nullptr;
  if (dialog) dialog->GetWindowHandle(&handle);
  return handle;
}

// What the dialog gave its filters.
void DialogBench::Take() {
  std::vector<ChainDocument::Change> changes;
  for (std::size_t i = 0; i < filters.size(); ++i) {
    const std::string text = TextOf(*filters[i].Get());
    if (!text.empty()) changes.push_back({edited[i], text});
  }
  const bool wasTaking = std::exchange(isTaking, true);
  if (onChange) onChange(changes);
  isTaking = wasTaking;
}

void DialogBench::Follow(const ChainDocument& document) {
  if (!dialog || isTaking) return;
  bool isChanged = false;
  for (std::size_t i = 0; i < filters.size(); ++i) {
    const ChainItem* const item = document.Find(edited[i]);
    if (!item) return Close();
    if (TextOf(*filters[i].Get()) == item->parameters) continue;
    filters[i]->SetParameter(item->parameters.c_str(), 1);
    isChanged = true;
  }
  if (isChanged) Refresh();
}

void DialogBench::Call(const char* operation, const std::string& argument) {
  const auto runnable = host ? host->runnable : ComPtr<IAnimRunnable>();
  const char* const text = argument.empty() ? nullptr : argument.c_str();
  if (runnable) runnable->Dispatch(operation, reinterpret_cast<std::intptr_t>(text), 0, 0);
}

// Saying that the lock button was used reads the filters anew and changes nothing.
void DialogBench::Refresh() {
  Call("bu_lock");
}

void DialogBench::ShowDocked(bool isDocked) {
  Call(isDocked ? "DockFilterDialog" : "UndockFilterDialog");
}

bool DialogBench::WaitsForColour() const {
  return host && host->waitsForColour;
}

void DialogBench::PickColour(BYTE red, BYTE green, BYTE blue) {
  Call("ColorPicker", "Red=" + std::to_string(red) + ";\r\nGreen=" + std::to_string(green) +
                          ";\r\nBlue=" + std::to_string(blue) + ";\r\n");
}

}  // namespace desk
