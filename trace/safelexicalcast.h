// Turns values into the wide text in which traces show them.
#pragma once

#include <concepts>
#include <string>
#include <string_view>

#include "kexbase/strings.h"

namespace ns_smart_format {

// Integers become decimal text, truth values 0 or 1, UTF-8 text is converted, wide text stays.
template <std::integral T>
std::wstring SafeLexicalCast(T value) {
  return base::NumberToWide(static_cast<std::int64_t>(value));
}
inline std::wstring SafeLexicalCast(std::string_view utf8) { return base::UTF8ToWide(utf8); }
inline std::wstring SafeLexicalCast(const char* utf8) { return base::UTF8ToWide(utf8); }
inline std::wstring SafeLexicalCast(std::wstring text) { return text; }

}  // namespace ns_smart_format
