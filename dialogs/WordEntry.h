// A table of words by key, as dialogs/MakeWords.cmake writes it. All of it is in this header: the
// desk has tables of its own, and on Windows it reaches only what the library exports.
#pragma once

#include <cstring>

namespace dialogs {

struct WordEntry {
  const char* key;
  const char* words;  // UTF-8
};

// The words for a key of a table, which ends with nulls; null where it is not there.
inline const char* WordsIn(const WordEntry* entry, const char* key) {
  while (entry->key && std::strcmp(entry->key, key) != 0) ++entry;
  return entry->words;
}

}  // namespace dialogs
