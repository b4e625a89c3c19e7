// Stands in until the system has a backend of its own.
#include "toolkit/Backend.h"

namespace toolkit {

Backend* OpenSystemBackend(std::string& reason) {
  reason = "this build has no window system";
  return nullptr;
}

}  // namespace toolkit
