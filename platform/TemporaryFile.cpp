#include "platform/TemporaryFile.h"

#include <random>
#include <string>

namespace platform {

namespace {

constexpr char kStart[] = ".fxbox-";
constexpr char kDigits[] = "0123456789abcdefghijklmnopqrstuv";
constexpr std::size_t kDigitCount = 12;

}  // namespace

std::filesystem::path TemporaryPathBeside(const std::filesystem::path& target) {
  constexpr std::size_t kLongestExtension = 16;
  std::random_device random;
  std::string stem = kStart;
  for (std::size_t i = 0; i < kDigitCount; ++i) stem += kDigits[random() % 32];
  std::filesystem::path name = stem;
  const std::filesystem::path extension = target.extension();
  if (extension.native().size() <= kLongestExtension) name += extension;
  return target.parent_path() / name;
}

bool IsTemporaryName(const std::filesystem::path& name) {
  const std::u8string stem = name.stem().u8string();
  const std::string text(stem.begin(), stem.end());
  const std::size_t start = sizeof kStart - 1;
  return text.size() == start + kDigitCount && text.starts_with(kStart) &&
         text.find_first_not_of(kDigits, start) == std::string::npos;
}

}  // namespace platform
