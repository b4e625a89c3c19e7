#include "desk/ChainDocument.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "core/ChainText.h"

namespace desk {

std::string TextOf(const ChainItems& items, bool all) {
  std::string text;
  for (const ChainItem& item : items) {
    if (item.isOn || all) text += item.progId + "(" + item.parameters + ")";
  }
  return text;
}

ChainItems ItemsOf(const std::string& chainText, bool areOn) {
  ChainItems items;
  for (const ChainTextItem& item : SplitChainText(chainText.c_str(), "(", ")")) {
    items.push_back({0, item.name, item.parameters, areOn});
  }
  return items;
}

const ChainItem* ChainDocument::Find(int id) const {
  const int place = PlaceOf(id);
  return place < 0 ? nullptr : &items[static_cast<std::size_t>(place)];
}

int ChainDocument::PlaceOf(int id) const {
  const auto found = std::find_if(items.begin(), items.end(),
                                  [&](const ChainItem& item) { return item.id == id; });
  return found == items.end() ? -1 : static_cast<int>(found - items.begin());
}

std::size_t ChainDocument::Clamped(int place) const {
  return static_cast<std::size_t>(std::clamp(place, 0, static_cast<int>(items.size())));
}

// --- steps

void ChainDocument::Begin(const std::string& name, std::uint64_t gesture) {
  lastGesture = gesture;
  past.push_back({name, items, selection});
  future.clear();
}

void ChainDocument::End() {
  DropGone();
  if (onItems) onItems();
}

void ChainDocument::DropGone() {
  std::erase_if(selection, [&](int id) { return !Find(id); });
}

int ChainDocument::Add(const std::string& progId, const std::string& parameters, int place) {
  Insert({{0, progId, parameters, true}}, place);
  return lastId;
}

void ChainDocument::Insert(const ChainItems& added, int place) {
  if (added.empty()) return;
  Begin(added.size() == 1 ? "DESK_STEP_ADD" : "DESK_STEP_ADD_MANY");
  selection.clear();
  ChainItems fresh = added;
  for (ChainItem& item : fresh) {
    item.id = ++lastId;
    selection.insert(item.id);
  }
  items.insert(items.begin() + static_cast<std::ptrdiff_t>(Clamped(place)), fresh.begin(),
               fresh.end());
  End();
}

void ChainDocument::Remove(const std::set<int>& ids) {
  const auto isGone = [&](const ChainItem& item) { return ids.contains(item.id); };
  const auto first = std::find_if(items.begin(), items.end(), isGone);
  if (first == items.end()) return;
  const auto place = static_cast<std::size_t>(first - items.begin());
  Begin("DESK_STEP_DELETE");
  std::erase_if(items, isGone);
  DropGone();
  if (selection.empty() && !items.empty()) {
    selection.insert(items[std::min(place, items.size() - 1)].id);
  }
  End();
}

void ChainDocument::Switch(const std::set<int>& ids, bool isOn) {
  const bool changes = std::any_of(items.begin(), items.end(), [&](const ChainItem& item) {
    return ids.contains(item.id) && item.isOn != isOn;
  });
  if (!changes) return;
  Begin(isOn ? "DESK_STEP_ON" : "DESK_STEP_OFF");
  for (ChainItem& item : items) {
    if (ids.contains(item.id)) item.isOn = isOn;
  }
  End();
}

void ChainDocument::Move(const std::set<int>& ids, int place) {
  const auto isMoved = [&](const ChainItem& item) { return ids.contains(item.id); };
  const auto split = items.begin() + static_cast<std::ptrdiff_t>(Clamped(place));
  ChainItems moved, wanted;
  std::copy_if(items.begin(), items.end(), std::back_inserter(moved), isMoved);
  std::remove_copy_if(items.begin(), split, std::back_inserter(wanted), isMoved);
  wanted.insert(wanted.end(), moved.begin(), moved.end());
  std::remove_copy_if(split, items.end(), std::back_inserter(wanted), isMoved);
  if (wanted == items) return;
  Begin("DESK_STEP_MOVE");
  items = std::move(wanted);
  End();
}

void ChainDocument::Replace(const ChainItems& all) {
  Begin("DESK_STEP_LOAD");
  items = all;
  for (ChainItem& item : items) item.id = ++lastId;
  End();
}

void ChainDocument::SetParameters(const std::vector<Change>& changes, std::uint64_t gesture) {
  ChainItems wanted = items;
  std::vector<int> changed;
  for (const Change& change : changes) {
    const int place = PlaceOf(change.id);
    if (place < 0) continue;
    wanted[static_cast<std::size_t>(place)].parameters = change.parameters;
    changed.push_back(change.id);
  }
  if (wanted == items) return;
  const bool goesOn = gesture != 0 && gesture == lastGesture && changed == lastChanged;
  if (!goesOn) Begin("DESK_STEP_PARAMETERS", gesture);
  lastChanged = std::move(changed);
  items = std::move(wanted);
  End();
}

void ChainDocument::Select(const std::set<int>& ids) {
  const auto before = std::exchange(selection, ids);
  DropGone();
  if (selection != before && onSelection) onSelection();
}

ChainItems ChainDocument::Selected() const {
  ChainItems chosen;
  std::copy_if(items.begin(), items.end(), std::back_inserter(chosen),
               [&](const ChainItem& item) { return selection.contains(item.id); });
  return chosen;
}

// --- back and forth

void ChainDocument::Swap(std::vector<Step>& from, std::vector<Step>& to) {
  if (from.empty()) return;
  Step step = std::move(from.back());
  from.pop_back();
  to.push_back({step.name, std::move(items), std::move(selection)});
  items = std::move(step.items);
  selection = std::move(step.selection);
  lastGesture = 0;
  End();
}

void ChainDocument::Undo() {
  Swap(past, future);
}

void ChainDocument::Redo() {
  Swap(future, past);
}

void ChainDocument::Reset(const ChainItems& start) {
  past.clear();
  future.clear();
  selection.clear();
  lastGesture = 0;
  items = start;
  for (ChainItem& item : items) item.id = ++lastId;
  End();
}

}  // namespace desk
