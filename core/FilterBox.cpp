#include "core/FilterBox.h"

#include <algorithm>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string_view>

#include "settings/ZNDebugMonitor.h"

namespace {

constexpr char kFolder[] = "Scripts";
constexpr char kWords[] = "color.strings";
constexpr char kTopic[] = "FilterBox_Parse";

// In place of the last letters of a script's name.
constexpr char kSequence[] = "seq";
constexpr std::size_t kReplaced = 4;

// More than any script has.
constexpr unsigned kMostBytes = 1u << 24;

// What was done once in this process and is not done again.
class DoneNames {
 public:
  // True for the first one who asks.
  bool IsNew(const std::string& name) {
    const std::lock_guard guard(lock);
    return names.insert(name).second;
  }

 private:
  std::mutex lock;
  std::set<std::string> names;
};

DoneNames& RunScripts() {
  static DoneNames names;
  return names;
}

DoneNames& GivenWords() {
  static DoneNames names;
  return names;
}

struct Close {
  template <class Element>
  void operator()(Element* element) const {
    element->Close();
  }
};
template <class Element>
using Opened = std::unique_ptr<Element, Close>;

std::optional<KvString> ReadScript(IKvStorage& storage, const std::string& name) {
  const Opened<IKvStorage> folder(storage.OpenStorage(kFolder, OpenModeRead, false, false));
  if (!folder) return std::nullopt;
  const Opened<IKvStream> stream(folder->OpenStream(name.c_str(), OpenModeRead));
  if (!stream || stream->GetLength() > kMostBytes) return std::nullopt;
  const unsigned length = stream->GetLength();
  KvString text;
  char* const buffer = text.GetBuffer(static_cast<int>(length));
  text.ReleaseBuffer(static_cast<int>(stream->Read(buffer, length)));
  return text;
}

// Calls `take` with each line that is not empty.
template <class Take>
void ForEachLine(std::string_view text, Take take) {
  while (!text.empty()) {
    const std::size_t end = std::min(text.find('\n'), text.size());
    std::string_view line = text.substr(0, end);
    if (line.ends_with('\r')) line.remove_suffix(1);
    if (!line.empty()) take(std::string(line));
    text.remove_prefix(std::min(end + 1, text.size()));
  }
}

}  // namespace

FilterBox::FilterBox(IUnknown* host, IKvStorage* scripts, const char* script,
                     const char* scriptName)
    : receiver(platform::ComPtr<IAnimHostScript>::Query(host)), storage(scripts) {
  if (!receiver || !storage) return;
  GiveWords();
  if (!script) return;
  const std::string stream = script;
  Give(stream, scriptName ? scriptName : stream);
  if (stream.size() < kReplaced) return;
  const std::string twin = stream.substr(0, stream.size() - kReplaced) + kSequence;
  Give(twin, twin);
}

void FilterBox::GiveWords() {
  const auto words = ReadScript(*storage, kWords);
  if (words && GivenWords().IsNew(kWords)) receiver->TakeScript(kWords, *words);
}

void FilterBox::Give(const std::string& stream, const std::string& name) {
  const auto text = ReadScript(*storage, stream);
  if (!text) return;
  receiver->TakeScript(name.c_str(), *text);
  if (RunScripts().IsNew(name)) Parse(name, *text);
}

void FilterBox::Parse(const std::string& name, const KvString& text) {
  ZNDebugMonitor(kTopic, "FilterBox_Parse %s", name.c_str());
  ForEachLine(text.View(),
              [&](const std::string& item) { receiver->RunItem(name.c_str(), item.c_str()); });
}
