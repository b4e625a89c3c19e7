#include "desk/ChainFile.h"

#include <algorithm>
#include <memory>
#include <sstream>
#include <utility>

#include "base/CodePage.h"
#include "host/ChainCheck.h"
#include "program/BoxFile.h"
#include "program/BoxPictures.h"
#include "program/Messages.h"
#include "storage/CheckedStream.h"

namespace desk {
namespace {

constexpr char kOff[] = "//off ";
// Of the box, beside that of the pictures; a chain has the name of its picture.
constexpr char kChains[] = "Chains";
constexpr std::size_t kLongestElement = 31;

bool IsRemark(const std::string& line) {
  return line.starts_with("//");
}

program::StorageHolder ChainsOf(program::BoxFile& box, bool toWrite) {
  IKvStorage& root = box.Root();
  return program::StorageHolder(toWrite
                                    ? root.CreateStorage(kChains, OpenModeReadWrite, false, false)
                                    : root.OpenStorage(kChains, OpenModeRead, false, false));
}

// The box and the name that the picture has in it, whatever the person called it.
struct Place {
  Place(const program::BoxAndName& wanted, program::BoxAccess access)
      : box(wanted.box, access), title(box.Need(wanted.name).Title()) {}
  program::BoxFile box;
  std::string title;
};

program::BoxAndName SplitName(const std::string& picture) {
  return program::SplitBoxInput(picture).value_or(program::BoxAndName{picture, ""});
}

bool WriteStream(IKvStorage& chains, const std::string& name, const std::string& text) {
  IKvStream* const stream = chains.CreateStream(name.c_str(), OpenModeRewrite);
  if (!stream) return false;
  const auto count = static_cast<unsigned>(text.size());
  stream->SetLength(0);
  if (stream->Write(text.data(), count) == count) return CloseChecked(stream);
  Abandon(stream);
  return false;
}

}  // namespace

std::string ChainFileText(const ChainItems& items) {
  std::string text;
  for (const ChainItem& item : items) {
    text += (item.isOn ? "" : kOff) + base::ToUtf8(TextOf({item}, true)) + "\n";
  }
  return text;
}

// The whole text is checked first, so that places in messages are those of the file.
ChainItems ItemsOfChainFile(const std::string& text,
                            const std::function<ChainItems(const std::string&)>& check) {
  ChainItems items = check(host::WithoutRemarks(text));
  if (text.find(kOff) == text.npos) return items;
  items.clear();
  const auto add = [&](std::string part, bool isOn) {
    for (ChainItem& item : check(part)) {
      item.isOn = isOn;
      items.push_back(std::move(item));
    }
  };
  std::istringstream lines(text);
  std::string run;
  for (std::string line; std::getline(lines, line);) {
    if (!IsRemark(line)) {
      run += line + "\n";
    } else if (line.starts_with(kOff)) {
      add(std::exchange(run, {}), true);
      try {
        add(line.substr(sizeof kOff - 1), false);
      } catch (const std::exception&) {  // what is off changes no picture
      }
    }
  }
  add(run, true);
  return items;
}

bool IsInBox(const std::string& picture) {
  return program::SplitBoxInput(picture).has_value();
}

std::optional<std::string> ReadBoxChain(const std::string& picture) {
  Place place(SplitName(picture), program::BoxAccess::Read);
  const auto chains = ChainsOf(place.box, false);
  const picbox::StreamPtr stream(chains ? chains->OpenStream(place.title.c_str(), OpenModeRead)
                                        : nullptr);
  if (!stream) return std::nullopt;
  std::string text(stream->GetLength(), '\0');
  text.resize(stream->Read(text.data(), static_cast<unsigned>(text.size())));
  return text;
}

void WriteBoxChain(const std::string& picture, const std::string& text) {
  Place place(SplitName(picture), program::BoxAccess::Change);
  if (!place.box.IsFolder() && place.title.size() > kLongestElement) {
    place.box.FailPicture(place.title, "the name is longer than 31 letters");
  }
  auto chains = ChainsOf(place.box, true);
  if (!chains || !WriteStream(*chains, place.title, text)) {
    place.box.FailPicture(place.title, "the chain cannot be stored");
  }
  chains.reset();
  place.box.Keep();
}

}  // namespace desk
