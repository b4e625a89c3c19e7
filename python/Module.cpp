// The compiled half of the Python package: pictures, chain texts, filters. The other half, which
// people read, is in fxbox/.
#include <pybind11/pybind11.h>
#include <pybind11/stl.h>

#include "base/CodePage.h"
#include "base/PercentText.h"
#include "core/ChainText.h"
#include "host/ChainCheck.h"
#include "host/FilterFacts.h"
#include "host/Pipeline.h"
#include "host/Texts.h"
#include "python/Errors.h"
#include "python/Parts.h"

namespace py = pybind11;

namespace python {
namespace {

using Pairs = std::vector<std::pair<std::string, std::optional<std::string>>>;

// --- chain texts

std::string Check(const std::string& text) {
  const auto creator = host::MakeCreator();
  return base::ToUtf8(host::CheckChainText({host::ChainTextOf(text)},
                                           host::ListFilters(*creator.Get()), *creator.Get()));
}

Pairs Split(const std::string& text) {
  Pairs items;
  for (const ChainTextItem& item : SplitChainText(host::ChainTextOf(text).c_str(), "(", ")")) {
    items.emplace_back(base::ToUtf8(item.name), base::ToUtf8(item.parameters));
  }
  return items;
}

Pairs SplitKeys(const std::string& text) {
  Pairs parameters;
  for (const host::ParameterItem& item : host::SplitParameters(text)) {
    if (item.whole.empty()) continue;
    std::optional<std::string> value;
    if (item.value.data()) value = item.value;
    parameters.emplace_back(item.key, value);
  }
  return parameters;
}

std::pair<int, int> SizeOf(const std::string& text, int width, int height) {
  if (width < 1 || height < 1) throw py::value_error("a picture has at least one pixel");
  const auto creator = host::MakeCreator();
  const host::Size size{width, height};
  host::Pipeline pipeline(*creator.Get(), host::MakeBlankSource(size, size));
  pipeline.SetText({host::CheckChainText({host::ChainTextOf(text)},
                                         host::ListFilters(*creator.Get()), *creator.Get())});
  const host::Size result = pipeline.Settle();
  return {result.width, result.height};
}

// --- filters

std::vector<host::FilterFacts> Filters() {
  const auto creator = host::MakeCreator();
  std::vector<host::FilterFacts> all;
  for (const host::FilterEntry& entry : host::ListFilters(*creator.Get())) {
    all.push_back(host::FactsOf(entry, *creator.Get()));
  }
  return all;
}

std::optional<double> Limit(const host::KeyFacts& key, double limit) {
  return host::HasRange(key) ? std::optional(limit) : std::nullopt;
}

const host::KeyFacts* KeyOf(const host::FilterFacts& filter, const std::string& name) {
  for (const host::KeyFacts& key : filter.keys) {
    if (key.key == name) return &key;
  }
  return nullptr;
}

void AddFilters(py::module_& module) {
  py::class_<host::KeyFacts>(module, "Key", "A key of a filter's parameter text.")
      .def_readonly("name", &host::KeyFacts::key)
      .def_readonly("kind", &host::KeyFacts::kind,
                    "\"whole number\", \"number\", \"0 or 1\", \"hexadecimal\" or \"text\".")
      .def_readonly("default", &host::KeyFacts::defaultValue,
                    "As a new filter prints it; None where it prints nothing.")
      .def_property_readonly(
          "least", [](const host::KeyFacts& key) { return Limit(key, key.least); },
          "The range that dialogs offer, None for a text; the library takes any number.")
      .def_property_readonly("greatest",
                             [](const host::KeyFacts& key) { return Limit(key, key.greatest); })
      .def_readonly("gloss", &host::KeyFacts::gloss, "What it means, in a few words.")
      .def("__repr__", [](const host::KeyFacts& key) { return "<fxbox.Key " + key.key + ">"; });
  py::class_<host::FilterFacts>(module, "Filter", "What is known of a class of filters.")
      .def_readonly("name", &host::FilterFacts::progId, "Such as \"ZNFilter.Sepia.1\".")
      .def_readonly("gloss", &host::FilterFacts::gloss, "What it does, in a few words.")
      .def_readonly("order", &host::FilterFacts::order,
                    "Its rank: a chain that sorts places lower ones first.")
      .def_readonly("keys", &host::FilterFacts::keys)
      .def_readonly("example", &host::FilterFacts::example, "A chain text that shows something.")
      .def_readonly("preview", &host::FilterFacts::preview,
                    "How far a preview shows the full result: \"exact\", \"scaled\", \"measured\" "
                    "or \"100 %\".")
      .def("key", &KeyOf, py::arg("name"), py::return_value_policy::reference_internal,
           "The key of this name, or None.")
      .def("__repr__",
           [](const host::FilterFacts& filter) { return "<fxbox.Filter " + filter.progId + ">"; });
  module.def("filters", &Filters, "All filters, those of registered modules among them.");
}

}  // namespace
}  // namespace python

PYBIND11_MODULE(_fxbox, module) {
  using namespace python;
  module.doc() = "The compiled half of fxbox; import fxbox instead.";
  module.attr("__version__") = FXBOX_VERSION;
  py::register_exception_translator(TranslateError);
  module.def("check", &Check, py::arg("text"), "The chain text without blanks between its items.");
  module.def("split", &Split, py::arg("text"), "Name and parameters of each item.");
  module.def("split_parameters", &SplitKeys, py::arg("text"), "Key and value of each parameter.");
  module.def("size", &SizeOf, py::arg("text"), py::arg("width"), py::arg("height"));
  module.def(
      "encode_text", [](const std::string& text) { return base::PercentEncode(text); },
      py::arg("text"));
  module.def(
      "decode_text", [](const std::string& text) { return base::PercentDecode(text); },
      py::arg("text"));
  AddFilters(module);
  AddRender(module);
  AddShared(module);
  AddBox(module);
}
