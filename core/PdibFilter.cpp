#include "core/PdibFilter.h"

#include <mutex>

#include "base/Arithmetic.h"
#include "core/ParameterReaders.h"

namespace {

using platform::ComPtr;
using platform::Guard;

// Process-wide, and held for moments.
struct ProcessLocks {
  std::mutex revision;
  std::mutex picture;
};
ProcessLocks locks;

// Exchanges the reference only when it is another object's.
template <class Interface>
void Exchange(ComPtr<Interface>& held, IUnknown* unknown) {
  auto queried = ComPtr<Interface>::Query(unknown);
  if (!(held == queried.Get())) held = std::move(queried);
}

template <class Interface>
HRESULT QueryNeighbour(const ComPtr<Interface>& neighbour, REFIID iid, void** result) {
  if (!result) return E_POINTER;
  *result = nullptr;
  if (!neighbour) return E_NOINTERFACE;
  return Guard([&] { return neighbour->QueryInterface(iid, result); });
}

// Passes a call on to a neighbour, or answers `alone` without one.
template <class Interface, class Call>
HRESULT Forward(const ComPtr<Interface>& neighbour, Call call, HRESULT alone = S_OK) {
  return neighbour ? Guard([&] { return call(*neighbour.Get()); }) : alone;
}

std::int64_t Area(int width, int height) {
  return std::int64_t{width} * height;
}

// Keeps a picture that is large enough and not over four times too large.
bool EnsurePicture(std::unique_ptr<MemoryPicture>& picture, const char* name, int width,
                   int height) {
  const bool keep = picture && picture->Width() >= width && picture->Height() >= height &&
                    Area(picture->Width(), picture->Height()) / 4 <= Area(width, height);
  if (keep) return true;
  picture.reset();
  picture = std::make_unique<MemoryPicture>(name, width, height);
  if (!picture->IsValid()) picture.reset();
  return picture != nullptr;
}

}  // namespace

CPdibFilter::CPdibFilter(const FilterClass& row) : FilterObject(row) {}

CPdibFilter::~CPdibFilter() = default;

// --- IAnimFilter

HRESULT CPdibFilter::GetDestination(REFIID iid, void** result) {
  return QueryNeighbour(destination, iid, result);
}

HRESULT CPdibFilter::GetSource(REFIID iid, void** result) {
  return QueryNeighbour(source, iid, result);
}

HRESULT CPdibFilter::SetDestination(IUnknown* newDestination) {
  return Guard([&] {
    if (IsThis(newDestination)) return E_INVALIDARG;
    selfChanged = true;
    Exchange(destination, newDestination);
    if (destination) destination->AttachSource(static_cast<IAnimFilter*>(this));
    return S_OK;
  });
}

HRESULT CPdibFilter::SetSource(IUnknown* newSource) {
  return Guard([&] {
    if (IsThis(newSource)) return E_INVALIDARG;
    selfChanged = true;
    Exchange(source, newSource);
    if (source) source->AttachDestination(static_cast<IAnimFilter*>(this));
    return S_OK;
  });
}

HRESULT CPdibFilter::AttachSource(IUnknown* newSource) {
  return Guard([&] {
    if (IsThis(newSource)) return E_INVALIDARG;
    sourceChanged = true;
    Exchange(source, newSource);
    return S_OK;
  });
}

HRESULT CPdibFilter::AttachDestination(IUnknown* newDestination) {
  return Guard([&] {
    if (IsThis(newDestination)) return E_INVALIDARG;
    sourceChanged = true;
    Exchange(destination, newDestination);
    return S_OK;
  });
}

// --- IAnimFilterSrcCallsThis

HRESULT CPdibFilter::SetPictureSize(int width, int height) {
  const auto held = HoldState();
  told.width = width;
  told.height = height;
  return S_OK;
}

HRESULT CPdibFilter::SetOffset(int x, int y) {
  const auto held = HoldState();
  told.offsetX = x;
  told.offsetY = y;
  return S_OK;
}

HRESULT CPdibFilter::SetExtent(int width, int height) {
  const auto held = HoldState();
  told.extentWidth = width;
  told.extentHeight = height;
  return S_OK;
}

HRESULT CPdibFilter::SetTargetSize(int width, int height) {
  return PassTargetSize(width, height, width, height);
}

HRESULT CPdibFilter::PassTargetSize(int width, int height, int passedWidth, int passedHeight) {
  {
    const auto held = HoldState();
    told.targetWidth = width;
    told.targetHeight = height;
  }
  return Forward(destination,
                 [&](auto& next) { return next.SetTargetSize(passedWidth, passedHeight); });
}

HRESULT CPdibFilter::QuerySize(int* width, int* height, double aspect) {
  if (!width || !height) return E_POINTER;
  int wantedW = -1;
  int wantedH = -1;
  Forward(destination, [&](auto& next) { return next.QuerySize(&wantedW, &wantedH, aspect); });
  *width = *height = -1;
  if (wantedW > 0 && wantedH > 0) MapSize(wantedW, wantedH, width, height);
  return S_OK;
}

HRESULT CPdibFilter::SetZoom(double newZoom) {
  zoom = newZoom;
  return Forward(destination, [&](auto& next) { return next.SetZoom(newZoom); });
}

HRESULT CPdibFilter::SetMark(int a, int b) {
  {
    const auto held = HoldState();
    mark[0] = a;
    mark[1] = b;
  }
  return Forward(destination, [&](auto& next) { return next.SetMark(a, b); });
}

HRESULT CPdibFilter::GetMark(int* a, int* b) {
  return Forward(destination, [&](auto& next) { return next.GetMark(a, b); });
}

HRESULT CPdibFilter::Lock() {
  return Forward(destination, [&](auto& next) { return next.Lock(); });
}

HRESULT CPdibFilter::Unlock() {
  return Forward(destination, [&](auto& next) { return next.Unlock(); });
}

HRESULT CPdibFilter::ExpandText(const char* text, char** expanded) {
  return Forward(destination, [&](auto& next) { return next.ExpandText(text, expanded); });
}

HRESULT CPdibFilter::QueryPrintScale(double* scale) {
  return Forward(destination, [&](auto& next) { return next.QueryPrintScale(scale); });
}

HRESULT CPdibFilter::HostCall3(std::intptr_t a, std::intptr_t b, std::intptr_t c) {
  return Forward(destination, [&](auto& next) { return next.HostCall3(a, b, c); });
}

HRESULT CPdibFilter::HostCall1(std::intptr_t a) {
  return Forward(
      destination, [&](auto& next) { return next.HostCall1(a); }, E_FAIL);
}

HRESULT CPdibFilter::HostCall1b(std::intptr_t a) {
  return Forward(destination, [&](auto& next) { return next.HostCall1b(a); });
}

// --- IAnimFilterDestCallsThis

HRESULT CPdibFilter::ReadRows(int destX, int destY, int srcX, int srcY, int width, int height,
                              BYTE** colourRows, BYTE** maskRows) {
  return RunPull([&]() -> HRESULT {
    if (!source) {
      selfChanged = false;
      return kPullStopped;
    }
    const HRESULT result =
        source->ReadRows(destX, destY, srcX, srcY, width, height, colourRows, maskRows);
    if (result == 0) {
      ClearChanges();
    } else {
      selfChanged = sourceChanged = true;
    }
    return result;
  });
}

HRESULT CPdibFilter::SetAbort(bool newAbort) {
  const HRESULT status =
      Forward(source, [&](auto& previous) { return previous.SetAbort(newAbort); });
  abort = newAbort;
  if (newAbort) gate.Abort();
  return status;
}

// --- lending

bool CPdibFilter::BeginTurn() {
  if (!gate.Enter(abort)) return false;
  selfChangesSeen = selfChanged.Count();
  sourceChangesSeen = sourceChanged.Count();
  return true;
}

void CPdibFilter::EndTurn() {
  borrowed = {};
  gate.Leave();
}

HRESULT CPdibFilter::LendRows(int width, int height, const BYTE* const** colourRows,
                              const BYTE* const** maskRows) {
  constexpr HRESULT kNotNow = 1;
  if (!colourRows || !maskRows) return E_POINTER;
  Turn turn(*this);
  if (!turn) return kNotNow;
  std::optional<base::RowView> lent;
  Guard([&] {
    if (source && !abort) lent = Lend(width, height);
    return S_OK;
  });
  if (!lent) return kNotNow;
  *colourRows = lent->colour;
  *maskRows = lent->mask;
  isLending = true;
  turn.Keep();
  return S_OK;
}

HRESULT CPdibFilter::ReturnRows() {
  if (!gate.IsMine() || !isLending) return E_UNEXPECTED;
  isLending = false;
  EndTurn();
  return S_OK;
}

// What a former loan was for is done: the source lends once at a time.
bool CPdibFilter::Borrow(int width, int height) {
  borrowed = {};
  borrowed = RowLoan(source.Get(), width, height);
  return static_cast<bool>(borrowed);
}

std::optional<base::RowView> CPdibFilter::LendBorrowed(int width, int height) {
  if (!Borrow(width, height)) return std::nullopt;
  ClearChanges();
  return borrowed.Rows();
}

// --- information

HRESULT CPdibFilter::Prepare(bool* changed, int* consumerRevision, bool trackRevision) {
  return Guard([&] {
    if (source) {
      // A revision of -1 never matches, so that the source answers changed.
      int known = trackRevision ? sourceRevision.load() : -1;
      bool upstream = sourceChanged;
      source->Prepare(&upstream, &known, trackRevision);
      if (trackRevision) sourceRevision = known;
      if (upstream) sourceChanged = true;
    }
    if (CommitWhatChanged()) selfChanged = true;
    PassInfoOn();
    bool now = Changed();
    {
      const std::lock_guard lock(locks.revision);
      int forgotten = -1;
      int& consumer = consumerRevision ? *consumerRevision : forgotten;
      if (now && consumer == revision) revision = base::WrapToInt32(std::int64_t{revision} + 1);
      if (consumer != revision) {
        now = true;
        consumer = revision;
      }
    }
    if (changed) *changed = *changed || now;
    return S_OK;
  });
}

bool CPdibFilter::CommitWhatChanged() {
  auto held = HoldState();
  const bool different = told != input;
  if (!IsDirty() && !different) return false;
  const int target[2] = {told.targetWidth, told.targetHeight};
  held.unlock();
  SetTargetSize(target[0], target[1]);
  held.lock();
  input = told;
  output = input;
  Commit();
  return true;
}

PictureInfo CPdibFilter::Output() const {
  const auto held = HoldState();
  return output;
}

void CPdibFilter::PassInfoOn() {
  if (!destination) return;
  const PictureInfo given = Output();
  destination->SetPictureSize(given.width, given.height);
  destination->SetExtent(given.extentWidth, given.extentHeight);
  destination->SetOffset(given.offsetX, given.offsetY);
}

HRESULT CPdibFilter::GetInfo(int* width, int* height, int* offsetX, int* offsetY, int* extentWidth,
                             int* extentHeight) {
  bool ignored = false;
  int unknown = -1;
  Prepare(&ignored, &unknown, false);
  const PictureInfo given = Output();
  const auto give = [](int* target, int value) {
    if (target) *target = value;
  };
  give(width, given.width);
  give(height, given.height);
  give(offsetX, given.offsetX);
  give(offsetY, given.offsetY);
  give(extentWidth, given.extentWidth);
  give(extentHeight, given.extentHeight);
  return S_OK;
}

HRESULT CPdibFilter::ReadPixel(BYTE* pixel) {
  return Forward(
      source, [&](auto& previous) { return previous.ReadPixel(pixel); }, E_FAIL);
}

HRESULT CPdibFilter::SendToSource(std::intptr_t message) {
  return Forward(source, [&](auto& previous) { return previous.SendToSource(message); });
}

// --- for the classes

bool CPdibFilter::EnsurePictures(int inputW, int inputH, int outputW, int outputH) {
  const std::lock_guard lock(locks.picture);
  bool all = true;
  if (inputW != 0 || inputH != 0) all = EnsurePicture(inputPicture, "input", inputW, inputH);
  if (outputW == 0 && outputH == 0) return all;
  return EnsurePicture(outputPicture, "output", outputW, outputH) && all;
}

void CPdibFilter::ClearChanges() {
  selfChanged.ClearUpTo(selfChangesSeen);
  sourceChanged.ClearUpTo(sourceChangesSeen);
}

void CPdibFilter::ReadVisibility(const char* text) {
  bool shown = visible;
  bool ignored = false;
  ReadParamBool(text, "Vis", shown, ignored);
  visible = shown;
}
