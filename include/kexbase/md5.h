#pragma once

#include <string>
#include <string_view>

namespace base {

// The MD5 digest of `data` (any bytes) as 32 lower-case hexadecimal digits. It identifies content
// and protects nothing. Any thread. Empty only if the system's cryptography refuses MD5.
std::string MD5String(std::string_view data);

}  // namespace base
