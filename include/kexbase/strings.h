// Text conversions and numbers as text.
//
// Wide text is UTF-16 where wchar_t has 16 bits (Windows) and UTF-32 elsewhere. Narrow text is
// UTF-8 unless a function says otherwise. All functions are pure: any thread, no locale, no errors
// other than those named. Out parameters must not be null.
#pragma once

#include <concepts>
#include <cstdarg>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace base {

// Conversions take any input. What is not valid becomes U+FFFD, the rest is kept: in UTF-8 one
// U+FFFD for each maximal subpart of an ill-formed sequence (as the Unicode standard recommends),
// in UTF-16 one for each unpaired surrogate, in UTF-32 one for each surrogate and each value above
// 0x10FFFF. The Sys names are the same functions.
std::wstring UTF8ToWide(std::string_view utf8);
std::string WideToUTF8(std::wstring_view wide);
std::wstring SysUTF8ToWide(std::string_view utf8);
std::string SysWideToUTF8(std::wstring_view wide);

// The same, appended to what `out` holds. The input must not be a part of `out`.
void AppendWide(std::string_view utf8, std::wstring* out);
void AppendUTF8(std::wstring_view wide, std::string* out);

// True if `text` is well-formed UTF-8.
bool IsValidUTF8(std::string_view text);

// GBK as Windows code page 936 has it (0x80 is the euro sign), the same on every platform. A
// character that GBK lacks becomes "?". A byte that begins no known character becomes U+FFFD; a
// byte below 0x80 after it is kept.
std::string WideToGBK(std::wstring_view wide);
std::wstring GBKToWide(std::string_view gbk);

// The length of `wide` in UTF-16 code units, whatever the platform's wide text is. This is the unit
// in which the protocol's limits are counted.
size_t Utf16Length(std::wstring_view wide);
// The number of bytes that `WideToUTF8` makes of `wide`.
size_t Utf8Length(std::wstring_view wide);

// Decimal text to a number. True only if the whole text is one number: digits, for the signed types
// after an optional "-"; no other sign, no white space. On failure, overflow included, *out is 0.
bool StringToInt(std::string_view text, int* out);
bool StringToInt(std::wstring_view text, int* out);
bool StringToInt64(std::string_view text, int64_t* out);
bool StringToInt64(std::wstring_view text, int64_t* out);
bool StringToUint(std::string_view text, unsigned* out);
bool StringToUint(std::wstring_view text, unsigned* out);
bool StringToUint64(std::string_view text, uint64_t* out);
bool StringToUint64(std::wstring_view text, uint64_t* out);

namespace internal {
std::string SignedToString(int64_t value);
std::string UnsignedToString(uint64_t value);
std::wstring SignedToWide(int64_t value);
std::wstring UnsignedToWide(uint64_t value);
}  // namespace internal

// A number as decimal text, for every integer type of up to 64 bits.
template <std::integral T>
std::string NumberToString(T value) {
  if constexpr (std::signed_integral<T>) return internal::SignedToString(value);
  return internal::UnsignedToString(static_cast<uint64_t>(value));
}
template <std::integral T>
std::wstring NumberToWide(T value) {
  if constexpr (std::signed_integral<T>) return internal::SignedToWide(value);
  return internal::UnsignedToWide(static_cast<uint64_t>(value));
}

// printf into a string; "%lld" is the 64-bit integer on every platform. A format that the C library
// refuses gives the empty string.
[[gnu::format(printf, 1, 2)]] std::string StringPrintf(const char* format, ...);
[[gnu::format(printf, 1, 0)]] std::string StringPrintV(const char* format, va_list args);

}  // namespace base
