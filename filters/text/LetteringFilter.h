// What text and watermark share: their parameters, and how something is laid over a picture.
#pragma once

#include <objbase.h>

#include <memory>
#include <span>
#include <string>
#include <vector>

#include "core/FilterShapes.h"
#include "core/Published.h"
#include "filters/text/Overlay.h"

// Places and sizes are shares of the picture, so that a preview shows what the full picture will
// be.
struct LetteringParameters {
  bool bold = false, italic = false;
  std::int32_t size = 60;  // of the font or the picture, thousandths of the picture's height
  std::uint8_t red = 255, green = 255, blue = 255;
  std::int32_t opacity = 100;           // percent
  std::int32_t posX = 500, posY = 500;  // of the anchor, thousandths from left and bottom
  std::int32_t align = 1;               // 0 left, 1 centre, 2 right
  std::int32_t angle = 0;               // tenths of a degree, counter-clockwise about the anchor
  std::int32_t outline = 0;             // thousandths of the font's size
  std::uint8_t red2 = 0, green2 = 0, blue2 = 0;
  std::string font, text;  // UTF-8
  // Of the watermark alone.
  bool tile = false;
  std::int32_t spacing = 100;  // thousandths of the picture's height
  std::string picture;         // full path, UTF-8

  static constexpr int kLeastBuffer = 0;
};

// What lies over a picture of this size, with `written` in the text's place; null for nothing. A
// picture that cannot be drawn is reply in the log.
std::shared_ptr<const text::Overlay> MakeOverlay(const LetteringParameters& parameters,
                                                 const std::string& written, int width, int height);

// Makes a row of P of a member of its base.
template <class P>
struct LetteringRow {
  template <class Field>
  ParameterRow<P> operator()(const char* key, const char* printed,
                             Field LetteringParameters::*member, ParameterDescription more) const {
    more.hasEquals = true;
    return {key, printed, static_cast<Field P::*>(member), more};
  }
};

// What both classes have: how letters look, and where they stand.
template <class P>
std::vector<ParameterRow<P>> LetterRows() {
  constexpr LetteringRow<P> row;
  using L = LetteringParameters;
  return {
      row("Bold", "Bold=%.1d", &L::bold, {.gloss = "bold letters"}),
      row("Italic", ",Italic=%.1d", &L::italic, {.gloss = "slanted letters"}),
      row("Size", ",Size=%.3d", &L::size,
          {.least = 1, .greatest = 1000, .gloss = "height, thousandths of the picture's height"}),
      row("Red", ",Red=%.3d", &L::red, {.greatest = 255, .gloss = "red of the letters"}),
      row("Green", ",Green=%.3d", &L::green, {.greatest = 255, .gloss = "green of the letters"}),
      row("Blue", ",Blue=%.3d", &L::blue, {.greatest = 255, .gloss = "blue of the letters"}),
      row("Opacity", ",Opacity=%.3d", &L::opacity, {.gloss = "percent"}),
      row("PosX", ",PosX=%.3d", &L::posX,
          {.greatest = 1000, .gloss = "place from the left, thousandths of the width"}),
      row("PosY", ",PosY=%.3d", &L::posY,
          {.greatest = 1000, .gloss = "place from the bottom, thousandths of the height"}),
      row("Align", ",Align=%.3d", &L::align,
          {.greatest = 2,
           .gloss = "what stands at the place: 0 left edge, 1 centre, 2 right edge"}),
      row("Angle", ",Angle=%.3d", &L::angle,
          {.least = -1800, .greatest = 1800, .gloss = "tenths of a degree, counter-clockwise"}),
      row("Outline", ",Outline=%.3d", &L::outline,
          {.gloss = "line around the letters, thousandths of their size"}),
      row("Red2", ",Red2=%.3d", &L::red2, {.greatest = 255, .gloss = "red of the line"}),
      row("Green2", ",Green2=%.3d", &L::green2, {.greatest = 255, .gloss = "green of the line"}),
      row("Blue2", ",Blue2=%.3d", &L::blue2, {.greatest = 255, .gloss = "blue of the line"})};
}

// The rows of a struct that is LetteringParameters under the name of its class.
template <class P>
std::vector<ParameterRow<P>> LetteringRows(bool isWatermark) {
  constexpr LetteringRow<P> row;
  using L = LetteringParameters;
  std::vector<ParameterRow<P>> rows = LetterRows<P>();
  if (isWatermark) {
    rows.push_back(row("Tile", ",Tile=%.1d", &L::tile, {.gloss = "repeated over the picture"}));
    rows.push_back(row(
        "Spacing", ",Spacing=%.3d", &L::spacing,
        {.greatest = 1000, .gloss = "between repetitions, thousandths of the picture's height"}));
  }
  rows.push_back(row("Font", ",Font=", &L::font, {.gloss = "family; empty for the default one"}));
  if (isWatermark) {
    rows.push_back(row("Picture", ",Picture=", &L::picture,
                       {.gloss = "full path of a picture that takes the text's place"}));
  }
  rows.push_back(row("Text", ",Text=", &L::text, {.gloss = "what is written; %0A starts a line"}));
  return rows;
}

// The overlay is made by Commit, with the text that the host makes of it, and published to pulls.
template <class P>
class LetteringFilter : public ParameterFilter<RectangleFilter, P> {
 public:
  explicit LetteringFilter(const FilterClass& row) : ParameterFilter<RectangleFilter, P>(row) {}

  void Commit() override {
    const P now = this->CommitParameters();
    auto next = std::make_shared<Laid>();
    next->width = this->input.width;
    next->height = this->input.height;
    next->overlay = MakeOverlay(now, Expanded(now.text), next->width, next->height);
    published.Set(std::move(next));
  }

 private:
  struct Laid {
    int width = 0, height = 0;
    std::shared_ptr<const text::Overlay> overlay;
  };

  // What the host at the end of the chain answers, or the text itself. The answer is freed as
  // component hosts free texts.
  std::string Expanded(const std::string& written) {
    if (written.empty()) return written;
    char* reply = nullptr;
    this->ExpandText(written.c_str(), &reply);
    if (!reply) return written;
    std::string expanded = reply;
    CoTaskMemFree(reply);
    return expanded;
  }

  bool NeedsMask() const override { return true; }
  std::optional<FilterObject::RowReach> Reach() override { return FilterObject::RowReach(); }
  bool ChangeRectangle(const PullRectangle& rectangle) override {
    const auto laid = published.Get();
    if (!laid || !laid->overlay || !rectangle.maskRows) return true;
    const PullRectangle inside = rectangle.CutTo(laid->width, laid->height);
    return inside.ChangeRows(this->abort, [&](BYTE* colour, BYTE* mask, int i) {
      laid->overlay->ComposeRow(colour, mask, inside.srcX, inside.srcY + i, inside.width);
    });
  }

  Published<Laid> published;
};
