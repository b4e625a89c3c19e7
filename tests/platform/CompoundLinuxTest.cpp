// Compound files where they are our own: what streams and storages do, and what other readers say.
#include <ole2.h>
#include <sys/stat.h>

#include <cstring>

#include "platform/compound/CompoundFile.h"
#include "platform/compound/ElementName.h"
#include "tests/platform/CompoundLinuxSupport.h"
#include "tests/platform/LinuxSupport.h"

namespace testing_support {
namespace {

class CompoundLinuxTest : public testing::Test {
 protected:
  TemporaryFolder folder;
  std::filesystem::path path = folder / "box";
};

TEST_F(CompoundLinuxTest, StreamsSeekGrowShrinkAndOverwrite) {
  std::mt19937 random(5);
  std::string expected;
  {
    const StoragePtr root = Create(path);
    const StreamPtr stream = CreateStream(root, u"s");
    const StreamPtr between = CreateStream(root, u"between");
    for (int step = 0; step < 400; ++step) {
      const std::size_t at = random() % (step % 80 < 40 ? 20000 : 1500);
      WriteAt(between, static_cast<std::size_t>(step) * 700, Pattern(700, step));
      if (step % 7 == 6) {
        const std::size_t size = step % 2 ? at : at / 512 * 512 + 1;  // one byte in a sector
        expected.resize(size);
        ASSERT_EQ(stream->SetSize(Large(size)), S_OK);
      } else {
        const std::string piece = Pattern(random() % 3000, step);
        if (expected.size() < at && !piece.empty()) expected.resize(at);
        if (!piece.empty()) {
          expected.resize(std::max(expected.size(), at + piece.size()));
          expected.replace(at, piece.size(), piece);
        }
        WriteAt(stream, at, piece);
      }
      ASSERT_EQ(SizeOf(stream), expected.size()) << step;
      if (expected.empty()) continue;
      const std::size_t from = random() % expected.size();
      std::string piece(5000, '\0');
      ULONG read = 0;
      SeekTo(stream, from);
      ASSERT_EQ(stream->Read(piece.data(), 5000, &read), S_OK);
      ASSERT_TRUE(piece.substr(0, read) == expected.substr(from, 5000)) << step;
    }
    EXPECT_TRUE(ReadAll(stream) == expected);
  }
  EXPECT_TRUE(ReadStream(Open(path), u"s") == expected);
}

// What one stream gave back and the other has taken is not given back once more.
TEST_F(CompoundLinuxTest, StreamsThatStayOpenTakeTurns) {
  std::mt19937 random(7);
  const LoggedPtr bytes = NewBytes();
  const StoragePtr root = CreateOn(bytes);
  const std::u16string names[] = {u"a", u"b"};
  std::string expected[] = {Pattern(20000, 1), Pattern(20000, 2)};
  StreamPtr streams[2];
  for (int i = 0; i < 2; ++i) {
    WriteAt(streams[i] = CreateStream(root, names[i]), 0, expected[i]);
    ASSERT_EQ(streams[i]->Commit(STGC_DEFAULT), S_OK);
  }
  for (int round = 0; round < 40; ++round) {
    const std::size_t turn = random() % 2;
    const std::string piece = Pattern(random() % 5000, round);
    const std::size_t at = random() % 15000;
    expected[turn].replace(at, piece.size(), piece);
    WriteAt(streams[turn], at, piece);
    ASSERT_EQ(streams[turn]->Commit(STGC_DEFAULT), S_OK);
    for (int i = 0; i < 2; ++i) {
      const StoragePtr written = OpenOn(NewBytes(bytes->bytes), kReading);
      ASSERT_TRUE(ReadStream(written, names[i]) == expected[i]) << round;
    }
  }
}

TEST_F(CompoundLinuxTest, KeepsAndCopiesWhatIsSaidOfAStorage) {
  const CLSID classId = {0x01020304, 0x0506, 0x0708, {9, 10, 11, 12, 13, 14, 15, 16}};
  {
    const StoragePtr root = Create(path);
    const StoragePtr inner = CreateStorage(root, u"inner");
    EXPECT_EQ(inner->SetClass(classId), S_OK);
    EXPECT_EQ(inner->SetStateBits(0xA5A5A5A5, 0xFFFF0000), S_OK);
    EXPECT_EQ(inner->SetStateBits(0x1234, 0x00FF), S_OK);
    EXPECT_EQ(root->SetElementTimes(u"inner", nullptr, nullptr, nullptr), S_OK);
    EXPECT_EQ(root->SetElementTimes(u"none", nullptr, nullptr, nullptr), STG_E_FILENOTFOUND);
    StreamPtr stream;
    EXPECT_EQ(root->CreateStream(u"s", STGM_SHARE_EXCLUSIVE | 3, 0, 0, stream.Put()),
              STG_E_INVALIDFLAG);
  }
  // Another system's times.
  std::string bytes = ReadFile(path);
  bytes.replace(bytes.find(StoredName(u"inner")) + 100, 16, "made-at.changed.");
  WriteFile(path, bytes);
  StoragePtr root = Open(path);
  EXPECT_EQ(root->MoveElementTo(u"inner", root.Get(), u"copy", STGMOVE_COPY), S_OK);
  root.Reset();
  root = Open(path);
  STATSTG stat = {};
  ASSERT_EQ(OpenStorage(root, u"inner")->Stat(&stat, STATFLAG_NONAME), S_OK);
  EXPECT_EQ(std::memcmp(&stat.ctime, "made-at.", 8), 0);
  EXPECT_EQ(std::memcmp(&stat.mtime, "changed.", 8), 0);
  ASSERT_EQ(OpenStorage(root, u"copy")->Stat(&stat, STATFLAG_NONAME), S_OK);
  EXPECT_EQ(stat.clsid, classId);
  EXPECT_EQ(stat.grfStateBits, 0xA5A50034u);
  root.Reset();
  EXPECT_EQ(Open(path)->SetClass(classId), S_OK);
  EXPECT_EQ(Open(path)->SetStateBits(2, 2), S_OK);
  ASSERT_EQ(Open(path)->Stat(&stat, STATFLAG_NONAME), S_OK);
  EXPECT_EQ(stat.clsid, classId);
  EXPECT_EQ(stat.grfStateBits, 2u);
  // Nothing of it stays where the file is made anew.
  ASSERT_EQ(StgCreateDocfile(Ole(path).c_str(), kWriting | STGM_CREATE, 0, root.Put()), S_OK);
  ASSERT_EQ(root->Stat(&stat, STATFLAG_NONAME), S_OK);
  EXPECT_EQ(stat.clsid, CLSID{});
  EXPECT_EQ(stat.grfStateBits, 0u);
  EXPECT_TRUE(NamesOf(root).empty());
}

TEST_F(CompoundLinuxTest, AStorageOpenedForReadingIsNotChanged) {
  const StoragePtr root = Create(path);
  WriteStream(CreateStorage(root, u"inner"), u"stream", "content");
  const StoragePtr inner = OpenStorage(root, u"inner", kReading);
  EXPECT_EQ(inner->SetClass(IID_IStorage), STG_E_ACCESSDENIED);
  EXPECT_EQ(inner->SetStateBits(1, 1), STG_E_ACCESSDENIED);
  EXPECT_EQ(inner->DestroyElement(u"stream"), STG_E_ACCESSDENIED);
  EXPECT_EQ(inner->RenameElement(u"stream", u"other"), STG_E_ACCESSDENIED);
  EXPECT_EQ(ReadStream(inner, u"stream"), "content");
}

// Whatever the sectors held that it comes to lie in.
TEST_F(CompoundLinuxTest, AStreamGrowsByZeros) {
  const StoragePtr root = Create(path);
  for (const std::size_t before : {0, 1, 700, 4096, 5000}) {
    WriteStream(root, u"junk", Pattern(100000, 1));
    WriteStream(root, u"more", Pattern(700, 2));
    EXPECT_EQ(root->DestroyElement(u"junk"), S_OK);
    EXPECT_EQ(root->DestroyElement(u"more"), S_OK);
    for (int i = 0; i < 3; ++i) EXPECT_EQ(root->SetStateBits(i, 3), S_OK);
    for (const std::size_t after : {4000, 6000, 30000}) {
      const std::string content = Pattern(before, 3);
      const StreamPtr stream = CreateStream(root, u"grown");
      if (before > 0) WriteAt(stream, 0, content);
      ASSERT_EQ(stream->SetSize(Large(after)), S_OK);
      std::string expected = content;
      expected.resize(after);
      ASSERT_TRUE(ReadAll(stream) == expected) << before << " " << after;
    }
  }
}

TEST_F(CompoundLinuxTest, ReadsTheEndOfGlobalMemoryAndNoMore) {
  const HGLOBAL block = GlobalAlloc(GHND, 5);
  std::memcpy(GlobalLock(block), "01234", 5);
  GlobalUnlock(block);
  platform::ComPtr<ILockBytes> bytes;
  ASSERT_EQ(CreateILockBytesOnHGlobal(block, TRUE, bytes.Put()), S_OK);
  std::string read(6, 'x');
  ULONG count = 0;
  EXPECT_EQ(bytes->ReadAt(Large(2), read.data(), 6, &count), S_OK);
  EXPECT_EQ(count, 3u);
  EXPECT_EQ(read, "234xxx");
  EXPECT_EQ(GlobalSize(nullptr), 0u);
}

TEST_F(CompoundLinuxTest, NamesAreTheSameInLettersOfBothSizes) {
  using platform::compound::KeyOf;
  // The first and last of each range, the small one ahead.
  const std::u16string pairs =
      u"aAzZ\u00E0\u00C0\u00FE\u00DE\u00FF\u0178\u0101\u0100\u0137\u0136\u013A\u0139\u0148\u0147"
      u"\u014B\u014A\u0177\u0176\u017A\u0179\u017E\u017D\u03B1\u0391\u03CB\u03AB\u03AC\u0386"
      u"\u03AD\u0388\u03AF\u038A\u0430\u0410\u044F\u042F\u0450\u0400\u045F\u040F\u0461\u0460"
      u"\u0481\u0480\u048B\u048A\u04BF\u04BE\u04D1\u04D0\u052F\u052E\u0561\u0531\u0586\u0556"
      u"\u1E01\u1E00\u1E95\u1E94\u1EA1\u1EA0\u1EFF\u1EFE";
  for (std::size_t i = 0; i < pairs.size(); i += 2) {
    EXPECT_TRUE(KeyOf(pairs.substr(i, 1)) == KeyOf(pairs.substr(i + 1, 1))) << i / 2;
  }
  for (const int alone : {0xF7, 0x131, 0x138, 0x149, 0x17F, 0x3C2, 0x482, 0x1E97}) {
    for (const int other : {alone - 1, alone - 32}) {
      EXPECT_FALSE(KeyOf(std::u16string(1, static_cast<char16_t>(alone))) ==
                   KeyOf(std::u16string(1, static_cast<char16_t>(other))))
          << alone;
    }
  }
}

TEST_F(CompoundLinuxTest, CopiesWithoutAKindAndReadsNothingIntoNothing) {
  const StoragePtr source = Create(path);
  WriteStream(source, u"stream", "x");
  CreateStorage(source, u"storage");
  const IID kinds[] = {IID_IStream, IID_IStorage};
  const std::u16string left[] = {u"storage", u"stream"};
  for (const int i : {0, 1}) {
    const StoragePtr target = Create(folder.Path() / left[i]);
    EXPECT_EQ(source->CopyTo(1, &kinds[i], nullptr, target.Get()), S_OK);
    EXPECT_EQ(NamesOf(target), std::vector<std::u16string>{left[i]});
    EXPECT_EQ(source->CopyTo(1, nullptr, nullptr, target.Get()), S_OK);
    EXPECT_EQ(NamesOf(target).size(), 2u);
  }
  ULONG read = 7;
  EXPECT_EQ(OpenStream(source, u"stream")->Read(nullptr, 1, &read), STG_E_INVALIDPOINTER);
  EXPECT_EQ(read, 0u);
}

TEST_F(CompoundLinuxTest, SeeksSkipsAndMoves) {
  StoragePtr root = Create(path);
  const StreamPtr stream = CreateStream(root, u"b");
  WriteAt(stream, 0, "0123456789");
  const struct {
    LONGLONG move;
    DWORD origin;
    HRESULT status;
    ULONGLONG at;
  } seeks[] = {{4, STREAM_SEEK_SET, S_OK, 4},
               {-1, STREAM_SEEK_CUR, S_OK, 3},
               {-2, STREAM_SEEK_END, S_OK, 8},
               {-9, STREAM_SEEK_CUR, STG_E_INVALIDFUNCTION, 8},
               {0, STREAM_SEEK_END + 1, STG_E_INVALIDFUNCTION, 8}};
  for (const auto& seek : seeks) {
    ULARGE_INTEGER at = Large(8);
    LARGE_INTEGER move;
    move.QuadPart = seek.move;
    EXPECT_EQ(stream->Seek(move, seek.origin, &at), seek.status);
    EXPECT_EQ(at.QuadPart, seek.at);
  }
  STGMEDIUM medium = {};
  medium.tymed = TYMED_ISTREAM;
  (medium.pstm = stream.Get())->AddRef();
  ReleaseStgMedium(&medium);
  EXPECT_EQ(stream->AddRef(), 2u);
  EXPECT_EQ(stream->Release(), 1u);

  const StoragePtr inner = CreateStorage(root, u"c");
  WriteStream(root, u"a", "x");
  EXPECT_EQ(root->MoveElementTo(u"a", inner.Get(), u"copied", STGMOVE_COPY), S_OK);
  EXPECT_EQ(root->MoveElementTo(u"a", inner.Get(), u"moved", STGMOVE_MOVE), S_OK);
  EXPECT_EQ(ReadStream(inner, u"copied") + ReadStream(inner, u"moved"), "xx");
  platform::ComPtr<IEnumSTATSTG> elements, clone;
  STATSTG stat[3] = {};
  ULONG count = 0;
  ASSERT_EQ(root->EnumElements(0, nullptr, 0, elements.Put()), S_OK);
  EXPECT_EQ(elements->Skip(1), S_OK);
  ASSERT_EQ(elements->Clone(clone.Put()), S_OK);
  EXPECT_EQ(elements->Skip(2), S_FALSE);
  EXPECT_EQ(elements->Next(1, stat, &count), S_FALSE);
  EXPECT_EQ(elements->Reset(), S_OK);
  EXPECT_EQ(elements->Next(1, stat, nullptr), S_OK);
  EXPECT_EQ(clone->Next(2, stat + 1, &count), S_FALSE);
  EXPECT_EQ(count, 1u);
  EXPECT_EQ(std::u16string(stat[0].pwcsName) + stat[1].pwcsName, u"bc");
  for (const STATSTG& told : stat) CoTaskMemFree(told.pwcsName);
  WriteStream(CreateStorage(inner, u"e"), u"deep", "x");
  EXPECT_EQ(inner->MoveElementTo(u"e", root.Get(), u"f", STGMOVE_MOVE), S_OK);
  EXPECT_EQ(inner->MoveElementTo(u"e", root.Get(), u"g", STGMOVE_MOVE), STG_E_FILENOTFOUND);
  EXPECT_EQ(ReadStream(OpenStorage(root, u"f"), u"deep"), "x");

  root.Reset();
  EXPECT_EQ(StgIsStorageFile(path.u16string().c_str()), S_OK);
  EXPECT_EQ(StgIsStorageILockBytes(NewBytes(ReadFile(path)).Get()), S_OK);
  EXPECT_EQ(StgIsStorageILockBytes(NewBytes(Pattern(600, 1)).Get()), S_FALSE);
  WriteFile(folder / "junk", Pattern(600, 1));
  EXPECT_EQ(StgIsStorageFile((folder / "junk").u16string().c_str()), S_FALSE);
}

// --- a long life against a model

TEST_F(CompoundLinuxTest, LivesLong) {
  std::mt19937 random(11);
  Contents model;
  const LoggedPtr bytes = NewBytes();
  bytes->isLogging = false;
  CreateOn(bytes);
  for (int round = 0; round < 20; ++round) {
    {
      const StoragePtr root = OpenOn(bytes);
      for (int step = 0; step < 40; ++step) ChangeSomething(root, model, random);
    }
    const StoragePtr root = OpenOn(bytes, kReading);
    ASSERT_TRUE(ContentsOf(root) == model) << round;
  }
  std::size_t content = 0;
  for (const auto& [name, stream] : model) content += stream.size();
  EXPECT_LT(bytes->bytes.size(), 3 * content + 65536);  // what was given back is used again
}

// The table gets to the size that the head cannot name any more.
TEST_F(CompoundLinuxTest, GrowsBeyondTheHead) {
  const LoggedPtr bytes = NewBytes();
  bytes->isLogging = false;
  Contents expected = {{u"large", Pattern(7090000, 1)}};
  WriteStream(CreateOn(bytes), u"large", expected[u"large"]);
  for (std::size_t i = 0; i < 20; ++i) {
    const std::u16string name = Numbered(u"n", i % 12);
    const std::string head = bytes->bytes.substr(0, 512);
    const Contents before = expected;
    const StoragePtr root = OpenOn(bytes);
    WriteStream(root, name, expected[name] = Pattern(15000, static_cast<int>(i)));
    ASSERT_TRUE(ContentsOf(OpenOn(bytes, kReading)) == expected) << i;
    const LoggedPtr old = NewBytes(head + bytes->bytes.substr(512));  // all but the last write
    ASSERT_TRUE(ContentsOf(OpenOn(old, kReading)) == before) << i;
  }
  EXPECT_GT(platform::compound::Get32(reinterpret_cast<const std::uint8_t*>(&bytes->bytes[44])),
            110u);
}

// --- what others say

std::string OutputOf(const std::string& command) {
  std::string output;
  FILE* const pipe = popen(command.c_str(), "r");
  char piece[4096];
  while (const std::size_t read = std::fread(piece, 1, sizeof piece, pipe))
    output.append(piece, read);
  EXPECT_EQ(pclose(pipe), 0) << command;
  return output;
}

// The path, size and byte sum of every stream, or what is wrong.
std::string ToldByOlefile(const std::filesystem::path& path) {
  return OutputOf("/usr/bin/python3 - " + path.string() + R"( <<'END'
import sys, olefile
file = olefile.OleFileIO(sys.argv[1], raise_defects=olefile.DEFECT_UNSURE)
for path in sorted(file.listdir(), key=lambda p: '/'.join(p)):
    content = file.openstream(path).read()
    print('/'.join(path), len(content), sum(content))
for issue in file.parsing_issues:
    print(issue)
END)");
}

std::string SummaryOf(const Contents& contents) {
  std::string summary;
  for (const auto& [path, stream] : contents) {
    if (path.back() == u'/') continue;
    std::size_t sum = 0;
    for (const char byte : stream) sum += static_cast<unsigned char>(byte);
    summary += std::string(path.begin(), path.end()) + " " + std::to_string(stream.size()) + " " +
               std::to_string(sum) + "\n";
  }
  return summary;
}

TEST_F(CompoundLinuxTest, OthersReadWhatWeWrite) {
  std::mt19937 random(3);
  Contents expected;
  {
    const StoragePtr root = Create(path);
    std::vector<StoragePtr> open = {root};  // the release of one would end those below it
    std::u16string where;
    for (int depth = 0; depth < 12; ++depth) {
      const std::u16string name = Numbered(u"d", static_cast<std::size_t>(depth));
      open.push_back(CreateStorage(open.back(), name));
      const StoragePtr& at = open.back();
      where += name + u"/";
      for (std::size_t i = 0; i < 12; ++i) {
        const std::string content = Pattern(random() % 9000, static_cast<int>(i));
        WriteStream(at, Numbered(u"s", i), content);
        if (i % 3 == 0) {
          at->DestroyElement(Numbered(u"s", i).c_str());
        } else {
          expected[where + Numbered(u"s", i)] = content;
        }
      }
    }
    WriteStream(root, u"large", expected[u"large"] = Pattern(9000000, 1));  // needs a DIFAT
  }
  EXPECT_EQ(ToldByOlefile(path), SummaryOf(expected));
  const std::string list = OutputOf("gsf list " + path.string());
  for (const auto& [name, stream] : expected) {
    const std::string narrow(name.begin(), name.end());
    EXPECT_NE(list.find(std::to_string(stream.size()) + " " + narrow + "\n"), std::string::npos)
        << narrow;
  }
  EXPECT_TRUE(OutputOf("gsf cat " + path.string() + " large") == expected[u"large"]);
}

TEST_F(CompoundLinuxTest, ReadsWhatOthersWrite) {
  const std::string small = Pattern(700, 1);
  const std::string large = Pattern(100000, 2);
  WriteFile(folder / "small", small);
  WriteFile(folder / "large", large);
  OutputOf("cd " + folder.Path().string() + " && gsf createole box small large");
  const Contents expected = {{u"small", small}, {u"large", large}};
  {
    const StoragePtr root = Open(path);
    EXPECT_TRUE(ContentsOf(root) == expected);
    WriteStream(root, u"more", small);
  }
  EXPECT_TRUE(ReadStream(Open(path), u"large") == large);
  EXPECT_TRUE(ReadStream(Open(path), u"more") == small);
}

// The fourth version has sectors of 4096 bytes; a file keeps the version that it has.
TEST_F(CompoundLinuxTest, ReadsAndChangesVersionFour) {
  using platform::compound::CompoundFile;
  const LoggedPtr bytes = NewBytes();
  platform::compound::Head head;
  head.version = 4;
  head.sectorShift = 12;
  {
    const auto file = CompoundFile::Create(platform::compound::StoreOn(bytes.Get()),
                                           CompoundFile::Access::Write, head);
    file->Commit();
    file->Close();
  }
  Contents expected;
  for (int round = 0; round < 3; ++round) {
    const StoragePtr root = OpenOn(bytes);
    for (const std::size_t size : {0, 5, 4095, 4096, 100000}) {
      const std::u16string name = Numbered(u"s", size);
      WriteStream(root, name, expected[name] = Pattern(size, round));
    }
  }
  EXPECT_TRUE(ContentsOf(OpenOn(bytes)) == expected);
  EXPECT_EQ(bytes->bytes[26], 4);
  EXPECT_EQ(bytes->bytes.substr(40, 4), std::string("\1\0\0\0", 4)) << "sectors of the directory";
  WriteFile(path, bytes->bytes);
  EXPECT_EQ(ToldByOlefile(path), SummaryOf(expected));
  const std::string name = StoredName(u"s100000");
  for (std::size_t at = 0; (at = bytes->bytes.find(name, at)) != std::string::npos; ++at) {
    bytes->bytes[at + 124] = 1;
  }
  EXPECT_EQ(SizeOf(OpenStream(OpenOn(bytes, kReading), u"s100000")), 100000 + (1ull << 32));
}

// --- the file itself

TEST_F(CompoundLinuxTest, BytesAreOpenedAndMadeInModesThatThereAre) {
  const LoggedPtr bytes = NewBytes();
  StoragePtr root;
  const auto make = [&](DWORD mode) {
    return StgCreateDocfileOnILockBytes(bytes.Get(), mode, 0, root.Put());
  };
  const auto open = [&](DWORD mode) {
    return StgOpenStorageOnILockBytes(bytes.Get(), nullptr, mode, nullptr, 0, root.Put());
  };
  EXPECT_EQ(make(kReading), STG_E_INVALIDFLAG);
  EXPECT_EQ(bytes->bytes, "");
  ASSERT_EQ(make(kWriting), S_OK);
  root.Reset();
  EXPECT_EQ(open(kWriting | STGM_CREATE), STG_E_INVALIDFLAG);
  EXPECT_EQ(open(kReading), S_OK);
}

// The system writes what still fits and then nothing.
TEST_F(CompoundLinuxTest, AFileThatMayNotGrowIsFull) {
  EXPECT_EQ(ExitStatus(StartProcess([this] {
              LimitFileSize(20001);
              const std::string large = Pattern(40000, 1);
              const StoragePtr root = Create(path);
              const StreamPtr stream = CreateStream(root, u"s");
              return stream->Write(large.data(), 40000, nullptr) == STG_E_MEDIUMFULL ? 0 : 1;
            })),
            0);
}

TEST_F(CompoundLinuxTest, AFileGetsTheUsualPermissions) {
  const mode_t before = umask(026);
  Create(path);
  umask(before);
  EXPECT_EQ(std::filesystem::status(path).permissions(), std::filesystem::perms(0640));
}

TEST_F(CompoundLinuxTest, AnotherProcessIsKeptOut) {
  const auto inChild = [this](DWORD mode) {
    return ExitStatus(StartProcess([&] {
      StoragePtr root;
      const HRESULT status =
          StgOpenStorage(path.u16string().c_str(), nullptr, mode, nullptr, 0, root.Put());
      return status & 0xFF;
    }));
  };
  constexpr DWORD kShared = STGM_READ | STGM_SHARE_DENY_WRITE;
  StoragePtr root = Create(path);
  EXPECT_EQ(inChild(kWriting), STG_E_SHAREVIOLATION & 0xFF);
  EXPECT_EQ(inChild(kReading), STG_E_SHAREVIOLATION & 0xFF);
  EXPECT_EQ(inChild(kShared), STG_E_SHAREVIOLATION & 0xFF);
  root.Reset();
  root = Open(path, kShared);
  EXPECT_EQ(inChild(kShared), 0);
  EXPECT_EQ(inChild(STGM_PRIORITY), 0);
  EXPECT_EQ(inChild(kReading), STG_E_LOCKVIOLATION & 0xFF);
  EXPECT_EQ(inChild(kWriting), STG_E_SHAREVIOLATION & 0xFF);
  root.Reset();
  EXPECT_EQ(inChild(kWriting), 0);
}

}  // namespace
}  // namespace testing_support
