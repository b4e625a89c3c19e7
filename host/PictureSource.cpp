#include "host/PictureSource.h"

#include <cstring>
#include <utility>
#include <vector>

#include "base/Arithmetic.h"
#include "base/Rows.h"
#include "platform/component/Guard.h"

namespace host {
namespace {

// What a pull answers when its rows are not complete. Filters ask for a positive value.
constexpr HRESULT kStopped = 1;

constexpr HRESULT kNotLent = 1;

// The rows from `first` on, each from the byte `offset` on. Row arrays that fit already are used as
// they are, others are made in `room`.
BYTE* const* Shifted(BYTE** rows, int first, int count, std::ptrdiff_t offset,
                     std::vector<BYTE*>& room) {
  if (!rows || offset == 0) return rows ? rows + first : nullptr;
  room.assign(rows + first, rows + first + count);
  for (BYTE*& row : room) row += offset;
  return room.data();
}

// Where a row or column lands when the corner of the request is cut from `asked` to `given`.
int Moved(int dest, int asked, int given) {
  return base::WrapToInt32(std::int64_t{dest} + given - asked);
}

}  // namespace

// The part of a pull that lies within the picture.
struct PictureSource::Request {
  Rectangle part;
  int destX;
  int destY;
  BYTE** colour;
  BYTE** mask;
};

PictureSource::PictureSource(const SourcePicture& told, Decode decodeRows, imageio::Progress report)
    : picture(told), decode(std::move(decodeRows)), progress(std::move(report)) {}

PictureSource::PictureSource(const SourcePicture& told, std::shared_ptr<const MemoryPicture> rows)
    : picture(told), kept(std::move(rows)) {}

// --- rows

HRESULT PictureSource::ReadRows(int destX, int destY, int srcX, int srcY, int width, int height,
                                BYTE** colourRows, BYTE** maskRows) {
  const Rectangle part = CutTo({srcX, srcY, width, height}, picture.size);
  const Request request{part, Moved(destX, srcX, part.x), Moved(destY, srcY, part.y), colourRows,
                        maskRows};
  if (abort || (part.width > 0 && !TryServe(request))) {
    stopped = true;
    return kStopped;
  }
  changed = false;
  return S_OK;
}

HRESULT PictureSource::LendRows(int width, int height, const BYTE* const** colourRows,
                                const BYTE* const** maskRows) {
  const bool isHere = kept && width <= picture.size.width && height <= picture.size.height;
  if (abort || !isHere) return kNotLent;
  *colourRows = kept->ColourRows();
  *maskRows = kept->MaskRows();
  changed = false;
  return S_OK;
}

bool PictureSource::TryServe(const Request& request) {
  try {
    return Serve(request);
  } catch (const std::bad_alloc&) {
    failure = "there is not enough memory for the picture";
  } catch (const std::exception& error) {
    failure = error.what();
  }
  return false;
}

bool PictureSource::Serve(const Request& request) {
  if (window) {
    const auto answer = window->Bring(request.part.y, request.part.height, abort);
    if (answer == RowWindow::Answer::Stopped) return false;
    if (answer == RowWindow::Answer::Here) {
      return Copy(
          request, [this](int y) { return window->Colour(y); },
          [this](int y) { return window->Mask(y); });
    }
    window.reset();  // it decodes no more, so that somebody else can
  }
  const bool whole = Size{request.part.width, request.part.height} == picture.size;
  if (whole && request.colour && !kept && !givenWhole) return DecodeInto(request);
  return Keep() && Copy(
                       request, [this](int y) { return kept->ColourRows()[y]; },
                       [this](int y) { return kept->MaskRows()[y]; });
}

bool PictureSource::DecodeInto(const Request& request) {
  std::vector<BYTE*> colourRoom;
  std::vector<BYTE*> maskRoom;
  const int count = request.part.height;
  givenWhole = RunDecode(
      {Shifted(request.colour, request.destY, count, base::ColourOffset(request.destX), colourRoom),
       Shifted(request.mask, request.destY, count, request.destX, maskRoom)});
  return givenWhole;
}

bool PictureSource::Keep() {
  if (kept) return true;
  auto fresh = std::make_shared<MemoryPicture>("source", picture.size.width, picture.size.height,
                                               true, true);
  if (!fresh->IsValid()) throw std::bad_alloc();
  if (!RunDecode({fresh->ColourRows(), fresh->MaskRows()})) return false;
  kept = std::move(fresh);
  return true;
}

template <class ColourOf, class MaskOf>
bool PictureSource::Copy(const Request& request, ColourOf colourOf, MaskOf maskOf) const {
  const Rectangle& part = request.part;
  for (int i = 0; i < part.height; ++i) {
    if (abort) return false;
    if (request.colour) {
      std::memcpy(request.colour[request.destY + i] + base::ColourOffset(request.destX),
                  colourOf(part.y + i) + base::ColourOffset(part.x), base::ColourBytes(part.width));
    }
    if (request.mask) {
      std::memcpy(request.mask[request.destY + i] + request.destX, maskOf(part.y + i) + part.x,
                  static_cast<std::size_t>(part.width));
    }
  }
  return true;
}

bool PictureSource::RunDecode(const imageio::Rows& rows) {
  return decode(rows, [this](double share) { return !abort && (!progress || progress(share)); });
}

HRESULT PictureSource::SetAbort(bool newAbort) {
  abort = newAbort;
  return S_OK;
}

HRESULT PictureSource::ReadPixel(BYTE*) {
  return S_OK;
}

HRESULT PictureSource::SendToSource(std::intptr_t) {
  return S_OK;
}

// --- information

HRESULT PictureSource::Prepare(bool* anyChange, int* consumerRevision, bool) {
  return platform::Guard([&] {
    TellDestination();
    bool now = changed;
    if (consumerRevision) {
      if (now && *consumerRevision == revision) ++revision;
      now = now || *consumerRevision != revision;
      *consumerRevision = revision;
    }
    if (anyChange) *anyChange = *anyChange || now;
    return S_OK;
  });
}

void PictureSource::TellDestination() {
  if (!destination) return;
  if (picture.zoom) destination->SetZoom(*picture.zoom);
  destination->SetTargetSize(picture.target.width, picture.target.height);
  destination->SetPictureSize(picture.size.width, picture.size.height);
  destination->SetExtent(picture.size.width, picture.size.height);
  destination->SetOffset(0, 0);
}

HRESULT PictureSource::GetInfo(int* width, int* height, int* offsetX, int* offsetY,
                               int* extentWidth, int* extentHeight) {
  bool ignored = false;
  int unknown = -1;
  const HRESULT status = Prepare(&ignored, &unknown, false);
  const auto give = [](int* target, int value) {
    if (target) *target = value;
  };
  give(width, picture.size.width);
  give(height, picture.size.height);
  give(offsetX, 0);
  give(offsetY, 0);
  give(extentWidth, picture.size.width);
  give(extentHeight, picture.size.height);
  return status;
}

HRESULT PictureSource::AttachDestination(IUnknown* newDestination) {
  changed = true;
  destination = platform::ComPtr<IAnimFilterSrcCallsThis>::Query(newDestination);
  return S_OK;
}

}  // namespace host
