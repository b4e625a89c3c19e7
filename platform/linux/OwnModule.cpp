#include "platform/OwnModule.h"

#include <dlfcn.h>

#include <cstdlib>
#include <filesystem>
#include <vector>

namespace platform {
namespace {

// Of the file that this code was loaded from: the library's, or the program's.
std::filesystem::path OwnFolder() {
  Dl_info info = {};
  if (!dladdr(reinterpret_cast<void*>(&OwnFolder), &info) || !info.dli_fname) return {};
  std::error_code error;
  const auto file = std::filesystem::canonical(info.dli_fname, error);
  return error ? std::filesystem::path() : file.parent_path();
}

std::vector<std::string> Candidates(const std::string& file) {
  if (const char* const folder = std::getenv("FXBOX_MODULES")) {
    return {(std::filesystem::path(folder) / file).string()};
  }
  const auto own = OwnFolder();
  if (own.empty()) return {file};
  return {(own / file).string(), file};
}

std::string LoaderMessage() {
  const char* const message = dlerror();
  return message ? message : "it cannot be loaded";
}

}  // namespace

std::string OwnModuleFile(const std::string& part) {
  return "libfxbox4-" + part + ".so.4";
}

void* FindInOwnModule(const std::string& part, const char* function, std::string& reason) {
  for (const std::string& candidate : Candidates(OwnModuleFile(part))) {
    void* const module = dlopen(candidate.c_str(), RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE);
    if (void* const found = module ? dlsym(module, function) : nullptr) return found;
    reason = LoaderMessage();
  }
  return nullptr;
}

}  // namespace platform
