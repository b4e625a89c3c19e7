#include "core/FilterShapes.h"

#include <algorithm>
#include <cstring>
#include <optional>
#include <utility>

#include "base/Arithmetic.h"
#include "base/Prefetch.h"

namespace {

// The answer that ends a pull because of its source, or 0.
HRESULT EndBySource(SourceResult rule, HRESULT pulled) {
  if (rule == SourceResult::EndsUnlessZero) return pulled;
  if (rule == SourceResult::StopsUnlessZero && pulled != 0) return kPullStopped;
  return rule == SourceResult::StopsAboveZero && pulled > 0 ? kPullStopped : S_OK;
}

// Cuts a request to a picture of this size; a corner below 0 moves the destination along.
void CutAxis(int& dest, int& src, int& length, int size) {
  const std::int64_t first = std::max<std::int64_t>(0, src);
  const std::int64_t end = std::min<std::int64_t>(size, std::int64_t{src} + length);
  dest = base::WrapToInt32(dest + (first - src));
  src = static_cast<int>(first);
  length = static_cast<int>(std::max<std::int64_t>(0, end - first));
}

}  // namespace

PullRectangle PullRectangle::CutTo(int pictureWidth, int pictureHeight) const {
  PullRectangle cut = *this;
  CutAxis(cut.destX, cut.srcX, cut.width, pictureWidth);
  CutAxis(cut.destY, cut.srcY, cut.height, pictureHeight);
  return cut;
}

void PullRectangle::CopyLent(int i, const base::RowWriter& writer) const {
  writer.Copy(Colour(i), lent.colour[i], base::ColourBytes(width));
  writer.Copy(Mask(i), lent.mask[i], static_cast<std::size_t>(width));
}

base::RowWay PullRectangle::Way(int i) const {
  if (lent.colour) return {lent.colour[i], lent.mask[i], Colour(i), Mask(i)};
  return {.toColour = Colour(i), .toMask = colourRows ? nullptr : Mask(i)};
}

void PullRectangle::Fetch(int i, int first) const {
  constexpr int kFront = 1024;
  if (lent.colour) {
    base::ForPieces(Way(i), width, NextWay(i, first),
                    [](const base::RowWay& piece, int pixels) { CopyLent(piece, pixels); });
  } else if (i > first && colourRows) {
    Way(i - 1).Announce(std::min(width, kFront));
  }
}

void PullRectangle::AnnounceMask(int i) const {
  if (maskRows) base::Announce<base::kForWriting>(Mask(i), static_cast<std::size_t>(width));
}

bool InPlaceFilter::BorrowWhole(PullRectangle& rows) {
  const bool isFilter = static_cast<bool>(platform::ComPtr<IAnimFilter>::Query(source.Get()));
  if (isFilter || !IsWhole(rows) || !Borrow(rows.width, rows.height)) return false;
  rows.lent = borrowed.Rows();
  return true;
}

HRESULT InPlaceFilter::Fill(PullRectangle& r, SourceResult rule) {
  if (BorrowWhole(r)) return S_OK;
  return EndBySource(rule, source->ReadRows(r.destX, r.destY, r.srcX, r.srcY, r.width, r.height,
                                            r.colourRows, r.maskRows));
}

bool InPlaceFilter::IsWhole(const PullRectangle& r) const {
  const auto held = HoldState();
  return r.srcX == 0 && r.srcY == 0 && r.width == input.width && r.height == input.height &&
         r.colourRows && r.maskRows;
}

HRESULT RowFilter::ReadRows(int destX, int destY, int srcX, int srcY, int width, int height,
                            BYTE** colourRows, BYTE** maskRows) {
  return RunPull([&]() -> HRESULT {
    if (!source) return kPullStopped;
    PullRectangle rows{destX, destY, srcX, srcY, width, height, colourRows, maskRows};
    const HRESULT ended = Fill(rows, policy.sourceResult);
    if (ended != S_OK) return ended;
    if (WorksOnMask() && !rows.lent.colour) rows.colourRows = nullptr;
    if (!ChangeAll(rows)) {
      if (policy.abortMarksChange) selfChanged = true;
      return kPullStopped;
    }
    ClearChanges();
    return S_OK;
  });
}

// Holds the state for all threads at once. They leave their places when somebody waits for it.
bool RowFilter::ChangeAll(const PullRectangle& rows) {
  const auto held = HoldState();
  const int least = base::RowsPerBand(rows.width);
  std::atomic<int> left{rows.height};
  const auto change = [&](BYTE* colour, BYTE* mask, int pixels) {
    if (WorksOnMask() ? mask : colour) ChangeRow(colour, mask, pixels);
  };
  const auto takeBands = [&](int, int) {
    do {
      const int end = left.fetch_sub(least);
      if (!rows.ChangePixels(std::max(0, end - least), end, abort, change)) return false;
    } while (left > 0 && !state.IsWanted());
    return true;
  };
  while (left > 0) {
    state.GiveWay();
    if (!base::ForEachBand((rows.height - 1) / least + 1, 1, takeBands)) return false;
  }
  return true;
}

HRESULT RowFilter::ReadPixel(BYTE* pixel) {
  if (!pixel) return E_POINTER;
  const HRESULT status = CPdibFilter::ReadPixel(pixel);
  if (FAILED(status) || policy.passesPixels) return status;
  const auto held = HoldState();
  ChangeRow(pixel, pixel + base::kBytesPerPixel, 1);
  return S_OK;
}

HRESULT RectangleFilter::ReadRows(int destX, int destY, int srcX, int srcY, int width, int height,
                                  BYTE** colourRows, BYTE** maskRows) {
  return RunPull([&]() -> HRESULT {
    if (!source) return kPullStopped;
    std::optional<MemoryPicture> lent;
    if (NeedsMask() && colourRows && !maskRows && width > 0 && height > 0) {
      lent.emplace("mask", base::LimitToInt32(std::int64_t{destX} + width),
                   base::LimitToInt32(std::int64_t{destY} + height), false, true);
      maskRows = lent->MaskRows();
      if (!maskRows) return kPullStopped;
    }
    PullRectangle rows{destX, destY, srcX, srcY, width, height, colourRows, maskRows};
    const HRESULT ended = Fill(rows, policy.sourceResult);
    if (ended != S_OK) return ended;
    if ((!policy.takesLent && !TakeLent(rows)) || !ChangeRectangle(rows)) {
      if (policy.abortMarksChange) selfChanged = true;
      return kPullStopped;
    }
    ClearChanges();
    return S_OK;
  });
}

// Into the caller's rows. A class may ask the source for more then, so that what was lent goes
// back.
bool RectangleFilter::TakeLent(PullRectangle& rows) {
  if (!rows.lent.colour) return true;
  const bool isWhole =
      base::ForEachBand(rows.height, base::RowsPerBand(rows.width), [&](int first, int end) {
        const base::RowWriter writer(rows.width, rows.height);
        for (; first < end && !abort; ++first) rows.CopyLent(first, writer);
        return first == end;
      });
  rows.lent = {};
  borrowed = {};
  return isWhole;
}

HRESULT WholePictureFilter::ReadRows(int destX, int destY, int srcX, int srcY, int width,
                                     int height, BYTE** colourRows, BYTE** maskRows) {
  return RunPull([&]() -> HRESULT {
    if (!source) return kPullStopped;
    const PullRectangle rows{destX, destY, srcX, srcY, width, height, colourRows, maskRows};
    if (PassesNow()) return PassOn(rows);
    const bool current = !std::exchange(hasFailedToLend, false) && BringUpToDate();
    if (AbortAnswersDone() && abort) return S_OK;
    if (!current && !(policy.givesOutFailures && HoldsResult())) return kPullStopped;
    PrepareCopy(rows);
    if (!GiveOut(rows)) {
      if (policy.abortMarksChange) selfChanged = true;
      return kPullStopped;
    }
    if (!current) return kPullStopped;
    if (policy.flags == ChangeFlags::ClearedAtEnd) ClearChanges();
    return S_OK;
  });
}

bool WholePictureFilter::PassesNow() {
  const auto held = HoldState();
  return PassesThrough();
}

// False when there is no picture, as before the first Prepare.
bool WholePictureFilter::TakeState() {
  const auto held = HoldState();
  pulled = input;
  result = output;
  TakeParameters();
  return result.width > 0 && result.height > 0;
}

HRESULT WholePictureFilter::PassOn(const PullRectangle& r) {
  DropPictures();
  const HRESULT sourceAnswer = source->ReadRows(r.destX, r.destY, r.srcX, r.srcY, r.width, r.height,
                                                r.colourRows, r.maskRows);
  if (sourceAnswer != S_OK && !PassesFailuresOver()) {
    selfChanged = sourceChanged = true;
    return kPullStopped;
  }
  ClearChanges();
  return S_OK;
}

void WholePictureFilter::DropPictures() {
  DropInput();
  outputPicture.reset();
  isOpen = false;
}

bool WholePictureFilter::HoldsAnswer() const {
  if (isOpen) return true;
  return policy.cache == Cache::OutputPicture ? outputPicture != nullptr
                                              : givenIsLent || inputPicture;
}

base::RowView WholePictureFilter::Answer() const {
  return policy.cache == Cache::OutputPicture ? outputPicture->Rows() : given;
}

// After a failed rebuild the picture may be that of another result, or missing.
bool WholePictureFilter::HoldsResult() const {
  if (isOpen) return true;
  if (!HoldsAnswer()) return false;
  const base::RowView rows = Answer();
  return rows.width - 2 * frame >= result.width && rows.height - 2 * frame >= result.height;
}

bool WholePictureFilter::BringUpToDate() {
  const bool isKept = HoldsAnswer() && !Changed();
  if (!isKept && !TakeState()) return false;
  const bool selfBefore = selfChanged;
  if (!isKept && policy.flags == ChangeFlags::ClearedAtStart) ClearChanges();
  bool done = false;
  try {
    done = isKept ? RetakeInput() : RebuildAll();
  } catch (...) {
    // No memory, or a source that throws: the same as a source that failed.
  }
  if (done) return true;
  if (policy.flags == ChangeFlags::ClearedAtStart) {
    if (selfBefore) selfChanged = true;
    sourceChanged = true;
  } else {
    selfChanged = true;
  }
  return false;
}

bool WholePictureFilter::RebuildAll() {
  isOpen = false;
  finished.assign(static_cast<std::size_t>(result.height), 0);
  return Rebuild();
}

// What was lent has gone with the pull that it was lent for.
bool WholePictureFilter::RetakeInput() {
  const bool isRead = isOpen || policy.cache == Cache::InputPicture;
  if (!givenIsLent || !isRead) return true;
  if (TakeInput()) return true;
  isOpen = false;
  return false;
}

bool WholePictureFilter::GiveOut(const PullRectangle& rectangle) {
  const PullRectangle cut = rectangle.CutTo(result.width, result.height);
  if (isOpen && IsAll(cut)) {
    return ComputeRows(
        {cut.colourRows + cut.destY, cut.maskRows + cut.destY, cut.width, cut.height});
  }
  return CloseAll() && CopyOut(cut);
}

bool WholePictureFilter::CloseAll() {
  return !isOpen || Close();
}

// All pixels of both planes, from column 0 of the caller's rows on.
bool WholePictureFilter::IsAll(const PullRectangle& cut) const {
  return cut.width == result.width && cut.height == result.height && cut.destX == 0 &&
         cut.colourRows && cut.maskRows;
}

bool WholePictureFilter::Close() {
  if (!EnsurePictures(0, 0, result.width, result.height) ||
      !ComputeRows(outputPicture->Rows(result.width, result.height))) {
    return false;
  }
  DropInput();
  isOpen = false;
  return true;
}

bool WholePictureFilter::CopyOut(const PullRectangle& cut) {
  return base::ForEachBand(cut.height, base::RowsPerBand(cut.width), [&](int first, int end) {
    constexpr int kTogether = 8;
    const base::RowWriter writer(cut.width, cut.height);
    for (int last = end; last > first; last -= kTogether) {
      const int begin = std::max(first, last - kTogether);
      if (abort) return false;
      FinishRows(cut.srcY + begin, cut.srcY + last);
      for (int i = last - 1; i >= begin; --i) {
        if (abort) return false;
        if (cut.width > 0) CopyRow(cut, i, i > first, writer);
      }
    }
    return true;
  });
}

base::RowWay WholePictureFilter::WayOut(const PullRectangle& cut, int i) const {
  const base::RowView from = Answer();
  const int x = frame + cut.srcX;
  const int y = frame + cut.srcY + i;
  return {from.colour[y] + base::ColourOffset(x), from.mask[y] + x, cut.Colour(i), cut.Mask(i)};
}

void WholePictureFilter::CopyRow(const PullRectangle& cut, int i, bool hasNext,
                                 const base::RowWriter& writer) {
  const base::RowWay row = WayOut(cut, i);
  if (policy.cache == Cache::InputPicture) {
    const base::RowWay next = hasNext ? WayOut(cut, i - 1) : base::RowWay{};
    base::ForPieces(row, cut.width, next,
                    [this](const base::RowWay& piece, int pixels) { ChangePiece(piece, pixels); });
    return;
  }
  if (row.toColour) writer.Copy(row.toColour, row.colour, base::ColourBytes(cut.width));
  if (row.toMask) writer.Copy(row.toMask, row.mask, static_cast<std::size_t>(cut.width));
}

void WholePictureFilter::FinishRows(int first, int end) {
  for (int y = first; y < end; ++y) {
    if (!std::exchange(finished[static_cast<std::size_t>(y)], 1)) FinishRow(y);
  }
}

// A result that is kept as it is given out. One that could not be made is not tried again in the
// pull that comes instead. The source has its rows back.
std::optional<base::RowView> WholePictureFilter::Lend(int width, int height) {
  if (PassesNow()) {
    DropPictures();
    return LendBorrowed(width, height);
  }
  if (policy.cache == Cache::InputPicture) return std::nullopt;
  hasFailedToLend = !BringUpToDate();
  if (hasFailedToLend || width > result.width || height > result.height) return std::nullopt;
  hasFailedToLend = !CloseAll() || !ForRows(0, height, [this](int y) { FinishRows(y, y + 1); });
  if (hasFailedToLend) {
    selfChanged = true;
    return std::nullopt;
  }
  borrowed = {};
  if (policy.flags == ChangeFlags::ClearedAtEnd) ClearChanges();
  return lentRows.Crop(outputPicture->Rows(), frame, frame, width, height);
}

bool WholePictureFilter::Clear(MemoryPicture& picture) {
  const int width = picture.Width();
  const int height = picture.Height();
  return base::ForEachBand(height, base::RowsPerBand(width), [&](int first, int end) {
    const base::RowWriter writer(width, height);
    for (int y = first; y < end && !abort; ++y) {
      writer.Fill(picture.ColourRows()[y], 0, base::ColourBytes(width));
      writer.Fill(picture.MaskRows()[y], base::kNothing, static_cast<std::size_t>(width));
    }
    return !abort;
  });
}

void WholePictureFilter::DropInput() {
  inputPicture.reset();
  borrowed = {};
  givenIsLent = false;
}

bool WholePictureFilter::BorrowInput() {
  givenIsLent = Borrow(pulled.width, pulled.height);
  if (givenIsLent) given = borrowed.Rows();
  isGivenWhole = givenIsLent;
  return givenIsLent;
}

bool WholePictureFilter::OpenLent() {
  isOpen = MemoryPicture::CanHold(result.width, result.height) && BorrowInput();
  if (!isOpen) return false;
  inputPicture.reset();
  outputPicture.reset();
  return true;
}

bool WholePictureFilter::PullPart(const Placed& part) {
  if (!EnsurePictures(0, 0, result.width, result.height)) return false;
  const bool isClear = Clear(*outputPicture);
  source->ReadRows(part.x, part.y, part.sourceX, part.sourceY, part.width, part.height,
                   outputPicture->ColourRows(), outputPicture->MaskRows());
  return isClear;
}

void WholePictureFilter::PlaceGiven(const Placed& part, int y, BYTE* colour, BYTE* mask,
                                    const base::RowWriter& writer) const {
  const int row = y - part.y;
  const bool isWithin = row >= 0 && row < part.height && part.width > 0;
  const auto clear = [&](int first, int end) {
    if (first >= end) return;
    if (colour) writer.Fill(colour + base::ColourOffset(first), 0, base::ColourBytes(end - first));
    writer.Fill(mask + first, base::kNothing, static_cast<std::size_t>(end - first));
  };
  clear(0, isWithin ? part.x : result.width);
  if (!isWithin) return;
  clear(part.x + part.width, result.width);
  const int from = row + part.sourceY;
  writer.Copy(mask + part.x, given.mask[from] + part.sourceX, static_cast<std::size_t>(part.width));
  if (!colour) return;
  writer.Copy(colour + base::ColourOffset(part.x),
              given.colour[from] + base::ColourOffset(part.sourceX), base::ColourBytes(part.width));
}

bool WholePictureFilter::TakeInputOfSize(int width, int height) {
  const bool goesOn = !abort;
  if (width == pulled.width && height == pulled.height && BorrowInput()) {
    inputPicture.reset();
    return !policy.takesWhatComes || goesOn;
  }
  givenIsLent = false;
  if (!EnsurePictures(width, height, 0, 0)) return false;
  given = inputPicture->Rows(width, height);
  return PullInput(*inputPicture);
}

// The source hears of an abort by being asked. What it delivered needed no clearing.
bool WholePictureFilter::PullInput(MemoryPicture& picture, int x, int y) {
  const bool isClear = Clear(picture);
  isGivenWhole = PullInto(picture, x, y) == S_OK;
  return policy.takesWhatComes ? isClear : isGivenWhole;
}

HRESULT WholePictureFilter::PullInto(MemoryPicture& picture, int x, int y) {
  return source->ReadRows(x, y, 0, 0, pulled.width, pulled.height, picture.ColourRows(),
                          picture.MaskRows());
}
