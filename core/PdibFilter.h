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
#include "core/FilterLocks.h"
#include "picture/MemoryPicture.h"
#include "platform/component/ComObject.h"
#include "platform/component/ComPtr.h"
#include "platform/component/Guard.h"

// What describes a picture at a point of the chain, in pixels.
struct PictureInfo {
  std::int32_t width = 0, height = 0;
  std::int32_t extentWidth = 0, extentHeight = 0;    // the part that is shown
  std::int32_t offsetX = 0, offsetY = 0;             // and where it lies
  std::int32_t targetWidth = -1, targetHeight = -1;  // the same picture at full resolution

  bool operator==(const PictureInfo&) const = default;
};
static_assert(sizeof(PictureInfo) == 32);

// What a pull answers when it is not complete.
inline constexpr HRESULT kPullStopped = 1;

// Derive from one of the three shapes in core/FilterShapes.h, which own the pull, rather than from
// this class directly. A filter whose output has another size than its input overrides Commit
// (writes `output`), SetTargetSize (forwards the changed size) and MapSize (its inverse).
//
// Any thread may call any operation. Fields are guarded by one lock (HoldState), which nobody holds
// during a call to a neighbour: whoever sets parameters or prepares never waits for a pull that
// waits for its source. Pulls of one filter wait for each other, and an abort ends those that wait.
// Pending parameters become active in Commit alone, and a pull reads active ones. Links are the
// chain's: nobody changes them during a pull.
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

  // The pull of a filter that changes nothing.
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

  // Runs the body of a pull, which gives its answer, alone among the pulls of this filter. Every
  // failure, exhausted memory included, ends a pull the way an abort does.
  template <class Body>
  HRESULT RunPull(Body&& body);

  // For everything that reads or writes the fields below and may run beside another thread; a class
  // guards its own with it.
  [[nodiscard]] std::unique_lock<StateLock> HoldState() const { return std::unique_lock(state); }

  // For pulls alone. Provides the work pictures, under the process's picture lock. A picture is
  // kept when it is large enough and its area is not over four times what is asked, so it can be
  // larger than asked: walk the asked size, never the picture's. An input of 0 by 0 leaves
  // `inputPicture` alone; so does an output for `outputPicture`. False when a picture could not be
  // had; it is null then.
  bool EnsurePictures(int inputW, int inputH, int outputW, int outputH);

  // SetTargetSize of a class whose output has another size than its input: keeps what was told and
  // passes the changed size on.
  HRESULT PassTargetSize(int width, int height, int passedWidth, int passedHeight);

  // A filter linked to itself would pull itself without end.
  bool IsThis(IUnknown* other);
  bool Changed() const { return selfChanged || sourceChanged; }
  // As far as they were set when the pull began.
  void ClearChanges();
  // Reads the `Vis` item and prints it when the filter is hidden. For the classes that have it.
  void ReadVisibility(const char* text);
  const char* VisibilityText() const { return visible ? "" : ",Vis=0"; }

  const FilterClass& classRow;
  KvString name;
  CLSID classId = {};
  PictureInfo input;              // accepted from the source
  PictureInfo output;             // given to the destination
  PictureInfo told;               // what the source said last; becomes `input` in Prepare
  ChangeFlag selfChanged{false};  // since rows last went out
  ChangeFlag sourceChanged{true};
  std::atomic<bool> abort{false};
  std::atomic<bool> visible{true};
  std::atomic<std::int32_t> sourceRevision{-1};
  std::int32_t revision = 0;  // under the process's revision lock
  std::atomic<double> zoom{1.0};
  std::int32_t mark[2] = {};    // the pair of SetMark
  std::int32_t answer[2] = {};  // the pair that classes answer GetMark with
  platform::ComPtr<IAnimFilterSrcCallsThis> destination;
  platform::ComPtr<IAnimFilterDestCallsThis> source;
  std::unique_ptr<MemoryPicture> inputPicture;  // the work pictures belong to the pull
  std::unique_ptr<MemoryPicture> outputPicture;
  std::int32_t order = 5000;
  mutable StateLock state;  // of the fields that are neither atomic nor the pull's

 private:
  // A pull's turn, as long as it lives.
  class Turn {
   public:
    explicit Turn(CPdibFilter& pulled) : filter(pulled), has(pulled.gate.Enter(pulled.abort)) {}
    ~Turn() {
      if (has) filter.gate.Leave();
    }
    Turn(const Turn&) = delete;
    Turn& operator=(const Turn&) = delete;
    explicit operator bool() const { return has; }

   private:
    CPdibFilter& filter;
    const bool has;
  };

  // False when there was nothing to commit.
  bool CommitWhatChanged();
  PictureInfo Output() const;
  void PassInfoOn();

  std::map<KvString, KvString> namedValues;
  PullGate gate;
  std::uint32_t selfChangesSeen = 0, sourceChangesSeen = 0;  // when the pull began
};

template <class Body>
HRESULT CPdibFilter::RunPull(Body&& body) {
  const Turn turn(*this);
  if (!turn) return kPullStopped;
  selfChangesSeen = selfChanged.Count();
  sourceChangesSeen = sourceChanged.Count();
  HRESULT result = kPullStopped;
  platform::Guard([&] {
    result = body();
    return S_OK;
  });
  return result;
}
