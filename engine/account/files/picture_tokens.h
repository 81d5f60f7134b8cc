// Finds the pictures inside a message body.
#pragma once

#include <string_view>
#include <vector>

namespace imsdk::account {

// The paths of the body's pictures, in order, escaped as they are in their tokens.
std::vector<std::wstring_view> PicturePaths(std::wstring_view body);

}  // namespace imsdk::account
