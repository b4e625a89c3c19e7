#include "program/OutputNames.h"

#include <algorithm>
#include <functional>
#include <map>

#include "base/CodePage.h"
#include "program/BoxPictures.h"
#include "program/Messages.h"
#include "program/WholePicture.h"
#include "storage/PictureNames.h"

namespace program {
namespace {

namespace fs = std::filesystem;

constexpr char kKinds[] = "png, jpg, tif, bmp, ppm or pam";

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
  fs::path whole = fs::weakly_canonical(path, error);
  if (error) whole = fs::absolute(path, error);
  fs::path::string_type key = whole.lexically_normal().native();
  if (fs::path::preferred_separator == '\\') {
    for (auto& unit : key) {
      if (unit >= 'A' && unit <= 'Z') unit += 'a' - 'A';
    }
  }
  return key;
}

void RefuseSameOutput(const std::vector<PlannedFile>& plan) {
  std::map<fs::path::string_type, const PlannedFile*> taken;
  for (const PlannedFile& file : plan) {
    const auto [place, isNew] = taken.emplace(SameFileKey(file.output), &file);
    if (isNew) continue;
    throw UsageError(Utf8Of(file.input) + ": would overwrite the result of " +
                     Utf8Of(place->second->input) + " in " + Utf8Of(file.output));
  }
}

bool IsSameFile(const fs::path& a, const fs::path& b) {
  std::error_code error;
  const bool same = fs::equivalent(a, b, error);
  return error ? SameFileKey(a) == SameFileKey(b) : same;
}

// Whatever the names are: links lead to the same file too.
void RefuseLostInputs(const std::vector<PlannedFile>& plan, bool inPlace) {
  for (const PlannedFile& file : plan) {
    std::error_code ignored;
    if (file.ToStandard() || !fs::exists(file.output, ignored)) continue;
    for (const PlannedFile& other : plan) {
      if (other.FromStandard() || !IsSameFile(file.output, other.input)) continue;
      if (&other == &file && inPlace) continue;
      throw UsageError(Utf8Of(file.output) + ": the result of " + Utf8Of(file.input) +
                       (&other == &file ? " would take the place of its input (--in-place does so)"
                                        : " would take the place of another input"));
    }
  }
}

void RefuseTwoStandards(const std::vector<PlannedFile>& plan) {
  if (std::count_if(plan.begin(), plan.end(), std::mem_fn(&PlannedFile::FromStandard)) > 1) {
    throw UsageError("standard input can be read once only");
  }
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
bool IntoFolder(std::size_t inputs, const OutputOptions& options) {
  if (!options.out || *options.out == kStandard) return false;
  const fs::path target = PathOf(*options.out);
  std::error_code ignored;
  if (inputs == 1) return IsFolderName(target);
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
                     ".bmp, .ppm, .pam");
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
  std::error_code ignored;
  file.isThere =
      options.skipExisting && !file.ToStandard() && fs::is_regular_file(file.output, ignored);
  return file;
}

}  // namespace

std::vector<PlannedFile> PlanOutputs(const std::vector<std::string>& inputs,
                                     const OutputOptions& options) {
  CheckOptions(options);
  if (inputs.size() > 1 && options.out == kStandard) {
    throw UsageError("standard output takes one picture, and there are several inputs");
  }
  const bool intoFolder = IntoFolder(inputs.size(), options);
  std::vector<PlannedFile> plan;
  for (const std::string& input : inputs) plan.push_back(Plan(input, intoFolder, options));
  RefuseTwoStandards(plan);
  RefuseSameOutput(plan);
  RefuseLostInputs(plan, options.inPlace);
  return plan;
}

}  // namespace program
