#include "core/IconPicture.h"

#include <ole2.h>
#include <zlib.h>

#include <algorithm>
#include <cstring>

#include "platform/ModuleResource.h"
#include "platform/component/ComPtr.h"
#include "platform/component/OleText.h"
#include "platform/component/SystemInterfaces.h"

namespace core {
namespace {

using platform::ComPtr;
using Bytes = std::vector<BYTE>;

constexpr DWORD kReading = STGM_READ | STGM_SHARE_EXCLUSIVE;
constexpr std::size_t kHeadBytes = 10;     // kind, tag, and a picture that is not an image file
constexpr std::size_t kMostBytes = 65536;  // more than an icon has

// A copy in memory that the storage keeps as long as it needs it.
ComPtr<ILockBytes> BytesOfResource() {
  static const char place = 0;
  const auto resource =
      platform::FindModuleResource(platform::ModuleAt(&place), "KvResourceStorage", "STORAGE");
  ComPtr<ILockBytes> bytes;
  if (resource.empty()) return bytes;
  const HGLOBAL block = GlobalAlloc(GMEM_MOVEABLE, resource.size());
  if (!block) return bytes;
  std::memcpy(GlobalLock(block), resource.data(), resource.size());
  GlobalUnlock(block);
  if (FAILED(CreateILockBytesOnHGlobal(block, TRUE, bytes.Put()))) GlobalFree(block);
  return bytes;
}

Bytes ReadStream(const std::string& name) {
  const ComPtr<ILockBytes> bytes = BytesOfResource();
  ComPtr<IStorage> root;
  ComPtr<IStorage> pictures;
  ComPtr<IStream> stream;
  if (!bytes ||
      FAILED(StgOpenStorageOnILockBytes(bytes.Get(), nullptr, kReading, nullptr, 0, root.Put())) ||
      FAILED(root->OpenStorage(platform::ToOleText("Pictures").c_str(), nullptr, kReading, nullptr,
                               0, pictures.Put())) ||
      FAILED(pictures->OpenStream(platform::ToOleText(name).c_str(), nullptr, kReading, 0,
                                  stream.Put()))) {
    return {};
  }
  Bytes content(kMostBytes);
  ULONG read = 0;
  if (FAILED(stream->Read(content.data(), static_cast<ULONG>(content.size()), &read))) return {};
  content.resize(read);
  return content;
}

// What stands behind the head, decompressed.
Bytes BodyOf(const Bytes& stream) {
  if (stream.size() <= kHeadBytes) return {};
  Bytes body(kMostBytes);
  auto size = static_cast<uLongf>(body.size());
  const auto packed = static_cast<uLong>(stream.size() - kHeadBytes);
  if (uncompress(body.data(), &size, stream.data() + kHeadBytes, packed) != Z_OK) return {};
  body.resize(size);
  return body;
}

// A bitmap behind its size; `at` goes behind it.
Bytes BitmapAt(const Bytes& body, std::size_t& at) {
  std::uint32_t size = 0;
  if (body.size() < at + sizeof size) return {};
  std::memcpy(&size, &body[at], sizeof size);
  at += sizeof size;
  if (size > body.size() - at) return {};
  const auto first = body.begin() + static_cast<std::ptrdiff_t>(at);
  at += size;
  return {first, first + static_cast<std::ptrdiff_t>(size)};
}

}  // namespace

IconPicture ReadIconPicture(const std::string& name) {
  const Bytes body = BodyOf(ReadStream(name));
  IconPicture picture;
  std::size_t at = 2 * sizeof(std::int32_t);  // behind the position
  picture.colour = BitmapAt(body, at);
  picture.mask = BitmapAt(body, at);
  return picture.colour.empty() || picture.mask.empty() ? IconPicture() : picture;
}

}  // namespace core
