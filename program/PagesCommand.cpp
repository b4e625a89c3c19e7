// fxbox pages: writes manual pages and completions, for those who make packages.
#include <fstream>
#include <memory>

#include "program/CommandPages.h"
#include "program/Commands.h"
#include "program/Messages.h"

namespace program {
namespace {

void Write(const std::filesystem::path& file, const std::string& text) {
  std::filesystem::create_directories(file.parent_path());
  std::ofstream stream(file, std::ios::binary);
  stream << text;
  if (!stream.flush()) throw FileError(Utf8Of(file), "cannot be written");
}

int WritePages(const CommandHelp& program, const std::string& version, const std::string& folder) {
  for (const auto& pages : {ManualPages(program, version), Completions(program)}) {
    for (const Page& page : pages) Write(PathOf(folder) / page.file, page.text);
  }
  return kDone;
}

}  // namespace

void AddPagesCommand(const Command& program, const std::string& version) {
  const auto folder = std::make_shared<std::string>();
  const Command command = program.Add("pages", "Write manual pages and completions into a folder");
  command.Hide();
  command.Take("FOLDER", *folder, "Where to").Required();
  command.Runs([folder, program, version] { return WritePages(program.Help(), version, *folder); });
}

}  // namespace program
