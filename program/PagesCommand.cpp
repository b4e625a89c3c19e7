// fxbox pages: writes manual pages and completions, for those who make packages.
#include <CLI/CLI.hpp>
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

int WritePages(const CLI::App& program, const std::string& version, const std::string& folder) {
  for (const auto& pages : {ManualPages(program, version), Completions(program)}) {
    for (const Page& page : pages) Write(PathOf(folder) / page.file, page.text);
  }
  return kDone;
}

}  // namespace

std::vector<const CLI::App*> ShownCommands(const CLI::App& command) {
  return command.get_subcommands([](const CLI::App* sub) { return !sub->get_group().empty(); });
}

bool IsShown(const CLI::Option& option) {
  return !option.get_group().empty();
}

void AddPagesCommand(CLI::App& program, const std::string& version, Action& action) {
  const auto folder = std::make_shared<std::string>();
  CLI::App* const command =
      program.add_subcommand("pages", "Write manual pages and completions into a folder");
  command->group("");  // no matter of users
  command->add_option("FOLDER", *folder, "Where to")->required()->type_name("");
  command->callback([folder, &program, version, &action] {
    action = [folder, &program, version] { return WritePages(program, version, *folder); };
  });
}

}  // namespace program
