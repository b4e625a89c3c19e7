// Parameter texts as dialogs read and print them.
#pragma once

#include <string>

#include "toolkit/Panel.h"

namespace dialogs {

// Takes each printed field whose key with its "=" stands in the text with a readable value behind
// it; the others keep theirs. A null text holds nothing.
void ReadDialogText(const char* text, PanelValues& values);

// The printed pieces of all fields, in their order.
std::string PrintDialogText(const PanelValues& values);

// The pieces of those fields that differ from `before`, joined by commas.
std::string PrintChanges(const PanelValues& values, const PanelValues& before);

}  // namespace dialogs
