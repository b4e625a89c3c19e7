// CZNAngleDial: a round dial for an angle or a direction.
#pragma once

#include "toolkit/Painter.h"
#include "toolkit/ZNControls.h"

// 0 points to the right, angles grow counter-clockwise. The mouse turns the hand to where it is, in
// steps of a degree, or of 15 degrees with Shift held; arrow keys turn by a degree, page keys by
// ten.
class FXBOX_API CZNAngleDial : public CZNCanvas {
 public:
  // `fullTurn` is the value of a whole turn: 360 for degrees.
  CZNAngleDial(CZNDialog& dialog, const std::string& name, const ValueRange& dialRange,
               double turn);

  double Value() const { return value; }
  void SetValue(double newValue);

  std::function<void()> onChange;

  // The degree that a place of a canvas of this size points at, -180 (not included) to 180.
  static double DegreesAt(toolkit::Size canvas, toolkit::Point place);

 private:
  void HandleMouse(const toolkit::MouseEvent& event) override;
  bool HandleKey(const toolkit::KeyEvent& event) override;
  bool HandleWheel(double notches, bool hasFocus) override;
  void HandlePaint(toolkit::Painter& painter) override;
  void TakeDegrees(double degrees);
  double Degrees() const { return value * 360 / fullTurn; }

  ValueRange range;
  double fullTurn;
  double value = 0;
  bool isHeld = false;
};
