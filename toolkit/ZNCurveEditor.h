// CZNCurveEditor: a node curve that is bent with mouse and keys.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "editing/NodeCurve.h"
#include "toolkit/Panel.h"

// A press near a node takes it, elsewhere it makes a new one there; dragging moves it. Delete, or a
// drag out of the square by more than a quarter of it, removes it. Arrow keys move the current
// node, page keys choose the next one.
class FXBOX_API CZNCurveEditor : public CZNPanelCanvas {
 public:
  using Histogram = std::array<std::uint32_t, 256>;

  CZNCurveEditor(CZNDialog& dialog, const std::string& name, int mostNodes);

  const RCNodeCurve& Curve() const { return curve; }
  // Reports nothing. The current node stays where it is possible.
  void SetCurve(const std::vector<editing::CurveNode>& nodes, bool linear);
  // Other curves that are drawn behind.
  void SetBehind(const std::vector<RCNodeCurve>& curves) { behind = curves; }
  void SetGrid(bool isShown) { hasGrid = isShown; }
  // The place of the current node is written in percent of the square.
  void SetPercent(bool isShown) { inPercent = isShown; }
  // What is drawn behind the curve; all 0 draws nothing. Asked each time that the canvas is drawn,
  // which is also when the mouse comes in: the picture may have changed meanwhile.
  std::function<Histogram()> onHistogram;
  // A node in the largest gap; the node behind the smallest gap goes.
  void AddNode();
  void ThinOut();

 private:
  void HandleMouse(const toolkit::MouseEvent& event) override;
  bool HandleKey(const toolkit::KeyEvent& event) override;
  void HandlePaint(toolkit::Painter& painter) override;
  void Press(toolkit::Point place);
  void Drag(toolkit::Point place);
  void MoveCurrent(int x, int y);
  bool RemoveCurrent();
  void Fit();
  void Changed();
  std::string PlaceText() const;
  void DrawHistogram(toolkit::Painter& painter, const toolkit::Look& look);
  void DrawBack(toolkit::Painter& painter, const toolkit::Look& look);
  void DrawCurve(toolkit::Painter& painter, const RCNodeCurve& shown, toolkit::Colour colour,
                 double thickness);

  RCNodeCurve curve;
  std::vector<RCNodeCurve> behind;
  bool hasGrid = true;
  bool inPercent = false;
  bool isHeld = false;
  bool isMouseIn = false;
};
