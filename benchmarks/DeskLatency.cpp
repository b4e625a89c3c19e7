// How long the desk takes from a change to the new picture, on the code that the window drives:
//   fxbox_desk_latency [ROUNDS]     prints a line a measurement, in milliseconds
// A picture of 24 megapixels, shown on a screen of 1920 x 1080, with two threads.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>

#include "component/Fxbox4.h"
#include "desk/Session.h"
#include "host/Texts.h"
#include "platform/WorkerPool.h"
#include "tests/support/TaskQueue.h"

namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

constexpr int kWidth = 6000, kHeight = 4000;
// What is left of the screen beside the panels.
constexpr host::Size kScreen{1380, 960};
constexpr int kThreads = 2;

double Since(Clock::time_point start) {
  return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

void WritePhoto(const fs::path& file) {
  MemoryPicture picture("photo", kWidth, kHeight, true, true);
  for (int y = 0; y < kHeight; ++y) {
    for (int x = 0; x < kWidth; ++x) {
      BYTE* const pixel = picture.ColourRows()[y] + 3 * static_cast<std::ptrdiff_t>(x);
      const unsigned noise =
          (static_cast<unsigned>(x) * 2654435761u ^ static_cast<unsigned>(y) * 40503u) >> 27;
      pixel[0] = static_cast<BYTE>((x / 30 + static_cast<int>(noise)) % 256);
      pixel[1] = static_cast<BYTE>((y / 20 + static_cast<int>(noise)) % 256);
      pixel[2] = static_cast<BYTE>((x + y) / 45 % 256);
      picture.MaskRows()[y][x] = 0;
    }
  }
  imageio::WriteImage(file, imageio::Format::Jpeg, kWidth, kHeight,
                      {picture.ColourRows(), picture.MaskRows()});
}

class Latency {
 public:
  explicit Latency(int roundCount) : rounds(roundCount) {}

  void Run() {
    const fs::path folder = fs::temp_directory_path() / "fxbox-desk-latency";
    fs::create_directories(folder);
    WritePhoto(folder / "photo.jpg");
    {
      desk::Session session([this](auto task) { queue.Post(std::move(task)); }, folder / "state",
                            false);
      session.SetBox(kScreen, true);
      session.onShown = [&] { isShown = true; };
      Open(session, host::Utf8Of(folder / "photo.jpg"));
      Slide(session, "point filter", {{0, "ZNFilter.BrightnessContrast.1", ""}}, 0,
            "Brightness=%.3d,Contrast=010,Saturation=000");
      Slide(session, "five filters, one Gaussian",
            {{0, "ZNFilter.RGBColor.1", "Red=010,Green=000,Blue=-010"},
             {0, "ZNFilter.BlurGauss.1", "Percent=100,Radius=4.0"},
             {0, "ZNFilter.Sepia.1", "Sepia=020"},
             {0, "ZNFilter.Histo.1", "Intensity=020"},
             {0, "ZNFilter.BrightnessContrast.1", ""}},
            4, "Brightness=%.3d,Contrast=010,Saturation=000");
      session.Finish();
    }
    fs::remove_all(folder);
  }

 private:
  void Open(desk::Session& session, const std::string& name) {
    isShown = false;
    const auto start = Clock::now();
    session.Open(name);
    Await([this] { return isShown; });
    Print("open a JPEG of 24 megapixels, first look", {Since(start)});
    Await([&] { return session.Shown().stage == desk::RenderStage::Full; });
    Print("  and all of it", {Since(start)});
  }

  void Slide(desk::Session& session, const char* what, const desk::ChainItems& items, int moved,
             const char* parameters) {
    session.Chain().Reset(items);
    Await([&] {
      return session.Renderer().IsIdle() && session.Shown().stage == desk::RenderStage::Full;
    });
    std::vector<double> first, screen;
    for (int round = 1; round <= rounds; ++round) {
      char text[80];
      std::snprintf(text, sizeof text, parameters, round % 100);
      const int id = session.Chain().Items()[static_cast<std::size_t>(moved)].id;
      isShown = false;
      const auto start = Clock::now();
      session.Chain().SetParameters({{id, text}}, 1);
      Await([this] { return isShown; });
      first.push_back(Since(start));
      Await([&] { return session.Shown().stage >= desk::RenderStage::Screen; });
      screen.push_back(Since(start));
    }
    Print(std::string("slider to preview, ") + what, first);
    Print("  to the screen's resolution", screen);
  }

  template <class Condition>
  void Await(Condition condition) {
    if (queue.RunUntil(condition)) return;
    std::fputs("no answer within half a minute\n", stderr);
    std::_Exit(1);
  }

  static void Print(const std::string& what, std::vector<double> times) {
    std::sort(times.begin(), times.end());
    std::printf("%-48s median %7.1f   best %7.1f   worst %7.1f\n", what.c_str(),
                times[times.size() / 2], times.front(), times.back());
    std::fflush(stdout);
  }

  const int rounds;
  testing_support::TaskQueue queue;
  bool isShown = false;
};

}  // namespace

int main(int argc, char** argv) {
  const auto pool =
      platform::ComPtr<platform::WorkerPool>::Attach(new platform::WorkerPool(kThreads));
  FxboxSetWorkers(pool.Get());
  Latency(argc > 1 ? std::max(1, std::atoi(argv[1])) : 20).Run();
  FxboxSetWorkers(nullptr);
  return 0;
}
