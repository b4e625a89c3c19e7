#include "core/ParameterText.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>

#include "base/Arithmetic.h"
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

// Records are searched for the key with its "=".
std::string KeyOfRecord(const ParameterDescription& row) {
  return std::string(row.key).append("=");
}

// The number of the text that a field shall hold; false leaves the field alone.
bool ReadNumber(const char* text, const ParameterDescription& row, int& number) {
  bool changed = false;
  if (!ReadParamInt(text, row.key, number, changed)) {
    if (row.absent == AbsentKey::KeepsField) return false;
    number = 0;
  }
  if (row.stored) number = row.stored(number);
  return true;
}

template <class Field>
bool Store(Field& field, Field value) {
  if (field == value) return false;
  field = value;
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
            return Store(*field, ParamHex(text, *field, KeyOfRecord(row).c_str()));
          }},
      target);
}

void ReadRecordField(char* text, const ParameterDescription& row, ParameterField target) {
  const std::string key = KeyOfRecord(row);
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
                        }},
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
