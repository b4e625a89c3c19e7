// Any bytes as a tag list, and as a second one beside it.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "core/Parameter.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  const std::string text(reinterpret_cast<const char*>(bytes), size);
  const std::size_t half = size / 2;
  const std::string tag = text.substr(0, size % 5);
  const Parameter left(text.substr(0, half));
  Parameter right(text.substr(half));

  static_cast<void>(left == right);
  static_cast<void>(left.GetDouble(tag.c_str()));
  static_cast<void>(right.GetPtr(tag.c_str()));
  right.RemoveTag(tag.c_str());

  // What was set is read back, whatever stood there, as long as nothing hides the item.
  const std::string value = text.substr(0, text.find('\0'));
  Parameter fresh;
  fresh.Set("tag", value.c_str());
  if (fresh.GetString("tag").ToStdString() != value) std::abort();
  right.Set(tag.c_str(), value.c_str());
  return 0;
}
