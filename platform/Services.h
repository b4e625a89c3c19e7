// What the library asks of the system, one abstract class a service. Everything else in the tree is
// portable; the real services lie in platform/linux and platform/windows, fakes in platform/fake.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <iosfwd>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/Export.h"

namespace platform {

// Root keys of the registry.
enum class Hive { ClassesRoot, LocalMachine, CurrentUser, Users };

enum class RegistryResult {
  Done,
  NotFound,
  Denied,
  Failed,
  Exists,   // the key is there and was to be kept
  NotMade,  // the key that was to hold a value can be neither opened nor made
};

// A tree of keys of which each holds one text, its default value. Paths are joined with a backslash
// and compared without case; texts are in the system's code page. Any thread, any process at the
// same time.
class Registry {
 public:
  // Nothing when the key is missing or cannot be read. A key without a value reads as an empty
  // text.
  virtual std::optional<std::string> Read(Hive hive, std::string_view key) = 0;
  // Whether the key can be opened for reading.
  virtual bool Exists(Hive hive, std::string_view key) = 0;
  // Creates the key and those above it as needed. Another process sees the old text or the new one.
  virtual RegistryResult Write(Hive hive, std::string_view key, std::string_view value) = 0;
  // Sets a named value of a key that is there. A system whose component runtime knows no such
  // values takes no notice.
  virtual RegistryResult WriteNamed(Hive hive, std::string_view key, const char* name,
                                    std::string_view value) = 0;
  // As Write, and every user of the machine may change a key that is made by it. With
  // `keepExisting` a key that is there stays as it is.
  virtual RegistryResult WriteShared(Hive hive, std::string_view key, std::string_view value,
                                     bool keepExisting) = 0;
  // Deletes the key with everything below it.
  virtual RegistryResult DeleteTree(Hive hive, std::string_view key) = 0;
  // Deletes the key when it holds neither a value nor other keys; Exists when it does.
  virtual RegistryResult DeleteEmpty(Hive hive, std::string_view key) = 0;
  // Names of the keys directly below, in ascending order without case; empty when there is none.
  virtual std::vector<std::string> Subkeys(Hive hive, std::string_view key) = 0;
  // What the system takes as "everybody may do everything" for a key, to be freed with its own
  // function (LocalFree); null where it has no such thing.
  virtual void* NewOpenDescriptor() = 0;

 protected:
  ~Registry() = default;
};

// Files of settings: sections "[name]" with lines "key=value". Names compare without case, blanks
// around names and values and quotation marks around values do not count, lines with a semicolon in
// front are comments. Texts are in the system's code page. Any thread, any process at the same
// time.
class Profiles {
 public:
  // Empty when there is no such file, section, key or value.
  virtual std::string Read(const std::filesystem::path& file, std::string_view section,
                           std::string_view key) = 0;
  // Makes the file, the section and the key as needed; nothing deletes the key. All other lines
  // stay as they are. False when the file cannot be written, and then nothing has changed.
  virtual bool Write(const std::filesystem::path& file, std::string_view section,
                     std::string_view key, std::optional<std::string_view> value) = 0;
  // Writes out what the system may hold back.
  virtual void Flush(const std::filesystem::path& file) = 0;
  // Names in the order of the file.
  virtual std::vector<std::string> Sections(const std::filesystem::path& file) = 0;
  virtual std::vector<std::string> Keys(const std::filesystem::path& file,
                                        std::string_view section) = 0;

 protected:
  ~Profiles() = default;
};

// A file that only grows, shared with other processes. One thread at a time.
class GrowingFile {
 public:
  virtual ~GrowingFile() = default;
  // Puts the bytes at the end, wherever it is by now; false when they did not all fit, and then
  // none is left behind.
  virtual bool Append(std::string_view bytes) = 0;
  // Brings everything to the disk.
  virtual bool Flush() = 0;
  // Whether the last line is complete; so it is in an empty file.
  virtual bool EndsInLineFeed() = 0;
};

// Files that appear whole or not at all, and files that grow.
class Files {
 public:
  // Calls `write` with the path of a new, empty file beside `target`; on true the file takes the
  // place of `target` in one step, on false or an exception it is deleted and `target` stays as it
  // was. A device or a pipe gets the finished file's bytes instead, from its start to its end.
  // Gives the reason when the file cannot be made, moved, or `write` said false (then an empty
  // text).
  //
  // Files of this kind that a killed program left in the folder are deleted on the way.
  using WriteFile = std::function<bool(const std::filesystem::path& temporary)>;
  virtual std::optional<std::string> Replace(const std::filesystem::path& target,
                                             const WriteFile& write) = 0;
  // Moves a finished file of the caller's, which lies in the same folder and may still be open with
  // RawFile, into the place of `target` in one step. Gives the reason when it cannot; both files
  // then stay as they are.
  virtual std::optional<std::string> Move(const std::filesystem::path& finished,
                                          const std::filesystem::path& target) = 0;
  // Opens the file, or makes it; null when that fails. With `writeThrough` a line that was appended
  // is on the disk, else in the care of the system.
  virtual std::unique_ptr<GrowingFile> OpenGrowing(const std::filesystem::path& file,
                                                   bool writeThrough) = 0;
  // Whether the file or folder is there and may be read and written.
  virtual bool CanReadAndWrite(const std::filesystem::path& path) = 0;
  // Full path of the shared object, DLL or program that holds this address; empty when there is
  // none.
  virtual std::filesystem::path ModuleOf(const void* address) = 0;

 protected:
  ~Files() = default;
};

// The person at the screen.
class Desktop {
 public:
  // Shows a text and waits until it is dismissed. On a system without a desktop it goes to the
  // standard error output and does not wait.
  virtual void ShowMessage(const std::string& text, const std::string& caption) = 0;
  // Asks with the buttons of `style`, whose bits are those of the system's message boxes, and gives
  // the number of the one that was chosen. Where nobody is there to be asked, the text goes to the
  // standard error output and the default button is the answer.
  virtual int Ask(const std::string& text, const std::string& caption, unsigned style) = 0;
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
  // Called once, before anything is printed, with the program's own streams of standard output and
  // error. From then on they show UTF-8 on every terminal, and a reader that leaves makes writing
  // fail instead of ending the program.
  virtual void Start(std::ostream& output, std::ostream& error) = 0;
  // Width in characters when standard error is a terminal, 0 when it is not.
  virtual int ErrorWidth() = 0;
  // Bytes of standard input as they are: how many, 0 at its end; nothing when reading fails.
  virtual std::optional<std::size_t> ReadInput(void* to, std::size_t count) = 0;
  // Bytes to standard output as they are; the reason when that fails.
  virtual std::optional<std::string> WriteOutput(std::string_view bytes) = 0;
  // From now on `handler` runs instead of the program's end when the user interrupts it. It is
  // called on a thread of its own or inside a signal handler and may only set flags.
  virtual void OnInterrupt(void (*handler)()) = 0;

 protected:
  ~Terminal() = default;
};

// Loaded modules: those of third parties, for registration, and our own.
class Modules {
 public:
  // Loads the module, calls its exported function `name` (no arguments, gives a status code) and
  // lets go of the module. Gives the reason when the module or the function cannot be had, else
  // stores the status.
  virtual std::optional<std::string> Call(const std::filesystem::path& module, const char* name,
                                          int& status) = 0;
  // Keeps the module that holds this address loaded until the process ends, for a thread whose end
  // nobody can wait for. The program itself stays anyway.
  virtual void Keep(const void* address) = 0;

 protected:
  ~Modules() = default;
};

// Of one name, for all processes of the user. It belongs to the thread that has waited for it,
// which may wait for it again and releases it as often.
class NamedMutex {
 public:
  enum class Wait {
    Held,
    Abandoned,  // held as well, but the owner before ended without releasing it
    TimedOut,
    Failed
  };
  // As good as for ever: seven weeks. Who still has to wait then waits again.
  static constexpr std::chrono::milliseconds kNoLimit{0xFFFFFFFF};

  virtual ~NamedMutex() = default;
  virtual Wait WaitFor(std::chrono::milliseconds limit) = 0;
  virtual void Release() = 0;
};

class Mutexes {
 public:
  // The mutex of this name, made when nobody has it; null when that fails.
  virtual std::unique_ptr<NamedMutex> Open(const std::string& name) = 0;

 protected:
  ~Mutexes() = default;
};

// One process's view of a block that the processes of a user share; it ends with the object.
class SharedBlock {
 public:
  virtual ~SharedBlock() = default;
  virtual void* Memory() = 0;
  // Of the whole block, whoever made it: what was stated then, on some systems rounded up.
  virtual std::size_t Size() = 0;
};

class SharedMemory {
 public:
  // A view of the block of this name. When nobody has the block it is made of that many zeros; one
  // that is there keeps its size. It goes with its last view in any process, however that process
  // ends. Null when that fails, also for 0 bytes.
  virtual std::unique_ptr<SharedBlock> Map(const std::string& name, std::size_t bytes) = 0;

 protected:
  ~SharedMemory() = default;
};

struct LocalTime {
  int year;
  int month;  // from 1
  int day;
  int hour;
  int minute;
  int second;
  int millisecond;
};

// The running process and its surroundings.
class Process {
 public:
  virtual std::uint32_t ProcessId() = 0;
  virtual std::uint32_t ThreadId() = 0;
  virtual LocalTime Now() = 0;
  // Full path of the running program.
  virtual std::filesystem::path Program() = 0;
  virtual std::filesystem::path TemporaryFolder() = 0;
  // Where programs keep what they write about themselves for this user; empty when there is no
  // place.
  virtual std::filesystem::path StateFolder() = 0;

 protected:
  ~Process() = default;
};

// One face of a font file that the system offers.
struct FontFace {
  std::string family;  // UTF-8
  std::string style;   // "Bold Oblique", as the font calls it
  int weight = 400;    // 100 thin, 400 regular, 700 bold, 900 black
  int width = 5;       // 1 ultra-condensed, 5 normal, 9 ultra-expanded
  bool slanted = false;
  std::filesystem::path file;
  int index = 0;  // of the face within the file

  bool operator==(const FontFace&) const = default;
};

// The outline fonts of the system. Any thread.
class Fonts {
 public:
  // Ordered by family, style, file and index. A face stands here once for each name of its family.
  // Read once and kept: what is installed later is seen by the next process. Lives as long as the
  // service.
  virtual const std::vector<FontFace>& Faces() = 0;
  // The family that stands for none in particular; empty when the system has no font.
  virtual const std::string& DefaultFamily() = 0;

 protected:
  ~Fonts() = default;
};

struct Services {
  Registry* registry;
  Profiles* profiles;
  Files* files;
  Mutexes* mutexes;
  Process* process;
  Desktop* desktop;
  Terminal* terminal;
  Modules* modules;
  Fonts* fonts;
  SharedMemory* sharedMemory;
};

// The services in force: the system's, until a test puts others in their place.
FXBOX_API const Services& CurrentServices();

// Puts other services in force while it lives; they have to live as long. For tests; not
// thread-safe.
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
