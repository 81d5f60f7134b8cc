// When a file is so large that nobody waits for it.
#pragma once

#include <cstdint>
#include <functional>

namespace imsdk::account {

// From this size on, in bytes, what goes over the whole file is done aside, and messages do not
// wait behind it.
inline constexpr std::uint64_t kLargeFileBytes = 1024 * 1024;

// Asked after each piece of such a file: true ends it.
using GivesUp = std::function<bool()>;

}  // namespace imsdk::account
