// CPdibFilter: the base of all filters. Linking, preparing, work pictures; everything but the
// picture work.
#pragma once

#include <atomic>
#include <memory>

#include "core/FilterObject.h"
#include "core/RowLoan.h"
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
// The operations keep the promises of core/AnimInterfaces.h, which an override has to keep as well.
// "Passed on" below means: the neighbour on that side is called with the same arguments and its
// answer is handed back; without a neighbour the answer is S_OK unless another one is named. What a
// neighbour throws becomes a failure code.
class FXBOX_API CPdibFilter : public FilterObject {
 public:
  // Gives back its references to the neighbours and frees the work pictures.
  ~CPdibFilter() override;

  // Hands out the filter or host that rows go to. A chain walks towards the tail with it. E_POINTER
  // without a place for the result, E_NOINTERFACE where nobody is linked.
  HRESULT STDMETHODCALLTYPE GetDestination(REFIID iid, void** result) override;
  // Hands out the filter or host that rows come from, with the same failures.
  HRESULT STDMETHODCALLTYPE GetSource(REFIID iid, void** result) override;
  // Links the destination, and this filter as its source. Called by the chain, never during a pull.
  // Counts as a change of this filter. E_INVALIDARG for the filter itself.
  HRESULT STDMETHODCALLTYPE SetDestination(IUnknown* newDestination) override;
  // Links the source, and this filter as its destination, in the same manner.
  HRESULT STDMETHODCALLTYPE SetSource(IUnknown* newSource) override;
  // Keeps the destination and calls nobody: the other half of the destination's SetSource. Counts
  // as a change of the source. E_INVALIDARG for the filter itself.
  HRESULT STDMETHODCALLTYPE AttachDestination(IUnknown* newDestination) override;
  // Keeps the source and calls nobody: the other half of the source's SetDestination.
  HRESULT STDMETHODCALLTYPE AttachSource(IUnknown* newSource) override;

  // The source tells the size of its picture, on the thread that prepares it. Written to `told`,
  // which becomes `input` in the next Prepare; the destination hears of it then. Never fails.
  HRESULT STDMETHODCALLTYPE SetPictureSize(int width, int height) override;
  // The source tells where the shown part lies. Written to `told`.
  HRESULT STDMETHODCALLTYPE SetOffset(int x, int y) override;
  // The source tells how large the shown part is. Written to `told`.
  HRESULT STDMETHODCALLTYPE SetExtent(int width, int height) override;
  // The source tells the size at full resolution; Prepare calls it again ahead of Commit. Written
  // to `told` and passed on at once.
  HRESULT STDMETHODCALLTYPE SetTargetSize(int width, int height) override;
  // A source asks how large its picture is wanted, to decode no more than that. The destination's
  // answer goes through MapSize; without one above 0 both sizes become -1. E_POINTER without a
  // place for both.
  HRESULT STDMETHODCALLTYPE QuerySize(int* width, int* height, double aspect) override;
  // The source or the host tells the zoom. Kept in `zoom` and passed on. Marks no change.
  HRESULT STDMETHODCALLTYPE SetZoom(double newZoom) override;
  // The source tells a pair of numbers. Kept in `mark` and passed on. Marks no change.
  HRESULT STDMETHODCALLTYPE SetMark(int a, int b) override;
  // Asks the destination for its pair of numbers. Passed on; without a destination both stay.
  HRESULT STDMETHODCALLTYPE GetMark(int* a, int* b) override;
  // The chain is about to change: passed on to the host at the tail, which stops pulling.
  HRESULT STDMETHODCALLTYPE Lock() override;
  // The chain has changed: passed on to the host, which may pull again.
  HRESULT STDMETHODCALLTYPE Unlock() override;
  // Asks the host to fill in the variables of a text. Passed on.
  HRESULT STDMETHODCALLTYPE ExpandText(const char* text, char** expanded) override;
  // Asks the host for the scale at which it prints. Passed on; without a host the scale stays.
  HRESULT STDMETHODCALLTYPE QueryPrintScale(double* scale) override;
  // Passes three numbers on to the host.
  HRESULT STDMETHODCALLTYPE HostCall3(std::intptr_t a, std::intptr_t b, std::intptr_t c) override;
  // Passes a number on to the host. E_FAIL without one.
  HRESULT STDMETHODCALLTYPE HostCall1(std::intptr_t a) override;
  // Passes a number on to the host.
  HRESULT STDMETHODCALLTYPE HostCall1b(std::intptr_t a) override;

  // The destination pulls rows, on any thread, one pull at a time. This one hands over the source's
  // rows as they are; the shapes override it. kPullStopped without a source, after an abort, or
  // when memory ran out; every other answer is the source's. A pull that the source stops marks
  // changes, so that the next one does all the work.
  HRESULT STDMETHODCALLTYPE ReadRows(int destX, int destY, int srcX, int srcY, int width,
                                     int height, BYTE** colourRows, BYTE** maskRows) override;
  // The destination borrows rows for a pull of its own, which counts as a pull of this filter until
  // the rows are given back. Whether it lends, the class says (`Lend`).
  HRESULT STDMETHODCALLTYPE LendRows(int width, int height, const BYTE* const** colourRows,
                                     const BYTE* const** maskRows) override;
  // E_UNEXPECTED where the calling thread has borrowed nothing.
  HRESULT STDMETHODCALLTYPE ReturnRows() override;
  // The destination stops pulls, or allows them again, mostly from another thread than the one that
  // pulls. Passed on to the source first, then to the pull of this filter and to those that wait.
  HRESULT STDMETHODCALLTYPE SetAbort(bool newAbort) override;
  // The destination asks what has changed, before it pulls. Prepares the source, commits when
  // something is pending or was told anew, and tells the destination the output, changed or not.
  // `changed` is only ever set, never cleared. A failure of the source is passed over: its pull
  // will tell.
  HRESULT STDMETHODCALLTYPE Prepare(bool* changed, int* consumerRevision,
                                    bool trackRevision) override;
  // Prepares and tells what comes out; a null pointer is not written to. Always S_OK.
  HRESULT STDMETHODCALLTYPE GetInfo(int* width, int* height, int* offsetX, int* offsetY,
                                    int* extentWidth, int* extentHeight) override;
  // The destination takes one pixel. Passed on; point filters override it. E_FAIL without a
  // source.
  HRESULT STDMETHODCALLTYPE ReadPixel(BYTE* pixel) override;
  // The destination sends a message up to the host at the head. Passed on.
  HRESULT STDMETHODCALLTYPE SendToSource(std::intptr_t message) override;

 protected:
  // A filter of this class, without neighbours; it counts as changed until it was pulled once.
  explicit CPdibFilter(const FilterClass& row);

  // Runs the body of a pull, which gives its answer, alone among the pulls of this filter, on the
  // thread that pulls. What the body throws, exhausted memory included, ends the pull the way an
  // abort does: kPullStopped.
  template <class Body>
  HRESULT RunPull(Body&& body);

  // For pulls alone. Has the source lend all rows of a picture of this size, which are in
  // `borrowed` until the pull ends. False when it does not.
  bool Borrow(int width, int height);
  // Rows of the result that `LendRows` lends, its picture being of this size at least; nothing
  // where they are not in memory. Runs as a pull does, and nothing in it changes what it gave until
  // that pull is over.
  virtual std::optional<base::RowView> Lend(int /*width*/, int /*height*/) { return std::nullopt; }
  // For Lend of a class that hands over its source's rows as they are.
  std::optional<base::RowView> LendBorrowed(int width, int height);

  // For pulls alone. Provides the work pictures, under the process's picture lock. A picture is
  // kept when it is large enough and its area is not over four times what is asked, so it can be
  // larger than asked: walk the asked size, never the picture's. It may hold anything. An input of
  // 0 by 0 leaves `inputPicture` alone; so does an output for `outputPicture`. False when a picture
  // could not be had; it is null then.
  bool EnsurePictures(int inputW, int inputH, int outputW, int outputH);

  // SetTargetSize of a class whose output has another size than its input: keeps what was told and
  // passes the changed size on.
  HRESULT PassTargetSize(int width, int height, int passedWidth, int passedHeight);

  // Whether this filter or its source has changed since rows last went out.
  bool Changed() const { return selfChanged || sourceChanged; }
  // Ends a pull that is complete: clears the changes that were marked when it began, and no later
  // ones.
  void ClearChanges();
  // Reads the `Vis` item, in classes that have one; a text without it changes nothing.
  void ReadVisibility(const char* text);
  // The item as it is printed: nothing while the filter is visible.
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
  RowLoan borrowed;

 private:
  // A pull's turn, as long as it lives; none, and so false, after an abort.
  class Turn {
   public:
    explicit Turn(CPdibFilter& pulled) : filter(pulled), has(pulled.BeginTurn()) {}
    ~Turn() {
      if (has) filter.EndTurn();
    }
    // Leaves the turn to who ends it.
    void Keep() { has = false; }
    Turn(const Turn&) = delete;
    Turn& operator=(const Turn&) = delete;
    explicit operator bool() const { return has; }

   private:
    CPdibFilter& filter;
    bool has;
  };
  bool BeginTurn();
  void EndTurn();

  // Makes what is pending or was told anew count. False when there was nothing.
  bool CommitWhatChanged();
  // A copy that no other thread is writing to.
  PictureInfo Output() const;
  // Tells the destination size, extent and offset of the output.
  void PassInfoOn();

  PullGate gate;
  bool isLending = false;                                    // belongs to the turn
  std::uint32_t selfChangesSeen = 0, sourceChangesSeen = 0;  // when the pull began
};

template <class Body>
HRESULT CPdibFilter::RunPull(Body&& body) {
  const Turn turn(*this);
  if (!turn) return kPullStopped;
  HRESULT result = kPullStopped;
  platform::Guard([&] {
    result = body();
    return S_OK;
  });
  return result;
}
