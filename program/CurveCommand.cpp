// fxbox curve: presets of the gradation filter.
#include <iostream>
#include <memory>

#include "core/PresetFiles.h"
#include "platform/Services.h"
#include "program/Commands.h"
#include "program/Messages.h"
#include "program/Presets.h"
#include "program/StandardStreams.h"

namespace program {
namespace {

struct CurveOptions {
  std::optional<std::string> file;
  std::optional<std::string> output;
  bool list = false;
};

constexpr char kExamples[] = R"(Examples:
  fxbox curve warm.fp2
      checks a preset and prints its curves and the parameter text
  fxbox curve old.fp2 -o new.fp2
      writes it as version 2
  fxbox apply -c 'ZNFilter.GradCurves.1(@warm.fp2)' photo.jpg
      a chain that takes its parameters from a preset)";

constexpr const char* kCurveNames[GradCurvesParameters::kCurves] = {"luminance", "red", "green",
                                                                    "blue"};

// Whether the filter draws a curve through these nodes, or leaves the levels as they are.
bool IsDrawn(const GradCurvesParameters& curves, std::span<const editing::CurveNode> nodes) {
  base::ByteTable ignored;
  return curves.linear ? editing::BuildLineTable(nodes, ignored)
                       : editing::BuildSplineTable(nodes, ignored);
}

void PrintCurve(const GradCurvesParameters& curves, int k) {
  const auto count = static_cast<std::size_t>(curves.curves[k].count);
  const std::span nodes(curves.curves[k].nodes, count);
  std::cout << "  " << kCurveNames[k] << ":";
  for (const editing::CurveNode& node : nodes) std::cout << " (" << node.x << ", " << node.y << ")";
  if (!IsDrawn(curves, nodes)) std::cout << ", without effect: nodes lie above each other";
  std::cout << '\n';
}

void Print(const LoadedPreset& loaded) {
  const GradCurvesParameters& curves = loaded.preset.curves;
  std::cout << loaded.file << ": gradation, version " << loaded.preset.version << ", "
            << (curves.linear ? "straight lines" : "splines")
            << (curves.yiqOn ? ", luminance alone" : "") << '\n';
  for (int k = 0; k < GradCurvesParameters::kCurves; ++k) PrintCurve(curves, k);
  std::cout << ParameterTextOf(loaded.preset) << '\n';
}

int WritePreset(const GradationPreset& preset, const std::string& output) {
  const std::string text = PrintGradationPreset(preset);
  const auto failure = output == kStandard ? platform::CurrentServices().terminal->WriteOutput(text)
                                           : core::WritePresetText(PathOf(output), text);
  if (failure) throw FileError(output, *failure);
  return kDone;
}

void ListFolder(const std::filesystem::path& folder) {
  std::cout << Utf8Of(folder) << '\n';
  for (const std::filesystem::path& name : core::ListPresets(folder)) {
    std::cout << "  " << Utf8Of(name) << '\n';
  }
}

int ListFolders() {
  const auto folders = core::FindPresetFolders("Gradation");
  if (!folders) throw std::runtime_error("the settings name no folder of presets");
  ListFolder(folders->user);
  ListFolder(folders->factory);
  return kDone;
}

int Curve(const CurveOptions& options) {
  if (options.list == options.file.has_value()) {
    throw UsageError(options.list ? "give a preset or --list, not both"
                                  : "the preset is missing: give a file, a name or --list");
  }
  if (options.list && options.output) throw UsageError("--list writes no file");
  if (options.list) return ListFolders();
  const LoadedPreset loaded = LoadPreset(*options.file);
  if (options.output) return WritePreset(loaded.preset, *options.output);
  Print(loaded);
  return kDone;
}

}  // namespace

void AddCurveCommand(const Command& program) {
  const auto options = std::make_shared<CurveOptions>();
  const Command command =
      program.Add("curve", "Check, print and convert presets of the gradation filter");
  command.Take("FILE", options->file,
               "Preset file, - for standard input, or the name of a preset in the folders");
  command.Take("-o,--output FILE", options->output,
               "Write the preset as version 2; - for standard output");
  command.Flag("--list", options->list, "List the user's and the supplied presets");
  command.Footer(ForShell(kExamples));
  command.Runs([options] { return Curve(*options); });
}

}  // namespace program
