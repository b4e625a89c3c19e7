#include "toolkit/ZNCurveEditor.h"

#include <algorithm>
#include <cmath>
#include <numeric>

#include "toolkit/Painter.h"
#include "toolkit/ZNDialog.h"
#include "toolkit/ZNTheme.h"

namespace {

using toolkit::Key;
using toolkit::MouseAction;

constexpr int kTop = 255;
constexpr int kHitRadius = 10;
constexpr int kMargin = 6;  // units, so that a node at the edge is seen whole
constexpr int kPageStep = 10;

}  // namespace

CZNCurveEditor::CZNCurveEditor(CZNDialog& dialog, const std::string& name, int mostNodes)
    : CZNPanelCanvas(dialog, name) {
  curve.mostNodes = mostNodes;
}

void CZNCurveEditor::SetCurve(const std::vector<editing::CurveNode>& nodes, bool linear) {
  curve.nodes = nodes;
  curve.linear = linear;
  curve.current = std::clamp(curve.current, 0, curve.Count() - 1);
  Changed();
}

// The curve's own mapping gives the square of 256 by 256 a place of its range on the screen: the
// range is the canvas without its margin.
void CZNCurveEditor::Fit() {
  const int margin = Dialog() && Dialog()->Native() ? Dialog()->System().Scaled(kMargin) : kMargin;
  curve.left = 0;
  curve.bottom = 0;
  curve.right = std::max(1, Where().width - 2 * margin);
  curve.top = std::max(1, Where().height - 2 * margin);
  curve.origin = {margin, margin};
  curve.hitRadius =
      Dialog() && Dialog()->Native() ? Dialog()->System().Scaled(kHitRadius) : kHitRadius;
}

std::string CZNCurveEditor::PlaceText() const {
  const auto part = [&](int value) {
    return inPercent ? NumberText(value * 100.0 / kTop, 1) + " %" : std::to_string(value);
  };
  return part(curve.GetX(curve.current)) + ", " + part(curve.GetY(curve.current));
}

void CZNCurveEditor::Changed() {
  SetValueText(PlaceText());
  Redraw();
}

void CZNCurveEditor::AddNode() {
  const int made = curve.AddNode();
  if (made == RCNodeCurve::kRefused) return;
  curve.current = made;
  Changed();
  if (onChange) onChange();
}

void CZNCurveEditor::ThinOut() {
  if (curve.ThinOut() == RCNodeCurve::kRefused) return;
  Changed();
  if (onChange) onChange();
}

void CZNCurveEditor::Press(toolkit::Point place) {
  int node = curve.HitTest(place.x, place.y);
  isHeld = node != RCNodeCurve::kRefused;
  if (isHeld) {
    curve.current = node;
    Changed();
    return;
  }
  const RCNodeCurve::Point at = curve.FromScreen({place.x, place.y});
  if (at.x < 0 || at.x > kTop || at.y < 0 || at.y > kTop) return;
  node = curve.InsertAt(at.x, at.y);
  if (node == RCNodeCurve::kRefused) return;
  isHeld = true;
  Changed();
  if (onChange) onChange();
}

// One rule is repaired a call, so a node may need several.
void CZNCurveEditor::MoveCurrent(int x, int y) {
  const int node = curve.current;
  const RCNodeCurve::Point before = {curve.GetX(node), curve.GetY(node)};
  curve.SetX(node, x);
  curve.SetY(node, y);
  for (int i = 0; i < 4 && curve.Constrain(node); ++i) {
  }
  if (before == RCNodeCurve::Point{curve.GetX(node), curve.GetY(node)}) return;
  Changed();
  if (onChange) onChange();
}

bool CZNCurveEditor::RemoveCurrent() {
  const bool isEnd = curve.current == 0 || curve.current == curve.Count() - 1;
  if (isEnd || curve.Remove(curve.current) == RCNodeCurve::kRefused) return false;
  isHeld = false;
  Changed();
  if (onChange) onChange();
  return true;
}

void CZNCurveEditor::Drag(toolkit::Point place) {
  const RCNodeCurve::Point at = curve.FromScreen({place.x, place.y});
  const int far = std::max({-at.x, at.x - kTop, -at.y, at.y - kTop});
  if (far > kTop / 4 && RemoveCurrent()) return;
  MoveCurrent(at.x, at.y);
}

void CZNCurveEditor::HandleMouse(const toolkit::MouseEvent& event) {
  Fit();
  const bool isIn = event.action != MouseAction::Leave;
  if (std::exchange(isMouseIn, isIn) != isIn && isIn) Redraw();
  if (event.action == MouseAction::Press && event.button == 1) return Press(event.place);
  if (!isHeld) return;
  if (event.action == MouseAction::Release) isHeld = false;
  if (event.action == MouseAction::Move) Drag(event.place);
}

bool CZNCurveEditor::HandleKey(const toolkit::KeyEvent& event) {
  const int x = curve.GetX(curve.current);
  const int y = curve.GetY(curve.current);
  const int step = event.shift ? kPageStep : 1;
  switch (event.key) {
    case Key::Left:
      MoveCurrent(x - step, y);
      return true;
    case Key::Right:
      MoveCurrent(x + step, y);
      return true;
    case Key::Up:
      MoveCurrent(x, y + step);
      return true;
    case Key::Down:
      MoveCurrent(x, y - step);
      return true;
    case Key::PageUp:
    case Key::PageDown: {
      const int next = curve.current + (event.key == Key::PageDown ? 1 : -1);
      curve.current = std::clamp(next, 0, curve.Count() - 1);
      Changed();
      return true;
    }
    case Key::Delete:
      RemoveCurrent();
      return true;
    case Key::Insert:
      AddNode();
      return true;
    default:
      return false;
  }
}

// The root of the counts: one colour that fills half the picture leaves the others to be seen.
void CZNCurveEditor::DrawHistogram(toolkit::Painter& painter, const toolkit::Look& look) {
  const Histogram counts = onHistogram ? onHistogram() : Histogram{};
  const double most = std::sqrt(*std::max_element(counts.begin(), counts.end()));
  const toolkit::Colour colour = CZNTheme::Mixed(look.field, look.text, 0.25);
  for (int i = 0; most > 0 && i < 256; ++i) {
    const double share = std::sqrt(counts[static_cast<std::size_t>(i)]) / most;
    const auto foot = curve.ToScreen({i, 0});
    const auto end = curve.ToScreen({i, static_cast<int>(share * kTop)});
    if (end.y >= foot.y) continue;
    painter.FillRect({foot.x, end.y, 1 + curve.right / 256, foot.y - end.y}, colour);
  }
}

void CZNCurveEditor::DrawBack(toolkit::Painter& painter, const toolkit::Look& look) {
  const toolkit::Size area = painter.Area();
  painter.FillRect({0, 0, area.width, area.height}, look.field);
  DrawHistogram(painter, look);
  for (int i = 0; i <= 4; ++i) {
    if (!hasGrid && i > 0 && i < 4) continue;
    const int at = i * kTop / 4;
    for (const bool isUpright : {false, true}) {
      const auto a =
          curve.ToScreen(isUpright ? RCNodeCurve::Point{at, 0} : RCNodeCurve::Point{0, at});
      const auto b =
          curve.ToScreen(isUpright ? RCNodeCurve::Point{at, kTop} : RCNodeCurve::Point{kTop, at});
      const toolkit::Spot line[] = {{a.x + 0.5, a.y + 0.5}, {b.x + 0.5, b.y + 0.5}};
      painter.DrawLines(line, look.line, 1);
    }
  }
}

// What the filter makes of the nodes is what is drawn.
void CZNCurveEditor::DrawCurve(toolkit::Painter& painter, const RCNodeCurve& shown,
                               toolkit::Colour colour, double thickness) {
  base::ByteTable table = editing::IdentityTable();
  shown.linear ? editing::BuildLineTable(shown.nodes, table)
               : editing::BuildSplineTable(shown.nodes, table);
  std::vector<toolkit::Spot> line;
  for (int i = 0; i <= kTop; ++i) {
    const auto at = curve.ToScreen({i, table[static_cast<std::size_t>(i)]});
    line.push_back({at.x + 0.5, at.y + 0.5});
  }
  painter.DrawLines(line, colour, thickness);
}

void CZNCurveEditor::HandlePaint(toolkit::Painter& painter) {
  Fit();
  const toolkit::Look look = Dialog()->System().CurrentLook();
  DrawBack(painter, look);
  for (const RCNodeCurve& other : behind) DrawCurve(painter, other, look.line, 1.5);
  DrawCurve(painter, curve, look.accent, 2);
  for (int i = 0; i < curve.Count(); ++i) {
    const auto at = curve.ToScreen({curve.GetX(i), curve.GetY(i)});
    const toolkit::Spot centre = {at.x + 0.5, at.y + 0.5};
    painter.FillCircle(centre, curve.markerSize, i == curve.current ? look.accent : look.text);
  }
  painter.WriteText({curve.origin.x + 4, curve.origin.y + 2}, PlaceText(), look.text);
}
