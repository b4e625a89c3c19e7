// A curve through a few nodes on a square of 0..255 by 0..255, as a person draws and drags it.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "base/Export.h"
#include "editing/CurveTables.h"

// Indices count from 0. Operations that change nodes give the index of the node that they worked
// on, or kRefused. Belongs to one thread.
class FXBOX_API RCNodeCurve {
 public:
  struct Point {
    std::int32_t x = 0, y = 0;
    bool operator==(const Point&) const = default;
  };

  static constexpr int kRefused = -1;

  virtual ~RCNodeCurve() = default;

  int Count() const { return static_cast<int>(nodes.size()); }

  // The middle between a node and the next one.
  int InsertAfter(int index);
  // A node at its place in the order of x, which becomes the current one. Refused between nodes of
  // which one is less than the spacing away, and right of the square; ahead of the first node any x
  // is taken.
  int InsertAt(int x, int y);
  // The ends cannot go: their neighbours go in their place.
  int Remove(int index);
  // A node in the middle of the largest gap.
  int AddNode() { return InsertAfter(LargestGap()); }
  // Removes the node behind the smallest gap.
  int ThinOut() { return Remove(SmallestGap() + 1); }

  // The index ahead of the gap, measured along the line between both nodes. The first gap does not
  // count as the smallest, unless it is the only one.
  int LargestGap() const;
  int SmallestGap() const;

  // Repairs one node after a drag by the first rule that it breaks: inside the square, then apart
  // from its neighbours. True when it moved.
  bool Constrain(int index);

  enum class MirrorKind { TopDown, LeftRight, AcrossFallingDiagonal, AcrossRisingDiagonal };
  void Mirror(int index, MirrorKind kind);
  enum class SortBy { X, Y };
  // Gives the number of swaps of neighbours.
  int Sort(SortBy by);
  enum class ReverseMode { WholeNodes, XAlone, YAlone };
  // Swaps the first node with the last one and so on inwards.
  void Reverse(ReverseMode mode);
  // Spaces the nodes evenly from corner to corner of the range, falling with `flip`.
  void SpreadNodes(bool flip);

  // 0 ahead of the first node, 255 behind the last one.
  int GetX(int index) const;
  int GetY(int index) const;
  // Limited to 0..255. Without effect where there is no such node.
  void SetX(int index, int value);
  void SetY(int index, int value);

  // On the screen y grows downwards. `transposed` shows the curve with x and y swapped.
  Point ToScreen(Point curve, bool transposed = false) const;
  Point FromScreen(Point screen, bool transposed = false) const;
  // The node nearest to a place on the screen, within the hit radius.
  int HitTest(int x, int y, bool transposed = false) const;

  // Fills the spline table between the first and the last node. False, and the table as it was,
  // where there is no spline through the nodes.
  bool RecalculateSpline();

  // A line of text a node; `show` opens them in a message box too.
  std::string Dump(bool show) const;

  std::int32_t right = 255, top = 255, left = 0, bottom = 0;  // the range
  bool linear = false;                                        // straight segments, no spline
  std::uint8_t splineTable[257] = {};
  std::int32_t mostNodes = 16;
  std::int32_t current = 0;  // index of the node that is worked on
  std::int32_t changed = 1;
  std::vector<editing::CurveNode> nodes = {{0, 0}, {255, 255}};  // two at least, in the order of x
  Point origin = {25, 50};                                       // on the screen
  std::int32_t hitRadius = 40;                                   // screen pixels
  std::int32_t markerSize = 4;
  std::int32_t spacing = 1;  // least distance of neighbours in x

 private:
  bool Has(int index) const { return index >= 0 && index < Count(); }
  editing::CurveNode& At(int index) { return nodes[static_cast<std::size_t>(index)]; }
  const editing::CurveNode& At(int index) const { return nodes[static_cast<std::size_t>(index)]; }
  void Insert(int index, editing::CurveNode node);
  double SquaredGap(int index) const;
};
