#include <cstdio>

#include "kexbase/strings.h"

namespace base {

std::string StringPrintf(const char* format, ...) {
  va_list args;
  va_start(args, format);
  std::string text = StringPrintV(format, args);
  va_end(args);
  return text;
}

std::string StringPrintV(const char* format, va_list args) {
  va_list again;
  va_copy(again, args);
  char small[256];
  const int length = std::vsnprintf(small, sizeof(small), format, args);
  std::string text;
  if (length > 0) {
    const auto size = static_cast<size_t>(length);
    if (size < sizeof(small)) {
      text.assign(small, size);
    } else {
      text.resize(size);
      std::vsnprintf(text.data(), size + 1, format, again);
    }
  }
  va_end(again);
  return text;
}

}  // namespace base
