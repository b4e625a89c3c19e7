// Packs the module's resource: PackResource TARGET ICONS SCRIPTS. ICONS is a folder of PNG files,
// which become pictures of the name in front of the extension; SCRIPTS one of files that become
// streams as they are.
#include <objbase.h>
#include <zlib.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <vector>

#include "base/Dib.h"
#include "imageio/ImageFile.h"
#include "platform/component/ComPtr.h"
#include "platform/component/OleText.h"
#include "platform/component/SystemInterfaces.h"

namespace {

namespace fs = std::filesystem;
using platform::ComPtr;
using Bytes = std::vector<BYTE>;

constexpr DWORD kNew = STGM_READWRITE | STGM_SHARE_EXCLUSIVE | STGM_CREATE;

void Check(HRESULT status) {
  if (FAILED(status)) throw std::runtime_error("the compound file cannot be written");
}

ComPtr<IStorage> MakeStorage(const ComPtr<IStorage>& parent, const char* name) {
  ComPtr<IStorage> made;
  Check(parent->CreateStorage(platform::ToOleText(name).c_str(), kNew, 0, 0, made.Put()));
  return made;
}

void MakeStream(const ComPtr<IStorage>& parent, const std::string& name, const Bytes& content) {
  ComPtr<IStream> made;
  Check(parent->CreateStream(platform::ToOleText(name).c_str(), kNew, 0, 0, made.Put()));
  Check(made->Write(content.data(), static_cast<ULONG>(content.size()), nullptr));
  Check(made->Commit(STGC_DEFAULT));
}

void Append(Bytes& bytes, const void* from, std::size_t count) {
  const auto* const first = static_cast<const BYTE*>(from);
  bytes.insert(bytes.end(), first, first + count);
}
void Append32(Bytes& bytes, std::size_t number) {
  const auto value = static_cast<std::uint32_t>(number);
  Append(bytes, &value, sizeof value);
}

// A packed bitmap and pointers to its rows.
struct Dib {
  Dib(int bits, int width, int height) : bytes(base::DibBytes(bits, width, height).value()) {
    base::BuildDib(bytes.data(), bits, width, height);
    const auto stride = static_cast<std::size_t>(base::DibStride(bits, width));
    for (int y = 0; y < height; ++y) {
      rows.push_back(base::DibRows(bytes.data()) + static_cast<std::size_t>(y) * stride);
    }
  }
  Bytes bytes;
  std::vector<BYTE*> rows;
};

void SetGreys(Dib& mask) {
  for (std::size_t i = 0; i < 256; ++i) {
    BYTE* const entry = &mask.bytes[base::kDibHeaderBytes + 4 * i];
    std::fill_n(entry, 3, static_cast<BYTE>(i));
    entry[3] = 0;
  }
}

Bytes Deflated(const Bytes& content) {
  Bytes result(compressBound(static_cast<uLong>(content.size())));
  auto size = static_cast<uLongf>(result.size());
  if (compress(result.data(), &size, content.data(), static_cast<uLong>(content.size())) != Z_OK) {
    throw std::runtime_error("zlib fails");
  }
  result.resize(size);
  return result;
}

// Picture and mask as the picture box stores them in its new format, at position 0, 0.
Bytes PackedPicture(const fs::path& file) {
  imageio::ImageReader reader(file);
  const imageio::ImageInfo& info = reader.Info();
  Dib colour(24, info.width, info.height);
  Dib mask(8, info.width, info.height);
  SetGreys(mask);
  reader.Read({colour.rows.data(), mask.rows.data()});
  for (int y = 0; y < info.height; ++y) {
    for (int x = 0; x < info.width; ++x) {
      const auto row = static_cast<std::size_t>(y);
      if (mask.rows[row][x] == 255) std::fill_n(colour.rows[row] + 3 * x, 3, BYTE{0});
    }
  }
  Bytes body;
  Append32(body, 0);
  Append32(body, 0);
  for (const Dib* part : {&colour, &mask}) {
    Append32(body, part->bytes.size());
    Append(body, part->bytes.data(), part->bytes.size());
  }
  Bytes stream = {1, 'J', 'P', 'G', 0, 8, 0, 0, 0, 0};
  const Bytes packed = Deflated(body);
  Append(stream, packed.data(), packed.size());
  return stream;
}

std::vector<fs::path> FilesOf(const fs::path& folder) {
  std::vector<fs::path> files;
  for (const auto& entry : fs::directory_iterator(folder)) files.push_back(entry.path());
  std::sort(files.begin(), files.end());
  return files;
}

Bytes ContentOf(const fs::path& file) {
  std::ifstream stream(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), {}};
}

void Pack(const fs::path& target, const fs::path& icons, const fs::path& scripts) {
  fs::remove(target);
  ComPtr<IStorage> root;
  const std::u16string path = target.u16string();
  Check(StgCreateDocfile(std::basic_string<OLECHAR>(path.begin(), path.end()).c_str(), kNew, 0,
                         root.Put()));
  const ComPtr<IStorage> pictures = MakeStorage(root, "Pictures");
  for (const char* name : {"PicMask", "OnlyPic", "OnlyMask"}) MakeStorage(pictures, name);
  for (const char* name : {"PicMask", "Pic_Mask"}) MakeStorage(root, name);
  for (const fs::path& file : FilesOf(icons)) {
    MakeStream(pictures, file.stem().string(), PackedPicture(file));
  }
  const ComPtr<IStorage> texts = MakeStorage(root, "Scripts");
  for (const fs::path& file : FilesOf(scripts)) {
    MakeStream(texts, file.filename().string(), ContentOf(file));
  }
  Check(root->Commit(STGC_DEFAULT));
}

}  // namespace

int main(int argc, char** argv) {
  try {
    if (argc != 4) throw std::runtime_error("usage: PackResource TARGET ICONS SCRIPTS");
    Pack(argv[1], argv[2], argv[3]);
  } catch (const std::exception& failure) {
    std::fprintf(stderr, "PackResource: %s\n", failure.what());
    return 1;
  }
  return 0;
}
