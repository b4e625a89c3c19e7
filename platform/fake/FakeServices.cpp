#include "platform/fake/FakeServices.h"

#include "platform/SystemServices.h"

namespace platform {
namespace {

template <class Key>
void AppendLines(const Key& key, const std::string& path, std::vector<std::string>& lines) {
  for (const auto& [name, child] : key.below) {
    lines.push_back(path + "\\" + name + " = " + child.value.value_or(""));
    for (const auto& [value, text] : child.named) {
      lines.push_back(path + "\\" + name + " [" + value + "] = " + text);
    }
    AppendLines(child, path + "\\" + name, lines);
  }
}

}  // namespace

MemoryRegistry::Key* MemoryRegistry::Find(Hive hive, const KeyPath& path) {
  Key* key = &roots[hive];
  for (const std::string& name : path) {
    const auto child = key->below.find(name);
    if (child == key->below.end()) return nullptr;
    key = &child->second;
  }
  return key;
}

std::optional<std::string> MemoryRegistry::Read(Hive hive, std::string_view key) {
  const std::lock_guard guard(lock);
  const std::optional<KeyPath> path = SplitKey(key);
  const Key* found = path ? Find(hive, *path) : nullptr;
  return found ? std::optional<std::string>(found->value.value_or("")) : std::nullopt;
}

bool MemoryRegistry::Exists(Hive hive, std::string_view key) {
  const std::lock_guard guard(lock);
  const std::optional<KeyPath> path = SplitKey(key);
  return path && Find(hive, *path);
}

RegistryResult MemoryRegistry::Write(Hive hive, std::string_view key, std::string_view value) {
  const std::lock_guard guard(lock);
  const std::optional<KeyPath> path = SplitKey(key);
  if (!path) return RegistryResult::Failed;
  Key* written = &roots[hive];
  for (const std::string& name : *path) written = &written->below[name];
  written->value = ValueText(value);
  return RegistryResult::Done;
}

RegistryResult MemoryRegistry::WriteNamed(Hive hive, std::string_view key, const char* name,
                                          std::string_view value) {
  const std::lock_guard guard(lock);
  const std::optional<KeyPath> path = SplitKey(key);
  Key* const found = path ? Find(hive, *path) : nullptr;
  if (!found) return RegistryResult::NotFound;
  found->named[name] = value;
  return RegistryResult::Done;
}

RegistryResult MemoryRegistry::WriteShared(Hive hive, std::string_view key, std::string_view value,
                                           bool keepExisting) {
  if (keepExisting && Exists(hive, key)) return RegistryResult::Exists;
  return Write(hive, key, value);
}

RegistryResult MemoryRegistry::DeleteTree(Hive hive, std::string_view key) {
  const std::lock_guard guard(lock);
  std::optional<KeyPath> path = SplitKey(key);
  if (!path) return RegistryResult::NotFound;
  if (path->empty()) return RegistryResult::Denied;
  const std::string name = path->back();
  path->pop_back();
  Key* parent = Find(hive, *path);
  const bool deleted = parent && parent->below.erase(name) > 0;
  return deleted ? RegistryResult::Done : RegistryResult::NotFound;
}

RegistryResult MemoryRegistry::DeleteEmpty(Hive hive, std::string_view key) {
  {
    const std::lock_guard guard(lock);
    const std::optional<KeyPath> path = SplitKey(key);
    const Key* found = path ? Find(hive, *path) : nullptr;
    if (found && (found->value || !found->below.empty())) return RegistryResult::Exists;
  }
  return DeleteTree(hive, key);
}

std::vector<std::string> MemoryRegistry::Subkeys(Hive hive, std::string_view key) {
  const std::lock_guard guard(lock);
  std::vector<std::string> names;
  const std::optional<KeyPath> path = SplitKey(key);
  if (const Key* found = path ? Find(hive, *path) : nullptr) {
    for (const auto& [name, child] : found->below) names.push_back(name);
  }
  return names;
}

std::vector<std::string> MemoryRegistry::Snapshot() const {
  const std::lock_guard guard(lock);
  std::vector<std::string> lines;
  for (const auto& [hive, root] : roots) AppendLines(root, HiveName(hive), lines);
  return lines;
}

std::optional<std::string> FailingRegistry::Read(Hive hive, std::string_view key) {
  return failing.IsNow() ? std::nullopt : inner.Read(hive, key);
}

bool FailingRegistry::Exists(Hive hive, std::string_view key) {
  return !failing.IsNow() && inner.Exists(hive, key);
}

RegistryResult FailingRegistry::Write(Hive hive, std::string_view key, std::string_view value) {
  return failing.IsNow() ? refusal : inner.Write(hive, key, value);
}

RegistryResult FailingRegistry::WriteNamed(Hive hive, std::string_view key, const char* name,
                                           std::string_view value) {
  return failing.IsNow() ? refusal : inner.WriteNamed(hive, key, name, value);
}

RegistryResult FailingRegistry::WriteShared(Hive hive, std::string_view key, std::string_view value,
                                            bool keepExisting) {
  return failing.IsNow() ? refusal : inner.WriteShared(hive, key, value, keepExisting);
}

RegistryResult FailingRegistry::DeleteEmpty(Hive hive, std::string_view key) {
  return failing.IsNow() ? refusal : inner.DeleteEmpty(hive, key);
}

RegistryResult FailingRegistry::DeleteTree(Hive hive, std::string_view key) {
  return failing.IsNow() ? refusal : inner.DeleteTree(hive, key);
}

std::vector<std::string> FailingRegistry::Subkeys(Hive hive, std::string_view key) {
  return failing.IsNow() ? std::vector<std::string>() : inner.Subkeys(hive, key);
}

std::optional<std::string> FailingFiles::Replace(const std::filesystem::path& target,
                                                 const WriteFile& write) {
  if (!failing.IsNow()) return inner.Replace(target, write);
  if (!afterWriting) return kReason;
  std::optional<std::string> reason = inner.Replace(target, [&write](const auto& temporary) {
    write(temporary);
    return false;
  });
  return reason && reason->empty() ? std::optional<std::string>(kReason) : reason;
}

std::optional<std::string> FailingFiles::Move(const std::filesystem::path& finished,
                                              const std::filesystem::path& target) {
  return failing.IsNow() ? std::optional<std::string>(kReason) : inner.Move(finished, target);
}

std::unique_ptr<GrowingFile> FailingFiles::OpenGrowing(const std::filesystem::path& file,
                                                       bool writeThrough) {
  return inner.OpenGrowing(file, writeThrough);
}

bool FailingFiles::CanReadAndWrite(const std::filesystem::path& path) {
  return inner.CanReadAndWrite(path);
}

std::filesystem::path FailingFiles::ModuleOf(const void* address) {
  return inner.ModuleOf(address);
}

std::uint32_t FakeProcess::ProcessId() {
  return SystemProcess().ProcessId();
}

std::uint32_t FakeProcess::ThreadId() {
  return SystemProcess().ThreadId();
}

LocalTime FakeProcess::Now() {
  return now ? *now : SystemProcess().Now();
}

std::filesystem::path FakeProcess::Program() {
  return program.empty() ? SystemProcess().Program() : program;
}

std::filesystem::path FakeProcess::TemporaryFolder() {
  return temporaryFolder.empty() ? SystemProcess().TemporaryFolder() : temporaryFolder;
}

std::filesystem::path FakeProcess::StateFolder() {
  return stateFolder.empty() ? SystemProcess().StateFolder() : stateFolder;
}

void RecordingDesktop::ShowMessage(const std::string& text, const std::string& caption) {
  const std::lock_guard guard(lock);
  messages.push_back({text, caption});
}

int RecordingDesktop::Ask(const std::string& text, const std::string& caption, unsigned) {
  ShowMessage(text, caption);
  return answer;
}

void RecordingDesktop::Beep(int hertz, int milliseconds) {
  const std::lock_guard guard(lock);
  tones.push_back({hertz, milliseconds});
}

void RecordingDesktop::WriteDebugOutput(const std::string& text) {
  const std::lock_guard guard(lock);
  debugOutput.push_back(text);
}

std::vector<std::string> FakeTerminal::Arguments(int argc, char** argv) {
  return argc > 1 ? std::vector<std::string>(argv + 1, argv + argc) : std::vector<std::string>();
}

std::optional<std::size_t> FakeTerminal::ReadInput(void* to, std::size_t count) {
  const std::size_t got = input.copy(static_cast<char*>(to), count);
  input.erase(0, got);
  return got;
}

std::optional<std::string> FakeTerminal::WriteOutput(std::string_view bytes) {
  output += bytes;
  return std::nullopt;
}

void FakeTerminal::Interrupt() const {
  if (handler) handler();
}

std::optional<std::string> FakeModules::Call(const std::filesystem::path& module, const char* name,
                                             int& status) {
  calls.emplace_back(module, name);
  const auto answer = answers.find(module);
  if (answer == answers.end()) return "cannot be loaded";
  status = answer->second;
  return std::nullopt;
}

std::unique_ptr<SharedBlock> FailingSharedMemory::Map(const std::string& name, std::size_t bytes) {
  return failing.IsNow() ? nullptr : inner.Map(name, bytes);
}

FakeServices::FakeServices()
    : services{
          &registry, &SystemProfiles(), &SystemFiles(), &SystemMutexes(), &process,
          &desktop,  &terminal,         &modules,       &fonts,           &SystemSharedMemory()} {}

}  // namespace platform
