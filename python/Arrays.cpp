#include "python/Arrays.h"

#include <string>

namespace python {
namespace {

namespace py = pybind11;

std::string ShapeText(const py::array& array) {
  return py::str(array.attr("shape")).cast<std::string>();
}

void CheckShape(const py::array& array) {
  if (array.dtype().kind() != 'u' || array.itemsize() != 1) {
    throw py::type_error("a picture is an array of uint8, not of " +
                         py::str(array.dtype()).cast<std::string>() +
                         "; see astype and what your values range over");
  }
  const bool fits = array.ndim() == 3 && (array.shape(2) == 3 || array.shape(2) == 4);
  if (!fits) {
    throw py::value_error(
        "a picture has the shape (height, width, 3 or 4), not " + ShapeText(array) +
        (array.ndim() == 2 ? "; for grey use numpy.stack([a] * 3, axis=-1)" : ""));
  }
  constexpr py::ssize_t kLongest = 0x7FFFFFFF;
  const bool isEmpty = array.shape(0) == 0 || array.shape(1) == 0;
  if (isEmpty || array.shape(0) > kLongest || array.shape(1) > kLongest) {
    throw py::value_error("a picture has pixels; this one has the shape " + ShapeText(array));
  }
}

bool HasPackedRows(const py::array& array) {
  return array.strides(2) == 1 && array.strides(1) == array.shape(2);
}

}  // namespace

ArrayPixels::ArrayPixels(const py::array& given) : array(given) {
  CheckShape(given);
  if (!HasPackedRows(given)) {
    array = py::array_t<BYTE, py::array::c_style | py::array::forcecast>::ensure(given);
    if (!array) throw py::error_already_set();
  }
  rows = {static_cast<const BYTE*>(array.data()),
          array.strides(0),
          {static_cast<int>(array.shape(1)), static_cast<int>(array.shape(0))},
          static_cast<int>(array.shape(2))};
}

ByteArray ArrayOf(const imageio::Rows& rows, host::Size size, int channels) {
  ByteArray array({size.height, size.width, channels});
  host::Pack(rows, {array.mutable_data(), array.strides(0), size, channels});
  return array;
}

std::unique_ptr<MemoryPicture> PictureOf(const ArrayPixels& pixels) {
  const auto [width, height] = pixels.rows.size;
  auto picture =
      std::make_unique<MemoryPicture>("array", width, height, true, pixels.rows.channels == 4);
  if (!picture->IsValid()) throw std::bad_alloc();
  host::Unpack(pixels.rows, {picture->ColourRows(), picture->MaskRows()});
  return picture;
}

}  // namespace python
