#include "toolkit/gtk/CairoPainter.h"

#include <algorithm>
#include <numbers>

#include "toolkit/ShownPicture.h"

namespace toolkit {

void CairoPainter::SetColour(Colour colour) {
  cairo_set_source_rgb(cairo, colour.red / 255.0, colour.green / 255.0, colour.blue / 255.0);
}

void CairoPainter::Trace(std::span<const Spot> corners) {
  cairo_new_path(cairo);
  for (const Spot& corner : corners) cairo_line_to(cairo, corner.x, corner.y);
}

void CairoPainter::FillRect(const Rect& place, Colour colour) {
  SetColour(colour);
  cairo_rectangle(cairo, place.x, place.y, place.width, place.height);
  cairo_fill(cairo);
}

void CairoPainter::DrawLines(std::span<const Spot> corners, Colour colour, double thickness) {
  SetColour(colour);
  Trace(corners);
  cairo_set_line_width(cairo, thickness);
  cairo_set_line_join(cairo, CAIRO_LINE_JOIN_ROUND);
  cairo_stroke(cairo);
}

void CairoPainter::FillShape(std::span<const Spot> corners, Colour colour) {
  SetColour(colour);
  Trace(corners);
  cairo_close_path(cairo);
  cairo_fill(cairo);
}

void CairoPainter::DrawCircle(Spot centre, double radius, Colour colour, double thickness) {
  SetColour(colour);
  cairo_new_path(cairo);
  cairo_arc(cairo, centre.x, centre.y, radius, 0, 2 * std::numbers::pi);
  cairo_set_line_width(cairo, thickness);
  cairo_stroke(cairo);
}

void CairoPainter::FillCircle(Spot centre, double radius, Colour colour) {
  SetColour(colour);
  cairo_new_path(cairo);
  cairo_arc(cairo, centre.x, centre.y, radius, 0, 2 * std::numbers::pi);
  cairo_fill(cairo);
}

void CairoPainter::WriteText(Point place, const std::string& text, Colour colour) {
  SetColour(colour);
  PangoLayout* const layout = gtk_widget_create_pango_layout(widget, text.c_str());
  cairo_move_to(cairo, place.x, place.y);
  pango_cairo_show_layout(cairo, layout);
  g_object_unref(layout);
}

void CairoPainter::WriteLine(const Rect& place, const std::string& text, Colour colour,
                             TextAlign align) {
  if (place.width < 1) return;
  SetColour(colour);
  PangoLayout* const layout = gtk_widget_create_pango_layout(widget, text.c_str());
  pango_layout_set_width(layout, place.width * PANGO_SCALE);
  pango_layout_set_ellipsize(layout, PANGO_ELLIPSIZE_END);
  pango_layout_set_alignment(layout, align == TextAlign::Left     ? PANGO_ALIGN_LEFT
                                     : align == TextAlign::Centre ? PANGO_ALIGN_CENTER
                                                                  : PANGO_ALIGN_RIGHT);
  int height = 0;
  pango_layout_get_pixel_size(layout, nullptr, &height);
  cairo_move_to(cairo, place.x, place.y + (place.height - height) / 2);
  pango_cairo_show_layout(cairo, layout);
  g_object_unref(layout);
}

void CairoPainter::DrawSurface(const Rect& place, cairo_surface_t* surface) {
  cairo_surface_mark_dirty(surface);
  cairo_save(cairo);
  cairo_rectangle(cairo, place.x, place.y, place.width, place.height);
  cairo_clip(cairo);
  cairo_set_source_surface(cairo, surface, place.x, place.y);
  cairo_paint(cairo);
  cairo_restore(cairo);
}

void CairoPainter::DrawPicture(const Rect& place, const PictureRows& picture) {
  const Rect seen = SeenPart(place, area);
  if (seen.width < 1 || seen.height < 1) return;
  cairo_surface_t* const surface =
      cairo_image_surface_create(CAIRO_FORMAT_RGB24, seen.width, seen.height);
  if (unsigned char* const bytes = cairo_image_surface_get_data(surface)) {
    RenderShown(picture, {place.width, place.height}, seen, bytes,
                cairo_image_surface_get_stride(surface));
    DrawSurface({place.x + seen.x, place.y + seen.y, seen.width, seen.height}, surface);
  }
  cairo_surface_destroy(surface);
}

void CairoPainter::Shade(const Rect& place, double strength) {
  cairo_set_source_rgba(cairo, 0, 0, 0, std::clamp(strength, 0.0, 1.0));
  cairo_rectangle(cairo, place.x, place.y, place.width, place.height);
  cairo_fill(cairo);
}

}  // namespace toolkit
