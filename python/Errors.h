// Failures of the library as exceptions of Python.
#pragma once

#include <exception>

namespace python {

// Someone asked to stop.
class Cancelled : public std::exception {
 public:
  const char* what() const noexcept override { return "the work was cancelled"; }
};

// For pybind11; the classes are those of fxbox/_errors.py. Exceptions of pybind11 go through.
void TranslateError(std::exception_ptr thrown);

}  // namespace python
