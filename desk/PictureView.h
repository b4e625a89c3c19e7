// The picture in the middle of the window: fit, zoom, pan; before and after; what is clicked in it.
#pragma once

#include <functional>
#include <optional>
#include <string>

#include "desk/PictureTools.h"
#include "desk/RenderService.h"
#include "desk/Views.h"

namespace desk {

// What the picture shows beside the one that is the result.
enum class Comparison { After, Before, Split };

class PictureView final : public CZNCanvas {
 public:
  explicit PictureView(CZNDialog& dialog);

  void Show(const RenderResult& result);
  void Clear();

  // The room that the picture fits into.
  host::Size Box() const;
  // Pixels of the screen for one of the finished picture; fitted pictures are never enlarged.
  double Scale() const;
  bool IsFitted() const { return zoom == 0; }
  void Fit();
  void SetScale(double scale, std::optional<toolkit::Point> around = std::nullopt);
  void ZoomBy(double factor);
  // Whether more than the fitted picture is needed.
  bool WantsFull() const { return !IsFitted(); }

  Comparison Compared() const { return comparison; }
  void Compare(Comparison newComparison);

  // What the mask hides is shown as black and white: white is opaque.
  bool ShowsMask() const { return showsMask; }
  void ShowMask(bool shows);

  // Where the picture lies in the view.
  toolkit::Rect PicturePlace() const;
  // The place as shares of the picture, y from the bottom; nothing outside of it.
  std::optional<toolkit::Spot> ShareAt(toolkit::Point place) const;

  // A press goes to onClick instead of moving the picture.
  void TakeClicks(bool takes) { takesClicks = takes; }
  void SetCrop(const std::optional<CropFrame>& frame);

  std::function<void(toolkit::Spot share)> onClick;
  std::function<void(const CropFrame&)> onCrop;
  std::function<void(std::optional<toolkit::Spot> share)> onPointer;
  std::function<void()> onZoom;
  std::function<void()> onResize;
  std::function<void()> onPaint;  // behind each painting

 private:
  void HandleMouse(const toolkit::MouseEvent& event) override;
  bool HandleWheel(double notches, bool hasFocus) override;
  bool HandleKey(const toolkit::KeyEvent& event) override;
  void HandlePaint(toolkit::Painter& painter) override;

  void PaintAll(toolkit::Painter& painter);
  void Paint(toolkit::Painter& painter, const toolkit::Rect& place, const MemoryPicture& picture,
             double share);
  toolkit::Rect BeforePlace() const;
  void PaintCrop(toolkit::Painter& painter, const toolkit::Rect& place) const;
  const PicturePointer& After() const;
  const PicturePointer& Before() const;
  int CropHandleAt(toolkit::Point place) const;
  void DragCrop(toolkit::Point place);
  void Pan(toolkit::Point by);
  void Press(const toolkit::MouseEvent& event);
  void Move(const toolkit::MouseEvent& event);

  PicturePointer fitAfter, fitBefore, fullAfter, fullBefore;
  host::Size fullSize;
  toolkit::Spot beforeSides{1, 1};  // of the picture before, as shares of those of the result
  double zoom = 0;                  // 0: fitted
  toolkit::Spot centre{0.5, 0.5};   // of the view, as a share of the picture, y downwards
  Comparison comparison = Comparison::After;
  double split = 0.5;  // of the view's width
  bool showsMask = false;
  bool takesClicks = false;
  std::optional<CropFrame> crop;
  CropFrame cropAtPress;
  int cropHandle = 0;
  bool isPanning = false, isSplitting = false;
  toolkit::Point pointer, pressedAt;
};

}  // namespace desk
