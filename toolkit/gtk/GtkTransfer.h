// Clipboard and drags: the system's transfer objects as contents of GTK, and back.
#pragma once

#include <gtk/gtk.h>
#include <objidl.h>

#include "toolkit/gtk/GtkModule.h"

namespace toolkit {

// For all functions below; called once, when the module opens.
void SetTransferHost(const GtkHost& host);

bool PutOnClipboard(IDataObject* object);
// What lies on the clipboard, with a reference; null when there is nothing that we know. Waits for
// the program that offers it.
IDataObject* TakeFromClipboard();
// Drags from the place of the mouse and waits for the end.
DragEnd RunDrag(GtkWidget* window, IDataObject* object, std::uint32_t allowed,
                std::uint32_t& effect);

}  // namespace toolkit
