// Counts the calls of operator new, in the test program that links it.
#pragma once

namespace testing_support {

// All threads' allocations since the start of the program.
long AllocationCount();

}  // namespace testing_support
