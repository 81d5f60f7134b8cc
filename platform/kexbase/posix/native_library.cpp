#include "kexbase/native_library.h"

#include <dlfcn.h>

namespace base {

NativeLibrary NativeLibrary::Open(const FilePath& file, std::string* error) {
  NativeLibrary library;
  library.handle_ = ::dlopen(file.AsUTF8().c_str(), RTLD_NOW | RTLD_LOCAL);
  if (!library.handle_ && error) {
    const char* reason = ::dlerror();
    *error = reason ? reason : "the library cannot be opened";
  }
  return library;
}

NativeLibrary::Code NativeLibrary::Symbol(const char* name) const {
  return handle_ ? reinterpret_cast<Code>(::dlsym(handle_, name)) : nullptr;
}

}  // namespace base
