// The two ends of a chain as a test's host writes them: a picture source and a destination.
#pragma once

#include <atomic>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "core/AnimInterfaces.h"
#include "core/AnimRowLender.h"
#include "platform/component/ComObject.h"
#include "platform/component/ComPtr.h"
#include "tests/support/GuardedRows.h"
#include "tests/support/Pictures.h"

namespace testing_support {

// One request for rows.
struct RowRequest {
  int destX = 0, destY = 0, srcX = 0, srcY = 0, width = 0, height = 0;
  bool operator==(const RowRequest&) const = default;
};
void PrintTo(const RowRequest& request, std::ostream* out);

// Serves a picture. Prepare may come from any thread, ReadRows from one at a time. A request is cut
// to the picture: what lies outside is not written.
class TestSource final
    : public platform::ComObject<TestSource, IAnimFilterDestCallsThis, IAnimRowLender> {
 public:
  explicit TestSource(Picture served) : picture(std::move(served)) {}
  IUnknown* Unknown() { return static_cast<IAnimFilterDestCallsThis*>(this); }

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** result) override;
  HRESULT STDMETHODCALLTYPE ReadRows(int destX, int destY, int srcX, int srcY, int width,
                                     int height, BYTE** colourRows, BYTE** maskRows) override;
  // Lends rows that hold something else as soon as they are given back.
  HRESULT STDMETHODCALLTYPE LendRows(int width, int height, const BYTE* const** colourRows,
                                     const BYTE* const** maskRows) override;
  HRESULT STDMETHODCALLTYPE ReturnRows() override;
  HRESULT STDMETHODCALLTYPE SetAbort(bool abort) override;
  // Tells the picture's size, and the target when there is one. Changed when the revision differs.
  HRESULT STDMETHODCALLTYPE Prepare(bool* changed, int* consumer, bool trackRevision) override;
  HRESULT STDMETHODCALLTYPE GetInfo(int*, int*, int*, int*, int*, int*) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE AttachDestination(IUnknown* newDestination) override;
  HRESULT STDMETHODCALLTYPE ReadPixel(BYTE* answer) override;
  HRESULT STDMETHODCALLTYPE SendToSource(std::intptr_t message) override;

  Picture picture;
  BYTE pixel[4] = {};
  int extentWidth = 0, extentHeight = 0;  // 0: the picture's size
  int offsetX = 0, offsetY = 0;
  int targetWidth = 0, targetHeight = 0;  // 0: nothing is told
  int revision = 1;                       // raise it when the picture changes

  // What the next calls of ReadRows answer instead of 0, in turn. Rows are delivered all the same.
  std::deque<HRESULT> results;
  bool throwsInReadRows = false;
  // Runs after each row that is delivered, with the rows so far in this call; for an abort in the
  // middle.
  std::function<void(int rows)> onRow;

  bool answersEveryQuery = false;  // with its first interface, whatever it is asked for
  bool lends = false;
  // What somebody wrote to lent rows, or asked for before they were back; empty while nobody did.
  std::string misuseOfLent;
  int loans = 0;                      // until now
  std::unique_ptr<GuardedRows> lent;  // while they are
  std::function<void()> onLend;       // runs when rows were lent

  std::vector<RowRequest> requests;
  std::vector<std::intptr_t> messages;
  int pixelCount = 0;
  std::vector<bool> aborts;
  std::vector<std::pair<int, bool>> prepares;  // revision and flag of each Prepare
  platform::ComPtr<IAnimFilterSrcCallsThis> destination;

 private:
  bool IsStopped();

  std::mutex noting;
  std::vector<BYTE> opaqueRow;
  std::vector<BYTE*> opaqueRows;
};

// Records what it is told, by any thread.
class TestDestination final : public platform::ComObject<TestDestination, IAnimFilterSrcCallsThis> {
 public:
  HRESULT STDMETHODCALLTYPE SetPictureSize(int w, int h) override;
  HRESULT STDMETHODCALLTYPE SetOffset(int x, int y) override { return Record("SetOffset", x, y); }
  HRESULT STDMETHODCALLTYPE SetExtent(int w, int h) override { return Record("SetExtent", w, h); }
  HRESULT STDMETHODCALLTYPE SetTargetSize(int w, int h) override;
  HRESULT STDMETHODCALLTYPE QuerySize(int* w, int* h, double aspect) override;
  HRESULT STDMETHODCALLTYPE SetZoom(double newZoom) override;
  HRESULT STDMETHODCALLTYPE SetMark(int a, int b) override { return Record("SetMark", a, b); }
  HRESULT STDMETHODCALLTYPE GetMark(int* a, int* b) override {
    *a = 11;
    *b = 12;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE Lock() override;
  HRESULT STDMETHODCALLTYPE Unlock() override;
  HRESULT STDMETHODCALLTYPE AttachSource(IUnknown* newSource) override;
  HRESULT STDMETHODCALLTYPE ExpandText(const char* text, char** expanded) override;
  HRESULT STDMETHODCALLTYPE QueryPrintScale(double* scale) override;
  HRESULT STDMETHODCALLTYPE HostCall3(std::intptr_t a, std::intptr_t b, std::intptr_t c) override {
    return Record("HostCall3", a, b, c);
  }
  HRESULT STDMETHODCALLTYPE HostCall1(std::intptr_t a) override { return Record("HostCall1", a); }
  HRESULT STDMETHODCALLTYPE HostCall1b(std::intptr_t a) override { return Record("HostCall1b", a); }

  // The calls with their arguments, such as "SetPictureSize 3 4"; Lock and Unlock stand in `locks`.
  std::vector<std::string> calls;
  std::vector<std::string> TakeCalls() {
    const std::lock_guard lock(recording);
    return std::exchange(calls, {});
  }
  std::string expansion;  // what ExpandText answers; empty for no answer
  // "L" and "U" in turn.
  std::string locks;
  std::string TakeLocks() { return std::exchange(locks, {}); }
  std::function<void()> onUnlock;

  std::atomic<int> width{0}, height{0};  // the last SetPictureSize
  std::atomic<int> targetWidth{0}, targetHeight{0};
  double zoom = 0;
  int wantedWidth = -1, wantedHeight = -1;
  double askedAspect = 0;
  platform::ComPtr<IAnimFilterDestCallsThis> source;

 private:
  template <class... Numbers>
  HRESULT Record(const char* name, Numbers... numbers) {
    std::string text = name;
    (text.append(" ").append(std::to_string(numbers)), ...);
    const std::lock_guard lock(recording);
    calls.push_back(text);
    return S_OK;
  }

  std::mutex recording;
};

}  // namespace testing_support
