// Dust: small specks are replaced by the mean of what is around them.
#pragma once

#include <span>
#include <utility>

#include "core/FilterShapes.h"

struct StaubParameters {
  std::int32_t maxRgnSize = 5;      // pixels; what has more of its kind in its window is no dust
  std::int32_t grayTolerance = 45;  // of the sum of the channels, either way

  static StaubParameters ActiveStart() { return {-1, -1}; }
  static constexpr int kLeastBuffer = 31;
  static std::span<const ParameterRow<StaubParameters>> Rows();
};

extern const FilterClass kStaubClass;

// Has a pull of its own: it sees the request alone and keeps its result. A later request that is no
// larger gets the rows that are kept, whatever its place in the picture, until something changes.
// Hosts ask for the whole picture.
class CStaubFilter final : public ParameterFilter<InPlaceFilter, StaubParameters> {
 public:
  explicit CStaubFilter(const FilterClass& row) : ParameterFilter(row) {}

  HRESULT STDMETHODCALLTYPE ReadRows(int destX, int destY, int srcX, int srcY, int width,
                                     int height, BYTE** colourRows, BYTE** maskRows) override;

 private:
  enum class Outcome { Done, StoppedBefore, StoppedWithin };

  // Pulls the request and cleans it. It must lie in the picture.
  Outcome Rebuild(const PullRectangle& request);
  // Has what is asked for in the kept picture.
  void TakePicture(PullRectangle kept);
  // False when an abort stopped it.
  bool CopyOut(const PullRectangle& request) const;
  std::pair<int, int> PictureSize() const;

  bool isWhole = false;  // the kept rows; not while they are made anew
};
