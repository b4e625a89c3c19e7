// Small questions in a window of their own. `owner` is the handle of the window that waits for the
// answer and takes no input until then.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "base/Export.h"

// Shows a text, which may have several lines, and waits for one of the buttons; gives its index.
// The last button's index where the window was closed, or there is no window system.
FXBOX_API int ZNAskButton(const std::string& title, const std::string& text,
                          const std::vector<std::string>& buttons, void* owner = nullptr);

// Asks for a line of text; nothing when it was cancelled.
FXBOX_API std::optional<std::string> ZNAskText(const std::string& title, const std::string& caption,
                                               const std::string& start, const std::string& ok,
                                               const std::string& cancel, void* owner = nullptr);
