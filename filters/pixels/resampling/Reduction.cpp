// Reduction: each output pixel is the weighted mean of a window, then it is sharpened a little.
#include <algorithm>
#include <cstring>
#include <map>
#include <string_view>
#include <tuple>
#include <utility>
#include <vector>

#include "base/Arithmetic.h"
#include "base/Rows.h"
#include "filters/pixels/RowBlocks.h"
#include "filters/pixels/resampling/ReductionKernels.h"
#include "filters/pixels/resampling/ReductionWindows.h"
#include "filters/pixels/resampling/Resampling.h"

namespace kernels {
namespace {

// From so many taps on, the sums of each source row lose their lowest bits, to fit 32 bits.
constexpr std::int64_t kLargeWindow = 256;
constexpr int kLostBits = 8;

constexpr std::size_t Size(std::int64_t number) {
  return static_cast<std::size_t>(number);
}

// (sum + divisor / 2) / divisor, limited to a byte; 0 for a divisor of 0. The half that is added to
// the whole number outweighs what rounding takes, for sums below 2^50.
class Quotient {
 public:
  explicit Quotient(std::uint64_t divisor)
      : half_(static_cast<double>(divisor / 2) + 0.5),
        reciprocal_(divisor == 0 ? 0 : 1.0 / static_cast<double>(divisor)) {}

  template <class Sum>
  std::uint8_t operator()(Sum sum) const {
    const double value = (static_cast<double>(sum) + half_) * reciprocal_;
    return static_cast<std::uint8_t>(static_cast<int>(value < 255 ? value : 255));
  }

 private:
  double half_, reciprocal_;
};

// Windows with the same weights, as many have when the ratio is a simple fraction.
struct Pattern {
  const ReductionWindow* window;  // one of them
  std::size_t weights;            // where its weights lie in a row of weights
  // What the weights sum to, under the present output row and in the present batch of source rows,
  // taps outside the source included. Known for pictures with a mask alone.
  std::uint64_t all = 0, batch = 0;
  int lostBits = 0;  // of the sums of each batch
};

// Sums of a pixel.
struct Totals {
  std::uint64_t channel[3];
  std::uint64_t weight;   // of the taps whose colours count
  std::uint64_t opacity;  // (255 - mask) x weight
  std::uint64_t mask;     // mask x weight, taps outside the source counting as 255
};

class Reducer {
 public:
  Reducer(const base::RowView& source, const base::WritableRows& result, const Resampling& how,
          bool isOpaque, const std::atomic<bool>& abort)
      : abort_(abort),
        from_(source),
        to_(result),
        opaque_(isOpaque),
        xAxis_(source.width, result.width, how.offsetX),
        yAxis_(source.height, result.height, how.offsetY) {
    FindPatterns();
    CutRuns();
    sums_.resize(Size(to_.width));
    opacities_.resize(opaque_ ? 0 : Size(to_.width));
  }

  void ReduceRow(int y) {
    const ReductionWindow& window = yAxis_.Windows()[Size(y)];
    const bool large = std::int64_t{xAxis_.WidestWindow()} * window.count >= kLargeWindow;
    for (Pattern& pattern : patterns_) {
      pattern.all = 0;
      pattern.lostBits =
          std::int64_t{pattern.window->count} * window.count >= kLargeWindow ? kLostBits : 0;
    }
    rowsAhead_ = large ? 1 : (from_.height - 1) / to_.height + 1;
    large ? ReduceByRows(window, y) : ReduceAtOnce(window, y);
  }

 private:
  // --- the windows along x, which are the same for all rows

  void FindPatterns() {
    std::map<std::tuple<std::string_view, int, int>, std::size_t> known;
    for (const ReductionWindow& window : xAxis_.Windows()) {
      const std::string_view indices(reinterpret_cast<const char*>(xAxis_.Indices(window)),
                                     Size(window.count) * sizeof(std::uint16_t));
      const auto [found, isNew] =
          known.try_emplace({indices, window.insideFirst, window.insideEnd}, patterns_.size());
      if (isNew) {
        patterns_.push_back({&window, weightStride_});
        weightStride_ += Size((window.Inside() + kWeightBlock - 1) / kWeightBlock * kWeightBlock);
      }
      patternOf_.push_back(found->second);
    }
  }

  // One run a window; what exceeds a run in wide windows makes further passes.
  void CutRuns() {
    int widest = 1;
    for (const Pattern& pattern : patterns_) widest = std::max(widest, pattern.window->Inside());
    for (int begin = 0; begin < widest; begin += kMostTaps) {
      std::vector<ReductionRun>& runs = runs_.emplace_back();
      for (std::size_t i = 0; i < patternOf_.size(); ++i) {
        const ReductionWindow& window = xAxis_.Windows()[i];
        const int taps = std::clamp(window.Inside() - begin, 0, kMostTaps);
        if (taps == 0) {
          runs.push_back({0, 0, 0});
        } else {
          runs.push_back({static_cast<std::int32_t>(window.first + window.insideFirst + begin),
                          taps, patterns_[patternOf_[i]].weights + Size(begin)});
        }
      }
    }
  }

  // --- weights

  // Weighs the rows `first` to `end` of a window and gives those that lie in the source.
  ReductionRows WeighBatch(const ReductionWindow& window, int first, int end) {
    const int insideFirst = std::max(first, window.insideFirst);
    const int inside = std::max(0, std::min(end, window.insideEnd) - insideFirst);
    if (weights_.size() < Size(inside) * weightStride_)
      weights_.resize(Size(inside) * weightStride_);
    for (Pattern& pattern : patterns_) pattern.batch = 0;
    const std::uint16_t* const indices = yAxis_.Indices(window);
    for (int t = first; t < end; ++t) {
      if (t >= insideFirst && t < insideFirst + inside) {
        WeighRow(indices[t], weights_.data() + Size(t - insideFirst) * weightStride_);
      } else if (!opaque_) {
        AddOutside(indices[t], [](const ReductionWindow&) { return 0; });
      }
    }
    const std::int64_t row = inside > 0 ? window.first + insideFirst : 0;
    const std::int64_t behind = from_.height - row - inside;
    return {from_.colour + row, from_.mask + row, inside,
            weights_.data(),    weightStride_,    static_cast<int>(std::min(behind, rowsAhead_))};
  }

  void WeighRow(int yIndex, std::uint16_t* weights) {
    const std::uint16_t* const table = ReductionWeights() + yIndex;
    for (Pattern& pattern : patterns_) {
      const std::uint16_t* const indices =
          xAxis_.Indices(*pattern.window) + pattern.window->insideFirst;
      std::uint16_t* const to = weights + pattern.weights;
      std::uint64_t sum = 0;
      for (int t = 0; t < pattern.window->Inside(); ++t) sum += to[t] = table[indices[t]];
      pattern.all += sum;
      pattern.batch += sum;
    }
    if (!opaque_) AddOutside(yIndex, [](const ReductionWindow& window) { return window.Inside(); });
  }

  // Adds the weights of a row's taps that lie outside the source: all but those from `insideFirst`
  // on whose number `inside` gives.
  template <class Inside>
  void AddOutside(int yIndex, Inside inside) {
    const std::uint16_t* const table = ReductionWeights() + yIndex;
    for (Pattern& pattern : patterns_) {
      const ReductionWindow& window = *pattern.window;
      const std::uint16_t* const indices = xAxis_.Indices(window);
      const int before = std::min(window.insideFirst, window.count);
      std::uint64_t sum = 0;
      for (int t = 0; t < before; ++t) sum += table[indices[t]];
      for (int t = before + inside(window); t < window.count; ++t) sum += table[indices[t]];
      pattern.all += sum;
      pattern.batch += sum;
    }
  }

  // --- where no bits are lost

  void Sum(const ReductionRows& rows, const std::vector<ReductionRun>& runs) {
    const ReductionKernels& kernels = Choose<ReductionKernels>();
    if (opaque_) {
      kernels.sumColours(runs.data(), to_.width, from_.width, rows, sums_.data());
    } else {
      kernels.sumMasked(runs.data(), to_.width, from_.width, rows, sums_.data(), opacities_.data());
    }
  }

  void ReduceAtOnce(const ReductionWindow& window, int y) {
    Sum(WeighBatch(window, 0, window.count), runs_.front());
    Choose<ReductionKernels>().divide(to_.colour[y], sums_.data(), to_.width);
    std::uint8_t* const mask = to_.mask[y];
    if (opaque_) {
      std::memset(mask, base::kOpaque, sums_.size());
      return;
    }
    quotients_.clear();
    for (const Pattern& pattern : patterns_) quotients_.emplace_back(pattern.all);
    for (std::size_t i = 0; i < sums_.size(); ++i) {
      const std::size_t pattern = patternOf_[i];
      mask[i] = quotients_[pattern](255 * patterns_[pattern].all - opacities_[i]);
    }
  }

  // --- where they are

  void ReduceByRows(const ReductionWindow& window, int y) {
    totals_.assign(Size(to_.width), {});
    for (int t = 0; t < window.count && !abort_; ++t) AddRow(WeighBatch(window, t, t + 1));
    std::uint8_t* const colour = to_.colour[y];
    for (std::size_t i = 0; i < totals_.size(); ++i) {
      const Totals& total = totals_[i];
      const Pattern& pattern = patterns_[patternOf_[i]];
      const Quotient quotient(total.weight >> pattern.lostBits);
      for (std::size_t c = 0; c < 3; ++c) colour[3 * i + c] = quotient(total.channel[c]);
      to_.mask[y][i] =
          opaque_ ? base::kOpaque : Quotient(pattern.all >> pattern.lostBits)(total.mask);
    }
  }

  void AddRow(const ReductionRows& rows) {
    batch_.assign(Size(to_.width), {});
    for (const std::vector<ReductionRun>& runs : runs_) {
      if (rows.count == 0) break;
      Sum(rows, runs);
      for (std::size_t i = 0; i < batch_.size(); ++i) {
        for (int c = 0; c < 3; ++c) batch_[i].channel[c] += sums_[i].channel[c];
        batch_[i].weight += sums_[i].weight;
        if (!opaque_) batch_[i].opacity += opacities_[i];
      }
    }
    for (std::size_t i = 0; i < batch_.size(); ++i) {
      const Pattern& pattern = patterns_[patternOf_[i]];
      for (int c = 0; c < 3; ++c) {
        totals_[i].channel[c] += batch_[i].channel[c] >> pattern.lostBits;
      }
      totals_[i].weight += batch_[i].weight;
      totals_[i].mask += (255 * pattern.batch - batch_[i].opacity) >> pattern.lostBits;
    }
  }

  const std::atomic<bool>& abort_;
  const base::RowView& from_;
  const base::WritableRows& to_;
  const bool opaque_;
  const ReductionAxis xAxis_;
  const ReductionAxis yAxis_;

  std::vector<Pattern> patterns_;
  std::vector<std::size_t> patternOf_;  // of each window
  std::size_t weightStride_ = 0;
  std::int64_t rowsAhead_ = 0;  // that come new with the next row or batch
  std::vector<std::vector<ReductionRun>> runs_;

  std::vector<std::uint16_t> weights_;
  std::vector<ColourSums> sums_;
  std::vector<std::uint32_t> opacities_;
  std::vector<Totals> batch_, totals_;
  std::vector<Quotient> quotients_;
};

// The lines around the one that is sharpened, as they were before, with a pixel to spare at both
// ends.
class SharpenLines {
 public:
  SharpenLines(const base::WritableRows& picture, bool opaque, const RowBlocks& blocks, int block)
      : picture_(picture),
        blocks_(blocks),
        block_(block),
        opaque_(opaque),
        bytes_(base::ColourBytes(picture.width)) {
    for (auto* line : {&above_, &centre_, &below_}) {
      line->colour.resize(bytes_ + 2 * kMargin);
      line->mask.resize(opaque_ ? 0 : bytes_ + 2 * kMargin, base::kNothing);
    }
    const int first = blocks_.First(block_);
    Read(first, centre_);
    if (first > 0) {
      Read(first - 1, above_);
    } else {
      TakeCentre(above_);
    }
  }

  SharpenRows Around(int y) {
    if (y + 1 < picture_.height) {
      Read(y + 1, below_);
    } else {
      TakeCentre(below_);
    }
    return {Colour(above_), Colour(centre_), Colour(below_),
            Mask(above_),   Mask(centre_),   Mask(below_)};
  }

  void Advance() {
    std::swap(above_, centre_);
    std::swap(centre_, below_);
  }

 private:
  static constexpr std::size_t kMargin = base::kBytesPerPixel;
  struct Line {
    std::vector<std::uint8_t> colour, mask;  // three bytes a pixel, both
  };

  // For a line outside the picture.
  void TakeCentre(Line& line) const {
    line = centre_;
    if (!opaque_) line.mask.assign(line.mask.size(), base::kNothing);
  }

  static const std::uint8_t* Colour(const Line& line) { return line.colour.data() + kMargin; }
  const std::uint8_t* Mask(const Line& line) const {
    return opaque_ ? nullptr : line.mask.data() + kMargin;
  }

  void Read(int y, Line& line) const {
    const std::uint8_t* const colour = blocks_.Row(block_, y);
    std::uint8_t* const to = line.colour.data() + kMargin;
    std::memcpy(to, colour, bytes_);
    std::memcpy(to - kMargin, to, kMargin);
    std::memcpy(to + bytes_, to + bytes_ - kMargin, kMargin);
    if (opaque_) return;
    const std::uint8_t* const mask = picture_.mask[y];
    std::uint8_t* const toMask = line.mask.data() + kMargin;
    for (std::size_t x = 0; x < Size(picture_.width); ++x) {
      toMask[3 * x] = toMask[3 * x + 1] = toMask[3 * x + 2] = mask[x];
    }
  }

  const base::WritableRows& picture_;
  const RowBlocks& blocks_;
  const int block_;
  const bool opaque_;
  const std::size_t bytes_;
  Line above_, centre_, below_;
};

// Neighbours outside the picture count as the pixel itself.
bool Sharpen(const base::WritableRows& picture, const Resampling& how, bool opaque,
             const std::atomic<bool>& abort) {
  const double share = (2.0 - how.ratioX - how.ratioY) * 0.125;
  const SharpenWeights weights = {static_cast<std::int64_t>(65536 * (1 + 4 * share)),
                                  static_cast<std::int64_t>(-65536 * share)};
  const ReductionKernels& kernels = Choose<ReductionKernels>();
  const auto sharpen = opaque ? kernels.sharpen : kernels.sharpenMasked;
  const RowBlocks blocks(picture.colour, 0, base::ColourBytes(picture.width), picture.height, 1,
                         base::RowsPerBand(picture.width));
  return blocks.ForEach([&](int block) {
    SharpenLines lines(picture, opaque, blocks, block);
    for (int y = blocks.First(block); y < blocks.First(block + 1); ++y) {
      if (abort) return false;
      sharpen(picture.colour[y], picture.width * base::kBytesPerPixel, lines.Around(y), weights);
      lines.Advance();
    }
    return true;
  });
}

// Rows of the result under which lie enough pixels to be worth a thread of their own.
int LeastRows(const base::RowView& from, const base::WritableRows& to) {
  const std::int64_t rowsUnder = from.height / to.height + 1;
  return base::RowsPerBand(base::LimitToInt32(from.width * rowsUnder));
}

}  // namespace

bool Reduce(const base::RowView& from, const base::WritableRows& to, const Resampling& how,
            bool opaque, const std::atomic<bool>& abort) {
  const Reducer windows(from, to, how, opaque, abort);
  return base::ForEachBand(to.height, LeastRows(from, to),
                           [&](int first, int end) {
                             Reducer reducer = windows;
                             for (; first < end && !abort; ++first) reducer.ReduceRow(first);
                             return !abort;
                           }) &&
         Sharpen(to, how, opaque, abort);
}

}  // namespace kernels
