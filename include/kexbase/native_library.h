// Shared libraries loaded at run time.
#pragma once

#include <string>

#include "kexbase/file_path.h"

namespace base {

// A shared library opened from its file. Copies name the same library; it stays loaded until the
// process ends, because objects of its classes may outlive whoever opened it. Any thread.
class NativeLibrary {
 public:
  // Opens `file` (a name without a folder is searched as the system does). Null inside when that
  // fails; `*error`, if given, then says why, UTF-8.
  static NativeLibrary Open(const FilePath& file, std::string* error = nullptr);

  explicit operator bool() const { return handle_ != nullptr; }

  // The exported function `name` of type `F`, or null.
  template <class F>
  F* Function(const char* name) const {
    return reinterpret_cast<F*>(Symbol(name));
  }

 private:
  using Code = void (*)();
  Code Symbol(const char* name) const;

  void* handle_ = nullptr;
};

}  // namespace base
