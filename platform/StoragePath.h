// Paths as storages know them: narrow, in the system's code page, "\" between the parts on every
// system.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

#include "base/Export.h"

namespace platform {

// On Linux every "\" becomes "/". Names are UTF-8 on the disk: a byte above 127 that is not a part
// of well-formed UTF-8 is taken as a letter of the code page; the rest passes as it is, so that
// names beyond the page come back whole.
FXBOX_API std::filesystem::path PathOfStorage(std::string_view text);

// The other way round. A name whose letters the code page holds comes in the code page, any other
// as its bytes. On Windows a letter beyond the page becomes "?".
FXBOX_API std::string StoragePathOf(const std::filesystem::path& path);

// The path in the wide characters that the system's storage functions take.
FXBOX_API std::u16string WideStoragePath(std::string_view text);

// Whether a compound file that is changed in place holds its old or its new content after any end
// of the process.
FXBOX_API bool CompoundFilesSurviveKills();

}  // namespace platform
