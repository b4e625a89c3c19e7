// Dialogs that are the system's own, and pictures of windows.
#pragma once

#include <windows.h>

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "toolkit/Geometry.h"

namespace toolkit {

std::optional<Colour> RunColourDialog(HWND owner, Colour start);
std::optional<std::filesystem::path> RunFileDialog(HWND owner, const std::string& title,
                                                   bool toSave, const std::filesystem::path& start,
                                                   const std::vector<std::string>& patterns);
// What the screen shows of the window's client area, as PNG.
bool SaveWindowImage(HWND window, const std::filesystem::path& file);

}  // namespace toolkit
