// Compound files where they are our own: what other readers say, faults, lost writes, no room.
#include <ole2.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <cstring>

#include "platform/CompoundCheck.h"
#include "platform/compound/CompoundFile.h"
#include "platform/compound/ElementName.h"
#include "platform/compound/SiblingTree.h"
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
  for (int i = 0; i < 2; ++i) WriteAt(streams[i] = CreateStream(root, names[i]), 0, expected[i]);
  for (int round = 0; round < 40; ++round) {
    const std::size_t turn = random() % 2;
    const std::string piece = Pattern(random() % 5000, round);
    const std::size_t at = random() % 15000;
    expected[turn].replace(at, piece.size(), piece);
    WriteAt(streams[turn], at, piece);
    ASSERT_EQ(streams[turn]->Commit(STGC_DEFAULT), S_OK);
    for (int i = 0; i < 2; ++i) {
      const StoragePtr written = OpenOn(NewBytes(bytes->bytes), kReading);
      ASSERT_TRUE(round == 0 || ReadStream(written, names[i]) == expected[i]) << round;
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
  bytes.replace(bytes.find(std::string("i\0n\0n\0e\0r", 9)) + 100, 16, "made-at.changed.");
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

// Does one thing to the storage and to the model of it.
void ChangeSomething(const StoragePtr& root, Contents& model, std::mt19937& random) {
  const std::u16string name = Numbered(u"n", random() % 30);
  const std::u16string other = Numbered(u"N", random() % 30);
  const auto find = [&model](std::u16string wanted) {
    wanted[0] = u'n';
    return model.count(wanted) > 0 ? wanted : std::u16string();
  };
  switch (random() % 8) {
    case 0:
      ASSERT_EQ(root->DestroyElement(other.c_str()),
                find(other).empty() ? STG_E_FILENOTFOUND : S_OK);
      model.erase(find(other));
      break;
    case 1: {
      const std::u16string to = Numbered(u"n", 30 + random() % 30);
      const bool works = !find(name).empty() && model.count(to) == 0;
      ASSERT_EQ(SUCCEEDED(root->RenameElement(name.c_str(), to.c_str())), works);
      if (!works) break;
      model[to] = model[name];
      model.erase(name);
      break;
    }
    default:
      model[name] = Pattern(random() % 3 == 0 ? random() % 30000 : random() % 600,
                            static_cast<int>(random()));
      WriteStream(root, name, model[name]);
  }
}

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
  const std::string name(
      "s\0"
      "1\0"
      "0\0"
      "0\0"
      "0\0"
      "0\0"
      "0\0",
      14);
  for (std::size_t at = 0; (at = bytes->bytes.find(name, at)) != std::string::npos; ++at) {
    bytes->bytes[at + 124] = 1;
  }
  EXPECT_EQ(SizeOf(OpenStream(OpenOn(bytes, kReading), u"s100000")), 100000 + (1ull << 32));
}

// --- old or new

// A life of some steps, with what the file has to hold after each.
struct Story {
  std::string start;
  std::vector<LoggedBytes::Event> log;
  std::vector<std::size_t> ends;  // of the log, after each step
  std::vector<Contents> states;   // one more than steps
};

Story TellStory() {
  std::mt19937 random(21);
  const LoggedPtr bytes = NewBytes();
  Story story;
  Contents model;
  {
    const StoragePtr root = CreateOn(bytes);
    for (std::size_t i = 0; i < 20; ++i) {
      const std::u16string name = Numbered(u"n", i);
      WriteStream(root, name, model[name] = Pattern(i * 500, static_cast<int>(i)));
    }
  }
  const StoragePtr root = OpenOn(bytes);
  story.start = bytes->bytes;
  story.states.push_back(model);
  bytes->log.clear();
  for (int step = 0; step < 25; ++step) {
    ChangeSomething(root, model, random);
    EXPECT_EQ(root->Commit(STGC_DEFAULT), S_OK);
    story.states.push_back(model);
    story.ends.push_back(bytes->log.size());
  }
  story.log = bytes->log;
  return story;
}

std::string Replay(const Story& story, std::size_t events, const std::set<std::size_t>& lost) {
  std::string bytes = story.start;
  for (std::size_t i = 0; i < events; ++i) {
    const LoggedBytes::Event& event = story.log[i];
    if (event.isFlush || lost.count(i) > 0) continue;
    const std::size_t end = event.offset + event.bytes.size();
    if (bytes.size() < end) bytes.resize(end);
    bytes.replace(event.offset, event.bytes.size(), event.bytes);
  }
  return bytes;
}

// The steps that may have been reached after so many events.
std::size_t StepAt(const Story& story, std::size_t events) {
  return static_cast<std::size_t>(std::lower_bound(story.ends.begin(), story.ends.end(), events) -
                                  story.ends.begin());
}

TEST(CompoundCrashTest, EveryPrefixOfTheWritesIsOldOrNew) {
  const Story story = TellStory();
  for (std::size_t events = 0; events <= story.log.size(); ++events) {
    const std::size_t step = StepAt(story, events);
    const LoggedPtr bytes = NewBytes(Replay(story, events, {}));
    const Contents found = ContentsOf(OpenOn(bytes, kReading));
    const bool isOld = found == story.states[step];
    const bool isNew = step < story.ends.size() && found == story.states[step + 1];
    ASSERT_TRUE(isOld || isNew) << events;
    WriteStream(OpenOn(bytes), u"goes on", "x");
  }
}

// What was not flushed may reach the disk in any order, or not at all.
TEST(CompoundCrashTest, WritesThatWereNotFlushedMayGetLost) {
  const Story story = TellStory();
  std::mt19937 random(1);
  std::size_t flushed = 0;
  for (std::size_t events = 1; events <= story.log.size(); ++events) {
    if (story.log[events - 1].isFlush) flushed = events;
    std::set<std::size_t> lost;
    for (std::size_t i = flushed; i < events; ++i) {
      if (random() % 2 == 0) lost.insert(i);
    }
    const std::size_t step = StepAt(story, events);
    const std::size_t last = std::min(step + 1, story.ends.size());
    const Contents found = ContentsOf(OpenOn(NewBytes(Replay(story, events, lost)), kReading));
    bool isKnown = false;
    for (std::size_t i = step > 0 ? step - 1 : 0; i <= last; ++i)
      isKnown = isKnown || found == story.states[i];
    ASSERT_TRUE(isKnown) << events;
  }
}

// --- no room

TEST(CompoundRoomTest, BytesAreOpenedAndMadeInModesThatThereAre) {
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

TEST(CompoundRoomTest, AWriteWithoutRoomLeavesTheOldContent) {
  const LoggedPtr bytes = NewBytes();
  bytes->isLogging = false;
  const Contents expected = {{u"a", Pattern(20000, 1)}, {u"b", Pattern(300, 2)}};
  {
    const StoragePtr root = CreateOn(bytes);
    for (const auto& [name, content] : expected) WriteStream(root, name, content);
  }
  const std::size_t full = bytes->bytes.size();
  for (std::size_t room = full; room < full + 30000; room += 997) {
    bytes->room = room;
    {
      const StoragePtr root = OpenOn(bytes);
      for (const char16_t* name : {u"a", u"b", u"c"}) {
        const StreamPtr stream = CreateStream(root, name);
        const std::string large = Pattern(40000, 9);
        HRESULT status = stream->Write(large.data(), 40000, nullptr);
        EXPECT_EQ(status, STG_E_MEDIUMFULL);
        EXPECT_EQ(stream->Write("x", 1, nullptr), STG_E_MEDIUMFULL);
        EXPECT_EQ(stream->Commit(STGC_DEFAULT), STG_E_MEDIUMFULL);
      }
    }
    bytes->room = SIZE_MAX;
    ASSERT_TRUE(ContentsOf(OpenOn(bytes, kReading)) == expected) << room;
  }
}

TEST(CompoundRoomTest, OneFailedWriteIsEnough) {
  const LoggedPtr bytes = NewBytes();
  const Contents expected = {{u"a", Pattern(20000, 1)}, {u"b", "small"}};
  {
    const StoragePtr root = CreateOn(bytes);
    WriteStream(root, u"a", Pattern(20000, 1));
    for (const auto& [name, failure, answer] :
         {std::tuple(u"a", STG_E_MEDIUMFULL, STG_E_MEDIUMFULL), {u"new", S_OK, STG_E_WRITEFAULT}}) {
      const StreamPtr stream = CreateStream(root, name);
      bytes->failsOnce = failure;
      const std::string content = Pattern(30000, 2);
      EXPECT_EQ(stream->Write(content.data(), 30000, nullptr), answer);
    }
    WriteStream(root, u"b", "small");
    EXPECT_EQ(NamesOf(root).size(), 2u);
  }
  EXPECT_TRUE(ContentsOf(OpenOn(bytes)) == expected);
}

// The system writes what still fits and then nothing.
TEST_F(CompoundLinuxTest, AFileThatMayNotGrowIsFull) {
  EXPECT_EQ(ExitStatus(StartProcess([this] {
              const rlimit limit = {20001, 20001};
              signal(SIGXFSZ, SIG_IGN);
              setrlimit(RLIMIT_FSIZE, &limit);
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

// --- two processes

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

// --- cost

// A file with so many pictures of a megabyte.
LoggedPtr ManyPictures(std::size_t count, const std::string& picture) {
  LoggedPtr bytes = NewBytes();
  bytes->isLogging = false;
  const StoragePtr root = CreateOn(bytes);
  for (std::size_t i = 0; i < count; ++i) WriteStream(root, Numbered(u"picture", i), picture);
  return bytes;
}

TEST(CompoundCostTest, FollowsTheChangeNotTheFile) {
  const std::string picture = Pattern(1 << 20, 1);
  const LoggedPtr bytes = ManyPictures(100, picture);
  bytes->bytesRead = 0;
  EXPECT_TRUE(ReadStream(OpenOn(bytes, kReading), u"picture50") == picture);
  EXPECT_LT(bytes->bytesRead, picture.size() + 60000);
  bytes->bytesRead = 0;
  WriteStream(OpenOn(bytes), u"added", picture);
  EXPECT_LT(bytes->bytesRead, 100000u);
  const StoragePtr root = OpenOn(bytes);
  for (const char16_t* name : {u"new", u"picture7", u"picture99"}) {
    bytes->bytesWritten = 0;
    WriteStream(root, name, picture);
    EXPECT_LT(bytes->bytesWritten, picture.size() + 100000);
    bytes->bytesWritten = 0;
    WriteStream(root, name, "small");
    EXPECT_LT(bytes->bytesWritten, 100000u);
  }
  EXPECT_LT(bytes->bytes.size(), 104 * picture.size()) << "what was given back is used again";
}

TEST(CompoundCostTest, AnEntryIsAddedToATreeOfAnySizeByFewWrites) {
  const LoggedPtr bytes = NewBytes();
  {
    const StoragePtr root = CreateOn(bytes);
    for (std::size_t i = 0; i < 500; ++i) CreateStream(root, Numbered(u"n", i));
  }
  bytes->bytesWritten = 0;
  CreateStream(OpenOn(bytes), u"added");
  EXPECT_LT(bytes->bytesWritten, 10000u);
  EXPECT_EQ(ReadStream(OpenOn(bytes, kReading), u"added"), "");
}

TEST(CompoundCostTest, WhatWasCommittedIsNotWrittenAgain) {
  const LoggedPtr bytes = NewBytes();
  const StoragePtr root = CreateOn(bytes);
  StreamPtr stream = CreateStream(root, u"s");
  WriteAt(stream, 0, "small");
  EXPECT_EQ(stream->Commit(STGC_DEFAULT), S_OK);
  bytes->bytesWritten = 0;
  stream.Reset();
  EXPECT_EQ(bytes->bytesWritten, 0u);
}

// What a change gave back is free for the next one, and what lies behind it then is cut off.
TEST(CompoundCostTest, AClosedFileIsSafeAndHasNoRoomToSpare) {
  const LoggedPtr bytes = NewBytes();
  WriteStream(CreateOn(bytes), u"large", Pattern(50000, 1));
  EXPECT_EQ(OpenOn(bytes)->DestroyElement(u"large"), S_OK);
  WriteStream(OpenOn(bytes), u"small", "x");
  EXPECT_LT(bytes->bytes.size(), 10000u);
  EXPECT_TRUE(bytes->log.back().isFlush);
  EXPECT_EQ(ReadStream(OpenOn(bytes, kReading), u"small"), "x");
}

TEST(CompoundCostTest, TheRoomOfStreamsIsUsedAgain) {
  const LoggedPtr bytes = NewBytes();
  const StoragePtr root = CreateOn(bytes);
  for (int i = 0; i < 50; ++i) {
    WriteStream(root, u"small", Pattern(900, 1));
    EXPECT_EQ(root->DestroyElement(u"small"), S_OK);
  }
  const StreamPtr tiny = CreateStream(root, u"tiny");
  for (int i = 0; i < 200; ++i) {
    WriteAt(tiny, 0, "x");
    EXPECT_EQ(tiny->Commit(STGC_DEFAULT), S_OK);
  }
  EXPECT_LT(bytes->bytes.size(), 10000u);
  for (int i = 0; i < 20; ++i) {
    WriteStream(CreateStorage(root, u"inner"), u"large", Pattern(9000, 1));
    EXPECT_EQ(root->DestroyElement(u"inner"), S_OK);
  }
  EXPECT_LT(bytes->bytes.size(), 50000u);
}

// Of every stream as much as can be read of so many bytes, and what the reading said.
std::map<std::u16string, std::pair<HRESULT, std::string>> WhatIsThere(const StoragePtr& root,
                                                                      ULONG most) {
  std::map<std::u16string, std::pair<HRESULT, std::string>> found;
  for (const std::u16string& name : NamesOf(root)) {
    StreamPtr stream;
    if (FAILED(root->OpenStream(name.c_str(), nullptr, kReading, 0, stream.Put()))) continue;
    std::string content(most, '\0');
    ULONG read = 0;
    const HRESULT status = stream->Read(content.data(), most, &read);
    found[name] = {status, content.substr(0, read)};
  }
  return found;
}

// What is added to a large file without a look at all of it harms nothing, whatever is wrong there;
// everything else finds the fault.
TEST(CompoundCostTest, AddsToALargeFileWithAFault) {
  const std::string picture = Pattern(1 << 20, 1);
  const LoggedPtr bytes = ManyPictures(70, picture);
  const auto at = [&bytes](std::size_t offset) {
    return reinterpret_cast<std::uint8_t*>(&bytes->bytes[offset]);
  };
  // The chain of a picture in the middle runs into one that is free for all that its table says.
  const std::size_t page = (std::size_t{platform::compound::Get32(at(76 + 4 * 30))} + 1) * 512;
  const std::uint32_t next = platform::compound::Get32(at(page));
  ASSERT_EQ(next, platform::compound::Get32(at(page + 4)) - 1);
  platform::compound::Put32(at(page + 4), 0xFFFFFFFF);
  const auto before = WhatIsThere(OpenOn(bytes, kReading), 1 << 20);
  StoragePtr root = OpenOn(bytes);
  WriteStream(root, u"added", picture);
  StreamPtr stream = CreateStream(root, u"small");
  EXPECT_EQ(stream->Write("x", 1, nullptr), S_OK);
  EXPECT_EQ(stream->Commit(STGC_DEFAULT), STG_E_DOCFILECORRUPT);
  EXPECT_EQ(root->DestroyElement(u"picture1"), STG_E_DOCFILECORRUPT);
  EXPECT_EQ(root->CreateStream(u"late", kWriting, 0, 0, stream.Put()), STG_E_DOCFILECORRUPT);
  stream.Reset();
  root.Reset();
  auto after = WhatIsThere(OpenOn(bytes, kReading), 1 << 20);
  EXPECT_TRUE(after[u"added"].second == picture);
  after.erase(u"added");
  EXPECT_TRUE(after == before);
}

// --- faults

// A file with a stream of each kind in which one word was changed.
class FaultTest : public testing::Test {
 protected:
  FaultTest() {
    const StoragePtr root = CreateOn(bytes);
    for (const auto& [name, content] : expected) WriteStream(root, name, content);
    WriteStream(CreateStorage(root, u"inner"), u"deep", "deep");
  }
  std::uint32_t WordAt(std::size_t offset) const {
    return platform::compound::Get32(reinterpret_cast<const std::uint8_t*>(&bytes->bytes[offset]));
  }
  void SetWord(std::size_t offset, std::uint32_t word) {
    platform::compound::Put32(reinterpret_cast<std::uint8_t*>(&bytes->bytes[offset]), word);
  }
  static std::size_t OffsetOf(std::uint32_t sector) { return (std::size_t{sector} + 1) * 512; }
  std::size_t FatEntry(std::uint32_t sector) const { return OffsetOf(WordAt(76)) + 4 * sector; }
  // Where the directory's entries begin, by number. The file also holds entries of former states.
  std::vector<std::size_t> Entries() const {
    std::vector<std::size_t> entries;
    for (std::uint32_t sector = WordAt(48); sector < 0xFFFFFFF0;
         sector = WordAt(FatEntry(sector))) {
      for (std::size_t i = 0; i < 4; ++i) entries.push_back(OffsetOf(sector) + 128 * i);
    }
    return entries;
  }
  std::size_t IdOf(const std::u16string& name) const {
    const std::string stored(reinterpret_cast<const char*>(name.c_str()), name.size() * 2 + 2);
    const std::vector<std::size_t> entries = Entries();
    for (std::size_t id = 0; id < entries.size(); ++id) {
      if (bytes->bytes.compare(entries[id], stored.size(), stored) == 0) return id;
    }
    ADD_FAILURE() << "no such entry";
    return 0;
  }
  std::size_t EntryOf(const std::u16string& name) const { return Entries()[IdOf(name)]; }

  LoggedPtr bytes = NewBytes();
  const Contents expected = {
      {u"large", Pattern(5000, 1)}, {u"other", Pattern(4200, 2)}, {u"small", Pattern(900, 3)}};
};

TEST_F(FaultTest, OneStreamsFaultIsItsOwn) {
  const std::uint32_t first = WordAt(EntryOf(u"large") + 116);
  const std::uint32_t second = WordAt(FatEntry(first));
  const std::uint32_t foreign = WordAt(EntryOf(u"other") + 116);
  EXPECT_EQ(WordAt(OffsetOf(WordAt(60)) + 4 * 16), 0xFFFFFFFF) << "no more than 16 small pieces";
  const std::string whole = bytes->bytes;
  const struct {
    std::size_t offset;
    std::uint32_t word;
    const char* told;
  } faults[] = {
      {FatEntry(second), first, "the stream runs in a circle"},
      {FatEntry(second), 100000, "the stream's chain of sectors has no end"},
      {FatEntry(second), 0xFFFFFFFF, "the stream's chain of sectors has no end"},
      {EntryOf(u"large") + 120, 0x7FFFFFFF, "the stream is shorter than its size says"},
      {FatEntry(second), foreign, "the stream has the same sectors as"},
      {FatEntry(second), WordAt(48), "the stream has sectors of the file's tables"},
      {FatEntry(second), WordAt(60), "the stream has sectors of the file's tables"},
      {FatEntry(second), WordAt(76), "the stream has sectors of the file's tables"},
      {FatEntry(second), WordAt(Entries()[0] + 116), "the stream has sectors of the file's tables"},
      {EntryOf(u"small") + 116, 0x00FFFFFF, "the stream's chain of sectors has no end"},
      {EntryOf(u"small") + 120, 4000, "the stream is shorter than its size says"},
  };
  TemporaryFolder folder;
  SetWord(EntryOf(u"inner") + 120, 100);  // a storage's size means nothing
  WriteFile(folder / "whole", bytes->bytes);
  EXPECT_TRUE(platform::FindCompoundFaults(folder / "whole", 10).empty());
  for (const auto& [offset, word, told] : faults) {
    bytes->bytes = whole;
    SetWord(offset, word);
    WriteFile(folder / "box", bytes->bytes);
    const auto found = platform::FindCompoundFaults(folder / "box", 10);
    ASSERT_EQ(found.size(), 1u);
    EXPECT_EQ(found[0].words, told);
    EXPECT_EQ(found[0].other.empty(), word != foreign);
    const std::string before = bytes->bytes;
    {
      const StoragePtr root = OpenOn(bytes);
      ASSERT_TRUE(root);
      EXPECT_TRUE(ReadStream(root, u"other") == expected.at(u"other"));
      EXPECT_EQ(ReadStream(OpenStorage(root, u"inner"), u"deep"), "deep");
      StreamPtr stream;
      EXPECT_EQ(root->CreateStream(u"new", kWriting, 0, 0, stream.Put()), STG_E_DOCFILECORRUPT);
      EXPECT_EQ(root->DestroyElement(u"other"), STG_E_DOCFILECORRUPT);
    }
    EXPECT_TRUE(bytes->bytes == before);
  }
}

TEST_F(FaultTest, FaultsOfTheTablesAreTold) {
  TemporaryFolder folder;
  const auto told = [&] {
    WriteFile(folder / "box", bytes->bytes);
    std::vector<std::string> words;
    for (const auto& fault : platform::FindCompoundFaults(folder / "box", 10)) {
      words.push_back(fault.words);
    }
    return words;
  };
  using Words = std::vector<std::string>;
  SetWord(44, 2);
  EXPECT_EQ(told(), Words{"the list of allocation tables is damaged"});
  SetWord(44, 1);
  // The table of the small streams lies at the end of the file, and half of it is missing.
  const auto sector = static_cast<std::uint32_t>(bytes->bytes.size() / 512 - 1);
  bytes->bytes += bytes->bytes.substr(OffsetOf(WordAt(60)), 256);
  SetWord(FatEntry(sector), 0xFFFFFFFE);
  SetWord(60, sector);
  EXPECT_EQ(told(), (Words{"the place of the small streams is damaged", "the file is cut off"}));
  EXPECT_EQ(platform::FindCompoundFaults(folder / "box", 1).size(), 1u) << "no more than wanted";
  // Without the allocation table the first sector of the directory is left.
  SetWord(76, 100000);
  EXPECT_EQ(NamesOf(OpenOn(bytes, kReading)),
            (std::vector<std::u16string>{u"large", u"other", u"small"}));
}

// Some writers end the file with the last byte of the last stream.
TEST_F(FaultTest, AShortLastSectorIsRead) {
  std::uint32_t last = WordAt(EntryOf(u"large") + 116);
  while (WordAt(FatEntry(last)) != 0xFFFFFFFE) last = WordAt(FatEntry(last));
  const auto added = static_cast<std::uint32_t>(bytes->bytes.size() / 512 - 1);
  SetWord(FatEntry(last), added);
  SetWord(FatEntry(added), 0xFFFFFFFE);
  SetWord(EntryOf(u"large") + 120, 5121);
  bytes->bytes += 'x';
  const std::string large = ReadStream(OpenOn(bytes, kReading), u"large");
  EXPECT_TRUE(large.starts_with(expected.at(u"large")));
  EXPECT_EQ(large.back(), 'x');
}

TEST_F(FaultTest, AFaultyFileIsNotMadeAnew) {
  const std::uint32_t first = WordAt(EntryOf(u"large") + 116);
  SetWord(FatEntry(first), first);
  TemporaryFolder folder;
  const auto path = folder / "box";
  WriteFile(path, bytes->bytes);
  StoragePtr root;
  EXPECT_EQ(StgCreateDocfile(Ole(path).c_str(), kWriting | STGM_CREATE, 0, root.Put()),
            STG_E_DOCFILECORRUPT);
  EXPECT_TRUE(ReadFile(path) == bytes->bytes);
}

TEST_F(FaultTest, ReadsWhatLiesInFrontAndThenZeros) {
  const std::uint32_t first = WordAt(EntryOf(u"large") + 116);
  SetWord(FatEntry(WordAt(FatEntry(first))), 100000);
  std::string buffer(5000, 'x');
  ULONG read = 0;
  const StoragePtr root = OpenOn(bytes, kReading);
  const StreamPtr large = OpenStream(root, u"large");
  EXPECT_EQ(large->Read(buffer.data(), 5000, &read), S_OK);
  EXPECT_EQ(read, 1024u);
  EXPECT_TRUE(buffer == expected.at(u"large").substr(0, 1024) + std::string(5000 - 1024, '\0'));
  buffer.assign(5000, 'x');
  EXPECT_EQ(large->Read(buffer.data(), 5000, &read), STG_E_DOCFILECORRUPT);
  EXPECT_EQ(read, 0u);
  EXPECT_TRUE(buffer == std::string(5000, '\0'));
}

// Reads whatever there is and tries to add something; what was whole stays so.
void UseBytes(const LoggedPtr& bytes) {
  StoragePtr root;
  if (FAILED(StgOpenStorageOnILockBytes(bytes.Get(), nullptr, kWriting, nullptr, 0, root.Put())))
    return;
  const auto before = WhatIsThere(root, 20000);
  StreamPtr stream;
  if (FAILED(root->CreateStream(u"added by the test", kWriting, 0, 0, stream.Put()))) return;
  const std::string content = Pattern(5000, 4);
  EXPECT_EQ(stream->Write(content.data(), 5000, nullptr), S_OK);
  stream.Reset();
  root.Reset();
  ASSERT_EQ(StgOpenStorageOnILockBytes(bytes.Get(), nullptr, kWriting, nullptr, 0, root.Put()),
            S_OK);
  auto after = WhatIsThere(root, 20000);
  EXPECT_EQ(after.erase(u"added by the test"), 1u);
  EXPECT_TRUE(after == before);
}

TEST_F(FaultTest, AnyChangedWordIsBorne) {
  const std::string whole = bytes->bytes;
  for (std::size_t offset = 0; offset + 4 <= whole.size(); offset += 4) {
    for (const std::uint32_t word : {0u, 5u, 0xFFFFFFFEu, 0xFFFFFFFFu, 0x7FFFFFFFu}) {
      bytes->bytes = whole;
      SetWord(offset, word);
      UseBytes(bytes);
      ASSERT_FALSE(testing::Test::HasFailure()) << offset << " " << word;
    }
  }
}

// The version and the size of the sectors belong together.
TEST_F(FaultTest, AHeadOfTwoVersionsIsNone) {
  const std::string whole = bytes->bytes;
  for (const auto& [place, byte] : {std::pair{26u, '\4'}, {30u, '\14'}}) {
    bytes->bytes = whole;
    bytes->bytes[place] = byte;
    StoragePtr root;
    EXPECT_TRUE(
        FAILED(StgOpenStorageOnILockBytes(bytes.Get(), nullptr, kReading, nullptr, 0, root.Put())));
  }
}

TEST_F(FaultTest, ANameOfAnImpossibleLengthIsAFault) {
  const std::size_t entry = EntryOf(u"large");
  for (const char bytesOfName : {'\x02', '\x0D', '\x42'}) {
    bytes->bytes[entry + 64] = bytesOfName;
    StreamPtr stream;
    EXPECT_EQ(OpenOn(bytes)->CreateStream(u"new", kWriting, 0, 0, stream.Put()),
              STG_E_DOCFILECORRUPT);
  }
}

TEST_F(FaultTest, AnyLengthIsBorne) {
  for (const char* name : {"linux.box", "windows.box", "windows-4096.box"}) {
    const std::string whole = ReadFile(std::filesystem::path(FXBOX_TEST_DATA) / name);
    ASSERT_FALSE(whole.empty());
    for (std::size_t length = 0; length < whole.size(); length += 101) {
      bytes->bytes = whole.substr(0, length);
      UseBytes(bytes);
      ASSERT_FALSE(testing::Test::HasFailure()) << name << " " << length;
    }
  }
}

// Elements in a row instead of a tree, all red, in any order: found, read, and put right by the
// first change, whatever it is.
TEST_F(FaultTest, OddTreesAreRead) {
  const Contents before = ContentsOf(OpenOn(bytes, kReading));
  const std::u16string names[] = {u"small", u"inner", u"other", u"large"};
  const std::uint32_t none = 0xFFFFFFFF;
  const auto idOf = [this](const std::u16string& name) {
    return static_cast<std::uint32_t>(IdOf(name));
  };
  for (int i = 0; i < 4; ++i) {
    const std::size_t entry = EntryOf(names[i]);
    EXPECT_EQ(bytes->bytes[entry + 67], names[i] == u"inner" ? 0 : 1) << "red is the last one";
    bytes->bytes[entry + 67] = 0;
    SetWord(entry + 68, none);
    SetWord(entry + 72, i < 3 ? idOf(names[i + 1]) : none);
  }
  SetWord(OffsetOf(WordAt(48)) + 76, idOf(names[0]));
  bytes->bytes[8] = 'x';  // of the class that some writers put into the head
  SetWord(52, 7);         // and of the number of changes that some count there
  const std::string odd = bytes->bytes;
  ASSERT_TRUE(ContentsOf(OpenOn(bytes, kReading)) == before);
  WriteStream(OpenOn(bytes), u"new", "new");
  EXPECT_EQ(bytes->bytes[8], 'x');
  EXPECT_EQ(WordAt(52), 7u);
  Contents after = ContentsOf(OpenOn(bytes, kReading));
  EXPECT_EQ(after.erase(u"new"), 1u);
  EXPECT_TRUE(after == before);
  for (const char16_t* name : {u"small", u"other", u"large"}) {
    bytes->bytes = odd;
    EXPECT_EQ(OpenOn(bytes)->DestroyElement(name), S_OK);
    after = before;
    after.erase(name);
    EXPECT_TRUE(ContentsOf(OpenOn(bytes, kReading)) == after);
    bytes->bytes = odd;
    EXPECT_EQ(OpenOn(bytes)->RenameElement(name, u"renamed"), S_OK);
    after[u"renamed"] = before.at(name);
    EXPECT_TRUE(ContentsOf(OpenOn(bytes, kReading)) == after);
  }
}

// The place of a removed element, taken by one that is not written yet, is empty in the file.
TEST_F(FaultTest, ARemovedElementLeavesNoEntry) {
  for (std::size_t i = 0; i < 12; ++i) WriteStream(OpenOn(bytes), Numbered(u"n", i), "x");
  const std::string whole = bytes->bytes;
  for (std::size_t i = 0; i < 12; ++i) {
    bytes->bytes = whole;
    const std::size_t entry = IdOf(Numbered(u"n", i));
    const StoragePtr root = OpenOn(bytes);
    EXPECT_EQ(root->DestroyElement(Ole(Numbered(u"n", i)).c_str()), S_OK);
    const StreamPtr open = CreateStream(root, u"later");
    WriteStream(root, u"other", "x");
    EXPECT_EQ(bytes->bytes[Entries()[entry] + 66], 0) << i;
  }
}

// --- trees

TEST(SiblingTreeTest, StaysBalanced) {
  using platform::compound::Element;
  using platform::compound::Id;
  std::mt19937 random(2);
  std::vector<Element> elements(300);
  Id root = platform::compound::kNone;
  platform::compound::SiblingTree tree(elements, root);
  std::set<Id> there;
  for (int step = 0; step < 5000; ++step) {
    const Id id = static_cast<Id>(random() % elements.size());
    if (there.count(id) > 0) {
      tree.Remove(id);
      there.erase(id);
    } else {
      tree.Insert(id, std::less<Id>());
      there.insert(id);
    }
    ASSERT_TRUE(tree.IsBalanced(there.size())) << step;
  }
  std::vector<Id> ordered(there.begin(), there.end());
  for (std::size_t count = 0; count <= ordered.size(); ++count) {
    tree.Build({ordered.begin(), ordered.begin() + static_cast<std::ptrdiff_t>(count)});
    ASSERT_TRUE(tree.IsBalanced(count)) << count;
  }
  // One black more on a way, a red one below a red one, a red top, all in a row.
  for (const std::vector<Id>& painted : {std::vector<Id>{0}, {1, 3, 6, 8}, {4}}) {
    tree.Build({0, 1, 2, 3, 4, 5, 6, 7, 8});
    for (const Id id : painted) elements[id].isBlack = !elements[id].isBlack;
    EXPECT_FALSE(tree.IsBalanced(9));
  }
  for (Id id = 0; id < 9; ++id) {
    elements[id].isBlack = true;
    elements[id].left = platform::compound::kNone;
    elements[id].right = id < 8 ? id + 1 : platform::compound::kNone;
  }
  root = 0;
  EXPECT_FALSE(tree.IsBalanced(9));
}

}  // namespace
}  // namespace testing_support
