#include "program/BoxTree.h"

#include <algorithm>

#include "base/CodePage.h"
#include "platform/SystemMessage.h"
#include "platform/component/ComPtr.h"
#include "platform/component/SystemInterfaces.h"
#include "program/Messages.h"

namespace program {
namespace {

namespace fs = std::filesystem;
using platform::ComPtr;

constexpr DWORD kReadElement = STGM_READ | STGM_SHARE_EXCLUSIVE;
// What a file can say about itself and still be shown.
constexpr std::size_t kMostElements = 1 << 20;
constexpr std::size_t kMostLevels = 64;

using WideName = std::basic_string<OLECHAR>;

struct Element {
  WideName name;
  DWORD type;
  std::uint64_t bytes;
};

std::vector<Element> ElementsOf(IStorage& storage) {
  std::vector<Element> elements;
  ComPtr<IEnumSTATSTG> enumeration;
  if (FAILED(storage.EnumElements(0, nullptr, 0, enumeration.Put()))) return elements;
  STATSTG stat = {};
  ULONG count = 0;
  while (elements.size() < kMostElements && SUCCEEDED(enumeration->Next(1, &stat, &count)) &&
         count == 1) {
    elements.push_back(
        {stat.pwcsName ? stat.pwcsName : WideName(), stat.type, stat.cbSize.QuadPart});
    CoTaskMemFree(stat.pwcsName);
  }
  return elements;
}

std::string FaultOfStream(IStorage& storage, const Element& element) {
  ComPtr<IStream> stream;
  const HRESULT opened =
      storage.OpenStream(element.name.c_str(), nullptr, kReadElement, 0, stream.Put());
  if (FAILED(opened)) return "the stream cannot be opened: " + platform::SystemMessage(opened);
  std::vector<char> block(1 << 16);
  std::uint64_t done = 0;
  while (done < element.bytes) {
    ULONG got = 0;
    const HRESULT status = stream->Read(block.data(), static_cast<ULONG>(block.size()), &got);
    if (FAILED(status)) return "the stream cannot be read: " + platform::SystemMessage(status);
    if (got == 0) return "the stream ends early";
    done += got;
  }
  return {};
}

// A storage whose elements are being told.
struct Level {
  ComPtr<IStorage> storage;
  std::string path;
  std::vector<Element> elements;
  std::size_t next = 0;
};

}  // namespace

std::string ShownName(std::u16string_view name) {
  const std::u8string text = fs::path(name).u8string();
  std::string result(text.begin(), text.end());
  // Some names begin with a control character, which nobody wants on a terminal.
  std::replace_if(
      result.begin(), result.end(), [](char c) { return c >= 0 && c < 32; }, '?');
  return result;
}

std::vector<TreeElement> TreeOfCompound(IStorage& root, const std::set<std::string>* unread) {
  std::vector<TreeElement> tree;
  std::vector<Level> levels;
  levels.push_back({ComPtr<IStorage>(&root), "", ElementsOf(root)});
  while (!levels.empty() && tree.size() < kMostElements) {
    Level& level = levels.back();
    if (level.next == level.elements.size()) {
      levels.pop_back();
      continue;
    }
    const Element element = level.elements[level.next++];
    TreeElement& told = tree.emplace_back();
    told.path = level.path + ShownName(std::u16string(element.name.begin(), element.name.end()));
    told.isStorage = element.type == STGTY_STORAGE;
    told.bytes = told.isStorage ? 0 : element.bytes;
    const bool isRead = unread && unread->count(told.path) == 0;
    if (!told.isStorage && isRead) told.fault = FaultOfStream(*level.storage.Get(), element);
    if (!told.isStorage) continue;
    if (levels.size() == kMostLevels) {
      told.fault = "the storage lies too deep";
      continue;
    }
    ComPtr<IStorage> below;
    const HRESULT status = level.storage->OpenStorage(element.name.c_str(), nullptr, kReadElement,
                                                      nullptr, 0, below.Put());
    if (FAILED(status)) {
      told.fault = "the storage cannot be opened: " + platform::SystemMessage(status);
      continue;
    }
    std::vector<Element> elements = ElementsOf(*below.Get());
    levels.push_back({std::move(below), told.path + "/", std::move(elements)});
  }
  return tree;
}

std::vector<TreeElement> TreeOfFolder(const fs::path& folder) {
  std::vector<TreeElement> tree;
  std::error_code error;
  fs::recursive_directory_iterator it(folder, error), end;
  for (; !error && it != end && tree.size() < kMostElements; it.increment(error)) {
    const bool isFolder = it->is_directory(error) && !it->is_symlink(error);
    if (it->path().filename().native().front() == '.') {
      it.disable_recursion_pending();
      continue;
    }
    std::error_code ignored;
    const auto bytes = isFolder ? 0 : it->file_size(ignored);
    tree.push_back({Utf8Of(it->path().lexically_relative(folder).generic_string()),
                    isFolder,
                    ignored ? 0 : bytes,
                    {}});
  }
  std::sort(tree.begin(), tree.end(),
            [](const TreeElement& a, const TreeElement& b) { return a.path < b.path; });
  return tree;
}

}  // namespace program
