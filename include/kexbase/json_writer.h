// Values to JSON text.
#pragma once

#include <string>

#include "kexbase/values.h"

namespace base {

// Writes RFC 8259 JSON in UTF-8. Control characters are escaped, other characters are written as
// they are; ill-formed UTF-8 in a string becomes U+FFFD. Integers are exact, and a double that is
// read again is the same double. Any thread.
struct JSONWriter {
  // Line breaks and four spaces of indentation instead of the shortest text.
  static constexpr int OPTIONS_PRETTY_PRINT = 4;

  // Replaces `*out` with the text of `value`. False, and *out empty, if a number in it is not
  // finite: JSON has no word for that.
  static bool Write(const Value& value, std::string* out);

  // The same; `options` is 0 or OPTIONS_PRETTY_PRINT, other bits mean nothing.
  static bool WriteWithOptions(const Value& value, int options, std::string* out);
};

}  // namespace base
