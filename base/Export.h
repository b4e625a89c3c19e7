// What the library exports. The build defines FXBOX_API; a host needs no definition of its own.
#pragma once

#ifndef FXBOX_API
#define FXBOX_API
#endif
