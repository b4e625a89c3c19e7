// File names as narrow texts, as settings and log lines hold them.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

#include "base/Export.h"

namespace platform {

inline constexpr char kFolderSeparator =
    static_cast<char>(std::filesystem::path::preferred_separator);

// A text in the system's code page on Windows; what the page does not hold becomes '?'. On Linux
// the bytes of the name as they are, so that every name comes back whole.
FXBOX_API std::string PathText(const std::filesystem::path& path);
FXBOX_API std::filesystem::path PathFromText(std::string_view text);

}  // namespace platform
