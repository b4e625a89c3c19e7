// Presets of the gradation filter on the command line.
#pragma once

#include <string>

#include "editing/GradationPreset.h"

namespace program {

struct LoadedPreset {
  std::string file;  // that it was read from, UTF-8
  GradationPreset preset;
};

// A file, "-" for standard input, or by its name alone one of the user's or the supplied presets. A
// FileError when there is
// none or when it is no preset.
LoadedPreset LoadPreset(const std::string& file);

// The chain text with the parameters of a preset in each place where the gradation filter has
// @FILE for its parameters. A UsageError when one cannot be had.
std::string ExpandPresets(const std::string& chain, const std::string& open,
                          const std::string& close);

}  // namespace program
