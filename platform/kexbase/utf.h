// Decoding of UTF-8 and of wide text, one code point at a time.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

namespace base::internal {

inline constexpr char32_t kReplacement = 0xFFFD;
inline constexpr char32_t kInvalid = 0xFFFFFFFF;  // no code point; the caller replaces it

// Decodes the code point at `*at` and moves `*at` behind it, or gives kInvalid and moves behind the
// maximal subpart of the ill-formed sequence. `*at` must be before `end`.
inline char32_t NextUTF8(const unsigned char** at, const unsigned char* end) {
  const unsigned char*& p = *at;
  const unsigned char lead = *p++;
  if (lead < 0x80) return lead;
  if (lead < 0xC2 || lead > 0xF4) return kInvalid;

  // The range of the second byte keeps out overlong forms, surrogates and what is over 0x10FFFF.
  unsigned char low = 0x80;
  unsigned char high = 0xBF;
  if (lead == 0xE0) low = 0xA0;
  if (lead == 0xED) high = 0x9F;
  if (lead == 0xF0) low = 0x90;
  if (lead == 0xF4) high = 0x8F;
  if (p == end || *p < low || *p > high) return kInvalid;
  if (lead < 0xE0) return (lead & 0x1Fu) << 6 | (*p++ & 0x3Fu);

  const auto is_tail = [](unsigned char byte) { return (byte & 0xC0) == 0x80; };
  if (lead < 0xF0) {
    const char32_t code = (lead & 0x0Fu) << 6 | (*p++ & 0x3Fu);
    if (p == end || !is_tail(*p)) return kInvalid;
    return code << 6 | (*p++ & 0x3Fu);
  }
  char32_t code = (lead & 0x07u) << 6 | (*p++ & 0x3Fu);
  if (p == end || !is_tail(*p)) return kInvalid;
  code = code << 6 | (*p++ & 0x3Fu);
  if (p == end || !is_tail(*p)) return kInvalid;
  return code << 6 | (*p++ & 0x3Fu);
}

// The same for wide text; an unpaired surrogate or a value over 0x10FFFF is one kInvalid.
inline char32_t NextWide(const wchar_t** at, const wchar_t* end) {
  constexpr bool kUtf16 = sizeof(wchar_t) == 2;
  const wchar_t*& p = *at;
  const auto unit = static_cast<char32_t>(*p++);
  if constexpr (kUtf16) {
    const auto value = static_cast<char16_t>(unit);
    if (value < 0xD800 || value > 0xDFFF) return value;
    if (value > 0xDBFF || p == end) return kInvalid;
    const auto next = static_cast<char16_t>(*p);
    if (next < 0xDC00 || next > 0xDFFF) return kInvalid;
    ++p;
    return 0x10000 + ((value - 0xD800u) << 10) + (next - 0xDC00u);
  }
  return unit > 0x10FFFF || (unit >= 0xD800 && unit <= 0xDFFF) ? kInvalid : unit;
}

// Writes `code` to `out`, which has room for four bytes; gives how many they are.
inline size_t PutUTF8(char32_t code, char* out) {
  const auto tail = [code](int shift) {
    return static_cast<char>(0x80 | ((code >> shift) & 0x3F));
  };
  if (code < 0x80) {
    out[0] = static_cast<char>(code);
    return 1;
  }
  if (code < 0x800) {
    out[0] = static_cast<char>(0xC0 | code >> 6);
    out[1] = tail(0);
    return 2;
  }
  if (code < 0x10000) {
    out[0] = static_cast<char>(0xE0 | code >> 12);
    out[1] = tail(6);
    out[2] = tail(0);
    return 3;
  }
  out[0] = static_cast<char>(0xF0 | code >> 18);
  out[1] = tail(12);
  out[2] = tail(6);
  out[3] = tail(0);
  return 4;
}

// The length in bytes of the longest part of `text`, from its beginning, that is well-formed UTF-8.
size_t ValidUTF8Prefix(std::string_view text);

// Replaces what is ill-formed in `text` by U+FFFD.
std::string ReplaceInvalidUTF8(std::string_view text);

}  // namespace base::internal
