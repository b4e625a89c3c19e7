// The fxbox command line: reads the arguments and runs the command that they name.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <iostream>

#include "host/ComponentRuntime.h"
#include "platform/Services.h"
#include "program/CommandPages.h"
#include "program/Commands.h"
#include "program/Host.h"
#include "program/Messages.h"

namespace program {
namespace {

void AddCommands(CLI::App& app, Action& action) {
  // Before the commands are added, which take it over: "/" begins a path on every system.
  app.allow_windows_style_options(false);
  app.set_version_flag("--version", "fxbox " FXBOX_VERSION, "Print the version");
  app.require_subcommand(1);
  AddApplyCommand(app, action);
  AddFiltersCommand(app, action);
  AddDescribeCommand(app, action);
  AddTextCommand(app, action);
  AddTextKeyCommand(app, action);
  AddFontsCommand(app, action);
  AddSizeCommand(app, action);
  AddCurveCommand(app, action);
  AddDialogCommand(app, action);
  AddModuleCommands(app, action);
  AddPictureCommand(app, action);
  AddShareCommand(app, action);
  AddConfigCommand(app, action);
  AddLogCommand(app, action);
  AddBoxCommand(app, action);
  AddDragCommand(app, action);
  AddPagesCommand(app, FXBOX_VERSION, action);
}

// What was printed may have been lost: the disk is full, or nobody reads any more.
int CheckOutput(int status) {
  if (std::cout.flush()) return status;
  PrintError("standard output: cannot be written");
  return std::max(status, kSomeFailed);
}

// Prints help or version where they were asked for.
int TellParsing(const CLI::App& app, const CLI::ParseError& outcome) {
  if (outcome.get_exit_code() == 0) return CheckOutput(app.exit(outcome));
  PrintError(std::string(outcome.what()) + " (fxbox --help tells more)");
  return kWrongUse;
}

int RunAction(const Action& action) {
  try {
    const ComponentRuntime runtime;
    return CheckOutput(action());
  } catch (const UsageError& error) {
    PrintError(error.what());
    return kWrongUse;
  } catch (const std::bad_alloc&) {
    PrintError("there is not enough memory");
  } catch (const std::exception& error) {
    PrintError(error.what());
  }
  return kSomeFailed;
}

// A first word that is none of the commands.
void CheckCommand(const CLI::App& app, const std::vector<std::string>& arguments) {
  if (arguments.empty() || arguments[0].empty() || arguments[0][0] == '-') return;
  std::vector<std::string> names;
  for (const CLI::App* const command : app.get_subcommands({}))
    names.push_back(command->get_name());
  if (std::find(names.begin(), names.end(), arguments[0]) != names.end()) return;
  throw UsageError("unknown command " + Quoted(arguments[0]) + Suggestion(arguments[0], names) +
                   " (fxbox --help tells more)");
}

int Run(std::vector<std::string> arguments) {
  CLI::App app("Applies chains of filters to pictures", "fxbox");
  Action action;
  AddCommands(app, action);
  try {
    CheckCommand(app, arguments);
    std::reverse(arguments.begin(), arguments.end());  // the library takes them last one first
    app.parse(std::move(arguments));
  } catch (const CLI::ParseError& outcome) {
    return TellParsing(app, outcome);
  } catch (const UsageError& error) {
    PrintError(error.what());
    return kWrongUse;
  }
  return RunAction(action);
}

}  // namespace
}  // namespace program

int main(int argc, char** argv) {
  platform::Terminal& terminal = *platform::CurrentServices().terminal;
  terminal.Start(std::cout, std::cerr);
  return program::Run(terminal.Arguments(argc, argv));
}
