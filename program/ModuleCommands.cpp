// fxbox register and unregister: modules of third parties that bring filter classes.
#include <array>
#include <cstdio>
#include <filesystem>
#include <memory>

#include "platform/PathText.h"
#include "platform/Services.h"
#include "program/Commands.h"
#include "program/Messages.h"

namespace program {
namespace {

namespace fs = std::filesystem;
using platform::Hive;

constexpr char kRegister[] = "DllRegisterServer";
constexpr char kUnregister[] = "DllUnregisterServer";

// Below which key classes lie: those of the machine and those of the user.
struct ClassesRoot {
  Hive hive;
  const char* prefix;
};
constexpr ClassesRoot kRoots[] = {{Hive::ClassesRoot, ""},
                                  {Hive::CurrentUser, "Software\\Classes\\"}};

fs::path Canonical(const fs::path& path) {
  std::error_code error;
  const fs::path whole = fs::weakly_canonical(fs::absolute(path, error), error);
  return error ? path : whole;
}

// Deletes a class with the names that lead to it.
void ForgetClass(const ClassesRoot& root, const std::string& classId) {
  platform::Registry& registry = *platform::CurrentServices().registry;
  const std::string prefix = root.prefix;
  const std::string key = prefix + "CLSID\\" + classId;
  for (const char* name : {"ProgID", "VersionIndependentProgID"}) {
    const std::string progId = registry.Read(root.hive, key + "\\" + name).value_or("");
    const bool leadsHere =
        !progId.empty() && registry.Read(root.hive, prefix + progId + "\\CLSID") == classId;
    if (leadsHere) registry.DeleteTree(root.hive, prefix + progId);
  }
  if (registry.DeleteTree(root.hive, key) != platform::RegistryResult::Done) {
    throw FileError(classId, "the class cannot be removed from the registry");
  }
}

// What a module that is gone has left in the registry.
int ForgetModule(const std::string& name) {
  platform::Registry& registry = *platform::CurrentServices().registry;
  const fs::path module = Canonical(PathOf(name));
  int found = 0;
  for (const ClassesRoot& root : kRoots) {
    const std::string classes = std::string(root.prefix) + "CLSID";
    for (const std::string& classId : registry.Subkeys(root.hive, classes)) {
      const auto server = registry.Read(root.hive, classes + "\\" + classId + "\\InProcServer32");
      if (!server || Canonical(platform::PathFromText(*server)) != module) continue;
      ForgetClass(root, classId);
      ++found;
    }
  }
  if (found == 0)
    throw FileError(name, "there is no such file, and none of its classes is registered");
  return kDone;
}

int CallModule(const std::string& name, const char* function) {
  const fs::path module = PathOf(name);
  std::error_code ignored;
  if (!fs::exists(module, ignored)) {
    if (function == kUnregister) return ForgetModule(name);
    throw FileError(name, "there is no such file");
  }
  int status = 0;
  if (const auto failure = platform::CurrentServices().modules->Call(module, function, status)) {
    throw FileError(name, *failure);
  }
  if (status >= 0) return kDone;
  std::array<char, 16> code;
  std::snprintf(code.data(), code.size(), "0x%08x", static_cast<unsigned>(status));
  throw FileError(name, std::string(function) + " failed with " + code.data());
}

void AddModuleCommand(const Command& program, const char* name, const char* help,
                      const char* function) {
  const auto module = std::make_shared<std::string>();
  const Command command = program.Add(name, help);
  command.Take("MODULE", *module, "Shared object or DLL").Required();
  command.Footer(std::string("Example:\n  fxbox ") + name + " ./libmyfilters.so");
  command.Runs([module, function] { return CallModule(*module, function); });
}

}  // namespace

void AddModuleCommands(const Command& program) {
  AddModuleCommand(program, "register",
                   "Add the filters of another module for this user or machine", kRegister);
  AddModuleCommand(program, "unregister",
                   "Remove the filters of another module, also of one that is gone", kUnregister);
}

}  // namespace program
