#include "dialogs/DialogText.h"

#include <algorithm>
#include <cstring>
#include <optional>

#include "base/Arithmetic.h"
#include "base/NumberScan.h"
#include "base/PercentText.h"
#include "core/ParameterText.h"

namespace dialogs {
namespace {

// Behind the key and its "=", up to the end of the text.
std::optional<std::string_view> RestBehind(const char* text, const char* key) {
  const std::string wanted = std::string(key) + "=";
  const char* const found = text ? std::strstr(text, wanted.c_str()) : nullptr;
  if (!found) return std::nullopt;
  return std::string_view(found + wanted.size());
}

// Filters print with the decimal point of the process's locale, records and defaults with a point.
std::optional<double> ScanReal(std::string_view rest) {
  const std::string_view item = rest.substr(0, rest.find(','));
  if (item.find('.') != std::string_view::npos) return base::ScanDoubleWith(item, ".");
  return base::ScanDouble(rest);
}

std::optional<double> ScanNumber(std::string_view rest, FieldKind kind) {
  if (kind == FieldKind::Real || kind == FieldKind::PointReal) return ScanReal(rest);
  if (kind == FieldKind::Hexadecimal) return base::ScanHex(rest);
  const auto number = base::ScanInt(rest);
  if (number && kind == FieldKind::Flag) return *number != 0;
  return number;
}

std::string Piece(const PanelField& field, const PanelValues& values) {
  ParameterDescription row;
  row.key = field.key;
  row.printed = field.printed;
  std::string piece;
  const double number = values.Number(field.key);
  const std::int32_t whole = base::TruncateToInt32(number);
  const auto bits = static_cast<std::uint32_t>(whole);
  switch (field.kind) {
    case FieldKind::Text:
      PrintParameterField(piece, row, &values.Text(field.key));
      break;
    case FieldKind::Real:
    case FieldKind::PointReal:
      PrintParameterField(piece, row, &number);
      break;
    case FieldKind::Hexadecimal:
      PrintParameterField(piece, row, &bits);
      break;
    default:
      PrintParameterField(piece, row, &whole);
  }
  if (field.kind != FieldKind::PointReal) return piece;
  std::replace(piece.begin() + static_cast<std::ptrdiff_t>(piece.find('=')),
               piece.end() - (piece.ends_with(',') ? 1 : 0), ',', '.');
  return piece;
}

}  // namespace

void ReadDialogText(const char* text, PanelValues& values) {
  for (const PanelField& field : values.Fields()) {
    if (!field.printed) continue;
    const auto rest = RestBehind(text, field.key);
    if (!rest) continue;
    if (field.kind == FieldKind::Text) {
      values.SetText(field.key, base::PercentDecode(rest->substr(0, rest->find(','))));
    } else if (const auto number = ScanNumber(*rest, field.kind)) {
      values.SetNumber(field.key, *number);
    }
  }
}

std::string PrintDialogText(const PanelValues& values) {
  std::string text;
  for (const PanelField& field : values.Fields()) {
    if (field.printed) text += Piece(field, values);
  }
  return text;
}

std::string PrintChanges(const PanelValues& values, const PanelValues& before) {
  std::string text;
  for (const PanelField& field : values.Fields()) {
    const bool isSame = values.Number(field.key) == before.Number(field.key) &&
                        values.Text(field.key) == before.Text(field.key);
    if (!field.printed || isSame) continue;
    std::string piece = Piece(field, values);
    piece.erase(0, piece.find_first_not_of(", "));
    while (!piece.empty() && (piece.back() == ',' || piece.back() == ' ')) piece.pop_back();
    text.append(text.empty() ? "" : ",").append(piece);
  }
  return text;
}

}  // namespace dialogs
