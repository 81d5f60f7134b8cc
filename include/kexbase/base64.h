#pragma once

#include <string>
#include <string_view>

namespace base {

// Base64 of RFC 4648, section 4: the standard alphabet, padded with "=", no line breaks. Any
// thread.

// Decodes `text` into `*out` (any bytes). Strict: false for a foreign character (white space
// included), a wrong length, missing or misplaced padding, and unused bits that are not zero; *out
// is then empty. The empty text decodes to nothing. `text` must not be a part of `*out`.
bool Base64Decode(std::string_view text, std::string* out);

}  // namespace base
