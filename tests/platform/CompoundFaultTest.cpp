// Compound files with faults, and with trees that others wrote.
#include <ole2.h>

#include "platform/CompoundCheck.h"
#include "platform/compound/Format.h"
#include "platform/compound/SiblingTree.h"
#include "tests/platform/CompoundLinuxSupport.h"

namespace testing_support {
namespace {

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
    const std::string stored = StoredName(name);
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
