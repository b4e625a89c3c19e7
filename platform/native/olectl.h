// Stand-in for the system header of the same name, which has the status codes of connection points:
// here they stand among the others.
#pragma once

#include <winerror.h>
