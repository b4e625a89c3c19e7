// Which file the trace log is: folder, name, and the removal of old ones.
#pragma once

#include <string>

#include "platform/Services.h"

namespace settings {

inline constexpr std::size_t kStemLength = 4;

// The first four characters of a file's name, without its extension; fewer when it is shorter.
std::string StemOf(const std::filesystem::path& file);

// Whether two stems are the same but for case.
bool SameStem(const std::string& a, const char* b);

// The folder that the settings of the product name, else `before`. Where there is neither, a folder
// of the user's own, so that no log ever lands in whatever folder the program works in.
std::string FindLogFolder(const std::string& before);

// "folder/ABCD(2009-03-28).log".
std::string LogFileName(const std::string& folder, const std::string& stem,
                        const platform::LocalTime& day);

// Deletes the logs, log archives and transfer logs in a folder that bear a date more than a month
// back.
void RemoveOldLogs(const std::string& folder, const platform::LocalTime& today);

}  // namespace settings
