// Writing to the picture box, deleting and renaming in it.
#include <algorithm>
#include <cstring>
#include <filesystem>

#include "base/Dib.h"
#include "imageio/ImageLoader.h"
#include "imageio/StoredBitmap.h"
#include "platform/StoragePath.h"
#include "settings/TraceLogStd.h"
#include "storage/BufferedStream.h"
#include "storage/CheckedStream.h"
#include "storage/KvFile.h"
#include "storage/KvZlib.h"
#include "storage/PicBoxGuard.h"
#include "storage/PictureNames.h"
#include "storage/PictureStream.h"
#include "storage/kvPicBox.h"

using imageio::ImageLoader;
using imageio::StoredBitmap;
using picbox::Bytes;
using picbox::Place;

namespace {

namespace fs = std::filesystem;

using View = std::span<const std::uint8_t>;

constexpr std::uint32_t kNotOpenCode = 0x88870004;
constexpr unsigned kCopyBlock = 0x1000000;
constexpr char kNoteMagic[] = {'K', 'V', 'Q', 'X'};

bool WriteAll(IKvWrite& target, View bytes) {
  const auto count = static_cast<unsigned>(bytes.size());
  return target.Write(bytes.data(), count) == count;
}

// The bitmap without what may stand behind its rows; empty when it is none.
View Trimmed(View bitmap) {
  const auto layout = StoredBitmap::Parse(bitmap);
  return layout ? bitmap.first(static_cast<std::size_t>(layout->Bytes())) : View();
}

// Masks are stored with 8 bits and 256 greys; what fills up their rows stays.
Bytes StoredMask(View mask) {
  const auto layout = StoredBitmap::Parse(mask);
  if (!layout || !layout->IsMask()) return {};
  Bytes stored = imageio::BlankMaskBitmap(layout->Width(), layout->Height());
  const std::vector<BYTE*> rows = imageio::RowsOf(stored);
  const auto stride = static_cast<std::size_t>(base::DibStride(8, layout->Width()));
  for (std::size_t y = 0; y < rows.size(); ++y) {
    std::memcpy(rows[y], layout->MaskRow(static_cast<int>(y)), stride);
  }
  return stored;
}

bool Fit(View picture, View mask) {
  const auto colours = StoredBitmap::Parse(picture);
  const auto alpha = StoredBitmap::Parse(mask);
  if (!colours || colours->Bits() == base::kMaskBits) return false;
  if (mask.empty()) return true;
  return alpha && alpha->IsMask() && alpha->Width() == colours->Width() &&
         alpha->Height() == colours->Height();
}

// What a stream throws while it is written is a failed write; a file that is locked, and a lack of
// memory, the caller hears of.
template <class Result, class Body>
Result Written(Result failure, Body body) {
  try {
    return body();
  } catch (const KvFileException&) {
    throw;
  } catch (const std::bad_alloc&) {
    throw;
  } catch (CKvError* error) {
    delete error;
  } catch (CStorageFileError* error) {
    delete error;
  } catch (...) {
  }
  return failure;
}

// Writes a new stream and closes it; what could not be kept is deleted. A folder still has the file
// from before.
template <class Body>
bool WriteStream(WrittenStream stream, IKvStorage& storage, const std::string& name, Body body) {
  const auto drop = [&] {
    if (storage.GetStorageKind() == static_cast<int>(StorageKind::Folder)) return;
    storage.DeleteStream(name.c_str());
  };
  try {
    const bool isWritten = Written(false, [&] { return body(*stream); });
    if (CloseChecked(std::move(stream)) && isWritten) return true;
  } catch (...) {
    stream.reset();
    drop();
    throw;
  }
  drop();
  return false;
}

// The body behind the image file: position, and bitmaps where they are given.
bool WriteBody(IKvWrite& target, std::int32_t x, std::int32_t y, View picture, View mask) {
  BufferedWriter buffered(target);
  {
    KvZlibWrite zlib(&buffered);
    picbox::WriteNumber(zlib, static_cast<std::uint32_t>(x));
    picbox::WriteNumber(zlib, static_cast<std::uint32_t>(y));
    if (!picture.empty()) picbox::WriteBitmap(zlib, picture);
    if (!mask.empty()) picbox::WriteBitmap(zlib, mask);
  }
  return buffered.Flush();
}

}  // namespace

// --- pictures

unsigned kvPicBox::AddFile(const char* pictureName, View picture, View mask, std::int32_t x,
                           std::int32_t y, bool encode, bool asNative, bool replace) {
  if (picture.empty()) return 0;
  if (!storages[picbox::kPictures]) {
    failed = true;
    throw new CKvError("PicBox File may be not opened", kNotOpenCode, "Sources/kvPicBox", 490);
  }
  if (!Fit(picture, mask) || !picbox::CanBeName(picbox::CleanName(pictureName))) {
    failed = true;
    return 0;
  }
  if (replace) Delete(pictureName);
  const bool savesNative = asNative || (mask.empty() && encode);
  const unsigned stored = Written(0u, [&] {
    return savesNative ? SaveNative(pictureName, picture, mask)
                       : SaveNew(pictureName, picture, mask, x, y, encode);
  });
  if (stored == 0) {
    failed = true;
    Log().Format(1, "PicBox AddFile Error on %s", pictureName);
  }
  return stored;
}

unsigned kvPicBox::SaveNative(const char* pictureName, View picture, View mask) {
  const bool hasSuffix = *picbox::SuffixOfType(saveType) != '\0';
  const int type = hasSuffix ? saveType : static_cast<int>(imageio::kTypeJpeg);
  ImageLoader loader;
  loader.SetImage(picture);
  loader.SetMask(mask);
  loader.PutExifData(exifData);
  loader.PutIPTCData(iptcData);
  loader.SetJpegQuality(jpegQuality);
  const Bytes file = loader.Save(type);
  loaderStatus = file.empty() ? 1 : 0;
  if (file.empty()) return 0;
  const std::string streamName = picbox::CleanName(pictureName) + picbox::SuffixOfType(type);
  IKvStorage& pictures = *storages[picbox::kPictures];
  WrittenStream stream(pictures.CreateStream(streamName.c_str(), OpenModeRewrite));
  if (!stream) return 0;
  const bool isKept = WriteStream(std::move(stream), pictures, streamName,
                                  [&](IKvWrite& target) { return WriteAll(target, file); });
  return isKept ? static_cast<unsigned>(file.size()) : 0;
}

unsigned kvPicBox::SaveNew(const char* pictureName, View picture, View mask, std::int32_t x,
                           std::int32_t y, bool encode) {
  const View bitmap = Trimmed(picture);
  const Bytes alpha = StoredMask(mask);
  Bytes file;
  if (encode) {
    ImageLoader loader;
    loader.SetImage(bitmap);
    loader.SetJpegQuality(jpegQuality);
    file = loader.Save(imageio::kTypeJpeg);
    loaderStatus = file.empty() ? 1 : 0;
    if (file.empty()) return 0;
  }
  const std::string streamName = picbox::CleanName(pictureName);
  IKvStorage& pictures = *storages[picbox::kPictures];
  WrittenStream stream(pictures.CreateStream(streamName.c_str(), OpenModeRewrite));
  if (!stream) return 0;
  const int kind = alpha.empty() ? picbox::kPictureAlone : picbox::kPictureAndMask;
  const bool isKept = WriteStream(std::move(stream), pictures, streamName, [&](IKvWrite& target) {
    return WriteAll(target, picbox::TagHead(kind, "JPG")) &&
           WriteAll(target,
                    picbox::SizeHead(encode ? 1 : 0, static_cast<std::uint32_t>(file.size()))) &&
           (file.empty() || WriteAll(target, file)) &&
           WriteBody(target, x, y, encode ? View() : bitmap, alpha);
  });
  if (!isKept) return 0;
  return static_cast<unsigned>(bitmap.size() + alpha.size() + file.size());
}

IKvStream* kvPicBox::OpenWritePic(const char* pictureName, const char* ext, bool asNative,
                                  bool newFormat, int kind, std::uint32_t size,
                                  std::int32_t encoded) {
  IKvStorage* pictures = storages[picbox::kPictures];
  const std::string clean = picbox::CleanName(pictureName);
  if (!pictures || !picbox::CanBeName(clean)) return nullptr;
  // Only a box of native pictures writes plain files.
  if (asNative && native) {
    const std::string streamName = picbox::AddExtension(clean, ext ? ext : "");
    if (IKvStream* stream = pictures->CreateStream(streamName.c_str(), OpenModeRewrite)) {
      return stream;
    }
  }
  if (newFormat) {
    WrittenStream stream(pictures->OpenStream(clean.c_str(), OpenModeReadWrite));
    if (stream) {
      stream->SetLength(0);
      WriteAll(*stream, picbox::TagHead(kind, ext ? ext : ""));
      WriteAll(*stream, picbox::SizeHead(encoded, size));
      return stream.release();
    }
  }
  return OpenOld(clean, kind, size, encoded);
}

IKvStream* kvPicBox::OpenOld(const std::string& clean, int kind, std::uint32_t size,
                             std::int32_t encoded) {
  constexpr Place kPlaces[] = {picbox::kPicMask, picbox::kOnlyPic, picbox::kOnlyMask};
  if (kind < picbox::kPictureAndMask || kind > picbox::kMaskAlone) return nullptr;
  IKvStorage* storage = storages[kPlaces[kind - picbox::kPictureAndMask]];
  WrittenStream stream(storage ? storage->OpenStream(clean.c_str(), OpenModeReadWrite) : nullptr);
  if (!stream) return nullptr;
  stream->SetLength(0);
  WriteAll(*stream, picbox::SizeHead(encoded, size));
  return stream.release();
}

bool kvPicBox::AddFileStream(const char* pictureName, const char* ext, KvFile& file, bool asNative,
                             Bytes* kept) {
  if (kept) kept->clear();
  const std::string tag = ext ? ext : "";
  std::uint64_t done = 0;
  try {
    const std::optional<bool> isStored = Written(std::optional<bool>(false), [&] {
      return StoreFile(pictureName, tag, file, asNative, kept, done);
    });
    if (!isStored) {
      Log().Format(1, "PicBox AddFile: Unable to open stream for %s (%s); length %d", pictureName,
                   tag.c_str(), static_cast<int>(file.GetLength()));
      return false;
    }
    if (*isStored) return true;
    Log().Format(1, "PicBox AddFile Error on %s, Trace=%d", pictureName, static_cast<int>(done));
  } catch (const KvFileException& error) {
    Log().Format(1, "PicBox AddFile Error on %s - cause=%d, IOsError=%d, Trace=%d ", pictureName,
                 static_cast<int>(error.Cause()), error.SystemError(), static_cast<int>(done));
  }
  failed = true;
  return false;
}

// Nothing when there is no stream to write to. `done` counts the bytes of the file.
std::optional<bool> kvPicBox::StoreFile(const char* pictureName, const std::string& tag,
                                        KvFile& file, bool asNative, Bytes* kept,
                                        std::uint64_t& done) {
  const std::uint64_t length = file.GetLength();
  if (length > 0xFFFFFFFF) return std::nullopt;
  WrittenStream stream(OpenWritePic(pictureName, tag.c_str(), asNative, asNative,
                                    picbox::KindOfTag(tag), static_cast<std::uint32_t>(length), 1));
  if (!stream) return std::nullopt;
  const auto block = static_cast<unsigned>(std::min<std::uint64_t>(length, kCopyBlock));
  Bytes bytes(block);
  Log().Format(5, "PicBox AddFile: copying %d bytes file...", static_cast<int>(length));
  bool isWritten = true;
  file.Seek(0, 0);
  while (isWritten && done < length) {
    const unsigned got = file.Read(bytes.data(), block);
    isWritten = got > 0 && WriteAll(*stream, View(bytes).first(got));
    done += got;
  }
  Log().Format(5, "PicBox AddFile: copying done.");
  if (isWritten && !(asNative && native)) isWritten = WriteBody(*stream, 0, 0, {}, {});
  if (!CloseChecked(std::move(stream)) || !isWritten) return false;
  if (kept && length <= kCopyBlock) *kept = std::move(bytes);
  return true;
}

// --- notes

bool kvPicBox::WriteImageInfo(const char* pictureName, const char* text, void* block) {
  IKvStorage* pictures = storages[picbox::kPictures];
  const std::string clean = picbox::CleanName(pictureName);
  if (!pictures || !picbox::CanBeName(clean)) return false;
  BYTE zeros[kBlockBytes] = {};
  auto* info = static_cast<BYTE*>(block ? block : zeros);
  std::memcpy(info, GetVersion(), 5);
  const std::string_view note(text ? text : "");
  Bytes bytes(std::begin(kNoteMagic), std::end(kNoteMagic));
  const auto append = [&bytes](std::uint32_t number) {
    for (int shift = 0; shift < 32; shift += 8) {
      bytes.push_back(static_cast<std::uint8_t>(number >> shift));
    }
  };
  append(static_cast<std::uint32_t>(note.size() + 1));
  bytes.insert(bytes.end(), note.begin(), note.end());
  bytes.push_back(0);
  append(kBlockBytes);
  bytes.insert(bytes.end(), info, info + kBlockBytes);

  const std::string streamName = clean + ".inf";
  return Written(false, [&] {
    WrittenStream stream(pictures->OpenStream(streamName.c_str(), OpenModeReadWrite));
    if (!stream) return false;
    stream->Seek(0, 0);
    stream->SetLength(0);
    const bool isWritten = WriteAll(*stream, bytes);
    return CloseChecked(std::move(stream)) && isWritten;
  });
}

// --- deleting and renaming

namespace {

// A storage of the same name stays.
bool DeleteOnlyStream(IKvStorage* storage, const std::string& name) {
  if (!storage) return false;
  IKvStream* stream = storage->OpenStream(name.c_str(), OpenModeRead);
  if (!stream) return false;
  stream->Close();
  return storage->DeleteStream(name.c_str());
}

}  // namespace

bool kvPicBox::Delete(const char* pictureName, const char* ext) {
  const std::string given = pictureName ? pictureName : "";
  const std::string extension = ext ? ext : "";
  if (external) {
    const std::string full = externalPath.ToStdString() + given;
    Log().Format(5, "      kvPicBox::Delete(): Deleting external Image %s", full.c_str());
    return parent &&
           (parent->DeleteStream(given.c_str()) ||
            (!extension.empty() && parent->DeleteStream((given + "." + extension).c_str())));
  }
  if (!picbox::CanBeName(given)) return false;
  Place place = picbox::kPictures;
  std::string spelled = given;
  bool isGone = DeleteAny(spelled, extension, place);
  if (!isGone) {
    spelled = picbox::CleanName(given);
    isGone = DeleteAny(spelled, extension, place);
  }
  DeleteOnlyStream(storages[picbox::kPictures], spelled + ".inf");
  if (!isGone) return false;
  constexpr const char* kInner[] = {nullptr, "OnlyPic", "PicMask", "OnlyMask"};
  IKvStorage& pictures = *storages[picbox::kPictures];
  if (place != picbox::kPictures) pictures.RemoveStorage(kInner[place]);
  pictures.RemoveStorage(nullptr);
  return true;
}

bool kvPicBox::DeleteAny(const std::string& spelled, const std::string& ext, Place& place) {
  IKvStorage* pictures = storages[picbox::kPictures];
  if (native && !ext.empty() && DeleteOnlyStream(pictures, spelled + "." + ext)) return true;
  if (DeleteOnlyStream(pictures, spelled + ".JPG")) return true;
  if (DeleteFound(pictures, spelled)) return true;
  for (const Place next :
       {picbox::kPictures, picbox::kPicMask, picbox::kOnlyPic, picbox::kOnlyMask}) {
    place = next;
    if (DeleteOnlyStream(storages[next], spelled)) return true;
  }
  return false;
}

// The first plain picture file of this name, whatever its extension.
bool kvPicBox::DeleteFound(IKvStorage* storage, const std::string& spelled) {
  if (!storage) return false;
  KvString element(picbox::UpperText(spelled) + ".*");
  unsigned attributes = 0;
  for (bool any = storage->FindFirst(element, attributes); any;
       any = storage->FindNext(element, attributes)) {
    const std::string streamName = element.ToStdString();
    if (attributes != kStreamElement || !ImageLoader::IsImage(streamName.c_str())) continue;
    if (picbox::SameText(picbox::StemOf(streamName), spelled)) {
      return storage->DeleteStream(streamName.c_str());
    }
  }
  return false;
}

bool kvPicBox::Rename(const char* oldName, const char* newName, const char* ext) {
  const std::string to = picbox::CleanName(newName ? newName : "");
  if (!oldName || !picbox::CanBeName(oldName) || !picbox::CanBeName(to)) return false;
  IKvStorage* pictures = storages[picbox::kPictures];
  const auto found = OpenPicture(1, oldName, ext);
  if (!pictures || !found || Exists(to.c_str(), ext)) return false;
  const std::string from = found->streamName;
  const bool isPlainFile = found->native && !found->tag.empty() && from.find('.') != from.npos;
  const std::string target = isPlainFile ? to + "." + std::string(picbox::TailOf(from)) : to;
  const_cast<picbox::FoundPicture&>(*found).stream.reset();
  for (const Place place :
       {picbox::kPictures, picbox::kOnlyPic, picbox::kPicMask, picbox::kOnlyMask}) {
    if (!RenameFile(storages[place], from, target)) continue;
    RenameFile(pictures, std::string(picbox::CleanName(oldName)) + ".inf", to + ".inf");
    return true;
  }
  return false;
}

bool kvPicBox::RenameFile(IKvStorage* storage, const std::string& from, const std::string& to) {
  if (!storage || storage->GetStorageKind() != static_cast<int>(StorageKind::Folder)) return false;
  const std::string folder = storage->GetPath().ToStdString();
  const fs::path source = FindOnDisk(platform::PathOfStorage(folder + from));
  const fs::path target = FindOnDisk(platform::PathOfStorage(folder + to));
  std::error_code error;
  if (!fs::is_regular_file(source, error) || fs::exists(target, error)) return false;
  fs::rename(source, platform::PathOfStorage(folder + to), error);
  return !error;
}
