#include "kexbase/native_library.h"

#include <windows.h>

#include "kexbase/strings.h"

namespace base {

NativeLibrary NativeLibrary::Open(const FilePath& file, std::string* error) {
  NativeLibrary library;
  library.handle_ = reinterpret_cast<void*>(::LoadLibraryW(file.value().c_str()));
  if (!library.handle_ && error) {
    *error = "the library cannot be opened, system error " + NumberToString(::GetLastError());
  }
  return library;
}

NativeLibrary::Code NativeLibrary::Symbol(const char* name) const {
  if (!handle_) return nullptr;
  return reinterpret_cast<Code>(::GetProcAddress(static_cast<HMODULE>(handle_), name));
}

}  // namespace base
