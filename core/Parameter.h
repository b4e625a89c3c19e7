// The exported tag list: items "tag=value;" with CR LF behind them, values bare or quoted.
#pragma once

#include "base/Export.h"
#include "base/KvString.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

// One text and no index: every operation searches the text from its start. An item is found by its
// tag in full and with its case; items stand in the order of their first Set. Between items,
// blanks, CR and LF are skipped, and an item closed by ";" alone is taken. A list may hold any
// text: an item that is broken hides those behind it, and nothing worse. A zero ends the list.
//
// A tag is zero-terminated and without its "="; null counts as the empty tag.
//
// No operation fails, but that memory may run out (std::bad_alloc, the list stays as it was). No
// lock: several threads may read one object, a writer needs it alone.
class FXBOX_API Parameter {
 public:
  // NOLINTBEGIN(google-explicit-constructor): its users expect the conversions
  Parameter() = default;
  Parameter(const char* list) : text(list) {}
  Parameter(const std::string& list) : text(list) {}
  Parameter(KvString list) : text(std::move(list)) {}
  // NOLINTEND(google-explicit-constructor)
  Parameter(const Parameter&) = default;
  Parameter& operator=(const Parameter&) = default;
  virtual ~Parameter();

  // True when the tag is there; false leaves `value` untouched. A number is read from the front of
  // the value and is 0 when there is none, as in a quoted one.
  bool Get(const char* tag, int& value) const;
  bool Get(const char* tag, double& value) const;  // in the process's numeric locale
  bool Get(const char* tag, void*& value) const;   // a signed decimal of 64 bits
  bool Get(const char* tag, std::uint64_t& value) const;
  bool Get(const char* tag, bool& value) const;  // true exactly for values that begin with "t"
  // Gives the decoded text of a quoted value. A value without quotes counts as absent.
  bool Get(const char* tag, KvString& value) const;

  int GetInt(const char* tag, int defaultValue) const;
  double GetDouble(const char* tag) const;
  bool GetBool(const char* tag) const;
  void* GetPtr(const char* tag) const;
  std::uint64_t GetULONGLONG(const char* tag, std::uint64_t defaultValue) const;
  KvString GetString(const char* tag) const;

  // Replaces the value, or adds the item at the end. This ends the life of the pointer that the
  // conversion to const char* gave.
  void Set(const char* tag, const char* value);  // quoted; null as the empty text
  void Set(const char* tag, int value);
  void Set(const char* tag, double value);  // in the process's numeric locale
  void Set(const char* tag, void* value);
  void Set(const char* tag, std::uint64_t value);
  void Set(const char* tag, bool value);

  // True when the item was there. The cut runs to the last ";", CR or LF before the next "=" and
  // knows no quotes, so that a quoted value with an "=" in it is cut in the middle: clear such a
  // tag by Set(tag, "").
  bool RemoveTag(const char* tag);

  // Whether both lists name the same tags with the same values, in any order. Bare values are
  // compared as they are written ("1.0" differs from "1"), quoted ones decoded, and a quoted tag
  // that only the left list has equals an empty text. Whether a value on the right is quoted is
  // told by the character at the same place of the left list, so that two lists can be equal from
  // one side only. A list with a bare value that no ";" closes equals none. What holds no "=" names
  // no tag.
  bool operator==(const Parameter& right) const;
  bool operator!=(const Parameter& right) const { return !(*this == right); }

  // The list as it is written.
  // NOLINTBEGIN(google-explicit-constructor): its users expect the conversions
  operator const char*() const { return text; }
  operator KvString() const { return text; }
  // NOLINTEND(google-explicit-constructor)

 private:
  std::string_view List() const { return KvTextView(static_cast<const char*>(text)); }
  // From the first character of the tag's value to the end of the list.
  std::optional<std::string_view> Value(const char* tag) const;
  void SetValue(const char* tag, std::string_view value);

  KvString text;
};
