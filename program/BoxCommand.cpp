// fxbox box: picture boxes, and any compound file.
#include <charconv>
#include <fstream>
#include <iostream>
#include <memory>
#include <set>

#include "imageio/ImageLoader.h"
#include "imageio/StoredBitmap.h"
#include "platform/CompoundCheck.h"
#include "platform/Services.h"
#include "program/BoxChanges.h"
#include "program/BoxFile.h"
#include "program/BoxPictures.h"
#include "program/BoxTree.h"
#include "program/Commands.h"
#include "program/Json.h"
#include "program/Messages.h"
#include "storage/KvErrors.h"
#include "storage/PictureNames.h"
#include "storage/PictureStream.h"

namespace program {
namespace {

struct BoxOptions {
  std::string box;
  std::string name;
  std::string second;
  std::optional<std::string> third;
  std::string output;
  std::optional<std::string> at;
  std::optional<std::string> block;
  AddRequest add;
  bool json = false;
  bool native = false;
  bool encoded = false;
  bool dib = false;
  bool toNew = false;
  bool toOld = false;
};

constexpr std::size_t kMostFaults = 1000;

constexpr char kExamples[] = R"(Examples:
  fxbox box add shots.box photo.jpg             keeps the photo's pixels in a compound file
  fxbox box add shots/ --native *.jpg           keeps the files in the folder shots_kv
  fxbox box list shots.box --json
  fxbox box get shots.box photo -o photo.png
  fxbox apply -c 'ZNFilter.Sepia.1(Sepia=050)' -o sepia.jpg shots.box::photo
A BOX that ends in "/" is a folder.)";

// --- list and info

template <class Value>
Json OrNull(const std::optional<Value>& value) {
  return value ? Json(*value) : Json(nullptr);
}

template <class Value>
std::string OrDash(const std::optional<Value>& value) {
  return value ? std::to_string(*value) : "-";
}

Json ListedJson(const PictureDetails& details) {
  return {{"name", base::ToUtf8(details.name)},
          {"generation", details.generation},
          {"kind", details.kind},
          {"width", OrNull(details.width)},
          {"height", OrNull(details.height)},
          {"bytes", details.bytes}};
}

void PrintListed(const PictureDetails& details) {
  std::cout << base::ToUtf8(details.name) << '\t' << details.generation << '\t' << details.kind
            << '\t' << OrDash(details.width) << '\t' << OrDash(details.height) << '\t'
            << details.bytes << '\n';
}

int List(const BoxOptions& options) {
  BoxFile box(options.box, BoxAccess::Read);
  Json list = Json::array();
  for (const BoxEntry& entry : box.Entries()) {
    const PictureDetails details = Describe(box, entry, false);
    if (options.json) {
      list.push_back(ListedJson(details));
    } else {
      PrintListed(details);
    }
  }
  if (options.json) PrintJson(list);
  return kDone;
}

std::string Hexadecimal(const std::string& bytes) {
  constexpr char kDigits[] = "0123456789abcdef";
  std::string text;
  for (const char c : bytes) {
    const auto byte = static_cast<unsigned char>(c);
    text += {kDigits[byte / 16], kDigits[byte % 16]};
  }
  return text;
}

Json InfoJson(const PictureDetails& details) {
  Json json{{"name", base::ToUtf8(details.name)},
            {"generation", details.generation},
            {"kind", details.kind}};
  json["tag"] = details.tag.empty() ? Json(nullptr) : Json(base::ToUtf8(details.tag));
  json["headerSize"] = details.headerSize;
  json["x"] = OrNull(details.x);
  json["y"] = OrNull(details.y);
  json["width"] = OrNull(details.width);
  json["height"] = OrNull(details.height);
  json["bits"] = OrNull(details.bits);
  json["colours"] = OrNull(details.colours);
  json["bytes"] = details.bytes;
  json["encodedBytes"] = OrNull(details.encodedBytes);
  json["text"] = details.text ? Json(base::ToUtf8(*details.text)) : Json(nullptr);
  json["block"] = details.block ? Json(Hexadecimal(*details.block)) : Json(nullptr);
  return json;
}

int Info(const BoxOptions& options) {
  BoxFile box(options.box, BoxAccess::Read);
  const Json json = InfoJson(Describe(box, box.Need(ChainTextOf(options.name)), true));
  if (options.json) {
    PrintJson(json);
    return kDone;
  }
  for (const auto& [key, value] : json.items()) {
    std::cout << key << '\t' << (value.is_string() ? value.get<std::string>() : value.dump())
              << '\n';
  }
  return kDone;
}

// --- tree and check

// The folder that is meant; nothing when it is a file.
std::optional<std::filesystem::path> FolderOf(const std::string& name) {
  std::error_code error;
  const bool isFolder = std::filesystem::is_directory(PathOf(name), error);
  if (isFolder) return PathOf(name);
  if (!NamesFolder(name)) return std::nullopt;
  if (!std::filesystem::is_directory(BoxFolder(name), error)) {
    throw FileError(name, "there is no such folder");
  }
  return BoxFolder(name);
}

std::vector<TreeElement> TreeOf(const std::string& name) {
  const auto folder = FolderOf(name);
  return folder ? TreeOfFolder(*folder) : TreeOfCompound(*CompoundFile(name).Element());
}

int Tree(const BoxOptions& options) {
  Json list = Json::array();
  for (const TreeElement& element : TreeOf(options.box)) {
    const char* type = element.isStorage ? "storage" : "stream";
    if (options.json) {
      list.push_back({{"path", element.path}, {"type", type}, {"bytes", element.bytes}});
    } else {
      std::cout << element.path << '\t' << type << '\t' << element.bytes << '\n';
    }
  }
  if (options.json) PrintJson(list);
  return kDone;
}

// Tells what is broken and keeps the names.
class Faults {
 public:
  void Tell(const std::string& name, const std::string& words) {
    names.insert(name);
    std::cout << name << ": " << words << '\n';
  }
  const std::set<std::string>& Names() const { return names; }

 private:
  std::set<std::string> names;
};

// What shares sectors with something else is told first and is not read: a file of such streams
// could keep a reader busy for ever.
void CheckCompound(const std::string& name, Faults& faults) {
  const CompoundFile file(name);
  for (const auto& fault : platform::FindCompoundFaults(PathOf(name), kMostFaults)) {
    std::string words = fault.words;
    if (!fault.other.empty()) words.append(" ").append(ShownName(fault.other));
    faults.Tell(fault.path.empty() ? name : ShownName(fault.path), words);
  }
  if (faults.Names().size() >= kMostFaults) throw FileError(name, "there are too many faults");
  const std::set<std::string> unread = faults.Names();
  for (const TreeElement& element : TreeOfCompound(*file.Element(), &unread)) {
    if (!element.fault.empty()) faults.Tell(element.path, element.fault);
  }
}

int Check(const BoxOptions& options) {
  Faults faults;
  if (!FolderOf(options.box)) CheckCompound(options.box, faults);
  const std::set<std::string> unread = faults.Names();
  BoxFile box(options.box, BoxAccess::Read);
  for (const BoxEntry& entry : box.Entries()) {
    if (unread.count(BoxFile::PathIn(entry)) > 0) continue;
    const std::string fault = FaultOf(box, entry);
    if (!fault.empty()) faults.Tell(base::ToUtf8(entry.name), fault);
  }
  for (const std::string& note : BrokenNotes(box)) {
    faults.Tell(base::ToUtf8(note), "the note is broken");
  }
  return faults.Names().empty() ? kDone : kSomeFailed;
}

// --- get

bool WriteBytes(const std::filesystem::path& file, const PictureBytes& bytes) {
  std::ofstream stream(file, std::ios::binary | std::ios::trunc);
  stream.write(reinterpret_cast<const char*>(bytes.data()),
               static_cast<std::streamsize>(bytes.size()));
  return static_cast<bool>(stream.flush());
}

PictureBytes Converted(const PictureBytes& file, imageio::Format format, const BoxFile& box,
                       const std::string& name) {
  imageio::ImageLoader loader(file);
  if (loader.HadError()) box.FailPicture(name, loader.Error());
  imageio::ImageLoader saver;
  saver.SetImage(loader.ImageDIB());
  saver.SetMask(loader.MaskDIB());
  saver.PutMetadata(loader.FileMetadata());
  PictureBytes result = saver.SaveAs(format);
  if (result.empty()) box.FailPicture(name, saver.Error());
  return result;
}

PictureBytes Gotten(BoxFile& box, const BoxEntry& entry, const std::filesystem::path& output) {
  if (picbox::SameText(Utf8Of(output.extension()), ".raw")) {
    const picbox::FoundPicture found = box.Open(entry);
    found.stream->Seek(0, 0);
    return picbox::ReadStored(*found.stream, found.stream->GetLength());
  }
  const imageio::Format format = imageio::FormatOfName(output);
  if (format == imageio::Format::Unknown) {
    throw UsageError(Utf8Of(output) + ": pictures of this kind cannot be written");
  }
  PictureBytes file = PictureFileOf(box, entry, imageio::Format::Pam);
  const bool isJpeg = imageio::ImageLoader::GetType(file) == imageio::kTypeJpeg;
  // A stored JPEG goes out as it is.
  if (isJpeg && format == imageio::Format::Jpeg) return file;
  return Converted(file, format, box, entry.name);
}

int Get(const BoxOptions& options) {
  const std::filesystem::path output = PathOf(options.output);
  PictureBytes bytes;
  {
    BoxFile box(options.box, BoxAccess::Read);
    bytes = Gotten(box, box.Need(ChainTextOf(options.name)), output);
  }
  const auto failure = platform::CurrentServices().files->Replace(
      output, [&bytes](const std::filesystem::path& file) { return WriteBytes(file, bytes); });
  if (failure) {
    throw FileError(options.output, failure->empty() ? "the file cannot be written" : *failure);
  }
  return kDone;
}

// --- add

std::int32_t Coordinate(std::string_view text) {
  std::int32_t number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || end != text.data() + text.size()) {
    throw UsageError("--at: X,Y are two whole numbers");
  }
  return number;
}

int Add(const BoxOptions& options) {
  AddRequest request = options.add;
  if (options.native + options.encoded + options.dib > 1) {
    throw UsageError("--native, --encoded and --dib exclude each other");
  }
  request.as = options.native    ? StoreAs::Native
               : options.encoded ? StoreAs::Encoded
                                 : StoreAs::Bitmap;
  if (options.at) {
    const std::size_t comma = options.at->find(',');
    if (comma == options.at->npos) throw UsageError("--at: X,Y are two whole numbers");
    if (options.native) throw UsageError("--at: a plain file has no position");
    request.x = Coordinate(std::string_view(*options.at).substr(0, comma));
    request.y = Coordinate(std::string_view(*options.at).substr(comma + 1));
  }
  return AddToBox(request);
}

// Faults of files in a folder box end like all others.
Action Guarded(std::function<int()> run) {
  return [run] {
    try {
      return run();
    } catch (const KvFileException& error) {
      throw std::runtime_error(base::ToUtf8(error.Message().View()));
    } catch (const KvStreamException& error) {
      throw std::runtime_error(std::string("a compressed stream: ") + error.Message());
    }
  };
}

class Commands {
 public:
  explicit Commands(const Command& program)
      : box(program.Add("box", "Picture boxes and compound files")) {
    box.Footer(kExamples);
  }

  Command New(const char* name, const char* help, int (*run)(const BoxOptions&)) {
    const Command command = box.Add(name, help);
    command.Runs(Guarded([given = options, run] { return run(*given); }));
    return command;
  }

  void AddReading() {
    const Command list = New("list", "List the pictures of a box", &List);
    list.Take("BOX", options->box).Required();
    list.Flag("--json", options->json, "As JSON");
    const Command tree = New("tree", "List everything in a compound file or folder", &Tree);
    tree.Take("FILE", options->box).Required();
    tree.Flag("--json", options->json, "As JSON");
    const Command info = New("info", "Tell all about a picture", &Info);
    TakeBoxAndName(info);
    info.Flag("--json", options->json, "As JSON");
    const Command get = New("get", "Write a picture to a file", &Get);
    TakeBoxAndName(get);
    get.Take("-o,--output OUT", options->output,
             "File to write: png, pam, tif, jpg, bmp; raw: the stored bytes")
        .Required();
    const Command check = New("check", "Read everything and tell what is broken", &Check);
    check.Take("BOX", options->box).Required();
  }

  void AddAdd() {
    const Command add = New("add", "Put picture files into a box, which is made as needed", &Add);
    add.Take("BOX", options->add.box).Required();
    add.Take("FILE", options->add.files).Required();
    add.Take("--name TEXT", options->add.name, "Name of the picture (default: the file's)");
    add.Flag("--native", options->native, "Keep the file itself");
    add.Flag("--encoded", options->encoded, "Keep a JPEG file and the mask beside it");
    add.Flag("--dib", options->dib, "Keep the pixels (the default)");
    add.Take("--at X,Y", options->at, "Position of the picture");
    add.Flag("--replace", options->add.replaces, "Take the place of a picture of this name");
  }

  void AddChanging() {
    const Command note = New("note", "Write the note of a picture", [](const BoxOptions& given) {
      return NotePicture(given.box, given.name, given.second, given.block);
    });
    TakeBoxAndName(note);
    note.Take("TEXT", options->second).Required();
    note.Take("--block FILE", options->block, "File with the 36 bytes of the block");
    TakeBoxAndName(New("delete", "Delete a picture and its note", [](const BoxOptions& given) {
      return DeletePicture(given.box, given.name);
    }));
    const Command rename = New(
        "rename", "Rename a picture and its note",
        [](const BoxOptions& given) { return RenamePicture(given.box, given.name, given.second); });
    TakeBoxAndName(rename);
    rename.Take("NEW", options->second).Required();
    const Command copy = New("copy", "Copy a picture and its note into a box", &Copy);
    TakeBoxAndName(copy);
    copy.Take("TARGETBOX", options->second).Required();
    copy.Take("NEWNAME", options->third);
    copy.Flag("--new", options->toNew, "In the new format (the default)");
    copy.Flag("--old", options->toOld, "In the old format");
    copy.Flag("--native", options->native, "As a plain file: a stored JPEG, otherwise PNG");
  }

 private:
  static int Copy(const BoxOptions& given) {
    if (given.toNew + given.toOld + given.native > 1) {
      throw UsageError("--new, --old and --native exclude each other");
    }
    return CopyInBoxes(
        {given.box, given.name, given.second, given.third, given.toOld, given.native});
  }

  void TakeBoxAndName(const Command& command) {
    command.Take("BOX", options->box).Required();
    command.Take("NAME", options->name).Required();
  }

  const std::shared_ptr<BoxOptions> options = std::make_shared<BoxOptions>();
  const Command box;
};

}  // namespace

void AddBoxCommand(const Command& program) {
  Commands commands(program);
  commands.AddReading();
  commands.AddAdd();
  commands.AddChanging();
}

}  // namespace program
