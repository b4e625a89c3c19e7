// A few pixels of a picture, for who wants to show what lies in it.
#pragma once

#include <unknwn.h>

#include "base/Guid.h"

// What a filter may offer besides its four interfaces, for a dialog that shows a histogram.
struct IAnimPictureSample : IUnknown {
  static constexpr IID kIid = base::Guid("{7A1D5E0C-93B4-4E62-8F0A-52C6D47B19E3}");

  // Copies pixels (3 bytes: blue, green, red) of the picture that came from the source with the
  // last pulls, spread evenly over it; those where nothing is there are left out. At most `most`,
  // and 16,384 at any rate; *count becomes how many, 0 before the first pull. Any thread, at any
  // time; never waits for a pull.
  virtual HRESULT STDMETHODCALLTYPE ReadSample(BYTE* pixels, int most, int* count) = 0;

 protected:
  ~IAnimPictureSample() = default;
};
