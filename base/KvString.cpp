#include "base/KvString.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <functional>
#include <initializer_list>
#include <new>
#include <utility>

#include "base/CodePage.h"

namespace {

using Header = KvString::Header;

constexpr std::int32_t kLocked = -1;
constexpr std::int32_t kPermanent = -2;
constexpr std::size_t kMaxLength = 0x7FFFFFFF - 64;

struct EmptyText {
  Header header;
  char text[4];
};

constinit EmptyText emptyText = {{{kPermanent}, 0, 0}, {}};
static_assert(offsetof(EmptyText, text) == sizeof(Header));

Header* HeaderOf(char* text) {
  return reinterpret_cast<Header*>(text) - 1;
}

// A text with one owner: the given parts one behind the other, zeros up to the capacity.
char* NewText(std::size_t capacity, std::initializer_list<std::string_view> parts) {
  std::size_t length = 0;
  for (const std::string_view part : parts) length += part.size();
  capacity = std::max(capacity, length);
  if (capacity > kMaxLength) throw std::bad_alloc();
  void* block = ::operator new(sizeof(Header) + capacity + 1);
  new (block) Header{{1}, static_cast<std::int32_t>(length), static_cast<std::int32_t>(capacity)};
  char* const text = static_cast<char*>(block) + sizeof(Header);
  char* end = text;
  for (const std::string_view part : parts) end = std::ranges::copy(part, end).out;
  std::fill(end, text + capacity + 1, '\0');
  return text;
}

// Leaves the empty text where nothing is given.
char* NewTextOrEmpty(std::string_view a, std::string_view b = {}) {
  return a.empty() && b.empty() ? emptyText.text : NewText(0, {a, b});
}

void Release(char* text) {
  Header* const header = HeaderOf(text);
  const std::int32_t references = header->references.load(std::memory_order_relaxed);
  if (references == kPermanent) return;
  if (references != kLocked && header->references.fetch_sub(1, std::memory_order_acq_rel) > 1)
    return;
  header->~Header();
  ::operator delete(header);
}

char* Share(char* text) {
  Header* const header = HeaderOf(text);
  const std::int32_t references = header->references.load(std::memory_order_relaxed);
  if (references == kLocked) {
    return NewTextOrEmpty({text, static_cast<std::size_t>(header->length)});
  }
  if (references != kPermanent) header->references.fetch_add(1, std::memory_order_relaxed);
  return text;
}

std::size_t Limited(int value, std::size_t limit) {
  return value < 0 ? 0 : std::min(static_cast<std::size_t>(value), limit);
}

int PositionOf(std::size_t found) {
  return found == std::string_view::npos ? -1 : static_cast<int>(found);
}

unsigned char LowerByte(char c) {
  return static_cast<unsigned char>(base::ToLower(c));
}

bool SameNoCase(char a, char b) {
  return LowerByte(a) == LowerByte(b);
}

}  // namespace

KvString::KvString() noexcept : text(emptyText.text) {}
KvString::KvString(const KvString& other) : text(Share(other.text)) {}
KvString::KvString(KvString&& other) noexcept : text(std::exchange(other.text, emptyText.text)) {}
KvString::KvString(const char* zeroTerminated) : text(NewTextOrEmpty(KvTextView(zeroTerminated))) {}
KvString::KvString(const char* first, int length)
    : text(first && length > 0 ? NewText(0, {{first, static_cast<std::size_t>(length)}})
                               : emptyText.text) {}
KvString::KvString(char c, int repeated) : KvString() {
  if (repeated <= 0) return;
  GetBufferSetLength(repeated);
  std::fill_n(text, Size(), c);
}
KvString::KvString(const std::string& other) : text(NewTextOrEmpty(other)) {}
KvString::KvString(std::string_view other) : text(NewTextOrEmpty(other)) {}
KvString::KvString(std::u16string_view wide) : text(NewTextOrEmpty(base::FromWide(wide))) {}
KvString::~KvString() {
  Release(text);
}

KvString& KvString::operator=(const KvString& other) {
  if (this == &other) return *this;
  if (IsLocked()) {
    Splice(0, Size(), other.View());
  } else {
    Release(std::exchange(text, Share(other.text)));
  }
  return *this;
}

// NOLINTNEXTLINE(performance-noexcept-move-constructor): a locked string copies
KvString& KvString::operator=(KvString&& other) {
  if (IsLocked()) return *this = std::as_const(other);
  std::swap(text, other.text);
  return *this;
}

KvString& KvString::operator=(const char* zeroTerminated) {
  Splice(0, Size(), KvTextView(zeroTerminated));
  return *this;
}

KvString& KvString::operator=(const std::string& other) {
  Splice(0, Size(), other);
  return *this;
}

void KvString::Empty() {
  Splice(0, Size(), {});
}

char KvString::GetAt(int index) const {
  return (*this)[index];
}

void KvString::SetAt(int index, char c) {
  if (index < 0 || index >= GetLength()) return;
  Own(Size());
  text[index] = c;
}

char KvString::operator[](std::ptrdiff_t index) const {
  return index < 0 || index >= GetLength() ? '\0' : text[index];
}

std::u16string KvString::ToWide() const {
  return base::ToWide(View());
}

char* KvString::GetBuffer(int minLength) {
  Own(std::max(Limited(minLength, SIZE_MAX), Size()));
  return text;
}

char* KvString::GetBufferSetLength(int newLength) {
  const std::size_t before = Size();
  GetBuffer(newLength);
  const std::size_t after = Limited(newLength, SIZE_MAX);
  if (after > before) std::memset(text + before, 0, after - before);
  SetLength(after);
  return text;
}

void KvString::ReleaseBuffer(int newLength) {
  Own(Size());
  const auto capacity = static_cast<std::size_t>(HeaderOf()->capacity);
  SetLength(newLength < 0 ? static_cast<std::size_t>(std::find(text, text + capacity, '\0') - text)
                          : Limited(newLength, capacity));
}

char* KvString::LockBuffer() {
  Own(Size());
  HeaderOf()->references.store(kLocked, std::memory_order_relaxed);
  return text;
}

void KvString::UnlockBuffer() {
  if (IsLocked()) HeaderOf()->references.store(1, std::memory_order_relaxed);
}

void KvString::FreeExtra() {
  if (HeaderOf()->capacity > GetLength() && !IsLocked()) Adopt(NewTextOrEmpty(View()));
}

int KvString::Find(char c, int from) const {
  return Find(std::string_view(&c, 1), from);
}

int KvString::Find(KvTextView part, int from) const {
  return PositionOf(View().find(part, Limited(from, SIZE_MAX)));
}

int KvString::ReverseFind(char c) const {
  return PositionOf(View().rfind(c));
}

int KvString::FindOneOf(KvTextView characters) const {
  return PositionOf(View().find_first_of(characters));
}

KvString KvString::Left(int count) const {
  return Mid(0, count);
}

KvString KvString::Mid(int first) const {
  return Mid(first, GetLength());
}

KvString KvString::Mid(int first, int count) const {
  const std::string_view rest = View().substr(Limited(first, Size()));
  const std::size_t taken = Limited(count, rest.size());
  return taken == Size() ? *this : KvString(rest.substr(0, taken));
}

KvString KvString::Right(int count) const {
  return Mid(static_cast<int>(Size() - Limited(count, Size())));
}

KvString KvString::SpanIncluding(KvTextView characters) const {
  return KvString(View().substr(0, View().find_first_not_of(characters)));
}

KvString KvString::SpanExcluding(KvTextView characters) const {
  return KvString(View().substr(0, View().find_first_of(characters)));
}

int KvString::CompareNoCase(KvTextView other) const {
  const std::string_view own = View();
  const auto order = std::lexicographical_compare_three_way(
      own.begin(), own.end(), other.begin(), other.end(),
      [](char a, char b) { return LowerByte(a) <=> LowerByte(b); });
  return std::is_lt(order) ? -1 : std::is_gt(order) ? 1 : 0;
}

int KvString::Collate(const char* other) const {
  return std::strcoll(text, other ? other : "");
}

KvString& KvString::MakeUpper() {
  Transform(base::ToUpper);
  return *this;
}

KvString& KvString::MakeLower() {
  Transform(base::ToLower);
  return *this;
}

KvString& KvString::MakeReverse() {
  Own(Size());
  std::reverse(text, text + Size());
  return *this;
}

KvString& KvString::TrimLeft(KvTextView characters) {
  Splice(0, std::min(View().find_first_not_of(characters), Size()), {});
  return *this;
}

KvString& KvString::TrimRight(KvTextView characters) {
  const std::size_t kept = View().find_last_not_of(characters) + 1;  // npos + 1 is 0
  Splice(kept, Size() - kept, {});
  return *this;
}

int KvString::Insert(int at, KvTextView part) {
  Splice(Limited(at, Size()), 0, part);
  return GetLength();
}

int KvString::Delete(int at, int count) {
  const std::size_t first = Limited(at, Size());
  Splice(first, Limited(count, Size() - first), {});
  return GetLength();
}

int KvString::Remove(char c) {
  return Replace(std::string_view(&c, 1), std::string_view());
}

int KvString::Replace(char old, char replacement) {
  return Replace(std::string_view(&old, 1), std::string_view(&replacement, 1));
}

int KvString::Replace(KvTextView old, KvTextView replacement) {
  return ReplaceFound(old, replacement, [&old](std::string_view rest) { return rest.find(old); });
}

int KvString::ReplaceNoCase(KvTextView old, KvTextView replacement) {
  return ReplaceFound(old, replacement, [&old](std::string_view rest) {
    const auto found = std::search(rest.begin(), rest.end(), old.begin(), old.end(), SameNoCase);
    return found == rest.end() ? std::string_view::npos
                               : static_cast<std::size_t>(found - rest.begin());
  });
}

void KvString::Format(const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  try {
    FormatV(format, arguments);
  } catch (...) {
    va_end(arguments);
    throw;
  }
  va_end(arguments);
}

void KvString::AppendFormat(const char* format, ...) {
  KvString added;
  va_list arguments;
  va_start(arguments, format);
  try {
    added.FormatV(format, arguments);
  } catch (...) {
    va_end(arguments);
    throw;
  }
  va_end(arguments);
  *this += added;
}

void KvString::FormatV(const char* format, va_list arguments) {
  if (!format) return Empty();
  va_list measured;
  va_copy(measured, arguments);
  const int length = std::vsnprintf(nullptr, 0, format, measured);
  va_end(measured);
  if (length <= 0) return Empty();
  KvString printed;
  char* const buffer = printed.GetBufferSetLength(length);
  std::vsnprintf(buffer, static_cast<std::size_t>(length) + 1, format, arguments);
  *this = printed;
}

void KvString::CharToOemA() {
  Transform(base::ToOem);
}

void KvString::OemToCharA() {
  Transform(base::FromOem);
}

KvString& KvString::operator+=(KvTextView part) {
  Splice(Size(), 0, part);
  return *this;
}

KvString KvString::Join(KvTextView a, KvTextView b) {
  KvString joined;
  joined.text = NewTextOrEmpty(a, b);
  return joined;
}

bool KvString::IsLocked() const {
  return HeaderOf()->references.load(std::memory_order_relaxed) == kLocked;
}

bool KvString::IsOwn() const {
  const std::int32_t references = HeaderOf()->references.load(std::memory_order_acquire);
  return references == 1 || references == kLocked;
}

void KvString::Own(std::size_t capacity) {
  if (IsOwn() && capacity <= static_cast<std::size_t>(HeaderOf()->capacity)) return;
  Adopt(NewText(capacity, {View()}));
}

void KvString::Adopt(char* fresh) {
  if (IsLocked()) ::HeaderOf(fresh)->references.store(kLocked, std::memory_order_relaxed);
  Release(std::exchange(text, fresh));
}

void KvString::SetLength(std::size_t length) {
  HeaderOf()->length = static_cast<std::int32_t>(length);
  text[length] = '\0';
}

void KvString::Splice(std::size_t at, std::size_t count, std::string_view part) {
  if (count == 0 && part.empty()) return;
  const std::string_view head = View().substr(0, at);
  const std::string_view tail = View().substr(at + count);
  const std::size_t length = head.size() + part.size() + tail.size();
  const auto capacity = static_cast<std::size_t>(HeaderOf()->capacity);
  const bool partIsOwn = !std::less<>()(part.data(), static_cast<const char*>(text)) &&
                         !std::less<>()(text + capacity, part.data());
  if (length == 0 && !IsLocked()) return Release(std::exchange(text, emptyText.text));
  if (!IsOwn() || length > capacity || (partIsOwn && !part.empty())) {
    // Room for half as much again, so that appending in a loop stays linear.
    const std::size_t room = head.empty() ? length : std::min(length + length / 2, kMaxLength);
    return Adopt(NewText(room, {head, part, tail}));
  }
  std::memmove(text + at + part.size(), tail.data(), tail.size());
  std::ranges::copy(part, text + at);
  SetLength(length);
}

template <class Function>
void KvString::Transform(Function function) {
  Own(Size());
  std::transform(text, text + Size(), text, function);
}

template <class Finder>
int KvString::ReplaceFound(std::string_view old, std::string_view replacement, Finder find) {
  if (old.empty()) return 0;
  int count = 0;
  std::string result;
  std::string_view rest = View();
  for (std::size_t found = find(rest); found != std::string_view::npos; found = find(rest)) {
    result.append(rest.substr(0, found)).append(replacement);
    rest.remove_prefix(found + old.size());
    ++count;
  }
  if (count > 0) Splice(0, Size(), result.append(rest));
  return count;
}

const KvString& KvGetEmptyString() {
  static const KvString* const empty = new KvString;
  return *empty;
}
