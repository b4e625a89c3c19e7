// Folders, files and processes for the tests of this folder.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <vector>

namespace testing_support {

// Is deleted with everything in it at the end.
class TemporaryFolder {
 public:
  TemporaryFolder() {
    std::random_device random;
    const std::string name = "fxbox-test-" + std::to_string(random()) + std::to_string(random());
    path = std::filesystem::temp_directory_path() / name;
    std::filesystem::create_directory(path);
  }
  ~TemporaryFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path, ignored);
  }
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;

  std::filesystem::path operator/(const char* name) const { return path / name; }
  const std::filesystem::path& Path() const { return path; }

  // The names of what is in it, so that a test sees files that were left behind.
  std::vector<std::string> Names() const {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(path)) {
      names.push_back(entry.path().filename().string());
    }
    std::sort(names.begin(), names.end());
    return names;
  }

 private:
  std::filesystem::path path;
};

inline std::string ReadFile(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

inline bool WriteFile(const std::filesystem::path& path, const std::string& bytes) {
  return static_cast<bool>(std::ofstream(path, std::ios::binary) << bytes << std::flush);
}

}  // namespace testing_support
