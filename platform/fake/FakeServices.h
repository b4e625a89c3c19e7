// Services for tests: a registry in memory, a desktop that remembers, and services that fail on
// demand.
#pragma once

#include <map>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "platform/RegistryKey.h"
#include "platform/Services.h"

namespace platform {

// A registry that ends with the object. Thread-safe.
class MemoryRegistry final : public Registry {
 public:
  std::optional<std::string> Read(Hive hive, std::string_view key) override;
  bool Exists(Hive hive, std::string_view key) override;
  RegistryResult Write(Hive hive, std::string_view key, std::string_view value) override;
  RegistryResult WriteNamed(Hive hive, std::string_view key, const char* name,
                            std::string_view value) override;
  RegistryResult WriteShared(Hive hive, std::string_view key, std::string_view value,
                             bool keepExisting) override;
  RegistryResult DeleteTree(Hive hive, std::string_view key) override;
  RegistryResult DeleteEmpty(Hive hive, std::string_view key) override;
  std::vector<std::string> Subkeys(Hive hive, std::string_view key) override;
  void* NewOpenDescriptor() override { return nullptr; }

  // Every key with its value, as lines "HIVE\key = value" and "HIVE\key [name] = value" in
  // ascending order, to compare two states.
  std::vector<std::string> Snapshot() const;

 private:
  struct Key {
    std::optional<std::string> value;
    std::map<std::string, std::string> named;
    std::map<std::string, Key, NameLess> below;
  };
  Key* Find(Hive hive, const KeyPath& path);

  mutable std::mutex lock;
  std::map<Hive, Key> roots;
};

// Says at which call a service fails: the n-th, counted from 1; never with 0.
class FailingCall {
 public:
  explicit FailingCall(int number = 0) : failAt(number) {}
  bool IsNow() { return ++count == failAt; }
  int Count() const { return count; }

 private:
  int failAt;
  int count = 0;
};

// Passes every call on but the failing one: that reads nothing, or is refused with `result`. Calls
// of all kinds count.
class FailingRegistry final : public Registry {
 public:
  FailingRegistry(Registry& registry, int failAt, RegistryResult result = RegistryResult::Denied)
      : inner(registry), failing(failAt), refusal(result) {}
  int CallCount() const { return failing.Count(); }

  std::optional<std::string> Read(Hive hive, std::string_view key) override;
  bool Exists(Hive hive, std::string_view key) override;
  RegistryResult Write(Hive hive, std::string_view key, std::string_view value) override;
  RegistryResult WriteNamed(Hive hive, std::string_view key, const char* name,
                            std::string_view value) override;
  RegistryResult WriteShared(Hive hive, std::string_view key, std::string_view value,
                             bool keepExisting) override;
  RegistryResult DeleteTree(Hive hive, std::string_view key) override;
  RegistryResult DeleteEmpty(Hive hive, std::string_view key) override;
  std::vector<std::string> Subkeys(Hive hive, std::string_view key) override;
  void* NewOpenDescriptor() override { return nullptr; }

 private:
  Registry& inner;
  FailingCall failing;
  RegistryResult refusal;
};

// Passes calls on to the real service. The failing replacement gives the reason `kReason`: with
// `writeFirst` after it let the caller write, so that what was written is lost, else before.
class FailingFiles final : public Files {
 public:
  static constexpr char kReason[] = "No space left on device";

  FailingFiles(Files& files, int failAt, bool writeFirst = false)
      : inner(files), failing(failAt), afterWriting(writeFirst) {}
  int CallCount() const { return failing.Count(); }

  std::optional<std::string> Replace(const std::filesystem::path& target,
                                     const WriteFile& write) override;
  std::optional<std::string> Move(const std::filesystem::path& finished,
                                  const std::filesystem::path& target) override;
  std::unique_ptr<GrowingFile> OpenGrowing(const std::filesystem::path& file,
                                           bool writeThrough) override;
  bool CanReadAndWrite(const std::filesystem::path& path) override;
  std::filesystem::path ModuleOf(const void* address) override;

 private:
  Files& inner;
  FailingCall failing;
  bool afterWriting;
};

// The real process but for what the test sets.
class FakeProcess final : public Process {
 public:
  std::uint32_t ProcessId() override;
  std::uint32_t ThreadId() override;
  LocalTime Now() override;
  std::filesystem::path Program() override;
  std::filesystem::path TemporaryFolder() override;
  std::filesystem::path StateFolder() override;

  std::optional<LocalTime> now;
  std::filesystem::path program, temporaryFolder, stateFolder;  // the real ones where empty
};

// Remembers what it was asked to show. Thread-safe; read the lists when the other threads are done.
class RecordingDesktop final : public Desktop {
 public:
  struct Message {
    std::string text;
    std::string caption;
    bool operator==(const Message&) const = default;
  };
  struct Tone {
    int hertz;
    int milliseconds;
    bool operator==(const Tone&) const = default;
  };

  void ShowMessage(const std::string& text, const std::string& caption) override;
  int Ask(const std::string& text, const std::string& caption, unsigned style) override;
  void Beep(int hertz, int milliseconds) override;
  void WriteDebugOutput(const std::string& text) override;

  std::vector<Message> messages;
  std::vector<Tone> tones;
  std::vector<std::string> debugOutput;
  int answer = 1;  // to what is asked

 private:
  std::mutex lock;
};

// A terminal of any width whose user interrupts when the test says so.
class FakeTerminal final : public Terminal {
 public:
  std::vector<std::string> Arguments(int argc, char** argv) override;
  void Start(std::ostream&, std::ostream&) override {}
  int ErrorWidth() override { return width; }
  std::optional<std::size_t> ReadInput(void* to, std::size_t count) override;
  std::optional<std::string> WriteOutput(std::string_view bytes) override;
  void OnInterrupt(void (*wanted)()) override { handler = wanted; }

  // Does nothing when nobody waits for it.
  void Interrupt() const;

  int width = 0;
  std::string input;   // what is still to be read
  std::string output;  // what was written

 private:
  void (*handler)() = nullptr;
};

// Modules that are named by the test instead of being loaded.
class FakeModules final : public Modules {
 public:
  std::optional<std::string> Call(const std::filesystem::path& module, const char* name,
                                  int& status) override;
  void Keep(const void*) override { ++kept; }

  int kept = 0;
  // What each module answers, whatever function is called; a module that is missing here does not
  // load.
  std::map<std::filesystem::path, int> answers;
  // The calls so far, those that failed included.
  std::vector<std::pair<std::filesystem::path, std::string>> calls;
};

// The fonts that a test names, and no others.
class FakeFonts final : public Fonts {
 public:
  const std::vector<FontFace>& Faces() override { return faces; }
  const std::string& DefaultFamily() override { return defaultFamily; }

  std::vector<FontFace> faces;
  std::string defaultFamily;
};

// Passes every call on but the failing one, which maps nothing.
class FailingSharedMemory final : public SharedMemory {
 public:
  FailingSharedMemory(SharedMemory& memory, int failAt) : inner(memory), failing(failAt) {}
  int CallCount() const { return failing.Count(); }

  std::unique_ptr<SharedBlock> Map(const std::string& name, std::size_t bytes) override;

 private:
  SharedMemory& inner;
  FailingCall failing;
};

// All of them together, with the system's files, profiles, mutexes and shared memory.
// `ScopedServices scope(fakes.services);`
struct FakeServices {
  FakeServices();
  FakeServices(const FakeServices&) = delete;
  FakeServices& operator=(const FakeServices&) = delete;

  MemoryRegistry registry;
  FakeProcess process;
  RecordingDesktop desktop;
  FakeTerminal terminal;
  FakeModules modules;
  FakeFonts fonts;
  // Any of these may be pointed at a failing service.
  Services services;
};

}  // namespace platform
