// SHA-256 of a file, as sha256sum prints it.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>

namespace program {

class Sha256 {
 public:
  void Add(const void* bytes, std::size_t count);
  // 64 hexadecimal digits. Nothing can be added afterwards.
  std::string Digits();

 private:
  void Mix(const std::uint8_t* block);

  std::array<std::uint32_t, 8> state = {0x6A09E667, 0xBB67AE85, 0x3C6EF372, 0xA54FF53A,
                                        0x510E527F, 0x9B05688C, 0x1F83D9AB, 0x5BE0CD19};
  std::array<std::uint8_t, 64> rest;  // what is no whole block yet
  std::uint64_t length = 0;
};

struct FileDigest {
  std::uint64_t bytes = 0;
  std::string sha256;
};

// A std::runtime_error when the file cannot be read to its end.
FileDigest DigestOf(const std::filesystem::path& file);

}  // namespace program
