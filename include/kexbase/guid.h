#pragma once

#include <string>

namespace base {

// A new random identifier (RFC 4122, version 4) from the system's cryptographic random source, as
// upper-case text without braces: "8C1F4B6E-5D0A-4A53-9C7F-0E6B1D2F3A48". Any thread. Aborts the
// process if the system has no randomness to give.
std::string GenerateGUID();

}  // namespace base
