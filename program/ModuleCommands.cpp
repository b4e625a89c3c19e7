// fxbox register and unregister: modules of third parties that bring filter classes.
#include <CLI/CLI.hpp>
#include <array>
#include <cstdio>
#include <memory>

#include "platform/Services.h"
#include "program/Commands.h"
#include "program/Messages.h"

namespace program {
namespace {

int CallModule(const std::string& name, const char* function) {
  const std::filesystem::path module = PathOf(name);
  std::error_code ignored;
  if (!std::filesystem::exists(module, ignored)) throw FileError(name, "there is no such file");
  int status = 0;
  if (const auto failure = platform::CurrentServices().modules->Call(module, function, status)) {
    throw FileError(name, *failure);
  }
  if (status >= 0) return kDone;
  std::array<char, 16> code;
  std::snprintf(code.data(), code.size(), "0x%08x", static_cast<unsigned>(status));
  throw FileError(name, std::string(function) + " failed with " + code.data());
}

void AddModuleCommand(CLI::App& program, Action& action, const char* name, const char* help,
                      const char* function) {
  const auto module = std::make_shared<std::string>();
  CLI::App* const command = program.add_subcommand(name, help);
  command->add_option("MODULE", *module, "Shared object or DLL")->required()->type_name("");
  command->footer(std::string("Example:\n  fxbox ") + name + " ./libmyfilters.so");
  command->callback(
      [module, function, &action] { action = [=] { return CallModule(*module, function); }; });
}

}  // namespace

void AddModuleCommands(CLI::App& program, Action& action) {
  AddModuleCommand(program, action, "register",
                   "Add the filters of another module for this user or machine",
                   "DllRegisterServer");
  AddModuleCommand(program, action, "unregister", "Remove the filters of another module",
                   "DllUnregisterServer");
}

}  // namespace program
