// The tables that are made from resources/strings/desk; each ends with nulls.
#pragma once

namespace desk {

struct WordEntry {
  const char* key;
  const char* words;
};

extern const WordEntry kWords_de[];
extern const WordEntry kWords_en[];

}  // namespace desk
