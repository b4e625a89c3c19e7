#include "imageio/RowSink.h"

#include <algorithm>
#include <cstring>

#include "base/Rows.h"

namespace imageio {

OrientedRows::OrientedRows(const Rows& to, int pictureWidth, int pictureHeight, int turn,
                           bool withMask)
    : target(to),
      width(pictureWidth),
      height(pictureHeight),
      orientation(turn),
      hasMask(withMask && to.mask != nullptr) {
  if (orientation != 1 && orientation != 4) {
    colour.resize(base::ColourBytes(width));
    if (hasMask) mask.resize(static_cast<std::size_t>(width));
  }
  if (hasMask || target.mask == nullptr) return;
  const bool upright = orientation < 5;
  const int rows = upright ? height : width;
  const int columns = upright ? width : height;
  for (int row = 0; row < rows; ++row) {
    std::memset(target.mask[row], base::kOpaque, static_cast<std::size_t>(columns));
  }
}

OrientedRows::Place OrientedRows::PlaceOf(int x, int y) const {
  const int right = width - 1 - x;
  const int bottom = height - 1 - y;
  switch (orientation) {  // the row array counts from the bottom
    case 2:
      return {bottom, right};
    case 3:
      return {y, right};
    case 4:
      return {y, x};
    case 5:
      return {right, y};
    case 6:
      return {right, bottom};
    case 7:
      return {x, bottom};
    case 8:
      return {x, y};
    default:
      return {bottom, x};
  }
}

RowBuffer OrientedRows::Begin(int y) {
  if (!colour.empty()) return {colour.data(), hasMask ? mask.data() : nullptr};
  const int row = PlaceOf(0, y).row;
  return {target.colour[row], hasMask ? target.mask[row] : nullptr};
}

bool OrientedRows::End(int y) {
  if (colour.empty()) return true;
  const BYTE* from = colour.data();
  for (int x = 0; x < width; ++x, from += base::kBytesPerPixel) {
    const Place place = PlaceOf(x, y);
    std::memcpy(target.colour[place.row] + base::ColourOffset(place.column), from,
                base::kBytesPerPixel);
    if (hasMask) target.mask[place.row][place.column] = mask[static_cast<std::size_t>(x)];
  }
  return true;
}

AreaMean::AreaMean(RowSink& to, int inWidth, int inHeight, int outWidth, int outHeight,
                   bool hasMask)
    : target(&to),
      fromWidth(static_cast<std::uint64_t>(inWidth)),
      fromHeight(static_cast<std::uint64_t>(inHeight)),
      toWidth(static_cast<std::uint64_t>(outWidth)),
      toHeight(static_cast<std::uint64_t>(outHeight)),
      colour(base::ColourBytes(inWidth)),
      mask(hasMask ? fromWidth : 0),
      rowSums(toWidth),
      sums(toWidth) {}

RowBuffer AreaMean::Begin(int) {
  return {colour.data(), mask.empty() ? nullptr : mask.data()};
}

// Row y covers y * toHeight up to (y + 1) * toHeight, row r of the result r * fromHeight up to
// (r + 1) * fromHeight: a row lies in one row of the result or in two neighbours.
bool AreaMean::End(int y) {
  SumRow();
  const std::uint64_t top = static_cast<std::uint64_t>(y) * toHeight;
  const std::uint64_t bottom = top + toHeight;
  const auto upper = static_cast<int>(top / fromHeight);
  const auto lower = static_cast<int>((bottom - 1) / fromHeight);
  if (upper == lower) return AddToResult(upper, toHeight);
  const std::uint64_t border = static_cast<std::uint64_t>(lower) * fromHeight;
  if (collecting == lower) {  // rows come from the bottom
    return AddToResult(lower, bottom - border) && AddToResult(upper, border - top);
  }
  return AddToResult(upper, border - top) && AddToResult(lower, bottom - border);
}

void AreaMean::SumRow() {
  for (std::uint64_t i = 0; i < toWidth; ++i) {
    const std::uint64_t left = i * fromWidth;
    const std::uint64_t right = left + fromWidth;
    rowSums[i] = SumPixels(static_cast<int>(left / toWidth),
                           static_cast<int>((right - 1) / toWidth), left, right);
  }
}

AreaMean::Sums AreaMean::SumPixels(int first, int last, std::uint64_t left,
                                   std::uint64_t right) const {
  Sums result;
  for (int x = first; x <= last; ++x) {
    const std::uint64_t at = static_cast<std::uint64_t>(x) * toWidth;
    const std::uint64_t weight = std::min(at + toWidth, right) - std::max(at, left);
    const BYTE* pixel = colour.data() + base::ColourOffset(x);
    const std::uint64_t opacity = mask.empty() ? 1 : 255u - mask[static_cast<std::size_t>(x)];
    result.opacity += weight * opacity;
    for (int c = 0; c < base::kBytesPerPixel; ++c) {
      result.weighted[c] += weight * opacity * pixel[c];
      if (!mask.empty()) result.plain[c] += weight * pixel[c];
    }
  }
  return result;
}

bool AreaMean::AddToResult(int row, std::uint64_t weight) {
  collecting = row;
  for (std::size_t i = 0; i < sums.size(); ++i) {
    sums[i].opacity += weight * rowSums[i].opacity;
    for (int c = 0; c < base::kBytesPerPixel; ++c) {
      sums[i].weighted[c] += weight * rowSums[i].weighted[c];
      sums[i].plain[c] += weight * rowSums[i].plain[c];
    }
  }
  collected += weight;
  if (collected < fromHeight) return true;
  StoreResult(target->Begin(row));
  collected = 0;
  std::fill(sums.begin(), sums.end(), Sums{});
  return target->End(row);
}

void AreaMean::StoreResult(const RowBuffer& row) const {
  const std::uint64_t area = fromWidth * fromHeight;
  const auto quotient = [](std::uint64_t sum, std::uint64_t by) {
    return static_cast<BYTE>((sum + by / 2) / by);
  };
  for (std::size_t i = 0; i < sums.size(); ++i) {
    const Sums& sum = sums[i];
    for (std::size_t c = 0; c < base::kBytesPerPixel; ++c) {
      row.colour[i * base::kBytesPerPixel + c] =
          sum.opacity > 0 ? quotient(sum.weighted[c], sum.opacity) : quotient(sum.plain[c], area);
    }
    if (row.mask != nullptr) row.mask[i] = static_cast<BYTE>(255 - quotient(sum.opacity, area));
  }
}

ReportedRows::ReportedRows(RowSink& to, int rows, const Progress& call)
    : target(&to), height(rows), progress(&call) {}

bool ReportedRows::End(int y) {
  return target->End(y) && ReportStep(*progress, ++done, height);
}

bool ReportedRows::KeepGoing() {
  return !*progress || (*progress)(static_cast<double>(done) / height);
}

bool ReportStep(const Progress& progress, int done, int count) {
  const int step = std::max(1, count / 100);
  if (!progress || (done % step != 0 && done != count)) return true;
  return progress(static_cast<double>(done) / count);
}

}  // namespace imageio
