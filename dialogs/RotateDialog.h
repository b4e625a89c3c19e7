// The dialog of rotation, with buttons for the quarter turns, and that of the print pad.
#pragma once

class CPdibFilterDialog;
struct DialogClass;

namespace dialogs {

CPdibFilterDialog* NewRotateDialog(const DialogClass& row);
// Its colour is one hexadecimal number in the text.
CPdibFilterDialog* NewPadDialog(const DialogClass& row);

}  // namespace dialogs
