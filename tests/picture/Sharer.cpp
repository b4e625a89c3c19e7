// Another process at a shared picture:
//
//   sharer change ID OLD NEW   attaches, demands that the first pixel byte is OLD, makes it NEW
//   sharer die ID STEP         shares a picture and ends, but is killed at the STEP-th point around
//                              the calls that it makes to the system
//
// The exit status is 0 when all was well, 1 when not, kKilledStatus or a signal when killed.
#include <cstdlib>
#include <string>

#include "picture/SharedPicture.h"
#include "platform/SystemServices.h"
#include "tests/picture/Sharer.h"

#ifdef _WIN32
#include <windows.h>
#else
#include <signal.h>
#endif

namespace {

[[noreturn]] void Die() {
#ifdef _WIN32
  TerminateProcess(GetCurrentProcess(), kKilledStatus);
#else
  raise(SIGKILL);
#endif
  std::abort();
}

int steps = 0;
int dieAt = 0;

void Step() {
  if (++steps == dieAt) Die();
}

// Steps before and after what it is made for.
class AroundCall {
 public:
  AroundCall() { Step(); }
  ~AroundCall() { Step(); }
  AroundCall(const AroundCall&) = delete;
  AroundCall& operator=(const AroundCall&) = delete;
};

class DyingBlock final : public platform::SharedBlock {
 public:
  explicit DyingBlock(std::unique_ptr<SharedBlock> block) : inner(std::move(block)) {}
  ~DyingBlock() override {
    const AroundCall around;
    inner.reset();
  }
  void* Memory() override { return inner->Memory(); }
  std::size_t Size() override { return inner->Size(); }

 private:
  std::unique_ptr<SharedBlock> inner;
};

class DyingMemory final : public platform::SharedMemory {
 public:
  std::unique_ptr<platform::SharedBlock> Map(const std::string& name, std::size_t bytes) override {
    const AroundCall around;
    auto block = platform::SystemSharedMemory().Map(name, bytes);
    return block ? std::make_unique<DyingBlock>(std::move(block)) : nullptr;
  }
};

class DyingMutex final : public platform::NamedMutex {
 public:
  explicit DyingMutex(std::unique_ptr<NamedMutex> mutex) : inner(std::move(mutex)) {}
  ~DyingMutex() override {
    const AroundCall around;
    inner.reset();
  }
  Wait WaitFor(std::chrono::milliseconds limit) override {
    const AroundCall around;
    return inner->WaitFor(limit);
  }
  void Release() override {
    const AroundCall around;
    inner->Release();
  }

 private:
  std::unique_ptr<NamedMutex> inner;
};

class DyingMutexes final : public platform::Mutexes {
 public:
  std::unique_ptr<platform::NamedMutex> Open(const std::string& name) override {
    const AroundCall around;
    auto mutex = platform::SystemMutexes().Open(name);
    return mutex ? std::make_unique<DyingMutex>(std::move(mutex)) : nullptr;
  }
};

bool ShareAndDie(const char* id, int step) {
  platform::Services services = platform::CurrentServices();
  DyingMemory memory;
  DyingMutexes mutexes;
  services.sharedMemory = &memory;
  services.mutexes = &mutexes;
  const platform::ScopedServices scope(services);
  dieAt = step;
  const SharedPicture picture(id, "", kSharedWidth, kSharedHeight, true, true);
  Step();
  return picture.IsValid();
}

bool Change(const char* id, int old, int fresh) {
  const SharedPicture picture(id);
  if (!picture.IsValid() || picture.IsFirst()) return false;
  BYTE& pixel = picture.ColourRows()[0][0];
  if (pixel != old) return false;
  pixel = static_cast<BYTE>(fresh);
  return true;
}

}  // namespace

int main(int argc, char** argv) {
  const std::string command = argc > 2 ? argv[1] : "";
  bool done = false;
  if (command == "change" && argc == 5) {
    done = Change(argv[2], std::atoi(argv[3]), std::atoi(argv[4]));
  } else if (command == "die" && argc == 4) {
    done = ShareAndDie(argv[2], std::atoi(argv[3]));
  }
  return done ? 0 : 1;
}
