#include "program/Sha256.h"

#include <gtest/gtest.h>

#include <string_view>

namespace program {
namespace {

std::string SumOf(std::string_view text, std::size_t piece) {
  Sha256 sum;
  for (std::size_t at = 0; at < text.size(); at += piece) {
    const std::string_view part = text.substr(at, piece);
    sum.Add(part.data(), part.size());
  }
  return sum.Digits();
}

// The published examples, and the lengths around a block as sha256sum has them.
TEST(Sha256, GivesThePublishedSums) {
  const std::string letters(1000000, 'a');
  const struct {
    std::string_view text;
    const char* digits;
  } kCases[] = {
      {"", "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855"},
      {"abc", "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad"},
      {"abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq",
       "248d6a61d20638b8e5c026930c3e6039a33ce45964ff2167f6ecedd419db06c1"},
      {std::string_view(letters).substr(0, 55),
       "9f4390f8d30c2dd92ec9f095b65e2b9ae9b0a925a5258e241c9f1e910f734318"},
      {std::string_view(letters).substr(0, 64),
       "ffe054fe7ae0cb6dc65c3af9b61d5209f439851db43d0ba5997337df154668eb"},
      {letters, "cdc76e5c9914fb9281a1c7e284d73e67f1809a48a497200e046d39ccc7112cd0"},
  };
  for (const auto& row : kCases) {
    for (const std::size_t piece : {std::size_t{1}, std::size_t{63}, std::size_t{1} << 16}) {
      EXPECT_EQ(SumOf(row.text, piece), row.digits) << row.text.size() << " in " << piece;
    }
  }
}

}  // namespace
}  // namespace program
