#include "toolkit/ZNAngleDial.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "toolkit/ZNDialog.h"

namespace {

using toolkit::Key;
using toolkit::MouseAction;

constexpr double kCoarseStep = 15;

double Radians(double degrees) {
  return degrees * std::numbers::pi / 180;
}

toolkit::Spot OnCircle(toolkit::Spot centre, double radius, double degrees) {
  return {centre.x + radius * std::cos(Radians(degrees)),
          centre.y - radius * std::sin(Radians(degrees))};
}

}  // namespace

CZNAngleDial::CZNAngleDial(CZNDialog& dialog, const std::string& name, const ValueRange& dialRange,
                           double turn)
    : CZNCanvas(dialog, name), range(dialRange), fullTurn(turn) {
  SetValue(range.Nearest(0));
}

void CZNAngleDial::SetValue(double newValue) {
  value = newValue;
  SetValueText(NumberText(value, range.decimals));
  Redraw();
}

double CZNAngleDial::DegreesAt(toolkit::Size canvas, toolkit::Point place) {
  const double x = place.x + 0.5 - canvas.width / 2.0;
  const double y = canvas.height / 2.0 - (place.y + 0.5);
  const double degrees = std::atan2(y, x) * 180 / std::numbers::pi;
  return degrees <= -180 ? degrees + 360 : degrees;
}

// A turn more or less brings the angle into the range where that is possible.
void CZNAngleDial::TakeDegrees(double degrees) {
  double wanted = degrees * fullTurn / 360;
  while (wanted < range.least && wanted + fullTurn <= range.greatest) wanted += fullTurn;
  while (wanted > range.greatest && wanted - fullTurn >= range.least) wanted -= fullTurn;
  wanted = range.Nearest(wanted);
  if (wanted == value) return;
  SetValue(wanted);
  if (onChange) onChange();
}

void CZNAngleDial::HandleMouse(const toolkit::MouseEvent& event) {
  if (event.action == MouseAction::Press) isHeld = event.button == 1;
  if (!isHeld) return;
  if (event.action == MouseAction::Release) {
    isHeld = false;
    return;
  }
  const double step = event.shift ? kCoarseStep : 1;
  const double degrees = DegreesAt({Where().width, Where().height}, event.place);
  TakeDegrees(std::round(degrees / step) * step);
}

bool CZNAngleDial::HandleKey(const toolkit::KeyEvent& event) {
  switch (event.key) {
    case Key::Left:
    case Key::Up:
      TakeDegrees(Degrees() + 1);
      return true;
    case Key::Right:
    case Key::Down:
      TakeDegrees(Degrees() - 1);
      return true;
    case Key::PageUp:
      TakeDegrees(Degrees() + 10);
      return true;
    case Key::PageDown:
      TakeDegrees(Degrees() - 10);
      return true;
    case Key::Home:
      TakeDegrees(0);
      return true;
    default:
      return false;
  }
}

bool CZNAngleDial::HandleWheel(double notches, bool hasFocus) {
  if (hasFocus) TakeDegrees(Degrees() + std::round(notches));
  return hasFocus;
}

void CZNAngleDial::HandlePaint(toolkit::Painter& painter) {
  const toolkit::Size area = painter.Area();
  const toolkit::Look look = Dialog()->System().CurrentLook();
  const toolkit::Spot centre = {area.width / 2.0, area.height / 2.0};
  const double radius = std::max(1.0, std::min(area.width, area.height) / 2.0 - 2);
  painter.FillRect({0, 0, area.width, area.height}, look.window);
  painter.FillCircle(centre, radius, look.field);
  painter.DrawCircle(centre, radius, look.line, 1.5);
  for (int mark = 0; mark < 360; mark += 45) {
    const toolkit::Spot line[] = {OnCircle(centre, radius * 0.85, mark),
                                  OnCircle(centre, radius * 0.95, mark)};
    painter.DrawLines(line, look.text, 1);
  }
  const toolkit::Spot tip = OnCircle(centre, radius * 0.75, Degrees());
  const toolkit::Spot hand[] = {centre, tip};
  painter.DrawLines(hand, look.accent, 2.5);
  painter.FillCircle(tip, radius * 0.1, look.accent);
}
