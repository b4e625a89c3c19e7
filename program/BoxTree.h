// Everything in a compound file or a folder.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "storage/KvStorage.h"

namespace program {

struct TreeElement {
  std::string path;  // in UTF-8, joined with "/", the root left out
  bool isStorage = false;
  std::uint64_t bytes = 0;
  std::string fault;  // of a stream that was to be read
};

// In the order of the file, each storage in front of what is in it. With `reads` every stream is
// read to its end.
std::vector<TreeElement> TreeOfCompound(IStorage& root, bool reads);
// Sorted; names that begin with a point are left out.
std::vector<TreeElement> TreeOfFolder(const std::filesystem::path& folder);

}  // namespace program
