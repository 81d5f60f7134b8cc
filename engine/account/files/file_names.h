// Names of files that other users chose.
#pragma once

#include <string>
#include <string_view>

namespace imsdk::account {

// The name as it may stand on any disk: its last part when it is a path, without control
// characters, marks that change the direction of writing, and what Windows refuses; no name of a
// device; at most 255 bytes of UTF-8, the ending kept. Never empty, "." or "..".
std::wstring CleanFileName(std::wstring_view name);

}  // namespace imsdk::account
