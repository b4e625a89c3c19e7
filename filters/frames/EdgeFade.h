// A picture whose edges fade into transparency: the mask of each row, by its place in the picture.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "filters/frames/EdgeFadeKernels.h"

namespace kernels {

// A number of each column, as the kernels take them.
class FadedColumns {
 public:
  void Add(double number) {
    exact_.push_back(number);
    about_.push_back(static_cast<float>(number));
  }
  double operator[](int column) const { return exact_[static_cast<std::size_t>(column)]; }
  FadeNumbers From(int column) const { return {exact_.data() + column, about_.data() + column}; }

 private:
  std::vector<double> exact_;
  std::vector<float> about_;
};

struct FadedEdges {
  bool left = true, top = true, right = true, bottom = true;
};

// For a picture of one size, of which row 0 is the bottom row.
class EdgeFade {
 public:
  // `reach` is how many pixels the fade goes inwards, half the picture's shorter side at most;
  // below 0.5 nothing fades. In round corners the distance from the corner of the inner rectangle
  // counts, in others the larger of both ways.
  EdgeFade(int width, int height, double reach, const FadedEdges& edges, bool roundCorners);

  int Width() const { return width_; }
  int Height() const { return height_; }

  // Weakens the opacity of `count` pixels of row y from column x on; all lie in the picture.
  void FadeRow(std::uint8_t* mask, int x, int y, int count) const;

 private:
  // How far outwards a pixel lies on one axis: 0 in the inner rectangle, nearly 1 at the edge.
  double WayOut(int at, int size, bool lowFades, bool highFades) const;
  // How many columns at either end of a row are faded together, the outermost ones first.
  int MirroredColumns() const;
  void FadeBothSides(std::uint8_t* mask, int count, double across) const;
  // Columns `first` to `end` - 1, which lie at the left or at the right, or anywhere between; and
  // those that do not fade along the row.
  void FadeSide(std::uint8_t* mask, int first, int end, double across) const;
  void FadeMiddle(std::uint8_t* mask, int first, int end, double across) const;

  int width_, height_;
  double reach_;
  FadedEdges edges_;
  bool isRound_;
  int leftEnd_ = 0;      // the first column that does not fade at the left
  int rightStart_ = 0;   // the first column that fades at the right
  FadedColumns ways_;    // how far outwards each column lies
  FadedColumns shares_;  // what is left of its opacity in a row that does not fade
};

}  // namespace kernels
