// Filters that are worked on in the picture itself: crops by handles, red eyes by clicks.
#pragma once

#include <string>
#include <vector>

#include "core/AnimChain.h"
#include "desk/ChainDocument.h"

namespace desk {

// A crop over the picture: shares of its sides, bottom and top counted from the bottom row.
struct CropFrame {
  double left = 0, right = 1, bottom = 0, top = 1;
  bool operator==(const CropFrame&) const = default;
};

enum class PictureTool { None, Crop, RedEye };
// What the filter of this class is worked on with.
PictureTool ToolOf(const std::string& progId);

// What of the chain is shown while one works so on an item: the filters ahead of a crop, those up
// to the red eyes. All of it where there is no such item.
ChainItems ShownWith(const ChainItems& chain, int toolItem);

// The value of a key in a parameter text, `otherwise` where it is not there.
double NumberIn(const std::string& parameters, const std::string& key, double otherwise);

CropFrame CropOf(const std::string& parameters);
// The same parameters with another frame.
std::string WithCrop(IAnimFilterCreator& creator, const ChainItem& item, const CropFrame& frame);

// The same parameters with a click more, or without those that lie within `reach` of it.
std::string WithClick(IAnimFilterCreator& creator, const ChainItem& item, double x, double y,
                      double reach);

}  // namespace desk
