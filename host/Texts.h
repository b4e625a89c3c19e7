// How texts and file names come in and go out: UTF-8 outside, the library's code page within.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

#include "base/Export.h"

namespace host {

// File names are UTF-8 outside: on command lines, in windows and in messages.
FXBOX_API std::filesystem::path PathOf(const std::string& utf8);
FXBOX_API std::string Utf8Of(const std::filesystem::path& path);

// A chain text as a person wrote it, in the code page of the library: UTF-8 is converted,
// anything else is taken as code page text already.
FXBOX_API std::string ChainTextOf(std::string_view outside);

// The text as part of a message: in quotation marks, shortened, in UTF-8.
FXBOX_API std::string Quoted(std::string_view codePageText);

}  // namespace host
