// IAnimRowLender: how a source that has its picture in memory lets a filter read it where it lies.
#pragma once

#include <unknwn.h>
#include <wtypes.h>

#include "base/Guid.h"

// The optional second interface of a source, be it a host's or a filter. A filter that is asked for
// the whole picture, or must see it, asks for this by QueryInterface at each pull, and reads what
// it is lent; from a source without it, or one that does not lend, it has it copied with ReadRows.
struct IAnimRowLender : IUnknown {
  static constexpr IID kIid = base::Guid("{ECC3AF36-5BB3-4988-8B9D-87B8615C3B93}");

  // Lends what ReadRows would deliver for the rectangle (0, 0, width, height): *colourRows and
  // *maskRows become arrays of `height` pointers to rows of `width` pixels or more, in the order
  // and layout of ReadRows. Nobody writes to them. Several may point to one row: a picture without
  // transparent places can lend one mask row of zeros for all.
  //
  // 0: arrays and rows stay there, unchanged, until ReturnRows, and count as delivered. 1: the
  // source does not lend now, as the rows are not in its memory or it has been told to stop; it is
  // asked with ReadRows instead, and so it is after a failure.
  //
  // Called on the thread that pulls, as ReadRows is. Several threads may then read the rows.
  virtual HRESULT STDMETHODCALLTYPE LendRows(int width, int height, const BYTE* const** colourRows,
                                             const BYTE* const** maskRows) = 0;
  // The rows are given back: once for each LendRows that answered 0, on the same thread, before the
  // pull ends that they were lent for. Until then it asks this source for no other rows.
  virtual HRESULT STDMETHODCALLTYPE ReturnRows() = 0;

 protected:
  ~IAnimRowLender() = default;
};
