// Reading from the picture box.
#include <objbase.h>

#include <algorithm>
#include <cstring>

#include "base/Dib.h"
#include "imageio/ImageLoader.h"
#include "imageio/StoredBitmap.h"
#include "platform/Services.h"
#include "settings/TraceLogStd.h"
#include "storage/KvFile.h"
#include "storage/PicBoxGuard.h"
#include "storage/PictureNames.h"
#include "storage/PictureStream.h"
#include "storage/kvPicBox.h"

using imageio::ImageLoader;
using imageio::StoredBitmap;
using picbox::Bytes;
using picbox::FoundPicture;
using picbox::PictureBody;

namespace {

constexpr int kBeepHertz = 800;
constexpr int kBeepMilliseconds = 200;
constexpr std::size_t kTextOfNote = 8;
constexpr std::size_t kSizesOfNote = 12;  // with the magic number
constexpr std::size_t kSizeOfStart = 0x8000;

bool HasPicture(int kind) {
  return kind == picbox::kPictureAndMask || kind == picbox::kPictureAlone;
}

bool HasMask(int kind) {
  return kind == picbox::kPictureAndMask || kind == picbox::kMaskAlone;
}

// Whether both are what a picture is made of; the mask may be missing.
bool AreSound(const Bytes& picture, const Bytes& mask) {
  const auto colours = StoredBitmap::Parse(picture);
  const auto alpha = StoredBitmap::Parse(mask);
  if (!picture.empty() && (!colours || colours->Bits() == base::kMaskBits)) return false;
  if (mask.empty()) return true;
  if (!alpha || !alpha->IsMask()) return false;
  return !colours || (colours->Width() == alpha->Width() && colours->Height() == alpha->Height());
}

std::filesystem::path FileOf(const FoundPicture& found) {
  KvFile* file = found.stream->GetFile();
  return file ? file->Place() : std::filesystem::path();
}

}  // namespace

// --- whole pictures

void kvPicBox::GetQuick(const char* pictureName, const char* ext, Bytes* picture, Bytes* mask,
                        int preferredWidth, int preferredHeight, std::int32_t* x, std::int32_t* y,
                        bool) {
  if (picture) picture->clear();
  if (mask) mask->clear();
  if (!storages[picbox::kPictures]) return;
  picbox::Guarded(Log(), "kvPicBox::GetQuick CStream-Exception %s",
                  "CStream-Exception: unexpected Error in kvPicBox::GetQuick", [&] {
                    auto found = OpenPicture(1, pictureName, ext);
                    if (found) {
                      Load(*found, picture, mask, preferredWidth, preferredHeight, x, y);
                    }
                    return 0;
                  });
}

void kvPicBox::Load(FoundPicture& found, Bytes* picture, Bytes* mask, int preferredWidth,
                    int preferredHeight, std::int32_t* x, std::int32_t* y) {
  Bytes colours;
  Bytes alpha;
  if (found.native) {
    LoadNative(found, colours, alpha, preferredWidth, preferredHeight);
  } else {
    LoadStored(found, colours, alpha, preferredWidth, preferredHeight, x, y);
  }
  if (colours.empty()) alpha.clear();
  if (picture) *picture = std::move(colours);
  if (mask) *mask = std::move(alpha);
}

void kvPicBox::LoadStored(FoundPicture& found, Bytes& picture, Bytes& mask, int preferredWidth,
                          int preferredHeight, std::int32_t* x, std::int32_t* y) {
  bool isBroken = false;
  if (found.encoded != 0) {
    const Bytes file = ReadEncoded(found);
    ImageLoader loader(file);
    // A mask that is stored beside it has the size of the whole picture.
    if (HasMask(found.kind)) preferredWidth = preferredHeight = 0;
    if (!Decode(loader, picture, mask, preferredWidth, preferredHeight)) {
      failed = true;
      return;
    }
  }
  PictureBody body(*found.stream, found.head);
  std::int32_t ownX = 0, ownY = 0;
  if (body.ReadPosition(ownX, ownY)) {
    if (x) *x = ownX;
    if (y) *y = ownY;
    if (found.encoded == 0 && HasPicture(found.kind)) {
      auto bitmap = body.ReadBitmap();
      isBroken = !bitmap;
      if (bitmap) picture = std::move(*bitmap);
    }
    if (!isBroken && HasMask(found.kind)) {
      auto bitmap = body.ReadBitmap();
      isBroken = !bitmap;
      if (bitmap) mask = std::move(*bitmap);
    }
  } else {
    isBroken = found.encoded == 0 || HasMask(found.kind);
  }
  if (!isBroken && AreSound(picture, mask)) return;
  failed = true;
  picture.clear();
  mask.clear();
  Log().Format(1, "PicBox::GetPic(): Fehler %d beim Lesen des Bildes %s",
               static_cast<int>(GetLastError()), found.streamName.c_str());
}

void kvPicBox::LoadNative(FoundPicture& found, Bytes& picture, Bytes& mask, int preferredWidth,
                          int preferredHeight) {
  // A file of a folder is decoded where it lies; every other stream comes through memory.
  const std::filesystem::path file = FileOf(found);
  const Bytes bytes = file.empty() ? ReadEncoded(found) : Bytes();
  ImageLoader loader = file.empty() ? ImageLoader(bytes) : ImageLoader(file);
  Decode(loader, picture, mask, preferredWidth, preferredHeight);
}

bool kvPicBox::Decode(ImageLoader& loader, Bytes& picture, Bytes& mask, int preferredWidth,
                      int preferredHeight) {
  loader.SetRawVersion(rawVersion);
  loader.PreferedLoadingSize(preferredWidth, preferredHeight);
  if (rawWhite1 >= 0) {
    loader.RAW_SetWhitebalance(rawAutoA, rawAutoB, rawWhite1, rawWhite2, rawWhite3);
    loader.RAW_SetBrightness(rawBright1, rawBright2);
  }
  loaderStatus = loader.HadError() ? 1 : 0;
  if (loaderStatus != 0) return false;
  foundType = loader.Type();
  picture = std::move(loader.ImageDIB());
  mask = std::move(loader.MaskDIB());
  return true;
}

Bytes kvPicBox::ReadEncoded(FoundPicture& found) {
  if (found.encoded == 0) return {};
  found.stream->Seek(static_cast<long>(found.head.bytes), 0);
  return picbox::ReadStored(*found.stream, found.native ? found.stream->GetLength() : found.size);
}

// --- stored bytes

unsigned kvPicBox::GetImageFileInfo(const char* pictureName, bool* wantPicture, bool* wantMask,
                                    unsigned* size, void* buffer, const char* ext) {
  return picbox::Guarded(Log(), "CStream-Exception in KvPicBox :: GetImageFileInfo: %s",
                         "CStream-Exception: unexpected Error in KvPicBox :: GetImageFileInfo",
                         [&]() -> unsigned {
                           if (external) {
                             KvFile file(externalPath + pictureName, OpenModeRead);
                             const unsigned room = *size;
                             *size = static_cast<unsigned>(file.GetLength());
                             return file.Read(buffer, std::min(room, *size));
                           }
                           auto found = OpenPicture(1, pictureName, ext);
                           return found ? ReadRaw(*found, wantPicture, wantMask, size, buffer) : 0u;
                         });
}

unsigned kvPicBox::ReadRaw(FoundPicture& found, bool* wantPicture, bool* wantMask, unsigned* size,
                           void* buffer) {
  const bool holdsPicture = found.native || HasPicture(found.kind);
  const bool holdsMask = !found.native && HasMask(found.kind);
  if ((*wantPicture && !holdsPicture) || (*wantMask && !holdsMask)) {
    *wantPicture = holdsPicture;
    *wantMask = holdsMask;
    return 0;
  }
  if (!found.native && !found.head.isPresent) {
    platform::CurrentServices().desktop->Beep(kBeepHertz, kBeepMilliseconds);
  }
  if (!found.native && found.encoded != 0 && found.size > found.stream->GetLength()) {
    failed = true;
    return 0;
  }
  Bytes bytes;
  if (*wantPicture && found.encoded != 0) bytes = ReadEncoded(found);
  if (!found.native && (*wantMask || found.encoded == 0)) {
    PictureBody body(*found.stream, found.head);
    std::int32_t x = 0, y = 0;
    bool isWhole = body.ReadPosition(x, y);
    if (isWhole && found.encoded == 0 && holdsPicture) {
      auto bitmap = body.ReadBitmap();
      isWhole = bitmap.has_value();
      if (isWhole && *wantPicture) bytes = std::move(*bitmap);
    }
    if (isWhole && *wantMask) {
      const auto bitmap = body.ReadBitmap();
      isWhole = bitmap.has_value();
      if (isWhole) bytes.insert(bytes.end(), bitmap->begin(), bitmap->end());
    }
    if (!isWhole) {
      failed = true;
      return 0;
    }
  }
  const unsigned room = *size;
  *size = static_cast<unsigned>(bytes.size());
  const unsigned copied = std::min(room, *size);
  if (copied > 0) std::memcpy(buffer, bytes.data(), copied);
  return copied;
}

unsigned kvPicBox::GetJPegHeader(const char* pictureName, Bytes* header, const char* ext) {
  header->clear();
  *header = picbox::Guarded(
      Log(), "CStream-Exception KvPicBox::GetJPegHeader: %s",
      "CStream-Exception: unexpected Error in KvPicBox :: GetJPegHeader", [&]() -> Bytes {
        if (external) {
          IKvStream* file = parent ? parent->OpenStream(pictureName, OpenModeRead) : nullptr;
          const picbox::StreamPtr stream(file);
          return stream ? ReadJpegHeader(*stream, 0) : Bytes();
        }
        auto found = OpenPicture(1, pictureName, ext);
        if (!found || found->encoded == 0) return {};
        return ReadJpegHeader(*found->stream, found->head.bytes);
      });
  return static_cast<unsigned>(header->size());
}

Bytes kvPicBox::ReadJpegHeader(IKvStream& stream, unsigned start) {
  constexpr BYTE kStartOfScan = 0xDA;
  constexpr int kMostFillBytes = 6;
  const std::uint64_t length = stream.GetLength();
  std::uint64_t at = start;
  const auto read = [&](BYTE* to, unsigned count) {
    stream.Seek(static_cast<long>(at), 0);
    at += count;
    return at <= length && stream.Read(to, count) == count;
  };
  BYTE bytes[2] = {};
  if (!read(bytes, 2) || bytes[0] != 0xFF || bytes[1] != 0xD8) return {};
  for (BYTE marker = 0; marker != kStartOfScan;) {
    int fillBytes = -1;
    do {
      if (++fillBytes > kMostFillBytes || !read(&marker, 1)) {
        failed = true;
        return {};
      }
    } while (marker == 0xFF);
    if (!read(bytes, 2)) {
      failed = true;
      return {};
    }
    const unsigned segment = bytes[0] * 256u + bytes[1];
    if (segment < 2 || at + segment - 2 > length) {
      failed = true;
      return {};
    }
    at += segment - 2;
  }
  stream.Seek(static_cast<long>(start), 0);
  return picbox::ReadStored(stream, at - start);
}

int kvPicBox::GetType(IKvStream* stream, KvString* tag) {
  const unsigned position = stream->GetPosition();
  const Bytes start = picbox::ReadStored(*stream, kSizeOfStart);
  stream->Seek(static_cast<long>(position), 0);
  const int type = ImageLoader::GetType(start);
  if (tag) *tag = picbox::TagOfType(type);
  return type;
}

int kvPicBox::AnalyzeFile(const char* pictureName, KvString& tag, const char* ext) {
  auto found = OpenPicture(1, pictureName, ext);
  if (!found) {
    Log().Format(1, "kvPicBox(%s)::AnalyzeFile failed - source \"%s\" not found",
                 static_cast<const char*>(GetPath()), pictureName);
    tag.Empty();
    return 0;
  }
  if (found->native && !found->tag.empty()) {
    tag = found->tag;
    return 0;
  }
  int type = imageio::kTypeJpeg;
  tag = "JPG";
  if (found->encoded != 0) {
    found->stream->Seek(static_cast<long>(found->head.bytes), 0);
    type = GetType(found->stream.get(), &tag);
  }
  // A JPEG file cannot keep the mask.
  if (type == imageio::kTypeJpeg && found->kind == picbox::kPictureAndMask) {
    const bool isTiff = picbox::SameText(found->tag, "TIF") || picbox::SameText(found->tag, "TIFF");
    type = isTiff ? imageio::kTypeTiff : imageio::kTypePng;
    tag = isTiff ? "TIF" : "PNG";
  }
  return type;
}

// --- notes

KvString kvPicBox::GetImageInfo(const char* pictureName, void* block) {
  return picbox::Guarded(
      Log(), "CStream-Exception in kvPicBox::GetImageInfo: %s",
      "CStream-Exception in kvPicBox::GetImageInfo", [&]() -> KvString {
        IKvStorage* pictures = storages[picbox::kPictures];
        const std::string noteName = picbox::CleanName(pictureName) + ".inf";
        const picbox::StreamPtr stream(
            pictures ? pictures->OpenStream(noteName.c_str(), OpenModeRead) : nullptr);
        if (!stream) return {};
        const Bytes note = picbox::ReadStored(*stream, ~0u);
        if (!picbox::IsWholeNote(note)) return {};
        const std::size_t length = note.size() - kSizesOfNote - kBlockBytes;
        const auto* text = reinterpret_cast<const char*>(note.data() + kTextOfNote);
        if (block) std::memcpy(block, note.data() + note.size() - kBlockBytes, kBlockBytes);
        return KvString(std::string(text, strnlen(text, length)));
      });
}
