// Smoked glass: blurs a rectangle of the picture and lays a colour on it.
#pragma once

#include <span>
#include <vector>

#include "core/FilterShapes.h"
#include "filters/frames/MatParameters.h"

// Sizes are percentages of the rectangle that is asked for; mode and total size are kept in the
// text alone.
struct RauchglasParameters {
  bool bordersizeOn = true;
  std::int32_t borderhori = 75, borderverti = 75;
  std::int32_t totalHori = 150, totalVerti = 150;
  std::int32_t radius = 5;
  std::uint8_t red = 180, green = 180, blue = 180;
  std::int32_t poscorhori = 0, poscorverti = 0;
  std::int32_t transparency = 0;

  static RauchglasParameters ActiveStart() {
    return {false, 0, 0, 0, 0, 0, 255, 255, 255, 0, 0, 255};
  }
  static constexpr int kLeastBuffer = 221;
  static constexpr MatWords kWords = {.leastSize = 0,
                                      .greatestSize = 100,
                                      .leastShift = -100,
                                      .greatestShift = 100,
                                      .mode = "kept, without effect",
                                      .borderhori = "width of the pane, percent",
                                      .borderverti = "height of the pane, percent",
                                      .totalHori = "kept, without effect",
                                      .totalVerti = "kept, without effect",
                                      .radius = "strength of the blur, percent",
                                      .shiftHori = "place of the pane, -100 left, 100 right",
                                      .shiftVerti = "place of the pane, -100 below, 100 above",
                                      .transparency = "of the colour"};
  static std::span<const ParameterRow<RauchglasParameters>> Rows();
};

extern const FilterClass kRauchglasClass;

// The pane depends on what is asked for, not on the picture: a pull in bands has one in each.
class CRauchglasFilter final : public ParameterFilter<RectangleFilter, RauchglasParameters> {
 public:
  explicit CRauchglasFilter(const FilterClass& row) : ParameterFilter(row) {}

 private:
  void PrintText(const RauchglasParameters& parameters, char* buffer, int size) override;
  bool ChangeRectangle(const PullRectangle& rectangle) override;
  bool NeedsMask() const override { return true; }
  bool Blur(const PullRectangle& rectangle, const PullRectangle& pane, int radius);
  bool Tint(const PullRectangle& pane, const RauchglasParameters& parameters) const;

  std::vector<BYTE*> colours, masks;  // the rows of the rectangle; kept for their room
};
