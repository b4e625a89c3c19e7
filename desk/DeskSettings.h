// What the desk remembers of how a person wants it.
#pragma once

#include <filesystem>

#include "toolkit/Backend.h"

namespace desk {

// Where the dialog of the selected filter is.
enum class DialogPlace { Window, BelowChain, BelowPicture };

struct DeskSettings {
  DialogPlace dialog = DialogPlace::BelowChain;
  toolkit::ThemeChoice theme = toolkit::ThemeChoice::System;
  // Widths of the sides of the window, in units at 100 %; 0 where they were never changed.
  int left = 0, right = 0;
  bool operator==(const DeskSettings&) const = default;
};

// The defaults for what the file does not say, or says wrongly. A file that cannot be written is
// passed over.
DeskSettings ReadSettings(const std::filesystem::path& file);
void WriteSettings(const std::filesystem::path& file, const DeskSettings& settings);

}  // namespace desk
