// The commands of the program, one file each.
#pragma once

#include "program/Command.h"

namespace program {

// Each adds its command with options and help to the program.
void AddApplyCommand(const Command& program);
void AddFiltersCommand(const Command& program);
void AddDescribeCommand(const Command& program);
void AddTextCommand(const Command& program);
void AddTextKeyCommand(const Command& program);
void AddFontsCommand(const Command& program);
void AddCurveCommand(const Command& program);
void AddSizeCommand(const Command& program);
void AddModuleCommands(const Command& program);
void AddPictureCommand(const Command& program);
void AddShareCommand(const Command& program);
void AddConfigCommand(const Command& program);
void AddDialogCommand(const Command& program);
void AddLogCommand(const Command& program);
void AddBoxCommand(const Command& program);
void AddDragCommand(const Command& program);

}  // namespace program
