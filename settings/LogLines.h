// The forms of a line of the trace log.
#pragma once

#include <cstdarg>
#include <cstddef>
#include <string>
#include <string_view>

namespace settings {

inline constexpr std::string_view kLineEnd = "\r\n";

// Local time, the number 0, process and thread: what stands in front of a line that is written at
// once.
std::string DirectPrefix();

// The same with the line's level, for a line that goes through the journal thread.
std::string JournalPrefix(int level);

// printf into at most `limit` characters. Of a longer text the first `limit` stay, with `overflow`
// and a blank laid over their front. Nothing for a format that cannot be printed.
bool FormatLimited(std::size_t limit, std::string_view overflow, const char* format,
                   va_list arguments, std::string& text);

}  // namespace settings
