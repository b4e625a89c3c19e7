// Box: pictures in a compound file or a folder, by name.
#include <pybind11/stl.h>

#include <optional>

#include "base/CodePage.h"
#include "host/Texts.h"
#include "platform/StoragePath.h"
#include "program/BoxFile.h"
#include "program/BoxPictures.h"
#include "python/Arrays.h"
#include "python/Parts.h"
#include "storage/PictureNames.h"

namespace py = pybind11;

namespace python {
namespace {

using program::BoxAccess;
using program::BoxEntry;
using program::BoxFile;

// Each operation opens the box and closes it: nothing is locked between them, and every change is
// on the disk when it returns.
class Box {
 public:
  explicit Box(const py::object& path)
      : name(py::module_::import("os").attr("fspath")(path).cast<std::string>()) {}

  const std::string& Name() const { return name; }

  std::vector<std::string> Names() const {
    BoxFile box(name, BoxAccess::Read);
    std::vector<std::string> names;
    for (const BoxEntry& entry : box.Entries()) names.push_back(base::ToUtf8(entry.name));
    return names;
  }

  bool Contains(const std::string& picture) const {
    return !BoxFile(name, BoxAccess::Read).Find(host::ChainTextOf(picture)).empty();
  }

  ByteArray Read(const std::string& picture) const {
    const program::PictureBytes file = FileOf(picture);
    imageio::ImageReader reader(file.data(), file.size());
    const imageio::ImageInfo& info = reader.Info();
    MemoryPicture decoded("decoded", info.width, info.height, true, info.hasMask);
    if (!decoded.IsValid()) throw std::bad_alloc();
    const imageio::Rows rows{decoded.ColourRows(), decoded.MaskRows()};
    {
      const py::gil_scoped_release release;
      reader.Read(rows);
    }
    return ArrayOf(rows, {info.width, info.height}, info.hasMask ? 4 : 3);
  }

  py::bytes ReadFile(const std::string& picture) const {
    const program::PictureBytes file = FileOf(picture);
    return {reinterpret_cast<const char*>(file.data()), file.size()};
  }

  void Add(const std::string& picture, const py::array& array) const {
    const ArrayPixels pixels(array);
    const auto content = PictureOf(pixels);
    const std::string title = CheckedTitle(picture);
    BoxFile box(name, BoxAccess::Make);
    const unsigned stored =
        box.Pictures().AddFile(title.c_str(), DibOf(content->Image(), 24, *content),
                               DibOf(content->Mask(), -8, *content), 0, 0, false, false, true);
    if (stored == 0) box.FailPicture(title, "the picture cannot be stored");
    // Of those that had the name one is gone by now.
    std::vector<BoxEntry> others = box.SameTitle(title);
    std::erase_if(others, [](const BoxEntry& entry) {
      return entry.place == picbox::kPictures && !entry.native;
    });
    box.Delete(others, true);
    box.Keep();
  }

  void Delete(const std::string& picture) const {
    BoxFile box(name, BoxAccess::Change);
    box.Delete({box.Need(host::ChainTextOf(picture))}, false);
    box.Keep();
  }

  std::string Note(const std::string& picture) const {
    BoxFile box(name, BoxAccess::Read);
    const BoxEntry entry = box.Need(host::ChainTextOf(picture));
    return base::ToUtf8(box.Pictures().GetImageInfo(entry.Title().c_str(), nullptr).ToStdString());
  }

  void SetNote(const std::string& picture, const std::string& text) const {
    BoxFile box(name, BoxAccess::Change);
    const BoxEntry entry = box.Need(host::ChainTextOf(picture));
    const bool isKept = box.Pictures().WriteImageInfo(entry.Title().c_str(),
                                                      host::ChainTextOf(text).c_str(), nullptr);
    if (!isKept) box.FailPicture(entry.name, "the note cannot be written");
    box.Keep();
  }

 private:
  program::PictureBytes FileOf(const std::string& picture) const {
    BoxFile box(name, BoxAccess::Read);
    return program::PictureFileOf(box, box.Need(host::ChainTextOf(picture)), imageio::Format::Png);
  }

  std::string CheckedTitle(const std::string& picture) const {
    const std::string title = picbox::CleanName(host::ChainTextOf(picture));
    if (!picbox::CanBeName(title) || title.front() == '.') {
      throw py::value_error("no picture can have the name " + picture);
    }
    return title;
  }

  static std::span<const std::uint8_t> DibOf(const BYTE* dib, int bits, const MemoryPicture& of) {
    if (!dib) return {};
    const auto rows = static_cast<std::size_t>(base::DibStride(bits, of.Width()) * of.Height());
    return {dib, base::kDibHeaderBytes + base::DibColourTableBytes(bits) + rows};
  }

  std::string name;
};

}  // namespace

void AddBox(py::module_& module) {
  py::class_<Box>(module, "Box",
                  "Pictures by name in one file, or in a folder when the path ends in \"/\".\n\n"
                  "    box = fxbox.Box(\"shots.box\")\n"
                  "    box[\"sea\"] = array          makes the box where there is none\n"
                  "    box[\"sea\"], \"sea\" in box, list(box), len(box), del box[\"sea\"]\n\n"
                  "Every change is on the disk, or not made at all, when the call returns. Names "
                  "have at most 31 letters in a file.")
      .def(py::init<const py::object&>(), py::arg("path"))
      .def_property_readonly("path", &Box::Name)
      .def("names", &Box::Names, "The names of all pictures.")
      .def("read", &Box::Read, py::arg("name"), "The picture as an array.")
      .def("read_file", &Box::ReadFile, py::arg("name"),
           "The bytes of a picture file: as they are stored, else as PNG.")
      .def("add", &Box::Add, py::arg("name"), py::arg("picture"),
           "Stores an array under a name, in the place of what has it.")
      .def("delete", &Box::Delete, py::arg("name"), "Deletes a picture with its note.")
      .def("note", &Box::Note, py::arg("name"), "The text that is kept with a picture.")
      .def("set_note", &Box::SetNote, py::arg("name"), py::arg("text"))
      .def("__getitem__", &Box::Read, py::arg("name"))
      .def("__setitem__", &Box::Add, py::arg("name"), py::arg("picture"))
      .def("__delitem__", &Box::Delete, py::arg("name"))
      .def("__contains__", &Box::Contains, py::arg("name"))
      .def("__len__", [](const Box& box) { return box.Names().size(); })
      .def("__iter__", [](const Box& box) { return py::iter(py::cast(box.Names())); })
      .def("__repr__", [](const Box& box) { return "<fxbox.Box " + box.Name() + ">"; });
}

}  // namespace python
