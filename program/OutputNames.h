// Where the results of the inputs go.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "imageio/ImageFile.h"

namespace program {

struct PlannedFile {
  std::filesystem::path input;
  std::filesystem::path output;
  imageio::Format format = imageio::Format::Unknown;  // of the output, by its name
  bool intoFolder = false;  // lies in the folder that `out` names, which is made as needed
};

// One input: `out` is the file, or a folder that exists or whose name ends with a separator.
// Several: `out` is a folder. In a folder a result keeps the input's name, and its extension where
// pictures of that kind can be written, else ".png". Without `out` it lies beside the input as
// STEM-fxbox.EXT.
//
// Nothing is read or made here but the question what `out` is. A UsageError when `out` cannot serve
// or two results would be the same file; a result may well replace its own input.
std::vector<PlannedFile> PlanOutputs(const std::vector<std::string>& inputs,
                                     const std::optional<std::string>& out);

}  // namespace program
