#include "core/Parameter.h"

#include <algorithm>
#include <bit>
#include <cinttypes>
#include <cstddef>

#include "base/Guid.h"
#include "base/NumberScan.h"

namespace {

constexpr std::size_t kNone = std::string_view::npos;

// Escapes of a letter or sign behind a backslash, and the bytes that they stand for.
constexpr std::string_view kEscapeLetters = "abtnvfr\"\\";
constexpr std::string_view kEscapedBytes = "\a\b\t\n\v\f\r\"\\";

// 0 behind the end, as at the end of a zero-terminated text.
char At(std::string_view list, std::size_t at) {
  return at < list.size() ? list[at] : '\0';
}

bool IsLineEnd(char c) {
  return c == '\r' || c == '\n';
}

std::string Quote(std::string_view value) {
  std::string quoted = "\"";
  quoted.reserve(2 * value.size() + 2);
  for (const char c : value) {
    const auto byte = static_cast<unsigned char>(c);
    if (const std::size_t escape = kEscapedBytes.find(c); escape != kNone) {
      quoted.append({'\\', kEscapeLetters[escape]});
    } else if (byte < 32 || byte > 127) {
      const auto octal = [byte](int shift) { return static_cast<char>('0' + (byte >> shift & 7)); };
      quoted.append({'\\', octal(6), octal(3), octal(0)});
    } else {
      quoted += c;
    }
  }
  return quoted += '"';
}

// Reads a quoted text from its opening quote. Whatever it holds, it ends at the end of the list at
// the latest.
class QuotedReader {
 public:
  QuotedReader(std::string_view text, std::size_t openingQuote)
      : list(text), at(openingQuote + 1) {}

  // Gives the place behind the closing quote.
  std::size_t Read(std::string* stored) {
    for (; at < list.size() && list[at] != '"'; ++at) {
      const std::optional<char> c = list[at] == '\\' ? ReadEscape() : list[at];
      if (c && stored) *stored += *c;
    }
    return std::min(at + 1, list.size());
  }

 private:
  char Next() const { return At(list, at + 1); }

  // These start on the character before the first that they read and stop on the last one.
  std::optional<char> ReadEscape() {
    const char c = Next();
    if (c == '\0') return std::nullopt;
    if (c >= '0' && c <= '7') return ReadOctal();
    ++at;
    if (IsLineEnd(c)) return std::nullopt;
    if (c == 'x') return ReadHex();
    const std::size_t escape = kEscapeLetters.find(c);
    return escape == kNone ? c : kEscapedBytes[escape];
  }

  // Three characters at most, of which one that is no octal digit is the last: a short or broken
  // escape takes what follows it as a digit. Characters are signed.
  std::optional<char> ReadOctal() {
    unsigned value = 0;
    for (int digit = 0; digit < 3 && Next() != '\0'; ++digit) {
      const char c = list[++at];
      value = value * 8 + static_cast<unsigned>(static_cast<signed char>(c)) - '0';
      if (c < '0' || c > '7') break;
    }
    return static_cast<char>(value & 255);
  }

  std::optional<char> ReadHex() {
    int value = 0;
    for (int digit = 0; digit < 2 && Next() != '\0'; ++digit) {
      value = value * 16 + std::max(base::HexDigit(list[++at]), 0);
    }
    return static_cast<char>(value);
  }

  std::string_view list;
  std::size_t at;
};

std::size_t SkipQuoted(std::string_view list, std::size_t openingQuote) {
  return QuotedReader(list, openingQuote).Read(nullptr);
}

// The ";" that closes the value at `value`; one inside a quoted value closes nothing.
std::size_t FindClose(std::string_view list, std::size_t value) {
  return list.find(';', At(list, value) == '"' ? SkipQuoted(list, value) : value);
}

// The place of the first character of the tag's value.
std::size_t FindValue(std::string_view list, std::string_view tag) {
  std::size_t at = 0;
  while (at < list.size()) {
    at = std::min(list.find_first_not_of(' ', at), list.size());
    if (!IsLineEnd(At(list, at))) {
      const std::string_view rest = list.substr(at);
      if (rest.starts_with(tag) && At(rest, tag.size()) == '=') return at + tag.size() + 1;
      const std::size_t equals = list.find('=', at);
      if (equals == kNone) return kNone;
      at = FindClose(list, equals + 1);
      if (at == kNone) return kNone;
    }
    ++at;
  }
  return kNone;
}

// Gives each tag of the list with the place of its value to `step`, which gives the place to go on
// from, or kNone to stop. True when the list was walked to its end.
template <class Step>
bool WalkItems(std::string_view list, Step step) {
  std::size_t at = 0;
  while (at < list.size()) {
    if (IsLineEnd(list[at])) {
      ++at;
      continue;
    }
    const std::size_t equals = list.find('=', at);
    if (equals == kNone) return true;
    at = step(std::string(list.substr(at, equals - at)), equals + 1);
    if (at == kNone) return false;
  }
  return true;
}

}  // namespace

Parameter::~Parameter() = default;

bool Parameter::Get(const char* tag, int& value) const {
  const auto found = Value(tag);
  if (found) value = base::ScanInt(*found).value_or(0);
  return found.has_value();
}

bool Parameter::Get(const char* tag, double& value) const {
  const auto found = Value(tag);
  if (found) value = base::ScanDouble(*found).value_or(0.0);
  return found.has_value();
}

bool Parameter::Get(const char* tag, void*& value) const {
  const auto found = Value(tag);
  if (!found) return false;
  value = std::bit_cast<void*>(base::ScanInt64(*found).value_or(0));
  return true;
}

bool Parameter::Get(const char* tag, std::uint64_t& value) const {
  const auto found = Value(tag);
  if (found) value = base::ScanUnsigned64(*found).value_or(0);
  return found.has_value();
}

bool Parameter::Get(const char* tag, bool& value) const {
  const auto found = Value(tag);
  if (found) value = found->starts_with('t');
  return found.has_value();
}

bool Parameter::Get(const char* tag, KvString& value) const {
  const auto found = Value(tag);
  if (!found || !found->starts_with('"')) return false;
  std::string decoded;
  QuotedReader(*found, 0).Read(&decoded);
  value = decoded;
  return true;
}

int Parameter::GetInt(const char* tag, int defaultValue) const {
  Get(tag, defaultValue);
  return defaultValue;
}

double Parameter::GetDouble(const char* tag) const {
  double value = 0.0;
  Get(tag, value);
  return value;
}

bool Parameter::GetBool(const char* tag) const {
  bool value = false;
  Get(tag, value);
  return value;
}

void* Parameter::GetPtr(const char* tag) const {
  void* value = nullptr;
  Get(tag, value);
  return value;
}

std::uint64_t Parameter::GetULONGLONG(const char* tag, std::uint64_t defaultValue) const {
  Get(tag, defaultValue);
  return defaultValue;
}

KvString Parameter::GetString(const char* tag) const {
  KvString value;
  Get(tag, value);
  return value;
}

void Parameter::Set(const char* tag, const char* value) {
  SetValue(tag, Quote(KvTextView(value)));
}

void Parameter::Set(const char* tag, int value) {
  KvString printed;
  printed.Format("%d", value);
  SetValue(tag, printed.View());
}

void Parameter::Set(const char* tag, double value) {
  KvString printed;
  printed.Format("%lf", value);
  SetValue(tag, printed.View());
}

void Parameter::Set(const char* tag, void* value) {
  KvString printed;
  printed.Format("%" PRIdPTR, reinterpret_cast<std::intptr_t>(value));
  SetValue(tag, printed.View());
}

void Parameter::Set(const char* tag, std::uint64_t value) {
  KvString printed;
  printed.Format("%" PRIu64, value);
  SetValue(tag, printed.View());
}

void Parameter::Set(const char* tag, bool value) {
  SetValue(tag, value ? "true" : "false");
}

bool Parameter::RemoveTag(const char* tag) {
  const std::string_view list = List();
  const std::string_view name = KvTextView(tag);
  const std::size_t value = FindValue(list, name);
  if (value == kNone) return false;
  std::size_t end = list.size();
  if (const std::size_t nextEquals = list.find('=', value); nextEquals != kNone) {
    const std::size_t close = list.substr(value, nextEquals - value).find_last_of(";\r\n");
    end = value + (close == kNone ? 0 : close) + 1;
  }
  std::string rest(list.substr(0, value - 1 - name.size()));
  text = rest.append(list.substr(end));
  return true;
}

bool Parameter::operator==(const Parameter& right) const {
  const std::string_view ours = List();
  const std::string_view theirs = right.List();
  const auto matchesRight = [&](const std::string& tag, std::size_t value) {
    if (At(ours, value) == '"') {
      const bool same = GetString(tag.c_str()) == right.GetString(tag.c_str());
      return same ? SkipQuoted(ours, value) + 1 : kNone;
    }
    const std::size_t other = FindValue(theirs, tag);
    const std::size_t close = ours.find(';', value);
    const std::size_t otherClose = other == kNone ? kNone : theirs.find(';', other);
    const bool same = close != kNone && otherClose != kNone &&
                      ours.substr(value, close - value) == theirs.substr(other, otherClose - other);
    return same ? close + 1 : kNone;
  };
  const auto existsLeft = [&](const std::string& tag, std::size_t value) {
    if (FindValue(ours, tag) == kNone) return kNone;
    if (At(ours, value) == '"') return SkipQuoted(ours, value) + 1;
    const std::size_t close = theirs.find(';', value);
    return close == kNone ? kNone : close + 1;
  };
  return WalkItems(ours, matchesRight) && WalkItems(theirs, existsLeft);
}

std::optional<std::string_view> Parameter::Value(const char* tag) const {
  const std::string_view list = List();
  const std::size_t value = FindValue(list, KvTextView(tag));
  if (value == kNone) return std::nullopt;
  return list.substr(value);
}

void Parameter::SetValue(const char* tag, std::string_view value) {
  const std::string_view list = List();
  const std::string_view name = KvTextView(tag);
  std::string changed;
  if (const std::size_t old = FindValue(list, name); old != kNone) {
    const std::size_t close = std::min(FindClose(list, old), list.size());
    changed.append(list.substr(0, old)).append(value).append(list.substr(close));
  } else {
    changed.append(list).append(name).append("=").append(value).append(";\r\n");
  }
  text = changed;
}
