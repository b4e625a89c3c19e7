// What the services for fonts share.
#pragma once

#include <vector>

#include "platform/Services.h"

namespace platform {

// Puts the faces into the order of Fonts::Faces and leaves out those that stand there twice.
void SortFaces(std::vector<FontFace>& faces);

}  // namespace platform
