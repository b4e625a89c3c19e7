#include "core/ParameterReaders.h"

#include <cstddef>
#include <optional>
#include <string_view>

#include "base/NumberScan.h"

namespace {

// What stands behind the key.
std::optional<std::string_view> Behind(const char* text, const char* key) {
  if (!text || !key) return std::nullopt;
  std::string_view rest = text;
  const std::size_t found = rest.find(key);
  if (found == std::string_view::npos) return std::nullopt;
  rest.remove_prefix(found + std::string_view(key).size());
  return rest;
}

// The number one character behind the key.
template <class Scan>
auto ScanItem(const char* text, const char* key, Scan scan) -> decltype(scan({})) {
  const std::optional<std::string_view> rest = Behind(text, key);
  if (!rest || rest->empty()) return std::nullopt;
  return scan(rest->substr(1));
}

template <class Scan>
auto ScanBehind(const char* text, const char* key, Scan scan) -> decltype(scan({})) {
  const std::optional<std::string_view> rest = Behind(text, key);
  return rest ? scan(*rest) : std::nullopt;
}

template <class Field>
void Store(Field value, Field& field, bool& changed) {
  if (value == field) return;
  field = value;
  changed = true;
}

}  // namespace

bool ReadParamBool(const char* text, const char* key, bool& field, bool& changed) {
  const auto value = ScanItem(text, key, base::ScanInt);
  if (value) Store(*value != 0, field, changed);
  return value.has_value();
}

bool ReadParamInt(const char* text, const char* key, std::int32_t& field, bool& changed) {
  const auto value = ScanItem(text, key, base::ScanInt);
  if (value) Store(*value, field, changed);
  return value.has_value();
}

bool ReadParamByte(const char* text, const char* key, std::uint8_t& field, bool& changed) {
  const auto value = ScanItem(text, key, base::ScanInt);
  if (value) Store(static_cast<std::uint8_t>(*value), field, changed);
  return value.has_value();
}

bool ReadParamDouble(const char* text, const char* key, double& field, bool& changed) {
  const auto value = ScanItem(text, key, base::ScanDouble);
  if (value) Store(*value, field, changed);
  return value.has_value();
}

std::int32_t ParamLong(const char* text, std::int32_t defaultValue, const char* key) {
  return ScanBehind(text, key, base::ScanInt).value_or(defaultValue);
}

std::uint32_t ParamHex(const char* text, std::uint32_t defaultValue, const char* key) {
  return ScanBehind(text, key, base::ScanHex).value_or(defaultValue);
}

bool ParamFlag(const char* text, bool defaultValue, const char* key) {
  return ScanBehind(text, key, base::ScanInt).value_or(defaultValue ? 1 : 0) != 0;
}

double ParamDouble(char* text, double defaultValue, const char* key) {
  const std::optional<std::string_view> rest = Behind(text, key);
  if (!rest) return defaultValue;
  const std::size_t comma = rest->find(',');
  if (comma < 3 && comma + 1 < rest->size() && (*rest)[comma + 1] >= '0' &&
      (*rest)[comma + 1] <= '9') {
    text[rest->data() - text + static_cast<std::ptrdiff_t>(comma)] = '.';
  }
  // What was repaired is read with a point, whatever the locale writes.
  return base::ScanDoubleWith(*rest, ".").value_or(defaultValue);
}
