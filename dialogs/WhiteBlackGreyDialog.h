// The dialog of the white, black and grey point, with a picker for the point.
#pragma once

class CPdibFilterDialog;
struct DialogClass;

namespace dialogs {

CPdibFilterDialog* NewWhiteBlackGreyDialog(const DialogClass& row);

}  // namespace dialogs
