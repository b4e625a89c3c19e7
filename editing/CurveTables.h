// Tables of 256 bytes from a curve through a few nodes.
#pragma once

#include <cstdint>
#include <span>

#include "base/ByteTable.h"
#include "base/Export.h"

namespace editing {

using base::ByteTable;

// A point of a curve: the byte x becomes the byte y. A curve holds its nodes from left to right,
// but any nodes are safe.
struct CurveNode {
  std::int32_t x = 0;
  std::int32_t y = 0;
  bool operator==(const CurveNode&) const = default;
};

// Each byte becomes itself.
FXBOX_API ByteTable IdentityTable();

// Writes the natural cubic spline through the nodes into the entries from the first node's x to the
// last one's, as far as the table reaches, limited to 0..255. False, and nothing written, where
// SolveNaturalSpline has no solution.
FXBOX_API bool WriteSpline(std::span<const CurveNode> nodes, std::span<std::uint8_t> table);

// The same for a whole table: what lies left of the first node takes its y, what lies right of the
// last one takes that one's.
FXBOX_API bool BuildSplineTable(std::span<const CurveNode> nodes, ByteTable& table);

// Straight lines in place of the spline. False, and nothing written, below two nodes. Two nodes of
// one x make a step; what lies between nodes that run backwards keeps its entry.
FXBOX_API bool BuildLineTable(std::span<const CurveNode> nodes, ByteTable& table);

}  // namespace editing
