// The binary tree that the elements of one storage form in the directory: a red-black tree, as
// other readers expect it.
#pragma once

#include <functional>
#include <vector>

#include "platform/compound/Format.h"

namespace platform::compound {

// An element of a storage in memory.
struct Element : Entry {
  Id owner = kNone;        // the storage that holds it
  Id parent = kNone;       // in the tree of its siblings
  bool isListed = false;   // is in that tree
  bool isChanged = false;  // differs from what was written
};

class SiblingTree {
 public:
  // The tree below `top`, a storage's `child`, over all elements.
  SiblingTree(std::vector<Element>& all, Id& top) : elements(all), root(top) {}

  // Whether colours and depths are those of a red-black tree of `count` elements.
  bool IsBalanced(std::size_t count) const;
  // Makes the tree anew from its elements in ascending order.
  void Build(const std::vector<Id>& ordered);
  // `isLess` says where the element goes.
  void Insert(Id added, const std::function<bool(Id, Id)>& isLess);
  void Remove(Id removed);

 private:
  Element& At(Id id) const { return elements[id]; }
  bool IsRed(Id id) const { return id != kNone && !elements[id].isBlack; }
  void Link(Id parent, Id old, Id replacement);
  void SetLeft(Id parent, Id child);
  void SetRight(Id parent, Id child);
  void Paint(Id id, bool isBlack);
  void Rotate(Id top, bool toLeft);
  void RepairAfterInsert(Id at);
  void RepairAfterRemove(Id at, Id parent);
  Id BuildSpan(const std::vector<Id>& ordered, std::size_t first, std::size_t end, int blackLevels);

  std::vector<Element>& elements;
  Id& root;
};

}  // namespace platform::compound
