// Machine-readable output.
#pragma once

#include <iostream>
#include <nlohmann/json.hpp>

#include "base/CodePage.h"

namespace program {

using Json = nlohmann::ordered_json;

// Of every output that is an object of its own. It grows with every change of the keys, and then
// resources/schemas/ has a file more for that output; arrays have their version there alone.
constexpr int kJsonVersion = 1;

// Texts of the library are in its code page; null stands for a text that there is not.
inline Json JsonText(const char* codePageText) {
  return codePageText ? Json(base::ToUtf8(codePageText)) : Json(nullptr);
}

// A file name may hold bytes that are no UTF-8: they are replaced.
inline void PrintJson(const Json& value) {
  std::cout << value.dump(2, ' ', false, Json::error_handler_t::replace) << '\n';
}

}  // namespace program
