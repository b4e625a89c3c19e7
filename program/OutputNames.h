// Where the results of the inputs go.
#pragma once

#include <filesystem>
#include <map>
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
  bool skipIfThere = false;

  bool FromStandard() const { return input == kStandard; }
  bool ToStandard() const { return output == kStandard; }
};

struct OutputOptions {
  std::optional<std::string> out = {};
  std::optional<std::string> kind = {};  // an extension without its point: "png"
  bool inPlace = false;                  // each result replaces its input
  bool skipExisting = false;
};

// Whether the output is there and to be left alone, as a finished part of the same work.
bool IsLeftAlone(const PlannedFile& file);

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
// The same for the inputs of a list, which count as several however many there are.
std::vector<PlannedFile> PlanListOutputs(const std::vector<std::string>& inputs,
                                         const OutputOptions& options);

// Plans one input after the other and remembers all of them. One thread at a time.
class OutputPlanner {
 public:
  // A UsageError when the options cannot serve.
  OutputPlanner(const OutputOptions& outputOptions, bool several);

  // Makes an input known ahead of its turn, so that no result before it takes its place.
  void Expect(const std::string& input);
  // A UsageError as above; the input counts as planned nevertheless.
  PlannedFile Add(const std::string& input);

 private:
  using Key = std::filesystem::path::string_type;

  void RefuseLostInput(const PlannedFile& file) const;
  void RefuseTakenOutput(const PlannedFile& file);

  OutputOptions options;
  bool intoFolder;
  bool standardIsTaken = false;
  std::map<Key, std::filesystem::path> inputs;   // by the file that a name leads to
  std::map<Key, std::filesystem::path> outputs;  // the input of each
};

}  // namespace program
