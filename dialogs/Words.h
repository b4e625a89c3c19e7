// The words of dialogs by key, for hosts that have none.
#pragma once

#include <string>

namespace dialogs {

// UTF-8 words in the language ("de"; any other is English); null when the key is not there.
const char* FindWords(const char* key, const std::string& language);

}  // namespace dialogs
