#include "filters/geometry/rotation/Shears.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "base/RowWriter.h"

namespace kernels {
namespace {

// Rows that are transposed together, in the second cache; at a distance that spreads a column over
// all of it.
constexpr int kTransposedRows = 64;
constexpr int kGap = 16;

}  // namespace

LineMove::LineMove(double distance) : step(distance > 0 ? 1 : -1) {
  const double length = distance * step;
  const auto pixels = static_cast<std::int64_t>(length);
  const double rest = length - static_cast<double>(pixels);
  whole = step * pixels;
  part = {static_cast<std::int32_t>(rest * 32), static_cast<std::int32_t>(rest * 16384 + 0.5)};
}

void MoveRow(const QuadRow& line, const LineMove& move, std::int64_t place, Quad* result, int width,
             const ShearKernelTable& kernels) {
  // A result pixel mixes the line's pixel there and the next one against the way of the move: one
  // more than the line has.
  const std::int64_t first = move.step > 0 ? 0 : -1;
  const std::int64_t offset = place + move.whole;
  const std::int64_t begin = std::clamp<std::int64_t>(first + offset, 0, width);
  const std::int64_t end =
      std::clamp<std::int64_t>(first + offset + line.Width() + 1, begin, width);
  const Quad* const previous = line.Data() + (begin - offset);
  std::fill(result, result + begin, kNothing);
  kernels.blend(previous, previous - move.step, result + begin, static_cast<int>(end - begin),
                move.part);
  std::fill(result + end, result + width, kNothing);
}

ColumnShear::ColumnShear(const QuadPicture& upright, double shear, double rest,
                         const ShearKernelTable& table)
    : picture(upright), kernels(table), turn(upright.width) {
  const auto size = static_cast<std::size_t>(picture.width);
  of32.reserve(4 * size);
  of16384.reserve(size);
  for (auto& row : gathered) row.resize(size);
  for (int x = 0; x < picture.width; ++x) {
    AddColumn(x, LineMove((x - (picture.width - 1) * 0.5) * shear - rest));
  }
}

void ColumnShear::AddColumn(int x, const LineMove& move) {
  of32.insert(of32.end(), 4, static_cast<std::uint8_t>(move.part.of32));
  of16384.push_back(move.part.of16384);
  if (x == 0) stepBefore = move.step;
  if (turn == picture.width && move.step != stepBefore) {
    turn = x;
    stepBehind = move.step;
  }
  if (runs.empty() || runs.back().whole != move.whole) runs.push_back({x, 0, move.whole});
  widestRun = std::max(widestRun, ++runs.back().width);
}

void ColumnShear::ReadRow(std::int64_t y, Quad* result) {
  if (isGathered && y == gatheredY - 1) {
    std::rotate(std::begin(gathered), std::begin(gathered) + 2, std::end(gathered));
  } else {
    Gather(y + 1, gathered[2].data());
    Gather(y, gathered[1].data());
  }
  Gather(y - 1, gathered[0].data());
  gatheredY = y;
  isGathered = true;
  const auto blend = [&](int first, int end, int step) {
    kernels.blendEach(gathered[1].data() + first, gathered[1 - step].data() + first, result + first,
                      end - first, {of32.data() + 4 * first, of16384.data() + first});
  };
  blend(0, turn, stepBefore);
  blend(turn, picture.width, stepBehind);
}

// A run is copied in one block, which is quicker than its exact width: what is too much belongs to
// the runs behind, which come later.
template <int kBlock>
void ColumnShear::GatherBlocks(std::int64_t y, Quad* row) const {
  for (const Run& run : runs) {
    const std::int64_t from = y - run.whole;
    if (from < 0 || from >= picture.height) {
      std::fill_n(row + run.first, run.width, kNothing);
    } else if (run.width > kBlock || run.first + kBlock > picture.width) {
      std::copy_n(picture.Row(from) + run.first, run.width, row + run.first);
    } else {
      const Quad* const pixels = picture.Row(from) + run.first;
      std::memcpy(row + run.first, pixels, kBlock * sizeof(Quad));
      // What the row ahead will take from this run: the processor does not foresee it.
      if (from > 0) __builtin_prefetch(pixels - picture.width);
    }
  }
}

void ColumnShear::Gather(std::int64_t y, Quad* row) const {
  if (widestRun <= 4) return GatherBlocks<4>(y, row);
  if (widestRun <= 8) return GatherBlocks<8>(y, row);
  GatherBlocks<16>(y, row);
}

// --- all three

Shears::Shears(const RotationGeometry& turn, const QuadPicture& room, const ShearKernelTable& table)
    : geometry(turn),
      picture(room),
      kernels(table),
      columns(room, turn.columnShear, turn.restY, table),
      turnedRow(static_cast<int>(turn.turnedWidth)),
      shearedRow(room.width),
      resultRow(static_cast<std::size_t>(turn.width)),
      resultColour(3 * resultRow.size()),
      resultMask(resultRow.size()) {}

LineMove Shears::MoveOf(std::int64_t y, double rest) const {
  const double middle = static_cast<double>(geometry.turnedHeight - 1) * 0.5;
  return LineMove((static_cast<double>(y) - middle) * geometry.rowShear - rest);
}

void Shears::TakeBand(const QuarterTurn& turned, const Band& band) {
  if (turned.IsTransposed()) return TakeTransposed(turned, band);
  for (int y = band.y; y < band.y + band.height; ++y) {
    turned.ReadBand({y, 1}, turnedRow.Data(), 0);
    TakeRow(y, turned.Width());
  }
}

void Shears::TakeTransposed(const QuarterTurn& turned, const Band& band) {
  const std::ptrdiff_t stride = turned.Width() + kGap;
  transposed.resize(static_cast<std::size_t>(stride * kTransposedRows));
  const int end = band.y + band.height;
  for (int y = band.y; y < end; y += kTransposedRows) {
    const int count = std::min(kTransposedRows, end - y);
    turned.ReadBand({y, count}, transposed.data(), stride);
    for (int i = 0; i < count; ++i) {
      std::copy_n(transposed.data() + i * stride, turned.Width(), turnedRow.Data());
      TakeRow(y + i, turned.Width());
    }
  }
}

void Shears::TakeRow(int y, int width) {
  Quad* const row = turnedRow.Data();
  // From here on there is no colour where there is no picture.
  std::transform(row, row + width, row, [](Quad quad) { return std::min(quad, kNothing); });
  MoveRow(turnedRow, MoveOf(y, 0), (picture.width - width) / 2, picture.Row(y), picture.width,
          kernels);
}

void Shears::ReadRow(int y, std::uint8_t* colour, std::uint8_t* mask) {
  const std::int64_t turnedY = y - geometry.PlaceY();
  const int width = static_cast<int>(geometry.width);
  columns.ReadRow(turnedY, shearedRow.Data());
  MoveRow(shearedRow, MoveOf(turnedY, geometry.restX), geometry.PlaceX(), resultRow.data(), width,
          kernels);
  kernels.split(resultRow.data(), resultColour.data(), resultMask.data(), width);
  const base::RowWriter writer(geometry.width, geometry.height);
  writer.Copy(colour, resultColour.data(), resultColour.size());
  writer.Copy(mask, resultMask.data(), resultMask.size());
}

}  // namespace kernels
