#include "platform/compound/Directory.h"

#include <algorithm>

namespace platform::compound {
namespace {

bool IsStorage(const Element& element) {
  return element.type == Type::Storage || element.type == Type::Root;
}

}  // namespace

Directory::Directory() : elements(1) {
  Element& root = elements[kRoot];
  root.name = u"Root Entry";
  root.type = Type::Root;
  root.isBlack = root.isChanged = root.isListed = true;
  root.start = kEndOfChain;
}

Directory::Directory(const Bytes& bytes, bool hasLongSizes) : elements(bytes.size() / kEntrySize) {
  for (std::size_t i = 0; i < elements.size(); ++i) {
    const bool isRight = ReadEntry(&bytes[i * kEntrySize], hasLongSizes, elements[i]);
    isWhole = isWhole && isRight;
    if (elements[i].type == Type::Unused) vacant.insert(static_cast<Id>(i));
  }
  hasRoot = !elements.empty() && elements[kRoot].type == Type::Root;
  isWhole = isWhole && hasRoot;
  if (hasRoot) ReadTrees();
}

void Directory::ReadTrees() {
  std::vector<bool> reached(elements.size());
  reached[kRoot] = elements[kRoot].isListed = true;
  std::vector<Id> storages = {kRoot};
  while (!storages.empty()) {
    const Id storage = storages.back();
    storages.pop_back();
    const std::vector<Id> ordered = Walk(storage, reached);
    Adopt(storage, ordered);
    for (const Id id : ordered) {
      if (IsStorage(elements[id])) storages.push_back(id);
    }
  }
}

// The elements of a storage from left to right. A link that leads nowhere, or to where another one
// leads, is a fault and is left out.
std::vector<Id> Directory::Walk(Id storage, std::vector<bool>& reached) {
  std::vector<Id> ordered;
  std::vector<Id> path;
  const auto isFollowed = [&](Id& id) {
    if (id == kNone) return false;
    const bool isRight = id < elements.size() && !reached[id] &&
                         (elements[id].type == Type::Storage || elements[id].type == Type::Stream);
    isWhole = isWhole && isRight;
    if (isRight) {
      reached[id] = true;
    } else {
      id = kNone;
    }
    return isRight;
  };
  const auto descend = [&](Id* link, Id parent) {
    for (; isFollowed(*link); link = &elements[parent].left) {
      elements[*link].parent = parent;
      parent = *link;
      path.push_back(parent);
    }
  };
  descend(&elements[storage].child, kNone);
  while (!path.empty()) {
    const Id id = path.back();
    path.pop_back();
    ordered.push_back(id);
    descend(&elements[id].right, id);
  }
  return ordered;
}

// The first of two elements of the same name is the one that is found.
void Directory::Adopt(Id storage, const std::vector<Id>& ordered) {
  bool isSorted = true;
  NameKey before;
  for (const Id id : ordered) {
    Element& element = elements[id];
    element.owner = storage;
    element.isListed = true;
    NameKey key = KeyOf(element.name);
    isSorted = isSorted && before < key;
    const bool isNew = places.emplace(Place(storage, key), id).second;
    isWhole = isWhole && isNew;
    before = std::move(key);
  }
  SiblingTree tree(elements, elements[storage].child);
  if (isSorted && tree.IsBalanced(ordered.size())) prepared.insert(storage);
}

Id Directory::Find(Id storage, std::u16string_view name) const {
  const auto found = places.find({storage, KeyOf(name)});
  return found == places.end() ? kNone : found->second;
}

std::vector<Id> Directory::Children(Id storage) const {
  std::vector<Id> children;
  for (auto at = places.lower_bound({storage, {}});
       at != places.end() && at->first.first == storage; ++at) {
    children.push_back(at->second);
  }
  return children;
}

std::vector<Id> Directory::Descendants(Id storage) const {
  std::vector<Id> found = Children(storage);
  for (std::size_t i = 0; i < found.size(); ++i) {
    const std::vector<Id> below = Children(found[i]);
    found.insert(found.end(), below.begin(), below.end());
  }
  return found;
}

bool Directory::IsBelow(Id id, Id storage) const {
  while (id != kNone && id != storage) id = elements[id].owner;
  return id == storage;
}

std::vector<Id> Directory::Listed(Id storage) const {
  std::vector<Id> children = Children(storage);
  const auto isUnlisted = [this](Id id) { return !elements[id].isListed; };
  children.erase(std::remove_if(children.begin(), children.end(), isUnlisted), children.end());
  return children;
}

// A tree of another writer need not have the order and balance that changing it relies on.
void Directory::Prepare(Id storage) {
  if (!prepared.insert(storage).second) return;
  SiblingTree(elements, elements[storage].child).Build(Listed(storage));
  elements[storage].isChanged = true;
}

Id Directory::Add(Id storage, std::u16string_view name, Type type) {
  if (vacant.empty()) {
    vacant.insert(static_cast<Id>(elements.size()));
    elements.emplace_back();
  }
  const Id id = *vacant.begin();
  Element made;
  made.name = name;
  made.type = type;
  made.owner = storage;
  made.start = type == Type::Stream ? kEndOfChain : 0;
  made.isChanged = elements[id].isChanged;  // one that was removed may still be on the disk
  places.emplace(Place(storage, KeyOf(name)), id);
  vacant.erase(id);
  elements[id] = std::move(made);
  if (type == Type::Storage) prepared.insert(id);
  return id;
}

void Directory::List(Id id) {
  Element& element = elements[id];
  if (element.isListed) return;
  Prepare(element.owner);
  element.isListed = true;
  elements[element.owner].isChanged = true;
  SiblingTree tree(elements, elements[element.owner].child);
  tree.Insert(id, [this](Id a, Id b) { return KeyOf(elements[a].name) < KeyOf(elements[b].name); });
}

// Afterwards no name leads to the element.
void Directory::Unlist(Id id) {
  const Id owner = elements[id].owner;
  if (elements[id].isListed) Prepare(owner);  // while its name still leads to it
  places.erase({owner, KeyOf(elements[id].name)});
  if (!elements[id].isListed) return;
  SiblingTree(elements, elements[owner].child).Remove(id);
  elements[owner].isChanged = true;
  elements[id].isListed = false;
}

void Directory::Remove(Id id) {
  Unlist(id);
  elements[id] = Element();
  elements[id].isChanged = true;
  prepared.erase(id);
  vacant.insert(id);
}

void Directory::Rename(Id id, std::u16string_view name) {
  const bool wasListed = elements[id].isListed;
  Unlist(id);
  elements[id].name = name;
  places.emplace(Place(elements[id].owner, KeyOf(name)), id);
  if (wasListed) List(id);
}

bool Directory::HasChanges() const {
  return std::any_of(elements.begin(), elements.end(),
                     [](const Element& element) { return element.isChanged; });
}

std::optional<Bytes> Directory::ChangedSector(std::size_t first, std::size_t entries,
                                              bool isNew) const {
  const std::size_t end = std::min(first + entries, elements.size());
  bool isWritten = isNew;
  for (std::size_t i = first; i < end; ++i) isWritten = isWritten || elements[i].isChanged;
  if (!isWritten) return std::nullopt;
  Bytes bytes(entries * kEntrySize);
  for (std::size_t i = 0; i < entries; ++i) {
    const bool isListed = first + i < end && elements[first + i].isListed;
    WriteEntry(isListed ? static_cast<const Entry&>(elements[first + i]) : Entry(),
               &bytes[i * kEntrySize]);
  }
  return bytes;
}

void Directory::Committed() {
  for (Element& element : elements) element.isChanged = false;
}

}  // namespace platform::compound
