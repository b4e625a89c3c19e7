// Where the results of the inputs go.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "imageio/ImageFile.h"
#include "program/StandardStreams.h"

namespace program {

struct PlannedFile {
  std::filesystem::path input;
  std::filesystem::path output;
  // Of the output, by its name or as it was asked for; Unknown to take that of the input.
  imageio::Format format = imageio::Format::Unknown;
  bool intoFolder = false;  // lies in the folder that `out` names, which is made as needed
  bool isThere = false;     // and is left alone

  bool FromStandard() const { return input == kStandard; }
  bool ToStandard() const { return output == kStandard; }
};

struct OutputOptions {
  std::optional<std::string> out = {};
  std::optional<std::string> kind = {};  // an extension without its point: "png"
  bool inPlace = false;                  // each result replaces its input
  bool skipExisting = false;
};

// One input: `out` is the file, or a folder that exists or whose name ends with a separator.
// Several: `out` is a folder. In a folder a result keeps the input's name, and its extension where
// pictures of that kind can be written, else ".png". Without `out` it lies beside the input as
// STEM-fxbox.EXT. What comes from standard input goes to standard output.
//
// Nothing is read or made here but the question what is there. A UsageError when an output cannot
// serve, when two results would be the same file, or when one would take the place of an input: by
// this or another name, save for its own and `inPlace`.
std::vector<PlannedFile> PlanOutputs(const std::vector<std::string>& inputs,
                                     const OutputOptions& options);

}  // namespace program
