#include "dialogs/Words.h"

#include <cstring>

#include "dialogs/WordTables.h"

namespace dialogs {

const char* FindWords(const char* key, const std::string& language) {
  const WordEntry* entry = language == "de" ? kWords_de : kWords_en;
  while (entry->key && std::strcmp(entry->key, key) != 0) ++entry;
  return entry->words;
}

}  // namespace dialogs
