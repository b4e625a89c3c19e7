// The fxbox command line: reads the arguments and runs the command that they name.
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

void AddCommands(const Command& program) {
  AddApplyCommand(program);
  AddFiltersCommand(program);
  AddDescribeCommand(program);
  AddTextCommand(program);
  AddTextKeyCommand(program);
  AddFontsCommand(program);
  AddSizeCommand(program);
  AddCurveCommand(program);
  AddDialogCommand(program);
  AddModuleCommands(program);
  AddPictureCommand(program);
  AddShareCommand(program);
  AddConfigCommand(program);
  AddLogCommand(program);
  AddBoxCommand(program);
  AddDragCommand(program);
  AddPagesCommand(program, FXBOX_VERSION);
}

// What was printed may have been lost: the disk is full, or nobody reads any more.
int CheckOutput(int status) {
  if (std::cout.flush()) return status;
  PrintError("standard output: cannot be written");
  return std::max(status, kSomeFailed);
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

int Run(std::vector<std::string> arguments) {
  CommandLine line("fxbox", "Applies chains of filters to pictures", FXBOX_VERSION);
  AddCommands(line.Program());
  try {
    const Action action = line.Read(std::move(arguments));
    return action ? RunAction(action) : CheckOutput(kDone);
  } catch (const UsageError& error) {
    PrintError(error.what());
    return kWrongUse;
  }
}

}  // namespace
}  // namespace program

int main(int argc, char** argv) {
  platform::Terminal& terminal = *platform::CurrentServices().terminal;
  terminal.Start(std::cout, std::cerr);
  return program::Run(terminal.Arguments(argc, argv));
}
