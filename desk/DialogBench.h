// The open dialog: what it edits, and the host that it talks to.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "core/AnimChain.h"
#include "core/AnimDialog.h"
#include "core/AnimInterfaces.h"
#include "desk/ChainDocument.h"
#include "platform/component/ComPtr.h"

namespace desk {

class BenchHost;

// Opens the dialog of a filter class over one or more filters of a chain. The filters that it edits
// are copies of the desk's own; what it does to them is told as new parameter texts. Windows'
// thread.
class DialogBench {
 public:
  // Gives the live filter of an item, or null: dialogs show a histogram of what it sees.
  using LiveFilter = std::function<platform::ComPtr<IAnimFilter>(int item)>;

  DialogBench(IAnimFilterCreator& filterCreator, LiveFilter liveFilter);
  ~DialogBench();
  DialogBench(const DialogBench&) = delete;
  DialogBench& operator=(const DialogBench&) = delete;

  // The dialog over these items, which are of one class; nothing is opened anew when it is there
  // already. False where the class has no dialog or no window can be opened.
  bool Open(const std::vector<ChainItem>& items, void* ownerWindow);
  void Close();
  bool IsOpen() const { return static_cast<bool>(dialog); }
  // Brings the dialog to what the chain holds now; closes it when a filter is gone.
  void Follow(const ChainDocument& document);
  // The dialog's window, null without one.
  void* Window() const;
  // Presses or lifts the dialog's dock button, which asks onDock.
  void ShowDocked(bool isDocked);
  // A colour was clicked in the picture; goes to the dialog that waits for one.
  void PickColour(BYTE red, BYTE green, BYTE blue);
  bool WaitsForColour() const;
  const std::vector<int>& Items() const { return edited; }

  std::function<void(const std::vector<ChainDocument::Change>&)> onChange;
  std::function<void(const std::vector<int>&)> onDelete;
  std::function<void()> onClosed;
  std::function<void()> onPicker;  // WaitsForColour has changed
  // The dialog's window was made and is about to be shown.
  std::function<void()> onOpening;
  // Asked when the dialog's dock button is used; the answer is whether it will be docked.
  std::function<bool(bool wanted)> onDock;

 private:
  friend class BenchHost;

  void Take();
  void Refresh();
  void Forget();
  void Leave(bool isOpen);
  void Call(const char* operation, const std::string& argument = {});

  IAnimFilterCreator& creator;
  const LiveFilter live;
  platform::ComPtr<IAnimFilterDialog> dialog;
  platform::ComPtr<BenchHost> host;
  std::string progId;
  std::vector<int> edited;
  std::vector<platform::ComPtr<IAnimFilterParameter>> filters;
  bool isTaking = false;
};

}  // namespace desk
