// Everything in a compound file or a folder.
#pragma once

#include <cstdint>
#include <filesystem>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "storage/KvStorage.h"

namespace program {

struct TreeElement {
  std::string path;  // in UTF-8, joined with "/", the root left out
  bool isStorage = false;
  std::uint64_t bytes = 0;
  std::string fault;  // of a stream that was to be read
};

// In the order of the file, each storage in front of what is in it. With `unread` every stream is
// read to its end but for those of these paths.
std::vector<TreeElement> TreeOfCompound(IStorage& root,
                                        const std::set<std::string>* unread = nullptr);
// Of an element in a compound file, as it is shown.
std::string ShownName(std::u16string_view name);
// Sorted; names that begin with a point are left out.
std::vector<TreeElement> TreeOfFolder(const std::filesystem::path& folder);

}  // namespace program
