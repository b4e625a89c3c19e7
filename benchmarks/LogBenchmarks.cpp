// Lines a second of the trace log: written at once, through the journal thread, and of a level that
// is not written.
#include <benchmark/benchmark.h>

#include <filesystem>

#include "platform/PathText.h"
#include "settings/TraceLogStd.h"

namespace {

enum class Way { Direct, Journal, NotWritten };

void Log(benchmark::State& state, Way way) {
  const auto folder = std::filesystem::temp_directory_path() / "fxbox-log-benchmark";
  StartLogging(nullptr, false, way == Way::Journal, platform::PathText(folder).c_str());
  TraceLog log(4);
  const int level = way == Way::NotWritten ? 5 : 4;
  int number = 0;
  for (auto _ : state) log.Format(level, "Picture %d of %s is done", ++number, "a benchmark");
  state.SetItemsProcessed(state.iterations());
  TraceLog::StopLogging(true);
  std::error_code ignored;
  std::filesystem::remove_all(folder, ignored);
}

// Until the last line is in the file.
void JournalToTheEnd(benchmark::State& state) {
  constexpr int kLines = 10'000;
  const auto folder = std::filesystem::temp_directory_path() / "fxbox-log-benchmark";
  for (auto _ : state) {
    StartLogging(nullptr, false, true, platform::PathText(folder).c_str());
    TraceLog log(4);
    for (int i = 0; i < kLines; ++i) log.Format(4, "Picture %d of %s is done", i, "a benchmark");
    log.FlushBuffers();
  }
  state.SetItemsProcessed(state.iterations() * kLines);
  TraceLog::StopLogging(true);
  std::error_code ignored;
  std::filesystem::remove_all(folder, ignored);
}
BENCHMARK(JournalToTheEnd)->UseRealTime();

BENCHMARK_CAPTURE(Log, direct, Way::Direct)->UseRealTime();
// What the caller pays; the file grows behind its back, so the count is limited.
BENCHMARK_CAPTURE(Log, journal, Way::Journal)->Iterations(200'000);
BENCHMARK_CAPTURE(Log, not_written, Way::NotWritten);

}  // namespace
