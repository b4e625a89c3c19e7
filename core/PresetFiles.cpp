#include "core/PresetFiles.h"

#include <algorithm>
#include <fstream>
#include <iterator>

#include "platform/PathText.h"
#include "platform/Services.h"
#include "settings/ZNRegistry.h"

namespace core {
namespace {

namespace fs = std::filesystem;

constexpr char kProduct[] = "ZNGallery";  // its section of the file beside the program, and prefix
constexpr char kExtension[] = ".fp2";
constexpr std::size_t kLongestPreset = std::size_t{1} << 20;

constexpr std::string_view kNameCharacters =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789 ";

bool IsPresetFile(const fs::path& file) {
  std::string extension = platform::PathText(file.extension());
  for (char& c : extension) c = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
  std::error_code ignored;
  return extension == kExtension && fs::is_regular_file(file, ignored);
}

}  // namespace

std::optional<PresetFolders> FindPresetFolders(ZNRegistry& registry, const std::string& kind) {
  KvString base;
  if (registry.ReadPath("Locations", "Filter", base) != kRegistryDone) return std::nullopt;
  const fs::path filters = platform::PathFromText(base.ToStdString()) / "Filter";
  return PresetFolders{filters / (kind + "_User"), filters / (kind + "_Factory")};
}

std::optional<PresetFolders> FindPresetFolders(const std::string& kind) {
  ZNRegistry registry(kProduct, kProduct);
  return FindPresetFolders(registry, kind);
}

bool IsPresetName(std::string_view name) {
  return !name.empty() && name.find_first_not_of(kNameCharacters) == std::string_view::npos;
}

std::filesystem::path PresetFile(const std::filesystem::path& folder, std::string_view name) {
  return folder / platform::PathFromText(std::string(name) + kExtension);
}

std::vector<fs::path> ListPresets(const std::filesystem::path& folder) {
  std::vector<fs::path> names;
  std::error_code error;
  for (fs::directory_iterator entry(folder, error), end; !error && entry != end;
       entry.increment(error)) {
    if (IsPresetFile(entry->path())) names.push_back(entry->path().stem());
  }
  std::sort(names.begin(), names.end());
  return names;
}

std::optional<std::string> ReadPresetText(const std::filesystem::path& file) {
  std::error_code ignored;
  if (fs::is_directory(file, ignored)) return std::nullopt;
  std::ifstream stream(file, std::ios::binary);
  std::string text(kLongestPreset, '\0');
  if (!stream.is_open()) return std::nullopt;
  stream.read(text.data(), static_cast<std::streamsize>(text.size()));
  if (stream.bad()) return std::nullopt;
  text.resize(static_cast<std::size_t>(stream.gcount()));
  return text;
}

std::optional<std::string> WritePresetText(const std::filesystem::path& file,
                                           std::string_view text) {
  std::optional<std::string> failure =
      platform::CurrentServices().files->Replace(file, [text](const fs::path& made) {
        std::ofstream stream(made, std::ios::binary);
        stream.write(text.data(), static_cast<std::streamsize>(text.size()));
        return static_cast<bool>(stream.flush());
      });
  if (failure && failure->empty()) failure = "the file cannot be written";
  return failure;
}

}  // namespace core
