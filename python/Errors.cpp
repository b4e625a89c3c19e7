#include "python/Errors.h"

#include <pybind11/pybind11.h>

#include <stdexcept>

#include "host/ChainCheck.h"
#include "storage/KvErrors.h"

namespace python {
namespace {

namespace py = pybind11;

py::object ClassOf(const char* name) {
  return py::module_::import("fxbox._errors").attr(name);
}

template <class... Arguments>
void Raise(const char* name, const Arguments&... arguments) {
  const py::object type = ClassOf(name);
  PyErr_SetObject(type.ptr(), type(arguments...).ptr());
}

}  // namespace

void TranslateError(std::exception_ptr thrown) {
  if (!thrown) return;
  try {
    std::rethrow_exception(thrown);
  } catch (const Cancelled& error) {
    Raise("Cancelled", error.what());
  } catch (const host::ChainError& error) {
    const host::ChainPlace& place = error.Place();
    Raise("ChainError", error.what(), place.item, place.filter, place.line, place.character);
  } catch (const KvStreamException& error) {
    Raise("Error", error.Message());
  } catch (const py::builtin_exception&) {
    throw;
  } catch (const std::invalid_argument& error) {
    PyErr_SetString(PyExc_ValueError, error.what());
  } catch (const std::runtime_error& error) {
    Raise("Error", error.what());
  }
}

}  // namespace python
