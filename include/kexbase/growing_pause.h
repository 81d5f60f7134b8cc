// How long to wait after one more failure.
#pragma once

#include <algorithm>
#include <chrono>

namespace base {

// None for up to `free` failures in a row, `first` after the next one, twice as long after each
// further one, and `longest` at most. Any thread.
constexpr std::chrono::milliseconds GrowingPause(int failures, int free,
                                                 std::chrono::milliseconds first,
                                                 std::chrono::milliseconds longest) {
  if (failures <= free) return std::chrono::milliseconds::zero();
  constexpr int kMostDoublings = 20;  // no overflow on the way to `longest`
  return std::min(first * (1 << std::min(failures - free - 1, kMostDoublings)), longest);
}

}  // namespace base
