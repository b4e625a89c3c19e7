// Remove red eyes: fills the reflections in pupils at the places that were clicked on.
#pragma once

#include "core/FilterShapes.h"
#include "editing/RedEyeParameters.h"

extern const FilterClass kRedEyeClass;

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

  static std::vector<ParameterDescription> Describe() { return DescribeClicks(); }

 private:
  void ReadText(const char* text) override { pending = ReadClicks(text); }
  bool ChangeRectangle(const PullRectangle& rectangle) override;
};
