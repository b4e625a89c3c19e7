#include "desk/Words.h"

#include <cstring>

#include "desk/WordTables.h"

namespace desk {
namespace {

const WordEntry* chosen = kWords_en;

const WordEntry* TableOf(const std::string& language) {
  return language == "de" ? kWords_de : kWords_en;
}

void Replace(std::string& text, const char* mark, const std::string& with) {
  const std::size_t at = text.find(mark);
  if (at != text.npos) text.replace(at, std::strlen(mark), with);
}

}  // namespace

void ChooseLanguage(const std::string& language) {
  chosen = TableOf(language);
}

// The second one first: the first may hold anything.
std::string Words(const std::string& key, const std::string& first, const std::string& second) {
  const char* const found = dialogs::WordsIn(chosen, key.c_str());
  std::string text = found ? found : key;
  Replace(text, "%2", second);
  Replace(text, "%1", first);
  return text;
}

const char* FindWords(const char* key, const std::string& language) {
  return dialogs::WordsIn(TableOf(language), key);
}

}  // namespace desk
