// The text that stands for a chain on the clipboard and in drags, between markers that are found
// again in whatever text it was pasted into.
#pragma once

#include <ole2.h>

#include <optional>
#include <string>
#include <string_view>

#include "base/Export.h"

namespace core {

// A chain and what goes along with it: words of the person, a description. Both in the code page.
struct DragContent {
  std::string chain;
  std::string second;
  bool operator==(const DragContent&) const = default;
};

// What parts the chain from the second text.
inline constexpr std::string_view kSecondTextMark = "&&";

// Whether a text holds one of the four markers.
FXBOX_API bool HoldsDragMarker(std::string_view text);

// The start marker, the chain and, where it is not empty, the second text behind "&&", then the end
// marker. The markers tell whether the chain is fit for IA, see IsFitForIA. A second text whose
// last line is not ended gets a CR LF. An empty chain gives an empty text; nothing for a chain that
// could not be read back, because it holds "&&" or a marker, or would with what stands beside it.
FXBOX_API std::optional<std::string> MakeDragText(std::string_view chain, std::string_view second);

// What stands between the first pair of matching markers; text around the pair does not count. One
// CR LF at the end of the second text is taken off. Nothing where there is no pair.
FXBOX_API std::optional<DragContent> ReadDragText(std::string_view text);

// Adds the chain to what goes on the clipboard or into a drag: as a chain text in the format for
// its kind, and as a drag text that any program takes. Does nothing for a null object, an empty
// chain and one that cannot be read back; false then.
FXBOX_API bool AddDraggedChain(IDataObject* object, std::string_view chain,
                               std::string_view second = {});
// The chain that an object holds, in one of our formats or in a drag text.
FXBOX_API std::optional<DragContent> ReadDraggedChain(IDataObject* object);

}  // namespace core
