// fxbox apply: a chain of filters on picture files.
#include <algorithm>
#include <functional>
#include <map>
#include <memory>
#include <thread>

#include "component/Fxbox4.h"
#include "platform/WorkerPool.h"
#include "program/ApplySession.h"
#include "program/Arguments.h"
#include "program/ChainOptions.h"
#include "program/Commands.h"
#include "program/Interrupt.h"
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
  imageio::WriteOptions writing;
  int compression = 0;  // a TiffCompression
  std::optional<std::string> listFile;
  bool zeros = false;
  std::optional<int> jobs;
  std::optional<int> threads;
  bool json = false;
  bool jsonLines = false;
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
  fxbox apply -c 'ZNFilter.Text.1(Size=040,PosY=080)' --text 'Summer (2026)' -o card.jpg photo.jpg
      any text; without -c in the middle of the picture
  fxbox apply -c 'ZNFilter.Invert.1(Inversity=100)' --rect 0,0,100,50 -o part.png photo.jpg
      the 100 by 50 pixels at the lower left of the result
  fxbox apply -f old-print.chain --format png - <photo.jpg >photo.png
      from standard input to standard output
  find shots -name '*.jpg' | fxbox apply -f old-print.chain --files-from - --json-lines -o out/
      each picture as soon as its name comes, with a line of JSON for each that is finished
Exit status: 0 all done, 1 some input failed (the others are done), 2 wrong use, 130 interrupted.)";

void AddSizeOptions(const Command& command, ApplyOptions& options) {
  command.Take("--fit N|WxH", options.fit,
               "Preview: reduce the input to fit into N or WxH pixels, and tell the filters");
  command.Take("--zoom Z", options.zoom, "Tell the filters this zoom; changes no size by itself")
      .Between(0.0001, 10000.0);
  command.Take("--target WxH", options.target,
               "Full-resolution size WxH to tell (default: the full picture's own)");
  command
      .Take("--bands N", options.bandRows,
            "Pull N rows at a time, from the bottom row up. Filters that look at what is "
            "asked for see less then: ZNFilter.Histo.1, ZNFilter.BlurGauss.1, "
            "ZNFilter.BlurSel.1, ZNFilter.UnsharpMask.1, ZNFilter.Rauchglas.1 and "
            "ZNFilter.Staub.1 give another picture")
      .Positive();
  command.Take("--rect X,Y,W,H", options.part,
               "Pull this part of the result only: X,Y,W,H in pixels. X,Y is its lower left "
               "corner, counted from the result's lower left: row 0 is the bottom row. What "
               "lies outside the result is cut off. For the filters that --bands names the "
               "part is the picture");
}

void AddOutputOptions(const Command& command, OutputOptions& options) {
  command.Take("-o,--output OUT", options.out,
               "File to write, its extension says the format; a folder for several inputs; - "
               "for standard output. Default: beside the input, as NAME-fxbox.EXT");
  command.Take("--format KIND", options.kind,
               "Kind of picture to write where no name says it: png, jpg, tif, bmp, ppm, pam, "
               "webp, jxl, avif, heic. Default: the input's own");
  command.Flag("--in-place", options.inPlace,
               "Let each result take the place of its input, which is refused otherwise");
  command.Flag("--skip-existing", options.skipExisting,
               "Leave outputs alone that are there, as a finished part of the same work");
}

void AddListOptions(const Command& command, ApplyOptions& options) {
  command.Take("--files-from LIST", options.listFile,
               "File with the names of the inputs, one a line, in the place of INPUT; - for "
               "standard input, where each is done as soon as it comes");
  command.Flag("--null", options.zeros, "Names in the list end with a zero byte");
  command
      .Take("-j,--jobs N", options.jobs,
            "Pictures side by side. Default: as many as there are threads")
      .Between(1, 1024);
  command
      .Take("--threads N", options.threads,
            "Threads that filters use, shared out among the pictures side by side; reading "
            "and writing go on beside them. Default: as many as there are processors")
      .Between(1, 1024);
}

const std::map<std::string, int> kCompressions = {
    {"none", static_cast<int>(imageio::TiffCompression::None)},
    {"packbits", static_cast<int>(imageio::TiffCompression::PackBits)},
    {"lzw", static_cast<int>(imageio::TiffCompression::Lzw)},
    {"deflate", static_cast<int>(imageio::TiffCompression::Deflate)}};

void AddWritingOptions(const Command& command, ApplyOptions& options) {
  command
      .Take("--quality 1..100", options.writing.jpegQuality,
            "Quality of JPEG, WebP, JPEG XL, AVIF and HEIF files; at 100 WebP, JPEG XL and AVIF "
            "lose nothing")
      .Between(1, 100)
      .ShowDefault();
  command.Choose("--compression KIND", kCompressions, options.compression,
                 "Of TIFF files, always without loss: none (the default, the fastest), packbits, "
                 "lzw (half the size of a photograph), deflate (a little smaller)");
  command.Take("--png-level 0..9", options.writing.pngLevel, "How hard PNG files are compressed")
      .Between(0, 9)
      .ShowDefault();
}

void AddOptions(const Command& command, ApplyOptions& options) {
  AddChainOptions(command, options.chain);
  AddListOptions(command, options);
  AddOutputOptions(command, options.output);
  AddWritingOptions(command, options);
  AddSizeOptions(command, options);
  command.Flag("--json", options.json, "Report on standard output as JSON");
  command.Flag("--json-lines", options.jsonLines,
               "Report each picture when it is finished: a line of JSON with its status, time "
               "and SHA-256 sum");
  command.Flag("--quiet", options.quiet, "Print nothing but errors");
  command.Take("--limit PIXELS", options.limit,
               "Refuse pictures of more pixels, and decoding of more than 20 times as much work "
               "(default 500M)");
  command.Take("INPUT", options.inputs,
               "Picture files; - for standard input, shared:ID for what fxbox share keeps");
}

ApplyRequest RequestOf(const ApplyOptions& options, IAnimFilterCreator& creator) {
  ApplyRequest request;
  if (options.fit) request.fit = ParseBox(*options.fit, "--fit");
  if (options.target) request.target = ParseSize(*options.target, "--target");
  if (options.part) request.part = ParseRectangle(*options.part, "--rect");
  if (options.limit) request.limits = ParseLimit(*options.limit);
  request.zoom = options.zoom;
  request.bandRows = options.bandRows;
  request.writing = options.writing;
  request.writing.tiffCompression = static_cast<imageio::TiffCompression>(options.compression);
  request.takesDigests = options.jsonLines;
  request.chain = TakeChain(options.chain, creator);
  return request;
}

// Standard input and output serve one purpose each.
void CheckStandard(const ApplyOptions& options) {
  const bool isPicture = std::count(options.inputs.begin(), options.inputs.end(), kStandard) > 0;
  const bool isList = options.listFile == kStandard;
  if (options.chain.file == kStandard && (isPicture || isList)) {
    throw UsageError(isList ? "standard input cannot be the chain and the list"
                            : "standard input cannot be the chain and a picture");
  }
}

void CheckReport(const ApplyOptions& options, const std::vector<PlannedFile>& files) {
  if (!options.json && !options.jsonLines) return;
  if (std::any_of(files.begin(), files.end(), std::mem_fn(&PlannedFile::ToStandard))) {
    throw UsageError("standard output cannot be the report and a picture");
  }
}

void CheckInputs(const ApplyOptions& options) {
  if (options.inputs.empty() == !options.listFile) {
    throw UsageError(options.listFile ? "give the inputs or --files-from, not both"
                                      : "the inputs are missing: name them, or give --files-from");
  }
  if (options.zeros && !options.listFile) throw UsageError("--null belongs to --files-from");
  if (options.json && options.jsonLines) {
    throw UsageError("--json and --json-lines exclude each other");
  }
  CheckStandard(options);
}

InputList OpenList(const ApplyOptions& options) {
  return {*options.listFile,
          options.zeros ? InputList::Separator::ZeroByte : InputList::Separator::LineEnd};
}

std::vector<std::string> ReadList(const ApplyOptions& options) {
  InputList list = OpenList(options);
  std::vector<std::string> names;
  while (std::optional<std::string> name = list.Next()) names.push_back(std::move(*name));
  return names;
}

// A list from standard input may come from somebody who waits for the first results.
ApplyTasks TasksOf(const ApplyOptions& options) {
  if (options.listFile == kStandard) return {OpenList(options), options.output};
  std::vector<PlannedFile> files = options.listFile
                                       ? PlanListOutputs(ReadList(options), options.output)
                                       : PlanOutputs(options.inputs, options.output);
  CheckReport(options, files);
  return ApplyTasks(std::move(files));
}

int ThreadsOf(const ApplyOptions& options) {
  return options.threads.value_or(
      static_cast<int>(std::max(1U, std::thread::hardware_concurrency())));
}

int JobsOf(const ApplyOptions& options, const ApplyTasks& tasks) {
  const auto wanted = static_cast<std::size_t>(options.jobs.value_or(ThreadsOf(options)));
  return static_cast<int>(tasks.Count() == 0 ? wanted : std::min(tasks.Count(), wanted));
}

// Threads for the filters, lent to the library while it lives.
class LentThreads {
 public:
  // `threads` counts those that pull, `jobs` of them.
  LentThreads(int threads, int jobs) {
    const int count = threads - jobs + 1;
    if (count < 2) return;
    const auto pool =
        platform::ComPtr<platform::WorkerPool>::Attach(new platform::WorkerPool(count));
    FxboxSetWorkers(pool.Get());
  }
  ~LentThreads() { FxboxSetWorkers(nullptr); }
  LentThreads(const LentThreads&) = delete;
  LentThreads& operator=(const LentThreads&) = delete;
};

int Apply(const ApplyOptions& options) {
  CheckInputs(options);
  const auto creator = MakeCreator();
  const ApplyRequest request = RequestOf(options, *creator.Get());
  CatchInterrupts();
  ApplyTasks tasks = TasksOf(options);
  const int jobs = JobsOf(options, tasks);
  const LentThreads lent(ThreadsOf(options), jobs);
  return RunSession(tasks, request, {jobs, options.json, options.jsonLines, options.quiet});
}

}  // namespace

void AddApplyCommand(const Command& program) {
  const auto options = std::make_shared<ApplyOptions>();
  const Command command = program.Add("apply", "Apply a chain of filters to pictures");
  AddOptions(command, *options);
  command.Footer(ForShell(kExamples));
  command.Runs([options] { return Apply(*options); });
}

}  // namespace program
