// Files that are read once, from their start to their end: standard input and pipes.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "platform/Services.h"

namespace program {

// Stands for standard input or output wherever a file is meant; "./-" is a file of that name.
inline constexpr char kStandard[] = "-";

using Bytes = std::vector<std::uint8_t>;

// Whether it is worth reading on behind these bytes, the first ones.
using IsWanted = bool (*)(const Bytes& first);

// Everything up to the end, or as little as shows that it is not wanted. A FileError with the cause
// when it cannot be read or is beyond all measure.
Bytes ReadStandardInput(IsWanted isWanted = nullptr);
Bytes ReadPipe(const std::filesystem::path& file, IsWanted isWanted = nullptr);

// Whether the file can be read only so: a pipe, a device, an open descriptor of one.
bool IsPipe(const std::filesystem::path& file);

// Calls `write` with the path of a new file, and gives its bytes to standard output when it is
// finished: who reads sees all or nothing. Gives the reason when that fails, an empty one when
// `write` said false.
std::optional<std::string> WriteStandardOutput(const platform::Files::WriteFile& write);

}  // namespace program
