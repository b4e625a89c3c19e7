// What a compound file holds after any write that was its last, without room, and for how many
// bytes.
#include <ole2.h>

#include "platform/compound/Format.h"
#include "tests/platform/CompoundLinuxSupport.h"

namespace testing_support {
namespace {

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

}  // namespace
}  // namespace testing_support
