#include "filters/CompositeFilter.h"

#include <algorithm>

#include "platform/component/Guard.h"

using platform::ComPtr;
using platform::Guard;

CompositeFilter::CompositeFilter(const FilterClass& row,
                                 std::initializer_list<const FilterClass*> partRows)
    : FilterObject(row) {
  for (const FilterClass* partRow : partRows) {
    auto part = ComPtr<FilterObject>::Attach(partRow->make(*partRow));
    if (!parts.empty()) Last().SetDestination(static_cast<IAnimFilter*>(part.Get()));
    parts.push_back(std::move(part));
  }
}

// Neighbours hold each other: the links between the parts are opened by hand.
CompositeFilter::~CompositeFilter() {
  for (const auto& part : parts) {
    part->SetDestination(nullptr);
    part->SetSource(nullptr);
  }
}

// Of all parts, from the destination's side on; what stands before one that reads all does not
// count.
std::optional<FilterObject::RowReach> CompositeFilter::Reach() {
  RowReach all;
  for (auto part = parts.rbegin(); part != parts.rend() && !all.readsAll; ++part) {
    int rows = 0;
    if ((*part)->GetRowReach(&rows, &all.readsAll) != S_OK) return std::nullopt;
    all.rows += rows;
  }
  return all;
}

bool CompositeFilter::IsDirty() {
  return std::any_of(parts.begin(), parts.end(), [](auto& part) { return part->IsDirty(); });
}

void CompositeFilter::MapSize(int w, int h, int* inW, int* inH) {
  *inW = w;
  *inH = h;
  for (auto part = parts.rbegin(); part != parts.rend(); ++part) {
    (*part)->MapSize(*inW, *inH, inW, inH);
  }
}

void CompositeFilter::GiveText(FilterObject& part, const std::string& text) {
  part.SetParameter(text.c_str(), 0);
}

std::string CompositeFilter::ActiveText(FilterObject& part) {
  char text[1024] = "";
  part.GetActiveParameter(text, sizeof text);
  return text;
}

// --- IAnimFilter

HRESULT CompositeFilter::GetDestination(REFIID iid, void** result) {
  return Last().GetDestination(iid, result);
}

HRESULT CompositeFilter::GetSource(REFIID iid, void** result) {
  return First().GetSource(iid, result);
}

// The part at the end takes the link, and the neighbour is told of the composite.
HRESULT CompositeFilter::SetDestination(IUnknown* newDestination) {
  return Guard([&] {
    if (IsThis(newDestination)) return E_INVALIDARG;
    Last().AttachDestination(newDestination);
    if (auto next = ComPtr<IAnimFilterSrcCallsThis>::Query(newDestination)) {
      next->AttachSource(static_cast<IAnimFilter*>(this));
    }
    return S_OK;
  });
}

HRESULT CompositeFilter::SetSource(IUnknown* newSource) {
  return Guard([&] {
    if (IsThis(newSource)) return E_INVALIDARG;
    First().AttachSource(newSource);
    if (auto previous = ComPtr<IAnimFilterDestCallsThis>::Query(newSource)) {
      previous->AttachDestination(static_cast<IAnimFilter*>(this));
    }
    return S_OK;
  });
}

// --- IAnimFilterSrcCallsThis

HRESULT CompositeFilter::SetPictureSize(int width, int height) {
  return First().SetPictureSize(width, height);
}

HRESULT CompositeFilter::SetOffset(int x, int y) {
  return First().SetOffset(x, y);
}

HRESULT CompositeFilter::SetExtent(int width, int height) {
  return First().SetExtent(width, height);
}

HRESULT CompositeFilter::SetTargetSize(int width, int height) {
  return First().SetTargetSize(width, height);
}

HRESULT CompositeFilter::QuerySize(int* width, int* height, double aspect) {
  return First().QuerySize(width, height, aspect);
}

HRESULT CompositeFilter::SetZoom(double newZoom) {
  return First().SetZoom(newZoom);
}

HRESULT CompositeFilter::SetMark(int a, int b) {
  return First().SetMark(a, b);
}

HRESULT CompositeFilter::GetMark(int* a, int* b) {
  return First().GetMark(a, b);
}

HRESULT CompositeFilter::Lock() {
  return First().Lock();
}

HRESULT CompositeFilter::Unlock() {
  return First().Unlock();
}

HRESULT CompositeFilter::AttachSource(IUnknown* newSource) {
  return IsThis(newSource) ? E_INVALIDARG : First().AttachSource(newSource);
}

HRESULT CompositeFilter::ExpandText(const char* text, char** expanded) {
  return First().ExpandText(text, expanded);
}

HRESULT CompositeFilter::QueryPrintScale(double* scale) {
  return First().QueryPrintScale(scale);
}

HRESULT CompositeFilter::HostCall3(std::intptr_t a, std::intptr_t b, std::intptr_t c) {
  return First().HostCall3(a, b, c);
}

HRESULT CompositeFilter::HostCall1(std::intptr_t a) {
  return First().HostCall1(a);
}

HRESULT CompositeFilter::HostCall1b(std::intptr_t a) {
  return First().HostCall1b(a);
}

// --- IAnimFilterDestCallsThis

HRESULT CompositeFilter::ReadRows(int destX, int destY, int srcX, int srcY, int width, int height,
                                  BYTE** colourRows, BYTE** maskRows) {
  return Last().ReadRows(destX, destY, srcX, srcY, width, height, colourRows, maskRows);
}

HRESULT CompositeFilter::LendRows(int width, int height, const BYTE* const** colourRows,
                                  const BYTE* const** maskRows) {
  return Last().LendRows(width, height, colourRows, maskRows);
}

HRESULT CompositeFilter::ReturnRows() {
  return Last().ReturnRows();
}

HRESULT CompositeFilter::SetAbort(bool newAbort) {
  return Last().SetAbort(newAbort);
}

HRESULT CompositeFilter::Prepare(bool* changed, int* consumerRevision, bool trackRevision) {
  return Last().Prepare(changed, consumerRevision, trackRevision);
}

HRESULT CompositeFilter::GetInfo(int* width, int* height, int* offsetX, int* offsetY,
                                 int* extentWidth, int* extentHeight) {
  return Last().GetInfo(width, height, offsetX, offsetY, extentWidth, extentHeight);
}

HRESULT CompositeFilter::AttachDestination(IUnknown* newDestination) {
  return IsThis(newDestination) ? E_INVALIDARG : Last().AttachDestination(newDestination);
}

HRESULT CompositeFilter::ReadPixel(BYTE* pixel) {
  return Last().ReadPixel(pixel);
}

HRESULT CompositeFilter::SendToSource(std::intptr_t message) {
  return Last().SendToSource(message);
}
