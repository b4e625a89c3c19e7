#include "platform/TemporaryFile.h"

#include <random>
#include <string>

namespace platform {

std::filesystem::path TemporaryPathBeside(const std::filesystem::path& target) {
  constexpr std::size_t kLongestExtension = 16;
  constexpr char kDigits[] = "0123456789abcdefghijklmnopqrstuv";
  std::random_device random;
  std::string stem = ".fxbox-";
  for (int i = 0; i < 12; ++i) stem += kDigits[random() % 32];
  std::filesystem::path name = stem;
  const std::filesystem::path extension = target.extension();
  if (extension.native().size() <= kLongestExtension) name += extension;
  return target.parent_path() / name;
}

}  // namespace platform
