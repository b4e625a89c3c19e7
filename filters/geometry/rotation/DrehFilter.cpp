#include "filters/geometry/rotation/DrehFilter.h"

#include <cmath>
#include <new>
#include <utility>

#include "base/Arithmetic.h"
#include "base/Guid.h"
#include "filters/geometry/rotation/Shears.h"
#include "platform/LargeBlock.h"

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
    : ParameterFilter(row, {.abortMarksChange = true, .givesOutFailures = true}) {
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
  // The largest first: what is refused must not cost the memory of the others.
  if (!EnsurePictures(0, 0, result.width, result.height)) return false;
  if (!turn.isQuarterTurn && !EnsureIntermediate(turn.ShearedWidth(), turn.turnedHeight)) {
    return false;
  }
  if (!EnsurePictures(pulled.width, pulled.height, 0, 0)) return false;
  // It goes with this computation, whatever happens; so it was made for it, and is clear.
  const auto given = std::move(inputPicture);
  const bool isComplete = source->ReadRows(0, 0, 0, 0, pulled.width, pulled.height,
                                           given->ColourRows(), given->MaskRows()) == 0;
  const QuarterTurn turned(
      {given->ColourRows(), given->MaskRows(), 0, 0, pulled.width, pulled.height},
      turn.quarterTurns, used.mirrorOn);
  const bool isTurned = turn.isQuarterTurn ? Turn(turned) : Shear(turned, turn);
  return isTurned && isComplete;
}

bool CDrehFilter::Turn(const QuarterTurn& turned) {
  for (int i = 0; i < turned.Bands(); ++i) {
    if (abort) return false;
    turned.ReadBand(turned.BandAt(i), outputPicture->ColourRows(), outputPicture->MaskRows());
  }
  return true;
}

bool CDrehFilter::Shear(const QuarterTurn& turned, const RotationGeometry& turn) {
  kernels::Shears shears(turn, {intermediate.get(), static_cast<int>(intermediateWidth),
                                static_cast<int>(intermediateHeight)});
  for (int i = 0; i < turned.Bands(); ++i) {
    if (abort) return false;
    shears.TakeBand(turned, turned.BandAt(i));
  }
  for (int y = 0; y < result.height; ++y) {
    if (abort) return false;
    shears.ReadRow(y, outputPicture->ColourRows()[y], outputPicture->MaskRows()[y]);
  }
  return true;
}

bool CDrehFilter::EnsureIntermediate(std::int64_t width, std::int64_t height) {
  if (intermediate && intermediateWidth == width && intermediateHeight == height) return true;
  intermediate.reset();
  intermediateWidth = width;
  intermediateHeight = height;
  const auto quads = static_cast<std::size_t>(width * height);
  intermediate.reset(new (std::nothrow) kernels::Quad[quads]);
  if (!intermediate) return false;
  platform::AnnounceWholeUse(intermediate.get(), quads * sizeof(kernels::Quad));
  return true;
}
