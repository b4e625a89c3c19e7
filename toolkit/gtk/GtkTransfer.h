// Clipboard and drags: the system's transfer objects as contents of GTK, and back.
#pragma once

#include <gtk/gtk.h>
#include <objidl.h>

#include <functional>

#include "toolkit/gtk/GtkModule.h"

namespace toolkit {

// For all functions below; called once, when the module opens.
void SetTransferHost(const GtkHost& host);

bool PutOnClipboard(IDataObject* object);
// What lies on the clipboard, with a reference; null when there is nothing that we know. Waits for
// the program that offers it.
IDataObject* TakeFromClipboard();
// An object that holds a text which was dropped, for as long as `take` looks at it; its answer.
bool TakeDroppedText(const char* utf8, const std::function<bool(IDataObject*)>& take);
// Drags from the place of the mouse and waits for the end.
DragEnd RunDrag(GtkWidget* window, IDataObject* object, std::uint32_t allowed,
                std::uint32_t& effect);

}  // namespace toolkit
