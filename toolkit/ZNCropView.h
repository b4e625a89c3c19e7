// CZNCropView: a picture's outline with a crop that is drawn with mouse and keys.
#pragma once

#include "editing/RatioLock.h"
#include "toolkit/Panel.h"

// The corners and sides of the crop are handles; inside, the whole crop is moved. Arrow keys move
// it by a hundredth of the picture. The edges are shares of the picture, bottom and top counted
// from its bottom row.
class FXBOX_API CZNCropView : public CZNPanelCanvas {
 public:
  // The keys of the left, right, bottom and top edge.
  CZNCropView(CZNDialog& dialog, const std::string& name, std::array<const char*, 4> edgeKeys);

  void Show(const PanelValues& values) override;
  void Store(PanelValues& values) const override;

  // In pixels; the picture is then shown in its form and the lock works. 0 is unknown.
  void SetPictureSize(toolkit::Size size);
  // Width over height that each drag keeps to; not above 0 for none.
  void SetRatio(double width_over_height);

  const editing::CropEdges& Edges() const { return edges; }
  // Of a canvas of this size: where the picture lies.
  toolkit::Rect PicturePlace(toolkit::Size canvas) const;

  // What a press takes hold of; sides are bits.
  enum Handle { kNothing = 0, kLeft = 1, kRight = 2, kBottom = 4, kTop = 8, kWhole = 15 };
  int HandleAt(toolkit::Point place) const;

 private:
  void HandleMouse(const toolkit::MouseEvent& event) override;
  bool HandleKey(const toolkit::KeyEvent& event) override;
  void HandlePaint(toolkit::Painter& painter) override;
  void MoveBy(double dx, double dy);
  void Take(editing::CropEdges wanted);
  toolkit::Rect CropPlace() const;
  int Reach() const;

  std::array<const char*, 4> keys;
  editing::CropEdges edges = {0, 1, 0, 1};
  editing::CropEdges pressed = edges;
  toolkit::Point pressedAt;
  int held = kNothing;
  toolkit::Size picture;
  double ratio = 0;
};
