// How fast the filters are: every class that does its work pulls a picture through the public
// interface.
//
// Names are the filters' own: Sepia/24MP, Sepia/preview, with the setting where a filter has
// several, BlurGauss/radius10/24MP, and with the threads where it is lent some:
// Sepia/24MP/threads2. Between two pulls the rows are inverted in place and set back with memcpy,
// both timed, on one thread: the shares are the filter's speed beside theirs, by the quickest of
// each over the run. Work on one thread is timed by its processor time. FXBOX_SIMD limits the
// vector units, FXBOX_THREADS says for how many threads to measure: "1,2,8". `lent` is the speed
// behind a source that lends its rows; the others are behind one that copies them.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "benchmarks/FilterPull.h"
#include "benchmarks/Timing.h"
#include "component/Fxbox4.h"
#include "core/FilterClass.h"
#include "filters/pixels/simd/Simd.h"
#include "platform/WorkerPool.h"

namespace {

using benchmarks::Copy;
using benchmarks::FilterPull;
using benchmarks::Invert;
using benchmarks::KeptPicture;
using benchmarks::Planes;
using benchmarks::Quickest;
using benchmarks::Repeat;
using benchmarks::Seconds;
using platform::ComPtr;

struct PictureSize {
  const char* name;
  int width, height;
};
constexpr PictureSize kSizes[] = {{"preview", 1920, 1280}, {"24MP", 6000, 4000}};

// Texts that make a filter work, where its default text leaves the picture alone. A filter whose
// speed depends on its parameters has several, each with a label.
struct Setting {
  const char* progId;
  const char* text;
  Planes planes = Planes::Colour;  // what it changes, and is compared with a copy of
  const char* label = nullptr;
  bool opaque = false;  // a picture without transparent places
  bool again = false;   // pulled without a change, from what the filter keeps
};
constexpr char kMat[] =
    "BordersizeOn=1, Borderhori=100, Borderverti=100, Radius=050, Blue=105, Transparency=000";
constexpr Setting kSettings[] = {
    {"ZNFilter.Sepia.1", "Sepia=060"},
    {"ZNFilter.Invert.1", "Inversity=080"},
    {"ZNFilter.BlackWhiteness.1", "BlackWhiteNess=060"},
    {"ZNFilter.Transparency.1", "Transparency=030", Planes::Mask},
    {"ZNFilter.RGBColor.1", "Red=010, Green=-20, Blue=005"},
    {"ZNFilter.GradCurves.1", "nL=3, xL2=100, yL2=140, FilterOn=1", Planes::Colour, "luminance"},
    {"ZNFilter.GradCurves.1", "nL=3, xL2=100, yL2=140, nR=3, xR2=60, yR2=50, FilterOn=1",
     Planes::Colour, "channels"},
    {"ZNFilter.GradCurves.1", "nL=3, xL2=100, yL2=140, nR=3, xR2=60, yR2=50, YIQOn=1, FilterOn=1",
     Planes::Colour, "yiq"},
    {"ZNFilter.HSB.1", "Hue=020, Sat=030, Bright=-10,HueR=040, SatG=-20, BrightB=015"},
    {"ZNFilter.ColorTuning.1", "SatR=040,SatY=-20,SatG=030,SatC=010,SatB=-50,SatM=080"},
    {"ZNFilter.DuoColor.1",
     "Intensity=080, ColorRed=120, ColorGreen=040, ColorBlue=000, Red2=250, Green2=230, Blue2=180"},
    {"ZNFilter.AdoptColor.1", "Intensity=080, ColorRed=120, ColorGreen=090, ColorBlue=040",
     Planes::Both},
    {"ZNFilter.InvertMask.1", "Blue=255 , Green=128, Red=000, Transparency=040", Planes::Both},
    {"ZNFilter.Exposure.1", "Red=020, Green=000, Blue=-30"},
    {"ZNFilter.Exposure.1", "Red=020, Green=040, Blue=-30", Planes::Colour, "saturation"},
    {"ZNFilter.BrightnessContrast.1", "Brightness=010, Contrast=020, Saturation=000"},
    {"ZNFilter.BrightnessContrast.1", "Brightness=010, Contrast=020, Saturation=030",
     Planes::Colour, "saturation"},
    {"ZNFilter.Exposure2.1", "Red=020, Green=040, Blue=-30"},
    {"ZNFilter.Optimize.1", "Slider1=020, Slider2=030, Slider3=040, Slider4=000"},
    {"ZNFilter.Optimize.1", "Slider1=020, Slider2=030, Slider3=040, Slider4=020", Planes::Colour,
     "saturation"},
    {"ZNFilter.Histo.1", "Intensity=080"},
    {"ZNFilter.Tonwert.1", "AutoContrast=1, Med=010", Planes::Both},
    {"ZNFilter.Tonwert.1", "AutoContrast=1, Med=010", Planes::Both, "again", false, true},
    {"ZNFilter.Tonwert.1", "AutoContrastRGB=1, Med=010", Planes::Both, "againRGB", false, true},
    {"ZNFilter.WhiteBlackGrey.1", "RedG=120, GreenG=130, BlueG=110, Mode=1"},
    {"ZNFilter.WhiteBlackGrey.1", "RedG=120, GreenG=130, BlueG=110, Mode=2", Planes::Colour,
     "autoContrast"},
    {"ZNFilter.ImgBg.1", "Blue=255 , Green=128, Red=000, Transparency=040", Planes::Both},
    {"ZNFilter.Sharpen.1", "Sharpness=050,Version=3", Planes::Colour, "opaque", true},
    {"ZNFilter.Sharpen.1", "Sharpness=050,Version=3", Planes::Colour, "mask"},
    {"ZNFilter.Blur.1", "Blurness=050,Version=3", Planes::Colour, "opaque", true},
    {"ZNFilter.Blur.1", "Blurness=050,Version=3", Planes::Colour, "mask"},
    {"ZNFilter.BlurGauss.1", "Percent=100,Radius=2.7", Planes::Colour, "radius2.7"},
    {"ZNFilter.BlurGauss.1", "Percent=100,Radius=10", Planes::Colour, "radius10"},
    {"ZNFilter.BlurGauss.1", "Percent=100,Radius=50", Planes::Colour, "radius50"},
    {"ZNFilter.UnsharpMask.1", "Radius=2.7,OnLuminanceOnly=0", Planes::Colour, "all"},
    {"ZNFilter.UnsharpMask.1", "Radius=2.7,Threshold=5,OnLuminanceOnly=0", Planes::Colour,
     "threshold"},
    {"ZNFilter.UnsharpMask.1", "Radius=2.7,OnLuminanceOnly=1", Planes::Colour, "brightness"},
    {"ZNFilter.BlurSel.1", "Threshold=30,Radius=2.7", Planes::Colour, "radius2.7"},
    {"ZNFilter.BlurSel.1", "Threshold=30,Radius=10", Planes::Colour, "radius10"},
    {"ZNFilter.FindEdges.1", "EdgeEnhance=050", Planes::Colour, "opaque", true},
    {"ZNFilter.FindEdges.1", "EdgeEnhance=050", Planes::Colour, "mask"},
    {"ZNFilter.Gamma.1", "S10=20,S20=-35,S31=60,S33=-40", Planes::Colour, "shift"},
    {"ZNFilter.Gamma.1", "S10=20,S31=60,S40=10,S51=-30", Planes::Colour, "all"},
    {"ZNFilter.RgbMixer.1", "BOnK=1", Planes::Colour, "grey"},
    {"ZNFilter.RgbMixer.1", "BOnK=0,BOnR=1,BOnG=1,BOnB=1,rG=30,gB=-20,bR=40,BRgb3=1",
     Planes::Colour, "channels"},
    {"ZNFilter.SoftFrame.1", "FrameWidth=020", Planes::Mask, "narrow"},
    {"ZNFilter.SoftFrame.1", "FrameWidth=100", Planes::Mask, "whole"},
    {"ZNFilter.Text.1", "Size=060,PosY=050,Text=One%20line%20of%20text", Planes::Both, "line"},
    {"ZNFilter.WaterSign.1", "Tile=1,Angle=300,Text=Sample", Planes::Both, "tiles"},
    {"ZNFilter.Emboss.1", "EmbossStrength=050", Planes::Colour, "opaque", true},
    {"ZNFilter.Emboss.1", "EmbossStrength=050", Planes::Colour, "mask"},
    {"ZNFilter.Crop.1", "", Planes::Both, "whole"},
    {"ZNFilter.Crop.1", "LeftMargin=0.1,RightMargin=0.9,FixRatioOn=0", Planes::Both, "part"},
    {"ZNFilter.Rotate.1", "Angle=90", Planes::Both, "quarter"},
    {"ZNFilter.Rotate.1", "Angle=180", Planes::Both, "half"},
    {"ZNFilter.Rotate.1", "Angle=7.5", Planes::Both, "opaque", true},
    {"ZNFilter.Rotate.1", "Angle=7.5", Planes::Both, "mask"},
    {"ZNFilter.Rotate.1", "Angle=97.5", Planes::Both, "further", true},
    {"ZNFilter.Rotate.1", "Angle=45", Planes::Both, "steep", true},
    {"ZNFilter.Passpartout.1", kMat, Planes::Both, "opaque", true},
    {"ZNFilter.Passpartout.1", kMat, Planes::Both, "mask"},
    {"ZNFilter.Rauchglas.1",
     "Borderhori=075, Borderverti=075, Radius=050, Blue=180, Green=180, Red=180, Transparency=060",
     Planes::Colour, "opaque", true},
    {"ZNFilter.Rauchglas.1",
     "Borderhori=100, Borderverti=100, Radius=050, Blue=180, Green=180, Red=180, Transparency=060",
     Planes::Colour, "whole"},
    {"ZNFilter.Shadow.1", "ShadowDensity=070, ShadowBlur=020, ShadowDistance=010", Planes::Both,
     "blur20", true},
    {"ZNFilter.Shadow.1", "ShadowDensity=070, ShadowBlur=100, ShadowDistance=010", Planes::Both,
     "blur100", true},
    {"ZNFilter.Shadow.1", "ShadowDensity=070, ShadowBlur=020, ShadowDistance=010", Planes::Both,
     "blur20mask"},
    {"ZNFilter.Shadow.1", "LightIntensity=050", Planes::Both, "relief"},
    {"ZNFilter.Scale100.1", "HorizontalProz=032, VerticalProz=032", Planes::Both, "reduced/opaque",
     true},
    {"ZNFilter.Scale100.1", "HorizontalProz=032, VerticalProz=032", Planes::Both, "reduced/mask"},
    {"ZNFilter.Scale100.1", "HorizontalProz=200, VerticalProz=200", Planes::Both, "enlarged/opaque",
     true},
    {"ZNFilter.Scale100.1", "HorizontalProz=200, VerticalProz=200", Planes::Both, "enlarged/mask"},
    {"ZNFilter.Scale.1", "MaximumHorizontalSize=1001, MaximumVerticalSize=1001", Planes::Both,
     "to1001/opaque", true},
    {"ZNFilter.Scale.1", "MaximumHorizontalSize=1001, MaximumVerticalSize=1001", Planes::Both,
     "to1001/mask"},
};

std::vector<Setting> SettingsOf(const FilterClass& row) {
  std::vector<Setting> settings;
  for (const Setting& setting : kSettings) {
    if (std::strcmp(setting.progId, row.progId) == 0) settings.push_back(setting);
  }
  if (settings.empty()) settings.push_back({row.progId, row.defaultText ? row.defaultText : ""});
  return settings;
}

// "Sepia" of "ZNFilter.Sepia.1", "BlurGauss/radius10" with a label.
std::string ShortName(const Setting& setting) {
  std::string name = setting.progId;
  name.erase(name.rfind('.')).erase(0, name.find('.') + 1);
  if (setting.label) name.append("/").append(setting.label);
  return name;
}

// One iteration stands for all calls: a filter that does nothing would otherwise be called for
// hours between passes that are not its own.
void Report(benchmark::State& state, const std::vector<double>& times, const PictureSize& size) {
  state.SetIterationTime(Quickest(times));
  state.SetItemsProcessed(std::int64_t{size.width} * size.height);
}

void RunFilter(benchmark::State& state, const Setting& setting, const PictureSize& size) {
  FilterPull pull({{setting.progId, setting.text}}, size.width, size.height, setting.opaque);
  if (!pull.IsReady()) return state.SkipWithError("the filter does not start");
  // Limits are measured on rows of the picture's size, whatever the size of the result.
  MemoryPicture rows("rows", size.width, size.height, true, true);
  const bool inPlace = pull.Result().Width() == size.width && pull.Result().Height() == size.height;
  MemoryPicture& limitRows = inPlace ? pull.Result() : rows;
  if (!limitRows.IsValid()) return state.SkipWithError("not enough memory");

  std::vector<double> pulls, lentPulls, copies, inversions;
  const auto run = [&](bool lends, std::vector<double>& times) {
    pull.SetLends(lends);
    bool pulled = setting.again || pull.Prepare();
    times.push_back(Seconds([&] { pulled = pulled && pull.Run(); }));
    return pulled;
  };
  Copy(pull.Picture(), limitRows, Planes::Both);
  for ([[maybe_unused]] auto _ : state) {
    const bool complete = Repeat([&] {
      inversions.push_back(Seconds([&] { Invert(limitRows, setting.planes); }));
      copies.push_back(Seconds([&] { Copy(pull.Picture(), limitRows, setting.planes); }));
      return run(false, pulls) && (setting.again || run(true, lentPulls));
    });
    if (!complete) return state.SkipWithError("the pull stopped");
  }
  Report(state, pulls, size);
  state.counters["of_memcpy"] = Quickest(copies) / Quickest(pulls);
  if (!lentPulls.empty()) {
    state.counters["lent"] = size.width * 1e-6 * size.height / Quickest(lentPulls);
  }
  state.counters["of_inversion"] = Quickest(inversions) / Quickest(pulls);
}

void RunLimit(benchmark::State& state, bool invert, const PictureSize& size) {
  const auto source = ComPtr<KeptPicture>::Attach(new KeptPicture(size.width, size.height));
  MemoryPicture rows("rows", size.width, size.height, true, true);
  if (!rows.IsValid()) return state.SkipWithError("not enough memory");
  std::vector<double> times;
  for ([[maybe_unused]] auto _ : state) {
    Repeat([&] {
      times.push_back(Seconds([&] {
        if (invert) {
          Invert(rows, Planes::Colour);
        } else {
          Copy(source->Picture(), rows, Planes::Colour);
        }
      }));
      return true;
    });
  }
  Report(state, times, size);
}

// FXBOX_THREADS, "1,2,8": how many threads the library is lent; one where nothing is said.
std::vector<int> ThreadNumbers() {
  const char* const list = std::getenv("FXBOX_THREADS");
  std::istringstream numbers(list ? list : "1");
  std::vector<int> threads;
  for (std::string number; std::getline(numbers, number, ',');) {
    threads.push_back(std::max(1, std::atoi(number.c_str())));
  }
  return threads;
}

void LendThreads(int threads) {
  const auto pool = ComPtr<platform::WorkerPool>::Attach(new platform::WorkerPool(threads));
  FxboxSetWorkers(threads > 1 ? pool.Get() : nullptr);
  benchmarks::timedThreads = threads;
}

template <class Run>
void Register(const std::string& name, int threads, Run run) {
  for (const PictureSize& size : kSizes) {
    std::string whole = name + "/" + size.name;
    if (threads > 1) whole += "/threads" + std::to_string(threads);
    benchmark::RegisterBenchmark(whole.c_str(),
                                 [run, &size, threads](benchmark::State& state) {
                                   LendThreads(threads);
                                   run(state, size);
                                   LendThreads(1);
                                 })
        ->UseManualTime()
        ->Iterations(1);
  }
}

void RegisterAll() {
  for (const bool invert : {false, true}) {
    Register(invert ? "inversion" : "memcpy", 1,
             [invert](benchmark::State& state, const PictureSize& size) {
               RunLimit(state, invert, size);
             });
  }
  int count = 0;
  const FilterClass* const classes = FxboxFilterClasses(&count);
  for (int i = 0; i < count; ++i) {
    for (const Setting& setting : SettingsOf(classes[i])) {
      for (const int threads : ThreadNumbers()) {
        Register(ShortName(setting), threads,
                 [setting](benchmark::State& state, const PictureSize& size) {
                   RunFilter(state, setting, size);
                 });
      }
    }
  }
}

// A line for each name: millions a second, and the shares of what is measured beside it.
class SpeedTable final : public benchmark::BenchmarkReporter {
 public:
  bool ReportContext(const Context&) override {
    std::printf("vector units: %s\n%-44s %12s %10s %10s %13s\n",
                kernels::SimdLevelName(kernels::ActiveSimdLevel()), "", "million/s", "lent",
                "of memcpy", "of inversion");
    return true;
  }
  void ReportRuns(const std::vector<Run>& runs) override {
    for (const Run& run : runs) {
      if (run.error_occurred) {
        std::printf("%-44s %s\n", run.run_name.function_name.c_str(), run.error_message.c_str());
      } else {
        std::printf("%-44s %12.1f %10s %10s %13s\n", run.run_name.function_name.c_str(),
                    run.counters.at("items_per_second") / 1e6, Number(run, "lent", 1).c_str(),
                    Number(run, "of_memcpy", 2).c_str(), Number(run, "of_inversion", 2).c_str());
      }
    }
    std::fflush(stdout);
  }

 private:
  static std::string Number(const Run& run, const char* counter, int digits) {
    const auto found = run.counters.find(counter);
    if (found == run.counters.end()) return "";
    char text[32];
    std::snprintf(text, sizeof text, "%.*f", digits, static_cast<double>(found->second));
    return text;
  }
};

}  // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 2;
  RegisterAll();
  SpeedTable table;
  benchmark::RunSpecifiedBenchmarks(&table);
  benchmark::Shutdown();
}
