#include "kexbase/json_text.h"

#include <charconv>
#include <cstdint>
#include <string_view>

namespace base::internal {

namespace {

constexpr size_t kEscapeLength = 6;  // \uXXXX

bool IsHigh(uint32_t unit) { return unit >= 0xD800 && unit <= 0xDBFF; }
bool IsLow(uint32_t unit) { return unit >= 0xDC00 && unit <= 0xDFFF; }

// The unit of the \uXXXX at `at`, 0 if there is none.
uint32_t EscapedUnit(std::string_view text, size_t at) {
  if (text.size() - at < kEscapeLength || text[at] != '\\' || text[at + 1] != 'u') return 0;
  const char* const digits = text.data() + at + 2;
  uint32_t unit = 0;
  const auto [end, error] = std::from_chars(digits, digits + 4, unit, 16);
  return error == std::errc() && end == digits + 4 ? unit : 0;
}

}  // namespace

void ReplaceLoneSurrogates(std::string* text) {
  for (size_t at = text->find('\\'); at != std::string::npos; at = text->find('\\', at)) {
    const uint32_t unit = EscapedUnit(*text, at);
    if (!IsHigh(unit) && !IsLow(unit)) {
      at += 2;  // whatever is escaped, a backslash too
      continue;
    }
    const bool pair = IsHigh(unit) && at + kEscapeLength <= text->size() &&
                      IsLow(EscapedUnit(*text, at + kEscapeLength));
    if (!pair) text->replace(at, kEscapeLength, "\\ufffd");
    at += pair ? 2 * kEscapeLength : kEscapeLength;
  }
}

}  // namespace base::internal
