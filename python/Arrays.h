// NumPy arrays as pictures, and pictures as NumPy arrays.
#pragma once

#include <pybind11/numpy.h>

#include <memory>

#include "host/PackedPixels.h"
#include "picture/MemoryPicture.h"

namespace python {

using ByteArray = pybind11::array_t<BYTE>;

// The pixels of an array for as long as it lives. Copies it first where the pixels of a row do not
// lie side by side. A TypeError or ValueError that says what is wanted for any other array.
struct ArrayPixels {
  explicit ArrayPixels(const pybind11::array& given);

  pybind11::array array;
  host::PackedRows<const BYTE> rows;
};

// A new array of all of a picture: red, green, blue and, with 4 channels, alpha; null `mask` rows
// are opaque.
ByteArray ArrayOf(const imageio::Rows& rows, host::Size size, int channels);

// A picture of the library made of an array, with a mask where that has alpha.
std::unique_ptr<MemoryPicture> PictureOf(const ArrayPixels& pixels);

}  // namespace python
