#include "platform/OwnModule.h"

#include <windows.h>

#include <cstdlib>
#include <filesystem>

#include "platform/SystemServices.h"
#include "platform/windows/Text.h"

namespace platform {
namespace {

std::filesystem::path Folder() {
  if (const wchar_t* const folder = _wgetenv(L"FXBOX_MODULES")) {
    std::error_code error;
    return std::filesystem::absolute(folder, error);
  }
  return SystemFiles().ModuleOf(reinterpret_cast<const void*>(&Folder)).parent_path();
}

}  // namespace

std::string OwnModuleFile(const std::string& part) {
  return "Fxbox4-" + part + ".dll";
}

// By its full path with backslashes: the file of that name in any other folder is not ours.
void* FindInOwnModule(const std::string& part, const char* function, std::string& reason) {
  std::filesystem::path file = Folder() / OwnModuleFile(part);
  const HMODULE module =
      LoadLibraryExW(file.make_preferred().c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
  const FARPROC found = module ? GetProcAddress(module, function) : nullptr;
  if (!found) reason = ReasonOf(GetLastError());
  return reinterpret_cast<void*>(found);
}

}  // namespace platform
