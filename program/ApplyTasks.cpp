#include "program/ApplyTasks.h"

#include "program/Messages.h"

namespace program {

std::optional<ApplyTask> ApplyTasks::Next() {
  const std::lock_guard hold(lock);
  if (list) return NextOfList();
  if (next == planned.size()) return std::nullopt;
  const std::size_t number = next++;
  return ApplyTask{number, planned[number], {}};
}

std::optional<ApplyTask> ApplyTasks::NextOfList() {
  const std::optional<std::string> name = list->Next();
  if (!name) return std::nullopt;
  ApplyTask task{next++, {}, {}};
  task.file.input = PathOf(*name);
  try {
    if (task.file.FromStandard())
      throw UsageError("standard input cannot be the list and a picture");
    task.file = planner->Add(*name);
  } catch (const UsageError& error) {
    task.refusal = error.what();
  }
  return task;
}

}  // namespace program
