// Draws canvases by cairo.
#pragma once

#include <gtk/gtk.h>

#include "toolkit/Painter.h"

namespace toolkit {

class CairoPainter final : public Painter {
 public:
  // Both stay the caller's.
  CairoPainter(GtkWidget* canvasWidget, cairo_t* context, Size canvasArea)
      : widget(canvasWidget), cairo(context), area(canvasArea) {}

  Size Area() override { return area; }
  void FillRect(const Rect& place, Colour colour) override;
  void DrawLines(std::span<const Spot> corners, Colour colour, double thickness) override;
  void FillShape(std::span<const Spot> corners, Colour colour) override;
  void DrawCircle(Spot centre, double radius, Colour colour, double thickness) override;
  void FillCircle(Spot centre, double radius, Colour colour) override;
  void WriteText(Point place, const std::string& text, Colour colour) override;
  void WriteLine(const Rect& place, const std::string& text, Colour colour,
                 TextAlign align) override;
  void DrawPicture(const Rect& place, const PictureRows& picture) override;
  void Shade(const Rect& place, double strength) override;

 private:
  void SetColour(Colour colour);
  void Trace(std::span<const Spot> corners);
  void DrawSurface(const Rect& place, cairo_surface_t* surface);

  GtkWidget* widget;
  cairo_t* cairo;
  Size area;
};

}  // namespace toolkit
