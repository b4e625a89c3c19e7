#include "filters/text/LetteringFilter.h"

#include <algorithm>
#include <cmath>

#include "core/Diagnostics.h"
#include "filters/text/PictureSign.h"
#include "filters/text/TextLayout.h"

namespace {

using text::kUnit;

// Of a length of so many thousandths, at least `least`, in units.
std::int64_t Units(double thousandths, double whole) {
  return static_cast<std::int64_t>(std::floor(thousandths * whole * kUnit / 1000.0 + 0.5));
}

text::Align AlignOf(std::int32_t align) {
  return align <= 0 ? text::Align::Left : align == 1 ? text::Align::Centre : text::Align::Right;
}

std::int32_t SizeOf(const LetteringParameters& p) {
  return std::clamp(p.size, 1, 1000);
}

double SpacingOf(const LetteringParameters& p, int height) {
  return static_cast<double>(std::clamp(p.spacing, 0, 1000)) * height / 1000.0;
}

text::Placement PlacementOf(const LetteringParameters& p, int width, int height) {
  return {.pictureWidth = width,
          .pictureHeight = height,
          .anchor = {Units(p.posX, width), Units(p.posY, height)},
          .turn = text::Turn::ByTenths(p.angle)};
}

std::shared_ptr<const text::Overlay> MakeSign(const LetteringParameters& p,
                                              const text::Placement& placement) {
  const int height = placement.pictureHeight;
  const auto signHeight = static_cast<int>(std::floor(SizeOf(p) * (height / 1000.0) + 0.5));
  try {
    return text::DrawSign({.path = p.picture,
                           .height = std::max(signHeight, 1),
                           .align = AlignOf(p.align),
                           .opacity = std::clamp(p.opacity, 0, 100),
                           .repeats = p.tile,
                           .spacing = SpacingOf(p, height)},
                          placement);
  } catch (const text::SignError& error) {
    core::LogLine(-1, "Watermark %s: %s", p.picture.c_str(), error.what());
    return nullptr;
  }
}

std::shared_ptr<const text::Overlay> MakeLetters(const LetteringParameters& p,
                                                 const std::string& written,
                                                 text::Placement placement) {
  const int height = placement.pictureHeight;
  const auto size = static_cast<int>(std::max<std::int64_t>(Units(SizeOf(p), height), 1));
  text::FontChoice fonts(p.font, p.bold, p.italic);
  const text::TextBlock block =
      text::LayOutText(text::CharactersOf(written), fonts, size, AlignOf(p.align));
  if (p.tile) {
    const double spacing = SpacingOf(p, height);
    placement.stepX = text::StepFor(static_cast<double>(block.width) / kUnit, spacing, placement);
    placement.stepY = text::StepFor(static_cast<double>(block.height) / kUnit, spacing, placement);
  }
  const double border = std::clamp(p.outline, 0, 1000) * static_cast<double>(size) / 1000.0;
  return text::DrawLetters(block, fonts,
                           {.size = size,
                            .border = static_cast<int>(border + 0.5),
                            .fill = {p.blue, p.green, p.red},
                            .edge = {p.blue2, p.green2, p.red2},
                            .opacity = std::clamp(p.opacity, 0, 100)},
                           placement);
}

}  // namespace

std::shared_ptr<const text::Overlay> MakeOverlay(const LetteringParameters& parameters,
                                                 const std::string& written, int width,
                                                 int height) {
  if (width < 1 || height < 1) return nullptr;
  const text::Placement placement = PlacementOf(parameters, width, height);
  if (!parameters.picture.empty()) return MakeSign(parameters, placement);
  return written.empty() ? nullptr : MakeLetters(parameters, written, placement);
}
