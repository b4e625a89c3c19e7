// Any bytes as a compound file: everything is read, and where writing is allowed, what was whole
// stays so.
#include <ole2.h>

#include <cstdlib>
#include <cstring>
#include <map>
#include <string>

#include "platform/component/ComPtr.h"
#include "platform/component/SystemInterfaces.h"

namespace {

using platform::ComPtr;
using Contents = std::map<std::u16string, std::string>;

constexpr DWORD kReading = STGM_READ | STGM_SHARE_EXCLUSIVE;
constexpr DWORD kWriting = STGM_READWRITE | STGM_SHARE_EXCLUSIVE;

ComPtr<IStorage> OpenOn(ILockBytes* bytes) {
  ComPtr<IStorage> root;
  StgOpenStorageOnILockBytes(bytes, nullptr, kWriting, nullptr, 0, root.Put());
  return root;
}

void ReadStream(IStorage* storage, const std::u16string& path, const OLECHAR* name,
                Contents& contents) {
  ComPtr<IStream> stream;
  if (FAILED(storage->OpenStream(name, nullptr, kReading, 0, stream.Put()))) return;
  std::string& content = contents[path + name];
  char piece[3000];
  ULONG read = 0;
  while (SUCCEEDED(stream->Read(piece, sizeof piece, &read)) && read > 0) {
    content.append(piece, read);
  }
}

// Storages lie at most as deep as the bytes have room for entries, which is little.
void ReadAll(IStorage* storage, const std::u16string& path, Contents& contents) {
  ComPtr<IEnumSTATSTG> elements;
  if (FAILED(storage->EnumElements(0, nullptr, 0, elements.Put()))) return;
  STATSTG stat = {};
  while (elements->Next(1, &stat, nullptr) == S_OK) {
    ComPtr<IStorage> inner;
    storage->OpenStorage(stat.pwcsName, nullptr, kReading, nullptr, 0, inner.Put());
    if (inner) ReadAll(inner.Get(), path + stat.pwcsName + u"/", contents);
    ReadStream(storage, path, stat.pwcsName, contents);
    CoTaskMemFree(stat.pwcsName);
  }
}

bool AddStream(IStorage* root) {
  static const std::string content(5000, 'x');
  ComPtr<IStream> stream;
  if (FAILED(root->CreateStream(u"fuzz", kWriting | STGM_CREATE, 0, 0, stream.Put()))) return false;
  stream->Write(content.data(), 5000, nullptr);
  return SUCCEEDED(stream->Commit(STGC_DEFAULT));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  ComPtr<ILockBytes> bytes;
  CreateILockBytesOnHGlobal(nullptr, TRUE, bytes.Put());
  bytes->WriteAt({}, data, static_cast<ULONG>(size), nullptr);
  ComPtr<IStorage> root = OpenOn(bytes.Get());
  if (!root) return 0;
  Contents before;
  ReadAll(root.Get(), u"", before);
  if (!AddStream(root.Get())) return 0;
  root = OpenOn(bytes.Get());
  if (!root) std::abort();
  Contents after;
  ReadAll(root.Get(), u"", after);
  before.erase(u"fuzz");
  if (after[u"fuzz"].size() != 5000) std::abort();
  after.erase(u"fuzz");
  if (after != before) std::abort();
  return 0;
}
