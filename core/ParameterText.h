// Parameter texts as rows of data: one reader, one printer, one comparison for all filters.
#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>
#include <string_view>
#include <type_traits>
#include <variant>
#include <vector>

#include "base/Export.h"

// A filter's parameters are one plain struct, of which the filter holds two values: pending and
// active. The struct says of itself
//
//   struct SepiaParameters {
//     std::uint8_t keep = 255;  // the default of what is pending
//
//     // What a new filter has as active; it differs, so that the first Prepare commits.
//     static SepiaParameters ActiveStart() { return {.keep = 0}; }
//     // A smaller buffer for the text stays unwritten.
//     static constexpr int kLeastBuffer = 31;
//     static std::span<const ParameterRow<SepiaParameters>> Rows();
//   };
//
// and its rows hold, for each key, the exact piece of text that is printed, odd blanks included.

// What a reader does with a key that is absent or has no readable number behind it.
enum class AbsentKey { KeepsField, CountsAsZero };

// A text is percent-encoded (base/PercentText.h) where it is printed and holds the decoded bytes in
// its field. Its value ends at the next comma or at the end of the text.
enum class ParameterKind { Integer, Byte, Flag, Double, Hexadecimal, Text };

// Whether the range of a row holds for the dialogs alone or is forced upon what ReadRecord reads.
enum class ParameterRange { Offered, Forced };

// A row without the struct that it belongs to.
struct ParameterDescription {
  const char* key = nullptr;      // found by substring search: "Green"
  const char* printed = nullptr;  // the piece of the text: " , Green=%.3d"; of a text ",Font="
  ParameterKind kind = ParameterKind::Integer;
  double least = 0;  // the range, both ends included; a text has none
  double greatest = 100;
  const char* gloss = "";
  AbsentKey absent = AbsentKey::KeepsField;
  ParameterRange range = ParameterRange::Offered;
  bool isCompared = true;   // a difference here makes the filter dirty
  bool hasEquals = false;   // found with its "=", as texts always are
  bool isNumbered = false;  // the key ends in 1 and stands for those of all numbers
  // For a field that stores something else than the number of the text.
  int (*stored)(int text) = nullptr;
  int (*shown)(int field) = nullptr;
};

using ParameterField =
    std::variant<std::int32_t*, std::uint8_t*, bool*, double*, std::uint32_t*, std::string*>;
using ConstParameterField = std::variant<const std::int32_t*, const std::uint8_t*, const bool*,
                                         const double*, const std::uint32_t*, const std::string*>;

// The work on one field, without the struct's type. Reading gives true when the field changed.
FXBOX_API bool ReadParameterField(const char* text, const ParameterDescription& row,
                                  ParameterField field);
// The same for a record, with the readers that repair a decimal comma, in `text`. The field comes
// with its default and keeps it where the text has no number; a forced range is not forced upon a
// double that has its default.
FXBOX_API void ReadRecordField(char* text, const ParameterDescription& row, ParameterField field);
FXBOX_API void PrintParameterField(std::string& text, const ParameterDescription& row,
                                   ConstParameterField field);
// Numbers differ when they are not equal, doubles when they are more than 0.0001 apart.
FXBOX_API bool ParameterFieldsDiffer(ConstParameterField a, ConstParameterField b);

// Copies a finished text to a caller's buffer if it fits, terminator included, and `size` is at
// least `least`. Otherwise nothing is written. A null buffer is never written.
FXBOX_API void CopyParameterText(std::string_view text, int least, char* buffer, int size);

template <class Parameters>
struct ParameterRow : ParameterDescription {
  // One of many numbers of the same kind, which no pointer to a member can name.
  struct Numbered {
    const std::int32_t& (*of)(const Parameters&, int number);
    int number;
  };
  using Member = std::variant<std::int32_t Parameters::*, std::uint8_t Parameters::*,
                              bool Parameters::*, double Parameters::*, std::uint32_t Parameters::*,
                              std::string Parameters::*, Numbered>;
  // Says which values have this piece of text at all.
  using Condition = bool (*)(const Parameters&);

  template <class Field>
  constexpr ParameterRow(const char* rowKey, const char* rowPrinted, Field Parameters::*rowMember,
                         ParameterDescription more = {}, Condition rowCondition = nullptr)
      : ParameterDescription(more), member(rowMember), condition(rowCondition) {
    key = rowKey;
    printed = rowPrinted;
    kind = std::is_same_v<Field, bool>            ? ParameterKind::Flag
           : std::is_same_v<Field, double>        ? ParameterKind::Double
           : std::is_same_v<Field, std::uint8_t>  ? ParameterKind::Byte
           : std::is_same_v<Field, std::uint32_t> ? ParameterKind::Hexadecimal
           : std::is_same_v<Field, std::string>   ? ParameterKind::Text
                                                  : ParameterKind::Integer;
  }

  ParameterRow(const char* rowKey, const char* rowPrinted, Numbered rowMember,
               ParameterDescription more = {})
      : ParameterDescription(more), member(rowMember), condition(nullptr) {
    key = rowKey;
    printed = rowPrinted;
  }

  ParameterField In(Parameters& parameters) const {
    return std::visit([&](auto m) -> ParameterField { return &FieldOf(parameters, m); }, member);
  }
  ConstParameterField In(const Parameters& parameters) const {
    return std::visit([&](auto m) -> ConstParameterField { return &FieldOf(parameters, m); },
                      member);
  }

  Member member;
  Condition condition;

 private:
  template <class Holder, class Pointer>
  static auto& FieldOf(Holder& holder, Pointer pointer) {
    return holder.*pointer;
  }
  static const std::int32_t& FieldOf(const Parameters& parameters, Numbered numbered) {
    return numbered.of(parameters, numbered.number);
  }
  static std::int32_t& FieldOf(Parameters& parameters, Numbered numbered) {
    return const_cast<std::int32_t&>(numbered.of(parameters, numbered.number));
  }
};

template <class Parameters>
void ReadParameters(const char* text, Parameters& parameters) {
  for (const auto& row : Parameters::Rows()) ReadParameterField(text, row, row.In(parameters));
}

// Reads a text that says everything: what it leaves out gets the default, which `record` comes
// with. A null text leaves all out.
template <class Record>
Record ReadRecord(const char* text, Record record = {}) {
  std::string repaired = text ? text : "";
  for (const auto& row : Record::Rows()) ReadRecordField(repaired.data(), row, row.In(record));
  return record;
}

template <class Parameters>
std::string PrintParameters(const Parameters& parameters) {
  std::string text;
  for (const auto& row : Parameters::Rows()) {
    if (row.condition && !row.condition(parameters)) continue;
    PrintParameterField(text, row, row.In(parameters));
  }
  return text;
}

template <class Parameters>
bool ParametersDiffer(const Parameters& a, const Parameters& b) {
  for (const auto& row : Parameters::Rows()) {
    if (row.isCompared && ParameterFieldsDiffer(row.In(a), row.In(b))) return true;
  }
  return false;
}

template <class Parameters>
std::vector<ParameterDescription> DescribeParameters() {
  return {Parameters::Rows().begin(), Parameters::Rows().end()};
}
