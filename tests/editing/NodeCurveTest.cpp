#include "editing/NodeCurve.h"

#include <gtest/gtest.h>

#include <climits>

namespace {

using Nodes = std::vector<editing::CurveNode>;

RCNodeCurve Curve(Nodes nodes) {
  RCNodeCurve curve;
  curve.nodes = std::move(nodes);
  return curve;
}

TEST(NodeCurve, InsertsAtItsPlace) {
  RCNodeCurve curve;
  EXPECT_EQ(curve.InsertAt(100, 300), 1);
  EXPECT_EQ(curve.current, 1);
  EXPECT_EQ(curve.nodes, (Nodes{{0, 0}, {100, 255}, {255, 255}}));
  for (const int taken : {0, 100, 255, 256, INT_MAX}) EXPECT_EQ(curve.InsertAt(taken, 9), -1);
  // Ahead of the first node, even outside the square.
  EXPECT_EQ(curve.InsertAt(-3, 9), 0);
  EXPECT_EQ(curve.nodes.front(), (editing::CurveNode{-3, 9}));
  EXPECT_EQ(curve.InsertAt(INT_MIN, 9), 0);
  curve.nodes = {{10, 0}, {20, 0}};
  EXPECT_EQ(curve.InsertAt(255, 5), 2);
  EXPECT_EQ(curve.InsertAt(9, 5), 0);
  EXPECT_EQ(curve.current, 0);
  curve.spacing = 5;
  EXPECT_EQ(curve.InsertAt(14, 5), -1);
  EXPECT_EQ(curve.InsertAt(15, 5), 2);
  curve.mostNodes = 5;
  EXPECT_EQ(curve.InsertAt(100, 5), -1);
}

TEST(NodeCurve, InsertsIntoGapsAndRemoves) {
  RCNodeCurve curve;
  EXPECT_EQ(curve.LargestGap(), 0);
  EXPECT_EQ(curve.SmallestGap(), 0);
  EXPECT_EQ(curve.Remove(1), -1);
  EXPECT_EQ(curve.AddNode(), 1);
  EXPECT_EQ(curve.nodes, (Nodes{{0, 0}, {127, 127}, {255, 255}}));
  EXPECT_EQ(curve.LargestGap(), 1);
  EXPECT_EQ(curve.InsertAfter(INT_MIN), 1);
  EXPECT_EQ(curve.InsertAfter(16), 3);
  EXPECT_EQ(curve.InsertAfter(17), -1);
  EXPECT_EQ(curve.nodes, (Nodes{{0, 0}, {63, 63}, {127, 127}, {191, 191}, {255, 255}}));
  // The gap of the first node never counts as the smallest.
  curve.nodes = {{0, 0}, {1, 0}, {100, 0}, {150, 0}, {255, 0}};
  EXPECT_EQ(curve.SmallestGap(), 2);
  curve.current = 4;
  EXPECT_EQ(curve.ThinOut(), 3);
  EXPECT_EQ(curve.current, 3);
  EXPECT_EQ(curve.Remove(0), 1);
  EXPECT_EQ(curve.Remove(99), 1);
  EXPECT_EQ(curve.nodes, (Nodes{{0, 0}, {255, 0}}));
  EXPECT_EQ(Curve({}).LargestGap(), -1);
}

// One rule a call, in a fixed order.
TEST(NodeCurve, ConstrainsOneNode) {
  const Nodes start = {{10, 10}, {20, 20}, {30, 30}};
  const struct {
    int index;
    editing::CurveNode moved, found;
    bool change;
  } kCases[] = {{1, {-5, 300}, {0, 300}, true}, {1, {300, -1}, {255, -1}, true},
                {1, {25, -1}, {25, 0}, true},   {1, {25, 256}, {25, 255}, true},
                {1, {30, 0}, {29, 0}, true},    {1, {10, 0}, {11, 0}, true},
                {1, {25, 9}, {25, 9}, false},   {2, {20, 0}, {21, 0}, true},
                {2, {255, 0}, {255, 0}, false}, {0, {20, 0}, {19, 0}, true},
                {0, {0, 0}, {0, 0}, false}};
  for (const auto& c : kCases) {
    RCNodeCurve curve = Curve(start);
    curve.nodes[static_cast<std::size_t>(c.index)] = c.moved;
    EXPECT_EQ(curve.Constrain(c.index), c.change);
    EXPECT_EQ(curve.nodes[static_cast<std::size_t>(c.index)], c.found);
  }
  EXPECT_FALSE(Curve(start).Constrain(3));
}

TEST(NodeCurve, MirrorsSortsReversesAndSpreads) {
  using Kind = RCNodeCurve::MirrorKind;
  RCNodeCurve curve = Curve({{10, 40}, {10, 40}, {10, 40}, {10, 40}});
  for (const Kind kind :
       {Kind::TopDown, Kind::LeftRight, Kind::AcrossFallingDiagonal, Kind::AcrossRisingDiagonal}) {
    curve.Mirror(static_cast<int>(kind), kind);
  }
  EXPECT_EQ(curve.nodes, (Nodes{{10, 215}, {245, 40}, {215, 245}, {40, 10}}));
  EXPECT_EQ(curve.Sort(RCNodeCurve::SortBy::X), 3);
  EXPECT_EQ(curve.nodes, (Nodes{{10, 215}, {40, 10}, {215, 245}, {245, 40}}));
  EXPECT_EQ(curve.Sort(RCNodeCurve::SortBy::Y), 3);
  curve.Reverse(RCNodeCurve::ReverseMode::WholeNodes);
  EXPECT_EQ(curve.nodes, (Nodes{{215, 245}, {10, 215}, {245, 40}, {40, 10}}));
  curve.Reverse(RCNodeCurve::ReverseMode::XAlone);
  EXPECT_EQ(curve.nodes, (Nodes{{40, 245}, {245, 215}, {10, 40}, {215, 10}}));
  curve.SpreadNodes(false);
  EXPECT_EQ(curve.nodes, (Nodes{{0, 0}, {85, 85}, {170, 170}, {255, 255}}));
  curve.SpreadNodes(true);
  EXPECT_EQ(curve.nodes, (Nodes{{0, 255}, {85, 170}, {170, 85}, {255, 0}}));
  curve.SetX(1, 999);
  curve.SetY(1, -9);
  curve.SetY(4, 1);
  EXPECT_EQ(curve.GetX(1) - curve.GetY(1), 255);
  EXPECT_EQ(curve.GetX(-1) + curve.GetY(-1), 0);
  EXPECT_EQ(curve.GetX(4) + curve.GetY(4), 510);
}

TEST(NodeCurve, ScreenPlacesAndHits) {
  using Point = RCNodeCurve::Point;
  RCNodeCurve curve = Curve({{0, 0}, {60, 20}, {255, 255}});
  curve.right = 510;  // the screen is twice as wide
  EXPECT_EQ(curve.ToScreen({60, 20}), (Point{145, 285}));
  EXPECT_EQ(curve.FromScreen({145, 285}), (Point{60, 20}));
  EXPECT_EQ(curve.ToScreen({60, 20}, true), (Point{65, 245}));
  EXPECT_EQ(curve.FromScreen({65, 245}, true), (Point{60, 20}));
  EXPECT_EQ(curve.HitTest(145, 285), 1);
  EXPECT_EQ(curve.HitTest(145 + 40, 285), 1);
  EXPECT_EQ(curve.HitTest(145 + 41, 285), -1);
  curve.nodes = {{0, 0}, {20, 0}};
  EXPECT_EQ(curve.HitTest(25 + 20, 305), 0) << "of two equally near the first";
  EXPECT_EQ(curve.HitTest(25 + 21, 305), 1);
  curve.right = curve.left;
  EXPECT_EQ(curve.FromScreen({INT_MIN, INT_MAX}).x, 0);
}

TEST(NodeCurve, SplineTableAndDump) {
  RCNodeCurve curve = Curve({{50, 100}, {200, 100}});
  EXPECT_TRUE(curve.RecalculateSpline());
  EXPECT_EQ(curve.splineTable[49], 0);
  EXPECT_EQ(curve.splineTable[50], 100);
  EXPECT_EQ(curve.splineTable[200], 100);
  EXPECT_EQ(curve.splineTable[201], 0);
  EXPECT_EQ(curve.Dump(false), "Node  0: x =  50, y = 100\nNode  1: x = 200, y = 100\n");
  curve.nodes[1].x = 50;
  EXPECT_FALSE(curve.RecalculateSpline());
}

}  // namespace
