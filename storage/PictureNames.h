// Names of pictures in a box, and what their endings say.
#pragma once

#include <string>
#include <string_view>

#include "base/Export.h"

namespace picbox {

// Every character that not all systems take in a name becomes "_", bytes above 127 included.
FXBOX_API std::string CleanName(std::string_view name);

// The cleaned name with this extension in the place of that of a picture file, or of the same one;
// without an extension the cleaned name.
FXBOX_API std::string AddExtension(std::string_view name, std::string_view extension);

FXBOX_API bool SameText(std::string_view a, std::string_view b);           // without case
FXBOX_API bool EndsWithText(std::string_view text, std::string_view end);  // without case
FXBOX_API std::string UpperText(std::string_view text);

// What stands behind the last point, empty without one; and what stands before it.
FXBOX_API std::string_view TailOf(std::string_view name);
FXBOX_API std::string_view StemOf(std::string_view name);

// Whether the name is that of a note beside a picture.
FXBOX_API bool IsNote(std::string_view name);
// Whether a picture may have this name: not that of a storage of the box, nor of a note, nor one
// that means a folder.
FXBOX_API bool CanBeName(std::string_view name);

// The ending of a plain file that is taken for a picture of this kind: "jpg" of "photo.jpg"; empty
// for any other.
FXBOX_API std::string PictureTag(std::string_view name);

// Kind 2 for files that hold no mask, else 1.
FXBOX_API int KindOfTag(std::string_view tag);

// The extension that belongs to a picture type, "" for an unknown one; and what a native save puts
// behind the name, that of a JPEG file where a type has none.
FXBOX_API const char* TagOfType(int type);
FXBOX_API const char* SuffixOfType(int type);

}  // namespace picbox
