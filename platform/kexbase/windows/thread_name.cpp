#include <windows.h>

#include <cstring>

#include "kexbase/os.h"
#include "kexbase/strings.h"

namespace base::internal {

void SetCurrentThreadName(const std::string& utf8) {
  // Looked up at run time, because Windows has it only since version 10.
  using SetDescription = HRESULT(WINAPI*)(HANDLE, PCWSTR);
  const HMODULE kernel = GetModuleHandleW(L"kernel32.dll");
  if (!kernel) return;
  const FARPROC found = GetProcAddress(kernel, "SetThreadDescription");
  if (!found) return;
  SetDescription set = nullptr;
  static_assert(sizeof(set) == sizeof(found));
  std::memcpy(&set, &found, sizeof(set));
  set(GetCurrentThread(), UTF8ToWide(utf8).c_str());
}

}  // namespace base::internal
