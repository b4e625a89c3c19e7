// SharedPicture: pictures that several processes see at once.
#include <cstring>
#include <memory>
#include <vector>

#include "host/Texts.h"
#include "picture/SharedPicture.h"
#include "python/Arrays.h"
#include "python/Parts.h"

namespace py = pybind11;

namespace python {
namespace {

using SharedPointer = std::shared_ptr<SharedPicture>;

void CheckShape(const SharedPicture& picture, const std::string& id) {
  const auto bits = [](const BYTE* dib) {
    base::DibHeader header;
    std::memcpy(&header, dib, sizeof header);
    return header.Bits();
  };
  if (!picture.IsValid() || bits(picture.Image()) != base::kColourBits) {
    throw std::runtime_error("nobody shares a picture under the id " + id);
  }
}

SharedPointer Attach(const std::string& id) {
  auto picture = std::make_shared<SharedPicture>(host::ChainTextOf(id).c_str());
  CheckShape(*picture, id);
  return picture;
}

SharedPointer Share(const std::string& id, const py::array& array) {
  const ArrayPixels pixels(array);
  const auto content = PictureOf(pixels);
  const int width = content->Width();
  auto picture = std::make_shared<SharedPicture>(
      host::ChainTextOf(id).c_str(), "", content->Image(), content->Mask(), width, width, 0, 0);
  if (!picture->IsValid()) throw std::runtime_error("the picture cannot be shared as " + id);
  if (!picture->IsFirst()) throw std::runtime_error("somebody shares a picture as " + id);
  return picture;
}

// Lives as long as any view of it.
ByteArray ViewOf(const std::vector<py::ssize_t>& shape, const std::vector<py::ssize_t>& steps,
                 BYTE* first, const SharedPointer& picture) {
  const py::capsule owner(new SharedPointer(picture),
                          [](void* held) { delete static_cast<SharedPointer*>(held); });
  return ByteArray(shape, steps, first, owner);
}

// Rows lie bottom up, and blue first: red of the top row is where the view begins.
ByteArray Colours(const SharedPointer& picture) {
  const int width = picture->Width(), height = picture->Height();
  BYTE** const rows = picture->ColourRows();
  const std::ptrdiff_t step = height > 1 ? rows[0] - rows[1] : 3 * width;
  return ViewOf({height, width, 3}, {step, 3, -1}, rows[height - 1] + 2, picture);
}

py::object Mask(const SharedPointer& picture) {
  if (!picture->MaskRows()) return py::none();
  const int width = picture->Width(), height = picture->Height();
  BYTE** const rows = picture->MaskRows();
  const std::ptrdiff_t step = height > 1 ? rows[0] - rows[1] : width;
  return ViewOf({height, width}, {step, 1}, rows[height - 1], picture);
}

ByteArray Copy(const SharedPointer& picture) {
  return ArrayOf({picture->ColourRows(), picture->MaskRows()},
                 {picture->Width(), picture->Height()}, picture->MaskRows() ? 4 : 3);
}

}  // namespace

void AddShared(py::module_& module) {
  py::class_<SharedPicture, SharedPointer>(
      module, "SharedPicture",
      "A picture that several processes see and change at once; they agree on its id alone.\n\n"
      "    SharedPicture(\"trip\", array)   shares a copy of the array\n"
      "    SharedPicture(\"trip\")          sees what somebody shares\n\n"
      "It lives until the last process lets go of it, views included. Nothing guards the pixels.")
      .def(py::init(&Share), py::arg("id"), py::arg("picture"))
      .def(py::init(&Attach), py::arg("id"))
      .def_property_readonly("pixels", &Colours,
                             "A view of shape (height, width, 3): what is written into it, all "
                             "processes see.")
      .def_property_readonly("mask", &Mask,
                             "A view of shape (height, width), 0 for opaque and 255 for nothing "
                             "there; None without a mask.")
      .def("copy", &Copy,
           "A new array of the picture, with alpha as the fourth channel where it has a mask.");
}

}  // namespace python
