// The desk's work without its window: pictures, chains, renders, results, and what survives.
#include "desk/Session.h"

#include <gmock/gmock.h>

#include <fstream>
#include <thread>

#include "desk/ChainFile.h"
#include "desk/WorkFile.h"
#include "host/Texts.h"
#include "program/ApplyRun.h"
#include "program/BoxChanges.h"
#include "program/BoxFile.h"
#include "program/Messages.h"
#include "tests/platform/Support.h"
#include "tests/support/TaskQueue.h"

namespace {

namespace fs = std::filesystem;
using desk::ChainItem;
using desk::RenderStage;
using desk::Session;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

void WritePicture(const fs::path& file, int width, int height, imageio::Format format) {
  MemoryPicture picture("test", width, height, true, true);
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      BYTE* const pixel = picture.ColourRows()[y] + 3 * x;
      pixel[0] = static_cast<BYTE>(x * 255 / width);
      pixel[1] = static_cast<BYTE>(y * 255 / height);
      pixel[2] = static_cast<BYTE>((x * 7 + y * 13) % 256);
      picture.MaskRows()[y][x] = 0;
    }
  }
  imageio::WriteImage(file, format, width, height, {picture.ColourRows(), picture.MaskRows()});
}

std::string BytesOf(const fs::path& file) {
  return desk::ReadTextFile(file).value_or("(none)");
}

class DeskSession : public testing::Test {
 protected:
  DeskSession() { Begin(false); }

  void Begin(bool takesLeft) {
    session.reset();
    session = std::make_unique<Session>(
        [this](std::function<void()> task) { queue.Post(std::move(task)); }, folder / "state",
        takesLeft);
    session->SetBox({200, 150}, true);
  }
  std::string Picture(const char* name, int width = 640, int height = 480,
                      imageio::Format format = imageio::Format::Pnm) {
    WritePicture(folder.Path() / name, width, height, format);
    return host::Utf8Of(folder / name);
  }
  bool OpenAndShow(const std::string& name) {
    session->Open(name);
    return queue.RunUntil([&] { return session->Name() == name && !session->IsLoading(); }) &&
           Await(RenderStage::Full);
  }
  // Whether what is shown belongs to the chain as it is now: the renderer posts a result before it
  // is idle, so the queue is looked at last.
  bool IsSettled() { return session->Renderer().IsIdle() && queue.IsEmpty(); }
  bool Await(RenderStage stage) {
    return queue.RunUntil(
        [&] { return IsSettled() && session->Shown().after && session->Shown().stage >= stage; });
  }
  void AddWith(const char* progId, const std::string& parameters) {
    session->AddFilter(progId);
    session->Chain().SetParameters({{*session->Chain().Selection().begin(), parameters}});
  }

  testing_support::TemporaryFolder folder;
  testing_support::TaskQueue queue;
  std::unique_ptr<Session> session;
};

TEST_F(DeskSession, ShowsWhatIsExported) {
  const std::string name = Picture("in.ppm");
  std::vector<RenderStage> stages;
  session->onShown = [&] { stages.push_back(session->Shown().stage); };
  ASSERT_TRUE(OpenAndShow(name));
  EXPECT_EQ(stages.back(), RenderStage::Full);
  AddWith("ZNFilter.BlurGauss.1", "Percent=100,Radius=2.0");
  AddWith("ZNFilter.Sepia.1", "Sepia=080");
  ASSERT_TRUE(Await(RenderStage::Full));
  EXPECT_EQ(session->Exactness(), "as exported");

  program::ApplyRequest request;
  request.chain.text = "ZNFilter.BlurGauss.1(Percent=100,Radius=2.0)ZNFilter.Sepia.1(Sepia=080)";
  const auto creator = host::MakeCreator();
  program::PlannedFile plan;
  plan.input = folder / "in.ppm";
  plan.output = folder / "applied.ppm";
  plan.format = imageio::Format::Pnm;
  EXPECT_EQ(program::ApplyRun(request, *creator.Get(), [](double) {}).Do(plan).error, "");

  const MemoryPicture& shown = *session->Shown().after;
  imageio::WriteImage(folder / "shown.ppm", imageio::Format::Pnm, shown.Width(), shown.Height(),
                      desk::RowsOf(shown));
  EXPECT_EQ(BytesOf(folder / "shown.ppm"), BytesOf(folder / "applied.ppm"));

  bool isDone = false;
  session->onDone = [&](const std::string&) { isDone = true; };
  session->Export(host::Utf8Of(folder / "exported.ppm"));
  ASSERT_TRUE(queue.RunUntil([&] { return isDone; }));
  EXPECT_EQ(BytesOf(folder / "exported.ppm"), BytesOf(folder / "applied.ppm"));
}

TEST_F(DeskSession, LeavesOutWhatIsSwitchedOff) {
  ASSERT_TRUE(OpenAndShow(Picture("in.ppm", 60, 40)));
  const MemoryPicture& plain = *session->Shown().after;
  const BYTE before = plain.ColourRows()[5][7];
  AddWith("ZNFilter.Invert.1", "Inversity=100");
  ASSERT_TRUE(Await(RenderStage::Full));
  EXPECT_EQ(session->Shown().after->ColourRows()[5][7], 255 - before);
  session->Chain().Switch(session->Chain().Selection(), false);
  ASSERT_TRUE(Await(RenderStage::Full));
  EXPECT_EQ(session->Shown().after->ColourRows()[5][7], before);
  session->Chain().Undo();
  ASSERT_TRUE(Await(RenderStage::Full));
  EXPECT_EQ(session->Shown().after->ColourRows()[5][7], 255 - before);
}

TEST_F(DeskSession, ReadsPixelsThroughTheChain) {
  ASSERT_TRUE(OpenAndShow(Picture("in.ppm", 60, 40)));
  AddWith("ZNFilter.Invert.1", "Inversity=100");
  ASSERT_TRUE(Await(RenderStage::Full));
  const auto pixel = session->PixelAt(30, 10);
  ASSERT_TRUE(pixel);
  EXPECT_EQ(pixel->before[0], 30 * 255 / 60);
  EXPECT_EQ(pixel->after[0], 255 - 30 * 255 / 60);
  EXPECT_EQ(pixel->after[3], 0);
  AddWith("ZNFilter.Scale100.1",
          "HorizontalProz=50,VerticalProz=50,KeepProportions=1,AllowEnlarge=1");
  ASSERT_TRUE(Await(RenderStage::Full));
  EXPECT_EQ(session->Shown().after->Width(), 30);
  ASSERT_TRUE(session->PixelAt(29, 19));
}

// Many changes one after the other: the last one is what is shown.
TEST_F(DeskSession, IsOvertakenByChanges) {
  ASSERT_TRUE(OpenAndShow(Picture("in.ppm", 1200, 900)));
  session->AddFilter("ZNFilter.BlurGauss.1");
  session->AddFilter("ZNFilter.HSB.1");
  AddWith("ZNFilter.Invert.1", "Inversity=000");
  const int last = *session->Chain().Selection().begin();
  for (int i = 0; i <= 100; ++i) {
    session->Chain().SetParameters({{last, "Inversity=" + std::to_string(i)}}, 1);
    if (i % 10 == 0) session->PixelAt(50, 50);
    if (i % 17 == 0) std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
  ASSERT_TRUE(Await(RenderStage::Full));
  const auto pixel = session->PixelAt(100, 70);
  ASSERT_TRUE(pixel);
  EXPECT_NEAR(pixel->after[1], 255 - pixel->before[1], 12);
}

TEST_F(DeskSession, TellsOfEachBadFileAndOpensTheGoodOne) {
  std::vector<std::string> names;
  for (int i = 0; i < 100; ++i) {
    const std::string name = host::Utf8Of(folder.Path() / ("bad" + std::to_string(i) + ".jpg"));
    desk::WriteTextFile(host::PathOf(name), i % 3 ? "no picture" : "");
    names.push_back(name);
  }
  names.insert(names.begin() + 50, Picture("good.ppm", 60, 40));
  names.push_back(host::Utf8Of(folder / "missing.png"));
  session->AddFilter("ZNFilter.Sepia.1");
  session->OpenAll(names);
  ASSERT_TRUE(queue.RunUntil([&] { return session->HasPicture() && session->Shown().after; }));
  EXPECT_THAT(session->Messages(), SizeIs(101));
  for (int i = 0; i < 100; ++i) {
    const auto& message = session->Messages()[static_cast<std::size_t>(i)];
    EXPECT_THAT(message, HasSubstr("bad" + std::to_string(i) + ".jpg: "));
  }
  EXPECT_THAT(session->Name(), HasSubstr("good.ppm"));
  EXPECT_EQ(TextOf(session->Chain().Items()), "ZNFilter.Sepia.1(Sepia=000)")
      << "ahead of a picture";
}

// A picture's own chain is a step back, and stays in its file.
TEST_F(DeskSession, OpensPicturesAndChainsTogether) {
  const std::string photo = Picture("photo.ppm", 60, 40), other = Picture("other.ppm", 50, 30);
  const auto chain = [&](const char* file, const char* text) {
    desk::WriteTextFile(folder / file, text);
    return host::Utf8Of(folder / file);
  };
  chain("photo.chain", "ZNFilter.Sepia.1(Sepia=033)\n");
  const std::string warm = chain("warm.chain", "ZNFilter.Invert.1(Inversity=100)\n");
  const std::string nameless = chain("warm", "\nZNFilter.Emboss.1(EmbossStrength=020)\n");
  const auto open = [&](const std::vector<std::string>& names, const std::string& picture) {
    session->OpenAll(names);
    return queue.RunUntil([&] { return session->Name() == picture && !session->IsLoading(); });
  };
  ASSERT_TRUE(open({warm, photo}, photo));
  EXPECT_EQ(TextOf(session->Chain().Items()), "ZNFilter.Invert.1(Inversity=100)");
  EXPECT_TRUE(session->IsModified());
  session->Chain().Undo();
  EXPECT_EQ(TextOf(session->Chain().Items()), "ZNFilter.Sepia.1(Sepia=033)");
  ASSERT_TRUE(open({other, photo, nameless}, other));
  EXPECT_EQ(TextOf(session->Chain().Items()), "ZNFilter.Emboss.1(EmbossStrength=020)");
  EXPECT_THAT(session->Recent(), ElementsAre(other, photo));

  ASSERT_TRUE(open({photo, chain("bad.chain", "ZNFilter.No.1()")}, photo));
  EXPECT_EQ(TextOf(session->Chain().Items()), "ZNFilter.Sepia.1(Sepia=033)");
  EXPECT_THAT(session->Messages(), ElementsAre(HasSubstr("bad.chain: ")));
  std::filesystem::resize_file(host::PathOf(other), 20);
  session->OpenAll({other, warm});
  ASSERT_TRUE(queue.RunUntil([&] { return session->Messages().size() == 2; }));
  EXPECT_EQ(session->Name(), photo);
  EXPECT_EQ(TextOf(session->Chain().Items()), "ZNFilter.Invert.1(Inversity=100)") << "as by itself";
}

TEST_F(DeskSession, KeepsTheFileOfAChainWithoutPicture) {
  const std::filesystem::path file = folder / "warm.chain";
  desk::WriteTextFile(file, "ZNFilter.Invert.1(Inversity=100)\n");
  EXPECT_FALSE(session->HasChainFile());
  session->OpenAll({host::Utf8Of(file)});
  EXPECT_EQ(TextOf(session->Chain().Items()), "ZNFilter.Invert.1(Inversity=100)");
  EXPECT_TRUE(session->HasChainFile());
  EXPECT_FALSE(session->IsModified());
  AddWith("ZNFilter.Sepia.1", "Sepia=033");
  EXPECT_TRUE(session->IsModified());
  ASSERT_TRUE(session->SaveOwnChain());
  EXPECT_EQ(BytesOf(file), desk::ChainFileText(session->Chain().Items()));
  const std::string name = Picture("photo.ppm", 60, 40);
  ASSERT_TRUE(OpenAndShow(name));
  EXPECT_THAT(session->Chain().Items(), SizeIs(2)) << "the chain has its picture";
  EXPECT_EQ(session->ChainFile(), folder / "photo.chain");
  ASSERT_TRUE(OpenAndShow(Picture("other.ppm", 50, 30)));
  EXPECT_THAT(session->Chain().Items(), IsEmpty()) << "another picture has another chain";
}

TEST_F(DeskSession, KeepsThePictureWhereOpeningFails) {
  const std::string good = Picture("good.ppm", 60, 40);
  ASSERT_TRUE(OpenAndShow(good));
  session->AddFilter("ZNFilter.Sepia.1");
  desk::WriteTextFile(folder / "bad.png", "\x89PNG\r\n\x1a\n rest");
  session->Open(host::Utf8Of(folder / "bad.png"));
  ASSERT_TRUE(queue.RunUntil([&] { return !session->Messages().empty(); }));
  EXPECT_EQ(session->Name(), good);
  EXPECT_THAT(session->Chain().Items(), SizeIs(1));
  session->Open(host::Utf8Of(folder / "none.box") + "::picture");
  EXPECT_TRUE(queue.RunUntil([&] { return session->Messages().size() == 2; }));
}

TEST_F(DeskSession, KeepsChainsBesideThePicture) {
  const std::string name = Picture("photo.ppm", 60, 40);
  ASSERT_TRUE(OpenAndShow(name));
  AddWith("ZNFilter.Sepia.1", "Sepia=033");
  EXPECT_TRUE(session->IsModified());
  EXPECT_EQ(session->ChainFile(), folder / "photo.chain");
  ASSERT_TRUE(session->SaveChain(host::Utf8Of(session->ChainFile())));
  EXPECT_FALSE(session->IsModified());
  EXPECT_EQ(BytesOf(folder / "photo.chain"), "ZNFilter.Sepia.1(Sepia=033)\n");
  ASSERT_TRUE(OpenAndShow(Picture("other.ppm", 50, 30)));
  EXPECT_THAT(session->Chain().Items(), IsEmpty());
  ASSERT_TRUE(OpenAndShow(name));
  EXPECT_EQ(TextOf(session->Chain().Items()), "ZNFilter.Sepia.1(Sepia=033)");
  EXPECT_FALSE(session->IsModified());
  EXPECT_THAT(session->Recent(), ElementsAre(name, host::Utf8Of(folder / "other.ppm")));

  desk::WriteTextFile(folder / "wrong.chain", "ZNFilter.Nothing.1(A=1)");
  EXPECT_FALSE(session->LoadChain(host::Utf8Of(folder / "wrong.chain")));
  EXPECT_THAT(session->Messages(), ElementsAre(HasSubstr("wrong.chain: ")));
  desk::WriteTextFile(folder / "right.chain", "\r\nZNFilter.Invert.1(Inversity=100)\r\n");
  EXPECT_TRUE(session->LoadChain(host::Utf8Of(folder / "right.chain")));
  EXPECT_EQ(TextOf(session->Chain().Items()), "ZNFilter.Invert.1(Inversity=100)");
  session->Chain().Undo();
  EXPECT_EQ(TextOf(session->Chain().Items()), "ZNFilter.Sepia.1(Sepia=033)");
}

TEST_F(DeskSession, KeepsWhatIsSwitchedOff) {
  const std::string name = Picture("photo.ppm", 60, 40);
  ASSERT_TRUE(OpenAndShow(name));
  AddWith("ZNFilter.Sepia.1", "Sepia=033");
  AddWith("ZNFilter.Emboss.1", "EmbossStrength=020");
  AddWith("ZNFilter.Invert.1", "Inversity=100");
  const int sepia = session->Chain().Items()[0].id, invert = session->Chain().Items()[2].id;
  session->Chain().Switch({sepia, invert}, false);
  const desk::ChainItems before = session->Chain().Items();
  EXPECT_TRUE(session->IsModified());
  ASSERT_TRUE(session->SaveOwnChain());
  EXPECT_FALSE(session->IsModified());
  ASSERT_TRUE(OpenAndShow(Picture("other.ppm", 50, 30)));
  ASSERT_TRUE(OpenAndShow(name));
  EXPECT_EQ(TextOf(session->Chain().Items(), true), TextOf(before, true));
  EXPECT_FALSE(session->Chain().Items()[0].isOn);
  EXPECT_TRUE(session->Chain().Items()[1].isOn);
  EXPECT_FALSE(session->IsModified());
  session->Chain().Switch({session->Chain().Items()[0].id}, true);
  EXPECT_TRUE(session->IsModified()) << "switching alone is a change";

  desk::WriteTextFile(folder / "bad.chain",
                      "//off ZNFilter.Gone.1(A=1)\nZNFilter.Invert.1(\nInversity=100)\n// note\n");
  EXPECT_TRUE(session->LoadChain(host::Utf8Of(folder / "bad.chain")));
  EXPECT_THAT(session->Chain().Items(), SizeIs(1)) << "what is off and unknown is left out";
  desk::WriteTextFile(folder / "worse.chain", "//off ZNFilter.Sepia.1(Sepia=1)\nZNFilter.No.1()\n");
  EXPECT_FALSE(session->LoadChain(host::Utf8Of(folder / "worse.chain")));
  EXPECT_THAT(session->Messages(), ElementsAre(HasSubstr("ZNFilter.No.1")));
}

// Of each kind of box; nothing else in it changes.
TEST_F(DeskSession, KeepsChainsInBoxes) {
  const std::string file = Picture("photo.ppm", 60, 40);
  for (const std::string box : {"shots.box", "shots/"}) {
    SCOPED_TRACE(box);
    const std::string path = host::Utf8Of(folder.Path()) + "/" + box;
    for (const char* const name : {"eins", "zwei"}) {
      program::AddRequest request;
      request.box = path;
      request.files = {file};
      request.name = name;
      ASSERT_EQ(program::AddToBox(request), 0);
    }
    const auto pictures = [&] {
      return program::BoxFile(path, program::BoxAccess::Read).Entries().size();
    };
    ASSERT_TRUE(OpenAndShow(path + "::eins"));
    EXPECT_THAT(session->Chain().Items(), IsEmpty());
    AddWith("ZNFilter.Sepia.1", "Sepia=033");
    session->Chain().Switch(session->Chain().Selection(), false);
    AddWith("ZNFilter.Invert.1", "Inversity=100");
    ASSERT_TRUE(session->SaveOwnChain()) << testing::PrintToString(session->Messages());
    EXPECT_FALSE(session->IsModified());
    const std::string saved = TextOf(session->Chain().Items(), true);
    ASSERT_TRUE(OpenAndShow(path + "::zwei"));
    EXPECT_THAT(session->Chain().Items(), IsEmpty()) << "a chain of its own";
    ASSERT_TRUE(OpenAndShow(path + "::eins"));
    EXPECT_EQ(TextOf(session->Chain().Items(), true), saved);
    session->Chain().Reset();
    ASSERT_TRUE(session->SaveOwnChain()) << "a shorter one over it";
    EXPECT_EQ(desk::ReadBoxChain(path + "::eins"), "");
    EXPECT_EQ(pictures(), 2u);
    EXPECT_THAT(session->Messages(), IsEmpty());
  }
  EXPECT_FALSE(fs::exists(folder / "shots.box-eins.chain"));
  // As long as a name in a box may be.
  program::AddRequest request;
  request.box = host::Utf8Of(folder / "shots.box");
  request.files = {file};
  request.name = std::string(31, 'n');
  ASSERT_EQ(program::AddToBox(request), 0);
  desk::WriteBoxChain(request.box + "::" + *request.name, "long");
  EXPECT_EQ(desk::ReadBoxChain(request.box + "::" + *request.name), "long");
  EXPECT_THROW(desk::WriteBoxChain(host::Utf8Of(folder / "shots.box") + "::drei", ""),
               program::FileError);
}

TEST_F(DeskSession, AddsByRankAndPastes) {
  session->AddFilter("ZNFilter.Sepia.1");
  session->AddFilter("ZNFilter.Shadow.1");
  session->AddFilter("ZNFilter.Invert.1");
  session->AddFilter("ZNFilter.Crop.1");
  std::vector<std::string> order;
  for (const ChainItem& item : session->Chain().Items()) order.push_back(item.progId);
  EXPECT_THAT(order, ElementsAre("ZNFilter.Crop.1", "ZNFilter.Sepia.1", "ZNFilter.Invert.1",
                                 "ZNFilter.Shadow.1"));
  session->AddFilter("ZNFilter.Crop.1", 4);
  EXPECT_EQ(session->Chain().Items()[4].progId, "ZNFilter.Crop.1") << "dropped at a place";
  EXPECT_TRUE(session->Paste("ZNFilter.Emboss.1(EmbossStrength=020)Unknown(x)", 1));
  EXPECT_EQ(session->Chain().Items()[1].progId, "ZNFilter.Emboss.1");
  EXPECT_EQ(session->CopyText(), "ZNFilter.Emboss.1(EmbossStrength=020)");
  EXPECT_FALSE(session->Paste("no chain", 0));
}

// A desk that never came to its end.
TEST_F(DeskSession, BringsTheWorkBack) {
  const std::string name = Picture("photo.ppm", 60, 40);
  ASSERT_TRUE(OpenAndShow(name));
  AddWith("ZNFilter.Sepia.1", "Sepia=044");
  AddWith("ZNFilter.Invert.1", "Inversity=100");
  session->Chain().Switch(session->Chain().Selection(), false);
  const desk::ChainItems before = session->Chain().Items();
  session->Flush();
  // Not to a desk that runs beside it.
  std::thread([&] { EXPECT_FALSE(desk::WorkFile(folder / "state", true).Left()); }).join();
  Begin(true);
  ASSERT_TRUE(session->Recover());
  ASSERT_TRUE(Await(RenderStage::Full));
  EXPECT_EQ(session->Name(), name);
  EXPECT_EQ(TextOf(session->Chain().Items(), true), TextOf(before, true));
  EXPECT_FALSE(session->Chain().Items()[1].isOn);
  session->Finish();
  Begin(true);
  EXPECT_FALSE(session->Recover()) << "it came to its end";
}

TEST_F(DeskSession, RunsTheChainOverManyPictures) {
  std::vector<std::string> inputs = {Picture("a.ppm", 50, 40), Picture("b.ppm", 30, 20)};
  inputs.push_back(host::Utf8Of(folder / "missing.ppm"));
  AddWith("ZNFilter.Invert.1", "Inversity=100");
  std::optional<desk::BatchProgress> last;
  session->onBatch = [&](const desk::BatchProgress& progress) { last = progress; };
  session->Batch(inputs, host::Utf8Of(folder / "out"));
  ASSERT_TRUE(queue.RunUntil([&] { return last && last->isOver; }));
  EXPECT_EQ(last->done, 3);
  EXPECT_THAT(last->errors, ElementsAre(HasSubstr("missing.ppm")));
  EXPECT_TRUE(fs::exists(folder / "out" / "a.ppm"));
  EXPECT_TRUE(fs::exists(folder / "out" / "b.ppm"));
}

// In the middle of a picture that takes long.
TEST_F(DeskSession, StopsABatchAtOnce) {
  const std::vector<std::string> inputs = {Picture("a.ppm", 3000, 2000), Picture("b.ppm", 30, 20)};
  AddWith("ZNFilter.BlurSel.1", "Percent=100,Threshold=30.0,Radius=40.0");
  std::optional<desk::BatchProgress> last;
  session->onBatch = [&](const desk::BatchProgress& progress) { last = progress; };
  session->Batch(inputs, host::Utf8Of(folder / "out"));
  ASSERT_TRUE(queue.RunUntil([&] { return last.has_value(); }));
  std::this_thread::sleep_for(std::chrono::milliseconds(200));
  const auto stopped = std::chrono::steady_clock::now();
  session->StopBatch();
  ASSERT_TRUE(queue.RunUntil([&] { return last->isOver; }));
  EXPECT_LT(std::chrono::steady_clock::now() - stopped, std::chrono::seconds(3));
  EXPECT_TRUE(last->wasStopped);
  EXPECT_EQ(last->done, 0);
  EXPECT_THAT(last->errors, IsEmpty());
  EXPECT_FALSE(fs::exists(folder / "out" / "a.ppm"));
}

TEST_F(DeskSession, FindsFiltersByTheirWords) {
  const auto found = session->Catalog().Search("gauss BLUR");
  ASSERT_THAT(found, testing::Not(IsEmpty()));
  for (const auto* entry : found) EXPECT_NE(entry->progId, "ZNFilter.Sepia.1");
  EXPECT_THAT(session->Catalog().Search("no such filter"), IsEmpty());
  EXPECT_GT(session->Catalog().Entries().size(), 38u);
  int icons = 0;
  for (const auto& entry : session->Catalog().Entries()) {
    EXPECT_NE(entry.name, "") << entry.progId;
    icons += entry.icon != nullptr;
  }
  EXPECT_GT(icons, 30);
}

}  // namespace
