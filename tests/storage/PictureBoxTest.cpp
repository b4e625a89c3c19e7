// The picture box: the bytes of every generation, what is found first, what is refused.
#include <gtest/gtest.h>

#include <memory>
#include <sstream>

#include "imageio/ImageLoader.h"
#include "imageio/StoredBitmap.h"
#include "platform/StoragePath.h"
#include "platform/fake/FakeServices.h"
#include "storage/KvErrors.h"
#include "storage/KvFile.h"
#include "storage/KvPrivateStorage.h"
#include "storage/KvSimpStorage.h"
#include "storage/PictureNames.h"
#include "storage/PictureStream.h"
#include "storage/kvPicBox.h"
#include "tests/storage/MemoryStream.h"
#include "tests/storage/StorageSupport.h"

using namespace std::string_literals;
using namespace test;
using picbox::Bytes;

namespace {

// Every byte differs from its neighbours.
Bytes Painted(Bytes bitmap, int rowBytes) {
  std::uint8_t level = 1;
  for (BYTE* row : imageio::RowsOf(bitmap)) {
    for (int x = 0; x < rowBytes; ++x) row[x] = level += 31;
  }
  return bitmap;
}

Bytes Bitmap(int width, int height) {
  return Painted(imageio::BlankColourBitmap(width, height), 3 * width);
}

Bytes Mask(int width, int height) {
  return Painted(imageio::BlankMaskBitmap(width, height), width);
}

// A mask in the form of work pictures: -8 bits.
Bytes Plane(int width, int height) {
  Bytes plane = Mask(width, height);
  plane[14] = 0xF8, plane[15] = 0xFF;
  return plane;
}

std::string Text(const Bytes& bytes) {
  return {bytes.begin(), bytes.end()};
}

std::string Sized(const std::string& bytes) {
  return Longs({static_cast<std::int64_t>(bytes.size())}) + bytes;
}

std::string Sized(const Bytes& bytes) {
  return Sized(Text(bytes));
}

std::string Bytes10(char kind) {
  return std::string(1, kind) + "JPG\0\x08\0\0\0\0"s;
}

Bytes FileOf(const Bytes& picture, int type) {
  imageio::ImageLoader loader;
  loader.SetImage(picture);
  return loader.Save(type);
}

const std::string& Jpeg() {
  static const std::string file = Text(FileOf(Bitmap(16, 16), imageio::kTypeJpeg));
  return file;
}

// A box in memory, or in a folder.
struct Box {
  explicit Box(bool isFolder = false) { isFolder ? Open(folder) : Open(new KvMemoryStorage(0)); }
  // A second one on the folder of the first.
  explicit Box(const TemporaryFolder& used) { Open(used); }
  void Open(const TemporaryFolder& used) {
    Open(new KvSimpStorage(platform::StoragePathOf(used / "box_kv").c_str(), OpenModeReadWrite,
                           true, false));
  }
  void Open(IKvStorage* storage) {
    parent.reset(storage);
    box = std::make_unique<kvPicBox>(storage, OpenModeReadWrite);
  }
  kvPicBox* operator->() { return box.get(); }
  IKvStorage& At(picbox::Place place) { return *box->StorageOf(place); }
  void Put(const char* name, const std::string& bytes) {
    test::Put(At(picbox::kPictures), name, bytes);
  }
  std::string Stored(const char* name) { return ReadAll(At(picbox::kPictures), name); }

  // What a reader sees, in three words.
  std::string Read(const char* name, const char* ext = "") {
    Bytes picture, mask;
    box->GetQuick(name, ext, &picture, &mask);
    std::string told = picture.empty() ? "none" : "picture";
    if (!mask.empty()) told += " mask";
    if (box->HasFailed()) told += " failed";
    return told;
  }

  TemporaryFolder folder;
  StoragePtr parent;
  std::unique_ptr<kvPicBox> box;
};

}  // namespace

TEST(PictureNames, AreCleanedAndGetTheirEndings) {
  EXPECT_EQ(picbox::CleanName("a*b/c:d;e<f>g?h\\i|j\"k\xE4\x7Fl m~"),
            "a_b_c_d_e_f_g_h_i_j_k__l m~");
  EXPECT_EQ(picbox::AddExtension("a.b.JPG", "png"), "a.b.png");
  EXPECT_EQ(picbox::AddExtension("a.note", "png"), "a.note.png");
  EXPECT_EQ(picbox::AddExtension("a.note", "NOTE"), "a.NOTE");
  EXPECT_EQ(picbox::AddExtension("a.jpg", ""), "a.jpg");
  for (const char* refused : {"", ".", "..", "PicMask", "onlypic", "a.INF", ".inf"}) {
    EXPECT_FALSE(picbox::CanBeName(refused)) << refused;
  }
  EXPECT_EQ(picbox::PictureTag("a.b.Tiff"), "Tiff");
  EXPECT_EQ(picbox::PictureTag("a.note"), "");
  std::string types;
  for (int type = 0; type < 19; ++type) {
    types += picbox::TagOfType(type) + std::string(picbox::SuffixOfType(type)) + " ";
  }
  EXPECT_EQ(types,
            " jpg.JPG tif.TIF aap.AAP psd.PSD acc ppx.PPX bmp.BMP acc gif.GIF png.PNG znx gif "
            "jp2.JPEG ras.RAS ppm.PNM pcd.PCD raw  ");
}

TEST(PictureBox, WritesTheNewFormatToTheByte) {
  Box box;
  const Bytes picture = Bitmap(701, 501);  // more than is read at a time
  Bytes longer = picture, mask = Mask(701, 501);
  longer.resize(longer.size() + 5);  // nothing behind the rows is stored
  mask.back() = 0x77;                // what fills up a row comes back, too
  const unsigned stored = box->AddFile("a", longer, mask, -93, -51, false, false, false);
  EXPECT_EQ(stored, picture.size() + mask.size());
  EXPECT_TRUE(box.Stored("a") ==
              Bytes10(1) + Compressed(Longs({-93, -51}) + Sized(picture) + Sized(mask)));
  EXPECT_TRUE(box.Stored("a") == Text(picbox::NewStream(picture, mask, -93, -51, {})));
  Bytes readPicture, readMask;
  std::int32_t x = 0, y = 0;
  box->GetQuick("a", "", &readPicture, &readMask, -1, -1, &x, &y);
  EXPECT_TRUE(readPicture == picture && readMask == mask);
  EXPECT_EQ(x, -93);
  EXPECT_EQ(y, -51);
}

TEST(PictureBox, WritesEncodedPicturesAndPlainFiles) {
  Box box;
  const Bytes picture = Bitmap(20, 20), mask = Mask(20, 20);
  EXPECT_GT(box->AddFile("a", picture, mask, 5, 6, true, false, false), 0u);
  const std::string stored = box.Stored("a");
  EXPECT_EQ(stored.substr(0, 10), "\x01JPG\0\x08\x01\0\0\0"s);
  auto found = box->OpenPicture(1, "a");
  ASSERT_TRUE(found);
  EXPECT_EQ(found->headerSize, 14);
  EXPECT_EQ(stored.substr(14, 3), "\xFF\xD8\xFF");
  EXPECT_EQ(stored.substr(14 + found->size), Compressed(Longs({5, 6}) + Sized(mask)));
  EXPECT_EQ(stored, Text(picbox::NewStream({}, mask, 5, 6, box->ReadEncoded(*found))));
  found.reset();
  EXPECT_EQ(box.Read("a"), "picture mask");
  EXPECT_EQ(box->FoundType(), imageio::kTypeJpeg);
  for (const int type : {1, 5, 12, 99}) {  // none but the first has a suffix
    box->SetSaveType(type);
    EXPECT_GT(box->AddFile("b", picture, {}, 0, 0, true, false, true), 0u) << type;
    EXPECT_EQ(box.Stored("b.JPG").substr(0, 3), "\xFF\xD8\xFF") << type;
  }
}

TEST(PictureBox, KeepsDataInPlainFiles) {
  Box box;
  const std::string iptc = "\x1C\x02x\0\3abc"s, exif = "II*" + std::string(5, '\0') + "exif";
  for (const bool isGiven : {true, false}) {
    box->SetIptcData(isGiven ? iptc.data() : nullptr, 8);
    box->SetExifData(isGiven ? exif.data() : nullptr, 12);
    EXPECT_GT(box->AddFile("a", Bitmap(16, 16), {}, 0, 0, true, true, true), 0u);
    const std::string file = box.Stored("a.JPG");
    EXPECT_EQ(file.find(iptc) != file.npos, isGiven);
    EXPECT_EQ(file.find(exif) != file.npos, isGiven);
  }
}

TEST(PictureBox, DecodesReducedWhereThatIsAllowed) {
  const struct {
    int width, height;  // that are preferred
    bool isReduced;
  } cases[] = {{-1, -1, false}, {40, -1, false}, {-1, 20, false}, {40, 0, false},  {0, 24, false},
               {40, 24, true},  {20, 24, true},  {40, 12, true},  {160, 12, false}};
  for (const bool isFolder : {false, true}) {
    Box box(isFolder);
    box->AddFile("a", Bitmap(160, 96), {}, 0, 0, true, false, false);
    for (const auto& c : cases) {
      SCOPED_TRACE(testing::Message() << c.width << " x " << c.height << " " << isFolder);
      Bytes picture, mask;
      box->GetQuick("a", "", &picture, &mask, c.width, c.height);
      const auto read = imageio::StoredBitmap::Parse(picture);
      ASSERT_TRUE(read);
      EXPECT_GE(read->Width(), c.width);
      EXPECT_GE(read->Height(), c.height);
      EXPECT_EQ(read->Width() < 160, c.isReduced);
    }
  }
}

TEST(PictureBox, ReadsEveryGeneration) {
  const Bytes picture = Bitmap(5, 4), mask = Mask(5, 4);
  const std::string place = Longs({1, 2});
  const std::string plainHead = "\x08\0\0\0\0"s;
  Box box;
  box.Put("native.JPG", Jpeg());
  box.Put("bare", Jpeg());
  Put(*box.parent, "beside.tif", Jpeg());
  box.Put("absent", "\x01TIFF\0"s + Compressed(place + Sized(picture) + Sized(mask)));
  box.Put("cut", "\x02JPG" + "\0\x08\x01"s);
  Put(box.At(picbox::kOnlyPic), "old2", plainHead + Compressed(place + Sized(picture)));
  Put(box.At(picbox::kPicMask), "old1",
      plainHead + Compressed(place + Sized(picture) + Sized(mask)));
  Put(box.At(picbox::kOnlyMask), "old3", plainHead + Compressed(place + Sized(mask)));
  Put(box.At(picbox::kRootPicMask), "oldest",
      "\x08\x01\0\0\0"s + Sized(Jpeg()) + Compressed(place));
  Put(box.At(picbox::kRootPicMask2), "oldest2",
      plainHead + Compressed(place + Sized(picture) + Sized(mask)));
  const std::pair<const char*, const char*> rows[] = {
      {"native", "picture, native of kind 2, head 0 of 0, to be 0 JPG"},
      {"bare", "picture, native of kind 2, head 0 of 0, to be 1 jpg"},
      {"beside", "picture, native of kind 1, head 0 of 0, to be 0 tif"},
      {"absent", "picture mask, stored of kind 1, head 6 of 14, to be 2 TIF"},
      {"old2", "picture, stored of kind 2, head 5 of 5, to be 1 JPG"},
      {"old1", "picture mask, stored of kind 1, head 5 of 9, to be 10 PNG"},
      {"old3", "none, stored of kind 3, head 5 of 9, to be 1 JPG"},
      {"oldest", "picture, stored of kind 2, head 9 of 9, to be 1 jpg"},
      {"oldest2", "picture mask, stored of kind 1, head 5 of 9, to be 10 PNG"},
      {"cut", "none failed, stored of kind 2, head 7 of 14, to be 0 "}};
  KvString tag;
  for (const auto& [name, expected] : rows) {
    std::ostringstream told;
    told << box.Read(name, "tif");
    auto found = box->OpenPicture(1, name, "tif");
    ASSERT_TRUE(found) << name;
    told << (found->native ? ", native" : ", stored") << " of kind " << found->kind << ", head "
         << found->head.bytes << " of " << found->headerSize;
    found->stream.reset();
    told << ", to be " << box->AnalyzeFile(name, tag, "tif");
    EXPECT_EQ(told.str() + " " + tag.ToStdString(), expected) << name;
    if (found->place == picbox::kPlaceCount) continue;  // beside the box
    const auto again = box->OpenAt(found->place, found->streamName.c_str());
    EXPECT_TRUE(again && again->size == found->size && again->fullName == found->fullName);
  }
  EXPECT_EQ(box->AnalyzeFile("nowhere", tag), 0);
  EXPECT_EQ(tag, "");
  EXPECT_FALSE(box->OpenPicture(1, nullptr));
}

TEST(PictureBox, TakesAHeadOnlyWithAWholeTagAndAKind) {
  Box box;
  const std::string body = Compressed(Longs({0, 0}) + Sized(Bitmap(1, 1)));
  const std::string rest = "\x08\0\0\0\0"s + body;
  const std::pair<std::string, bool> cases[] = {
      {"\x02jpg\0"s, true},     {"\x03TIFF"s, true},   {"\x02TYPE"s, true}, {"\x02PG\0\0"s, false},
      {"\x02\0\0\0\0"s, false}, {"\x04JPG\0"s, false}, {"\0JPG\0"s, false}, {"\x02JPGX"s, false}};
  for (const auto& [head, counts] : cases) {
    box.Put("a", head + rest);
    int kind = -1;
    IKvStream* stream = box.At(picbox::kPictures).OpenStream("a", OpenModeRead);
    const KvString tag = box->Read5BytesHeader(stream, &kind);
    EXPECT_EQ(kind, counts ? head[0] : 0) << head;
    EXPECT_EQ(stream->GetPosition(), counts ? 5u : 0u) << head;
    if (head.find("TYPE") != head.npos) {
      EXPECT_EQ(tag, "");
    }
    stream->Close();
  }
}

TEST(PictureBox, WritesTheHeadThatIsAskedFor) {
  const struct {
    bool newFormat;
    int kind;
    std::int32_t encoded;
    picbox::Place place;
    std::string head;
  } cases[] = {{true, 2, 0, picbox::kPictures, "\2PNG\0\x08\0\0\0\0"s},
               {true, 1, -1, picbox::kPictures, "\1PNG\0\x08\1\0\0\0\7\0\0\0"s},
               {false, 1, 3, picbox::kPicMask, "\x08\3\0\0\0\7\0\0\0"s},
               {false, 2, 0, picbox::kOnlyPic, "\x08\0\0\0\0"s},
               {false, 3, 0, picbox::kOnlyMask, "\x08\0\0\0\0"s}};
  for (const auto& c : cases) {
    Box box;
    IKvStream* stream = box->OpenWritePic("a", "png", true, c.newFormat, c.kind, 7, c.encoded);
    ASSERT_TRUE(stream);
    stream->Close();
    EXPECT_EQ(ReadAll(box.At(c.place), "a"), c.head) << c.kind;
    for (const int kind : {0, 4}) {
      EXPECT_FALSE(box->OpenWritePic("a", "png", true, false, kind, 7, 0));
    }
  }
}

TEST(PictureBox, TellsAMaskByWhatStandsBehindThePicture) {
  Box box;
  const std::string head = "\x01JPG\0\x08\x01\0\0\0"s + Sized(Jpeg());
  for (const std::size_t behind : {36u, 37u}) {  // with the head 50 and 51
    box.Put("a", head + std::string(behind, 'x'));
    EXPECT_EQ(box->OpenPicture(1, "a")->kind, behind == 36 ? 2 : 1);
  }
}

TEST(PictureBodies, AreReadToTheirEnd) {
  for (const bool isWhole : {true, false}) {
    std::string stored = Compressed(Longs({1, 2}) + std::string(10000, 'x'));
    stored.back() = static_cast<char>(stored.back() + !isWhole);
    MemoryStream source(stored);
    source.most = 7;
    picbox::PictureBody body(source, {});
    std::int32_t x = 0, y = 0;
    EXPECT_TRUE(body.ReadPosition(x, y) && x == 1 && y == 2);
    EXPECT_TRUE(body.ReadStart(5000, 10).size() == 10 && body.Skip(4990));
    EXPECT_EQ(body.ReachesEnd(), isWhole);
    EXPECT_FALSE(body.Skip(1));
  }
}

TEST(PictureBox, HalfAPictureIsNone) {
  const Bytes picture = Bitmap(9, 9), mask = Mask(9, 9), other = Mask(9, 8), plane = Plane(9, 9);
  const std::string place = Longs({0, 0});
  Bytes top = picture, packed = picture, wide = picture, deep = picture;
  top[8] = 0xF7, top[9] = top[10] = top[11] = 0xFF;  // height -9
  packed[16] = 1;
  wide[6] = 0x10;
  deep[14] = 16;
  const std::pair<const char*, std::string> cases[] = {
      {"no position", Bytes10(2) + Compressed("abc")},
      {"no size", Bytes10(2) + Compressed(place)},
      {"short picture", Bytes10(2) + Compressed(place + Longs({500}) + "abc")},
      {"size beyond all memory",
       Bytes10(2) + Compressed(place + Longs({0xFFFFFFFF}) + Text(picture))},
      {"no mask", Bytes10(1) + Compressed(place + Sized(picture))},
      {"short mask", Bytes10(1) + Compressed(place + Sized(picture) + Longs({2000}) + Text(mask))},
      {"other mask", Bytes10(1) + Compressed(place + Sized(picture) + Sized(other))},
      {"mask as colours", Bytes10(2) + Compressed(place + Sized(plane))},
      {"colours as mask", Bytes10(1) + Compressed(place + Sized(picture) + Sized(picture))},
      {"top down", Bytes10(2) + Compressed(place + Sized(top))},
      {"compressed", Bytes10(2) + Compressed(place + Sized(packed))},
      {"too wide", Bytes10(2) + Compressed(place + Sized(wide))},
      {"16 bits", Bytes10(2) + Compressed(place + Sized(deep))},
      {"cut stream", (Bytes10(2) + Compressed(place + Sized(picture))).substr(0, 30)},
      {"JPEG that is none", "\x02JPG\0\x08\x01\0\0\0\x05\0\0\0hello"s + Compressed(place)},
  };
  for (const auto& [what, bytes] : cases) {
    Box box;
    box.Put("a", bytes);
    EXPECT_EQ(box.Read("a"), "none failed") << what;
    EXPECT_EQ(box->LoaderStatus() != 0, *what == 'J') << what;
  }
  // A file of another program is the loader's affair alone.
  for (const bool isFolder : {false, true}) {
    Box box(isFolder);
    box.Put("a.JPG", "hello");
    EXPECT_EQ(box.Read("a"), "none");
    EXPECT_NE(box->LoaderStatus(), 0);
  }
}

// As it is stored, open fields and all: 4 bits, 5 x 1 pixels, no size and no number of colours.
TEST(PictureBox, GivesBitmapsOfFewColoursAsTheyAre) {
  const std::string bitmap =
      Longs({40, 5, 1, 1 | 4 << 16, 0, 0, 0, 0, 0, 0}) + MixedBytes(64) + "\x12\x34\x50" + "?";
  Box box;
  box.Put("a", Bytes10(2) + Compressed(Longs({0, 0}) + Sized(bitmap)));
  Bytes read;
  box->GetQuick("a", "", &read, nullptr);
  EXPECT_EQ(Text(read), bitmap);
}

TEST(PictureBox, NotesComeBackAndBrokenOnesAreEmpty) {
  Box box;
  std::string block = "XXXXX0123456789012345678901234567890";
  ASSERT_TRUE(box->WriteImageInfo("a", "a text", block.data()));
  EXPECT_EQ(block.substr(0, 6), "V10000");
  const std::string stored = box.Stored("a.inf");
  EXPECT_EQ(stored, "KVQX" + Longs({7}) + "a text\0"s + Longs({36}) + block);
  Bytes note(stored.begin(), stored.end());
  EXPECT_TRUE(picbox::IsWholeNote(note));
  ++note[15];
  EXPECT_FALSE(picbox::IsWholeNote(note)) << "a block of 37 bytes";
  note = {stored.begin(), stored.end() - 1};
  EXPECT_FALSE(picbox::IsWholeNote(note));
  std::string read(36, '\0');
  EXPECT_EQ(box->GetImageInfo("a", read.data()), "a text");
  EXPECT_EQ(read, block);
  const std::string longer(70000, 'n');
  ASSERT_TRUE(box->WriteImageInfo("a", longer.c_str(), nullptr));
  EXPECT_EQ(box->GetImageInfo("a", nullptr), longer.c_str());
  ASSERT_TRUE(box->WriteImageInfo("a", "b", nullptr));
  EXPECT_EQ(box.Stored("a.inf").size(), 8u + 2 + 4 + 36);
  for (const std::string& broken :
       {std::string("KVQY") + stored.substr(4), std::string("KVQ"),
        "KVQX" + Longs({0xFFFFFFFF}) + "text", "KVQX" + Longs({500}) + stored.substr(8),
        stored.substr(0, stored.size() - 1), stored.substr(0, 15)}) {
    box.Put("a.inf", broken);
    EXPECT_FALSE(picbox::IsWholeNote({broken.begin(), broken.end()}));
    EXPECT_EQ(box->GetImageInfo("a", read.data()), "");
  }
  EXPECT_EQ(read, block);
  EXPECT_EQ(box->GetImageInfo("b", nullptr), "");
  EXPECT_FALSE(box->WriteImageInfo("PicMask", "text", nullptr));
}

TEST(PictureBox, CutsAJpegBehindItsScanHead) {
  Box box;
  const auto header = [&](const std::string& jpeg) {
    box.Put("a.JPG", jpeg);
    Bytes bytes;
    box->GetJPegHeader("a", &bytes);
    return Text(bytes);
  };
  const std::string start = "\xFF\xD8";
  const std::string scan = "\xFF\xDA\0\x04zz"s;
  EXPECT_EQ(header(start + "\xFF\xE0\0\x02"s + scan + "data"), start + "\xFF\xE0\0\x02"s + scan);
  const std::string sixFill(5, '\xFF');
  EXPECT_EQ(header(start + sixFill + scan + "data"), start + sixFill + scan);
  EXPECT_EQ(header(start + scan), start + scan);
  EXPECT_EQ(header("no JPEG"), "");
  Bytes none(3);
  EXPECT_EQ(box->GetJPegHeader("absent", &none), 0u);
  EXPECT_TRUE(none.empty());
  EXPECT_FALSE(box->HasFailed());
  for (const std::string& broken :
       {start + sixFill + "\xFF" + scan, start + "\xFF\xE0\0\x01x"s + scan,
        start + "\xFF\xE0\x7F\xFFx"s, start + scan.substr(0, 5), start}) {
    Box other;
    other.Put("a.JPG", broken);
    Bytes bytes;
    EXPECT_EQ(other->GetJPegHeader("a", &bytes), 0u);
    EXPECT_TRUE(other->HasFailed());
  }
}

TEST(PictureBox, GivesStoredBytesWithoutDecoding) {
  Box box;
  const Bytes picture = Bitmap(4, 4), mask = Mask(4, 4);
  box->AddFile("dib", picture, mask, 0, 0, false, false, false);
  box->AddFile("jpeg", picture, mask, 0, 0, true, false, false);
  box->AddFile("alone", picture, {}, 0, 0, false, false, false);
  box.Put("absent", "\x02JPG\0\0"s + Compressed(Longs({0, 0}) + Sized(picture)));
  // More bytes than there are.
  box.Put("cut", "\x02JPG\0\x08\x01\0\0\0\x7F\0\0\0hello"s);
  auto jpeg = box->OpenPicture(1, "jpeg");
  const std::string file = Text(box->ReadEncoded(*jpeg));
  jpeg.reset();
  const struct {
    const char* name;
    bool picture, mask;
    std::string bytes;
  } cases[] = {{"dib", true, false, Text(picture)},
               {"dib", false, true, Text(mask)},
               {"dib", true, true, Text(picture) + Text(mask)},
               {"jpeg", true, false, file},
               {"jpeg", false, true, Text(mask)},
               {"jpeg", true, true, file + Text(mask)},
               {"alone", true, false, Text(picture)},
               {"absent", true, false, Text(picture)},
               {"alone", true, true, ""}};
  platform::FakeServices fakes;
  const platform::ScopedServices scope(fakes.services);
  for (const auto& c : cases) {
    SCOPED_TRACE(testing::Message() << c.name << c.picture << c.mask);
    for (const unsigned room : {10u, 4000u}) {
      bool wantPicture = c.picture, wantMask = c.mask;
      unsigned size = room;
      std::string bytes(4000, '?');
      const unsigned copied =
          box->GetImageFileInfo(c.name, &wantPicture, &wantMask, &size, bytes.data());
      EXPECT_EQ(copied, std::min<std::size_t>(room, c.bytes.size()));
      EXPECT_EQ(bytes, c.bytes.substr(0, copied) + std::string(4000 - copied, '?'));
      EXPECT_EQ(size, c.bytes.empty() ? room : c.bytes.size());
      EXPECT_EQ(wantMask, c.mask && !c.bytes.empty());
    }
  }
  const std::vector<platform::RecordingDesktop::Tone> twice(2, {800, 200});
  EXPECT_EQ(fakes.desktop.tones, twice) << "one each time that the head says so";
  EXPECT_FALSE(box->HasFailed());
  bool wantPicture = true, wantMask = false;
  unsigned size = 16;
  EXPECT_EQ(box->GetImageFileInfo("cut", &wantPicture, &wantMask, &size, nullptr), 0u);
  EXPECT_TRUE(box->HasFailed());
}

TEST(PictureBox, DeletesPicturesAndNothingElse) {
  for (const bool isFolder : {false, true}) {
    Box box(isFolder);
    const Bytes picture = Bitmap(2, 2);
    for (const char* name : {"a.txt", "a.tif", "b.JPG", "ab.tif", "c", "d.e"}) {
      box.Put(name, "x");
    }
    box->WriteImageInfo("a", "text", nullptr);
    box->AddFile("n*m", picture, {}, 0, 0, false, false, false);
    box->WriteImageInfo("n*m", "text", nullptr);
    EXPECT_TRUE(box->Exists("n*m") && box->Exists("n_m") && !box->Exists("n-m"));
    EXPECT_TRUE(box->Delete("n*m"));
    EXPECT_FALSE(box->Delete("PicMask"));
    EXPECT_FALSE(box->Delete(""));
    EXPECT_TRUE(box->Delete("A"));
    EXPECT_FALSE(box->Delete("a"));
    EXPECT_TRUE(box->Delete("b"));
    EXPECT_TRUE(box->Delete("c"));
    EXPECT_FALSE(box->Delete("d"));
    EXPECT_EQ(box->Delete("d", "e"), isFolder);
    if (!isFolder) box.At(picbox::kPictures).DeleteStream("d.e");
    std::vector<std::string> left = Names(box.At(picbox::kPictures));
    std::erase_if(left, [](const std::string& name) { return name.back() == '/'; });
    EXPECT_EQ(left, (std::vector<std::string>{"a.txt", "ab.tif"}));
    box.At(picbox::kPictures).DeleteStream("a.txt");
    EXPECT_TRUE(box->Delete("ab"));
    EXPECT_FALSE(isFolder && std::filesystem::exists(box.folder / "box_kv" / "Pictures"));
  }
}

TEST(PictureBox, FolderBoxesRenameFindCopiesAndLoseEmptyFolders) {
  Box box(true);
  box.Put("i5-small.jpg", Jpeg());
  box.Put("photo.jpg", Jpeg());
  box->WriteImageInfo("photo", "note", nullptr);
  const auto found = box->OpenPicture(1, "i5--1x-1", "jpg");
  ASSERT_TRUE(found);
  EXPECT_EQ(found->streamName, "i5-small.jpg");
  for (const char* refused : {"i5-small", "PicMask"}) {
    EXPECT_FALSE(box->Rename("photo", refused, "jpg")) << refused;
  }
  EXPECT_FALSE(box->Rename(nullptr, "new", "jpg"));
  EXPECT_TRUE(box->Rename("photo", "new", "jpg"));
  EXPECT_EQ(Names(box.At(picbox::kPictures)),
            (std::vector<std::string>{"i5-small.jpg", "new.inf", "new.jpg"}));
  EXPECT_EQ(box->GetImageInfo("new", nullptr), "note");
  Put(box.At(picbox::kOnlyPic), "old", "x");
  EXPECT_TRUE(box->Rename("old", "older", ""));
  EXPECT_TRUE(box->Delete("older"));
  EXPECT_EQ(Names(box.At(picbox::kPictures)),
            (std::vector<std::string>{"i5-small.jpg", "new.inf", "new.jpg"}));
  box.Put("i6-b", Jpeg());
  std::filesystem::create_directory(box.folder / "box_kv" / "Pictures" / "i6-0");
  box->WriteImageInfo("i6-a", "note", nullptr);
  EXPECT_EQ(box->OpenPicture(1, "i6--1x-1")->streamName, "i6-b");
}

// A JPEG file keeps its bytes, one with a mask has to become a file that holds both.
TEST(PictureBox, CopiesBetweenAllKindsOfBoxes) {
  const struct {
    const char *name, *ext;
    bool asFile;
    const char* taken;  // for the extension
    picbox::Place place;
    bool isJpeg;  // else the mask comes along
  } cases[] = {{"dib", "", false, "", picbox::kPicMask, false},
               {"file", "JPG", true, "JPG", picbox::kPictures, true},
               {"plain", "JPG", true, "jpg", picbox::kPictures, true},
               {"masked", "JPG", true, "PNG", picbox::kPictures, false},
               {"masked", "TIF", true, "TIF", picbox::kPictures, false}};
  for (const bool fromFolder : {false, true}) {
    Box from(fromFolder);
    for (const char* name : {"dib", "masked"}) {
      from->AddFile(name, Bitmap(16, 16), Mask(16, 16), 1, 2, *name == 'm', false, false);
      from->WriteImageInfo(name, "note", nullptr);
    }
    from.Put("file.JPG", Jpeg());
    from.Put("plain", "\x02JPG\0\x08\x01\0\0\0"s + Sized(Jpeg()) + Compressed(Longs({0, 0})));
    KvString ext;
    for (const bool toFolder : {false, true}) {
      for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << c.name << c.ext << fromFolder << toFolder);
        Box to(toFolder);
        ext = c.ext;
        EXPECT_TRUE(from->CopyImage(c.name, *to.box, "copy", true, ext, c.asFile));
        EXPECT_EQ(ext, c.taken);
        auto found = to->OpenPicture(1, "copy", c.taken);
        ASSERT_TRUE(found);
        EXPECT_EQ(found->place, c.place);
        EXPECT_EQ(Text(to->ReadEncoded(*found)).starts_with(Jpeg()), c.isJpeg);
        found.reset();
        Bytes picture, mask;
        std::int32_t x = 0, y = 0;
        to->GetQuick("copy", c.taken, &picture, &mask, -1, -1, &x, &y);
        EXPECT_EQ(picture == Bitmap(16, 16), !c.asFile);
        EXPECT_FALSE(picture.empty());
        EXPECT_EQ(mask, c.isJpeg ? Bytes() : Mask(16, 16));
        EXPECT_EQ(to->GetImageInfo("copy", nullptr), c.isJpeg ? "" : "note");
        EXPECT_TRUE(c.asFile || (x == 1 && y == 2));
      }
    }
    // Onto itself, and as another box on the same folder sees it.
    EXPECT_TRUE(from->CopyImage("dib", *from.box, "dib", true, ext, false));
    if (fromFolder) {
      Box again(from.folder);
      EXPECT_TRUE(from->CopyImage("dib", *again.box, "DIB", true, ext, false));
    }
    EXPECT_EQ(from.Read("dib"), "picture mask");
    EXPECT_EQ(from->OpenPicture(1, "dib")->place, picbox::kPictures) << "left as it was";
  }
}

// Lines of the log without the folder of the test and the name of the copy that tells them.
std::string Shortened(std::string text) {
  constexpr std::string_view kFolder = "fxbox-test-";
  for (std::size_t at; (at = text.find(kFolder)) != std::string::npos;) {
    const std::size_t first = text.find_last_of(" '(\"", at) + 1;
    text.erase(first, text.find_first_not_of("0123456789", at + kFolder.size()) - first);
  }
  for (const std::string_view gone :
       {"      kvPicBox::CopyImage(): ", "      kvPicBox::CopyImage"}) {
    for (std::size_t at; (at = text.find(gone)) != std::string::npos;) text.erase(at, gone.size());
  }
  return text;
}

TEST(PictureBox, TellsTheLogTheWayOfACopy) {
  Box memory, files(true), target(true);
  const TemporaryFolder folder;
  WriteFile(folder / "file.JPG", "x");
  KvSimpStorage plain(platform::StoragePathOf(folder.Path()).c_str(), OpenModeRead, false, true);
  kvPicBox outside(&plain, OpenModeRead);
  files.Put("file.JPG", Jpeg());
  const auto source = files.folder / "box_kv" / "Pictures" / "file.JPG";
  std::filesystem::permissions(source, std::filesystem::perms::owner_read);
  std::filesystem::create_directory(folder / "folder.PNG");
  memory.Put("none", "");
  const std::string large((1 << 20) + 1, 'x');  // more than is copied at a time
  memory.Put("one", large);
  memory->AddFile("masked", Bitmap(2, 2), Mask(2, 2), 0, 0, true, false, false);
  memory.Put("broken", "\x01JPG\0\x08\x01\0\0\0\x03\0\0\0\xFF\xD8\xFF"s + std::string(50, 'x'));
  const std::string file = "removing read only file status of ";
  const std::string stream = "destination is internal; src is native; do not copy; ";
  const std::string convert =
      "dest shall be native; have to convert to native; convert to PNG or TIF; ";
  const struct {
    kvPicBox& from;
    const char *name, *ext;
    kvPicBox& to;
    const char* copy;
    bool newFormat, isDone;
    std::string lines;
  } cases[] = {
      {*memory.box, "absent", "a", *target.box, "b", 1, 0, "source absent.a not found!"},
      {*memory.box, "none", "", *memory.box, "b", 1, 0,
       stream + "invalid stream size; Dest image 'b.', 0 of 0 bytes written"},
      {*memory.box, "one", "", *memory.box, "b", 1, 1,
       stream + "Dest image 'b.', 1048577 of 1048577 bytes written"},
      {*memory.box, "one", "", *memory.box, "PicMask", 1, 0,
       stream + "OpenWritePic failed;       kvPicBox()::CopyImage failed - couldn't open "
                "destination \"PicMask\" !"},
      {*memory.box, "masked", "", *target.box, "b", 1, 1, convert + "success!"},
      {*memory.box, "broken", "", *target.box, "b", 1, 0, convert + "didn't get pic; failed!"},
      {*memory.box, "one", "JPG", outside, "b", 1, 1, "dest is external; source is not native"},
      {*files.box, "file", "JPG", outside, "b", 1, 1,
       "dest is external; source is native; " + file +
           "\\b.JPG; (b): copied '\\box_kv\\Pictures\\file.JPG' to '\\b.JPG'"},
      {*files.box, "file", "JPG", *target.box, "b", 1, 1,
       "destination is internal; src is native; do copy; do copy; " + file +
           "\\box_kv\\Pictures\\b.JPG; (d): copied '\\box_kv\\Pictures\\file.JPG' to "
           "'\\box_kv\\Pictures\\b.JPG'"},
      {*files.box, "file", "PNG", outside, "folder", 1, 0,
       "dest is external; source is native; failed"},
      {*memory.box, "one", "PNG", outside, "folder", 1, 0,
       "dest is external; source is not native; Error processing file '\\folder.PNG';       "
       "kvPicBox(external)::CopyImage failed - couldn't open destination \"\\folder.PNG\" !"},
      {*memory.box, "masked", "", outside, "folder", 1, 0,
       convert + "Error processing file '\\folder.PNG'; failed to open dest file; failed!"},
      {outside, "file", "JPG", outside, "b", 1, 1,
       "Source is external; dest is external; 1st CopyFile failed; success!"},
      {outside, "absent", "", *target.box, "b", 1, 0,
       "Source is external; really need the file extension here!; dest is not native but new (14 "
       "bytes header); 1st CopyFile failed; 2nd CopyFile failed"},
      {outside, "absent", "a", *target.box, "b", 0, 0,
       "Source is external; dest is old format; 1st Open failed; both open failed"},
      {outside, "file", "JPG", *target.box, "b", 0, 1,
       "Source is external; dest is old format; 1st Open failed; PicBox AddFile: copying 1 bytes "
       "file...; PicBox AddFile: copying done."},
      {outside, "file", "JPG", *target.box, "PicMask", 0, 0,
       "Source is external; dest is old format; 1st Open failed; PicBox AddFile: Unable to open "
       "stream for PicMask (JPG); length 1; Open succeeded, AddFile failed"},
  };
  LogOfTest log;
  for (const auto& c : cases) {
    KvString ext = c.ext, way;
    way.Format("(%s...\\%s.%s to %s...\\%s); ", static_cast<const char*>(c.from.GetPath()), c.name,
               c.ext, static_cast<const char*>(c.to.GetPath()), c.copy);
    EXPECT_EQ(c.from.CopyImage(c.name, c.to, c.copy, c.newFormat, ext, true), c.isDone) << c.lines;
    EXPECT_EQ(Shortened(log.Lines()), Shortened(way.ToStdString()) + c.lines + "; ");
  }
  std::filesystem::permissions(source, std::filesystem::perms::owner_all);
  EXPECT_TRUE(outside.Delete("b"));
  EXPECT_EQ(log.Lines(), "      kvPicBox::Delete(): Deleting external Image " +
                             outside.GetPath().ToStdString() + "b; ");
}

// A folder of plain files, as the source of a copy and as its target.
TEST(PictureBox, ExternalFoldersHoldPlainFiles) {
  const TemporaryFolder folder;
  WriteFile(folder / "a", Jpeg());
  WriteFile(folder / "b.jpg", Jpeg());
  const auto open = [](const std::filesystem::path& path) {
    return std::make_unique<kvPicBox>(platform::StoragePathOf(path).c_str(), true, false, true);
  };
  const auto source = open(folder.Path()), outside = open(folder / "new");
  bool wantPicture = true, wantMask = false;
  unsigned room = 10;
  Bytes buffer(20, 7);
  EXPECT_EQ(source->GetImageFileInfo("a", &wantPicture, &wantMask, &room, buffer.data()), 10u);
  EXPECT_EQ(room, Jpeg().size());
  EXPECT_EQ(Text(buffer), Jpeg().substr(0, 10) + std::string(10, 7))
      << "no more than there is room";
  EXPECT_EQ(source->GetImageFileInfo("absent", &wantPicture, &wantMask, &room, buffer.data()), 0u);
  EXPECT_EQ(room, 0u);
  EXPECT_GT(source->GetJPegHeader("a", &buffer), 0u);
  EXPECT_EQ(source->GetJPegHeader("absent", &buffer), 0u);
  KvString ext = "jpg";
  for (const bool newFormat : {false, true}) {
    for (const char* name : {"a", "b"}) {
      for (const bool toFolder : {false, true}) {
        SCOPED_TRACE(testing::Message() << name << newFormat << toFolder);
        Box to(toFolder);
        EXPECT_TRUE(source->CopyImage(name, *to.box, "copy", newFormat, ext, true));
        const bool isFile = toFolder && newFormat;
        EXPECT_EQ(Names(to.At(picbox::kPictures)).back() == "copy.jpg", isFile);
        EXPECT_EQ(to->OpenPicture(1, "copy", "jpg")->native, isFile);
        EXPECT_EQ(to.Read("copy"), "picture");
        std::filesystem::remove(folder / "new" / "copy.jpg");
        EXPECT_TRUE(to->CopyImage("copy", *outside, "copy", newFormat, ext, true));
        EXPECT_EQ(ReadFile(folder / "new" / "copy.jpg") == Jpeg(), isFile);
        EXPECT_TRUE(std::filesystem::exists(folder / "new" / "copy.jpg"));
      }
      EXPECT_TRUE(source->CopyImage(name, *outside, "copy", newFormat, ext, true));
      EXPECT_EQ(ReadFile(folder / "new" / "copy"), Jpeg());
      EXPECT_TRUE(outside->Delete("copy") && outside->Delete("copy", "jpg"));
      EXPECT_TRUE(std::filesystem::is_empty(folder / "new"));
    }
  }
}

// As they are in a picture of an older generation, at no position.
TEST(PictureBox, KeepsFilesAsTheyAre) {
  const TemporaryFolder folder;
  WriteFile(folder / "file", Jpeg());
  for (const bool isFolder : {false, true}) {
    for (const bool asNative : {false, true}) {
      Box box(isFolder);
      KvFile file(platform::StoragePathOf(folder / "file").c_str(), OpenModeRead);
      Bytes kept;
      file.Seek(3, 0);  // wherever it stands
      EXPECT_TRUE(box->AddFileStream("a", "jpg", file, asNative, &kept));
      EXPECT_EQ(Text(kept), Jpeg());
      std::int32_t x = 1, y = 1;
      Bytes picture, mask;
      box->GetQuick("a", "", &picture, &mask, -1, -1, &x, &y);
      EXPECT_EQ(picture.size(), Bitmap(16, 16).size());
      auto found = box->OpenPicture(1, "a", "jpg");
      ASSERT_TRUE(found);
      EXPECT_EQ(found->native, isFolder && asNative);
      EXPECT_EQ(std::pair(x, y), found->native ? std::pair(1, 1) : std::pair(0, 0));
      EXPECT_EQ(Text(box->ReadEncoded(*found)), Jpeg());
    }
  }
}

TEST(PictureBox, TellsTheTypeOfAStreamFromWhereItStands) {
  Box box;
  box.Put("a", "12345" + Text(FileOf(Bitmap(16, 16), imageio::kTypePng)));
  const picbox::StreamPtr stream(box.At(picbox::kPictures).OpenStream("a", OpenModeRead));
  stream->Seek(5, 0);
  for (int round = 0; round < 2; ++round) {
    KvString tag;
    EXPECT_EQ(box->GetType(stream.get(), &tag), imageio::kTypePng);
    EXPECT_EQ(stream->GetPosition(), 5u);
  }
}

TEST(PictureBox, EnumeratesStageByStage) {
  Box box;
  Put(box.At(picbox::kOnlyMask), "m", "x");
  Put(box.At(picbox::kPicMask), "p", "x");
  Put(box.At(picbox::kPicMask), "q", "x");
  Put(box.At(picbox::kOnlyPic), "o", "x");
  std::string all;
  for (KvString name = box->FindFirstPicture(); !name.IsEmpty(); name = box->FindNextPicture()) {
    all += name.ToStdString() + " ";
  }
  EXPECT_EQ(all, "OnlyPic PicMask OnlyMask p q o m ");
  EXPECT_EQ(box->FindNextPicture(), "");
}

TEST(PictureBox, WithoutPicturesRefuses) {
  KvMemoryStorage memory(0);
  kvPicBox box(&memory, OpenModeRead);
  EXPECT_TRUE(box.HasFailed());
  EXPECT_FALSE(box.OpenPicture(1, "a"));
  EXPECT_EQ(box.GetPath(), "");
  const Bytes picture = Bitmap(1, 1), wide = Bitmap(70000, 1);  // more than a JPEG file holds
  try {
    box.AddFile("a", picture, {}, 0, 0, false, false, false);
    FAIL();
  } catch (CKvError* error) {
    EXPECT_EQ(error->Code(), 0x88870004u);
    EXPECT_STREQ(error->Location(), "Sources/kvPicBox(490)");
    delete error;
  }
  const std::tuple<const char*, Bytes, Bytes> refused[] = {
      {"a", {}, {}},          {"PicMask", picture, {}}, {"a", picture, Mask(2, 2)},
      {"a", Plane(1, 1), {}}, {"a", wide, {}},          {"a", wide, Mask(70000, 1)}};
  for (const auto& [name, colours, mask] : refused) {
    Box whole;
    const bool encode = colours == wide;
    EXPECT_EQ(whole->AddFile(name, colours, mask, 0, 0, encode, false, false), 0u);
    EXPECT_EQ(whole->LoaderStatus() != 0, encode);
    EXPECT_EQ(whole->HasFailed(), !colours.empty()) << "nothing to write is no failure";
  }
}
