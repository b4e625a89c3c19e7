#include "filters/geometry/rotation/DrehFilter.h"

#include <cmath>
#include <utility>

#include "base/Arithmetic.h"
#include "base/Guid.h"

using kernels::QuarterTurn;
using kernels::RotationGeometry;

namespace {

RotationGeometry Geometry(const RotationRecord& parameters, const PictureInfo& given) {
  return kernels::ComputeRotation(parameters.angle, parameters.centerX, parameters.centerY,
                                  given.width, given.height);
}

}  // namespace

const FilterClass kDrehClass = {.sortKey = 4,
                                .className = "CDrehFilter",
                                .progId = "ZNFilter.Rotate.1",
                                .classId = base::Guid("{2D385093-52B2-4199-B632-15D9C4739D6F}"),
                                .order = 5000,
                                .iconName = "icons4_rotate",
                                .nameKey = "IDS_DREH_NAME",
                                .helpKey = "HLP_DREH",
                                .defaultText = "Angle=0.000,MirrorOn=0",
                                .gloss = "Rotate and mirror",
                                .example = "Angle=12.5",
                                .make = MakeFilter<CDrehFilter>,
                                .describe = CDrehFilter::Describe};

// A new filter keeps the corner in its place; the record's default, which it starts active with,
// does not.
CDrehFilter::CDrehFilter(const FilterClass& row)
    : ParameterFilter(
          row, {.abortMarksChange = true, .givesOutFailures = true, .takesWhatComes = true}) {
  pending.alignLeftBottom = true;
}

// Unlike the readers of records, this one leaves alone what the text leaves out. An infinite angle
// counts as none: its text could not be read back.
void CDrehFilter::ReadText(const char* text) {
  const double before = pending.angle;
  ParameterFilter::ReadText(text);
  if (!std::isfinite(pending.angle)) pending.angle = before;
}

void CDrehFilter::Commit() {
  const auto held = HoldState();
  ParameterFilter::Commit();
  if (input.width < 1 || input.height < 1) return;
  const RotationGeometry turn = Geometry(active, input);
  output.width = base::LimitToInt32(turn.width);
  output.height = base::LimitToInt32(turn.height);
  output.extentWidth = output.width;
  output.extentHeight = output.height;
  if (!turn.isQuarterTurn) {
    output.extentWidth -= 2 * kernels::kTurnMarginX;
    output.extentHeight -= 2 * kernels::kTurnMarginY;
  }
  if (!active.alignLeftBottom) {
    output.offsetX = turn.MapX(input.offsetX);
    output.offsetY = turn.MapY(input.offsetY);
  } else if (!turn.isQuarterTurn) {
    output.offsetX = base::WrapToInt32(std::int64_t{input.offsetX} + kernels::kTurnMarginX);
    output.offsetY = base::WrapToInt32(std::int64_t{input.offsetY} + kernels::kTurnMarginY);
  }
}

HRESULT CDrehFilter::SetMark(int a, int b) {
  const auto held = HoldState();
  mark[0] = a;
  mark[1] = b;
  return S_OK;
}

HRESULT CDrehFilter::GetMark(int* a, int* b) {
  if (!a || !b) return E_POINTER;
  const auto held = HoldState();
  *a = answer[0];
  *b = answer[1];
  return S_OK;
}

HRESULT CDrehFilter::QuerySize(int* width, int* height, double aspect) {
  if (!width || !height) return E_POINTER;
  auto held = HoldState();
  const double scaleX = static_cast<double>(input.width) / output.width;
  const double scaleY = static_cast<double>(input.height) / output.height;
  held.unlock();
  const HRESULT status = ParameterFilter::QuerySize(width, height, aspect * scaleY / scaleX);
  if (*width > 0 && *height > 0) {
    *width = base::TruncateToInt32(*width * scaleX);
    *height = base::TruncateToInt32(*height * scaleY);
  }
  return status;
}

void CDrehFilter::DropPictures() {
  ParameterFilter::DropPictures();
  intermediate.reset();
  intermediateWidth = intermediateHeight = 0;
}

// A source that failed is turned as far as it came.
bool CDrehFilter::Rebuild() {
  if (pulled.width < 1 || pulled.height < 1) return false;
  const RotationGeometry turn = Geometry(used, pulled);
  // Too large for a picture.
  if (turn.width != result.width || turn.height != result.height) return false;
  // What is refused must not cost memory.
  if (!MemoryPicture::CanHold(result.width, result.height)) return false;
  outputPicture.reset();
  if (!turn.isQuarterTurn && !EnsureIntermediate(turn.ShearedWidth(), turn.turnedHeight)) {
    return false;
  }
  if (!TakeInput()) return false;
  if (!turn.isQuarterTurn) {
    const bool isTaken = TakeIntermediate(Turned(turn), turn);
    DropInput();
    if (!isTaken) return false;
  }
  isOpen = !abort;
  return isOpen && isGivenWhole;
}

QuarterTurn CDrehFilter::Turned(const RotationGeometry& turn) const {
  return QuarterTurn(given, turn.quarterTurns, used.mirrorOn);
}

bool CDrehFilter::ComputeRows(const base::WritableRows& to) {
  const RotationGeometry turn = Geometry(used, pulled);
  return turn.isQuarterTurn ? Turn(Turned(turn), to) : Shear(turn, to);
}

bool CDrehFilter::Turn(const QuarterTurn& turned, const base::WritableRows& to) {
  return base::ForEachBand(turned.Bands(), 1, [&](int first, int end) {
    for (int i = first; i < end; ++i) {
      if (abort) return false;
      turned.ReadBand(turned.BandAt(i), to);
    }
    return true;
  });
}

kernels::Shears CDrehFilter::ShearsOf(const RotationGeometry& turn) const {
  return kernels::Shears(turn, {intermediate.get(), static_cast<int>(intermediateWidth),
                                static_cast<int>(intermediateHeight)});
}

// Each band has rows of its own to work with.
bool CDrehFilter::TakeIntermediate(const QuarterTurn& turned, const RotationGeometry& turn) {
  const kernels::Shears shears = ShearsOf(turn);
  const auto take = [&](int first, int end) {
    kernels::Shears part = shears;
    for (; first < end && !abort; ++first) part.TakeBand(turned, turned.BandAt(first));
    return !abort;
  };
  return base::ForEachBand(turned.Bands(), 1, take);
}

bool CDrehFilter::Shear(const RotationGeometry& turn, const base::WritableRows& to) {
  const kernels::Shears shears = ShearsOf(turn);
  return base::ForEachBand(result.height, base::RowsPerBand(result.width), [&](int first, int end) {
    kernels::Shears part = shears;
    for (int y = end - 1; y >= first && !abort; --y) part.ReadRow(y, to.colour[y], to.mask[y]);
    return !abort;
  });
}

bool CDrehFilter::EnsureIntermediate(std::int64_t width, std::int64_t height) {
  if (intermediate && intermediateWidth == width && intermediateHeight == height) return true;
  intermediate.reset();
  intermediateWidth = width;
  intermediateHeight = height;
  const auto bytes = static_cast<std::size_t>(width * height) * sizeof(kernels::Quad);
  intermediate.reset(static_cast<kernels::Quad*>(platform::AllocateLarge(bytes)));
  return intermediate != nullptr;
}
