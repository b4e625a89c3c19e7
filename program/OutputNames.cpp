#include "program/OutputNames.h"

#include <algorithm>
#include <map>

#include "program/Messages.h"

namespace program {
namespace {

namespace fs = std::filesystem;

std::string ExtensionFor(const fs::path& input) {
  const bool canBeWritten = imageio::FormatOfName(input) != imageio::Format::Unknown;
  return canBeWritten ? Utf8Of(input.extension()) : ".png";
}

fs::path NameInFolder(const fs::path& folder, const fs::path& input) {
  return folder / (input.stem() += PathOf(ExtensionFor(input)));
}

fs::path NameBeside(const fs::path& input) {
  return input.parent_path() / (input.stem() += PathOf("-fxbox" + ExtensionFor(input)));
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

}  // namespace

std::vector<PlannedFile> PlanOutputs(const std::vector<std::string>& inputs,
                                     const std::optional<std::string>& out) {
  const fs::path target = PathOf(out.value_or(""));
  const bool intoFolder = out && !out->empty() && (inputs.size() > 1 || IsFolderName(target));
  std::error_code ignored;
  if (out && out->empty()) throw UsageError("the name of the output is empty");
  if (intoFolder && fs::exists(target, ignored) && !fs::is_directory(target, ignored)) {
    throw UsageError(*out + ": is no folder, and there are several inputs");
  }
  std::vector<PlannedFile> plan;
  for (const std::string& name : inputs) {
    PlannedFile file;
    file.input = PathOf(name);
    file.intoFolder = intoFolder;
    file.output = !out         ? NameBeside(file.input)
                  : intoFolder ? NameInFolder(target, file.input)
                               : target;
    file.format = imageio::FormatOfName(file.output);
    if (file.format == imageio::Format::Unknown) {
      throw UsageError(*out +
                       ": the name says no kind of picture that can be written: .png, .jpg, .tif, "
                       ".bmp, .ppm, .pam");
    }
    plan.push_back(std::move(file));
  }
  RefuseSameOutput(plan);
  return plan;
}

}  // namespace program
