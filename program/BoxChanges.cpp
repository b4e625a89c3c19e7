#include "program/BoxChanges.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <memory>
#include <utility>

#include "base/CodePage.h"
#include "imageio/ImageLoader.h"
#include "imageio/StoredBitmap.h"
#include "platform/CompoundCheck.h"
#include "platform/StoragePath.h"
#include "platform/component/OleText.h"
#include "program/BoxFile.h"
#include "program/BoxPictures.h"
#include "program/Messages.h"
#include "storage/CheckedStream.h"
#include "storage/PictureNames.h"
#include "storage/PictureStream.h"

namespace program {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t kLongestElement = 31;
constexpr std::size_t kPieceBytes = 1 << 20;

std::string CheckedName(const BoxFile& box, const std::string& wanted) {
  const std::string clean = picbox::CleanName(wanted);
  if (!picbox::CanBeName(clean) || clean.front() == '.') {
    box.FailPicture(wanted, "no picture can have this name");
  }
  return clean;
}

void CheckLength(const BoxFile& box, const std::string& streamName) {
  if (!box.IsFolder() && streamName.size() > kLongestElement) {
    box.FailPicture(streamName, "the name is longer than 31 letters");
  }
}

std::ifstream OpenFile(const fs::path& file) {
  std::error_code error;
  if (fs::is_directory(file, error)) throw FileError(Utf8Of(file), "this is a folder");
  std::ifstream stream(file, std::ios::binary);
  if (!stream) throw FileError(Utf8Of(file), "the file cannot be read");
  return stream;
}

PictureBytes ReadWhole(const fs::path& file) {
  std::ifstream stream = OpenFile(file);
  return {std::istreambuf_iterator<char>(stream), {}};
}

// Writes the bytes of a picture; false when not all of them could be kept.
using WriteBytes = std::function<bool(IKvStream& target)>;

bool WriteAll(IKvStream& target, const PictureBytes& bytes) {
  const auto count = static_cast<unsigned>(bytes.size());
  return target.Write(bytes.data(), count) == count;
}

WriteBytes FromMemory(PictureBytes bytes) {
  return [bytes = std::move(bytes)](IKvStream& target) { return WriteAll(target, bytes); };
}

// Reads the file when it is written, a piece at a time.
WriteBytes FromFile(const fs::path& file) {
  return [file](IKvStream& target) {
    std::ifstream stream = OpenFile(file);
    PictureBytes piece(kPieceBytes);
    bool isKept = true;
    while (isKept && stream) {
      stream.read(reinterpret_cast<char*>(piece.data()), kPieceBytes);
      piece.resize(static_cast<std::size_t>(stream.gcount()));
      isKept = WriteAll(target, piece);
    }
    if (isKept && !stream.eof()) throw FileError(Utf8Of(file), "the file cannot be read");
    return isKept;
  };
}

// What stands behind the head of a stored picture, behind another head.
WriteBytes FromStream(picbox::FoundPicture found, PictureBytes head) {
  const auto source = std::make_shared<picbox::FoundPicture>(std::move(found));
  return [source, head = std::move(head)](IKvStream& target) {
    IKvStream& stream = *source->stream;
    stream.Seek(static_cast<long>(source->head.bytes), 0);
    const std::uint64_t count = stream.GetLength() - source->head.bytes;
    return WriteAll(target, head) && picbox::CopyRest(stream, target) == count;
  };
}

// A picture on its way into a box.
struct NewPicture {
  picbox::Place place = picbox::kPictures;
  std::string streamName;
  WriteBytes write;
};

// Closes the stream in any case. The source of the bytes is closed before: it may be what is
// replaced.
bool IsWritten(WriteBytes& write, IKvStream* stream) try {
  const bool isWhole = std::exchange(write, nullptr)(*stream);
  if (isWhole) return CloseChecked(stream);
  Abandon(stream);
  return false;
} catch (...) {
  Abandon(stream);
  throw;
}

// Writes the stream and puts it in the place of what has its name.
void Store(BoxFile& box, NewPicture picture, const std::vector<BoxEntry>& replaced) {
  CheckLength(box, picture.streamName);
  IKvStorage* storage = box.Pictures().StorageOf(picture.place);
  const std::string staged = box.StagedName(picture.streamName);
  IKvStream* stream = storage ? storage->CreateStream(staged.c_str(), OpenModeRewrite) : nullptr;
  if (!stream) {
    const bool isDamaged = !box.IsFolder() && !platform::FindCompoundFaults(box.Path(), 1).empty();
    box.FailPicture(picture.streamName, isDamaged ? "the box is damaged and stays as it is"
                                                  : "the picture cannot be stored");
  }
  if (!IsWritten(picture.write, stream)) {
    if (!box.IsFolder()) storage->DeleteStream(staged.c_str());
    box.FailPicture(picture.streamName, "the picture cannot be written; is the disk full?");
  }
  box.PutInPlace(picture.place, picture.streamName, replaced);
}

// --- add

std::string ExtensionOf(const fs::path& file) {
  const std::string extension = platform::StoragePathOf(file.extension());
  return extension.empty() ? std::string() : picbox::CleanName(extension.substr(1));
}

NewPicture AsPlainFile(const std::string& name, WriteBytes write, const std::string& extension) {
  const std::string streamName = extension.empty() ? name : name + "." + extension;
  return {picbox::kPictures, streamName, std::move(write)};
}

PictureBytes SaveAs(int type, const PictureBytes& picture, const PictureBytes& mask,
                    const imageio::Metadata& metadata, const std::string& where) {
  imageio::ImageLoader saver;
  saver.SetImage(picture);
  saver.SetMask(mask);
  saver.PutMetadata(metadata);
  PictureBytes file = saver.Save(type);
  if (file.empty()) throw FileError(where, saver.Error());
  return file;
}

NewPicture Prepare(const fs::path& file, const std::string& name, const AddRequest& request) {
  if (request.as == StoreAs::Native) {
    OpenFile(file);  // before anything of the box is touched
    return AsPlainFile(name, FromFile(file), ExtensionOf(file));
  }
  const PictureBytes bytes = ReadWhole(file);
  const std::string where = Utf8Of(file);
  imageio::ImageLoader loader(bytes);
  if (loader.HadError()) throw FileError(where, loader.Error());
  const PictureBytes& picture = loader.ImageDIB();
  const PictureBytes& mask = loader.MaskDIB();
  if (request.as == StoreAs::Bitmap) {
    return {picbox::kPictures, name,
            FromMemory(picbox::NewStream(picture, mask, request.x, request.y, {}))};
  }
  if (mask.empty()) {
    if (request.x != 0 || request.y != 0) {
      throw FileError(where, "--at: without a mask it becomes a plain file, which has no position");
    }
    PictureBytes jpeg = loader.Type() == imageio::kTypeJpeg
                            ? bytes
                            : SaveAs(imageio::kTypeJpeg, picture, {}, loader.FileMetadata(), where);
    return AsPlainFile(name, FromMemory(std::move(jpeg)), "JPG");
  }
  const PictureBytes jpeg = SaveAs(imageio::kTypeJpeg, picture, {}, loader.FileMetadata(), where);
  return {picbox::kPictures, name,
          FromMemory(picbox::NewStream({}, mask, request.x, request.y, jpeg))};
}

void AddOne(BoxFile& box, const std::string& file, const AddRequest& request) {
  const fs::path path = PathOf(file);
  const std::string wanted =
      request.name ? ChainTextOf(*request.name) : platform::StoragePathOf(path.stem());
  const std::string name = CheckedName(box, wanted);
  const std::vector<BoxEntry> existing = box.SameTitle(name);
  if (!existing.empty() && !request.replaces) {
    box.FailPicture(name, "there is such a picture already (--replace takes its place)");
  }
  Store(box, Prepare(path, name, request), existing);
  if (!existing.empty()) {
    box.Pictures().StorageOf(picbox::kPictures)->DeleteStream((name + ".inf").c_str());
  }
  box.Keep();
}

}  // namespace

int AddToBox(const AddRequest& request) {
  if (request.name && request.files.size() > 1) {
    throw UsageError("--name goes with one file");
  }
  int status = kDone;
  for (const std::string& file : request.files) {
    try {
      // Opened for each file: what was added before is kept, whatever comes.
      BoxFile box(request.box, BoxAccess::Make);
      AddOne(box, file, request);
    } catch (const FileError& error) {
      PrintError(error.what());
      status = kSomeFailed;
    } catch (const KvFileException& error) {
      PrintError(base::ToUtf8(error.Message().View()));
      status = kSomeFailed;
    }
  }
  return status;
}

// --- delete, rename, note

int DeletePicture(const std::string& boxName, const std::string& name) {
  BoxFile box(boxName, BoxAccess::Change);
  box.Need(ChainTextOf(name));
  box.Delete(box.Find(ChainTextOf(name)), false);
  box.Keep();
  return kDone;
}

namespace {

void RenameElement(BoxFile& box, picbox::Place place, const std::string& from,
                   const std::string& to) {
  CheckLength(box, to);
  HRESULT status = S_OK;
  if (box.IsFolder()) {
    const std::string folder = box.Pictures().StorageOf(place)->GetPath().ToStdString();
    std::error_code error;
    fs::rename(platform::PathOfStorage(folder + from), platform::PathOfStorage(folder + to), error);
    status = error ? E_FAIL : S_OK;
  } else {
    status = box.ElementOf(place)->RenameElement(platform::ToOleText(from).c_str(),
                                                 platform::ToOleText(to).c_str());
  }
  if (FAILED(status)) box.FailPicture(from, "the picture cannot be renamed");
}

bool HasStream(IKvStorage& storage, const std::string& name) {
  const picbox::StreamPtr stream(storage.OpenStream(name.c_str(), OpenModeRead));
  return stream != nullptr;
}

}  // namespace

int RenamePicture(const std::string& boxName, const std::string& oldName,
                  const std::string& newName) {
  BoxFile box(boxName, BoxAccess::Change);
  const BoxEntry first = box.Need(ChainTextOf(oldName));
  const std::vector<BoxEntry> all = box.Find(ChainTextOf(oldName));
  std::string title = CheckedName(box, ChainTextOf(newName));
  const std::string ending(first.name.substr(first.Title().size()));
  if (!ending.empty() && picbox::EndsWithText(title, ending)) {
    title.resize(title.size() - ending.size());
  }
  if (!box.SameTitle(title).empty()) {
    box.FailPicture(title, "there is such a picture already");
  }
  for (const BoxEntry& entry : all) {
    const std::string tail = entry.name.substr(entry.Title().size());
    RenameElement(box, entry.place, entry.name, title + tail);
  }
  IKvStorage& pictures = *box.Pictures().StorageOf(picbox::kPictures);
  const std::string note = first.Title() + ".inf";
  if (HasStream(pictures, note)) {
    pictures.DeleteStream((title + ".inf").c_str());
    RenameElement(box, picbox::kPictures, note, title + ".inf");
  }
  box.Keep();
  return kDone;
}

int NotePicture(const std::string& boxName, const std::string& name, const std::string& text,
                const std::optional<std::string>& blockFile) {
  PictureBytes block(kvPicBox::kBlockBytes);
  if (blockFile) {
    block = ReadWhole(PathOf(*blockFile));
    if (block.size() != kvPicBox::kBlockBytes) {
      throw FileError(*blockFile, "a block has 36 bytes");
    }
  }
  BoxFile box(boxName, BoxAccess::Change);
  const std::string title = box.Need(ChainTextOf(name)).Title();
  CheckLength(box, title + ".inf");
  IKvStorage& pictures = *box.Pictures().StorageOf(picbox::kPictures);
  if (!blockFile && HasStream(pictures, title + ".inf")) {
    box.Pictures().GetImageInfo(title.c_str(), block.data());
  }
  const std::string note = base::FromUtf8(text);
  if (!box.Pictures().WriteImageInfo(title.c_str(), note.c_str(), block.data())) {
    box.FailPicture(title, "the note cannot be written");
  }
  box.Keep();
  return kDone;
}

// --- copy

namespace {

// The same content under a head of the generation that is wanted.
NewPicture WithHead(picbox::FoundPicture found, const std::string& title, bool toOld) {
  constexpr picbox::Place kOldPlaces[] = {picbox::kPicMask, picbox::kOnlyPic, picbox::kOnlyMask};
  const picbox::Place place =
      toOld ? kOldPlaces[found.kind - picbox::kPictureAndMask] : picbox::kPictures;
  PictureBytes head;
  if (!toOld) head = picbox::TagHead(found.kind, found.tag.empty() ? "JPG" : found.tag);
  const PictureBytes sizes = picbox::SizeHead(static_cast<std::int32_t>(found.encoded), found.size);
  head.insert(head.end(), sizes.begin(), sizes.end());
  return {place, title, FromStream(std::move(found), std::move(head))};
}

NewPicture PlainCopy(BoxFile& box, const BoxEntry& entry, const std::string& title) {
  PictureBytes bytes = PictureFileOf(box, entry, imageio::Format::Png);
  const int type = imageio::ImageLoader::GetType(bytes);
  return AsPlainFile(title, FromMemory(std::move(bytes)), picbox::TagOfType(type));
}

NewPicture CopyOf(BoxFile& box, const BoxEntry& entry, const std::string& title,
                  const CopyRequest& request) {
  picbox::FoundPicture found = box.Open(entry);
  if (found.native && !request.toOld) {
    const std::string tail = entry.name.substr(entry.Title().size());
    return {picbox::kPictures, title + tail, FromStream(std::move(found), {})};
  }
  if (request.toNative) {
    found.stream.reset();
    return PlainCopy(box, entry, title);
  }
  return WithHead(std::move(found), title, request.toOld);
}

PictureBytes NoteOf(BoxFile& box, const std::string& title) {
  IKvStorage& pictures = *box.Pictures().StorageOf(picbox::kPictures);
  const picbox::StreamPtr note(pictures.OpenStream((title + ".inf").c_str(), OpenModeRead));
  return note ? picbox::ReadStored(*note, note->GetLength()) : PictureBytes();
}

void StoreNote(BoxFile& box, const std::string& title, const PictureBytes& note) {
  IKvStorage& pictures = *box.Pictures().StorageOf(picbox::kPictures);
  const std::string name = title + ".inf";
  pictures.DeleteStream(name.c_str());
  if (note.empty()) return;
  CheckLength(box, name);
  IKvStream* stream = pictures.CreateStream(name.c_str(), OpenModeRewrite);
  const auto count = static_cast<unsigned>(note.size());
  const bool isWritten = stream && stream->Write(note.data(), count) == count;
  if (!stream || !CloseChecked(stream) || !isWritten) {
    box.FailPicture(title, "the note cannot be written");
  }
}

bool AreSameBox(const std::string& a, const std::string& b) {
  const auto pathOf = [](const std::string& name) {
    return NamesFolder(name) ? BoxFolder(name) : PathOf(name);
  };
  std::error_code error;
  return fs::equivalent(pathOf(a), pathOf(b), error);
}

int CopyBetween(BoxFile& source, BoxFile& target, const CopyRequest& request) {
  const BoxEntry entry = source.Need(ChainTextOf(request.name));
  const std::string title =
      request.newName ? CheckedName(target, ChainTextOf(*request.newName)) : entry.Title();
  std::vector<BoxEntry> replaced = target.SameTitle(title);
  const bool isSame = &source == &target && picbox::SameText(title, entry.Title());
  NewPicture picture = CopyOf(source, entry, title, request);
  if (isSame && picture.place == entry.place && picture.streamName == entry.name) return kDone;
  const PictureBytes note = NoteOf(source, entry.Title());
  Store(target, std::move(picture), replaced);
  if (!isSame) StoreNote(target, title, note);
  target.Keep();
  return kDone;
}

}  // namespace

int CopyInBoxes(const CopyRequest& request) {
  if (AreSameBox(request.box, request.targetBox)) {
    BoxFile box(request.box, BoxAccess::Make);
    return CopyBetween(box, box, request);
  }
  BoxFile source(request.box, BoxAccess::Read);
  source.Need(ChainTextOf(request.name));
  BoxFile target(request.targetBox, BoxAccess::Make);
  return CopyBetween(source, target, request);
}

}  // namespace program
