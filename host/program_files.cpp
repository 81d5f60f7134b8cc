#include "program_files.h"

#include <system_error>

namespace imsdk::host {
namespace fs = std::filesystem;

fs::path BridgeLibraryFile() {
  std::error_code failure;
  return fs::read_symlink("/proc/self/exe", failure).parent_path() / "libimsdkbridge.so";
}

fs::path BuiltPagesFolder() { return IMSDK_WEB_DIST; }

}  // namespace imsdk::host
