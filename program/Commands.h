// The commands of the program, one file each.
#pragma once

#include <functional>

namespace CLI {
class App;
}

namespace program {

// What a command does once the command line is read; gives the exit status. UsageError means status
// 2, any other exception status 1.
using Action = std::function<int()>;

// Each adds its command with options and help to the program; the command that the user chose sets
// `action`. The command's options live as long as the action.
void AddApplyCommand(CLI::App& program, Action& action);
void AddFiltersCommand(CLI::App& program, Action& action);
void AddDescribeCommand(CLI::App& program, Action& action);
void AddTextCommand(CLI::App& program, Action& action);
void AddTextKeyCommand(CLI::App& program, Action& action);
void AddFontsCommand(CLI::App& program, Action& action);
void AddCurveCommand(CLI::App& program, Action& action);
void AddSizeCommand(CLI::App& program, Action& action);
void AddModuleCommands(CLI::App& program, Action& action);
void AddPictureCommand(CLI::App& program, Action& action);
void AddShareCommand(CLI::App& program, Action& action);
void AddConfigCommand(CLI::App& program, Action& action);
void AddDialogCommand(CLI::App& program, Action& action);
void AddLogCommand(CLI::App& program, Action& action);
void AddBoxCommand(CLI::App& program, Action& action);
void AddDragCommand(CLI::App& program, Action& action);

}  // namespace program
