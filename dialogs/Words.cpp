#include "dialogs/Words.h"

#include "dialogs/WordTables.h"

namespace dialogs {

const char* FindWords(const char* key, const std::string& language) {
  return WordsIn(language == "de" ? kWords_de : kWords_en, key);
}

}  // namespace dialogs
