// What a fuzz target says when a promise is broken.
#pragma once

#include <cstdio>
#include <cstdlib>

// Ends the process where libFuzzer sees it.
#define FUZZ_CHECK(condition)                                                             \
  do {                                                                                    \
    if (!(condition)) {                                                                   \
      std::fprintf(stderr, "%s:%d: does not hold: %s\n", __FILE__, __LINE__, #condition); \
      std::abort();                                                                       \
    }                                                                                     \
  } while (false)
