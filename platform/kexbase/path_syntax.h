// How paths are written on this operating system.
#pragma once

#include <string_view>

namespace base::internal {

#ifdef _WIN32

// The first one is written, each is read.
inline constexpr std::wstring_view kPathSeparators = L"\\/";

// 2 for a path that begins with a drive ("C:"), else 0.
inline size_t DriveLength(std::wstring_view path) {
  if (path.size() < 2 || path[1] != L':') return 0;
  const bool letter = (path[0] >= L'a' && path[0] <= L'z') || (path[0] >= L'A' && path[0] <= L'Z');
  return letter ? 2 : 0;
}

#else

inline constexpr std::wstring_view kPathSeparators = L"/";

inline size_t DriveLength(std::wstring_view) { return 0; }

#endif

}  // namespace base::internal
