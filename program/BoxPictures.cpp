#include "program/BoxPictures.h"

#include <algorithm>
#include <filesystem>

#include "imageio/ImageLoader.h"
#include "imageio/StoredBitmap.h"
#include "program/Messages.h"
#include "storage/PictureNames.h"
#include "storage/PictureStream.h"

namespace program {
namespace {

using imageio::StoredBitmap;
using picbox::FoundPicture;
using picbox::PictureBody;

// These tell what kind of file it is.
constexpr std::uint64_t kTypeBytes = 4096;
// Heads of picture files are rarely longer.
constexpr std::uint64_t kStartBytes = 256 * 1024;
constexpr std::uint32_t kBitmapHeadBytes = 40;
constexpr std::uint32_t kMostTableBytes = 1024;

const char* GenerationOf(const FoundPicture& found) {
  if (found.native) return "native";
  if (found.place == picbox::kPictures) return "new";
  return found.place >= picbox::kRootPicMask ? "oldest" : "old";
}

bool HasPicture(int kind) {
  return kind != picbox::kMaskAlone;
}

void DescribeBitmap(const std::optional<StoredBitmap>& bitmap, PictureDetails& details) {
  if (!bitmap) return;
  details.width = bitmap->Width();
  details.height = bitmap->Height();
  details.bits = bitmap->Bits();
  details.colours = bitmap->Colours();
}

bool DescribeFile(const PictureBytes& file, PictureDetails& details) try {
  const imageio::ImageReader reader(file.data(), file.size());
  details.width = reader.Info().width;
  details.height = reader.Info().height;
  details.bits = 24;
  details.colours = 0;
  return true;
} catch (const imageio::ImageError&) {
  return false;
}

void DescribeEncoded(FoundPicture& found, PictureDetails& details) {
  const std::uint64_t size = found.native ? found.stream->GetLength() : found.size;
  details.encodedBytes = size;
  for (const std::uint64_t most : {kTypeBytes, kStartBytes, size}) {
    found.stream->Seek(static_cast<long>(found.head.bytes), 0);
    const PictureBytes start = picbox::ReadStored(*found.stream, std::min(most, size));
    if (imageio::ImageLoader::GetType(start) == imageio::kTypeNone) return;
    if (DescribeFile(start, details) || most >= size) return;
  }
}

void DescribeBody(FoundPicture& found, PictureDetails& details) {
  PictureBody body(*found.stream, found.head);
  std::int32_t x = 0, y = 0;
  if (!body.ReadPosition(x, y)) return;
  details.x = x;
  details.y = y;
  if (found.encoded != 0) return;
  if (const auto size = body.ReadSize()) {
    DescribeBitmap(StoredBitmap::ParseHead(body.ReadStart(*size, kBitmapHeadBytes)), details);
  }
}

void DescribeNote(BoxFile& box, const BoxEntry& entry, PictureDetails& details) {
  const std::string spelled[] = {entry.name, entry.Title()};
  IKvStorage* pictures = box.Pictures().StorageOf(picbox::kPictures);
  for (const std::string& name : spelled) {
    picbox::StreamPtr note(pictures->OpenStream((name + ".inf").c_str(), OpenModeRead));
    if (!note) continue;
    const unsigned length = note->GetLength();
    note.reset();
    std::string block(kvPicBox::kBlockBytes, '\0');
    details.text = box.Pictures().GetImageInfo(name.c_str(), block.data()).ToStdString();
    const bool hasBlock = std::string_view(block).starts_with(kvPicBox::GetVersion());
    if (length >= 8 && hasBlock) details.block = block;
    return;
  }
}

}  // namespace

PictureDetails Describe(BoxFile& box, const BoxEntry& entry, bool withNote) {
  FoundPicture found = box.Open(entry);
  PictureDetails details;
  details.name = entry.name;
  details.generation = GenerationOf(found);
  details.kind = found.kind;
  details.tag = picbox::UpperText(found.tag);
  details.headerSize = found.head.bytes;
  details.bytes = found.stream->GetLength();
  if (found.encoded != 0) DescribeEncoded(found, details);
  if (!found.native) DescribeBody(found, details);
  found.stream.reset();
  if (withNote) DescribeNote(box, entry, details);
  return details;
}

// --- faults

namespace {

std::string FaultOfBitmap(PictureBody& body, bool isMask) {
  const std::string what = isMask ? "the mask" : "the picture";
  const auto size = body.ReadSize();
  if (!size) return what + " is missing";
  const PictureBytes start = body.ReadStart(*size, kBitmapHeadBytes + kMostTableBytes);
  const auto head = StoredBitmap::ParseHead(start);
  if (!head || (isMask && !head->IsMask())) return what + " is damaged";
  if (!picbox::FitsBlock(head, *size)) return what + " has another length than its size says";
  return body.Skip(*size - start.size()) ? "" : what + " ends early";
}

std::string FaultOfBody(FoundPicture& found) {
  const std::uint64_t front = found.head.bytes + std::uint64_t{found.size};
  const bool isBare = found.encoded != 0 && front == found.stream->GetLength();
  // A copy of a plain file has nothing behind it.
  if (isBare && found.kind == picbox::kPictureAlone) return {};
  PictureBody body(*found.stream, found.head);
  std::int32_t x = 0, y = 0;
  if (!body.ReadPosition(x, y)) return "the position is missing";
  std::string fault;
  if (found.encoded == 0 && HasPicture(found.kind)) fault = FaultOfBitmap(body, false);
  const bool hasMask = found.kind != picbox::kPictureAlone;
  if (fault.empty() && hasMask) fault = FaultOfBitmap(body, true);
  if (!fault.empty()) return fault;
  return body.ReachesEnd() ? "" : "the end marker is missing or wrong";
}

}  // namespace

std::string FaultOf(BoxFile& box, const BoxEntry& entry) {
  FoundPicture found = box.Open(entry);
  const std::uint64_t length = found.stream->GetLength();
  if (found.encoded != 0) {
    if (found.head.bytes + std::uint64_t{found.native ? 0 : found.size} > length) {
      return "the encoded picture reaches beyond the stream";
    }
    const PictureBytes file = box.Pictures().ReadEncoded(found);
    const bool isPicture = imageio::ImageLoader::GetType(file) != imageio::kTypeNone;
    // A plain file may be anything.
    if (found.native && !isPicture && picbox::PictureTag(entry.name).empty()) return {};
    imageio::ImageLoader loader(file);
    if (loader.HadError() && loader.Error() != "no decoder") return loader.Error();
  }
  if (found.native) return {};
  try {
    return FaultOfBody(found);
  } catch (const KvStreamException& error) {
    return error.Message();
  }
}

std::vector<std::string> BrokenNotes(BoxFile& box) {
  std::vector<std::string> notes;
  IKvStorage& pictures = *box.Pictures().StorageOf(picbox::kPictures);
  KvString name;
  unsigned attributes = 0;
  for (bool any = pictures.FindFirst(name, attributes); any;
       any = pictures.FindNext(name, attributes)) {
    if (attributes == kStreamElement && picbox::IsNote(name.View())) {
      notes.push_back(name.ToStdString());
    }
  }
  std::erase_if(notes, [&pictures](const std::string& note) {
    const picbox::StreamPtr stream(pictures.OpenStream(note.c_str(), OpenModeRead));
    return stream && picbox::IsWholeNote(picbox::ReadStored(*stream, stream->GetLength()));
  });
  return notes;
}

// --- pictures as files

PictureBytes PictureFileOf(BoxFile& box, const BoxEntry& entry, imageio::Format format) {
  FoundPicture found = box.Open(entry);
  if (!HasPicture(found.kind)) box.FailPicture(entry.name, "this is a mask without a picture");
  const bool isPlain = found.native || found.kind == picbox::kPictureAlone;
  if (found.encoded != 0 && isPlain) return box.Pictures().ReadEncoded(found);
  PictureBytes picture;
  PictureBytes mask;
  std::string fault;
  try {
    box.Pictures().Load(found, &picture, &mask, -1, -1, nullptr, nullptr);
  } catch (const KvStreamException& error) {
    fault = error.Message();
  }
  if (picture.empty()) box.FailPicture(entry.name, "the picture is damaged");
  imageio::ImageLoader loader;
  loader.SetImage(picture);
  loader.SetMask(mask);
  const int type =
      format == imageio::Format::Png ? imageio::kTypePng : static_cast<int>(imageio::kTypePpm);
  PictureBytes file = loader.Save(type);
  if (file.empty()) box.FailPicture(entry.name, loader.Error());
  return file;
}

std::optional<BoxAndName> SplitBoxInput(const std::string& input) {
  const std::size_t at = input.rfind("::");
  if (at == input.npos || at == 0 || at + 2 >= input.size()) return std::nullopt;
  return BoxAndName{input.substr(0, at), ChainTextOf(input.substr(at + 2))};
}

PictureBytes ReadBoxInput(const BoxAndName& input) {
  BoxFile box(input.box, BoxAccess::Read);
  return PictureFileOf(box, box.Need(input.name), imageio::Format::Pam);
}

}  // namespace program
