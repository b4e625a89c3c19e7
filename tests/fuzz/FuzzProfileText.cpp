// Any bytes as a settings file, which is read, changed and read again.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "platform/linux/ProfileText.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  const std::string text(reinterpret_cast<const char*>(bytes), size);
  platform::ProfileText profile(text);
  for (const std::string& section : profile.Sections()) {
    for (const std::string& key : profile.Keys(section)) profile.Read(section, key);
  }
  if (!profile.IsNarrow()) return 0;
  profile.Write("Section", "Key", "value");
  if (profile.Read("section", "key") != "value") std::abort();
  profile.Write("Section", "Key", std::nullopt);
  profile.Write(text, text, text);
  profile.Read(text, text);
  return 0;
}
