// The dialog of the gradation filter: four curves, and presets of them.
#pragma once

#include <span>

#include "dialogs/DialogClass.h"

namespace dialogs {

CPdibFilterDialog* NewGradationDialog(const DialogClass& row);

std::span<const PanelField> GradationFields();
std::span<const PanelRow> GradationRows();
const char* GradationDefaultText();

}  // namespace dialogs
