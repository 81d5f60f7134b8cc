#pragma once

#include <malloc.h>

#include <fstream>

namespace imsdk::host {

// How much a process may grow over a thousand views and still count as flat, in kilobytes.
// Sanitizers keep freed memory; they look for what is lost by themselves.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
inline constexpr long kFlatKb = 1L << 30;
#else
inline constexpr long kFlatKb = 2000;
#endif

// Kilobytes of memory that this process really uses.
inline long ResidentKb() {
  ::malloc_trim(0);
  std::ifstream statm("/proc/self/statm");
  long pages = 0;
  statm >> pages >> pages;
  return pages * 4;
}

}  // namespace imsdk::host
