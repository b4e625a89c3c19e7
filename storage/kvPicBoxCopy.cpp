// Copying pictures from box to box, between all generations.
#include <algorithm>
#include <filesystem>
#include <iterator>

#include "imageio/ImageLoader.h"
#include "platform/StoragePath.h"
#include "settings/TraceLogStd.h"
#include "storage/CheckedStream.h"
#include "storage/KvFile.h"
#include "storage/PicBoxGuard.h"
#include "storage/PictureNames.h"
#include "storage/PictureStream.h"
#include "storage/kvPicBox.h"

using picbox::Bytes;
using picbox::FoundPicture;

namespace {

namespace fs = std::filesystem;

constexpr int kDetail = 5;  // the level of lines that tell the way of a copy

bool IsFilm(std::string_view ext) {
  constexpr std::string_view kFilms[] = {"AVI", "MPG", "MPEG", "MOV", "WMV", "ASF"};
  return std::any_of(std::begin(kFilms), std::end(kFilms),
                     [ext](std::string_view film) { return picbox::SameText(film, ext); });
}

bool IsFolder(IKvStorage* storage) {
  return storage && storage->GetStorageKind() == static_cast<int>(StorageKind::Folder);
}

fs::path OnDisk(const std::string& path) {
  return FindOnDisk(platform::PathOfStorage(path));
}

// A copy never is, whatever its source was.
bool IsReadOnly(const fs::path& file) {
  std::error_code ignored;
  return (fs::status(file, ignored).permissions() & fs::perms::owner_write) == fs::perms::none;
}

void MakeFolderOf(const fs::path& file) {
  std::error_code ignored;
  if (file.has_parent_path()) fs::create_directories(file.parent_path(), ignored);
}

}  // namespace

bool kvPicBox::CopyImage(const char* source, kvPicBox& target, const char* targetName,
                         bool newFormat, KvString& ext, bool keepNative) {
  Log().Format(kDetail, "      kvPicBox::CopyImage(%s...\\%s.%s to %s...\\%s)",
               static_cast<const char*>(GetPath()), source, static_cast<const char*>(ext),
               static_cast<const char*>(target.GetPath()), targetName);
  if (external) {
    Log().Format(kDetail, "      kvPicBox::CopyImage(): Source is external");
    return CopyExternal(source, target, targetName, newFormat, ext.ToStdString());
  }
  if (IsSamePicture(source, target, targetName)) return Exists(source, ext);
  return picbox::Guarded(
      Log(), "kvPicBox::CopyImage CStream-Exception %s",
      "CStream-Exception: unexpected Error in kvPicBox::CopyImage", [&] {
        const bool isCopied = CopyInternal(source, target, targetName, newFormat, ext, keepNative);
        return isCopied && (target.external || CopyNote(source, target, targetName));
      });
}

// By the storages' paths; a storage without a path is nobody else's.
bool kvPicBox::IsSamePicture(const char* source, kvPicBox& target, const char* targetName) {
  if (!picbox::SameText(picbox::CleanName(source), picbox::CleanName(targetName))) return false;
  if (this == &target) return true;
  if (!parent || !target.parent || target.external) return false;
  const KvTextView path(parent->GetPathText());
  return !path.empty() && GetPath() == target.GetPath() &&
         path == KvTextView(target.parent->GetPathText());
}

std::string kvPicBox::TargetFolder() {
  std::string folder = external ? externalPath.ToStdString() : GetPath().ToStdString();
  if (!folder.empty() && folder.back() != '\\') folder += '\\';
  return folder;
}

// --- from an external box

bool kvPicBox::CopyExternal(const char* source, kvPicBox& target, const char* targetName,
                            bool newFormat, const std::string& ext) {
  const fs::path plain = OnDisk(TargetFolder() + source);
  const fs::path extended = OnDisk(TargetFolder() + source + "." + ext);
  if (!target.external && ext.empty()) {
    Log().Format(kDetail, "      kvPicBox::CopyImage(): really need the file extension here!");
  }
  const bool writesFile =
      target.external || (newFormat && IsFolder(target.StorageOf(picbox::kPictures)));
  if (writesFile) {
    Log().Format(kDetail, target.external
                              ? "      kvPicBox::CopyImage(): dest is external"
                              : "      kvPicBox::CopyImage(): dest is not native but new (14 "
                                "bytes header)");
    const std::string targetFile =
        target.external ? std::string(targetName) : picbox::AddExtension(targetName, ext);
    const fs::path to = platform::PathOfStorage(target.TargetFolder() + targetFile);
    MakeFolderOf(to);
    if (!CopyFileWhole(plain, to)) {
      Log().Format(kDetail, "      kvPicBox::CopyImage(): 1st CopyFile failed");
      if (!CopyFileWhole(extended, to)) {
        Log().Format(kDetail, "      kvPicBox::CopyImage(): 2nd CopyFile failed");
        return false;
      }
    }
    Log().Format(kDetail, "      kvPicBox::CopyImage(): success!");
    return true;
  }
  Log().Format(kDetail, "      kvPicBox::CopyImage(): dest is old format");
  KvFile first(platform::StoragePathOf(plain).c_str(), OpenModeRead);
  if (first.IsOpen()) return target.AddFileStream(targetName, ext.c_str(), first, false, nullptr);
  Log().Format(kDetail, "      kvPicBox::CopyImage(): 1st Open failed");
  KvFile second(platform::StoragePathOf(extended).c_str(), OpenModeRead);
  if (!second.IsOpen()) {
    Log().Format(kDetail, "      kvPicBox::CopyImage(): both open failed");
    return false;
  }
  const bool isAdded = target.AddFileStream(targetName, ext.c_str(), second, false, nullptr);
  if (!isAdded) {
    Log().Format(kDetail, "      kvPicBox::CopyImage(): Open succeeded, AddFile failed");
  }
  return isAdded;
}

// --- from a box of one's own

bool kvPicBox::CopyInternal(const char* source, kvPicBox& target, const char* targetName,
                            bool newFormat, KvString& ext, bool keepNative) {
  auto found = OpenPicture(1, source, ext);
  if (!found) {
    Log().Format(1, "      kvPicBox::CopyImage(): source %s.%s not found!", source,
                 static_cast<const char*>(ext));
    return false;
  }
  if (!target.external) target.Delete(targetName, ext);
  int type = imageio::kTypeJpeg;
  KvString tag("jpg");
  if (found->encoded == 0) {
    tag.Empty();
  } else {
    found->stream->Seek(static_cast<long>(found->head.bytes), 0);
    type = GetType(found->stream.get(), &tag);
    if (type == imageio::kTypeNone || type == imageio::kTypeRaw) tag = ext;
  }
  if (tag.IsEmpty()) newFormat = false;
  const bool isNative = found->native || IsFilm(ext.View());
  if (keepNative && !isNative && newFormat) {
    Log().Format(kDetail, "      kvPicBox::CopyImage(): dest shall be native");
    if (type == imageio::kTypeJpeg && found->kind == picbox::kPictureAndMask) {
      Log().Format(kDetail, "      kvPicBox::CopyImage(): have to convert to native");
      const bool isTiff =
          picbox::SameText(ext.View(), "TIF") || picbox::SameText(ext.View(), "TIFF");
      ext = isTiff ? "TIF" : "PNG";
      found.reset();
      return CopyConverted(source, target, targetName,
                           isTiff ? imageio::kTypeTiff : imageio::kTypePng, ext.ToStdString());
    }
    ext = tag;
  }
  found->native = isNative;
  return target.external ? CopyOut(*found, target, targetName, ext.ToStdString())
                         : CopyInto(*found, target, targetName, newFormat, tag.ToStdString());
}

bool kvPicBox::CopyConverted(const char* source, kvPicBox& target, const char* targetName, int type,
                             const std::string& ext) {
  Log().Format(kDetail, "      kvPicBox::CopyImage(): convert to PNG or TIF");
  Bytes picture;
  Bytes mask;
  GetQuick(source, ext.c_str(), &picture, &mask, -1, -1);
  if (picture.empty()) {
    Log().Format(1, "      kvPicBox::CopyImage(): didn't get pic");
    Log().Format(1, "      kvPicBox::CopyImage(): failed!");
    return false;
  }
  imageio::ImageLoader loader;
  loader.SetImage(picture);
  loader.SetMask(mask);
  const Bytes file = loader.Save(type);
  if (loader.HadError()) Log().Format(1, "      kvPicBox::CopyImage(): image loader has error");
  IKvStorage* const storage = target.external ? target.parent : target.StorageOf(picbox::kPictures);
  const std::string streamName = picbox::AddExtension(targetName, ext);
  WrittenStream stream(file.empty() || !storage
                           ? nullptr
                           : storage->CreateStream(streamName.c_str(), OpenModeRewrite));
  bool isWritten = false;
  if (stream) {
    const auto count = static_cast<unsigned>(file.size());
    isWritten = stream->Write(file.data(), count) == count;
    isWritten = CloseChecked(std::move(stream)) && isWritten;
  } else {
    Log().Format(1, "      kvPicBox::CopyImage(): failed to open dest file");
  }
  Log().Format(isWritten ? kDetail : 1, isWritten ? "      kvPicBox::CopyImage(): success!"
                                                  : "      kvPicBox::CopyImage(): failed!");
  return isWritten;
}

// --- into a box of its own storages

bool kvPicBox::CopyInto(FoundPicture& found, kvPicBox& target, const char* targetName,
                        bool newFormat, const std::string& tag) {
  Log().Format(kDetail, "      kvPicBox::CopyImage(): destination is internal");
  if (!found.native) return CopyStream(found, target, targetName, newFormat, tag);
  Log().Format(kDetail, "      kvPicBox::CopyImage(): src is native");
  if (!IsFolder(StorageOf(picbox::kPictures)) || !IsFolder(target.StorageOf(picbox::kPictures))) {
    Log().Format(kDetail, "      kvPicBox::CopyImage(): do not copy");
    return CopyStream(found, target, targetName, newFormat, tag);
  }
  for (int told = 0; told < 2; ++told) {  // as readers of logs know it
    Log().Format(kDetail, "      kvPicBox::CopyImage(): do copy");
  }
  const fs::path from = OnDisk(found.fullName);
  found.stream.reset();
  const std::string streamName =
      picbox::AddExtension(targetName, std::string(picbox::TailOf(found.streamName)));
  const std::string to = target.TargetFolder() + streamName;
  MakeFolderOf(platform::PathOfStorage(to));
  const bool isCopied = CopyFileWhole(from, OnDisk(to));
  if (isCopied) {
    TellReadOnly(from, to);
    Log().Format(kDetail, "      kvPicBox::CopyImage(d): copied '%s' to '%s'",
                 found.fullName.c_str(), to.c_str());
  } else {
    Log().Format(1, "      kvPicBox::CopyImage(): CopyFile() failed");
  }
  return isCopied;
}

void kvPicBox::TellReadOnly(const fs::path& source, const std::string& copy) {
  if (!IsReadOnly(source)) return;
  Log().Format(kDetail, "      kvPicBox::CopyImage(): removing read only file status of %s",
               copy.c_str());
}

bool kvPicBox::CopyStream(FoundPicture& found, kvPicBox& target, const char* targetName,
                          bool newFormat, const std::string& tag) {
  const auto encoded = static_cast<std::int32_t>(found.encoded);
  WrittenStream stream(target.OpenWritePic(targetName, tag.c_str(), newFormat, newFormat,
                                           found.kind, found.size, encoded));
  if (!stream) {
    Log().Format(1, "      kvPicBox::CopyImage(): OpenWritePic failed");
    Log().Format(1, "      kvPicBox(%s)::CopyImage failed - couldn't open destination \"%s\" !",
                 static_cast<const char*>(target.GetPath()), targetName);
    return false;
  }
  // Behind the head that is really there: nothing is lost and nothing doubled.
  const std::uint64_t length = found.stream->GetLength();
  const std::uint64_t count = length - std::min<std::uint64_t>(found.head.bytes, length);
  if (count < 1) Log().Format(1, "      kvPicBox::CopyImage(): invalid stream size");
  found.stream->Seek(static_cast<long>(found.head.bytes), 0);
  const std::uint64_t done = picbox::CopyRest(*found.stream, *stream);
  Log().Format(kDetail, "      kvPicBox::CopyImage(): Dest image '%s.%s', %d of %d bytes written",
               targetName, tag.c_str(), static_cast<int>(done), static_cast<int>(count));
  return CloseChecked(std::move(stream)) && done == count && count > 0;
}

bool kvPicBox::CopyNote(const char* source, kvPicBox& target, const char* targetName) {
  IKvStorage* from = StorageOf(picbox::kPictures);
  IKvStorage* to = target.StorageOf(picbox::kPictures);
  const std::string noteName = picbox::CleanName(source) + ".inf";
  const picbox::StreamPtr note(from ? from->OpenStream(noteName.c_str(), OpenModeRead) : nullptr);
  if (!note || !to) return true;
  const std::string targetNote = picbox::CleanName(targetName) + ".inf";
  WrittenStream copy(to->CreateStream(targetNote.c_str(), OpenModeRewrite));
  if (!copy) return false;
  const bool isWhole = picbox::CopyRest(*note, *copy) == note->GetLength();
  return CloseChecked(std::move(copy)) && isWhole;
}

// --- into the folder of an external box

bool kvPicBox::CopyOut(FoundPicture& found, kvPicBox& target, const char* targetName,
                       const std::string& ext) {
  Log().Format(kDetail, "      kvPicBox::CopyImage(): dest is external");
  const std::string path = target.TargetFolder() + picbox::AddExtension(targetName, ext);
  MakeFolderOf(platform::PathOfStorage(path));
  if (found.native && IsFolder(StorageOf(picbox::kPictures))) {
    Log().Format(kDetail, "      kvPicBox::CopyImage(): source is native");
    const fs::path from = OnDisk(found.fullName);
    found.stream.reset();
    const bool isCopied = CopyFileWhole(from, OnDisk(path));
    if (isCopied) {
      TellReadOnly(from, path);
      Log().Format(kDetail, "      kvPicBox::CopyImage(b): copied '%s' to '%s'",
                   found.fullName.c_str(), path.c_str());
    } else {
      Log().Format(1, "      kvPicBox::CopyImage(): failed");
    }
    return isCopied;
  }
  Log().Format(kDetail, "      kvPicBox::CopyImage(): source is not native");
  KvFile file(path.c_str(), OpenModeRewrite);
  if (!file.IsOpen()) {
    Log().Format(1,
                 "      kvPicBox(external)::CopyImage failed - couldn't open destination \"%s\" !",
                 path.c_str());
    return false;
  }
  found.stream->Seek(0, 0);
  const Bytes bytes = picbox::ReadStored(*found.stream, found.stream->GetLength());
  const auto count = static_cast<unsigned>(bytes.size());
  const bool isWritten = file.Write(bytes.data(), count) == count;
  if (!isWritten) {
    Log().Format(1, "      kvPicBox::CopyImage(): EXCEPTION in DestFile.Write()");
  }
  const bool isKept = file.Close() && isWritten;
  if (!isKept) Log().Format(1, "      kvPicBox::CopyImage(): failed");
  return isKept;
}
