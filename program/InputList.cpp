#include "program/InputList.h"

#include <cerrno>
#include <fstream>
#include <memory>
#include <system_error>

#include "platform/Services.h"
#include "program/Interrupt.h"
#include "program/Messages.h"
#include "program/StandardStreams.h"

namespace program {
namespace {

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

std::size_t ReadFromStandard(char* to, std::size_t count) {
  const auto got = platform::CurrentServices().terminal->ReadInput(to, count);
  if (!got && !IsInterrupted()) throw FileError("standard input", "it cannot be read");
  return got.value_or(0);
}

std::function<std::size_t(char*, std::size_t)> ReaderOf(const std::string& file) {
  if (file == kStandard) return ReadFromStandard;
  errno = 0;
  const auto stream = std::make_shared<std::ifstream>(PathOf(file), std::ios::binary);
  const auto fail = [file](const char* what) {
    throw FileError(file, what + std::generic_category().message(errno));
  };
  if (!*stream) fail("the list cannot be opened: ");
  return [stream, fail](char* to, std::size_t count) {
    stream->read(to, static_cast<std::streamsize>(count));
    if (stream->bad()) fail("the list cannot be read: ");
    return static_cast<std::size_t>(stream->gcount());
  };
}

bool IsBlank(const std::string& name) {
  return name.find_first_not_of(" \t\r") == name.npos;
}

}  // namespace

InputList::InputList(const std::string& file, Separator between)
    : read(ReaderOf(file)), separator(between == Separator::ZeroByte ? '\0' : '\n') {
  while (unread.size() < kByteOrderMark.size() && file != kStandard && Refill()) {
  }
  if (unread.starts_with(kByteOrderMark)) unread.erase(0, kByteOrderMark.size());
}

bool InputList::Refill() {
  char block[4096];
  const std::size_t got = atEnd ? 0 : read(block, sizeof block);
  atEnd = got == 0;
  unread.append(block, got);
  return got > 0;
}

std::optional<std::string> InputList::TakeLine() {
  std::size_t end = unread.find(separator);
  while (end == unread.npos && Refill()) end = unread.find(separator);
  if (end == unread.npos && (unread.empty() || IsInterrupted())) return std::nullopt;
  std::string line = unread.substr(0, end);
  unread.erase(0, end == unread.npos ? end : end + 1);
  if (separator == '\n' && line.ends_with('\r')) line.pop_back();
  return line;
}

std::optional<std::string> InputList::Next() {
  for (;;) {
    std::optional<std::string> line = TakeLine();
    if (!line || !IsBlank(*line)) return line;
  }
}

}  // namespace program
