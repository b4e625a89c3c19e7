#include "editing/CurveTables.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <random>
#include <vector>

#include "filters/pixels/ByteTableKernels.h"

namespace {

using editing::CurveNode;
using kernels::ByteTable;
using Nodes = std::vector<CurveNode>;

ByteTable Marked() {
  ByteTable table;
  table.fill(99);
  return table;
}

// By hand: M of the middle node at (128, 192) is 3 x (63 / 127 - 192 / 128) / 255, the quarter
// points of its intervals follow.
TEST(CurveTables, SplineAndLinesByHand) {
  const Nodes bent = {{0, 0}, {128, 192}, {255, 255}};
  ByteTable spline = Marked();
  ByteTable lines = Marked();
  ASSERT_TRUE(editing::BuildSplineTable(bent, spline));
  ASSERT_TRUE(editing::BuildLineTable(bent, lines));
  const struct {
    std::size_t at;
    int spline, line;
  } kCases[] = {{0, 0, 0},       {32, 56, 48},    {64, 108, 96},
                {128, 192, 192}, {192, 236, 224}, {255, 255, 255}};
  for (const auto& c : kCases) {
    EXPECT_EQ(spline[c.at], c.spline) << c.at;
    EXPECT_EQ(lines[c.at], c.line) << c.at;
  }
}

TEST(CurveTables, EndsFlatsAndIdentity) {
  for (const auto build : {editing::BuildSplineTable, editing::BuildLineTable}) {
    ByteTable table = Marked();
    ASSERT_TRUE(build(Nodes{{0, 0}, {255, 255}}, table));
    EXPECT_EQ(table, editing::IdentityTable());
    ASSERT_TRUE(build(Nodes{{0, 100}, {255, 100}}, table));
    EXPECT_EQ(std::count(table.begin(), table.end(), 100), 256);
    ASSERT_TRUE(build(Nodes{{50, 10}, {200, 160}}, table));
    EXPECT_EQ(table[0], 10);
    EXPECT_EQ(table[50], 10);
    EXPECT_EQ(table[51], 11);
    EXPECT_EQ(table[200], 160);
    EXPECT_EQ(table[255], 160);
    // Between nodes that run backwards nothing is drawn, and both ends meet: at the last node a
    // line has reached it, a spline has not.
    ASSERT_TRUE(build(Nodes{{200, 10}, {100, 70}}, table));
    EXPECT_EQ(table[99], 10);
    EXPECT_EQ(table[100], build == editing::BuildLineTable ? 70 : 10);
    EXPECT_EQ(table[101], 70);
  }
  // What overshoots is cut.
  ByteTable table = Marked();
  ASSERT_TRUE(editing::BuildSplineTable(Nodes{{0, 0}, {100, 250}, {130, 255}, {255, 255}}, table));
  EXPECT_EQ(table[120], 255);
  EXPECT_TRUE(std::is_sorted(table.begin(), table.begin() + 100));
}

TEST(CurveTables, NodesOfOneX) {
  const Nodes step = {{0, 10}, {128, 60}, {128, 200}, {255, 220}};
  ByteTable table = Marked();
  EXPECT_FALSE(editing::BuildSplineTable(step, table));
  // Backwards by as much as forwards: the sum of two widths is 0.
  EXPECT_FALSE(editing::BuildSplineTable(Nodes{{0, 0}, {50, 9}, {0, 20}, {255, 255}}, table));
  EXPECT_FALSE(editing::BuildSplineTable(Nodes{{0, 0}}, table));
  EXPECT_FALSE(editing::BuildLineTable(Nodes{{0, 0}}, table));
  EXPECT_FALSE(editing::BuildSplineTable(Nodes(17), table));
  EXPECT_EQ(table, Marked());
  ASSERT_TRUE(editing::BuildLineTable(step, table));
  EXPECT_EQ(table[127], 60);
  EXPECT_EQ(table[128], 200);
  EXPECT_EQ(table[129], 200);
}

// Any nodes: the sanitizer build sees to the rest.
TEST(CurveTables, AnyNodesAreSafe) {
  std::mt19937 random(4);
  for (int round = 0; round < 3000; ++round) {
    Nodes nodes(random() % 18);
    for (CurveNode& node : nodes) {
      const auto value = [&]() -> std::int32_t {
        return random() % 16 ? static_cast<int>(random() % 256) : random() % 2 ? INT_MAX : INT_MIN;
      };
      node = {value(), value()};
    }
    ByteTable table = Marked();
    editing::BuildSplineTable(nodes, table);
    editing::BuildLineTable(nodes, table);
  }
}

}  // namespace
