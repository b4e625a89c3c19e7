// The parts of the module, each of which adds its functions and classes.
#pragma once

#include <pybind11/pybind11.h>

namespace python {

void AddRender(pybind11::module_& module);
void AddShared(pybind11::module_& module);
void AddBox(pybind11::module_& module);

}  // namespace python
