// The dialogs of all filter classes.
#pragma once

#include <unknwn.h>

#include <vector>

#include "base/Export.h"

struct DialogClass;

namespace dialogs {

// One row a class that has a dialog.
FXBOX_API const std::vector<const DialogClass*>& DialogClasses();

// See core::DialogMaker.
FXBOX_API IUnknown* NewFilterDialog(const char* progId);

}  // namespace dialogs
