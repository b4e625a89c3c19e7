// The system's message dialog, which leaves its traces in the log.
#pragma once

#include "base/Export.h"

// Shows a text and gives the number of the button that was chosen: 1 OK, 2 Cancel, 3 Abort, 4
// Retry, 5 Ignore, 6 Yes, 7 No. `style` has the bits of the system's message boxes: buttons, icon,
// default button. Where nobody is there to be asked, the text goes to the standard error output and
// the default button is the answer. Both the question and the answer are lines of level 5.
FXBOX_API int ZNMessageBox(const char* text, const char* title, unsigned style);
