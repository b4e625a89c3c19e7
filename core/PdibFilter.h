// CPdibFilter: the base of all filters. Linking, preparing, work pictures; everything but the
// picture work.
#pragma once

#include <atomic>
#include <memory>

#include "core/FilterObject.h"
#include "picture/MemoryPicture.h"
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
// (writes `output`, which comes as a copy of `input`), SetTargetSize (forwards the changed size)
// and MapSize (its inverse).
//
// Any thread may call any operation. Fields are guarded by one lock (HoldState), which nobody holds
// during a call to a neighbour: whoever sets parameters or prepares never waits for a pull that
// waits for its source. Pulls of one filter wait for each other, and an abort ends those that wait.
// Pending parameters become active in Commit alone, and a pull reads active ones. Links are the
// chain's: nobody changes them during a pull.
//
// The operations do what core/AnimInterfaces.h says of them. What is told below is what this class
// makes of them, so that an override knows what it replaces.
class FXBOX_API CPdibFilter : public FilterObject {
 public:
  ~CPdibFilter() override;

  HRESULT STDMETHODCALLTYPE GetDestination(REFIID iid, void** result) override;
  HRESULT STDMETHODCALLTYPE GetSource(REFIID iid, void** result) override;
  // All four count as a change of the picture, and exchange the reference only when it is another
  // object's. E_INVALIDARG for the filter itself.
  HRESULT STDMETHODCALLTYPE SetDestination(IUnknown* newDestination) override;
  HRESULT STDMETHODCALLTYPE SetSource(IUnknown* newSource) override;
  HRESULT STDMETHODCALLTYPE AttachDestination(IUnknown* newDestination) override;
  HRESULT STDMETHODCALLTYPE AttachSource(IUnknown* newSource) override;

  // These write `told`. The last one passes the size on as well.
  HRESULT STDMETHODCALLTYPE SetPictureSize(int width, int height) override;
  HRESULT STDMETHODCALLTYPE SetOffset(int x, int y) override;
  HRESULT STDMETHODCALLTYPE SetExtent(int width, int height) override;
  HRESULT STDMETHODCALLTYPE SetTargetSize(int width, int height) override;
  // MapSize of what the destination answers, where that is above 0.
  HRESULT STDMETHODCALLTYPE QuerySize(int* width, int* height, double aspect) override;
  // Keep what they are given and pass it on. Neither marks a change.
  HRESULT STDMETHODCALLTYPE SetZoom(double newZoom) override;
  HRESULT STDMETHODCALLTYPE SetMark(int a, int b) override;
  // The destination's answer; without one 0, and E_FAIL of HostCall1.
  HRESULT STDMETHODCALLTYPE GetMark(int* a, int* b) override;
  HRESULT STDMETHODCALLTYPE Lock() override;
  HRESULT STDMETHODCALLTYPE Unlock() override;
  HRESULT STDMETHODCALLTYPE ExpandText(const char* text, char** expanded) override;
  HRESULT STDMETHODCALLTYPE QueryPrintScale(double* scale) override;
  HRESULT STDMETHODCALLTYPE HostCall3(std::intptr_t a, std::intptr_t b, std::intptr_t c) override;
  HRESULT STDMETHODCALLTYPE HostCall1(std::intptr_t a) override;
  HRESULT STDMETHODCALLTYPE HostCall1b(std::intptr_t a) override;

  // The pull of a filter that changes nothing. 1 without a source.
  HRESULT STDMETHODCALLTYPE ReadRows(int destX, int destY, int srcX, int srcY, int width,
                                     int height, BYTE** colourRows, BYTE** maskRows) override;
  // Reaches the source first, then the pull of this filter and those that wait for their turn.
  HRESULT STDMETHODCALLTYPE SetAbort(bool newAbort) override;
  // Prepares the source, commits when something is pending or was told anew, and tells the
  // destination the output, changed or not.
  HRESULT STDMETHODCALLTYPE Prepare(bool* changed, int* consumerRevision,
                                    bool trackRevision) override;
  HRESULT STDMETHODCALLTYPE GetInfo(int* width, int* height, int* offsetX, int* offsetY,
                                    int* extentWidth, int* extentHeight) override;
  // The source's answer as it is; without one E_FAIL for a pixel, 0 for a message.
  HRESULT STDMETHODCALLTYPE ReadPixel(BYTE* pixel) override;
  HRESULT STDMETHODCALLTYPE SendToSource(std::intptr_t message) override;

 protected:
  explicit CPdibFilter(const FilterClass& row);

  // Runs the body of a pull, which gives its answer, alone among the pulls of this filter. Every
  // failure, exhausted memory included, ends a pull the way an abort does.
  template <class Body>
  HRESULT RunPull(Body&& body);

  // For pulls alone. Provides the work pictures, under the process's picture lock. A picture is
  // kept when it is large enough and its area is not over four times what is asked, so it can be
  // larger than asked: walk the asked size, never the picture's. It may hold anything. An input of
  // 0 by 0 leaves `inputPicture` alone; so does an output for `outputPicture`. False when a picture
  // could not be had; it is null then.
  bool EnsurePictures(int inputW, int inputH, int outputW, int outputH);

  // SetTargetSize of a class whose output has another size than its input: keeps what was told and
  // passes the changed size on.
  HRESULT PassTargetSize(int width, int height, int passedWidth, int passedHeight);

  bool Changed() const { return selfChanged || sourceChanged; }
  // As far as they were set when the pull began.
  void ClearChanges();
  // Reads the `Vis` item and prints it when the filter is hidden. For the classes that have it.
  void ReadVisibility(const char* text);
  const char* VisibilityText() const { return visible ? "" : ",Vis=0"; }

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
