#include "program/StandardStreams.h"

#include <cerrno>
#include <fstream>
#include <memory>
#include <random>
#include <string_view>
#include <system_error>

#include "platform/Services.h"
#include "program/Messages.h"

namespace program {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t kBlock = std::size_t{1} << 16;
constexpr std::size_t kFirstBytes = 16;
constexpr std::size_t kMostBytes = std::size_t{1} << 32;
constexpr char kInput[] = "standard input";

std::string LastReason() {
  return std::generic_category().message(errno);
}

// `read` fills a block and says how many bytes it had, 0 at the end.
template <class Read>
Bytes ReadAll(const std::string& name, IsWanted isWanted, Read read) {
  Bytes bytes;
  for (bool isKnown = !isWanted;;) {
    const std::size_t before = bytes.size();
    if (!isKnown && before >= kFirstBytes) {
      if (!isWanted(bytes)) return bytes;
      isKnown = true;
    }
    if (before > kMostBytes) throw FileError(name, "it has more than 4 GiB");
    bytes.resize(before + kBlock);
    const std::size_t got = read(bytes.data() + before, kBlock);
    bytes.resize(before + got);
    if (got == 0) return bytes;
  }
}

// The bytes of a file on standard output; the reason when they do not get there.
std::optional<std::string> Copy(const fs::path& file) {
  std::ifstream stream(file, std::ios::binary);
  std::vector<char> block(kBlock);
  while (stream) {
    stream.read(block.data(), static_cast<std::streamsize>(block.size()));
    const std::string_view part(block.data(), static_cast<std::size_t>(stream.gcount()));
    if (auto failure = platform::CurrentServices().terminal->WriteOutput(part)) return failure;
  }
  if (stream.eof()) return std::nullopt;
  return "the finished picture cannot be read again";
}

std::string NewName() {
  std::random_device random;
  return "fxbox-" + std::to_string(random()) + "-" + std::to_string(random());
}

}  // namespace

Bytes ReadStandardInput(IsWanted isWanted) {
  return ReadAll(kInput, isWanted, [](std::uint8_t* to, std::size_t count) {
    const auto got = platform::CurrentServices().terminal->ReadInput(to, count);
    if (!got) throw FileError(kInput, "it cannot be read");
    return *got;
  });
}

Bytes ReadPipe(const fs::path& file, IsWanted isWanted) {
  const std::string name = Utf8Of(file);
  std::error_code ignored;
  if (fs::is_directory(file, ignored)) throw FileError(name, "it is a folder");
  errno = 0;
  std::ifstream stream(file, std::ios::binary);
  if (!stream) throw FileError(name, "the file cannot be opened: " + LastReason());
  return ReadAll(name, isWanted, [&](std::uint8_t* to, std::size_t count) {
    stream.read(reinterpret_cast<char*>(to), static_cast<std::streamsize>(count));
    if (stream.bad()) throw FileError(name, "the file cannot be read: " + LastReason());
    return static_cast<std::size_t>(stream.gcount());
  });
}

bool IsPipe(const fs::path& file) {
  std::error_code error;
  const fs::file_status status = fs::status(file, error);
  return !error && fs::exists(status) && !fs::is_regular_file(status) && !fs::is_directory(status);
}

std::optional<std::string> WriteStandardOutput(const platform::Files::WriteFile& write) {
  std::error_code error;
  const fs::path folder = fs::temp_directory_path(error);
  if (error) return error.message();
  const fs::path finished = folder / NewName();
  const auto remove = [&](const fs::path*) { fs::remove(finished, error); };
  const std::unique_ptr<const fs::path, decltype(remove)> atEnd(&finished, remove);
  const auto failure = platform::CurrentServices().files->Replace(finished, write);
  return failure ? failure : Copy(finished);
}

}  // namespace program
