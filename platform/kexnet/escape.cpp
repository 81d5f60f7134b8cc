#include "kexnet/escape.h"

namespace net {

namespace {

bool StaysAsItIs(char c) {
  const bool letter_or_digit =
      (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9');
  return letter_or_digit || std::string_view("-_.!~*'()").find(c) != std::string_view::npos;
}

}  // namespace

std::string EscapeQueryParamValue(std::string_view utf8, bool use_plus) {
  constexpr char kHex[] = "0123456789ABCDEF";
  std::string escaped;
  escaped.reserve(utf8.size());
  for (const char c : utf8) {
    if (StaysAsItIs(c)) {
      escaped += c;
    } else if (c == ' ' && use_plus) {
      escaped += '+';
    } else {
      const auto byte = static_cast<unsigned char>(c);
      escaped += {'%', kHex[byte >> 4], kHex[byte & 15]};
    }
  }
  return escaped;
}

}  // namespace net
