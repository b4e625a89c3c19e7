// A picture to be read, wherever its rows lie.
#pragma once

#include <wtypes.h>

namespace base {

// One pointer a row of each plane, in the layout of base/Rows.h. Several may point to one row.
struct RowView {
  const BYTE* const* colour = nullptr;
  const BYTE* const* mask = nullptr;
  int width = 0, height = 0;
};

}  // namespace base
