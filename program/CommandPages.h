// Manual pages and completions, made of what the commands say of themselves in --help.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "program/Command.h"

namespace program {

struct Page {
  std::filesystem::path file;  // such as "man/fxbox-apply.1"
  std::string text;
};

// One manual page a command, in the format of man.
std::vector<Page> ManualPages(const CommandHelp& program, const std::string& version);

// For bash, zsh and fish.
std::vector<Page> Completions(const CommandHelp& program);

// The command that writes both, hidden from users.
void AddPagesCommand(const Command& program, const std::string& version);

}  // namespace program
