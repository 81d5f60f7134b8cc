// How much an account's history gives at a time.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace imsdk::account {

inline constexpr std::int32_t kDefaultCount = 20;  // for a request that names no count
inline constexpr std::int32_t kMostCount = 1000;
// A page ends early, after the message that goes beyond this many characters.
inline constexpr std::size_t kMostText = 4 * 1024 * 1024;

// How many entries a request gets that asks for `wanted`.
inline std::int32_t CountOf(std::int32_t wanted, std::int32_t most = kMostCount) {
  return wanted > 0 ? std::min(wanted, most) : kDefaultCount;
}

}  // namespace imsdk::account
