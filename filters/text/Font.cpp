#include "filters/text/Font.h"

#include <ft2build.h>
#include FT_FREETYPE_H
#include FT_OUTLINE_H
#include FT_STROKER_H
#include FT_SYNTHESIS_H

#include <hb-ft.h>
#include <hb.h>

#include <algorithm>
#include <limits>
#include <mutex>
#include <utility>

namespace text {
namespace {

constexpr std::size_t kMostOutlines = 4096;
constexpr FT_Int32 kLoadFlags = FT_LOAD_NO_HINTING | FT_LOAD_NO_BITMAP;
// What the library can hold in the 26 bits of its pixels with room for large letters.
constexpr int kMostSize = 32767 * kUnit;
constexpr int kMostBitmapBytes = 1 << 30;

template <class Object, void (*destroy)(Object*)>
struct Destroyer {
  void operator()(Object* object) const { destroy(object); }
};
using ShapingFont = std::unique_ptr<hb_font_t, Destroyer<hb_font_t, hb_font_destroy>>;
using ShapingBuffer = std::unique_ptr<hb_buffer_t, Destroyer<hb_buffer_t, hb_buffer_destroy>>;

struct FreeTypeLibrary {
  FreeTypeLibrary() {
    if (FT_Init_FreeType(&handle) != 0) handle = nullptr;
  }
  ~FreeTypeLibrary() {
    if (handle) FT_Done_FreeType(handle);
  }
  FreeTypeLibrary(const FreeTypeLibrary&) = delete;
  FreeTypeLibrary& operator=(const FreeTypeLibrary&) = delete;

  FT_Library handle = nullptr;
};

Outline FromLibrary(const FT_Outline& outline) {
  Outline taken;
  taken.flags = outline.flags;
  for (int i = 0; i < outline.n_points; ++i) {
    taken.points.push_back({outline.points[i].x, outline.points[i].y});
    taken.tags.push_back(static_cast<std::uint8_t>(outline.tags[i]));
  }
  for (int i = 0; i < outline.n_contours; ++i) {
    taken.ends.push_back(static_cast<std::uint16_t>(outline.contours[i]));
  }
  return taken;
}

// An outline as the library takes it; the arrays live as long as this.
class LibraryOutline {
 public:
  LibraryOutline(const Outline& outline, Point offset)
      : tags_(outline.tags.begin(), outline.tags.end()) {
    for (const Point& point : outline.points) {
      points_.push_back(
          {static_cast<FT_Pos>(point.x + offset.x), static_cast<FT_Pos>(point.y + offset.y)});
    }
    for (const std::uint16_t end : outline.ends) ends_.push_back(static_cast<short>(end));
    outline_.n_contours = static_cast<short>(ends_.size());
    outline_.n_points = static_cast<short>(points_.size());
    outline_.points = points_.data();
    outline_.tags = tags_.data();
    outline_.contours = ends_.data();
    outline_.flags = outline.flags;
  }
  FT_Outline* Get() { return &outline_; }

 private:
  std::vector<FT_Vector> points_;
  std::vector<char> tags_;
  std::vector<short> ends_;
  FT_Outline outline_ = {};
};

// The outer border of a line of twice this width around the outline.
Outline Grown(FT_Library library, FT_Outline& outline, int border) {
  FT_Stroker stroker = nullptr;
  if (FT_Stroker_New(library, &stroker) != 0) return {};
  FT_Stroker_Set(stroker, border, FT_STROKER_LINECAP_ROUND, FT_STROKER_LINEJOIN_ROUND, 0);
  Outline grown;
  const FT_StrokerBorder side = FT_Outline_GetOutsideBorder(&outline);
  FT_UInt points = 0;
  FT_UInt contours = 0;
  FT_Outline stroked = {};
  if (FT_Stroker_ParseOutline(stroker, &outline, 0) == 0 &&
      FT_Stroker_GetBorderCounts(stroker, side, &points, &contours) == 0 &&
      points < std::numeric_limits<short>::max() && contours < std::numeric_limits<short>::max() &&
      FT_Outline_New(library, points, static_cast<FT_Int>(contours), &stroked) == 0) {
    stroked.n_points = 0;
    stroked.n_contours = 0;
    FT_Stroker_ExportBorder(stroker, side, &stroked);
    grown = FromLibrary(stroked);
    FT_Outline_Done(library, &stroked);
  }
  FT_Stroker_Done(stroker);
  return grown;
}

// What the library adds to the advance of a letter that it makes bold.
FT_Pos BoldStrength(FT_Face face) {
  return FT_MulFix(face->units_per_EM, face->size->metrics.y_scale) / 24;
}

hb_buffer_t* FilledBuffer(const TextRun& run) {
  hb_buffer_t* const buffer = hb_buffer_create();
  hb_buffer_add_utf32(buffer, reinterpret_cast<const std::uint32_t*>(run.line.data()),
                      static_cast<int>(run.line.size()), static_cast<unsigned>(run.start),
                      static_cast<int>(run.length));
  hb_buffer_set_direction(buffer, run.isRightToLeft ? HB_DIRECTION_RTL : HB_DIRECTION_LTR);
  hb_buffer_set_script(buffer,
                       run.script ? static_cast<hb_script_t>(run.script) : HB_SCRIPT_COMMON);
  // Otherwise the process's locale would choose forms of letters.
  hb_buffer_set_language(buffer, hb_language_from_string("und", -1));
  return buffer;
}

}  // namespace

// Everything of the libraries, under one lock: a face is used by one thread at a time.
struct Font::Faces {
  ~Faces() {
    shaping.reset();
    if (face) FT_Done_Face(face);
  }
  bool SetSize(int size) {
    const int wanted = std::clamp(size, 1, kMostSize);
    if (wanted == current) return true;
    if (FT_Set_Char_Size(face, 0, wanted, 72, 72) != 0) return false;
    current = wanted;
    hb_ft_font_changed(shaping.get());
    return true;
  }

  std::mutex lock;
  std::vector<std::uint8_t> bytes;
  FreeTypeLibrary library;
  FT_Face face = nullptr;
  ShapingFont shaping;
  int current = 0;
};

Font::Font() : faces(std::make_unique<Faces>()) {}
Font::~Font() = default;

std::shared_ptr<Font> Font::Open(std::vector<std::uint8_t> bytes, int index) {
  const std::shared_ptr<Font> font(new Font());
  Faces& f = *font->faces;
  f.bytes = std::move(bytes);
  if (!f.library.handle || f.bytes.empty() ||
      f.bytes.size() > static_cast<std::size_t>(std::numeric_limits<std::int32_t>::max()) ||
      FT_New_Memory_Face(f.library.handle, f.bytes.data(), static_cast<FT_Long>(f.bytes.size()),
                         index, &f.face) != 0) {
    return nullptr;
  }
  if (!FT_IS_SCALABLE(f.face) || f.face->units_per_EM < 1) return nullptr;
  FT_Select_Charmap(f.face, FT_ENCODING_UNICODE);
  f.shaping.reset(hb_ft_font_create_referenced(f.face));
  hb_ft_font_set_load_flags(f.shaping.get(), kLoadFlags);
  return f.SetSize(kUnit) ? font : nullptr;
}

bool Font::HasLetter(char32_t letter) {
  const std::lock_guard guard(faces->lock);
  return FT_Get_Char_Index(faces->face, letter) != 0;
}

LineMetrics Font::MetricsAt(int size) {
  const std::lock_guard guard(faces->lock);
  const FT_Face face = faces->face;
  const auto scaled = [&](std::int64_t units) {
    const std::int64_t em = face->units_per_EM;
    return (units * std::clamp(size, 1, kMostSize) + em / 2) / em;
  };
  const std::int64_t height = face->ascender - face->descender;
  // A font that says nothing of its lines gets its size.
  if (height <= 0) return {std::clamp(size, 1, kMostSize), 0};
  return {scaled(face->ascender), scaled(-face->descender)};
}

std::vector<ShapedGlyph> Font::Shape(const TextRun& run, const LetterStyle& style) {
  const std::lock_guard guard(faces->lock);
  if (!faces->SetSize(style.size)) return {};
  const ShapingBuffer buffer(FilledBuffer(run));
  hb_shape(faces->shaping.get(), buffer.get(), nullptr, 0);
  unsigned count = 0;
  const hb_glyph_info_t* const infos = hb_buffer_get_glyph_infos(buffer.get(), &count);
  const hb_glyph_position_t* const places = hb_buffer_get_glyph_positions(buffer.get(), &count);
  const FT_Pos bold = style.makeBold ? BoldStrength(faces->face) : 0;
  std::vector<ShapedGlyph> glyphs;
  glyphs.reserve(count);
  for (unsigned i = 0; i < count; ++i) {
    const std::int64_t advance = places[i].x_advance;
    glyphs.push_back({infos[i].codepoint,
                      {places[i].x_offset, places[i].y_offset},
                      advance > 0 ? advance + bold : advance});
  }
  return glyphs;
}

std::shared_ptr<const Outline> Font::OutlineOf(std::uint32_t glyph, const LetterStyle& style,
                                               int border) {
  const std::lock_guard guard(faces->lock);
  if (outlines.size() >= kMostOutlines) outlines.clear();
  auto& kept = outlines[{glyph, style, border}];
  if (!kept) kept = std::make_shared<const Outline>(LoadOutline(glyph, style, border));
  return kept;
}

Outline Font::LoadOutline(std::uint32_t glyph, const LetterStyle& style, int border) {
  const FT_Face face = faces->face;
  if (!faces->SetSize(style.size) || FT_Load_Glyph(face, glyph, kLoadFlags) != 0) return {};
  FT_GlyphSlot const slot = face->glyph;
  if (slot->format != FT_GLYPH_FORMAT_OUTLINE || slot->outline.n_points < 1) return {};
  if (style.makeBold) FT_GlyphSlot_Embolden(slot);
  if (style.makeSlanted) FT_GlyphSlot_Oblique(slot);
  return border > 0 ? Grown(faces->library.handle, slot->outline, border)
                    : FromLibrary(slot->outline);
}

struct Rasterizer::Library : FreeTypeLibrary {};

Rasterizer::Rasterizer() : library(std::make_unique<Library>()) {}
Rasterizer::~Rasterizer() = default;

Coverage Rasterizer::Cover(const Outline& outline, Point offset, const Box& box) {
  Coverage covered{box, {}};
  covered.bytes.resize(static_cast<std::size_t>(box.Area()));
  if (covered.bytes.empty() || outline.points.empty() || !library->handle) return covered;
  // In strips: the library counts the bytes of a bitmap in an int.
  const int width = box.right - box.left;
  const int rows = std::max(1, kMostBitmapBytes / width);
  for (int bottom = box.bottom; bottom < box.top; bottom += std::min(rows, box.top - bottom)) {
    LibraryOutline moved(outline, {offset.x - std::int64_t{box.left} * kUnit,
                                   offset.y - std::int64_t{bottom} * kUnit});
    FT_Bitmap bitmap = {};
    bitmap.rows = static_cast<unsigned>(std::min(rows, box.top - bottom));
    bitmap.width = static_cast<unsigned>(width);
    bitmap.pitch = -width;  // below 0: the bottom row comes first
    bitmap.buffer = covered.bytes.data() + (std::int64_t{bottom} - box.bottom) * width;
    bitmap.num_grays = 256;
    bitmap.pixel_mode = FT_PIXEL_MODE_GRAY;
    if (FT_Outline_Get_Bitmap(library->handle, moved.Get(), &bitmap) != 0) {
      std::fill(covered.bytes.begin(), covered.bytes.end(), std::uint8_t{0});
      break;
    }
  }
  return covered;
}

std::uint32_t ScriptOf(char32_t letter) {
  const hb_script_t script = hb_unicode_script(hb_unicode_funcs_get_default(), letter);
  const bool goesAlong =
      script == HB_SCRIPT_COMMON || script == HB_SCRIPT_INHERITED || script == HB_SCRIPT_UNKNOWN;
  return goesAlong ? 0 : static_cast<std::uint32_t>(script);
}

bool IsMark(char32_t letter) {
  switch (hb_unicode_general_category(hb_unicode_funcs_get_default(), letter)) {
    case HB_UNICODE_GENERAL_CATEGORY_NON_SPACING_MARK:
    case HB_UNICODE_GENERAL_CATEGORY_SPACING_MARK:
    case HB_UNICODE_GENERAL_CATEGORY_ENCLOSING_MARK:
    case HB_UNICODE_GENERAL_CATEGORY_FORMAT:
      return true;
    default:
      return false;
  }
}

}  // namespace text
