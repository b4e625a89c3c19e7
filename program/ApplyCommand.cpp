// fxbox apply: a chain of filters on picture files.
#include <CLI/CLI.hpp>
#include <iostream>
#include <memory>
#include <span>

#include "platform/Services.h"
#include "program/ApplyRun.h"
#include "program/ChainOptions.h"
#include "program/Commands.h"
#include "program/Interrupt.h"
#include "program/Json.h"
#include "program/Messages.h"

namespace program {
namespace {

struct ApplyOptions {
  ChainOptions chain;
  std::vector<std::string> inputs;
  std::optional<std::string> output;
  std::optional<std::string> fit;
  std::optional<std::string> target;
  std::optional<std::string> part;
  std::optional<double> zoom;
  int bandRows = 0;
  int quality = 92;
  bool json = false;
  bool quiet = false;
};

constexpr char kExamples[] = R"(Examples:
  fxbox apply -c 'ZNFilter.Sepia.1(Sepia=050)' photo.jpg
      writes photo-fxbox.jpg beside it
  fxbox apply -f old-print.chain -o out/ *.jpg
      takes the chain from a file and writes each picture into the folder out
  fxbox apply -f old-print.chain --fit 800 -o preview.png photo.jpg
      a preview that looks like the full picture will: filters that measure the whole picture
      (ZNFilter.Tonwert.1, ZNFilter.AdoptColor.1) use what they measure on the full one
  fxbox apply -c 'ZNFilter.Invert.1(Inversity=100)' --rect 0,0,100,50 -o part.png photo.jpg
      the 100 by 50 pixels at the lower left of the result
Exit status: 0 all done, 1 some input failed (the others are done), 2 wrong use, 130 interrupted.)";

const CLI::Range kZoomRange(0.0001, 10000.0);

void AddSizeOptions(CLI::App& command, ApplyOptions& options) {
  command
      .add_option("--fit", options.fit,
                  "Preview: reduce the input to fit into N or WxH pixels, and tell the filters")
      ->type_name("N|WxH");
  command
      .add_option("--zoom", options.zoom, "Tell the filters this zoom; changes no size by itself")
      ->check(kZoomRange)
      ->type_name("Z");
  command
      .add_option("--target", options.target,
                  "Full-resolution size WxH to tell (default: the full picture's own)")
      ->type_name("WxH");
  command.add_option("--bands", options.bandRows, "Pull N rows at a time, from the bottom row up")
      ->check(CLI::PositiveNumber)
      ->type_name("N");
  command
      .add_option("--rect", options.part,
                  "Pull this part of the result only: X,Y,W,H in pixels. X,Y is its lower left "
                  "corner, counted from the result's lower left: row 0 is the bottom row. What "
                  "lies outside the result is cut off")
      ->type_name("X,Y,W,H");
}

void AddOptions(CLI::App& command, ApplyOptions& options) {
  AddChainOptions(command, options.chain);
  command
      .add_option("-o,--output", options.output,
                  "File to write, its extension says the format; a folder for several inputs. "
                  "Default: beside the input, as NAME-fxbox.EXT")
      ->type_name("OUT");
  AddSizeOptions(command, options);
  command.add_option("--quality", options.quality, "Quality of JPEG files")
      ->check(CLI::Range(1, 100))
      ->type_name("1..100")
      ->capture_default_str();
  command.add_flag("--json", options.json, "Report on standard output as JSON");
  command.add_flag("--quiet", options.quiet, "Print nothing but errors");
  command.add_option("INPUT", options.inputs, "Picture files")->required()->type_name("");
}

ApplyRequest RequestOf(const ApplyOptions& options, IAnimFilterCreator& creator) {
  ApplyRequest request;
  if (options.fit) request.fit = ParseBox(*options.fit, "--fit");
  if (options.target) request.target = ParseSize(*options.target, "--target");
  if (options.part) request.part = ParseRectangle(*options.part, "--rect");
  request.zoom = options.zoom;
  request.bandRows = options.bandRows;
  request.jpegQuality = options.quality;
  request.chain = TakeChain(options.chain, creator);
  return request;
}

std::string SizeText(Size size) {
  return std::to_string(size.width) + "x" + std::to_string(size.height);
}

Json JsonSize(Size size) {
  return {{"width", size.width}, {"height", size.height}};
}

Json JsonOf(const PlannedFile& file, const FileResult& result) {
  Json entry{{"input", Utf8Of(file.input)}};
  entry["output"] = result.isWritten ? Json(Utf8Of(file.output)) : Json(nullptr);
  entry["inputSize"] = result.size.width > 0 ? JsonSize(result.size) : Json(nullptr);
  entry["outputSize"] = result.isWritten ? JsonSize(result.resultSize) : Json(nullptr);
  entry["milliseconds"] = result.milliseconds;
  entry["error"] = result.error.empty() ? Json(nullptr) : Json(result.error);
  return entry;
}

// Goes through the files, says what came of each, and gives the exit status.
class Session {
 public:
  Session(const ApplyOptions& given, std::size_t fileCount)
      : options(given),
        bar(std::cerr, given.quiet ? 0 : platform::CurrentServices().terminal->ErrorWidth(),
            fileCount, std::chrono::milliseconds(fileCount > 1 ? 0 : 500)) {}

  int Run(std::span<const PlannedFile> files, const ApplyRequest& request,
          IAnimFilterCreator& creator) {
    ApplyRun run(request, creator, bar);
    for (const PlannedFile& file : files) {
      const FileResult result = run.Do(file);
      if (IsInterrupted() && !result.isWritten) break;
      Tell(file, result);
    }
    bar.Hide();
    if (options.json) PrintJson({{"files", report}, {"interrupted", IsInterrupted()}});
    return IsInterrupted() ? kInterrupted : status;
  }

 private:
  void Tell(const PlannedFile& file, const FileResult& result) {
    if (options.json) report.push_back(JsonOf(file, result));
    if (!result.error.empty()) {
      bar.Hide();
      PrintError(result.error);
      status = std::max(status, result.wrongUse ? kWrongUse : kSomeFailed);
    } else if (!options.quiet && !options.json) {
      bar.Hide();
      std::cout << Utf8Of(file.output) << "  " << SizeText(result.resultSize) << '\n' << std::flush;
    }
  }

  const ApplyOptions& options;
  ProgressBar bar;
  Json report = Json::array();
  int status = kDone;
};

int Apply(const ApplyOptions& options) {
  const auto creator = MakeCreator();
  const ApplyRequest request = RequestOf(options, *creator.Get());
  const std::vector<PlannedFile> files = PlanOutputs(options.inputs, options.output);
  CatchInterrupts();
  return Session(options, files.size()).Run(files, request, *creator.Get());
}

}  // namespace

void AddApplyCommand(CLI::App& program, Action& action) {
  const auto options = std::make_shared<ApplyOptions>();
  CLI::App* const command = program.add_subcommand("apply", "Apply a chain of filters to pictures");
  AddOptions(*command, *options);
  command->footer(kExamples);
  command->callback([options, &action] { action = [options] { return Apply(*options); }; });
}

}  // namespace program
