#include "toolkit/gtk/CairoPainter.h"

#include <algorithm>
#include <numbers>

namespace toolkit {
namespace {

// Side of the squares that stand for nothing, in pixels of the canvas.
constexpr int kSquare = 8;
constexpr int kLightSquare = 204;
constexpr int kDarkSquare = 153;

// What is seen of a byte of the picture through its mask, over the square at this place.
std::uint32_t Over(std::uint32_t byte, std::uint32_t mask, std::uint32_t ground) {
  return (byte * (255 - mask) + ground * mask + 127) / 255;
}

std::uint32_t Square(int x, int y) {
  return ((x / kSquare + y / kSquare) & 1) ? kDarkSquare : kLightSquare;
}

// Where a column or row of the shown picture lies in the picture: the middle of what it covers.
int Source(int shown, int shownCount, int count) {
  return static_cast<int>((2LL * shown + 1) * count / (2LL * shownCount));
}

std::uint32_t PixelOver(const std::uint8_t* colour, std::uint32_t mask, std::uint32_t ground) {
  return Over(colour[2], mask, ground) << 16 | Over(colour[1], mask, ground) << 8 |
         Over(colour[0], mask, ground);
}

// The sums of the pixels that one shown pixel covers, divided by their number.
std::uint32_t Mean(const PictureRows& picture, int left, int right, int bottom, int top,
                   std::uint32_t ground) {
  std::uint64_t sums[3] = {};
  for (int y = bottom; y < top; ++y) {
    const std::uint8_t* colour = picture.colourRows[y] + 3 * static_cast<std::ptrdiff_t>(left);
    const std::uint8_t* const mask = picture.maskRows ? picture.maskRows[y] : nullptr;
    for (int x = left; x < right; ++x, colour += 3) {
      for (int k = 0; k < 3; ++k) sums[k] += Over(colour[k], mask ? mask[x] : 0, ground);
    }
  }
  const auto count = static_cast<std::uint64_t>(right - left) * static_cast<unsigned>(top - bottom);
  const auto mean = [&](int k) { return static_cast<std::uint32_t>(sums[k] / count); };
  return mean(2) << 16 | mean(1) << 8 | mean(0);
}

// First and last pixel but one that the shown pixel covers; one at least.
struct Run {
  int from, end;
};
Run Covered(int shown, int shownCount, int count) {
  const int from = static_cast<int>(static_cast<long long>(shown) * count / shownCount);
  const int end = static_cast<int>((shown + 1LL) * count / shownCount);
  return {from, std::max(end, from + 1)};
}

// The columns of a row that are seen.
struct Columns {
  int from, end;
};

// Row `y` from the top of a picture that is shown smaller.
void ReduceRow(const PictureRows& picture, Size shown, int y, Columns seen, std::uint32_t* to) {
  const Run rows = Covered(shown.height - 1 - y, shown.height, picture.height);
  for (int x = seen.from; x < seen.end; ++x) {
    const Run columns = Covered(x, shown.width, picture.width);
    *to++ = Mean(picture, columns.from, columns.end, rows.from, rows.end, Square(x, y));
  }
}

// The same of a picture that is shown larger: each pixel is a block.
void EnlargeRow(const PictureRows& picture, Size shown, int y, Columns seen, std::uint32_t* to) {
  const int row = Source(shown.height - 1 - y, shown.height, picture.height);
  const std::uint8_t* const mask = picture.maskRows ? picture.maskRows[row] : nullptr;
  for (int x = seen.from; x < seen.end; ++x) {
    const int column = Source(x, shown.width, picture.width);
    *to++ = PixelOver(picture.colourRows[row] + 3 * static_cast<std::ptrdiff_t>(column),
                      mask ? mask[column] : 0, Square(x, y));
  }
}

}  // namespace

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

void CairoPainter::DrawSurface(const Rect& place, cairo_surface_t* surface) {
  cairo_surface_mark_dirty(surface);
  cairo_save(cairo);
  cairo_rectangle(cairo, place.x, place.y, place.width, place.height);
  cairo_clip(cairo);
  cairo_set_source_surface(cairo, surface, place.x, place.y);
  cairo_paint(cairo);
  cairo_restore(cairo);
}

// Each shown pixel is made from the picture's; what falls outside the canvas is not made.
void CairoPainter::DrawPicture(const Rect& place, const PictureRows& picture) {
  const Columns seen = {std::clamp(-place.x, 0, std::max(place.width, 0)),
                        std::clamp(area.width - place.x, 0, std::max(place.width, 0))};
  const int first = std::clamp(-place.y, 0, std::max(place.height, 0));
  const int end = std::clamp(area.height - place.y, 0, std::max(place.height, 0));
  const Size size = {seen.end - seen.from, end - first};
  if (size.width < 1 || size.height < 1 || picture.width < 1 || picture.height < 1) return;
  cairo_surface_t* const surface =
      cairo_image_surface_create(CAIRO_FORMAT_RGB24, size.width, size.height);
  unsigned char* const bytes = cairo_image_surface_get_data(surface);
  const int stride = cairo_image_surface_get_stride(surface);
  const bool isReduced = place.width < picture.width || place.height < picture.height;
  for (int y = 0; bytes && y < size.height; ++y) {
    void* const row = bytes + static_cast<std::ptrdiff_t>(y) * stride;
    (isReduced ? ReduceRow : EnlargeRow)(picture, {place.width, place.height}, first + y, seen,
                                         static_cast<std::uint32_t*>(row));
  }
  DrawSurface({place.x + seen.from, place.y + first, size.width, size.height}, surface);
  cairo_surface_destroy(surface);
}

void CairoPainter::Shade(const Rect& place, double strength) {
  cairo_set_source_rgba(cairo, 0, 0, 0, std::clamp(strength, 0.0, 1.0));
  cairo_rectangle(cairo, place.x, place.y, place.width, place.height);
  cairo_fill(cairo);
}

}  // namespace toolkit
