#include "program/BoxFile.h"

#include <objbase.h>

#include <algorithm>

#include "base/CodePage.h"
#include "imageio/ImageLoader.h"
#include "platform/Services.h"
#include "platform/StoragePath.h"
#include "platform/SystemMessage.h"
#include "platform/component/OleText.h"
#include "program/Messages.h"
#include "storage/KvErrors.h"
#include "storage/KvSimpStorage.h"
#include "storage/PictureNames.h"

namespace program {
namespace {

namespace fs = std::filesystem;

constexpr char kStaged[] = ".fxbox-new";
constexpr unsigned kChangeMode = OpenModeRead | OpenModeWrite;
// Those of the two oldest generations come last.
constexpr picbox::Place kListOrder[] = {picbox::kPictures,    picbox::kPicMask,
                                        picbox::kOnlyPic,     picbox::kOnlyMask,
                                        picbox::kRootPicMask, picbox::kRootPicMask2};

unsigned ModeOf(BoxAccess access) {
  switch (access) {
    case BoxAccess::Read:
      return OpenModeRead;
    case BoxAccess::Change:
      return kChangeMode;
    default:
      return OpenModeReadWrite;
  }
}

std::string WordsFor(HRESULT status) {
  switch (status) {
    case STG_E_FILENOTFOUND:
    case STG_E_PATHNOTFOUND:
      return "there is no such file";
    case STG_E_ACCESSDENIED:
      return "the file cannot be opened: access is denied, or it is in use";
    case STG_E_SHAREVIOLATION:
    case STG_E_LOCKVIOLATION:
      return "the file is in use";
    case STG_E_FILEALREADYEXISTS:
    case STG_E_INVALIDHEADER:
    case STG_E_OLDFORMAT:
      return "the file is no compound file";
    default:
      return platform::SystemMessage(status);
  }
}

// Beside the file, with a name that is never listed.
fs::path HiddenBeside(const fs::path& file) {
  return file.parent_path() /
         (".fxbox-" + std::to_string(platform::CurrentServices().process->ProcessId()));
}

KvStorage* Exclusive(const fs::path& file, unsigned mode) {
  return new KvStorage(platform::StoragePathOf(file).c_str(), mode, false, false);
}

// Whether it can be a plain file of this name.
bool HasStem(const BoxEntry& entry, std::string_view stem) {
  return entry.place == picbox::kPictures && imageio::ImageLoader::IsImage(entry.name.c_str()) &&
         picbox::SameText(picbox::StemOf(entry.name), stem);
}

}  // namespace

std::string BoxEntry::Title() const {
  const bool hasEnding = native && imageio::ImageLoader::IsImage(name.c_str());
  return hasEnding ? std::string(picbox::StemOf(name)) : name;
}

bool NamesFolder(const std::string& argument) {
  return !argument.empty() && argument.back() == '/';
}

fs::path BoxFolder(const std::string& argument) {
  std::string folder = argument;
  while (folder.size() > 1 && folder.back() == '/') folder.pop_back();
  constexpr std::string_view kSuffix = "_kv";
  if (!std::string_view(folder).ends_with(kSuffix)) folder += kSuffix;
  return PathOf(folder);
}

CompoundFile::CompoundFile(const std::string& name)
    : storage(KvStorage::OpenShared(platform::StoragePathOf(PathOf(name)).c_str())) {
  const HRESULT status = storage->OpenStatus();
  if (storage->IsBad()) throw FileError(name, WordsFor(status));
}

// --- opening

BoxFile::BoxFile(const std::string& argument, BoxAccess access)
    : name(argument), isFolder(NamesFolder(argument)) {
  if (isFolder) {
    path = BoxFolder(argument);
    OpenFolder(access);
  } else {
    path = PathOf(argument);
    OpenCompound(access);
  }
  box = std::make_unique<kvPicBox>(root.get(), ModeOf(access));
  if (box->HasFailed()) Fail("the file is no picture box: it has no pictures");
}

void BoxFile::OpenFolder(BoxAccess access) {
  std::error_code error;
  if (access != BoxAccess::Make && !fs::is_directory(path, error)) {
    Fail("there is no such box (no folder " + Utf8Of(path) + ")");
  }
  root.reset(new KvSimpStorage(platform::StoragePathOf(path).c_str(), ModeOf(access), true, false));
}

KvStorage* BoxFile::Opened(KvStorage* storage) {
  std::unique_ptr<KvStorage> holder(storage);
  if (storage->IsBad()) Fail(WordsFor(storage->OpenStatus()));
  return holder.release();
}

void BoxFile::OpenCompound(BoxAccess access) {
  std::error_code error;
  isNew = access == BoxAccess::Make && !fs::exists(path, error);
  if (access == BoxAccess::Read) {
    compound = Opened(KvStorage::OpenShared(platform::StoragePathOf(path).c_str()));
  } else if (platform::CompoundFilesSurviveKills()) {
    compound = Opened(Exclusive(path, ModeOf(access)));
  } else {
    OpenCopy();
  }
  root.reset(compound);
}

void BoxFile::OpenCopy() {
  KvStorage* source = nullptr;
  if (!isNew) {
    source = Opened(Exclusive(path, OpenModeRead));
    original.reset(source);
  }
  copy = HiddenBeside(path);
  compound = Opened(Exclusive(copy, OpenModeReadWrite));
  if (source && !source->CopyTo(compound)) {
    root.reset(compound);
    Fail("the box cannot be copied");
  }
}

BoxFile::~BoxFile() {
  box.reset();
  root.reset();
  original.reset();
  std::error_code ignored;
  if (!copy.empty()) fs::remove(copy, ignored);
  if (isNew && !isKept && !isFolder && copy.empty()) fs::remove(path, ignored);
}

void BoxFile::Keep() {
  if (isFolder) return;
  const HRESULT status = compound->Element()->Commit(STGC_DEFAULT);
  if (FAILED(status)) Fail("the box cannot be written: " + platform::SystemMessage(status));
  if (!copy.empty()) MoveCopy();
  isKept = true;
}

void BoxFile::MoveCopy() {
  box.reset();
  root.reset();
  original.reset();
  const auto failure = platform::CurrentServices().files->Move(copy, path);
  if (failure) Fail("the box cannot be replaced: " + *failure);
}

void BoxFile::Fail(const std::string& what) const {
  throw FileError(name, what);
}

void BoxFile::FailPicture(const std::string& picture, const std::string& what) const {
  throw FileError(name + "::" + base::ToUtf8(picture), what);
}

// --- pictures

IStorage* BoxFile::ElementOf(picbox::Place place) const {
  auto* storage = isFolder ? nullptr : static_cast<KvStorage*>(box->StorageOf(place));
  return storage ? storage->Element() : nullptr;
}

std::vector<BoxEntry> BoxFile::Entries() {
  std::vector<BoxEntry> entries;
  for (const picbox::Place place : kListOrder) {
    IKvStorage* storage = box->StorageOf(place);
    KvString element;
    unsigned attributes = 0;
    bool any = storage && storage->FindFirst(element, attributes);
    for (; any; any = storage->FindNext(element, attributes)) {
      const bool isHidden = element.GetAt(0) == '.';
      if (attributes != kStreamElement || isHidden || picbox::IsNote(element.View())) continue;
      entries.push_back({place, element.ToStdString(), false});
    }
  }
  return entries;
}

// Opens each of them, so it is for those alone that are wanted.
void BoxFile::MarkNative(std::vector<BoxEntry>& entries) {
  for (BoxEntry& entry : entries) {
    if (entry.place != picbox::kPictures) continue;
    const auto found = box->OpenAt(entry.place, entry.name.c_str());
    entry.native = found && found->native;
  }
}

std::vector<BoxEntry> BoxFile::Find(const std::string& wanted) {
  const std::vector<BoxEntry> all = Entries();
  const std::string clean = picbox::CleanName(wanted);
  const auto choose = [&](const auto& fits) {
    std::vector<BoxEntry> chosen;
    std::copy_if(all.begin(), all.end(), std::back_inserter(chosen), fits);
    MarkNative(chosen);
    return chosen;
  };
  auto chosen = choose([&](const BoxEntry& entry) { return entry.name == wanted; });
  if (!chosen.empty()) return chosen;
  chosen = choose([&](const BoxEntry& entry) {
    return picbox::SameText(entry.name, wanted) || picbox::SameText(entry.name, clean);
  });
  if (!chosen.empty()) return chosen;
  chosen = choose(
      [&](const BoxEntry& entry) { return HasStem(entry, wanted) || HasStem(entry, clean); });
  std::erase_if(chosen, [](const BoxEntry& entry) { return !entry.native; });
  return chosen;
}

std::vector<BoxEntry> BoxFile::SameTitle(const std::string& title) {
  std::vector<BoxEntry> all = Entries();
  std::erase_if(all, [&title](const BoxEntry& entry) {
    return !picbox::SameText(entry.name, title) && !HasStem(entry, title);
  });
  MarkNative(all);
  std::erase_if(all, [&title](const BoxEntry& entry) {
    return !picbox::SameText(entry.name, title) && !entry.native;
  });
  return all;
}

std::string BoxFile::PathIn(const BoxEntry& entry) {
  constexpr const char* kFolders[] = {"Pictures/",         "Pictures/OnlyPic/",
                                      "Pictures/PicMask/", "Pictures/OnlyMask/",
                                      "Pic_Mask/",         "PicMask/"};
  return kFolders[entry.place] + base::ToUtf8(entry.name);
}

BoxEntry BoxFile::Need(const std::string& wanted) {
  const std::vector<BoxEntry> found = Find(wanted);
  if (found.empty()) FailPicture(wanted, "there is no such picture");
  return found.front();
}

picbox::FoundPicture BoxFile::Open(const BoxEntry& entry) {
  auto found = box->OpenAt(entry.place, entry.name.c_str());
  if (!found) FailPicture(entry.name, "the picture cannot be opened");
  return std::move(*found);
}

// --- changing

void BoxFile::Delete(const std::vector<BoxEntry>& entries, bool keepsNote) {
  for (const BoxEntry& entry : entries) {
    if (!box->StorageOf(entry.place)->DeleteStream(entry.name.c_str())) {
      FailPicture(entry.name, "the picture cannot be deleted");
    }
  }
  if (keepsNote || entries.empty()) return;
  const std::string title = entries.front().Title();
  if (SameTitle(title).empty()) {
    box->StorageOf(picbox::kPictures)->DeleteStream((title + ".inf").c_str());
  }
}

std::string BoxFile::StagedName(const std::string& streamName) const {
  return isFolder ? streamName : kStaged;
}

void BoxFile::PutInPlace(picbox::Place place, const std::string& streamName,
                         const std::vector<BoxEntry>& replaced) {
  std::vector<BoxEntry> old = replaced;
  if (isFolder) {
    std::erase_if(old, [&](const BoxEntry& entry) {
      return entry.place == place && picbox::SameText(entry.name, streamName);
    });
  }
  Delete(old, true);
  if (isFolder) return;
  const HRESULT status = ElementOf(place)->RenameElement(platform::ToOleText(kStaged).c_str(),
                                                         platform::ToOleText(streamName).c_str());
  if (FAILED(status)) {
    FailPicture(streamName,
                "the picture cannot be stored under this name: " + platform::SystemMessage(status));
  }
}

}  // namespace program
