// Looks whether a compound file is whole, below what the storages tell of it.
#pragma once

#include <cstddef>
#include <filesystem>
#include <string>
#include <vector>

#include "base/Export.h"

namespace platform {

struct CompoundFault {
  std::u16string path;   // of the stream, joined with "/"; empty: the file as a whole
  std::string words;     // in English, such as "the stream has the same sectors as"
  std::u16string other;  // which stream, where the words end so
};

// The faults that keep our own storages from writing to the file, at most so many; none in a whole
// file. Reads the tables and no stream, by our own reader on every system. Locks nothing: whoever
// asks has the file open as a storage.
FXBOX_API std::vector<CompoundFault> FindCompoundFaults(const std::filesystem::path& file,
                                                        std::size_t most);

}  // namespace platform
