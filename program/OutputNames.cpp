#include "program/OutputNames.h"

#include <algorithm>
#include <functional>

#include "base/CodePage.h"
#include "program/BoxPictures.h"
#include "program/Messages.h"
#include "program/WholePicture.h"
#include "storage/PictureNames.h"

namespace program {
namespace {

namespace fs = std::filesystem;

constexpr char kKinds[] = "png, jpg, tif, bmp, ppm, pam, webp, jxl, avif or heic";

std::string ExtensionFor(const fs::path& input, const OutputOptions& options) {
  if (options.kind) return "." + *options.kind;
  const bool canBeWritten = imageio::FormatOfName(input) != imageio::Format::Unknown;
  return canBeWritten ? Utf8Of(input.extension()) : ".png";
}

fs::path NameInFolder(const fs::path& folder, const fs::path& input, const OutputOptions& options) {
  return folder / (input.stem() += PathOf(ExtensionFor(input, options)));
}

fs::path NameBeside(const fs::path& input, const OutputOptions& options) {
  return input.parent_path() / (input.stem() += PathOf("-fxbox" + ExtensionFor(input, options)));
}

bool IsFolderName(const fs::path& path) {
  std::error_code ignored;
  return !path.has_filename() || fs::is_directory(path, ignored);
}

// Names that lead to the same file compare equal. Systems with the backslash do not tell case.
fs::path::string_type SameFileKey(const fs::path& path) {
  std::error_code error;
  const fs::path from = fs::absolute(path, error);  // else what is made meanwhile would count
  fs::path whole = fs::weakly_canonical(from, error);
  if (error) whole = from;
  fs::path::string_type key = whole.lexically_normal().native();
  if (fs::path::preferred_separator == '\\') {
    for (auto& unit : key) {
      if (unit >= 'A' && unit <= 'Z') unit += 'a' - 'A';
    }
  }
  return key;
}

// Systems with the backslash are not asked: their count of links may be 1 whatever it is.
bool MayHaveOtherNames(const fs::path& file) {
  std::error_code ignored;
  return fs::path::preferred_separator == '\\' || fs::hard_link_count(file, ignored) > 1;
}

void CheckOptions(const OutputOptions& options) {
  if (options.out && options.out->empty()) throw UsageError("the name of the output is empty");
  if (options.inPlace && options.skipExisting) {
    throw UsageError("--in-place and --skip-existing exclude each other");
  }
  if (!options.kind) return;
  if (imageio::FormatOfName(PathOf("x." + *options.kind)) == imageio::Format::Unknown) {
    throw UsageError("--format: " + *options.kind + " is none of " + kKinds);
  }
  if (options.inPlace) throw UsageError("--in-place keeps the name of a file, and so its kind");
}

// What results are named after: a picture in a box lies beside the box; of a shared picture the
// id, which may hold what names may not.
fs::path NameOf(const fs::path& input) {
  if (const auto inBox = SplitBoxInput(Utf8Of(input))) {
    return PathOf(inBox->box).parent_path() / PathOf(picbox::CleanName(inBox->name));
  }
  const auto id = SharedIdOf(Utf8Of(input));
  if (!id) return input;
  std::string name = *id;
  for (char& c : name) {
    if (std::string_view("/\\:*?\"<>|.").find(c) != std::string_view::npos) c = '_';
  }
  return PathOf(base::ToUtf8(name));
}

// Whether the results lie in the folder that `out` names.
bool IntoFolder(bool several, const OutputOptions& options) {
  if (!options.out || *options.out == kStandard) return false;
  const fs::path target = PathOf(*options.out);
  std::error_code ignored;
  if (!several) return IsFolderName(target);
  if (fs::exists(target, ignored) && !fs::is_directory(target, ignored)) {
    throw UsageError(*options.out + ": is no folder, and there are several inputs");
  }
  return true;
}

fs::path OutputOf(const PlannedFile& file, const OutputOptions& options) {
  if (file.intoFolder) {
    const fs::path name = file.FromStandard() ? "stdin" : NameOf(file.input);
    return NameInFolder(PathOf(*options.out), name, options);
  }
  if (options.out) return PathOf(*options.out);
  if (file.FromStandard() || options.inPlace) return file.input;
  return NameBeside(NameOf(file.input), options);
}

// A name that says another kind than --format is a mistake.
imageio::Format FormatOf(const PlannedFile& file, const OutputOptions& options) {
  const auto byName = imageio::FormatOfName(file.output);
  const auto asked =
      options.kind ? imageio::FormatOfName(PathOf("x." + *options.kind)) : imageio::Format::Unknown;
  if (file.ToStandard() || (asked != imageio::Format::Unknown && !file.output.has_extension())) {
    return asked;
  }
  if (byName == imageio::Format::Unknown) {
    throw UsageError(Utf8Of(file.output) +
                     ": the name says no kind of picture that can be written: .png, .jpg, .tif, "
                     ".bmp, .ppm, .pam, .webp, .jxl, .avif, .heic");
  }
  if (options.kind && asked != byName) {
    throw UsageError(Utf8Of(file.output) + ": the name says another kind than --format " +
                     *options.kind);
  }
  return byName;
}

PlannedFile Plan(const std::string& input, bool intoFolder, const OutputOptions& options) {
  PlannedFile file;
  file.input = PathOf(input);
  file.intoFolder = intoFolder;
  if (options.inPlace && SharedIdOf(input)) {
    throw UsageError(input + ": a shared picture is no file that could be replaced");
  }
  file.output = OutputOf(file, options);
  file.format = FormatOf(file, options);
  file.skipIfThere = options.skipExisting && !file.ToStandard();
  return file;
}

std::vector<PlannedFile> PlanAll(const std::vector<std::string>& inputs, bool intoFolder,
                                 const OutputOptions& options) {
  OutputPlanner planner(options, intoFolder);
  for (const std::string& input : inputs) planner.Expect(input);
  std::vector<PlannedFile> plan;
  for (const std::string& input : inputs) plan.push_back(planner.Add(input));
  return plan;
}

}  // namespace

bool IsLeftAlone(const PlannedFile& file) {
  std::error_code ignored;
  return file.skipIfThere && fs::is_regular_file(file.output, ignored);
}

std::vector<PlannedFile> PlanOutputs(const std::vector<std::string>& inputs,
                                     const OutputOptions& options) {
  return PlanAll(inputs, inputs.size() > 1, options);
}

std::vector<PlannedFile> PlanListOutputs(const std::vector<std::string>& inputs,
                                         const OutputOptions& options) {
  return PlanAll(inputs, true, options);
}

OutputPlanner::OutputPlanner(const OutputOptions& outputOptions, bool several)
    : options(outputOptions), intoFolder(false) {
  CheckOptions(options);
  if (several && options.out == kStandard) {
    throw UsageError("standard output takes one picture, and there are several inputs");
  }
  intoFolder = IntoFolder(several, options);
}

void OutputPlanner::Expect(const std::string& input) {
  const fs::path file = PathOf(input);
  if (file != kStandard) inputs.emplace(SameFileKey(file), file);
}

PlannedFile OutputPlanner::Add(const std::string& input) {
  Expect(input);
  const PlannedFile file = Plan(input, intoFolder, options);
  if (file.FromStandard()) {
    if (standardIsTaken) throw UsageError("standard input can be read once only");
    standardIsTaken = true;
  }
  if (file.ToStandard()) return file;
  RefuseTakenOutput(file);
  RefuseLostInput(file);
  return file;
}

void OutputPlanner::RefuseTakenOutput(const PlannedFile& file) {
  const auto before = file.FromStandard() ? outputs.end() : outputs.find(SameFileKey(file.input));
  if (before != outputs.end() && before->second != file.input) {
    throw UsageError(Utf8Of(file.input) + ": is the result of " + Utf8Of(before->second));
  }
  const auto [place, isNew] = outputs.emplace(SameFileKey(file.output), file.input);
  if (isNew) return;
  throw UsageError(Utf8Of(file.input) + ": would overwrite the result of " + Utf8Of(place->second) +
                   " in " + Utf8Of(file.output));
}

// Whatever the names are: links lead to the same file too. Symbolic ones are resolved in the keys;
// for others, which are few, all inputs are looked at.
void OutputPlanner::RefuseLostInput(const PlannedFile& file) const {
  std::error_code ignored;
  if (!fs::exists(file.output, ignored)) return;
  const auto refuse = [&](const fs::path& lost) {
    const bool isOwn = !file.FromStandard() && SameFileKey(lost) == SameFileKey(file.input);
    if (isOwn && options.inPlace) return;
    throw UsageError(Utf8Of(file.output) + ": the result of " + Utf8Of(file.input) +
                     (isOwn ? " would take the place of its input (--in-place does so)"
                            : " would take the place of another input"));
  };
  const auto named = inputs.find(SameFileKey(file.output));
  if (named != inputs.end()) return refuse(named->second);
  if (!MayHaveOtherNames(file.output)) return;
  for (const auto& [key, input] : inputs) {
    if (fs::equivalent(file.output, input, ignored)) refuse(input);
  }
}

}  // namespace program
