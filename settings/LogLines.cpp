#include "settings/LogLines.h"

#include <array>
#include <cstdio>

#include "platform/Services.h"

namespace settings {
namespace {

std::string Prefix(const char* format, int number) {
  platform::Process& process = *platform::CurrentServices().process;
  const platform::LocalTime now = process.Now();
  std::array<char, 80> text;
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
  const int length =
      std::snprintf(text.data(), text.size(), format, now.hour, now.minute, now.second,
                    now.millisecond, number, process.ProcessId(), process.ThreadId());
#pragma GCC diagnostic pop
  return {text.data(), static_cast<std::size_t>(length)};
}

}  // namespace

std::string DirectPrefix() {
  return Prefix("%02d:%02d:%02d.%03d  %4x %4x :%4x\t", 0);
}

std::string JournalPrefix(int level) {
  return Prefix("%02d:%02d:%02d.%03d  %3d %4x :%4x\t", level);
}

bool FormatLimited(std::size_t limit, std::string_view overflow, const char* format,
                   va_list arguments, std::string& text) {
  if (!format) return false;
  text.resize(limit);
  // The closing zero goes where the string keeps its own.
  const int length = std::vsnprintf(text.data(), limit + 1, format, arguments);
  if (length < 0) return false;
  if (static_cast<std::size_t>(length) <= limit) {
    text.resize(static_cast<std::size_t>(length));
  } else {
    text.replace(0, overflow.size() + 1, std::string(overflow) + ' ');
  }
  return true;
}

}  // namespace settings
