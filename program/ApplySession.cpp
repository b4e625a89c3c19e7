#include "program/ApplySession.h"

#include <algorithm>
#include <exception>
#include <iostream>
#include <map>
#include <mutex>
#include <numeric>
#include <thread>
#include <vector>

#include "host/ComponentRuntime.h"
#include "platform/Services.h"
#include "program/ApplyReport.h"
#include "program/Interrupt.h"
#include "program/Messages.h"
#include "program/ProgressBar.h"

namespace program {
namespace {

class Session {
 public:
  Session(ApplyTasks& allTasks, const ApplyRequest& everyPicture, const SessionOptions& given)
      : tasks(allTasks),
        request(everyPicture),
        options(given),
        shares(static_cast<std::size_t>(std::max(given.jobs, 1)), 0.0),
        bar(std::cerr, BarWidth(), tasks.Count(),
            std::chrono::milliseconds(tasks.Count() > 1 ? 0 : 500)) {}

  int Run() {
    std::vector<std::thread> helpers;
    for (std::size_t lane = 1; lane < shares.size(); ++lane) helpers.push_back(Start(lane));
    Work(0);
    for (std::thread& helper : helpers) helper.join();
    TellRest();
    if (failure) std::rethrow_exception(failure);
    return IsInterrupted() ? kInterrupted : status;
  }

 private:
  struct Finished {
    PlannedFile file;
    FileResult result;
  };

  // A list that still grows has no end that a bar could show.
  int BarWidth() const {
    const bool isShown = !options.quiet && tasks.Count() > 0;
    return isShown ? platform::CurrentServices().terminal->ErrorWidth() : 0;
  }

  std::thread Start(std::size_t lane) {
    return std::thread([this, lane] {
      const ComponentRuntime runtime;
      Work(lane);
    });
  }

  void Work(std::size_t lane) {
    try {
      DoTasks(lane);
    } catch (...) {
      const std::lock_guard hold(lock);
      if (!failure) failure = std::current_exception();
    }
  }

  void DoTasks(std::size_t lane) {
    const auto creator = MakeCreator();
    ApplyRun run(request, *creator.Get(), [&](double share) { Show(lane, share); });
    while (!IsInterrupted()) {
      const std::optional<ApplyTask> task = tasks.Next();
      if (!task) return;
      const FileResult result = task->refusal.empty() ? run.Do(task->file) : RefusedBy(*task);
      if (IsInterrupted() && !result.isWritten) return;
      Take(lane, task->number, {task->file, result});
    }
  }

  static FileResult RefusedBy(const ApplyTask& task) {
    FileResult result;
    result.error = task.refusal;
    return result;
  }

  void Show(std::size_t lane, double share) {
    const std::lock_guard hold(lock);
    shares[lane] = share;
    bar.Show(done, std::accumulate(shares.begin(), shares.end(), 0.0));
  }

  void Take(std::size_t lane, std::size_t number, Finished finished) {
    const std::lock_guard hold(lock);
    shares[lane] = 0;
    ++done;
    if (options.jsonLines) return Tell(finished);
    waiting.emplace(number, std::move(finished));
    while (!waiting.empty() && waiting.begin()->first == nextToTell) TellNext();
  }

  void TellNext() {
    Tell(waiting.begin()->second);
    waiting.erase(waiting.begin());
    ++nextToTell;
  }

  // Behind what was interrupted.
  void TellRest() {
    while (!waiting.empty()) TellNext();
    bar.Hide();
    if (!options.json) return;
    PrintJson({{"version", kJsonVersion}, {"files", report}, {"interrupted", IsInterrupted()}});
  }

  void Tell(const Finished& finished) {
    const auto& [file, result] = finished;
    bar.Hide();
    if (options.json) report.push_back(ReportOf(file, result));
    if (options.jsonLines) std::cout << ReportLine(file, result) << std::flush;
    if (!result.error.empty()) {
      PrintError(result.error);
      status = std::max(status, result.wrongUse ? kWrongUse : kSomeFailed);
    } else if (!options.quiet && !options.json && !options.jsonLines) {
      TellInWords(file, result);
    }
  }

  // Standard output is the picture's own when it goes there.
  static void TellInWords(const PlannedFile& file, const FileResult& result) {
    for (const std::string& note : result.notes) {
      PrintError(Utf8Of(file.input) + ": note: " + note);
    }
    if (!file.ToStandard()) std::cout << ResultText(file, result) + "\n" << std::flush;
  }

  ApplyTasks& tasks;
  const ApplyRequest& request;
  const SessionOptions& options;

  std::mutex lock;             // of everything below
  std::vector<double> shares;  // of the picture in work, by thread
  ProgressBar bar;
  std::size_t done = 0;
  std::map<std::size_t, Finished> waiting;  // for those before them
  std::size_t nextToTell = 0;
  Json report = Json::array();
  int status = kDone;
  std::exception_ptr failure;
};

}  // namespace

int RunSession(ApplyTasks& tasks, const ApplyRequest& request, const SessionOptions& options) {
  return Session(tasks, request, options).Run();
}

}  // namespace program
