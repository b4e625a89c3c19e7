// fxbox apply: a chain of filters on picture files.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <functional>
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
  OutputOptions output;
  std::optional<std::string> limit;
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
  fxbox apply -f old-print.chain --format png - <photo.jpg >photo.png
      from standard input to standard output
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
  command
      .add_option("--bands", options.bandRows,
                  "Pull N rows at a time, from the bottom row up. Filters that look at what is "
                  "asked for see less then: ZNFilter.Histo.1, ZNFilter.BlurGauss.1, "
                  "ZNFilter.BlurSel.1, ZNFilter.UnsharpMask.1, ZNFilter.Rauchglas.1 and "
                  "ZNFilter.Staub.1 give another picture")
      ->check(CLI::PositiveNumber)
      ->type_name("N");
  command
      .add_option("--rect", options.part,
                  "Pull this part of the result only: X,Y,W,H in pixels. X,Y is its lower left "
                  "corner, counted from the result's lower left: row 0 is the bottom row. What "
                  "lies outside the result is cut off. For the filters that --bands names the "
                  "part is the picture")
      ->type_name("X,Y,W,H");
}

void AddOutputOptions(CLI::App& command, ApplyOptions& options) {
  command
      .add_option("-o,--output", options.output.out,
                  "File to write, its extension says the format; a folder for several inputs; - "
                  "for standard output. Default: beside the input, as NAME-fxbox.EXT")
      ->type_name("OUT");
  command
      .add_option("--format", options.output.kind,
                  "Kind of picture to write where no name says it: png, jpg, tif, bmp, ppm, pam. "
                  "Default: the input's own")
      ->type_name("KIND");
  command.add_flag("--in-place", options.output.inPlace,
                   "Let each result take the place of its input, which is refused otherwise");
  command.add_flag("--skip-existing", options.output.skipExisting,
                   "Leave outputs alone that are there, as a finished part of the same work");
}

void AddOptions(CLI::App& command, ApplyOptions& options) {
  AddChainOptions(command, options.chain);
  AddOutputOptions(command, options);
  AddSizeOptions(command, options);
  command.add_option("--quality", options.quality, "Quality of JPEG files")
      ->check(CLI::Range(1, 100))
      ->type_name("1..100")
      ->capture_default_str();
  command.add_flag("--json", options.json, "Report on standard output as JSON");
  command.add_flag("--quiet", options.quiet, "Print nothing but errors");
  command
      .add_option("--limit", options.limit,
                  "Refuse pictures of more pixels, and decoding of more than 20 times as much work "
                  "(default 500M)")
      ->type_name("PIXELS");
  command
      .add_option("INPUT", options.inputs,
                  "Picture files; - for standard input, shared:ID for what fxbox share keeps")
      ->required()
      ->type_name("");
}

ApplyRequest RequestOf(const ApplyOptions& options, IAnimFilterCreator& creator) {
  ApplyRequest request;
  if (options.fit) request.fit = ParseBox(*options.fit, "--fit");
  if (options.target) request.target = ParseSize(*options.target, "--target");
  if (options.part) request.part = ParseRectangle(*options.part, "--rect");
  if (options.limit) request.limits = ParseLimit(*options.limit);
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
  entry["skipped"] = file.isThere;
  entry["notes"] = result.notes;
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
      const FileResult result = file.isThere ? FileResult() : run.Do(file);
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
    bar.Hide();
    if (!result.error.empty()) {
      PrintError(result.error);
      status = std::max(status, result.wrongUse ? kWrongUse : kSomeFailed);
    } else if (!options.quiet && !options.json) {
      TellResult(file, result);
    }
  }

  // Standard output is the picture's own when it goes there.
  static void TellResult(const PlannedFile& file, const FileResult& result) {
    for (const std::string& note : result.notes) {
      PrintError(Utf8Of(file.input) + ": note: " + note);
    }
    if (file.ToStandard()) return;
    const std::string what = file.isThere ? "is there, skipped" : SizeText(result.resultSize);
    std::cout << Utf8Of(file.output) << "  " << what << '\n' << std::flush;
  }

  const ApplyOptions& options;
  ProgressBar bar;
  Json report = Json::array();
  int status = kDone;
};

// Standard input and output serve one purpose each.
void CheckStandard(const ApplyOptions& options, const std::vector<PlannedFile>& files) {
  const auto any = [&](auto test) { return std::any_of(files.begin(), files.end(), test); };
  if (options.chain.file == kStandard && any(std::mem_fn(&PlannedFile::FromStandard))) {
    throw UsageError("standard input cannot be the chain and a picture");
  }
  if (options.json && any(std::mem_fn(&PlannedFile::ToStandard))) {
    throw UsageError("standard output cannot be the report and a picture");
  }
}

int Apply(const ApplyOptions& options) {
  const auto creator = MakeCreator();
  const ApplyRequest request = RequestOf(options, *creator.Get());
  const std::vector<PlannedFile> files = PlanOutputs(options.inputs, options.output);
  CheckStandard(options, files);
  CatchInterrupts();
  return Session(options, files.size()).Run(files, request, *creator.Get());
}

}  // namespace

void AddApplyCommand(CLI::App& program, Action& action) {
  const auto options = std::make_shared<ApplyOptions>();
  CLI::App* const command = program.add_subcommand("apply", "Apply a chain of filters to pictures");
  AddOptions(*command, *options);
  command->footer(ForShell(kExamples));
  command->callback([options, &action] { action = [options] { return Apply(*options); }; });
}

}  // namespace program
