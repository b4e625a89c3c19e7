#include "toolkit/ZNCropView.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

#include "toolkit/Painter.h"
#include "toolkit/ZNDialog.h"

namespace {

using toolkit::Key;
using toolkit::MouseAction;

constexpr int kMargin = 6;       // units around the picture
constexpr int kReach = 7;        // of a handle
constexpr double kLeast = 0.01;  // of a side
constexpr double kKeyStep = 0.01;
constexpr double kUnknownForm = 1.5;
constexpr double kParts = 10000;  // edges are kept in these

double Rounded(double share) {
  return std::round(share * kParts) / kParts;
}

}  // namespace

CZNCropView::CZNCropView(CZNDialog& dialog, const std::string& name,
                         std::array<const char*, 4> edgeKeys)
    : CZNPanelCanvas(dialog, name), keys(edgeKeys) {}

void CZNCropView::Show(const PanelValues& values) {
  edges = {values.Number(keys[0]), values.Number(keys[1]), values.Number(keys[2]),
           values.Number(keys[3])};
  SetValueText(NumberText(100 * (edges.right - edges.left), 1) + " x " +
               NumberText(100 * (edges.top - edges.bottom), 1) + " %");
  Redraw();
}

void CZNCropView::Store(PanelValues& values) const {
  values.SetNumber(keys[0], edges.left);
  values.SetNumber(keys[1], edges.right);
  values.SetNumber(keys[2], edges.bottom);
  values.SetNumber(keys[3], edges.top);
}

void CZNCropView::SetPictureSize(toolkit::Size size) {
  picture = size;
  Redraw();
}

void CZNCropView::SetRatio(double width_over_height) {
  ratio = width_over_height;
}

toolkit::Rect CZNCropView::PicturePlace(toolkit::Size canvas) const {
  const bool isKnown = picture.width > 0 && picture.height > 0;
  const double form = isKnown ? double(picture.width) / picture.height : kUnknownForm;
  const int margin = Dialog() && Dialog()->Native() ? Dialog()->System().Scaled(kMargin) : kMargin;
  const int room_x = std::max(1, canvas.width - 2 * margin);
  const int room_y = std::max(1, canvas.height - 2 * margin);
  const double scale = std::min(room_x / form, double(room_y));
  const int width = std::max(1, static_cast<int>(scale * form));
  const int height = std::max(1, static_cast<int>(scale));
  return {(canvas.width - width) / 2, (canvas.height - height) / 2, width, height};
}

toolkit::Rect CZNCropView::CropPlace() const {
  const toolkit::Rect place = PicturePlace({Where().width, Where().height});
  const auto x = [&](double share) { return place.x + static_cast<int>(share * place.width); };
  const auto y = [&](double share) {
    return place.y + static_cast<int>((1 - share) * place.height);
  };
  return {x(edges.left), y(edges.top), x(edges.right) - x(edges.left),
          y(edges.bottom) - y(edges.top)};
}

int CZNCropView::Reach() const {
  return Dialog() && Dialog()->Native() ? Dialog()->System().Scaled(kReach) : kReach;
}

// The nearer one of two opposite sides that are both in reach.
int CZNCropView::HandleAt(toolkit::Point place) const {
  const toolkit::Rect crop = CropPlace();
  const int reach = Reach();
  const toolkit::Rect around = {crop.x - reach, crop.y - reach, crop.width + 2 * reach,
                                crop.height + 2 * reach};
  if (!around.Contains(place)) return kNothing;
  const auto side = [&](int low, int high, int at, int lowBit, int highBit) {
    const int toLow = std::abs(at - low), toHigh = std::abs(at - high);
    if (std::min(toLow, toHigh) > reach) return 0;
    return toLow < toHigh ? lowBit : highBit;
  };
  const int handle = side(crop.x, crop.Right(), place.x, kLeft, kRight) |
                     side(crop.y, crop.Bottom(), place.y, kTop, kBottom);
  return handle ? handle : kWhole;
}

void CZNCropView::Take(editing::CropEdges wanted) {
  if (ratio > 0 && picture.width > 0 && picture.height > 0) {
    editing::LockRatio(ratio, picture.width, picture.height, wanted);
  }
  wanted = {Rounded(wanted.left), Rounded(wanted.right), Rounded(wanted.bottom),
            Rounded(wanted.top)};
  const bool isSame = wanted.left == edges.left && wanted.right == edges.right &&
                      wanted.bottom == edges.bottom && wanted.top == edges.top;
  if (isSame) return;
  edges = wanted;
  Redraw();
  if (onChange) onChange();
}

// From where the press was: a drag out and back ends where it began.
void CZNCropView::MoveBy(double dx, double dy) {
  editing::CropEdges wanted = pressed;
  if (held == kWhole) {
    dx = std::clamp(dx, -pressed.left, std::max(-pressed.left, 1 - pressed.right));
    dy = std::clamp(dy, -pressed.bottom, std::max(-pressed.bottom, 1 - pressed.top));
  }
  const auto moved = [](double edge, double by, double least, double greatest) {
    return std::clamp(edge + by, std::min(least, greatest), greatest);
  };
  const bool isWhole = held == kWhole;
  if (held & kLeft) wanted.left = moved(pressed.left, dx, 0, isWhole ? 1 : pressed.right - kLeast);
  if (held & kRight)
    wanted.right = moved(pressed.right, dx, isWhole ? 0 : pressed.left + kLeast, 1);
  if (held & kBottom) {
    wanted.bottom = moved(pressed.bottom, dy, 0, isWhole ? 1 : pressed.top - kLeast);
  }
  if (held & kTop) wanted.top = moved(pressed.top, dy, isWhole ? 0 : pressed.bottom + kLeast, 1);
  Take(wanted);
}

void CZNCropView::HandleMouse(const toolkit::MouseEvent& event) {
  if (event.action == MouseAction::Press && event.button == 1) {
    held = HandleAt(event.place);
    pressed = edges;
    pressedAt = event.place;
    return;
  }
  if (held == kNothing) return;
  const toolkit::Rect place = PicturePlace({Where().width, Where().height});
  if (event.action == MouseAction::Move) {
    MoveBy(double(event.place.x - pressedAt.x) / place.width,
           double(pressedAt.y - event.place.y) / place.height);
  } else if (event.action == MouseAction::Release) {
    held = kNothing;
  }
}

bool CZNCropView::HandleKey(const toolkit::KeyEvent& event) {
  const auto step = [&](double dx, double dy) {
    held = kWhole;
    pressed = edges;
    MoveBy(dx * kKeyStep, dy * kKeyStep);
    held = kNothing;
    return true;
  };
  switch (event.key) {
    case Key::Left:
      return step(-1, 0);
    case Key::Right:
      return step(1, 0);
    case Key::Up:
      return step(0, 1);
    case Key::Down:
      return step(0, -1);
    default:
      return false;
  }
}

void CZNCropView::HandlePaint(toolkit::Painter& painter) {
  const toolkit::Size area = painter.Area();
  const toolkit::Look look = Dialog()->System().CurrentLook();
  painter.FillRect({0, 0, area.width, area.height}, look.window);
  const toolkit::Rect place = PicturePlace(area);
  const toolkit::Rect crop = CropPlace();
  painter.FillRect(place, look.line);
  painter.FillRect(crop, look.field);
  const double left = crop.x + 0.5, right = crop.Right() + 0.5;
  const double top = crop.y + 0.5, bottom = crop.Bottom() + 0.5;
  const toolkit::Spot outline[] = {
      {left, top}, {right, top}, {right, bottom}, {left, bottom}, {left, top}};
  painter.DrawLines(outline, look.accent, 2);
  for (const double x : {left, (left + right) / 2, right}) {
    for (const double y : {top, (top + bottom) / 2, bottom}) {
      const bool isMiddle = x != left && x != right && y != top && y != bottom;
      if (!isMiddle) painter.FillCircle({x, y}, Reach() / 2.0, look.accent);
    }
  }
}
