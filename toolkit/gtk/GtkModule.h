// The door of the module that holds GTK. The library loads it when the first window is made, so
// that a program without windows never loads GTK.
#pragma once

#include <objidl.h>

#include <string>

#include "toolkit/Backend.h"

namespace toolkit {

// The name under which the module is looked for, beside the library and where the system looks.
inline constexpr char kGtkModuleName[] = "libfxbox4-gtk.so.4";
inline constexpr char kOpenGtkName[] = "FxboxOpenGtkBackend";

// What the module needs of the library that loads it: its numbers of clipboard formats, and a new
// empty object to transfer.
struct GtkHost {
  UINT (*registerFormat)(const char* name);
  int (*formatName)(UINT format, char* buffer, int size);
  IDataObject* (*newTransfer)();
};

// The signature of the module's one function: the backend, which lives as long as the process, or
// null and the reason. Once it has answered a backend, the calling thread is the windows' thread.
using OpenGtk = Backend* (*)(const GtkHost& host, std::string& reason);

}  // namespace toolkit
