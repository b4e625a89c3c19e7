// Draws canvases by GDI+.
#pragma once

#include <windows.h>

#include "toolkit/Painter.h"
#include "toolkit/windows/GdiPlus.h"

namespace toolkit {

class GdiPainter final : public Painter {
 public:
  GdiPainter(HDC device, HFONT textFont, Size canvasArea);

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
  HDC device;
  HFONT font;
  Size area;
  Gdiplus::Graphics graphics;
};

}  // namespace toolkit
