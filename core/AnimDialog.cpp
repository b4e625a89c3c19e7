#include "core/AnimDialog.h"

#include <atomic>

namespace core {
namespace {

std::atomic<DialogMaker> dialogMaker{nullptr};

}  // namespace

void SetDialogMaker(DialogMaker maker) {
  dialogMaker = maker;
}

DialogMaker CurrentDialogMaker() {
  return dialogMaker;
}

}  // namespace core
