// Compound files in the words of a test. Whatever fails on the way fails the test.
#pragma once

#include <objbase.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include "platform/component/ComPtr.h"
#include "platform/component/SystemInterfaces.h"
#include "tests/platform/Support.h"

namespace testing_support {

using StoragePtr = platform::ComPtr<IStorage>;
using StreamPtr = platform::ComPtr<IStream>;
using BytesPtr = platform::ComPtr<ILockBytes>;

inline constexpr DWORD kReading = STGM_READ | STGM_SHARE_EXCLUSIVE;
inline constexpr DWORD kWriting = STGM_READWRITE | STGM_SHARE_EXCLUSIVE;

using OleText = std::basic_string<OLECHAR>;

inline OleText Ole(const std::u16string& text) {
  return OleText(text.begin(), text.end());
}
inline OleText Ole(const char16_t* text) {
  return Ole(std::u16string(text));
}
inline OleText Ole(const std::filesystem::path& path) {
  return Ole(path.u16string());
}
// A name that ends in a number.
inline std::u16string Numbered(const char16_t* stem, std::size_t number) {
  std::u16string name = stem;
  for (const char digit : std::to_string(number)) name += static_cast<char16_t>(digit);
  return name;
}
inline ULARGE_INTEGER Large(std::uint64_t value) {
  ULARGE_INTEGER large;
  large.QuadPart = value;
  return large;
}

inline std::string Pattern(std::size_t size, int seed) {
  std::string bytes(size, '\0');
  std::mt19937 random(static_cast<unsigned>(seed));
  for (char& byte : bytes) byte = static_cast<char>(random());
  return bytes;
}

inline StoragePtr Create(const std::filesystem::path& path) {
  StoragePtr root;
  EXPECT_EQ(StgCreateDocfile(Ole(path).c_str(), kWriting, 0, root.Put()), S_OK);
  return root;
}
inline StoragePtr Open(const std::filesystem::path& path, DWORD mode = kWriting) {
  StoragePtr root;
  EXPECT_EQ(StgOpenStorage(Ole(path).c_str(), nullptr, mode, nullptr, 0, root.Put()), S_OK);
  return root;
}
inline StoragePtr CreateStorage(const StoragePtr& parent, const std::u16string& name) {
  StoragePtr made;
  EXPECT_EQ(parent->CreateStorage(Ole(name).c_str(), kWriting | STGM_CREATE, 0, 0, made.Put()),
            S_OK);
  return made;
}
inline StoragePtr OpenStorage(const StoragePtr& parent, const std::u16string& name,
                              DWORD mode = kWriting) {
  StoragePtr opened;
  EXPECT_EQ(parent->OpenStorage(Ole(name).c_str(), nullptr, mode, nullptr, 0, opened.Put()), S_OK);
  return opened;
}
inline StreamPtr CreateStream(const StoragePtr& parent, const std::u16string& name) {
  StreamPtr made;
  EXPECT_EQ(parent->CreateStream(Ole(name).c_str(), kWriting | STGM_CREATE, 0, 0, made.Put()),
            S_OK);
  return made;
}
inline StreamPtr OpenStream(const StoragePtr& parent, const std::u16string& name,
                            DWORD mode = kReading) {
  StreamPtr opened;
  EXPECT_EQ(parent->OpenStream(Ole(name).c_str(), nullptr, mode, 0, opened.Put()), S_OK);
  return opened;
}

inline void SeekTo(const StreamPtr& stream, std::uint64_t position) {
  LARGE_INTEGER move;
  move.QuadPart = static_cast<LONGLONG>(position);
  EXPECT_EQ(stream->Seek(move, STREAM_SEEK_SET, nullptr), S_OK);
}
inline std::uint64_t SizeOf(const StreamPtr& stream) {
  STATSTG stat = {};
  EXPECT_EQ(stream->Stat(&stat, STATFLAG_NONAME), S_OK);
  return stat.cbSize.QuadPart;
}
inline std::string ReadAll(const StreamPtr& stream) {
  std::string bytes(SizeOf(stream), '\0');
  SeekTo(stream, 0);
  ULONG read = 0;
  EXPECT_EQ(stream->Read(bytes.data(), static_cast<ULONG>(bytes.size()), &read), S_OK);
  EXPECT_EQ(read, bytes.size());
  return bytes;
}
inline void WriteAt(const StreamPtr& stream, std::uint64_t at, const std::string& bytes) {
  SeekTo(stream, at);
  ULONG written = 0;
  EXPECT_EQ(stream->Write(bytes.data(), static_cast<ULONG>(bytes.size()), &written), S_OK);
  EXPECT_EQ(written, bytes.size());
}
inline void WriteStream(const StoragePtr& parent, const std::u16string& name,
                        const std::string& bytes) {
  WriteAt(CreateStream(parent, name), 0, bytes);
}
inline std::string ReadStream(const StoragePtr& parent, const std::u16string& name) {
  return ReadAll(OpenStream(parent, name));
}

inline std::vector<std::u16string> NamesOf(const StoragePtr& storage) {
  std::vector<std::u16string> names;
  platform::ComPtr<IEnumSTATSTG> elements;
  EXPECT_EQ(storage->EnumElements(0, nullptr, 0, elements.Put()), S_OK);
  STATSTG stat = {};
  while (elements->Next(1, &stat, nullptr) == S_OK) {
    const OleText name = stat.pwcsName;
    names.emplace_back(name.begin(), name.end());
    CoTaskMemFree(stat.pwcsName);
  }
  return names;
}

}  // namespace testing_support
