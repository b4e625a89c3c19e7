// Every change of a picture box while the disk is full or a file cannot take its place: what was
// there before stays, or nothing, and what was said to be kept is there.
#include <gtest/gtest.h>
#include <sys/resource.h>

#include <csignal>
#include <functional>

#include "imageio/ImageLoader.h"
#include "imageio/StoredBitmap.h"
#include "platform/StoragePath.h"
#include "platform/fake/FakeServices.h"
#include "storage/KvFile.h"
#include "storage/KvPrivateStorage.h"
#include "storage/KvSimpStorage.h"
#include "storage/kvPicBox.h"
#include "tests/storage/StorageSupport.h"

using namespace test;
using picbox::Bytes;

namespace {

// Meanwhile no file grows beyond so many bytes.
class DiskLimit {
 public:
  explicit DiskLimit(int bytes) : handler(std::signal(SIGXFSZ, SIG_IGN)) {
    getrlimit(RLIMIT_FSIZE, &before);
    const rlimit limit{static_cast<rlim_t>(bytes), before.rlim_max};
    setrlimit(RLIMIT_FSIZE, &limit);
  }
  ~DiskLimit() {
    setrlimit(RLIMIT_FSIZE, &before);
    std::signal(SIGXFSZ, handler);
  }
  DiskLimit(const DiskLimit&) = delete;
  DiskLimit& operator=(const DiskLimit&) = delete;

 private:
  void (*handler)(int);
  rlimit before;
};

// The n-th file that is finished cannot be moved to its place.
struct FailingMove {
  explicit FailingMove(int n) : files(*services.files, n) { services.files = &files; }
  platform::Services services = platform::CurrentServices();
  platform::FailingFiles files;
  platform::ScopedServices scope{services};
};

Bytes Noise(int width, int height, bool isMask = false) {
  Bytes bitmap =
      isMask ? imageio::BlankMaskBitmap(width, height) : imageio::BlankColourBitmap(width, height);
  std::minstd_rand random(static_cast<unsigned>(width));
  for (BYTE* row : imageio::RowsOf(bitmap)) {
    for (int x = 0; x < (isMask ? 1 : 3) * width; ++x) row[x] = static_cast<BYTE>(random() >> 8);
  }
  return bitmap;
}

const Bytes kBefore = Noise(20, 10), kPicture = Noise(30, 20), kMask = Noise(30, 20, true);

struct Kept {
  bool isDone = false;
  Bytes picture, mask;
  std::string note;
};

// A box of one picture and its note, and two more to copy from.
class Disk {
 public:
  explicit Disk(bool isFolder) : folderKind(isFolder) {
    Fill(*Open(), kBefore, {}, "before");
    imageio::ImageLoader loader;
    loader.SetImage(kPicture);
    const Bytes file = loader.Save(imageio::kTypePng);
    WriteFile(folder / "file.png", {file.begin(), file.end()});
    for (IKvStorage* source : {memory.get(), files.get()}) {
      const auto box = Opened(source);
      Fill(*box, kPicture, kMask, "after");
      box->SetSaveType(imageio::kTypePng);
      box->AddFile("png", kPicture, {}, 0, 0, true, true, false);
    }
  }

  using Operation = std::function<bool(kvPicBox& box, Disk& disk)>;

  template <class Trouble>
  Kept Run(const Operation& operation, int n) {
    Kept kept;
    {
      auto box = Open();
      const Trouble trouble(n);
      kept.isDone = operation(*box, *this);
      box.reset();
    }
    const auto box = Open();
    box->GetQuick("a", "", &kept.picture, &kept.mask);
    kept.note = box->GetImageInfo("a", nullptr).ToStdString();
    EXPECT_FALSE(box->HasFailed()) << "half a picture";
    return kept;
  }

  std::unique_ptr<kvPicBox> Opened(IKvStorage* storage) {
    return std::make_unique<kvPicBox>(storage, OpenModeReadWrite);
  }

  const TemporaryFolder folder;
  const StoragePtr memory{new KvMemoryStorage(0)};
  const StoragePtr files{new KvSimpStorage(platform::StoragePathOf(folder / "from").c_str(),
                                           OpenModeReadWrite, true, false)};

 private:
  std::unique_ptr<kvPicBox> Open() {
    return std::make_unique<kvPicBox>(platform::StoragePathOf(folder / "box").c_str(), folderKind,
                                      folderKind, false);
  }
  static void Fill(kvPicBox& box, const Bytes& picture, const Bytes& mask, const char* note) {
    box.AddFile("a", picture, mask, 1, 2, false, false, false);
    box.WriteImageInfo("a", note, nullptr);
  }

  bool folderKind;
};

bool AddStream(kvPicBox& box, Disk& disk, bool asNative) {
  KvFile file(platform::StoragePathOf(disk.folder / "file.png").c_str(), OpenModeRead);
  return box.AddFileStream("a", "PNG", file, asNative, nullptr);
}

bool Copy(kvPicBox& box, Disk& disk, bool fromFiles, const char* name, bool newFormat,
          bool asFile) {
  KvString ext("PNG");
  return disk.Opened(fromFiles ? disk.files.get() : disk.memory.get())
      ->CopyImage(name, box, "a", newFormat, ext, asFile);
}

const struct {
  const char* what;
  Disk::Operation run;
} kOperations[] = {
    {"add", [](kvPicBox& box,
               Disk&) { return box.AddFile("a", kPicture, kMask, 3, 4, false, false, false) > 0; }},
    {"add encoded",
     [](kvPicBox& box, Disk&) {
       return box.AddFile("a", kPicture, kMask, 3, 4, true, false, true) > 0;
     }},
    {"add a file",
     [](kvPicBox& box, Disk&) {
       return box.AddFile("a", kPicture, {}, 0, 0, true, true, true) > 0;
     }},
    {"add bytes", [](kvPicBox& box, Disk& disk) { return AddStream(box, disk, false); }},
    {"add bytes as a file", [](kvPicBox& box, Disk& disk) { return AddStream(box, disk, true); }},
    {"note", [](kvPicBox& box, Disk&) { return box.WriteImageInfo("a", "after", nullptr); }},
    {"copy", [](kvPicBox& box, Disk& disk) { return Copy(box, disk, 0, "a", true, false); }},
    {"copy old", [](kvPicBox& box, Disk& disk) { return Copy(box, disk, 0, "a", false, false); }},
    {"copy a file",
     [](kvPicBox& box, Disk& disk) { return Copy(box, disk, 1, "png", true, true); }},
    {"copy from files", [](kvPicBox& box, Disk& disk) { return Copy(box, disk, 1, "a", 1, true); }},
};

// Runs an operation in ever less trouble, until it is done.
template <class Trouble>
void ExpectSoundChanges(int first, int step, int least) {
  for (const bool isFolder : {false, true}) {
    for (const auto& [what, run] : kOperations) {
      SCOPED_TRACE(testing::Message() << what << (isFolder ? " in a folder" : " in a file"));
      const Kept wanted = Disk(isFolder).Run<Trouble>(run, 0x7FFFFFFF);
      ASSERT_TRUE(wanted.isDone);
      int failures = 0;
      for (int n = first;; n += step) {
        SCOPED_TRACE(n);
        Disk disk(isFolder);
        const Kept kept = disk.Run<Trouble>(run, n);
        for (const std::string& name : disk.folder.Names()) EXPECT_NE(name[0], '.') << name;
        if (kept.isDone) {
          EXPECT_EQ(kept.picture, wanted.picture);
          EXPECT_EQ(kept.mask, wanted.mask);
          EXPECT_EQ(kept.note, wanted.note);
          break;
        }
        ++failures;
        EXPECT_TRUE(kept.picture.empty() || kept.picture == kBefore || kept.picture == kPicture);
        EXPECT_TRUE(kept.note.empty() || kept.note == "before" || kept.note == wanted.note);
        if (testing::Test::HasFailure()) return;
      }
      EXPECT_GE(failures, isFolder ? least : 0);
    }
  }
}

}  // namespace

TEST(FullDisk, LeavesNoHalfPicture) {
  ExpectSoundChanges<DiskLimit>(0, 797, 1);
}

TEST(FullDisk, LeavesNoHalfCopyOutside) {
  Disk disk(false);
  kvPicBox outside(platform::StoragePathOf(disk.folder.Path()).c_str(), true, false, true);
  kvPicBox none(platform::StoragePathOf(disk.folder / "file.png" / "x").c_str(), true, true, false);
  const auto box = disk.Opened(disk.memory.get()), files = disk.Opened(disk.files.get());
  LogOfTest log;
  KvString ext("x");
  {
    const DiskLimit limit(1500);
    EXPECT_FALSE(box->CopyImage("a", outside, "out", true, ext, false));
    EXPECT_FALSE(AddStream(*files, disk, true) || AddStream(none, disk, true));
  }
  EXPECT_TRUE(files->HasFailed() && none.HasFailed());
  const std::string told = log.Lines();
  const auto size = std::to_string(std::filesystem::file_size(disk.folder / "file.png"));
  for (const std::string& line : {std::string("EXCEPTION in DestFile.Write();"),
                                  "PicBox AddFile Error on a, Trace=" + size + ";",
                                  std::string("Error on a - cause=3, IOsError=3, Trace=0 ;")}) {
    EXPECT_NE(told.find(line), std::string::npos) << line << told;
  }
  EXPECT_FALSE(std::filesystem::exists(disk.folder / "out.x"));
  EXPECT_TRUE(box->CopyImage("a", outside, "out", true, ext, false));
  EXPECT_EQ(ReadFile(disk.folder / "out.x"), ReadAll(*box->StorageOf(picbox::kPictures), "a"));
}

// The first write brings along what the file held so far.
TEST(FullDisk, LeavesAFileThatIsChangedWhole) {
  const TemporaryFolder folder;
  const std::string before(200000, 'b'), path = platform::StoragePathOf(folder / "file");
  for (const int room : {0, 5, 65536, 199999, 200000, 200001}) {
    WriteFile(folder / "file", before);
    KvFile file(path.c_str(), OpenModeReadWrite);
    bool isKept = false;
    {
      const DiskLimit limit(room);
      isKept =
          file.Seek(199990, 0) == 199990 && file.Write("after", 5) == 5 && file.SetLength(200001);
      isKept = file.Close() && isKept;
    }
    EXPECT_EQ(isKept, room == 200001);
    const std::string now = ReadFile(folder / "file");
    EXPECT_EQ(now == before, !isKept) << room;
    EXPECT_EQ(folder.Names().size(), 1u);
  }
}

TEST(FilesThatCannotBeMoved, LeaveNoHalfPicture) {
  ExpectSoundChanges<FailingMove>(1, 1, 1);
}
