// Readers of filter parameter texts: "Key=value" items parted by commas, such as "Sepia=050,
// Mode=2".
#pragma once

#include <atomic>
#include <cstdint>

#include "base/Export.h"

// A key is found by plain substring search over the whole text: the first place that holds its
// characters counts, also inside a longer word. Order of items and unknown items do not matter. A
// null text or key counts as absent. No reader looks behind the end of the text, and all are
// reentrant (but see ParamDouble). base/NumberScan.h says what a number is.

// The readers of the filters take the key without its "=" and step over one character for it,
// whatever it is. True when the text holds the item: the field has its value, and `changed` is set
// (never cleared) where it had another before. False leaves both untouched: no such key, or no
// number behind it.
FXBOX_API bool ReadParamBool(const char* text, const char* key, bool& field, bool& changed);
FXBOX_API bool ReadParamInt(const char* text, const char* key, std::int32_t& field, bool& changed);
// The low eight bits of the number.
FXBOX_API bool ReadParamByte(const char* text, const char* key, std::uint8_t& field, bool& changed);
// With the decimal point of the process's numeric locale.
FXBOX_API bool ReadParamDouble(const char* text, const char* key, double& field, bool& changed);

// Reads an item that has no pending copy and takes effect at once, by one of the readers above.
template <class Value>
void ReadLiveParam(bool (*read)(const char*, const char*, Value&, bool&), const char* text,
                   const char* key, std::atomic<Value>& field) {
  Value value = field;
  bool ignored = false;
  if (read(text, key, value, ignored)) field = value;
}

// The readers of the geometry records (crop, scale, print) take the key with its "=" and give the
// value, or the default where the text does not hold the item.
FXBOX_API std::int32_t ParamLong(const char* text, std::int32_t defaultValue, const char* key);
FXBOX_API std::uint32_t ParamHex(const char* text, std::uint32_t defaultValue, const char* key);
FXBOX_API bool ParamFlag(const char* text, bool defaultValue, const char* key);
// Repairs a decimal comma first: where the first comma behind the key is less than three characters
// away and a digit follows it, it becomes a point, in the caller's text. A comma further on parts
// two items. The number is then read with a point, under every locale.
FXBOX_API double ParamDouble(char* text, double defaultValue, const char* key);
