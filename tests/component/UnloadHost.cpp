// Loads the library, starts the thread of its log and lets go of the library, again and again. The
// thread must find its code, and nobody may wait for it.
#include <chrono>
#include <cstdio>
#include <thread>

#ifdef _WIN32
#include <windows.h>
constexpr char kStart[] = "_Z12StartLoggingP11HINSTANCE__bbPKc";
#else
#include <dlfcn.h>
constexpr char kStart[] = "_Z12StartLoggingPvbbPKc";
#endif

namespace {

using Start = void (*)(void* module, bool writeStartLines, bool useJournal, const char* folder);

#ifdef _WIN32
void* Load(const char* path) {
  return LoadLibraryA(path);
}
Start Find(void* library) {
  return reinterpret_cast<Start>(
      reinterpret_cast<void*>(GetProcAddress(static_cast<HMODULE>(library), kStart)));
}
void LetGo(void* library) {
  FreeLibrary(static_cast<HMODULE>(library));
}
#else
void* Load(const char* path) {
  return dlopen(path, RTLD_NOW | RTLD_LOCAL);
}
Start Find(void* library) {
  return reinterpret_cast<Start>(dlsym(library, kStart));
}
void LetGo(void* library) {
  dlclose(library);
}
#endif

}  // namespace

int main(int, char** arguments) {
  const auto begin = std::chrono::steady_clock::now();
  for (int round = 0; round < 5; ++round) {
    void* const library = Load(arguments[1]);
    const Start start = library ? Find(library) : nullptr;
    if (!start) return std::puts("the library or its function is missing"), 1;
    start(nullptr, true, true, "");
    LetGo(library);
    std::this_thread::sleep_for(std::chrono::milliseconds(20 * round));
  }
  const bool isQuick = std::chrono::steady_clock::now() - begin < std::chrono::seconds(2);
  if (!isQuick) std::puts("letting go takes too long");
  return isQuick ? 0 : 1;
}
