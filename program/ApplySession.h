// Goes through the pictures of an apply command, some of them side by side, and says what came of
// each.
#pragma once

#include "program/ApplyRun.h"
#include "program/ApplyTasks.h"

namespace program {

struct SessionOptions {
  int jobs = 1;            // pictures side by side
  bool json = false;       // one report on standard output at the end
  bool jsonLines = false;  // a line on standard output for each picture when it is finished
  bool quiet = false;      // nothing but errors
};

// Gives the exit status. Without `jsonLines` results are told in the order of the inputs, however
// they are finished. What ends the list early is thrown when the pictures in work are finished.
int RunSession(ApplyTasks& tasks, const ApplyRequest& request, const SessionOptions& options);

}  // namespace program
