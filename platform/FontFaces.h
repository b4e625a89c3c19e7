// What the services for fonts share.
#pragma once

#include <vector>

#include "platform/Services.h"

namespace platform {

// Puts the faces into the order of Fonts::Faces and leaves out those that stand there twice.
void SortFaces(std::vector<FontFace>& faces);

// The system's fonts, which `Reader` reads when it is made: when they are first asked for.
template <class Reader>
class FontsWhenAsked final : public Fonts {
 public:
  const std::vector<FontFace>& Faces() override { return Read().Faces(); }
  const std::string& DefaultFamily() override { return Read().DefaultFamily(); }

 private:
  static Reader& Read() {
    static Reader fonts;
    return fonts;
  }
};

}  // namespace platform
