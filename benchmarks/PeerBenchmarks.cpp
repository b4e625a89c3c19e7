// The filters beside OpenCV and libvips at the same work, in one run: a table in Markdown.
//
// fxbox_peers [THREADS [NAME]]: one thread where nothing is said; the works with NAME in theirs.
// All work on the same 24 megapixels in memory; the three take turns, and the quickest turn of each
// counts, on one thread by its processor time. Where a filter works on colour and mask, the others
// work on four channels, else on three. Work is the same in kind and in the number of operations;
// bytes differ, as everyone rounds in a way of his own.
#include <vips/vips.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <functional>
#include <opencv2/core.hpp>
#include <opencv2/core/utility.hpp>
#include <opencv2/imgproc.hpp>
#include <string>
#include <thread>
#include <vector>

#include "base/Rows.h"
#include "benchmarks/FilterPull.h"
#include "benchmarks/Timing.h"
#include "component/Fxbox4.h"
#include "filters/pixels/simd/Simd.h"
#include "platform/WorkerPool.h"

namespace {

using benchmarks::FilterPull;
using benchmarks::Item;

constexpr int kWidth = 6000;
constexpr int kHeight = 4000;

using CvWork = void (*)(const cv::Mat&, cv::Mat&);
using VipsWork = VipsImage* (*)(VipsImage*);

struct Work {
  const char* name;
  std::vector<Item> items;
  int channels;  // that the others work on
  CvWork cv;     // null: it has nothing of the kind
  VipsWork vips;
};

// --- OpenCV

cv::Mat Table(int (*entry)(int)) {
  cv::Mat table(1, 256, CV_8U);
  for (int i = 0; i < 256; ++i) table.at<std::uint8_t>(i) = cv::saturate_cast<uchar>(entry(i));
  return table;
}
const cv::Mat kNegative = Table([](int i) { return 255 - i; });
const cv::Mat kLevels = Table([](int i) { return (i - 10) * 255 / 225; });
const cv::Mat kSharp = (cv::Mat_<float>(3, 3) << -1, -1, -1, -1, 16, -1, -1, -1, -1) / 8;
const cv::Mat kSepia =
    (cv::Mat_<float>(3, 3) << .131f, .534f, .272f, .168f, .686f, .349f, .189f, .769f, .393f);

void CvMap(const cv::Mat& from, cv::Mat& to) {
  cv::LUT(from, kNegative, to);
}
void CvSepia(const cv::Mat& from, cv::Mat& to) {
  cv::transform(from, to, kSepia);
}
void CvGrey(const cv::Mat& from, cv::Mat& to) {
  static cv::Mat grey;
  cv::cvtColor(from, grey, cv::COLOR_BGR2GRAY);
  cv::cvtColor(grey, to, cv::COLOR_GRAY2BGR);
}
void CvHue(const cv::Mat& from, cv::Mat& to) {
  static cv::Mat hls;
  cv::cvtColor(from, hls, cv::COLOR_BGR2HLS);
  cv::add(hls, cv::Scalar(10, 12, 30), hls);
  cv::cvtColor(hls, to, cv::COLOR_HLS2BGR);
}
void CvSharpen(const cv::Mat& from, cv::Mat& to) {
  cv::filter2D(from, to, -1, kSharp);
}
template <int kTaps>
void CvGauss(const cv::Mat& from, cv::Mat& to) {
  cv::GaussianBlur(from, to, {kTaps, kTaps}, kTaps / 5.0, kTaps / 5.0, cv::BORDER_REPLICATE);
}
void CvUnsharp(const cv::Mat& from, cv::Mat& to) {
  static cv::Mat blurred;
  CvGauss<5>(from, blurred);
  cv::addWeighted(from, 2, blurred, -1, 0, to);
}
void CvQuarter(const cv::Mat& from, cv::Mat& to) {
  cv::rotate(from, to, cv::ROTATE_90_COUNTERCLOCKWISE);
}
void CvTurn(const cv::Mat& from, cv::Mat& to) {
  const cv::Point2f middle(kWidth / 2.0f, kHeight / 2.0f);
  const cv::RotatedRect turned(middle, cv::Size2f(kWidth, kHeight), 7.5f);
  const cv::Rect2f box = turned.boundingRect2f();
  cv::Mat turn = cv::getRotationMatrix2D(middle, 7.5, 1);
  turn.at<double>(0, 2) += box.width / 2.0 - middle.x;
  turn.at<double>(1, 2) += box.height / 2.0 - middle.y;
  cv::warpAffine(from, to, turn, cv::Size(box.size()), cv::INTER_LINEAR);
}
void CvReduce(const cv::Mat& from, cv::Mat& to) {
  cv::resize(from, to, {}, 0.32, 0.32, cv::INTER_AREA);
}
void CvEnlarge(const cv::Mat& from, cv::Mat& to) {
  cv::resize(from, to, {}, 2, 2, cv::INTER_CUBIC);
}
template <int kPercent>
void CvChain(const cv::Mat& from, cv::Mat& to) {
  static cv::Mat reduced, levelled, blurred;
  const cv::Mat part = from(cv::Rect(kWidth / 10, 0, kWidth * 8 / 10, kHeight));
  cv::resize(part, reduced, {}, kPercent / 100.0, kPercent / 100.0, cv::INTER_AREA);
  cv::LUT(reduced, kLevels, levelled);
  CvUnsharp(levelled, blurred);
  cv::copyMakeBorder(blurred, to, 100, 100, 100, 100, cv::BORDER_CONSTANT, cv::Scalar(105, 0, 0));
}

// --- libvips

template <class Operation>
VipsImage* Apply(Operation operation) {
  VipsImage* to = nullptr;
  operation(&to);
  return to;
}
VipsImage* Then(VipsImage* between, VipsWork work) {
  VipsImage* const to = work(between);
  g_object_unref(between);
  return to;
}

VipsImage* VipsNegative(VipsImage* from) {
  return Apply([&](VipsImage** to) { vips_invert(from, to, nullptr); });
}
VipsImage* ToBytes(VipsImage* from) {
  return Apply([&](VipsImage** to) { vips_cast_uchar(from, to, nullptr); });
}
VipsImage* VipsSepia(VipsImage* from) {
  static VipsImage* const matrix =
      vips_image_new_matrixv(3, 3, .131, .534, .272, .168, .686, .349, .189, .769, .393);
  return Then(Apply([&](VipsImage** to) { vips_recomb(from, to, matrix, nullptr); }), ToBytes);
}
VipsImage* VipsSharpen(VipsImage* from) {
  static VipsImage* const mask =
      vips_image_new_matrixv(3, 3, -1., -1., -1., -1., 16., -1., -1., -1., -1.);
  vips_image_set_double(mask, "scale", 8);
  return Apply([&](VipsImage** to) {
    vips_conv(from, to, mask, "precision", VIPS_PRECISION_INTEGER, nullptr);
  });
}
template <int kTaps>
VipsImage* VipsGauss(VipsImage* from) {
  // Cut off where the bell falls below `min_ampl`: at 2.5 of its widths.
  return Apply(
      [&](VipsImage** to) { vips_gaussblur(from, to, kTaps / 5.0, "min_ampl", 0.044, nullptr); });
}
VipsImage* VipsQuarter(VipsImage* from) {
  return Apply([&](VipsImage** to) { vips_rot(from, to, VIPS_ANGLE_D270, nullptr); });
}
VipsImage* VipsTurn(VipsImage* from) {
  return Apply([&](VipsImage** to) { vips_rotate(from, to, 7.5, nullptr); });
}
VipsImage* VipsReduce(VipsImage* from) {
  return Apply(
      [&](VipsImage** to) { vips_resize(from, to, 0.32, "kernel", VIPS_KERNEL_LINEAR, nullptr); });
}
VipsImage* VipsEnlarge(VipsImage* from) {
  return Apply(
      [&](VipsImage** to) { vips_resize(from, to, 2.0, "kernel", VIPS_KERNEL_CUBIC, nullptr); });
}
VipsImage* VipsBackground(VipsImage* from) {
  static VipsArrayDouble* const fill = vips_array_double_newv(3, 255.0, 128.0, 0.0);
  return Apply([&](VipsImage** to) { vips_flatten(from, to, "background", fill, nullptr); });
}

// OpenCV has a way of its own for a half: the plain mean of four pixels.
std::vector<benchmarks::Item> Chain(const std::string& percent) {
  return {{"ZNFilter.Crop.1", "LeftMargin=0.1,RightMargin=0.9,FixRatioOn=0"},
          {"ZNFilter.Scale100.1", "HorizontalProz=" + percent + ", VerticalProz=" + percent},
          {"ZNFilter.Tonwert.1", "Hi=020, Lo=010"},
          {"ZNFilter.UnsharpMask.1", "Radius=2.7,OnLuminanceOnly=0"},
          {"ZNFilter.Passpartout.1",
           "BordersizeOn=1, Borderhori=100, Borderverti=100, Blue=105, Transparency=000"}};
}

const std::vector<Work>& AllWork() {
  static const std::vector<Work> all = {
      {"Negative", {{"ZNFilter.Invert.1", "Inversity=100"}}, 3, CvMap, VipsNegative},
      {"Sepia", {{"ZNFilter.Sepia.1", "Sepia=100"}}, 3, CvSepia, VipsSepia},
      {"Black and white",
       {{"ZNFilter.BlackWhiteness.1", "BlackWhiteNess=100"}},
       3,
       CvGrey,
       nullptr},
      {"Hue, saturation", {{"ZNFilter.HSB.1", "Hue=020, Sat=030, Bright=010"}}, 3, CvHue, nullptr},
      {"Background",
       {{"ZNFilter.ImgBg.1", "Blue=255 , Green=128, Red=000, Transparency=000"}},
       4,
       nullptr,
       VipsBackground},
      {"Sharpen, 3 x 3",
       {{"ZNFilter.Sharpen.1", "Sharpness=050,Version=3"}},
       3,
       CvSharpen,
       VipsSharpen},
      {"Gauss, 21 taps",
       {{"ZNFilter.BlurGauss.1", "Percent=100,Radius=10"}},
       3,
       CvGauss<21>,
       VipsGauss<21>},
      {"Gauss, 101 taps",
       {{"ZNFilter.BlurGauss.1", "Percent=100,Radius=50"}},
       3,
       CvGauss<101>,
       VipsGauss<101>},
      {"Unsharp mask, 5 taps",
       {{"ZNFilter.UnsharpMask.1", "Radius=2.7,OnLuminanceOnly=0"}},
       3,
       CvUnsharp,
       nullptr},
      {"Quarter turn", {{"ZNFilter.Rotate.1", "Angle=90"}}, 4, CvQuarter, VipsQuarter},
      {"Turn by 7.5 degrees", {{"ZNFilter.Rotate.1", "Angle=7.5"}}, 4, CvTurn, VipsTurn},
      {"Reduction to 0.32",
       {{"ZNFilter.Scale100.1", "HorizontalProz=032, VerticalProz=032"}},
       4,
       CvReduce,
       VipsReduce},
      {"Enlargement to double",
       {{"ZNFilter.Scale100.1", "HorizontalProz=200, VerticalProz=200"}},
       4,
       CvEnlarge,
       VipsEnlarge},
      {"Crop, reduce to a half, levels, unsharp, border", Chain("050"), 3, CvChain<50>, nullptr},
      {"Crop, reduce to 0.32, levels, unsharp, border", Chain("032"), 3, CvChain<32>, nullptr}};
  return all;
}

// --- the run

cv::Mat PixelsOf(const MemoryPicture& picture, int channels) {
  cv::Mat pixels(kHeight, kWidth, CV_8UC(channels));
  for (int y = 0; y < kHeight; ++y) {
    for (int x = 0; x < kWidth; ++x) {
      std::uint8_t* const pixel = pixels.ptr(y) + x * channels;
      std::copy_n(picture.ColourRows()[y] + base::ColourOffset(x), 3, pixel);
      if (channels == 4) pixel[3] = static_cast<std::uint8_t>(255 - picture.MaskRows()[y][x]);
    }
  }
  return pixels;
}

// In full, into memory.
void RunVips(VipsWork work, VipsImage* from) {
  VipsImage* const to = work(from);
  std::size_t bytes = 0;
  g_free(vips_image_write_to_memory(to, &bytes));
  g_object_unref(to);
}

struct Speeds {
  // Million pixels a second; 0: none. Ours behind a source that lends its rows, as the others read
  // the picture where it lies, and behind one that copies them.
  double ours = 0, copied = 0, cv = 0, vips = 0;
  double Ratio() const { return ours / std::max(cv, vips); }
};

Speeds Measure(const Work& work) {
  FilterPull pull(work.items, kWidth, kHeight, true);
  if (!pull.IsReady()) return {};
  pull.FillAllRows();
  const cv::Mat from = PixelsOf(pull.Picture(), work.channels);
  cv::Mat to;
  VipsImage* const image = vips_image_new_from_memory(
      from.data, from.total() * from.elemSize(), kWidth, kHeight, work.channels, VIPS_FORMAT_UCHAR);
  std::vector<double> ours, copied, cvs, vipses;
  const auto run = [&](bool lends, std::vector<double>& times) {
    pull.SetLends(lends);
    bool done = pull.Prepare();
    times.push_back(benchmarks::Seconds([&] { done = done && pull.Run(); }));
    return done;
  };
  benchmarks::Repeat([&] {
    const bool done = run(true, ours) && run(false, copied);
    if (work.cv) cvs.push_back(benchmarks::Seconds([&] { work.cv(from, to); }));
    if (work.vips) vipses.push_back(benchmarks::Seconds([&] { RunVips(work.vips, image); }));
    return done;
  });
  g_object_unref(image);
  const auto speed = [](const std::vector<double>& times) {
    return times.empty() ? 0.0 : kWidth * 1e-6 * kHeight / benchmarks::Quickest(times);
  };
  return {speed(ours), speed(copied), speed(cvs), speed(vipses)};
}

std::string Cell(double number, const char* format) {
  char text[32];
  std::snprintf(text, sizeof text, format, number);
  return number > 0 ? text : "";
}

std::string Processor() {
  std::ifstream lines("/proc/cpuinfo");
  for (std::string line; std::getline(lines, line);) {
    if (line.rfind("model name", 0) == 0) return line.substr(line.find(':') + 2);
  }
  return "an unknown processor";
}

// How many wanted the processors in the minute before.
std::string Load() {
  std::string load = "unknown";
  std::ifstream("/proc/loadavg") >> load;
  return load;
}

void PrintHead(int threads) {
  std::printf(
      "# Speed beside OpenCV and libvips\n\n"
      "Million pixels a second at 24 megapixels in memory, and the ratio to the best of the\n"
      "others; with one thread by processor time. `make bench-peers` measures on this machine and\n"
      "writes this page. What bounds the numbers: [speed-bounds.md](speed-bounds.md).\n\n"
      "All read the picture where it lies: the source lends its rows. The second column is behind\n"
      "a source that copies them.\n\n"
      "- Processor: %s, %d of %u in use; vector units: %s\n"
      "- Load ahead of the run: %s\n"
      "- OpenCV %s, libvips %s\n\n"
      "| Work | fxbox | of a copy | OpenCV | libvips | ratio |\n|---|---:|---:|---:|---:|---:|\n",
      Processor().c_str(), threads, std::thread::hardware_concurrency(),
      kernels::SimdLevelName(kernels::ActiveSimdLevel()), Load().c_str(),
      cv::getVersionString().c_str(), vips_version_string());
}

}  // namespace

int main(int argc, char** argv) {
  const int threads = argc > 1 ? std::max(1, std::atoi(argv[1])) : 1;
  benchmarks::timedThreads = threads;
  if (VIPS_INIT(argv[0]) != 0) return 1;
  vips_cache_set_max(0);
  vips_concurrency_set(threads);
  cv::setNumThreads(threads);
  FxboxSetWorkers(
      platform::ComPtr<platform::WorkerPool>::Attach(new platform::WorkerPool(threads)).Get());
  PrintHead(threads);
  for (const Work& work : AllWork()) {
    if (argc > 2 && !std::strstr(work.name, argv[2])) continue;
    const Speeds speeds = Measure(work);
    std::printf("| %s | %s | %s | %s | %s | %s |\n", work.name, Cell(speeds.ours, "%.0f").c_str(),
                Cell(speeds.copied, "%.0f").c_str(), Cell(speeds.cv, "%.0f").c_str(),
                Cell(speeds.vips, "%.0f").c_str(), Cell(speeds.Ratio(), "%.2f").c_str());
    std::fflush(stdout);
  }
  FxboxSetWorkers(nullptr);
  vips_shutdown();
}
