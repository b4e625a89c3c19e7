// A filter that is made of other filters.
#pragma once

#include <initializer_list>
#include <vector>

#include "core/FilterShapes.h"

// Owns a row of filters, the first of which stands at the source's side. Whatever comes from the
// source goes to the first one, whatever comes from the destination to the last one; both ends hold
// them by their links. The neighbours see the composite alone, so that a walk along the chain does
// not meet the parts.
class CompositeFilter : public FilterObject {
 public:
  ~CompositeFilter() override;

  // Dirty when a part is. A part commits by itself.
  bool IsDirty() override;
  void Commit() override {}
  // Through all parts.
  void MapSize(int w, int h, int* inW, int* inH) override;

  HRESULT STDMETHODCALLTYPE GetDestination(REFIID iid, void** result) override;
  HRESULT STDMETHODCALLTYPE GetSource(REFIID iid, void** result) override;
  HRESULT STDMETHODCALLTYPE SetDestination(IUnknown* newDestination) override;
  HRESULT STDMETHODCALLTYPE SetSource(IUnknown* newSource) override;

  HRESULT STDMETHODCALLTYPE SetPictureSize(int width, int height) override;
  HRESULT STDMETHODCALLTYPE SetOffset(int x, int y) override;
  HRESULT STDMETHODCALLTYPE SetExtent(int width, int height) override;
  HRESULT STDMETHODCALLTYPE SetTargetSize(int width, int height) override;
  HRESULT STDMETHODCALLTYPE QuerySize(int* width, int* height, double aspect) override;
  HRESULT STDMETHODCALLTYPE SetZoom(double newZoom) override;
  HRESULT STDMETHODCALLTYPE SetMark(int a, int b) override;
  HRESULT STDMETHODCALLTYPE GetMark(int* a, int* b) override;
  HRESULT STDMETHODCALLTYPE Lock() override;
  HRESULT STDMETHODCALLTYPE Unlock() override;
  HRESULT STDMETHODCALLTYPE AttachSource(IUnknown* newSource) override;
  HRESULT STDMETHODCALLTYPE ExpandText(const char* text, char** expanded) override;
  HRESULT STDMETHODCALLTYPE QueryPrintScale(double* scale) override;
  HRESULT STDMETHODCALLTYPE HostCall3(std::intptr_t a, std::intptr_t b, std::intptr_t c) override;
  HRESULT STDMETHODCALLTYPE HostCall1(std::intptr_t a) override;
  HRESULT STDMETHODCALLTYPE HostCall1b(std::intptr_t a) override;

  HRESULT STDMETHODCALLTYPE ReadRows(int destX, int destY, int srcX, int srcY, int width,
                                     int height, BYTE** colourRows, BYTE** maskRows) override;
  HRESULT STDMETHODCALLTYPE LendRows(int width, int height, const BYTE* const** colourRows,
                                     const BYTE* const** maskRows) override;
  HRESULT STDMETHODCALLTYPE ReturnRows() override;
  HRESULT STDMETHODCALLTYPE SetAbort(bool newAbort) override;
  HRESULT STDMETHODCALLTYPE Prepare(bool* changed, int* consumerRevision,
                                    bool trackRevision) override;
  HRESULT STDMETHODCALLTYPE GetInfo(int* width, int* height, int* offsetX, int* offsetY,
                                    int* extentWidth, int* extentHeight) override;
  HRESULT STDMETHODCALLTYPE AttachDestination(IUnknown* newDestination) override;
  HRESULT STDMETHODCALLTYPE ReadPixel(BYTE* pixel) override;
  HRESULT STDMETHODCALLTYPE SendToSource(std::intptr_t message) override;

 protected:
  std::optional<RowReach> Reach() override;

  // The classes of the parts, from the source's side on.
  CompositeFilter(const FilterClass& row, std::initializer_list<const FilterClass*> partRows);

  FilterObject& Part(std::size_t index) const { return *parts[index].Get(); }
  static void GiveText(FilterObject& part, const std::string& text);
  static std::string ActiveText(FilterObject& part);

 private:
  FilterObject& First() const { return *parts.front().Get(); }
  FilterObject& Last() const { return *parts.back().Get(); }

  std::vector<platform::ComPtr<FilterObject>> parts;
};
