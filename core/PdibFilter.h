// CPdibFilter: the base of all filters. Linking, preparing, work pictures; everything but the
// picture work.
#pragma once

#include <atomic>
#include <map>
#include <memory>

#include "base/Export.h"
#include "base/KvString.h"
#include "core/AnimInterfaces.h"
#include "core/FilterClass.h"
#include "picture/MemoryPicture.h"
#include "platform/component/ComObject.h"
#include "platform/component/ComPtr.h"

// What describes a picture at a point of the chain, in pixels.
struct PictureInfo {
  std::int32_t width = 0, height = 0;
  std::int32_t extentWidth = 0, extentHeight = 0;    // the part that is shown
  std::int32_t offsetX = 0, offsetY = 0;             // and where it lies
  std::int32_t targetWidth = -1, targetHeight = -1;  // the same picture at full resolution

  bool operator==(const PictureInfo&) const = default;
};
static_assert(sizeof(PictureInfo) == 32);

// Derive from one of the three shapes in core/FilterShapes.h, which own the pull, rather than from
// this class directly. A filter whose output has another size than its input overrides Commit
// (writes `output`), SetTargetSize (forwards the changed size) and MapSize (its inverse).
//
// Pending parameters may be set from any thread. Only Commit moves them to the active ones, and a
// pull reads active ones alone. Flags are atomic; no other field carries a lock.
class FXBOX_API CPdibFilter
    : public platform::ComObject<CPdibFilter, IAnimFilter, IAnimFilterSrcCallsThis,
                                 IAnimFilterDestCallsThis, IAnimFilterParameter> {
 public:
  // These four stand behind the slots of IAnimFilter, in this order.
  //
  // True when the pending parameters differ from the active ones.
  virtual bool IsDirty() = 0;
  // Makes the pending parameters active and computes `output`, which holds a copy of `input`.
  virtual void Commit() = 0;
  // The input size that an output of w by h needs.
  virtual void MapSize(int w, int h, int* inW, int* inH);
  virtual ~CPdibFilter();

  HRESULT STDMETHODCALLTYPE GetName(char* buffer, int size) override;
  HRESULT STDMETHODCALLTYPE CreateIcon(REFIID iid, void** result) override;
  HRESULT STDMETHODCALLTYPE GetOrder(int* result) override;
  HRESULT STDMETHODCALLTYPE GetKind(int* kind) override;
  HRESULT STDMETHODCALLTYPE GetDestination(REFIID iid, void** result) override;
  HRESULT STDMETHODCALLTYPE GetSource(REFIID iid, void** result) override;
  HRESULT STDMETHODCALLTYPE SetDestination(IUnknown* newDestination) override;
  HRESULT STDMETHODCALLTYPE SetSource(IUnknown* newSource) override;
  HRESULT STDMETHODCALLTYPE CreateDialog(REFIID iid, void** result) override;
  HRESULT STDMETHODCALLTYPE SetClassId(REFCLSID newClassId) override;

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

  // The pull of a filter that changes nothing, under the picture lock.
  HRESULT STDMETHODCALLTYPE ReadRows(int destX, int destY, int srcX, int srcY, int width,
                                     int height, BYTE** colourRows, BYTE** maskRows) override;
  HRESULT STDMETHODCALLTYPE SetAbort(bool newAbort) override;
  HRESULT STDMETHODCALLTYPE Prepare(bool* changed, int* consumerRevision,
                                    bool trackRevision) override;
  HRESULT STDMETHODCALLTYPE GetInfo(int* width, int* height, int* offsetX, int* offsetY,
                                    int* extentWidth, int* extentHeight) override;
  HRESULT STDMETHODCALLTYPE AttachDestination(IUnknown* newDestination) override;
  HRESULT STDMETHODCALLTYPE ReadPixel(BYTE* pixel) override;
  HRESULT STDMETHODCALLTYPE SendToSource(std::intptr_t message) override;

  HRESULT STDMETHODCALLTYPE SetNamedValue(const char* key, const char* value) override;
  HRESULT STDMETHODCALLTYPE GetNamedValue(const char* key, char* buffer, int size) override;

 protected:
  explicit CPdibFilter(const FilterClass& row);

  // Provides the work pictures, under the picture lock. A picture is kept when it is large enough
  // and its area is not over four times what is asked, so it can be larger than asked: walk the
  // asked size, never the picture's. An input of 0 by 0 leaves `inputPicture` alone; so does an
  // output for `outputPicture`. False when a picture could not be had; it is null then.
  bool EnsurePictures(int inputW, int inputH, int outputW, int outputH);

  // SetTargetSize of a class whose output has another size than its input: keeps what was told and
  // passes the changed size on.
  HRESULT PassTargetSize(int width, int height, int passedWidth, int passedHeight);

  // A filter linked to itself would pull itself without end.
  bool IsThis(IUnknown* other);
  bool Changed() const { return selfChanged || sourceChanged; }
  void ClearChanges();
  // Reads the `Vis` item and prints it when the filter is hidden. For the classes that have it.
  void ReadVisibility(const char* text);
  const char* VisibilityText() const { return visible ? "" : ",Vis=0"; }

  const FilterClass& classRow;
  KvString name;
  CLSID classId = {};
  PictureInfo input;                     // accepted from the source
  PictureInfo output;                    // given to the destination
  PictureInfo told;                      // what the source said last; becomes `input` in Prepare
  std::atomic<bool> selfChanged{false};  // since rows last went out
  std::atomic<bool> sourceChanged{true};
  std::atomic<bool> abort{false};
  bool visible = true;
  std::int32_t sourceRevision = -1;
  std::int32_t revision = 0;
  double zoom = 1.0;
  std::int32_t mark[2] = {};    // the pair of SetMark
  std::int32_t answer[2] = {};  // the pair that classes answer GetMark with
  platform::ComPtr<IAnimFilterSrcCallsThis> destination;
  platform::ComPtr<IAnimFilterDestCallsThis> source;
  std::unique_ptr<MemoryPicture> inputPicture;
  std::unique_ptr<MemoryPicture> outputPicture;
  std::int32_t order = 5000;

 private:
  void PassInfoOn();

  std::map<KvString, KvString> namedValues;
};
