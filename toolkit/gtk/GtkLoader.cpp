// Loads the module with GTK, on the first call for a window.
#include <dlfcn.h>
#include <winuser.h>

#include <cstdlib>
#include <filesystem>
#include <vector>

#include "core/DataXferObj.h"
#include "toolkit/gtk/GtkModule.h"

namespace toolkit {
namespace {

// Our module and the older version of the toolkit cannot live in one process: the second one ends
// it.
bool HasGtk3() {
  void* const library = dlopen("libgtk-3.so.0", RTLD_NOLOAD | RTLD_NOW);
  if (library) dlclose(library);
  return library != nullptr;
}

// The folder of the file that this code was loaded from: the library's, or the program's.
std::filesystem::path OwnFolder() {
  Dl_info info = {};
  if (!dladdr(reinterpret_cast<void*>(&OwnFolder), &info) || !info.dli_fname) return {};
  std::error_code error;
  const auto file = std::filesystem::canonical(info.dli_fname, error);
  return error ? std::filesystem::path() : file.parent_path();
}

// FXBOX_GTK_MODULE names the module's file, for trees that are not installed.
std::vector<std::string> Candidates() {
  if (const char* const given = std::getenv("FXBOX_GTK_MODULE")) return {given};
  std::vector<std::string> files;
  if (const auto own = OwnFolder(); !own.empty()) files.push_back(own / kGtkModuleName);
  files.emplace_back(kGtkModuleName);
  return files;
}

// The module stays loaded for good: GTK cannot be unloaded.
void* LoadModule(std::string& reason) {
  for (const std::string& file : Candidates()) {
    if (void* const module = dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL)) return module;
    const char* const error = dlerror();
    reason = error ? error : "the module with GTK cannot be loaded";
  }
  return nullptr;
}

IDataObject* NewTransfer() {
  return new CDataXferObj;
}

}  // namespace

Backend* OpenSystemBackend(std::string& reason) {
  if (HasGtk3()) {
    reason = "the program uses GTK 3, beside which GTK 4 cannot run";
    return nullptr;
  }
  void* const module = LoadModule(reason);
  if (!module) return nullptr;
  const auto open = reinterpret_cast<OpenGtk>(dlsym(module, kOpenGtkName));
  if (!open) {
    reason = "the module with GTK is of another version";
    return nullptr;
  }
  reason.clear();
  return open({RegisterClipboardFormatA, GetClipboardFormatNameA, NewTransfer}, reason);
}

}  // namespace toolkit
