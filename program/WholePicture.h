// Whole pictures in memory: decoded, shared or taken from a stream.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "imageio/ImageFile.h"
#include "picture/MemoryPicture.h"

namespace program {

// What stands in front of the id where an input is a shared picture; "./shared:x" is a file.
inline constexpr char kSharedPrefix[] = "shared:";

// The id in the code page when the input is a shared picture. A UsageError when it is empty.
std::optional<std::string> SharedIdOf(const std::string& input);

// The rows of a picture, whoever made it. A FileError for one that has no rows as the program knows
// them: 24 bits, and a mask of the same size.
imageio::Rows RowsOf(const MemoryPicture& picture, const std::string& where);

// Decodes an input as the apply command takes it; with a mask where it has one. Null when it was
// interrupted. A FileError on failure.
std::unique_ptr<MemoryPicture> ReadWhole(const std::string& input);

}  // namespace program
