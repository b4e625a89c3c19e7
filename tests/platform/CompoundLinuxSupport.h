// What a compound file holds as a map, and bytes that remember every write.
#pragma once

#include <map>
#include <optional>
#include <random>
#include <set>
#include <utility>

#include "platform/component/ComObject.h"
#include "tests/platform/CompoundSupport.h"

namespace testing_support {

// Path of each stream, joined with "/", and its bytes; storages end with "/".
using Contents = std::map<std::u16string, std::string>;

inline void AddContents(const StoragePtr& storage, const std::u16string& path, Contents& contents) {
  for (const std::u16string& name : NamesOf(storage)) {
    StoragePtr inner;
    if (SUCCEEDED(storage->OpenStorage(name.c_str(), nullptr, kReading, nullptr, 0, inner.Put()))) {
      contents[path + name + u"/"];
      AddContents(inner, path + name + u"/", contents);
    } else {
      contents[path + name] = ReadStream(storage, name);
    }
  }
}
inline Contents ContentsOf(const StoragePtr& root) {
  Contents contents;
  AddContents(root, u"", contents);
  return contents;
}

// A name as it stands in a directory's entry, with the zero behind it.
inline std::string StoredName(const std::u16string& name) {
  return std::string(reinterpret_cast<const char*>(name.c_str()), name.size() * 2 + 2);
}

// Bytes in memory that log what is done to them and can be cut short.
class LoggedBytes final : public platform::ComObject<LoggedBytes, ILockBytes> {
 public:
  struct Event {
    bool isFlush = false;
    std::uint64_t offset = 0;
    std::string bytes;
  };

  std::string bytes;
  std::vector<Event> log;
  std::size_t bytesRead = 0;
  std::size_t bytesWritten = 0;
  std::size_t room = SIZE_MAX;       // it holds no more
  std::optional<HRESULT> failsOnce;  // the answer to a write of nothing
  bool isLogging = true;

  HRESULT STDMETHODCALLTYPE ReadAt(ULARGE_INTEGER offset, void* buffer, ULONG count,
                                   ULONG* read) override {
    const std::size_t at = std::min<std::size_t>(offset.QuadPart, bytes.size());
    *read = static_cast<ULONG>(bytes.copy(static_cast<char*>(buffer), count, at));
    bytesRead += *read;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE WriteAt(ULARGE_INTEGER offset, const void* buffer, ULONG count,
                                    ULONG* written) override {
    const std::size_t at = offset.QuadPart;
    *written = 0;
    if (at + count > room) return STG_E_MEDIUMFULL;
    count = std::min<ULONG>(count, 5000);  // it may take less than it is given
    if (failsOnce) return *std::exchange(failsOnce, std::nullopt);
    if (bytes.size() < at + count) bytes.resize(at + count);
    const std::string piece(static_cast<const char*>(buffer), count);
    bytes.replace(at, count, piece);
    if (isLogging) log.push_back({false, at, piece});
    bytesWritten += count;
    *written = count;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE Flush() override {
    if (isLogging) log.push_back({true, 0, {}});
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE SetSize(ULARGE_INTEGER size) override {
    bytes.resize(size.QuadPart);
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE LockRegion(ULARGE_INTEGER, ULARGE_INTEGER, DWORD) override {
    return STG_E_INVALIDFUNCTION;
  }
  HRESULT STDMETHODCALLTYPE UnlockRegion(ULARGE_INTEGER, ULARGE_INTEGER, DWORD) override {
    return STG_E_INVALIDFUNCTION;
  }
  HRESULT STDMETHODCALLTYPE Stat(STATSTG* result, DWORD) override {
    *result = {};
    result->type = STGTY_LOCKBYTES;
    result->cbSize.QuadPart = bytes.size();
    return S_OK;
  }
};
using LoggedPtr = platform::ComPtr<LoggedBytes>;

inline LoggedPtr NewBytes(std::string content = {}) {
  LoggedPtr bytes = LoggedPtr::Attach(new LoggedBytes);
  bytes->bytes = std::move(content);
  return bytes;
}
inline StoragePtr CreateOn(const LoggedPtr& bytes) {
  StoragePtr root;
  EXPECT_EQ(StgCreateDocfileOnILockBytes(bytes.Get(), kWriting | STGM_CREATE, 0, root.Put()), S_OK);
  return root;
}
inline StoragePtr OpenOn(const LoggedPtr& bytes, DWORD mode = kWriting) {
  StoragePtr root;
  EXPECT_EQ(StgOpenStorageOnILockBytes(bytes.Get(), nullptr, mode, nullptr, 0, root.Put()), S_OK);
  return root;
}

// Does one thing to the storage and to the model of it.
inline void ChangeSomething(const StoragePtr& root, Contents& model, std::mt19937& random) {
  const std::u16string name = Numbered(u"n", random() % 30);
  const std::u16string other = Numbered(u"N", random() % 30);
  const auto find = [&model](std::u16string wanted) {
    wanted[0] = u'n';
    return model.count(wanted) > 0 ? wanted : std::u16string();
  };
  switch (random() % 8) {
    case 0:
      ASSERT_EQ(root->DestroyElement(other.c_str()),
                find(other).empty() ? STG_E_FILENOTFOUND : S_OK);
      model.erase(find(other));
      break;
    case 1: {
      const std::u16string to = Numbered(u"n", 30 + random() % 30);
      const bool works = !find(name).empty() && model.count(to) == 0;
      ASSERT_EQ(SUCCEEDED(root->RenameElement(name.c_str(), to.c_str())), works);
      if (!works) break;
      model[to] = model[name];
      model.erase(name);
      break;
    }
    default:
      model[name] = Pattern(random() % 3 == 0 ? random() % 30000 : random() % 600,
                            static_cast<int>(random()));
      WriteStream(root, name, model[name]);
  }
}

// Of every stream as much as can be read of so many bytes, and what the reading said.
inline std::map<std::u16string, std::pair<HRESULT, std::string>> WhatIsThere(const StoragePtr& root,
                                                                             ULONG most) {
  std::map<std::u16string, std::pair<HRESULT, std::string>> found;
  for (const std::u16string& name : NamesOf(root)) {
    StreamPtr stream;
    if (FAILED(root->OpenStream(name.c_str(), nullptr, kReading, 0, stream.Put()))) continue;
    std::string content(most, '\0');
    ULONG read = 0;
    const HRESULT status = stream->Read(content.data(), most, &read);
    found[name] = {status, content.substr(0, read)};
  }
  return found;
}

}  // namespace testing_support
