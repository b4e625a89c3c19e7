// The words of the desk, in the language of the person.
#pragma once

#include <string>

namespace desk {

// From now on the words of this language: "de"; any other is English. The windows' thread.
void ChooseLanguage(const std::string& language);

// UTF-8 words for a key of resources/strings/desk, in which "%1" and "%2" stand for the texts that
// are given; the key itself where it is not there.
std::string Words(const std::string& key, const std::string& first = {},
                  const std::string& second = {});

// Null where the language has none.
const char* FindWords(const char* key, const std::string& language);

}  // namespace desk
