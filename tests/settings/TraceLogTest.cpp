// The trace log, the debug monitor and the message dialog in one process.
#include "settings/TraceLogStd.h"

#include <gmock/gmock.h>

#include <atomic>
#include <thread>

#include "platform/PathText.h"
#include "platform/fake/FakeServices.h"
#include "settings/MessageDialog.h"
#include "settings/ZNDebugMonitor.h"
#include "tests/platform/Support.h"

namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;
using testing_support::ReadFile;
using testing_support::WriteFile;

constexpr platform::LocalTime kNow = {2009, 3, 28, 7, 5, 9, 42};

class TraceLogTest : public testing::Test {
 protected:
  TraceLogTest() {
    fakes.process.program = folder / "ABCDprogram.exe";
    fakes.process.now = kNow;
    fakes.process.stateFolder = folder / "state";
    fakes.process.temporaryFolder = folder / "temp";
  }
  ~TraceLogTest() override {
    GetTraceBacktrace().enabled = GetTraceBacktrace().pending = false;
    TraceLog::StopLogging(false);
  }

  void Start(bool journal = false) { StartLogging(nullptr, false, journal, logs.c_str()); }
  fs::path File(const char* name = "ABCD(2009-03-28).log") { return folder / "logs" / name; }
  // The lines without their ends; a line that has none is missing.
  std::vector<std::string> Lines(const fs::path& file) {
    std::vector<std::string> lines;
    const std::string text = ReadFile(file);
    for (std::size_t at = 0, end; (end = text.find("\r\n", at)) != text.npos; at = end + 2) {
      lines.push_back(text.substr(at, end - at));
    }
    return lines;
  }
  std::vector<std::string> Lines() { return Lines(File()); }
  std::string Front(const char* number = "   0") {
    char text[80];
    std::snprintf(text, sizeof text, "07:05:09.042  %s %4x :%4x\t", number,
                  fakes.process.ProcessId(), fakes.process.ThreadId());
    return text;
  }

  testing_support::TemporaryFolder folder;
  const std::string logs = platform::PathText(folder / "logs");
  platform::FakeServices fakes;
  platform::ScopedServices scope{fakes.services};
  TraceLog log{2};
};

TEST_F(TraceLogTest, WritesLinesBelowItsLevel) {
  StartLogging(nullptr, true, false, logs.c_str());
  log.Format(4, "%d %s", 7, "Gr\xFC\xDF");
  log.Format(5, "not written");
  log.Write("at the object's level", true);
  log.Write(0, "bare", false);
  EXPECT_STREQ(TraceLog::GetLastLogEntry(), "bare");
  TraceLog::SetLogLevel(2);
  log.Write(-1, "the object's level is too high now", true);
  log.Format(-1, "%s", "here as well");
  log.LogFuncsAt(7);
  log.Write("at the highest", true);
  TraceLog(1).Write(3, "the line's own level", true);
  log.LogFuncsAt(1);
  log.Write(-1, "x", true);
  EXPECT_EQ(TraceLog::GetLastLogEntry(), Front() + "x");
  EXPECT_EQ(fakes.desktop.debugOutput.back(), Front() + "x\r\n");
  TraceLog::SetLogLevel(0);
  log.Write(0, "silenced", true);
  EXPECT_THAT(Lines(), ElementsAre(Front() + "Starting Program/DLL \"" +
                                       platform::PathText(fakes.process.program) + '"',
                                   Front() + "7 Gr\xFC\xDF", Front() + "at the object's level",
                                   "bare", Front() + "x"));
  EXPECT_EQ(ReadFile(TraceLog::GetLogFileName()), ReadFile(File()));
}

TEST_F(TraceLogTest, TextsOfAnyLength) {
  Start();
  const std::string overflow = "xxx Buffer Overflow xxx ";
  for (const std::size_t length : {8191u, 8192u, 9000u, 100000u}) {
    const std::string text(length, 'y');
    log.Format(0, "%s", text.c_str());
    const std::string line = Lines().back().substr(Front().size());
    EXPECT_EQ(line, length == 8191 ? text : overflow + std::string(8191 - overflow.size(), 'y'));
    EXPECT_EQ(std::string(TraceLog::GetLastLogEntry()).size(), 4047u);
    log.Write(0, text.c_str(), false);
    EXPECT_EQ(Lines().back(), text);
    EXPECT_EQ(std::string(TraceLog::GetLastLogEntry()).size(), 4048u);
  }
  log.Write(0, nullptr, false);
  EXPECT_EQ(Lines().back(), "");
  const char* volatile noFormat = nullptr;
  log.Format(0, noFormat, 1);
  EXPECT_EQ(Lines().back(), Front() + "Error in formatting Parameters for Log!!!!: ");
}

TEST_F(TraceLogTest, StartsByItselfAndStopsWithALastLine) {
  const fs::path file = folder / "state/fxbox4/log/ABCD(2009-03-28).log";
  TraceLog::SetLogLevel(0);
  TraceLog::StopLogging(true);  // it may have run before
  StartLogging(nullptr, false, false, nullptr);
  EXPECT_TRUE(fs::exists(file));
  TraceLog::StopLogging(true);
  const std::string start =
      Front() + "Starting Program/DLL \"" + platform::PathText(fakes.process.program) + '"';
  const std::string end = Front() + "Program/DLL \"" + platform::PathText(fakes.process.program) +
                          "\" terminated correctly";
  EXPECT_THAT(Lines(file), ElementsAre(start, end, "", ""));
  log.Write(0, "nothing is written behind the end", true);
  EXPECT_EQ(Lines(file).size(), 4u);
}

TEST_F(TraceLogTest, RemovesLogsOlderThanAMonth) {
  fs::create_directories(folder / "logs/WXYZ(2000-01-01).log");
  const struct {
    const char* name;
    bool goesInMarch;
    bool goesInJanuary;
  } cases[] = {
      {"ABCD(2000-01-01).log", true, true},           {"AB(2000-01-01).log", false, false},
      {"wxyz(2009-02-27)-and-more.LOG", true, false}, {"ABCD(2009-02-28).log", false, false},
      {"ABCD(2008-12-27).log", true, true},           {"ABCD(2008-12-28).log", true, false},
      {"logs(2009-01-31).zip", true, false},          {"else(2009-01-31).zip", false, false},
      {"ZNG_FTP(2000-01-01).log", true, true},        {"ZNG_FTP(2000-01-01)x.log", false, false},
      {"ABCD(no-date-at-all).log", false, false}};
  for (const bool january : {false, true}) {
    if (january) fakes.process.now->month = 1;
    for (const auto& c : cases) WriteFile(File(c.name), "");
    Start();
    for (const auto& c : cases) {
      EXPECT_EQ(fs::exists(File(c.name)), !(january ? c.goesInJanuary : c.goesInMarch)) << c.name;
    }
    EXPECT_TRUE(fs::exists(folder / "logs/WXYZ(2000-01-01).log"));
  }
}

// What the settings say decides over the folder of the log, which may have moved with the data.
TEST_F(TraceLogTest, FindsItsFolderInTheSettings) {
  const std::string slash(1, platform::kFolderSeparator);
  const std::string here = platform::PathText(folder.Path());
  const auto logLies = [&](const char* place) {
    TraceLog::StopLogging(true);
    fs::remove_all(folder / "state");
    StartLogging(nullptr, false, false, "");
    return fs::path(TraceLog::GetLogFileName()).parent_path() == folder.Path() / place;
  };
  for (const char* made : {"registered", "Log", "now/Log", "named/Log"}) {
    fs::create_directories(folder / made);
  }
  WriteFile(folder / "Tesmar.inf", "[ZNGallery]\nCompany=F\nProduct=P\nVersion=1\nShortId=ZN\n");
  EXPECT_TRUE(logLies("state/fxbox4/log"));
  fakes.registry.Write(platform::Hive::LocalMachine, "Software\\F\\P\\1\\IniFilePath",
                       platform::PathText(folder / "registered"));
  EXPECT_TRUE(logLies("registered"));
  const std::string data = here + slash + "now" + slash + "data.ini";
  WriteFile(folder / "registered/Sennet.ini",
            "[ZN_#_Datapaths]\nPath#=1\nActivePath=3\nPath3=" + data + "\n");
  WriteFile(data, "[ZN_#_Locations]\nLog=" + here + slash + "named\n");
  EXPECT_TRUE(logLies("named"));
  WriteFile(data, "[ZN_#_Locations]\nDataRoot=" + here + slash + "\nLog=" + here + slash + "Log\n");
  EXPECT_TRUE(logLies("now/Log"));
  WriteFile(data, "[ZN_#_Locations]\nDataRoot=" + here + slash + "other" + slash + "\nLog=" + here +
                      slash + "named" + slash + "Log\n");
  EXPECT_TRUE(logLies("named/Log")) << "which did not lie with the data";
  WriteFile(data, "[ZN_#_Locations]\nLog=" + here + slash + "vanished\n");
  EXPECT_TRUE(logLies("registered"));
  // Data that lies in no file of its own has not moved.
  const std::string prefix = here + slash + "now" + slash + "data";
  WriteFile(folder / "registered/Sennet.ini",
            "[ZN_#_Datapaths]\nPath#=1\nActivePath=3\nPath3=" + prefix + "\n[" + prefix +
                "_#_Locations]\nDataRoot=" + here + slash + "\nLog=" + here + slash + "Log\n");
  EXPECT_TRUE(logLies("Log"));
}

TEST_F(TraceLogTest, SomeProgramsKeepNone) {
  for (const char* program :
       {"RegSvr32.exe", "ZNGUpdate.exe", "znun.exe", "AniRead.exe", "anisx"}) {
    fakes.process.program = folder / program;
    StartLogging(nullptr, true, false, logs.c_str());
    log.Write(0, "x", true);
    log.FlushBuffers();
    EXPECT_FALSE(fs::exists(folder / "logs")) << program;
    EXPECT_FALSE(fs::exists(folder / "temp")) << program;
  }
  fakes.process.program = folder / "fx.exe";
  Start();
  EXPECT_TRUE(fs::exists(File("fx(2009-03-28).log")));
}

TEST_F(TraceLogTest, TheJournalWritesEveryLevelAndEndsOnFlush) {
  Start(true);
  log.Format(9, "%s", "line");
  // At once: a process that is killed has left it behind.
  for (int i = 0; i < 500 && Lines().size() < 2; ++i) {
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  EXPECT_EQ(Lines().size(), 2u);
  log.Write(-1, "raw", false);
  log.FlushBuffers();
  log.Write(0, "direct", true);
  log.Write(7, "not written", true);
  EXPECT_THAT(Lines(), ElementsAre(EndsWith("\tJournalThread starting."), Front("  9") + "line",
                                   Front(" -1") + "raw", Front() + "direct"));
  EXPECT_TRUE(fakes.desktop.messages.empty());
}

// A failed start silences the log until the next one that succeeds.
TEST_F(TraceLogTest, FallsSilent) {
  WriteFile(folder / "logs", "in the way");
  for (const bool journal : {false, true}) {
    Start(journal);
    for (int i = 0; i < 3; ++i) {
      log.Write(0, "lost", true);
      std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    log.DumpStack();
    EXPECT_EQ(ReadFile(folder / "logs"), "in the way");
  }
  EXPECT_TRUE(fakes.desktop.messages.empty());
  fs::remove(folder / "logs");
  Start();
  log.Write(0, "heard", true);
  EXPECT_THAT(Lines(), ElementsAre(Front() + "heard"));
}

TEST_F(TraceLogTest, KeepsLinesForABacktrace) {
  Start();
  TraceBacktrace& backtrace = GetTraceBacktrace();
  backtrace.enabled = true;
  backtrace.announceFullTrace = false;
  for (int i = 0; i < 5002; ++i) log.Format(9, "%d", i);
  log.Write(9, "without a prefix it is not kept", false);
  EXPECT_TRUE(Lines().empty());
  backtrace.pending = true;
  log.Write(9, "now", true);
  ASSERT_EQ(Lines().size(), 5002u);
  EXPECT_THAT(Lines()[0], StartsWith("************************************B*A*C*K*T*R*A*C*E***S"));
  EXPECT_EQ(Lines()[1], Front() + "2");
  EXPECT_EQ(Lines()[5000], Front() + "5001");
  EXPECT_THAT(Lines()[5001], HasSubstr("E*N*D*S***H*E*R*E"));
  EXPECT_FALSE(backtrace.pending);

  log.Write(9, "kept", true);
  TraceLog::SetLogLevel(1);
  log.DumpStack();
  EXPECT_EQ(Lines().size(), 5005u);
  EXPECT_EQ(Lines()[5003], Front() + "kept");

  log.Write(9, "kept", true);
  backtrace.announceFullTrace = backtrace.pending = true;
  log.Write(9, "first of a full trace", true);
  log.Write(9, "second", true);
  EXPECT_EQ(Lines().size(), 5010u);
  EXPECT_THAT(fakes.desktop.debugOutput,
              testing::Contains(HasSubstr("The last 5000 lines have been dumped.")));
}

// A turn at the file ends in one of four ways, and is given back where it was had.
TEST_F(TraceLogTest, WritesInItsTurn) {
  using Wait = platform::NamedMutex::Wait;
  struct Turns final : platform::Mutexes {
    struct Turn final : platform::NamedMutex {
      explicit Turn(Turns& given) : turns(given) {}
      Wait WaitFor(std::chrono::milliseconds) override { return turns.result; }
      void Release() override { ++turns.released; }
      Turns& turns;
    };
    std::unique_ptr<platform::NamedMutex> Open(const std::string&) override {
      return std::make_unique<Turn>(*this);
    }
    std::atomic<Wait> result = Wait::Held;
    std::atomic<int> released = 0;
  } turns;
  fakes.services.mutexes = &turns;
  WriteFile(folder / "other", "appended\r\n");
  const std::string other = platform::PathText(folder / "other");
  const struct {
    Wait result;
    bool isAppended;
    int lines, released;  // one line and six rulers, in turns of their own
  } cases[] = {{Wait::Held, true, 8, 8},
               {Wait::Abandoned, true, 1, 8},
               {Wait::TimedOut, false, 0, 0},
               {Wait::Failed, false, 0, 0}};
  for (const auto& c : cases) {
    fs::remove(File());
    Start();
    turns.result = c.result;
    turns.released = 0;
    log.Write(0, "a line", true);
    EXPECT_EQ(log.AppendFileToLog(other.c_str()), c.isAppended);
    EXPECT_EQ(Lines().size(), static_cast<std::size_t>(c.lines));
    EXPECT_EQ(turns.released, c.released);
    turns.result = Wait::Held;
    TraceLog::StopLogging(true);
  }
  // The journal keeps what it cannot write yet.
  fs::remove(File());
  turns.result = Wait::TimedOut;
  Start(true);
  log.Write(0, "first", true);
  std::this_thread::sleep_for(std::chrono::milliseconds(20));
  EXPECT_TRUE(Lines().empty());
  turns.result = Wait::Held;
  log.Write(0, "second", true);
  log.FlushBuffers();
  ASSERT_EQ(Lines().size(), 3u);
  EXPECT_THAT(Lines()[1], EndsWith("first"));
  EXPECT_THAT(Lines()[2], EndsWith("second"));
  TraceLog::StopLogging(true);
  // What a process that was killed has left.
  for (const bool journal : {false, true}) {
    WriteFile(File(), "half a li");
    Start(journal);
    log.Write(0, "whole", true);
    log.FlushBuffers();
    ASSERT_GE(Lines().size(), 2u);
    EXPECT_EQ(Lines()[0], "half a li");
    EXPECT_THAT(Lines().back(), EndsWith("whole"));
    TraceLog::StopLogging(true);
  }
}

TEST_F(TraceLogTest, AppendsFiles) {
  Start();
  TraceLog::SetLogLevel(1);
  const std::string text(5000, 'z');
  WriteFile(folder / "other", text + "\r\n");
  EXPECT_FALSE(log.AppendFileToLog(platform::PathText(folder / "none").c_str()));
  EXPECT_EQ(Lines().size(), 4u);
  EXPECT_TRUE(log.AppendFileToLog(platform::PathText(folder / "other").c_str()));
  const std::string ruler = Front() + std::string(63, '-');
  const auto lines = Lines();
  EXPECT_THAT(std::vector(lines.begin() + 4, lines.end()),
              ElementsAre(ruler, HasSubstr("Appending File "), ruler, ruler, text, ruler, ruler));
  EXPECT_TRUE(log.AppendFileToLog(TraceLog::GetLogFileName()));
  EXPECT_EQ(Lines().size(), 11u + 4 + 15 + 2);
}

TEST_F(TraceLogTest, ThreadsDoNotMixTheirLines) {
  for (const bool journal : {false, true}) {
    Start(journal);
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
      threads.emplace_back([t] {
        TraceLog own(4);
        for (int i = 0; i < 40; ++i) own.Format(4, "thread %d line %d end", t, i);
        TraceLog::GetLastLogEntry();
      });
    }
    for (std::thread& thread : threads) thread.join();
    log.FlushBuffers();
    EXPECT_THAT(Lines(), testing::SizeIs(journal ? 321 : 160));
    for (const std::string& line : Lines()) {
      EXPECT_THAT(line, testing::AnyOf(EndsWith(" end"), EndsWith("starting."))) << line;
    }
  }
}

#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
TEST_F(TraceLogTest, ALogThatIsNotThereIsIgnored) {
  TraceLog* volatile nothing = nullptr;
  nothing->Format(0, "x");
}
#endif

TEST_F(TraceLogTest, TheMonitorShowsTopicsThatAreAskedFor) {
  Start();
  WriteFile(folder / "ZNDebug.txt", "Old");
  ZNDebugMonitor("Old", "%d", 5);
  EndDebugMonitor();
  const auto before = static_cast<std::ptrdiff_t>(Lines().size());
  std::string most = "One two #Three Four\n#Five\r\nSix\n# ";
  WriteFile(folder / "ZNDebug.txt", most);
  for (const char* topic :
       {"One", "two", "TWO", "Three", "Four", "Five", "Six", "#Three", "", "Old"}) {
    ZNDebugMonitor(topic, "%d", 5);
  }
  ZNDebugMonitor(nullptr, "x");
  std::vector<std::string> lines = Lines();
  lines.erase(lines.begin(), lines.begin() + before);
  EXPECT_THAT(lines, ElementsAre(Front() + "One: 5", Front() + "two: 5", Front() + "Six: 5"));
  for (int i = 3; i < 498; ++i) most.append("\nsame");
  WriteFile(folder / "ZNDebug.txt", most + " Last Beyond");
  ZNDebugMonitor("Last", "%d", 5);
  ZNDebugMonitor("Beyond", "%d", 5);
  EXPECT_EQ(Lines().back(), Front() + "Last: 5");
  EXPECT_THAT(fakes.desktop.debugOutput,
              testing::IsSupersetOf({"One [ZNDeMon]: ", "5\n", "Six [ZNDeMon]: "}));
  ZNDebugMonitor("Six", "%s", std::string(5000, 'x').c_str());
  EXPECT_EQ(fakes.desktop.debugOutput.back(),
            "ZNDebugMonitor - Buffer Overflow\n " + std::string(4095 - 34, 'x') + "\n");
  fs::remove(folder / "ZNDebug.txt");
  ZNDebugMonitor("One", "behind the end the file is read for every call");
  EXPECT_THAT(Lines().back(), testing::Not(HasSubstr("every call")));
}

TEST_F(TraceLogTest, TheMessageDialogLeavesTwoLines) {
  Start();
  TraceLog::SetLogLevel(6);
  int button = 0;
  for (const char* name :
       {"unknown", "OK", "Cancel", "Abort", "Retry", "Ignore", "Yes", "No", "unknown"}) {
    fakes.desktop.answer = button;
    EXPECT_EQ(ZNMessageBox("Really?", "Title", 4), button);
    const auto lines = Lines();
    EXPECT_EQ(lines.end()[-2], Front() + "MessageBox: Title: Title Really? 4");
    EXPECT_EQ(lines.back(),
              Front() + "MessageBox: <" + name + "> selected (" + std::to_string(button++) + ")");
  }
  ZNMessageBox(nullptr, nullptr, 0);
  EXPECT_EQ(Lines().end()[-2], Front() + "MessageBox: Title:   0");
}

}  // namespace
