#include "toolkit/windows/GdiPainter.h"

#include <vector>

#include "toolkit/ShownPicture.h"
#include "toolkit/windows/System.h"
#include "toolkit/windows/WideText.h"

namespace toolkit {
namespace {

Gdiplus::Color Solid(Colour colour) {
  return {colour.red, colour.green, colour.blue};
}

Gdiplus::REAL Real(double value) {
  return static_cast<Gdiplus::REAL>(value);
}

std::vector<Gdiplus::PointF> PointsOf(std::span<const Spot> corners) {
  std::vector<Gdiplus::PointF> points;
  for (const Spot& corner : corners) points.emplace_back(Real(corner.x), Real(corner.y));
  return points;
}

// The square around a circle.
Gdiplus::RectF Around(Spot centre, double radius) {
  return {Real(centre.x - radius), Real(centre.y - radius), Real(2 * radius), Real(2 * radius)};
}

}  // namespace

// Places between pixels count as on other systems: 0, 0 is the corner of the first pixel.
GdiPainter::GdiPainter(HDC targetDevice, HFONT textFont, Size canvasArea)
    : device(targetDevice), font(textFont), area(canvasArea), graphics(targetDevice) {
  graphics.SetSmoothingMode(Gdiplus::SmoothingModeAntiAlias);
  graphics.SetPixelOffsetMode(Gdiplus::PixelOffsetModeHalf);
}

void GdiPainter::FillRect(const Rect& place, Colour colour) {
  const Gdiplus::SolidBrush brush(Solid(colour));
  graphics.FillRectangle(&brush, place.x, place.y, place.width, place.height);
}

void GdiPainter::DrawLines(std::span<const Spot> corners, Colour colour, double thickness) {
  if (corners.size() < 2) return;
  Gdiplus::Pen pen(Solid(colour), Real(thickness));
  pen.SetLineJoin(Gdiplus::LineJoinRound);
  const auto points = PointsOf(corners);
  graphics.DrawLines(&pen, points.data(), static_cast<INT>(points.size()));
}

void GdiPainter::FillShape(std::span<const Spot> corners, Colour colour) {
  const Gdiplus::SolidBrush brush(Solid(colour));
  const auto points = PointsOf(corners);
  graphics.FillPolygon(&brush, points.data(), static_cast<INT>(points.size()));
}

void GdiPainter::DrawCircle(Spot centre, double radius, Colour colour, double thickness) {
  const Gdiplus::Pen pen(Solid(colour), Real(thickness));
  graphics.DrawEllipse(&pen, Around(centre, radius));
}

void GdiPainter::FillCircle(Spot centre, double radius, Colour colour) {
  const Gdiplus::SolidBrush brush(Solid(colour));
  graphics.FillEllipse(&brush, Around(centre, radius));
}

// Texts are written as those of the controls are, not by GDI+, which measures otherwise.
void GdiPainter::WriteText(Point place, const std::string& text, Colour colour) {
  graphics.Flush(Gdiplus::FlushIntentionSync);
  const HGDIOBJ before = SelectObject(device, font);
  SetBkMode(device, TRANSPARENT);
  SetTextColor(device, RefOf(colour));
  const std::wstring wide = WideOf(text);
  TextOutW(device, place.x, place.y, wide.c_str(), static_cast<int>(wide.size()));
  SelectObject(device, before);
}

void GdiPainter::WriteLine(const Rect& place, const std::string& text, Colour colour,
                           TextAlign align) {
  graphics.Flush(Gdiplus::FlushIntentionSync);
  const HGDIOBJ before = SelectObject(device, font);
  SetBkMode(device, TRANSPARENT);
  SetTextColor(device, RefOf(colour));
  RECT rect = {place.x, place.y, place.Right(), place.Bottom()};
  const UINT side = align == TextAlign::Left     ? DT_LEFT
                    : align == TextAlign::Centre ? DT_CENTER
                                                 : DT_RIGHT;
  DrawTextW(device, WideOf(text).c_str(), -1, &rect,
            side | DT_SINGLELINE | DT_VCENTER | DT_END_ELLIPSIS | DT_NOPREFIX);
  SelectObject(device, before);
}

void GdiPainter::DrawPicture(const Rect& place, const PictureRows& picture) {
  const Rect seen = SeenPart(place, area);
  if (seen.width < 1 || seen.height < 1) return;
  std::vector<std::uint32_t> pixels(static_cast<std::size_t>(seen.width) *
                                    static_cast<std::size_t>(seen.height));
  RenderShown(picture, {place.width, place.height}, seen, pixels.data(), 4LL * seen.width);
  BITMAPINFO info = {};
  info.bmiHeader.biSize = sizeof info.bmiHeader;
  info.bmiHeader.biWidth = seen.width;
  info.bmiHeader.biHeight = -seen.height;
  info.bmiHeader.biPlanes = 1;
  info.bmiHeader.biBitCount = 32;
  graphics.Flush(Gdiplus::FlushIntentionSync);
  SetDIBitsToDevice(device, place.x + seen.x, place.y + seen.y, static_cast<DWORD>(seen.width),
                    static_cast<DWORD>(seen.height), 0, 0, 0, static_cast<UINT>(seen.height),
                    pixels.data(), &info, DIB_RGB_COLORS);
}

void GdiPainter::Shade(const Rect& place, double strength) {
  const double limited = strength < 0 ? 0 : strength > 1 ? 1 : strength;
  const Gdiplus::SolidBrush brush(Gdiplus::Color(static_cast<BYTE>(limited * 255), 0, 0, 0));
  graphics.FillRectangle(&brush, place.x, place.y, place.width, place.height);
}

}  // namespace toolkit
