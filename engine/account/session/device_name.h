// The name by which servers know this installation.
#pragma once

#include <filesystem>
#include <string>

namespace imsdk::account {

// The name in `file`; a fresh one is written there first when there is none. Throws
// `std::runtime_error` when that fails.
std::string DeviceName(const std::filesystem::path& file);

}  // namespace imsdk::account
