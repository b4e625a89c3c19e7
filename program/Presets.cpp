#include "program/Presets.h"

#include "core/PresetFiles.h"
#include "program/Messages.h"
#include "program/StandardStreams.h"

namespace program {
namespace {

namespace fs = std::filesystem;

constexpr char kFilter[] = "ZNFilter.GradCurves.1";
constexpr char kWhite[] = " \t\r\n\v\f";

bool IsFile(const fs::path& path) {
  std::error_code ignored;
  return fs::is_regular_file(path, ignored);
}

// The file that is meant; the given one where none is found.
fs::path FindPreset(const std::string& name) {
  const fs::path given = PathOf(name);
  std::error_code ignored;
  if (fs::exists(given, ignored) || !core::IsPresetName(name)) return given;
  const auto folders = core::FindPresetFolders("Gradation");
  if (!folders) return given;
  for (const fs::path& folder : {folders->user, folders->factory}) {
    const fs::path file = core::PresetFile(folder, name);
    if (IsFile(file)) return file;
  }
  return given;
}

struct PresetText {
  std::string file;
  std::string text;
};

PresetText TextOf(const fs::path& file) {
  const std::optional<std::string> text = core::ReadPresetText(file);
  if (!text) throw FileError(Utf8Of(file), "the preset cannot be read");
  return {Utf8Of(file), *text};
}

PresetText TextOfStandardInput() {
  const Bytes bytes = ReadStandardInput();
  return {"standard input", {bytes.begin(), bytes.end()}};
}

std::string Trimmed(const std::string& text) {
  const std::size_t first = text.find_first_not_of(kWhite);
  if (first == std::string::npos) return {};
  return text.substr(first, text.find_last_not_of(kWhite) + 1 - first);
}

}  // namespace

LoadedPreset LoadPreset(const std::string& name) {
  const PresetText found = name == kStandard ? TextOfStandardInput() : TextOf(FindPreset(name));
  std::string error;
  const std::optional<GradationPreset> preset = ReadGradationPreset(found.text, error);
  if (!preset) throw FileError(found.file, "no preset of the gradation filter: " + error);
  return {found.file, *preset};
}

std::string ExpandPresets(const std::string& chain, const std::string& open,
                          const std::string& close) {
  const std::string start = kFilter + open;
  std::string expanded = chain;
  if (open.empty() || close.empty()) return expanded;
  for (std::size_t at = expanded.find(start); at != std::string::npos;
       at = expanded.find(start, at)) {
    at += start.size();
    const std::size_t end = expanded.find(close, at);
    if (end == std::string::npos) break;
    const std::string parameters = Trimmed(expanded.substr(at, end - at));
    if (parameters.empty() || parameters[0] != '@') continue;
    try {
      const LoadedPreset loaded = LoadPreset(parameters.substr(1));
      expanded.replace(at, end - at, ParameterTextOf(loaded.preset));
    } catch (const FileError& error) {
      throw UsageError(error.what());
    }
  }
  return expanded;
}

}  // namespace program
