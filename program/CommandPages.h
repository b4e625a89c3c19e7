// Manual pages and completions, made of what the commands say of themselves in --help.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "program/Commands.h"

namespace CLI {
class Option;
}

namespace program {

struct Page {
  std::filesystem::path file;  // such as "man/fxbox-apply.1"
  std::string text;
};

// What --help shows of a command; what has no group is hidden from users.
std::vector<const CLI::App*> ShownCommands(const CLI::App& command);
bool IsShown(const CLI::Option& option);

// One manual page a command, in the format of man.
std::vector<Page> ManualPages(const CLI::App& program, const std::string& version);

// For bash, zsh and fish.
std::vector<Page> Completions(const CLI::App& program);

// The command that writes both, hidden from users, after all others were added.
void AddPagesCommand(CLI::App& program, const std::string& version, Action& action);

}  // namespace program
