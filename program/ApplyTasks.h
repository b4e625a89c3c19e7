// What an apply command has to do, one picture after the other, for any number of threads.
#pragma once

#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "program/InputList.h"
#include "program/OutputNames.h"

namespace program {

struct ApplyTask {
  std::size_t number = 0;  // from 0 in the order of the inputs
  PlannedFile file;
  std::string refusal;  // why this one cannot be done, the whole line behind "fxbox: "; else empty
};

// Any thread may ask for the next task.
class ApplyTasks {
 public:
  // Planned in full: a plan that cannot be was refused before.
  explicit ApplyTasks(std::vector<PlannedFile> files) : planned(std::move(files)) {}
  // As names come. Each is planned when it is its turn; one that cannot be is refused by itself.
  ApplyTasks(InputList names, const OutputOptions& output)
      : list(std::move(names)), planner(OutputPlanner(output, true)) {}

  // Nothing when all are done. A FileError when the list cannot be read on.
  std::optional<ApplyTask> Next();

  // 0 when nobody knows yet.
  std::size_t Count() const { return planned.size(); }

 private:
  std::optional<ApplyTask> NextOfList();

  std::mutex lock;
  std::size_t next = 0;
  std::vector<PlannedFile> planned;
  std::optional<InputList> list;
  std::optional<OutputPlanner> planner;
};

}  // namespace program
