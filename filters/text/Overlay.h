// What a text or a watermark lays over a picture: made once, then composed row by row.
//
// Everything stands at its place in the picture, whatever part of it is asked for.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "filters/text/FontChoice.h"
#include "filters/text/Outline.h"
#include "filters/text/TextLayout.h"

namespace text {

struct Ink {
  std::uint8_t blue = 0, green = 0, red = 0;
};

// Anything that lies over a picture. Never changes; any thread.
class Overlay {
 public:
  virtual ~Overlay() = default;
  // Lays its part of `count` pixels of row y, from column x on, over them; all lie in the picture.
  // Without a row of colour the mask alone changes.
  virtual void ComposeRow(std::uint8_t* colour, std::uint8_t* mask, int x, int y,
                          int count) const = 0;
};

// Where a block is drawn: turned about its anchor, at the anchor's place and, where there are
// steps, again at whole steps from there, as far as the picture reaches.
struct Placement {
  int pictureWidth = 0, pictureHeight = 0;
  Point anchor;
  Turn turn;
  int stepX = 0, stepY = 0;  // pixels; 0 for once

  // The steps at which something of `box`, which is where the block is drawn once, can be seen.
  struct Steps {
    std::int64_t firstX = 0, lastX = 0, firstY = 0, lastY = 0;
  };
  Steps StepsFor(const Box& box) const;
  Box Picture() const { return {0, 0, pictureWidth, pictureHeight}; }
};

// How letters are drawn.
struct LetterInk {
  int size = 0;    // of the font, in units
  int border = 0;  // around the letters, in units
  Ink fill, edge;
  int opacity = 100;  // percent, 0..100
};

// Null where nothing of the block can be seen. Where letters lie on each other in very many layers,
// the last ones are left out.
std::shared_ptr<const Overlay> DrawLetters(const TextBlock& block, FontChoice& fonts,
                                           const LetterInk& ink, const Placement& placement);

}  // namespace text
