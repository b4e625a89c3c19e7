// The messages of the desk, one a line.
#pragma once

#include <string>
#include <vector>

#include "toolkit/ZNDialog.h"

namespace desk {

class MessageWindow final : public CZNDialog {
 public:
  explicit MessageWindow(const std::vector<std::string>& shown) : messages(shown) {}
  void Open(void* owner);

 private:
  void Build() override;

  const std::vector<std::string> messages;
};

}  // namespace desk
