// Presets that a dialog keeps: named text files, the user's own and those that came with the
// product.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/Export.h"

class ZNRegistry;

namespace core {

// The folders of one kind of preset, which need not exist.
struct PresetFolders {
  std::filesystem::path user;
  std::filesystem::path factory;
};

// The folders of a kind such as "Gradation" by the settings; nothing where those do not say where
// the filters have their folder.
FXBOX_API std::optional<PresetFolders> FindPresetFolders(ZNRegistry& registry,
                                                         const std::string& kind);

// The product's settings are asked.
FXBOX_API std::optional<PresetFolders> FindPresetFolders(const std::string& kind);

// A name that a preset may be saved under: letters, digits and blanks of ASCII, at least one
// character.
FXBOX_API bool IsPresetName(std::string_view name);

// The file of a preset, whether it exists or not.
FXBOX_API std::filesystem::path PresetFile(const std::filesystem::path& folder,
                                           std::string_view name);

// The names of the presets in a folder in ascending order; none where there is no folder.
FXBOX_API std::vector<std::filesystem::path> ListPresets(const std::filesystem::path& folder);

// The whole file, as far as a preset may be long. Nothing when it cannot be read.
FXBOX_API std::optional<std::string> ReadPresetText(const std::filesystem::path& file);

// Another reader sees the old file or the whole new one. Gives the reason when it cannot be
// written.
FXBOX_API std::optional<std::string> WritePresetText(const std::filesystem::path& file,
                                                     std::string_view text);

}  // namespace core
