#include "dialogs/Dialogs.h"

#include <algorithm>
#include <string_view>

#include "dialogs/PanelDialog.h"
#include "dialogs/panels/Panels.h"

namespace dialogs {

const std::vector<const DialogClass*>& DialogClasses() {
  static const std::vector<const DialogClass*> rows = [] {
    std::vector<const DialogClass*> all;
    for (const auto family : {ColourDialogs(), MixerDialogs(), MeasuringDialogs(), ToneDialogs(),
                              DetailDialogs(), CropDialogs(), GeometryDialogs(), FrameDialogs()}) {
      for (const DialogClass& row : family) all.push_back(&row);
    }
    return all;
  }();
  return rows;
}

IUnknown* NewFilterDialog(const char* progId) {
  if (!progId) return nullptr;
  const auto& rows = DialogClasses();
  const auto found = std::find_if(rows.begin(), rows.end(), [&](const DialogClass* row) {
    return std::string_view(row->progId) == progId;
  });
  if (found == rows.end()) return nullptr;
  const DialogClass& row = **found;
  CPdibFilterDialog* const dialog = row.make ? row.make(row) : new CPanelDialog(row);
  return static_cast<IAnimRunnable*>(dialog);
}

}  // namespace dialogs
