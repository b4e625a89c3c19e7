// Remove red eyes: fills the reflections in pupils at the places that were clicked on.
#pragma once

#include <array>
#include <span>

#include "core/FilterShapes.h"
#include "filters/tools/RedEye.h"

struct RedEyeParameters {
  static constexpr int kMostClicks = 128;

  std::int32_t count = 0;
  std::array<kernels::RedEyeClick, kMostClicks> clicks = {};

  static RedEyeParameters ActiveStart() { return {}; }
  static constexpr int kLeastBuffer = 501;
  // Without those of the clicks.
  static std::span<const ParameterRow<RedEyeParameters>> Rows();
};

// Every pull searches the whole picture anew, and nothing is kept but room. New clicks are no
// change by themselves: the host calls Commit after it has set them.
class CRedEyeFilter final : public ParameterFilter<RectangleFilter, RedEyeParameters> {
 public:
  explicit CRedEyeFilter(const FilterClass& row)
      : ParameterFilter(row, {.sourceResult = SourceResult::Ignored, .abortMarksChange = false}) {}

  bool IsDirty() override { return false; }
  // A text that is longer than the buffer is cut, and the call fails.
  HRESULT STDMETHODCALLTYPE GetParameter(char* buffer, int size) override;
  HRESULT STDMETHODCALLTYPE GetActiveParameter(char* buffer, int size) override;

  // With the keys of the first click for those of all.
  static std::vector<ParameterDescription> Describe();

 private:
  void ReadText(const char* text) override;
  bool ChangeRectangle(const PullRectangle& rectangle) override;
};
