// The place in the source a task was posted from; it is carried along for diagnostics only.
#pragma once

namespace base {

// A plain value. Both texts have static storage duration, nobody owns them.
struct Location {
  const char* function = "";
  const char* file = "";
  int line = 0;

  // Where it is called, as long as no arguments are given.
  static constexpr Location Here(const char* function = __builtin_FUNCTION(),
                                 const char* file = __builtin_FILE(), int line = __builtin_LINE()) {
    return {function, file, line};
  }
};

}  // namespace base

// The Location of the line it is written on.
#define FROM_HERE (::base::Location::Here())
