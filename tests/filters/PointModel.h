// A second, naive form of the point filters, on whole pictures: what the pulls are compared with.
#pragma once

#include <string>
#include <vector>

#include "tests/support/Pictures.h"

namespace testing_support {

struct ModelStep {
  std::string progId;
  std::string parameters;
};

// The result of a new filter with these parameters. The classes are the nine point filters and the
// filter that does nothing.
Picture ApplyModel(const ModelStep& step, const Picture& picture);
// One after the other, each on the whole picture.
Picture ApplyModel(const std::vector<ModelStep>& chain, Picture picture);

}  // namespace testing_support
