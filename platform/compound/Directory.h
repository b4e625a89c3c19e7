// The directory: all elements of the file, each below its storage.
#pragma once

#include <map>
#include <optional>
#include <set>
#include <string_view>
#include <vector>

#include "platform/compound/ElementName.h"
#include "platform/compound/SiblingTree.h"

namespace platform::compound {

class Directory {
 public:
  // Of a new file: the root alone.
  Directory();
  // From the directory's bytes. Elements that the root does not lead to are left out.
  Directory(const Bytes& bytes, bool hasLongSizes);

  // Whether there is a root at all, and whether all entries and trees are right.
  bool HasRoot() const { return hasRoot; }
  bool IsWhole() const { return isWhole; }

  Element& At(Id id) { return elements[id]; }
  std::size_t Size() const { return elements.size(); }
  // kNone when the storage has no such element.
  Id Find(Id storage, std::u16string_view name) const;
  std::vector<Id> Children(Id storage) const;
  // All below the storage, those further up first.
  std::vector<Id> Descendants(Id storage) const;
  bool IsBelow(Id id, Id storage) const;

  // An element that is found from now on, but not written before List.
  Id Add(Id storage, std::u16string_view name, Type type);
  void List(Id id);
  void Remove(Id id);
  void Rename(Id id, std::u16string_view name);
  void Touch(Id id) { elements[id].isChanged = true; }

  // The bytes of the entries first, first + 1, ... that fill one sector, when one of them has
  // changed or the sector is new.
  std::optional<Bytes> ChangedSector(std::size_t first, std::size_t entries, bool isNew) const;
  bool HasChanges() const;
  void Committed();

 private:
  using Place = std::pair<Id, NameKey>;

  void ReadTrees();
  std::vector<Id> Walk(Id storage, std::vector<bool>& reached);
  void Adopt(Id storage, const std::vector<Id>& ordered);
  std::vector<Id> Listed(Id storage) const;
  void Prepare(Id storage);
  void Unlist(Id id);

  std::vector<Element> elements;
  std::map<Place, Id> places;
  std::set<Id> prepared;  // storages whose tree is known to be right
  std::set<Id> vacant;
  bool hasRoot = true;
  bool isWhole = true;
};

}  // namespace platform::compound
