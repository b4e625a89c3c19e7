// Shared heaps and pictures, among objects of one process and among processes of which some are
// killed. FXBOX_SOAK sets how often the latter is tried.
#include <gtest/gtest.h>

#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "picture/SharedPicture.h"
#include "platform/fake/FakeServices.h"
#include "tests/picture/Sharer.h"

#ifdef _WIN32
#include <process.h>
#else
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include "platform/linux/SharedObject.h"
#endif

namespace {

// Remembers the calls, and runs what the test wants to happen in them.
struct RecordingInit : IKvSharedHeapInitFirst {
  void Init(bool first, void* rootBlock, IKvSharedHeap* heap) override {
    calls.push_back(first);
    root = static_cast<BYTE*>(rootBlock);
    if (throws) throw std::runtime_error("Init");
    if (allocates) allocated = heap->Alloc(10);
  }

  std::vector<bool> calls;
  BYTE* root = nullptr;
  bool throws = false;
  bool allocates = false;
  void* allocated = nullptr;
};

TEST(KvSharedHeap, TheSecondFindsWhatTheFirstMadeUntilTheLastEnds) {
  const std::string id = FreshId();
  for (int round = 0; round < 2; ++round) {
    RecordingInit first, second;
    auto heap = std::make_unique<KvSharedHeap>(id.c_str(), &first, 4);
    const KvSharedHeap other(id.c_str(), &second, 4);
    heap.reset();
    EXPECT_EQ(first.calls, std::vector<bool>{true});
    EXPECT_EQ(second.calls, std::vector<bool>{false});
    EXPECT_EQ(std::exchange(second.root[0], BYTE{9}), 0);
  }
  RecordingInit first, second;
  first.allocates = true;
  KvSharedHeap heap(id.c_str(), &first, 16);
  EXPECT_EQ(first.calls, std::vector<bool>{true});
  ASSERT_TRUE(first.root && first.allocated);
  EXPECT_EQ(std::vector<BYTE>(first.root, first.root + 16), std::vector<BYTE>(16, 0));
  std::memset(first.root, 5, 16);

  KvSharedHeap other(id.c_str(), &second, 16);
  EXPECT_EQ(second.calls, std::vector<bool>{false});
  ASSERT_TRUE(second.root);
  EXPECT_EQ(second.root[15], 5);
  second.root[0] = 6;
  EXPECT_EQ(first.root[0], 6);
  EXPECT_EQ(std::string(other.GetId()), id);

  EXPECT_EQ(heap.GetHandle(first.root), 0u);
  EXPECT_EQ(heap.GetHandle(first.allocated), 1u);
  EXPECT_EQ(other.GetHandle(first.allocated), 0u) << "a view of another heap";
  void* const block = other.Alloc(100);
  ASSERT_TRUE(block);
  EXPECT_EQ(other.GetHandle(block), 2u);
  std::memset(block, 7, 100);
  void* node = nullptr;
  const auto* view = static_cast<const BYTE*>(heap.GetData(2, &node));
  ASSERT_TRUE(view && node);
  EXPECT_GE(heap.SizeOf(view), 100u);
  other.Free(block);
  EXPECT_EQ(other.GetHandle(block), 0u);
  EXPECT_EQ(view[99], 7) << "the block lives on with this view";
  heap.ReleaseData(node);
  EXPECT_EQ(heap.SizeOf(view), 0u);
  EXPECT_EQ(heap.GetData(3, &node), nullptr) << "no such block";
  EXPECT_EQ(node, nullptr);
}

TEST(KvSharedHeap, WithoutInitBlocksBeginAtZero) {
  const std::string id = FreshId();
  KvSharedHeap heap(id.c_str(), nullptr, 4);
  void* const block = heap.Alloc(4);
  ASSERT_TRUE(block);
  static_cast<BYTE*>(block)[0] = 3;
  RecordingInit init;
  const KvSharedHeap other(id.c_str(), &init, 4);
  EXPECT_EQ(init.calls, std::vector<bool>{false});
  EXPECT_EQ(init.root[0], 3);
}

TEST(KvSharedHeap, AnInitThatThrowsIsAsIfItNeverWas) {
  const std::string id = FreshId();
  RecordingInit failing, good;
  failing.throws = true;
  EXPECT_THROW(KvSharedHeap(id.c_str(), &failing, 4), std::runtime_error);
  std::thread([&] { const KvSharedHeap heap(id.c_str(), &good, 4); }).join();
  EXPECT_EQ(good.calls, std::vector<bool>{true});
}

// The n-th block cannot be mapped.
struct FailingMapping {
  explicit FailingMapping(int n) : memory(*fakes.services.sharedMemory, n) {
    fakes.services.sharedMemory = &memory;
  }
  platform::FakeServices fakes;
  platform::FailingSharedMemory memory;
  platform::ScopedServices scope{fakes.services};
};

void ExpectInert(KvSharedHeap& heap) {
  int anything = 0;
  void* node = &anything;
  EXPECT_EQ(heap.Alloc(10), nullptr);
  EXPECT_EQ(heap.GetData(0, &node), nullptr);
  EXPECT_EQ(node, nullptr);
  EXPECT_EQ(heap.GetHandle(&anything), 0u);
  heap.Free(&anything);
  heap.ReleaseData(&anything);
}

TEST(KvSharedHeap, WithoutItsHeadItIsInert) {
  for (const char* id : {"", static_cast<const char*>(nullptr)}) {
    RecordingInit init;
    KvSharedHeap heap(id, &init, 4);
    EXPECT_TRUE(init.calls.empty());
    ExpectInert(heap);
  }
  const FailingMapping failing(1);
  RecordingInit init;
  KvSharedHeap heap(FreshId().c_str(), &init, 4);
  EXPECT_TRUE(init.calls.empty());
  ExpectInert(heap);
}

TEST(KvSharedHeap, AFailedMappingIsANodeWithoutAView) {
  const FailingMapping failing(2);
  KvSharedHeap heap(FreshId().c_str(), nullptr, 4);
  EXPECT_EQ(heap.Alloc(10), nullptr);
  void* const block = heap.Alloc(10);
  EXPECT_EQ(heap.GetHandle(block), 1u) << "the number of the failed one is used up";
  heap.Free(nullptr);
  if (sizeof(unsigned long) > 4) {
    EXPECT_EQ(heap.Alloc(~0ul), nullptr);
  }
}

TEST(SharedPicture, AttachesWithTheSizesOfTheFirst) {
  const std::string id = FreshId();
  EXPECT_FALSE(SharedPicture(id.c_str()).IsValid()) << "nobody shares it";
  const SharedPicture first(id.c_str(), "any name", 5, 3, true, true);
  const SharedPicture second(id.c_str(), "other", 100, 100, true, false);
  const SharedPicture third(id.c_str());
  EXPECT_TRUE(first.IsFirst());
  for (const SharedPicture* picture : {&second, &third}) {
    ASSERT_TRUE(picture->IsValid());
    EXPECT_FALSE(picture->IsFirst());
    EXPECT_EQ(picture->Width(), 5);
    EXPECT_EQ(picture->Height(), 3);
    EXPECT_EQ(picture->BlockSize(), first.BlockSize());
    EXPECT_EQ(picture->MaskRows()[2][4], 255);
  }
  EXPECT_EQ(first.BlockSize(), 36u + 40 + 16 * 3 + 40 + 8 * 3);
  first.ColourRows()[2][14] = 77;
  EXPECT_EQ(second.ColourRows()[2][14], 77);
  third.MaskRows()[0][0] = 12;
  EXPECT_EQ(first.MaskRows()[0][0], 12);
}

TEST(SharedPicture, SharesACopyOfBitmaps) {
  const MemoryPicture original("", 7, 2, true, true);
  original.ColourRows()[1][20] = 3;
  const std::string id = FreshId();
  auto first = std::make_unique<SharedPicture>(id.c_str(), "", original.Image(), original.Mask(), 3,
                                               4, 1, 2);
  const SharedPicture second(id.c_str());
  first.reset();
  ASSERT_TRUE(second.IsValid());
  EXPECT_EQ(second.ColourRows()[1][20], 3);
  for (int i = 1; i <= 4; ++i) EXPECT_EQ(second.Value(i), i);
}

TEST(SharedPicture, LeavesABlockOfSomethingElseAlone) {
  const std::string id = FreshId();
  RecordingInit init;
  const KvSharedHeap heap(id.c_str(), &init, 4);
  std::memset(init.root, 0xEE, 4);
  EXPECT_FALSE(SharedPicture(id.c_str(), "", 5, 3, true, true).IsValid());
  EXPECT_EQ(init.root[0], 0xEE);
  EXPECT_FALSE(SharedPicture(FreshId().c_str(), "", 65536, 32768, true, true).IsValid());
}

TEST(SharedPicture, EveryFailedMappingIsAnInvalidPicture) {
  for (int failAt = 1; failAt <= 3; ++failAt) {
    const FailingMapping failing(failAt);
    SharedPicture picture(FreshId().c_str(), "", 5, 3, true, true);
    EXPECT_FALSE(picture.IsValid());
    EXPECT_EQ(picture.ColourRows(), nullptr);
    picture.Clear();
  }
}

// --- among processes

struct Ended {
  bool killed;
  int status;
};

Ended RunSharer(const std::vector<std::string>& arguments) {
  std::vector<char*> argv = {const_cast<char*>(FXBOX_SHARER)};
  for (const std::string& argument : arguments) argv.push_back(const_cast<char*>(argument.c_str()));
  argv.push_back(nullptr);
#ifdef _WIN32
  int status = -1;
  for (int tries = 0; status == -1 && tries < 3; ++tries) {  // a busy system refuses now and then
    errno = 0;
    status = static_cast<int>(_spawnv(_P_WAIT, FXBOX_SHARER, argv.data()));
    if (errno == 0) break;
  }
  return {status == kKilledStatus, status};
#else
  pid_t process = 0;
  int status = 0;
  if (posix_spawn(&process, FXBOX_SHARER, nullptr, nullptr, argv.data(), environ) != 0) {
    return {false, -1};
  }
  waitpid(process, &status, 0);
  return {WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL, WEXITSTATUS(status)};
#endif
}

int SoakCount() {
  const char* const wanted = std::getenv("FXBOX_SOAK");
  return wanted ? std::atoi(wanted) : 20;
}

// What the heap of this id has left in shared memory; on Windows nothing can be.
std::string LeftBehind(const std::string& id) {
  std::string names;
#ifndef _WIN32
  std::vector<std::string> paths = {platform::SharedObjectPath("mutex", id + "Mutex"),
                                    platform::SharedObjectPath("block", id)};
  for (int i = 0; i < 20; ++i) {
    paths.push_back(platform::SharedObjectPath("block", id + "_" + std::to_string(i)));
  }
  for (const std::string& path : paths) {
    if (access(("/dev/shm" + path).c_str(), F_OK) == 0) names += path + "\n";
  }
#else
  static_cast<void>(id);
#endif
  return names;
}

TEST(SharedPictureProcesses, PixelsAreSeenAtOnce) {
  const std::string id = FreshId();
  {
    const SharedPicture picture(id.c_str(), "", kSharedWidth, kSharedHeight, true, true);
    ASSERT_TRUE(picture.IsValid());
    for (int i = 0; i < 5; ++i) {
      ASSERT_EQ(picture.ColourRows()[0][0], i);
      const Ended ended = RunSharer({"change", id, std::to_string(i), std::to_string(i + 1)});
      ASSERT_EQ(ended.status, 0);
      ASSERT_FALSE(ended.killed);
    }
  }
  EXPECT_EQ(RunSharer({"change", id, "5", "6"}).status, 1) << "nobody shares it any more";
  EXPECT_EQ(LeftBehind(id), "");
}

// Runs the sharer so often that it has died at each step, and as often as is wanted. `check` looks
// at the picture after each death.
template <class Check>
void KillAtEveryStep(const std::string& id, Check check) {
  int step = 0;
  bool complete = false;
  for (int round = 0; round < SoakCount() || !complete; ++round) {
    const Ended ended = RunSharer({"die", id, std::to_string(++step)});
    ASSERT_TRUE(ended.killed || ended.status == 0) << "step " << step << ": " << ended.status;
    ASSERT_NO_FATAL_FAILURE(check()) << "step " << step;
    if (ended.killed) continue;
    ASSERT_GT(step, 10) << "the sharer ended without reaching its steps";
    complete = true;
    step = 0;
  }
}

TEST(SharedPictureProcesses, ADeadOneDisturbsNobodyAndLeavesNothing) {
  const std::string id = FreshId();
  KillAtEveryStep(id, [&id] {
    const SharedPicture picture(id.c_str(), "", 9, 9, true, true);
    ASSERT_TRUE(picture.IsFirst());
    ASSERT_EQ(picture.Width(), 9);
  });
  EXPECT_EQ(LeftBehind(id), "");
  {
    const SharedPicture picture(id.c_str(), "", 9, 9, true, true);
    picture.ColourRows()[8][8] = 42;
    KillAtEveryStep(id, [&] {
      const SharedPicture other(id.c_str());
      ASSERT_TRUE(other.IsValid());
      ASSERT_EQ(other.ColourRows()[8][8], 42);
    });
  }
  EXPECT_EQ(LeftBehind(id), "");
}

// The blocks of a heap whose only process was killed: it lets others in before the system has
// closed them. Its root block names block 1.
struct DyingHeap {
  DyingHeap(const std::string& id, std::uint32_t marker, std::size_t pictureBytes)
      : head(Map(id, 8)), root(Map(id + "_0", 12)), picture(Map(id + "_1", pictureBytes)) {
    if (!IsThere()) return;
    Fields(head)[0] = 2;
    Fields(head)[1] = marker;
    Fields(root)[0] = 1;
  }
  bool IsThere() const { return head && root && picture; }

 private:
  using Block = std::unique_ptr<platform::SharedBlock>;

  static Block Map(const std::string& name, std::size_t bytes) {
    return platform::CurrentServices().sharedMemory->Map(name, bytes);
  }
  static std::uint32_t* Fields(const Block& block) {
    return static_cast<std::uint32_t*>(block->Memory());
  }

  Block head, root, picture;
};

// The picture's block may be gone when the root block is there still. Some systems round blocks up
// to a page.
TEST(SharedPictureProcesses, ADyingOneKeepsItsBlocksForAWhile) {
  for (const auto& [marker, bytes] : {std::pair(0u, 16u), {0xFFFFFFFFu, 4096u}}) {
    const std::string id = FreshId();
    const DyingHeap dying(id, marker, bytes);
    ASSERT_TRUE(dying.IsThere());
    const SharedPicture picture(id.c_str(), "", 90, 90, true, true);
    EXPECT_TRUE(picture.IsFirst());
    EXPECT_EQ(picture.Width(), 90);
    EXPECT_EQ(SharedPicture(id.c_str()).Width(), 90);
  }
}

// Others come and go all the time, at first and at last places too.
TEST(SharedPictureProcesses, DeathsAmongOthersThatComeAndGo) {
  const std::string id = FreshId();
  std::atomic<bool> over{false};
  std::atomic<int> invalid{0};
  std::thread visitor([&] {
    while (!over) {
      const SharedPicture picture(id.c_str(), "", 9, 9, true, true);
      if (!picture.IsValid()) ++invalid;
    }
  });
  KillAtEveryStep(id, [] {});
  over = true;
  visitor.join();
  EXPECT_EQ(invalid, 0);
  const SharedPicture last(id.c_str(), "", 9, 9, true, true);
  EXPECT_TRUE(last.IsValid());
}

}  // namespace
