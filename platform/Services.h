// What the library asks of the system, one abstract class a service. Everything else in the tree is
// portable; the real services lie in platform/linux and platform/windows, fakes in platform/fake.
#pragma once

#include <cstddef>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/Export.h"

namespace platform {

// Root keys of the registry.
enum class Hive { ClassesRoot, LocalMachine, CurrentUser, Users };

enum class RegistryResult { Done, NotFound, Denied, Failed };

// A tree of keys of which each holds one text, its default value. Paths are joined with a backslash and
// compared without case; texts are in the system's code page. Any thread, any process at the same time.
class Registry {
 public:
  // Nothing when the key is missing or cannot be read. A key without a value reads as an empty text.
  virtual std::optional<std::string> Read(Hive hive, std::string_view key) = 0;
  // Creates the key and those above it as needed. Another process sees the old text or the new one.
  virtual RegistryResult Write(Hive hive, std::string_view key, std::string_view value) = 0;
  // Deletes the key with everything below it.
  virtual RegistryResult DeleteTree(Hive hive, std::string_view key) = 0;
  // Names of the keys directly below, in ascending order without case; empty when there is none.
  virtual std::vector<std::string> Subkeys(Hive hive, std::string_view key) = 0;

 protected:
  ~Registry() = default;
};

// Files that appear whole or not at all.
class Files {
 public:
  // Calls `write` with the path of a new, empty file beside `target`; on true the file takes the place of
  // `target` in one step, on false or an exception it is deleted and `target` stays as it was. Gives the
  // reason when the file cannot be made, moved, or `write` said false (then an empty text).
  using WriteFile = std::function<bool(const std::filesystem::path& temporary)>;
  virtual std::optional<std::string> Replace(const std::filesystem::path& target,
                                             const WriteFile& write) = 0;
  // Full path of the shared object, DLL or program that holds this address; empty when there is none.
  virtual std::filesystem::path ModuleOf(const void* address) = 0;

 protected:
  ~Files() = default;
};

// The person at the screen.
class Desktop {
 public:
  // Shows a text and waits until it is dismissed. On a system without a desktop it goes to the standard
  // error output and does not wait.
  virtual void ShowMessage(const std::string& text, const std::string& caption) = 0;
  virtual void Beep(int hertz, int milliseconds) = 0;
  // A line for whoever watches the debugger output.
  virtual void WriteDebugOutput(const std::string& text) = 0;

 protected:
  ~Desktop() = default;
};

// The terminal that a command-line program runs in.
class Terminal {
 public:
  // The arguments of the program in UTF-8, without its name.
  virtual std::vector<std::string> Arguments(int argc, char** argv) = 0;
  // Width in characters when standard error is a terminal, 0 when it is not.
  virtual int ErrorWidth() = 0;
  // From now on `handler` runs instead of the program's end when the user interrupts it. It is called on
  // a thread of its own or inside a signal handler and may only set flags.
  virtual void OnInterrupt(void (*handler)()) = 0;

 protected:
  ~Terminal() = default;
};

// A loaded module of a third party, for registration.
class Modules {
 public:
  // Loads the module, calls its exported function `name` (no arguments, gives a status code) and lets go
  // of the module. Gives the reason when the module or the function cannot be had, else stores the status.
  virtual std::optional<std::string> Call(const std::filesystem::path& module, const char* name,
                                          int& status) = 0;

 protected:
  ~Modules() = default;
};

struct Services {
  Registry* registry;
  Files* files;
  Desktop* desktop;
  Terminal* terminal;
  Modules* modules;
};

// The services in force: the system's, until a test puts others in their place.
FXBOX_API const Services& CurrentServices();

// Puts other services in force while it lives; they have to live as long. For tests; not thread-safe.
class FXBOX_API ScopedServices {
 public:
  explicit ScopedServices(const Services& replacement);
  explicit ScopedServices(Services&& temporary) = delete;
  ~ScopedServices();
  ScopedServices(const ScopedServices&) = delete;
  ScopedServices& operator=(const ScopedServices&) = delete;

 private:
  const Services* previous;
};

}  // namespace platform
