// Pictures wherever their rows lie: one to be read, and one to be written.
#pragma once

#include <wtypes.h>

namespace base {

// One pointer a row of each plane, in the layout of base/Rows.h. Several may point to one row.
struct RowView {
  const BYTE* const* colour = nullptr;
  const BYTE* const* mask = nullptr;
  int width = 0, height = 0;
};

// The same where each row lies apart from the others.
struct WritableRows {
  BYTE* const* colour = nullptr;
  BYTE* const* mask = nullptr;
  int width = 0, height = 0;

  operator RowView() const { return {colour, mask, width, height}; }
};

}  // namespace base
