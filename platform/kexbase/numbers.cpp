#include <charconv>
#include <concepts>
#include <limits>

#include "kexbase/strings.h"

namespace base {

namespace {

template <std::integral Int, class Char>
bool ParseWhole(std::basic_string_view<Char> text, Int* out) {
  *out = 0;
  const bool negative = std::signed_integral<Int> && !text.empty() && text.front() == Char('-');
  if (negative) text.remove_prefix(1);
  if (text.empty()) return false;
  Int value = 0;
  for (const Char c : text) {
    if (c < Char('0') || c > Char('9')) return false;
    const Int digit = static_cast<Int>(c - Char('0'));
    if (__builtin_mul_overflow(value, Int{10}, &value)) return false;
    // Downwards for negative numbers: the lowest one has no positive counterpart.
    if (negative ? __builtin_sub_overflow(value, digit, &value)
                 : __builtin_add_overflow(value, digit, &value)) {
      return false;
    }
  }
  *out = value;
  return true;
}

constexpr size_t kLongestNumber = 20;  // both ends of the 64-bit ranges

template <class String, std::integral Int>
String ToText(Int value) {
  char digits[kLongestNumber];
  return String(digits, std::to_chars(digits, digits + kLongestNumber, value).ptr);
}

}  // namespace

bool StringToInt(std::string_view text, int* out) { return ParseWhole(text, out); }
bool StringToInt(std::wstring_view text, int* out) { return ParseWhole(text, out); }
bool StringToInt64(std::string_view text, int64_t* out) { return ParseWhole(text, out); }
bool StringToInt64(std::wstring_view text, int64_t* out) { return ParseWhole(text, out); }
bool StringToUint(std::string_view text, unsigned* out) { return ParseWhole(text, out); }
bool StringToUint(std::wstring_view text, unsigned* out) { return ParseWhole(text, out); }
bool StringToUint64(std::string_view text, uint64_t* out) { return ParseWhole(text, out); }
bool StringToUint64(std::wstring_view text, uint64_t* out) { return ParseWhole(text, out); }

namespace internal {

std::string SignedToString(int64_t value) { return ToText<std::string>(value); }
std::string UnsignedToString(uint64_t value) { return ToText<std::string>(value); }
std::wstring SignedToWide(int64_t value) { return ToText<std::wstring>(value); }
std::wstring UnsignedToWide(uint64_t value) { return ToText<std::wstring>(value); }

}  // namespace internal

}  // namespace base
