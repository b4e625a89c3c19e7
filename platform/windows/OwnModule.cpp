#include "platform/OwnModule.h"

namespace platform {

void* FindInOwnModule(const std::string&, const char*, std::string& reason) {
  reason = "there is none for this system";
  return nullptr;
}

}  // namespace platform
