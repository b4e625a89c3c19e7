// IAnimRowReach: what a host must know of a filter to pull a picture in bands.
#pragma once

#include <unknwn.h>

#include "base/Guid.h"

// The optional fifth interface of a filter. A chain in which all filters have it and answer 0 can
// be pulled band by band, so that neither the host nor the source needs room for the whole picture.
// A filter without it, such as one of another module, is pulled whole.
struct IAnimRowReach : IUnknown {
  static constexpr IID kIid = base::Guid("{A74997EB-D681-43D3-A1FD-9B6A8E4BD572}");

  // How many rows above and below a row of the result must be asked for with it, as far as the
  // picture has them, so that it has the same bytes as in a pull of all rows. Of what the last
  // Prepare has made active. Holds for pulls into row 0 and column 0 of the caller's rows that are
  // as wide as the one pull would be.
  //
  // 0 with a number from 0 up; 1, and no number, when the result depends on the rectangle that is
  // asked for, so that only one pull will do. *readsAll is set when the filter asks its source for
  // all of its picture at once and keeps it, whatever is asked for; otherwise it asks for the rows
  // that it is asked for, moved where its picture has another size.
  virtual HRESULT STDMETHODCALLTYPE GetRowReach(int* rows, bool* readsAll) = 0;

 protected:
  ~IAnimRowReach() = default;
};
