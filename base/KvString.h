// The exported string class: narrow text that many strings share until one of them changes it.
#pragma once

#include "base/Export.h"

#include <atomic>
#include <compare>
#include <concepts>
#include <cstdarg>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

// Lets the compiler check the arguments of a printf-like member: the places of the format and of
// the first argument, counted from 1, which is `this`.
#ifdef __clang__
#define KV_PRINTF(text, first) __attribute__((format(printf, text, first)))
#else
#define KV_PRINTF(text, first) __attribute__((format(gnu_printf, text, first)))
#endif

class KvString;

// A text given to an operation: zero-terminated (null counts as empty), or a string with all its
// bytes. It refers to the text and owns nothing.
class KvTextView : public std::string_view {
 public:
  // NOLINTBEGIN(google-explicit-constructor): made where an argument is given
  KvTextView(const char* text)
      : std::string_view(text ? std::string_view(text) : std::string_view()) {}
  KvTextView(std::string_view text) : std::string_view(text) {}
  KvTextView(const std::string& text) : std::string_view(text) {}
  inline KvTextView(const KvString& text);
  // NOLINTEND(google-explicit-constructor)
};

// Text in Windows-1252, up to 2^31 - 65 bytes, zeros within the text allowed: every operation goes
// by the length, and only `const char*` operands end at their first zero.
//
// Positions count from 0. An argument that is negative or lies outside the text is limited to it
// and is never an error: Left(-1) is empty, Mid behind the end is empty, GetAt outside gives 0.
// Operands may be parts of the string that is changed, as in s += s.
//
// Failure: what needs memory throws std::bad_alloc and leaves the string as it was.
//
// Threads: one object belongs to one thread at a time. Copies of it may live in other threads,
// though they share one text: the count is atomic, and a shared text is never written.
//
// Layout, on which a host built by the same compiler may rely: the object is one pointer to the
// first character of a zero-terminated text, never null, and a Header lies directly in front of
// that character.
class FXBOX_API KvString {
 public:
  // NOLINTBEGIN(google-explicit-constructor): its users expect the conversions
  struct Header {
    // Strings that share the text; -1: locked to one string; -2: the empty text, never freed.
    std::atomic<std::int32_t> references;
    std::int32_t length;    // bytes before the closing zero
    std::int32_t capacity;  // bytes that fit before the closing zero
  };

  KvString() noexcept;
  KvString(const KvString& other);
  KvString(KvString&& other) noexcept;
  KvString(const char* zeroTerminated);
  // The first `length` bytes, zeros included; empty for a null text or a negative length.
  KvString(const char* first, int length);
  explicit KvString(char c, int repeated = 1);
  KvString(const std::string& other);
  explicit KvString(std::string_view other);
  // What the code page does not hold becomes '?'.
  explicit KvString(std::u16string_view wide);
  ~KvString();

  KvString& operator=(const KvString& other);
  // NOLINTNEXTLINE(performance-noexcept-move-constructor): a locked string copies
  KvString& operator=(KvString&& other);
  KvString& operator=(const char* zeroTerminated);
  KvString& operator=(const std::string& other);
  template <std::same_as<char> Character>  // takes no other number for a character
  KvString& operator=(Character c) {
    return *this = KvString(c);
  }

  int GetLength() const { return HeaderOf()->length; }
  bool IsEmpty() const { return GetLength() == 0; }
  void Empty();
  char GetAt(int index) const;
  void SetAt(int index, char c);
  char operator[](std::ptrdiff_t index) const;
  // Valid until the string changes or ends. So std::string(s) ends at the first zero; ToStdString
  // does not.
  operator const char*() const { return text; }
  // NOLINTEND(google-explicit-constructor)
  std::string_view View() const { return {text, static_cast<std::size_t>(GetLength())}; }
  std::string ToStdString() const { return std::string(View()); }
  std::u16string ToWide() const;

  // A buffer of the string's own for at least `minLength` characters and a zero, holding the text
  // so far. Between GetBuffer and ReleaseBuffer use nothing else of the string.
  char* GetBuffer(int minLength);
  // The same, with the length set at once; new characters are 0.
  char* GetBufferSetLength(int newLength);
  // Sets the length to what was written, by default up to the first zero.
  void ReleaseBuffer(int newLength = -1);
  // Keeps the text to this string alone, so that its address stays the same while the capacity
  // suffices: copies get a text of their own, and what is assigned is copied in. A string moved
  // away takes its lock along.
  char* LockBuffer();
  void UnlockBuffer();
  // Gives back memory that the text does not need.
  void FreeExtra();

  // Searches give the position found at or behind `from`, or -1. The empty text is found at once.
  int Find(char c, int from = 0) const;
  int Find(KvTextView part, int from = 0) const;
  int ReverseFind(char c) const;
  int FindOneOf(KvTextView characters) const;

  KvString Left(int count) const;
  KvString Mid(int first) const;
  KvString Mid(int first, int count) const;
  KvString Right(int count) const;
  // The longest beginning that holds only, or none, of the characters.
  KvString SpanIncluding(KvTextView characters) const;
  KvString SpanExcluding(KvTextView characters) const;

  // Below, equal to or above 0, by unsigned bytes; NoCase by the bytes in lower case; Collate by
  // the C run-time's order of the current locale, up to the first zero.
  int Compare(KvTextView other) const { return View().compare(other); }
  int CompareNoCase(KvTextView other) const;
  int Collate(const char* other) const;

  // Case of the Windows-1252 letters, whatever the locale.
  KvString& MakeUpper();
  KvString& MakeLower();
  KvString& MakeReverse();

  // Without `characters`, blanks: space, TAB, LF, VT, FF and CR.
  KvString& TrimLeft(KvTextView characters = kBlanks);
  KvString& TrimLeft(char c) { return TrimLeft(std::string_view(&c, 1)); }
  KvString& TrimRight(KvTextView characters = kBlanks);
  KvString& TrimRight(char c) { return TrimRight(std::string_view(&c, 1)); }
  KvString& Trim(KvTextView characters = kBlanks) {
    return TrimRight(characters).TrimLeft(characters);
  }
  KvString& Trim(char c) { return Trim(std::string_view(&c, 1)); }

  // Both give the new length.
  int Insert(int at, KvTextView part);
  int Insert(int at, char c) { return Insert(at, std::string_view(&c, 1)); }
  int Delete(int at, int count = 1);

  // All four give the number of places changed. An empty old text is found nowhere, and what was
  // put in is not searched again.
  int Remove(char c);
  int Replace(char old, char replacement);
  int Replace(KvTextView old, KvTextView replacement);
  int ReplaceNoCase(KvTextView old, KvTextView replacement);

  // The C run-time's printf, of any length. A null or impossible format gives an empty text.
  void Format(const char* format, ...) KV_PRINTF(2, 3);
  void AppendFormat(const char* format, ...) KV_PRINTF(2, 3);
  void FormatV(const char* format, va_list arguments) KV_PRINTF(2, 0);

  // To the OEM code page and back, in place; see base/CodePage.h for what has no equal there.
  void CharToOemA();
  void OemToCharA();

  KvString& operator+=(KvTextView part);
  KvString& operator+=(char c) { return *this += std::string_view(&c, 1); }

  friend KvString operator+(const KvString& a, const KvString& b) { return Join(a, b); }
  friend KvString operator+(const KvString& a, const char* b) { return Join(a, b); }
  friend KvString operator+(const char* a, const KvString& b) { return Join(a, b); }
  friend KvString operator+(const KvString& a, char b) { return Join(a, std::string_view(&b, 1)); }
  friend KvString operator+(char a, const KvString& b) { return Join(std::string_view(&a, 1), b); }

  // By unsigned bytes; a null text equals the empty one.
  friend bool operator==(const KvString& a, const KvString& b) { return a.View() == b.View(); }
  friend bool operator==(const KvString& a, const char* b) { return a.View() == KvTextView(b); }
  friend auto operator<=>(const KvString& a, const KvString& b) { return a.View() <=> b.View(); }
  friend auto operator<=>(const KvString& a, const char* b) {
    return a.View() <=> std::string_view(KvTextView(b));
  }

 private:
  static constexpr std::string_view kBlanks = " \t\n\v\f\r";

  static KvString Join(KvTextView a, KvTextView b);

  const Header* HeaderOf() const { return reinterpret_cast<const Header*>(text) - 1; }
  Header* HeaderOf() { return reinterpret_cast<Header*>(text) - 1; }
  std::size_t Size() const { return static_cast<std::size_t>(GetLength()); }
  bool IsLocked() const;
  // Whether nobody else sees what is written to the text.
  bool IsOwn() const;
  // Makes the text the string's own, with room for `capacity` bytes.
  void Own(std::size_t capacity);
  // The given bytes as a text of the string's own.
  void Adopt(char* fresh);
  void SetLength(std::size_t length);
  // Puts `part` in the place of `count` bytes; the range lies within the text.
  void Splice(std::size_t at, std::size_t count, std::string_view part);
  template <class Function>
  void Transform(Function function);
  template <class Finder>
  int ReplaceFound(std::string_view old, std::string_view replacement, Finder find);

  char* text;
};

static_assert(sizeof(KvString) == sizeof(void*));
static_assert(sizeof(KvString::Header) == 12);

KvTextView::KvTextView(const KvString& text) : std::string_view(text.View()) {}

// The empty string, for references to nothing. It may be used in any thread and at any time, also
// while static objects are made and destroyed.
FXBOX_API const KvString& KvGetEmptyString();
