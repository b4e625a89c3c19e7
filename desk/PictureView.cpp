#include "desk/PictureView.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

#include "desk/Words.h"

namespace desk {
namespace {

using toolkit::Key;
using toolkit::MouseAction;
using toolkit::Point;
using toolkit::Rect;

constexpr double kLeastScale = 0.02, kMostScale = 32;
constexpr double kZoomStep = 1.25;
constexpr int kMargin = 16;
constexpr int kReach = 8;
constexpr double kLeastCrop = 0.01;
enum Handle { kLeft = 1, kRight = 2, kBottom = 4, kTop = 8, kWhole = 15 };

// The part of the left of a picture, which rows can give without a copy.
toolkit::PictureRows LeftPart(const MemoryPicture& picture, double share) {
  toolkit::PictureRows rows = ShownRows(picture);
  rows.width = std::clamp(static_cast<int>(std::lround(rows.width * share)), 0, rows.width);
  return rows;
}

// The mask as a picture: what is opaque is white.
class MaskRows {
 public:
  explicit MaskRows(const MemoryPicture& picture)
      : bytes(static_cast<std::size_t>(picture.Width()) * 3u *
              static_cast<std::size_t>(picture.Height())) {
    const auto width = static_cast<std::size_t>(picture.Width());
    for (int y = 0; y < picture.Height(); ++y) {
      BYTE* const row = &bytes[static_cast<std::size_t>(y) * width * 3];
      rows.push_back(row);
      for (std::size_t x = 0; x < 3 * width; ++x) {
        row[x] = static_cast<BYTE>(255 - picture.MaskRows()[y][x / 3]);
      }
    }
  }
  toolkit::PictureRows Rows(int width) const {
    return {width, static_cast<int>(rows.size()), rows.data(), nullptr};
  }

 private:
  std::vector<BYTE> bytes;
  std::vector<const BYTE*> rows;
};

}  // namespace

PictureView::PictureView(CZNDialog& dialog)
    : CZNCanvas(dialog, Words("DESK_PICTURE"), toolkit::CanvasRole::Picture) {}

void PictureView::Clear() {
  fitAfter = fitBefore = fullAfter = fullBefore = nullptr;
  fullSize = {};
  Redraw();
}

void PictureView::Show(const RenderResult& result) {
  fitAfter = result.shown;
  if (result.stage == RenderStage::Full) {
    fullAfter = result.after;
    fullBefore = result.before;
    if (!fitBefore) fitBefore = result.before;
  } else {
    fitBefore = result.before;
    fullAfter = fullBefore = nullptr;
  }
  fullSize = result.fullSize;
  beforeSides = {static_cast<double>(result.before->Width()) / result.after->Width(),
                 static_cast<double>(result.before->Height()) / result.after->Height()};
  Redraw();
}

// --- places

host::Size PictureView::Box() const {
  const int margin = 2 * (Native() ? Dialog()->System().Scaled(kMargin) : kMargin);
  return {std::max(16, Where().width - margin), std::max(16, Where().height - margin)};
}

double PictureView::Scale() const {
  if (zoom > 0) return zoom;
  const host::Size fitted = FittedSize(fullSize, Box());
  return fullSize.width > 0 ? static_cast<double>(fitted.width) / fullSize.width : 1;
}

Rect PictureView::PicturePlace() const {
  if (IsFitted()) {
    const host::Size size = FittedSize(fullSize, Box());
    return {(Where().width - size.width) / 2, (Where().height - size.height) / 2, size.width,
            size.height};
  }
  const int width = std::max(1, static_cast<int>(std::lround(fullSize.width * zoom)));
  const int height = std::max(1, static_cast<int>(std::lround(fullSize.height * zoom)));
  return {static_cast<int>(std::lround(Where().width / 2.0 - centre.x * width)),
          static_cast<int>(std::lround(Where().height / 2.0 - centre.y * height)), width, height};
}

std::optional<toolkit::Spot> PictureView::ShareAt(Point place) const {
  const Rect at = PicturePlace();
  if (!fitAfter || !at.Contains(place)) return std::nullopt;
  return toolkit::Spot{(place.x - at.x + 0.5) / at.width, 1 - (place.y - at.y + 0.5) / at.height};
}

void PictureView::Fit() {
  zoom = 0;
  centre = {0.5, 0.5};
  Redraw();
  if (onZoom) onZoom();
}

// What lies under the place stays there.
void PictureView::SetScale(double scale, std::optional<Point> around) {
  const Rect before = PicturePlace();
  const Point fixed = around.value_or(Point{Where().width / 2, Where().height / 2});
  const double x = static_cast<double>(fixed.x - before.x) / std::max(before.width, 1);
  const double y = static_cast<double>(fixed.y - before.y) / std::max(before.height, 1);
  zoom = std::clamp(scale, kLeastScale, kMostScale);
  centre.x = x + (Where().width / 2.0 - fixed.x) / std::max(1.0, fullSize.width * zoom);
  centre.y = y + (Where().height / 2.0 - fixed.y) / std::max(1.0, fullSize.height * zoom);
  Pan({});
  if (onZoom) onZoom();
}

void PictureView::ZoomBy(double factor) {
  SetScale(Scale() * factor);
}

void PictureView::Pan(Point by) {
  centre.x = std::clamp(centre.x - by.x / std::max(1.0, fullSize.width * Scale()), 0.0, 1.0);
  centre.y = std::clamp(centre.y - by.y / std::max(1.0, fullSize.height * Scale()), 0.0, 1.0);
  Redraw();
}

void PictureView::Compare(Comparison newComparison) {
  comparison = newComparison;
  Redraw();
}

void PictureView::ShowMask(bool shows) {
  showsMask = shows;
  Redraw();
}

void PictureView::SetCrop(const std::optional<CropFrame>& frame) {
  if (crop == frame) return;
  crop = frame;
  Redraw();
}

// --- mouse, wheel and keys

bool PictureView::HandleWheel(double notches, bool) {
  SetScale(Scale() * std::pow(kZoomStep, notches), pointer);
  return true;
}

bool PictureView::HandleKey(const toolkit::KeyEvent& event) {
  const int step = std::max(16, Where().width / 10);
  switch (event.key) {
    case Key::Left:
      Pan({step, 0});
      return true;
    case Key::Right:
      Pan({-step, 0});
      return true;
    case Key::Up:
      Pan({0, step});
      return true;
    case Key::Down:
      Pan({0, -step});
      return true;
    default:
      return false;
  }
}

int PictureView::CropHandleAt(Point place) const {
  if (!crop) return 0;
  const Rect at = PicturePlace();
  const auto isNear = [](double edge, int mouse) { return std::abs(edge - mouse) <= kReach; };
  const double left = at.x + crop->left * at.width, right = at.x + crop->right * at.width;
  const double top = at.y + (1 - crop->top) * at.height;
  const double bottom = at.y + (1 - crop->bottom) * at.height;
  const bool isAcross = place.x >= left - kReach && place.x <= right + kReach;
  const bool isAlong = place.y >= top - kReach && place.y <= bottom + kReach;
  if (!isAcross || !isAlong) return 0;
  int handle = 0;
  if (isNear(left, place.x)) handle |= kLeft;
  if (isNear(right, place.x)) handle |= kRight;
  if (isNear(top, place.y)) handle |= kTop;
  if (isNear(bottom, place.y)) handle |= kBottom;
  return handle ? handle : kWhole;
}

void PictureView::DragCrop(Point place) {
  const Rect at = PicturePlace();
  const double dx = static_cast<double>(place.x - pressedAt.x) / at.width;
  const double dy = static_cast<double>(pressedAt.y - place.y) / at.height;
  CropFrame frame = cropAtPress;
  if (cropHandle == kWhole) {
    const double x = std::clamp(dx, -frame.left, 1 - frame.right);
    const double y = std::clamp(dy, -frame.bottom, 1 - frame.top);
    frame = {frame.left + x, frame.right + x, frame.bottom + y, frame.top + y};
  } else {
    if (cropHandle & kLeft) frame.left = std::clamp(frame.left + dx, 0.0, frame.right - kLeastCrop);
    if (cropHandle & kRight)
      frame.right = std::clamp(frame.right + dx, frame.left + kLeastCrop, 1.0);
    if (cropHandle & kBottom) {
      frame.bottom = std::clamp(frame.bottom + dy, 0.0, frame.top - kLeastCrop);
    }
    if (cropHandle & kTop) frame.top = std::clamp(frame.top + dy, frame.bottom + kLeastCrop, 1.0);
  }
  SetCrop(frame);
  if (onCrop) onCrop(frame);
}

void PictureView::Press(const toolkit::MouseEvent& event) {
  pressedAt = event.place;
  const int line = static_cast<int>(split * Where().width);
  isSplitting = comparison == Comparison::Split && std::abs(event.place.x - line) <= kReach;
  cropHandle = event.button == 1 && !isSplitting ? CropHandleAt(event.place) : 0;
  if (cropHandle) cropAtPress = *crop;
  const bool isClick = takesClicks && event.button == 1 && !isSplitting && !cropHandle;
  isPanning = !isClick && !isSplitting && !cropHandle && event.button != 2;
  const auto share = ShareAt(event.place);
  if (isClick && share && onClick) onClick(*share);
}

void PictureView::Move(const toolkit::MouseEvent& event) {
  const Point by{event.place.x - pointer.x, event.place.y - pointer.y};
  pointer = event.place;
  if (onPointer) onPointer(ShareAt(pointer));
  if (event.button == 0) return;
  if (isSplitting) {
    split = std::clamp(static_cast<double>(pointer.x) / std::max(1, Where().width), 0.0, 1.0);
    Redraw();
  } else if (cropHandle) {
    DragCrop(event.place);
  } else if (isPanning && !IsFitted()) {
    Pan(by);
  }
}

void PictureView::HandleMouse(const toolkit::MouseEvent& event) {
  switch (event.action) {
    case MouseAction::Press:
      pointer = event.place;
      return Press(event);
    case MouseAction::DoublePress:
      if (takesClicks || crop) return Press(event);
      return IsFitted() ? SetScale(1, event.place) : Fit();
    case MouseAction::Move:
      return Move(event);
    case MouseAction::Release:
      isPanning = isSplitting = false;
      cropHandle = 0;
      return;
    case MouseAction::Leave:
      if (onPointer) onPointer(std::nullopt);
  }
}

// --- painting

const PicturePointer& PictureView::After() const {
  return !IsFitted() && fullAfter ? fullAfter : fitAfter;
}

const PicturePointer& PictureView::Before() const {
  return !IsFitted() && fullBefore ? fullBefore : fitBefore;
}

// The left `share` of the picture.
void PictureView::Paint(toolkit::Painter& painter, const Rect& place, const MemoryPicture& picture,
                        double share) {
  const int width = static_cast<int>(std::lround(place.width * share));
  const toolkit::PictureRows rows = LeftPart(picture, share);
  if (rows.width < 1 || width < 1) return;
  if (showsMask) {
    painter.DrawPicture({place.x, place.y, width, place.height},
                        MaskRows(picture).Rows(rows.width));
  } else {
    painter.DrawPicture({place.x, place.y, width, place.height}, rows);
  }
}

// In the middle of the result's place.
Rect PictureView::BeforePlace() const {
  const Rect place = PicturePlace();
  const int width = std::max(1, static_cast<int>(std::lround(place.width * beforeSides.x)));
  const int height = std::max(1, static_cast<int>(std::lround(place.height * beforeSides.y)));
  return {place.x + (place.width - width) / 2, place.y + (place.height - height) / 2, width,
          height};
}

void PictureView::PaintCrop(toolkit::Painter& painter, const Rect& place) const {
  const auto x = [&](double share) {
    return place.x + static_cast<int>(std::lround(share * place.width));
  };
  const auto y = [&](double share) {
    return place.y + static_cast<int>(std::lround((1 - share) * place.height));
  };
  const int left = x(crop->left), right = x(crop->right), top = y(crop->top),
            bottom = y(crop->bottom);
  constexpr double kShade = 0.55;
  painter.Shade({place.x, place.y, place.width, top - place.y}, kShade);
  painter.Shade({place.x, bottom, place.width, place.Bottom() - bottom}, kShade);
  painter.Shade({place.x, top, left - place.x, bottom - top}, kShade);
  painter.Shade({right, top, place.Right() - right, bottom - top}, kShade);
  const toolkit::Spot frame[] = {{left + 0.0, top + 0.0},
                                 {right + 0.0, top + 0.0},
                                 {right + 0.0, bottom + 0.0},
                                 {left + 0.0, bottom + 0.0},
                                 {left + 0.0, top + 0.0}};
  painter.DrawLines(frame, {255, 255, 255}, 1.5);
  for (const int cornerX : {left, (left + right) / 2, right}) {
    for (const int cornerY : {top, (top + bottom) / 2, bottom}) {
      if (cornerX == (left + right) / 2 && cornerY == (top + bottom) / 2) continue;
      painter.FillRect({cornerX - 4, cornerY - 4, 9, 9}, {255, 255, 255});
    }
  }
}

void PictureView::HandlePaint(toolkit::Painter& painter) {
  PaintAll(painter);
  if (onPaint) onPaint();
}

void PictureView::PaintAll(toolkit::Painter& painter) {
  const toolkit::Look look = CZNTheme::Colours();
  const auto [width, height] = painter.Area();
  const toolkit::Colour ground = CZNTheme::Mixed(look.window, {0, 0, 0}, 0.35);
  painter.FillRect({0, 0, width, height}, ground);
  if (!After()) {
    return painter.WriteLine({0, 0, width, height}, Words("DESK_NO_PICTURE"),
                             CZNTheme::Mixed(look.text, ground, 0.2), toolkit::TextAlign::Centre);
  }
  const Rect place = PicturePlace();
  if (comparison == Comparison::Before && Before()) {
    Paint(painter, BeforePlace(), *Before(), 1);
  } else {
    Paint(painter, place, *After(), 1);
  }
  if (comparison == Comparison::Split && Before()) {
    const int line = static_cast<int>(split * width);
    const Rect left = BeforePlace();
    const double share = std::clamp((line - left.x) / static_cast<double>(left.width), 0.0, 1.0);
    painter.FillRect({0, 0, line, height}, ground);
    Paint(painter, left, *Before(), share);
    painter.FillRect({line - 1, 0, 2, height}, {255, 255, 255});
    const int label = Dialog()->System().Scaled(28), gap = Dialog()->System().Scaled(10);
    painter.WriteLine({0, 0, line - gap, label}, Words("DESK_BEFORE"), {255, 255, 255},
                      toolkit::TextAlign::Right);
    painter.WriteLine({line + gap, 0, width - line - gap, label}, Words("DESK_AFTER"),
                      {255, 255, 255});
  }
  if (crop) PaintCrop(painter, place);
}

}  // namespace desk
