// Filters, a creator and a linked chain for tests.
#pragma once

#include <string>
#include <vector>

#include "core/PdibFilter.h"
#include "tests/support/GuardedRows.h"
#include "tests/support/TestEnds.h"

namespace testing_support {

template <class Filter>
FilterObject* MakeFilter(const FilterClass& row) {
  return new Filter(row);
}

// A class row of its own, with a class id that nobody has registered. It lives as long as the test
// program.
const FilterClass& TestClass(const char* progId, int order = 5000, int sortKey = 0,
                             FilterObject* (*make)(const FilterClass&) = nullptr);

// Keeps its text, passes rows through and counts what is done to it. Throws where it is told to.
class RecordingFilter : public CPdibFilter {
 public:
  explicit RecordingFilter(const FilterClass& row) : CPdibFilter(row) {
    ++alive;
    made.push_back(row.progId);
  }
  ~RecordingFilter() override { --alive; }

  HRESULT STDMETHODCALLTYPE GetName(char* buffer, int size) override;
  HRESULT STDMETHODCALLTYPE GetOrder(int* result) override;
  bool IsDirty() override { return pending != active; }
  void Commit() override { active = pending; }
  HRESULT STDMETHODCALLTYPE SetParameter(const char* text, int flag) override;
  HRESULT STDMETHODCALLTYPE GetParameter(char* buffer, int size) override;
  HRESULT STDMETHODCALLTYPE GetActiveParameter(char* buffer, int size) override;

  enum class Throws { Nowhere, SetParameter, GetName, GetOrder };
  static inline Throws throws = Throws::Nowhere;
  static inline int alive = 0;
  // Of all objects, in turn: their names, and what SetParameter was given.
  static inline std::vector<std::string> made, given;

  std::string pending, active;
};

// A source, filters and a destination, linked in this order; unlinked at the end, so that all are
// freed.
class Rig {
 public:
  Rig(Picture picture, std::vector<platform::ComPtr<FilterObject>> linked);
  // With one filter, of a class.
  Rig(Picture picture, const FilterClass& row);
  ~Rig();
  Rig(const Rig&) = delete;
  Rig& operator=(const Rig&) = delete;

  FilterObject& Filter(std::size_t index = 0) { return *filters[index].Get(); }
  FilterObject& Tail() { return *filters.back().Get(); }
  // Prepares the tail for a consumer that keeps its revision. True when the picture changed.
  bool Prepare();
  // Prepares, then pulls the whole result with one call.
  Picture PullWhole();
  HRESULT Pull(GuardedRows& rows, const RowRequest& request);
  // What a pull of this rectangle gives, which writes nothing else.
  Picture PullPart(const RowRequest& request);

  platform::ComPtr<TestSource> source;
  platform::ComPtr<TestDestination> destination;
  int revision = -1;

 private:
  std::vector<platform::ComPtr<FilterObject>> filters;
};

platform::ComPtr<FilterObject> Make(const FilterClass& row);

// The part of a picture that a request asks for.
Picture PartOf(const Picture& whole, const RowRequest& request);
// Any rectangle of a picture, to a place at most this far from the start of the rows.
RowRequest AnyRequest(std::mt19937& random, const Picture& picture, int farthest);

// The texts of a filter, empty when it wrote nothing.
std::string PendingText(IAnimFilterParameter& filter, int size = 4096);
std::string ActiveText(IAnimFilterParameter& filter, int size = 4096);

}  // namespace testing_support
