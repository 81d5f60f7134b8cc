// Files that belong to the program, not to its user.
#pragma once

#include <filesystem>

namespace imsdk::host {

// The bridge library beside the running program.
std::filesystem::path BridgeLibraryFile();
// Where the built pages lie in the source tree this program was built from.
std::filesystem::path BuiltPagesFolder();

}  // namespace imsdk::host
