#include "source/bridge/jsparams/jsontext.h"

#include <algorithm>
#include <charconv>
#include <utility>

#include "kexbase/json_string.h"

namespace imsdk::bridge {
namespace {

constexpr bool kUtf16 = sizeof(wchar_t) == 2;

constexpr std::size_t kFirstRoom = 512;
constexpr std::size_t kMostKept = 262'144;  // characters of a buffer that waits for its next use
constexpr std::size_t kMostDigits = 20;     // of a 64-bit value, the sign included

bool IsPlain(wchar_t c) {
  const auto u = static_cast<std::uint32_t>(c);
  return u < 0xD800 && base::IsPlainInJSON(c);
}

// Writes the value's digits and returns their end.
wchar_t* PutDigits(wchar_t* out, std::int64_t value) {
  char digits[kMostDigits];
  return std::copy(digits, std::to_chars(digits, digits + sizeof digits, value).ptr, out);
}

}  // namespace

JsonText::Buffer& JsonText::Kept() {
  thread_local Buffer kept;
  return kept;
}

JsonText::JsonText() : buffer_(std::exchange(Kept(), {})) {}

JsonText::~JsonText() {
  if (buffer_.room <= kMostKept) Kept() = std::move(buffer_);
}

void JsonText::Expect(std::size_t characters) {
  if (size_ + characters > kMostKept) front_.reserve(size() + characters);
}

void JsonText::Grow(std::size_t count) {
  // Room beyond this would be new memory with each text, and bringing that in takes longer than
  // writing to it.
  if (buffer_.room >= kMostKept) {
    front_.append(buffer_.text.get(), std::exchange(size_, 0));
    if (count <= buffer_.room) return;
  }
  const std::size_t room = std::max(size_ + count, std::max(buffer_.room * 2, kFirstRoom));
  auto larger = std::make_unique_for_overwrite<wchar_t[]>(room);
  std::copy_n(buffer_.text.get(), size_, larger.get());
  buffer_ = {std::move(larger), room};
}

std::wstring JsonText::Take() {
  front_.append(buffer_.text.get(), std::exchange(size_, 0));
  return std::exchange(front_, {});
}

void JsonText::Open(wchar_t bracket) {
  if (comma_) Put(L',');
  Put(bracket);
  comma_ = false;
}

void JsonText::Close(wchar_t bracket) {
  Put(bracket);
  comma_ = true;
}

void JsonText::Key(std::string_view key) {
  wchar_t* out = Room(key.size() + 3 + comma_);
  if (comma_) *out++ = L',';
  *out++ = L'"';
  out = std::copy(key.begin(), key.end(), out);
  *out++ = L'"';
  *out = L':';
  comma_ = false;
}

void JsonText::String(std::wstring_view text) {
  if (comma_) Put(L',');
  comma_ = true;
  Put(L'"');
  for (std::size_t index = 0; index < text.size();) {
    // Most texts are plain to their end. What is not used of the room goes back.
    const std::wstring_view rest = text.substr(index);
    wchar_t* const room = Room(rest.size());
    std::size_t plain = 0;
    for (; plain < rest.size() && IsPlain(rest[plain]); ++plain) room[plain] = rest[plain];
    size_ -= rest.size() - plain;
    index += plain;
    if (index < text.size()) PutSpecial(text, &index);
  }
  Put(L'"');
}

void JsonText::PutSpecial(std::wstring_view text, std::size_t* index) {
  const wchar_t c = text[(*index)++];
  const auto u = static_cast<std::uint32_t>(c);
  if (!base::IsPlainInJSON(c)) {
    wchar_t* const room = Room(base::kLongestJSONEscape);
    const wchar_t* const end = base::PutJSONEscape(c, room);
    size_ -= static_cast<std::size_t>(room + base::kLongestJSONEscape - end);
  } else if (u >= 0xE000 && u <= 0x10FFFF) {
    Put(c);
  } else if (kUtf16 && u < 0xDC00 && *index < text.size() && (text[*index] & 0xFC00) == 0xDC00) {
    Put(c);
    Put(text[(*index)++]);
  } else {
    Put(L'\xFFFD');
  }
}

void JsonText::Integer(std::int64_t value) {
  wchar_t* const start = Room(kMostDigits + 1);
  wchar_t* out = start;
  if (comma_) *out++ = L',';
  comma_ = true;
  out = PutDigits(out, value);
  size_ -= static_cast<std::size_t>(start + kMostDigits + 1 - out);
}

void JsonText::Boolean(bool value) {
  if (comma_) Put(L',');
  comma_ = true;
  for (const char c : std::string_view(value ? "true" : "false")) Put(static_cast<wchar_t>(c));
}

void JsonText::DecimalString(std::int64_t value) {
  wchar_t* const start = Room(kMostDigits + 3);
  wchar_t* out = start;
  if (comma_) *out++ = L',';
  comma_ = true;
  *out++ = L'"';
  out = PutDigits(out, value);
  *out++ = L'"';
  size_ -= static_cast<std::size_t>(start + kMostDigits + 3 - out);
}

}  // namespace imsdk::bridge
