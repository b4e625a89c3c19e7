// The chain that a person works on: its filters, what is selected, and every step back and forth.
#pragma once

#include <cstdint>
#include <functional>
#include <set>
#include <string>
#include <vector>

namespace desk {

// One filter of the chain. Texts are in the library's code page.
struct ChainItem {
  int id = 0;  // of this filter as long as the document lives, through undo and redo
  std::string progId;
  std::string parameters;
  bool isOn = true;
  bool operator==(const ChainItem&) const = default;
};

using ChainItems = std::vector<ChainItem>;

// "name(parameters)" of the items one behind the other; those that are switched off only with
// `all`.
std::string TextOf(const ChainItems& items, bool all = false);
// The items of such a text, without ids.
ChainItems ItemsOf(const std::string& chainText, bool areOn = true);

// One thread. Places count from 0 at the side of the picture. What lies outside the chain, and ids
// that are gone, are passed over.
class ChainDocument {
 public:
  const ChainItems& Items() const { return items; }
  const ChainItem* Find(int id) const;
  int PlaceOf(int id) const;  // -1 when it is gone

  // Each is one step that can be undone. New filters become the selection.
  int Add(const std::string& progId, const std::string& parameters, int place);
  void Insert(const ChainItems& added, int place);
  void Remove(const std::set<int>& ids);
  void Switch(const std::set<int>& ids, bool isOn);
  // Moves the filters, in their order, ahead of the one that is at `place` now.
  void Move(const std::set<int>& ids, int place);
  void Replace(const ChainItems& all);
  // Parameters of several filters at once. Changes of the same filters one after the other are one
  // step as long as `gesture` is the same; 0 is a step for itself.
  struct Change {
    int id;
    std::string parameters;
  };
  void SetParameters(const std::vector<Change>& changes, std::uint64_t gesture = 0);

  const std::set<int>& Selection() const { return selection; }
  void Select(const std::set<int>& ids);
  ChainItems Selected() const;  // in their order

  bool CanUndo() const { return !past.empty(); }
  bool CanRedo() const { return !future.empty(); }
  void Undo();
  void Redo();
  // What the next Undo takes back and the next Redo does again, as a key of Words.
  std::string UndoName() const { return past.empty() ? "" : past.back().name; }
  std::string RedoName() const { return future.empty() ? "" : future.back().name; }

  // Empties chain and history; the chain that is given is the start.
  void Reset(const ChainItems& start = {});

  // Called behind each change of items or of the selection alone.
  std::function<void()> onItems;
  std::function<void()> onSelection;

 private:
  struct Step {
    std::string name;
    ChainItems items;
    std::set<int> selection;
  };
  void Begin(const std::string& name, std::uint64_t gesture = 0);
  void End();
  void Swap(std::vector<Step>& from, std::vector<Step>& to);
  void DropGone();
  std::size_t Clamped(int place) const;

  ChainItems items;
  std::set<int> selection;
  std::vector<Step> past, future;
  std::uint64_t lastGesture = 0;
  std::vector<int> lastChanged;
  int lastId = 0;
};

}  // namespace desk
