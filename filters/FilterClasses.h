// The one list of all filter classes.
#pragma once

#include "core/FilterClass.h"

// In sort order. Everything that is told about classes (registration, GetKind, icons, `fxbox
// filters`, the filter reference) comes from here. A new class is a row here and its pair of files.
FXBOX_API FilterClassTable FilterClasses();
