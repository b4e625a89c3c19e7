#include "platform/compound/SiblingTree.h"

namespace platform::compound {
namespace {

// Levels of a tree of so many elements that are full.
int FullLevels(std::size_t count) {
  int levels = 0;
  while ((std::size_t{2} << levels) - 1 <= count) ++levels;
  return levels;
}

}  // namespace

void SiblingTree::SetLeft(Id parent, Id child) {
  At(parent).left = child;
  At(parent).isChanged = true;
  if (child != kNone) At(child).parent = parent;
}

void SiblingTree::SetRight(Id parent, Id child) {
  At(parent).right = child;
  At(parent).isChanged = true;
  if (child != kNone) At(child).parent = parent;
}

// Puts `replacement` where `old` hangs below `parent`, or at the top.
void SiblingTree::Link(Id parent, Id old, Id replacement) {
  if (parent == kNone) {
    root = replacement;
    if (replacement != kNone) At(replacement).parent = kNone;
  } else if (At(parent).left == old) {
    SetLeft(parent, replacement);
  } else {
    SetRight(parent, replacement);
  }
}

void SiblingTree::Paint(Id id, bool isBlack) {
  if (id == kNone || At(id).isBlack == isBlack) return;
  At(id).isBlack = isBlack;
  At(id).isChanged = true;
}

void SiblingTree::Rotate(Id top, bool toLeft) {
  const Id rising = toLeft ? At(top).right : At(top).left;
  const Id parent = At(top).parent;
  if (toLeft) {
    SetRight(top, At(rising).left);
  } else {
    SetLeft(top, At(rising).right);
  }
  Link(parent, top, rising);
  toLeft ? SetLeft(rising, top) : SetRight(rising, top);
}

bool SiblingTree::IsBalanced(std::size_t count) const {
  struct Step {
    Id id;
    std::size_t blacks;
    std::size_t depth;
  };
  if (root == kNone) return true;
  if (IsRed(root)) return false;
  const std::size_t most = 2 * (static_cast<std::size_t>(FullLevels(count)) + 1);
  std::size_t expected = 0;
  std::vector<Step> steps = {{root, 0, 0}};
  while (!steps.empty()) {
    const Step step = steps.back();
    steps.pop_back();
    if (step.id == kNone) {
      if (expected == 0) expected = step.blacks + 1;
      if (expected != step.blacks + 1) return false;
      continue;
    }
    const Element& element = At(step.id);
    const bool isRed = !element.isBlack;
    if (step.depth > most || (isRed && (IsRed(element.left) || IsRed(element.right)))) return false;
    const std::size_t blacks = step.blacks + (isRed ? 0 : 1);
    steps.push_back({element.left, blacks, step.depth + 1});
    steps.push_back({element.right, blacks, step.depth + 1});
  }
  return true;
}

// The middle goes to the top; only the last level, which may have gaps, is red.
Id SiblingTree::BuildSpan(const std::vector<Id>& ordered, std::size_t first, std::size_t end,
                          int blackLevels) {
  if (first == end) return kNone;
  const std::size_t middle = first + (end - first) / 2;
  const Id top = ordered[middle];
  SetLeft(top, BuildSpan(ordered, first, middle, blackLevels - 1));
  SetRight(top, BuildSpan(ordered, middle + 1, end, blackLevels - 1));
  At(top).isBlack = blackLevels > 0;
  return top;
}

void SiblingTree::Build(const std::vector<Id>& ordered) {
  root = BuildSpan(ordered, 0, ordered.size(), FullLevels(ordered.size()));
  if (root != kNone) At(root).parent = kNone;
}

void SiblingTree::Insert(Id added, const std::function<bool(Id, Id)>& isLess) {
  Id parent = kNone;
  bool goesLeft = false;
  for (Id at = root; at != kNone; at = goesLeft ? At(at).left : At(at).right) {
    parent = at;
    goesLeft = isLess(added, at);
  }
  Element& element = At(added);
  element.left = element.right = element.parent = kNone;
  element.isBlack = false;
  element.isChanged = true;
  if (parent == kNone) {
    root = added;
  } else {
    goesLeft ? SetLeft(parent, added) : SetRight(parent, added);
  }
  RepairAfterInsert(added);
}

// A red element below a red one: colours and turns on the way up put it right.
void SiblingTree::RepairAfterInsert(Id at) {
  while (IsRed(At(at).parent)) {
    const Id parent = At(at).parent;
    const Id grand = At(parent).parent;
    const bool isLeft = At(grand).left == parent;
    const Id uncle = isLeft ? At(grand).right : At(grand).left;
    if (IsRed(uncle)) {
      Paint(parent, true);
      Paint(uncle, true);
      Paint(grand, false);
      at = grand;
      continue;
    }
    if (at == (isLeft ? At(parent).right : At(parent).left)) {
      at = parent;
      Rotate(at, isLeft);
    }
    Paint(At(at).parent, true);
    Paint(grand, false);
    Rotate(grand, !isLeft);
  }
  Paint(root, true);
}

void SiblingTree::Remove(Id removed) {
  const Element gone = At(removed);
  Id rising = gone.left != kNone ? gone.left : gone.right;
  Id parent = gone.parent;
  bool losesBlack = gone.isBlack;
  if (gone.left == kNone || gone.right == kNone) {
    Link(parent, removed, rising);
  } else {
    Id next = gone.right;
    while (At(next).left != kNone) next = At(next).left;
    losesBlack = At(next).isBlack;
    rising = At(next).right;
    parent = next;
    if (At(next).parent != removed) {
      parent = At(next).parent;
      Link(parent, next, rising);
      SetRight(next, gone.right);
    }
    Link(gone.parent, removed, next);
    SetLeft(next, gone.left);
    Paint(next, gone.isBlack);
  }
  if (losesBlack) RepairAfterRemove(rising, parent);
}

// The paths through `at`, which may be none, lack one black element.
void SiblingTree::RepairAfterRemove(Id at, Id parent) {
  while (parent != kNone && !IsRed(at)) {
    const bool isLeft = At(parent).left == at;
    const auto sibling = [&] { return isLeft ? At(parent).right : At(parent).left; };
    const auto outer = [&] { return isLeft ? At(sibling()).right : At(sibling()).left; };
    const auto inner = [&] { return isLeft ? At(sibling()).left : At(sibling()).right; };
    if (IsRed(sibling())) {
      Paint(sibling(), true);
      Paint(parent, false);
      Rotate(parent, isLeft);
    }
    if (!IsRed(inner()) && !IsRed(outer())) {
      Paint(sibling(), false);
      at = parent;
      parent = At(at).parent;
      continue;
    }
    if (!IsRed(outer())) Rotate(sibling(), !isLeft);
    Paint(sibling(), At(parent).isBlack);
    Paint(parent, true);
    Paint(outer(), true);
    Rotate(parent, isLeft);
    break;
  }
  Paint(at, true);
}

}  // namespace platform::compound
