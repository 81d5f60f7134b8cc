// JSON text to values.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "kexbase/values.h"

namespace base {

// Why a text is not JSON.
struct JSONError {
  size_t offset = 0;    // in bytes, from the beginning of the text
  std::string message;  // English, for traces
};

// Reads exactly what RFC 8259 calls a JSON text, in UTF-8 without a byte order mark. Refused are
// among others the empty text, anything after the value, comments, NaN, control characters in
// strings, unknown escapes and ill-formed UTF-8, and beyond the RFC's letter: nesting deeper than
// kMaxDepth and numbers too big for a double.
//
// Integers in the range of int64 or uint64 are exact, other numbers are the nearest double. An
// escaped surrogate without its partner ("\ud83d", which pages produce when they cut a text)
// becomes U+FFFD. Of a key that occurs twice the last value counts, in the place of the first.
struct JSONReader {
  // Objects and arrays inside each other; a value inside none has depth 0.
  static constexpr int kMaxDepth = 200;

  // The value, or nothing; `error` then says why, if it is not null. Any thread; never throws but
  // for lack of memory.
  static std::optional<Value> Read(std::string_view utf8, JSONError* error = nullptr);
  // The same of a text that is not needed any more: what `Read` takes for a copy of it is saved.
  static std::optional<Value> ReadInPlace(std::string utf8, JSONError* error = nullptr);
};

}  // namespace base
