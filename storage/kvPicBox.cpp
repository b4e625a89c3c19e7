// The picture box: its storages, and finding pictures in them.
#include "storage/kvPicBox.h"

#include <algorithm>

#include "settings/TraceLogStd.h"
#include "storage/KvSimpStorage.h"
#include "storage/KvStorage.h"
#include "storage/PicBoxGuard.h"
#include "storage/PictureNames.h"
#include "storage/PictureStream.h"

using picbox::FoundPicture;
using picbox::Place;
using picbox::StreamPtr;

namespace {

constexpr int kByName = 1;
constexpr int kByPattern = 0;
constexpr int kNewHeaderSize = 14;
constexpr int kOldHeaderSize = 9;
constexpr std::uint64_t kMaskTolerance = 50;

constexpr const char* kInnerNames[] = {nullptr, "OnlyPic", "PicMask", "OnlyMask"};
constexpr const char* kRootNames[] = {"Pic_Mask", "PicMask"};
constexpr Place kSearchOrder[] = {picbox::kPictures, picbox::kOnlyPic,     picbox::kPicMask,
                                  picbox::kOnlyMask, picbox::kRootPicMask, picbox::kRootPicMask2};
constexpr Place kEnumerationOrder[] = {picbox::kPictures, picbox::kPicMask, picbox::kOnlyPic,
                                       picbox::kOnlyMask};
constexpr Place kClosingOrder[] = {picbox::kPicMask,  picbox::kOnlyPic,     picbox::kOnlyMask,
                                   picbox::kPictures, picbox::kRootPicMask, picbox::kRootPicMask2};
constexpr int kStagePictures = -1;
constexpr int kStageDone = 3;

int KindOfPlace(Place place) {
  switch (place) {
    case picbox::kOnlyPic:
      return picbox::kPictureAlone;
    case picbox::kOnlyMask:
      return picbox::kMaskAlone;
    default:
      return picbox::kPictureAndMask;
  }
}

// An encoded picture has hardly anything behind it where no mask is.
bool HasNoMaskBehind(const FoundPicture& found) {
  return found.encoded != 0 && found.stream->GetLength() <= found.size + kMaskTolerance;
}

// The pattern under which the reduced copies of a picture are found: "i5-*.jpg" for
// "i5--1x-1.jpg". Empty where the name has no such copies.
std::string PatternOf(const std::string& name) {
  const std::size_t dash = name.find('-');
  if (dash == name.npos) return {};
  const std::size_t point = name.find('.');
  return name.substr(0, dash + 1) + "*" + (point == name.npos ? "" : name.substr(point));
}

}  // namespace

// --- storages

kvPicBox::kvPicBox(IKvStorage* given, unsigned mode, const char* storageName, bool isNative,
                   bool isExternal)
    : native(isNative || (given && given->IsNative())),
      external(isExternal || (given && given->IsExternal())) {
  OpenStorages(given, mode, storageName);
}

kvPicBox::kvPicBox(const char* path, bool simple, bool isNative, bool isExternal)
    : native(isNative),
      external(isExternal),
      rawWhite1(1.0),
      rawWhite2(1.0),
      rawWhite3(1.0),
      rawBright1(1.0) {
  if (simple) {
    ownParent = KvSimpStorage::CreateNewKvStorage(path, OpenModeReadWrite, isNative, isExternal);
  } else {
    ownParent = KvStorage::CreateNewKvStorage(path, OpenModeReadWrite, isNative, isExternal);
  }
  OpenStorages(ownParent, OpenModeReadWrite, nullptr);
}

void kvPicBox::OpenStorages(IKvStorage* given, unsigned mode, const char* storageName) {
  parent = given;
  if (!parent) {
    failed = true;
    return;
  }
  if (external) {
    externalPath = parent->GetPath();
    return;
  }
  const char* const pictureName = storageName && *storageName ? storageName : "Pictures";
  IKvStorage* const pictures = parent->OpenStorage(pictureName, mode, native, external);
  storages[picbox::kPictures] = pictures;
  failed = !pictures;
  for (int i = picbox::kOnlyPic; pictures && i <= picbox::kOnlyMask; ++i) {
    storages[i] = pictures->OpenStorage(kInnerNames[i], mode, native, external);
  }
  for (int i = 0; pictures && i < 2; ++i) {
    storages[picbox::kRootPicMask + i] = parent->OpenStorage(kRootNames[i], mode, native, external);
  }
}

kvPicBox::~kvPicBox() {
  for (const Place place : kClosingOrder) {
    if (storages[place]) storages[place]->Close();
  }
  // A compound file's elements end with its root, so it stays open as long as they do.
  if (ownParent) ownParent->Close();
}

TraceLog& kvPicBox::Log() {
  if (!log) log = std::make_unique<TraceLog>(1);
  return *log;
}

KvString kvPicBox::GetPath() {
  if (external) return parent ? parent->GetPath() : KvString();
  return storages[picbox::kPictures] ? storages[picbox::kPictures]->GetPath() : KvString();
}

void kvPicBox::SetRawParameters(bool autoA, bool autoB, double white1, double white2, double white3,
                                double bright1, double bright2, bool flag) {
  rawAutoA = autoA;
  rawAutoB = autoB;
  rawWhite1 = white1;
  rawWhite2 = white2;
  rawWhite3 = white3;
  rawBright1 = bright1;
  rawBright2 = bright2;
  rawFlag = flag;
}

void kvPicBox::SetExifData(const void* bytes, std::uint32_t count) {
  const auto* first = static_cast<const std::uint8_t*>(bytes);
  exifData.assign(first, first + (first ? count : 0));
}

void kvPicBox::SetIptcData(const void* bytes, std::uint32_t count) {
  const auto* first = static_cast<const std::uint8_t*>(bytes);
  iptcData.assign(first, first + (first ? count : 0));
}

// --- finding

bool kvPicBox::Exists(const char* pictureName, const char* ext) {
  return OpenPicture(kByName, pictureName, ext).has_value();
}

std::optional<FoundPicture> kvPicBox::OpenPicture(int mode, const char* pictureName,
                                                  const char* ext) {
  if (!pictureName || !*pictureName) return std::nullopt;
  if (auto found = Find(mode, pictureName, ext)) return found;
  if (!native || mode == kByPattern) return std::nullopt;
  return Find(kByPattern, pictureName, ext);
}

std::optional<FoundPicture> kvPicBox::Find(int mode, const char* pictureName, const char* ext) {
  const std::string given = pictureName;
  const std::string extension = ext ? ext : "";
  if (auto found = FindSpelled(mode, given, extension)) return found;
  const std::string clean = picbox::CleanName(given);
  return clean == given ? std::nullopt : FindSpelled(mode, clean, extension);
}

std::optional<FoundPicture> kvPicBox::FindSpelled(int mode, const std::string& spelled,
                                                  const std::string& ext) {
  IKvStorage* const pictures = storages[picbox::kPictures];
  if (!ext.empty()) {
    if (auto found = FindNative(mode, pictures, picbox::kPictures, spelled + "." + ext, ext)) {
      return found;
    }
  }
  if (auto found = FindNative(mode, pictures, picbox::kPictures, spelled + ".JPG", "JPG")) {
    return found;
  }
  for (const Place place : kSearchOrder) {
    std::string streamName = spelled;
    StreamPtr stream = OpenNamed(mode, storages[place], streamName);
    if (!stream) continue;
    FoundPicture found;
    found.stream = std::move(stream);
    found.place = place;
    found.streamName = streamName;
    TakeHead(found);
    return found;
  }
  if (ext.empty()) return std::nullopt;
  return FindNative(mode, parent, picbox::kPlaceCount, spelled + "." + ext, ext);
}

// The stream's name may change to the one that was found by the pattern.
StreamPtr kvPicBox::OpenNamed(int mode, IKvStorage* storage, std::string& streamName) {
  if (!storage) return nullptr;
  if (mode == kByPattern) {
    const std::string pattern = PatternOf(streamName);
    const bool isFolder = storage->GetStorageKind() == static_cast<int>(StorageKind::Folder);
    if (pattern.empty() || !isFolder) return nullptr;
    KvString element = pattern;
    unsigned attributes = 0;
    bool any = storage->FindFirst(element, attributes);
    while (any && (picbox::IsNote(element.View()) || attributes != kStreamElement)) {
      any = storage->FindNext(element, attributes);
    }
    if (!any) return nullptr;
    streamName = element.ToStdString();
  }
  return StreamPtr(storage->OpenStream(streamName.c_str(), OpenModeRead));
}

std::optional<FoundPicture> kvPicBox::FindNative(int mode, IKvStorage* storage, Place place,
                                                 std::string streamName, const std::string& tag) {
  StreamPtr stream = OpenNamed(mode, storage, streamName);
  if (!stream) return std::nullopt;
  FoundPicture found;
  found.stream = std::move(stream);
  found.place = place;
  found.streamName = streamName;
  found.native = true;
  found.kind = picbox::KindOfTag(tag);
  found.size = found.stream->GetLength();
  found.encoded = 1;
  found.tag = tag;
  found.fullName = storage->GetPath().ToStdString() + streamName;
  return found;
}

std::optional<FoundPicture> kvPicBox::OpenAt(Place place, const char* streamName) {
  std::string spelled = streamName;
  StreamPtr stream = OpenNamed(kByName, storages[place], spelled);
  if (!stream) return std::nullopt;
  FoundPicture found;
  found.stream = std::move(stream);
  found.place = place;
  found.streamName = spelled;
  TakeHead(found);
  return found;
}

// --- heads

KvString kvPicBox::Read5BytesHeader(IKvStream* stream, int* kind) {
  return picbox::Guarded(Log(), "CStream-Exception in kvPicBox::Read5BytesHeader: %s",
                         "CStream-Exception: unexpected Error in KvPicBox::Read5BytesHeader()",
                         [&] {
                           const picbox::PictureHead head = picbox::ReadTagHead(*stream);
                           if (kind) *kind = head.kind;
                           return KvString(head.tag);
                         });
}

void kvPicBox::TakeHead(FoundPicture& found) {
  found.fullName = storages[found.place]->GetPath().ToStdString() + found.streamName;
  if (found.place == picbox::kPictures) {
    TakeNewHead(found);
  } else {
    TakeOldHead(found);
  }
}

void kvPicBox::TakeNewHead(FoundPicture& found) {
  found.head = picbox::ReadTagHead(*found.stream);
  found.kind = found.head.kind;
  found.tag = found.head.tag;
  if (found.kind == picbox::kNoKind) {
    found.native = true;
    found.kind = picbox::kPictureAlone;
    found.size = found.stream->GetLength();
    found.encoded = 1;
    found.tag = picbox::PictureTag(found.streamName);
    return;
  }
  found.headerSize = kNewHeaderSize;
  // In a box of native pictures one of an unknown type has no second head.
  if (!native || !found.tag.empty()) picbox::ReadSizeHead(*found.stream, found.head);
  found.encoded = found.head.encoded;
  found.size = found.head.encodedSize;
  if (HasNoMaskBehind(found)) found.kind = picbox::kPictureAlone;
}

void kvPicBox::TakeOldHead(FoundPicture& found) {
  picbox::ReadSizeHead(*found.stream, found.head);
  found.kind = KindOfPlace(found.place);
  found.head.kind = found.kind;
  found.encoded = found.head.encoded;
  found.size = found.head.encodedSize;
  found.headerSize = kOldHeaderSize;
  if (found.place == picbox::kOnlyPic && found.encoded == 0) found.headerSize = 5;
  const bool isOldest = found.place >= picbox::kRootPicMask;
  if (isOldest && HasNoMaskBehind(found)) found.kind = picbox::kPictureAlone;
}

// --- enumeration

KvString kvPicBox::FindFirstPicture() {
  enumerationStage = kStagePictures;
  return FirstFromStage();
}

KvString kvPicBox::FindNextPicture() {
  KvString element;
  unsigned attributes = 0;
  if (enumerationStage >= kStageDone) return {};
  IKvStorage* storage = storages[kEnumerationOrder[enumerationStage + 1]];
  if (storage && storage->FindNext(element, attributes)) return element;
  ++enumerationStage;
  return FirstFromStage();
}

KvString kvPicBox::FirstFromStage() {
  for (; enumerationStage < kStageDone; ++enumerationStage) {
    KvString element;
    unsigned attributes = 0;
    IKvStorage* storage = storages[kEnumerationOrder[enumerationStage + 1]];
    if (storage && storage->FindFirst(element, attributes)) return element;
  }
  return {};
}
