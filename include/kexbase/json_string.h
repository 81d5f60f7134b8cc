// How text stands in JSON strings: the one place that knows the escapes.
//
// Escaped are what JSON asks for and nothing else: the quote, the backslash and the control
// characters below the blank, by their short escapes where they have one ("\n"), else as "\u001f".
// All functions: any thread.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <type_traits>

namespace base {

// Appends `text` as a JSON string with its quotes, in UTF-8. What is ill-formed becomes U+FFFD. The
// input must not be a part of `*out`.
void AppendJSONString(std::wstring_view text, std::string* out);
void AppendJSONString(std::string_view utf8, std::string* out);

// For writers that have a buffer of their own; `Unit` is char or wchar_t.

constexpr size_t kLongestJSONEscape = 6;

template <class Unit>
constexpr bool IsPlainInJSON(Unit c) {
  return static_cast<std::make_unsigned_t<Unit>>(c) >= 0x20 && c != Unit{'"'} && c != Unit{'\\'};
}

// Writes the escape of a character that is not plain, and returns its end.
template <class Unit>
constexpr Unit* PutJSONEscape(Unit c, Unit* out) {
  *out++ = Unit{'\\'};
  constexpr std::string_view kShort = "\"\"\\\\\nn\rr\tt\bb\ff";  // each with its letter
  for (size_t i = 0; i < kShort.size(); i += 2) {
    if (c == static_cast<Unit>(kShort[i])) {
      *out++ = static_cast<Unit>(kShort[i + 1]);
      return out;
    }
  }
  constexpr std::string_view kHex = "0123456789abcdef";
  for (const char part : {'u', '0', '0', kHex[(c >> 4) & 0xF], kHex[c & 0xF]}) {
    *out++ = static_cast<Unit>(part);
  }
  return out;
}

}  // namespace base
