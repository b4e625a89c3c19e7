#include "core/ParameterText.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <optional>
#include <utility>

#include "base/Arithmetic.h"
#include "base/NumberScan.h"
#include "base/PercentText.h"
#include "core/ParameterReaders.h"

namespace {

constexpr double kDoubleTolerance = 0.0001;

template <class... Cases>
struct Overloaded : Cases... {
  using Cases::operator()...;
};
template <class... Cases>
Overloaded(Cases...) -> Overloaded<Cases...>;

template <class Number>
void AppendFormatted(std::string& text, const char* format, Number number) {
  // The longest piece is a double of 309 digits behind a key.
  char piece[512];
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
  const int length = std::snprintf(piece, sizeof piece, format, number);
#pragma GCC diagnostic pop
  if (length > 0) text.append(piece, std::min<std::size_t>(static_cast<std::size_t>(length), 511));
}

std::string KeyWithEquals(const ParameterDescription& row) {
  return std::string(row.key).append("=");
}

// What stands behind the key and its "=", up to the next comma.
std::optional<std::string_view> ValueBehindEquals(const char* text,
                                                  const ParameterDescription& row) {
  const std::string key = KeyWithEquals(row);
  const char* const found = text ? std::strstr(text, key.c_str()) : nullptr;
  if (!found) return std::nullopt;
  const std::string_view rest = found + key.size();
  return rest.substr(0, rest.find(','));
}

bool FindNumber(const char* text, const ParameterDescription& row, int& number) {
  bool changed = false;
  if (!row.hasEquals) return ReadParamInt(text, row.key, number, changed);
  const auto value = ValueBehindEquals(text, row);
  const auto scanned = value ? base::ScanInt(*value) : std::nullopt;
  number = scanned.value_or(number);
  return scanned.has_value();
}

// The number of the text that a field shall hold; false leaves the field alone.
bool ReadNumber(const char* text, const ParameterDescription& row, int& number) {
  if (!FindNumber(text, row, number)) {
    if (row.absent == AbsentKey::KeepsField) return false;
    number = 0;
  }
  if (row.stored) number = row.stored(number);
  return true;
}

template <class Field>
bool Store(Field& field, Field value) {
  if (field == value) return false;
  field = std::move(value);
  return true;
}

template <class Number>
Number ForcedIntoRange(Number value, const ParameterDescription& row) {
  if (row.range == ParameterRange::Offered) return value;
  const auto [least, greatest] = std::minmax(row.least, row.greatest);
  return std::clamp(value, static_cast<Number>(least), static_cast<Number>(greatest));
}

}  // namespace

bool ReadParameterField(const char* text, const ParameterDescription& row, ParameterField target) {
  int number = 0;
  bool changed = false;
  return std::visit(
      Overloaded{
          [&](std::int32_t* field) {
            return ReadNumber(text, row, number) && Store(*field, number);
          },
          [&](std::uint8_t* field) {
            return ReadNumber(text, row, number) && Store(*field, base::LowByte(number));
          },
          [&](bool* field) { return ReadNumber(text, row, number) && Store(*field, number != 0); },
          [&](double* field) {
            ReadParamDouble(text, row.key, *field, changed);
            return changed;
          },
          [&](std::uint32_t* field) {
            return Store(*field, ParamHex(text, *field, KeyWithEquals(row).c_str()));
          },
          [&](std::string* field) {
            const auto value = ValueBehindEquals(text, row);
            return value && Store(*field, base::PercentDecode(*value));
          }},
      target);
}

void ReadRecordField(char* text, const ParameterDescription& row, ParameterField target) {
  const std::string key = KeyWithEquals(row);
  const auto readInteger = [&](auto* field) {
    const std::int32_t number = ParamLong(text, *field, key.c_str());
    *field = static_cast<std::remove_pointer_t<decltype(field)>>(ForcedIntoRange(number, row));
  };
  std::visit(Overloaded{[&](std::int32_t* field) { readInteger(field); },
                        [&](std::uint8_t* field) { readInteger(field); },
                        [&](bool* field) { *field = ParamFlag(text, *field, key.c_str()); },
                        [&](double* field) {
                          const double value = ParamDouble(text, *field, key.c_str());
                          if (value != *field) *field = ForcedIntoRange(value, row);
                        },
                        [&](std::uint32_t* field) {
                          *field = ForcedIntoRange(ParamHex(text, *field, key.c_str()), row);
                        },
                        [&](std::string* field) { ReadParameterField(text, row, field); }},
             target);
}

void PrintParameterField(std::string& text, const ParameterDescription& row,
                         ConstParameterField source) {
  const auto print = [&](int value) {
    AppendFormatted(text, row.printed, row.shown ? row.shown(value) : value);
  };
  std::visit(Overloaded{[&](const std::int32_t* field) { print(*field); },
                        [&](const std::uint8_t* field) { print(*field); },
                        [&](const bool* field) { print(*field ? 1 : 0); },
                        [&](const std::string* field) {
                          text.append(row.printed).append(base::PercentEncode(*field));
                        },
                        [&](const auto* field) { AppendFormatted(text, row.printed, *field); }},
             source);
}

bool ParameterFieldsDiffer(ConstParameterField a, ConstParameterField b) {
  return std::visit(Overloaded{[](const double* x, const double* y) {
                                 // Written so that a value that is no number differs from
                                 // everything.
                                 return *x != *y && !(std::fabs(*x - *y) <= kDoubleTolerance);
                               },
                               [](const auto* x, const auto* y) {
                                 if constexpr (std::is_same_v<decltype(x), decltype(y)>)
                                   return *x != *y;
                                 return true;
                               }},
                    a, b);
}

void CopyParameterText(std::string_view text, int least, char* buffer, int size) {
  if (!buffer || size < least || size <= 0) return;
  if (text.size() >= static_cast<std::size_t>(size)) return;
  std::memcpy(buffer, text.data(), text.size());
  buffer[text.size()] = 0;
}
