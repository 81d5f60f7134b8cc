// The files that a message's body names in its tokens.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace imsdk::account {

// The paths of the body's pictures, in order, escaped as they are in their tokens.
std::vector<std::wstring_view> PicturePaths(std::wstring_view body);

// Whether this is how the link names a file: 32 lower-case hexadecimal digits, maybe "." and a type
// of up to 8 lower-case letters and digits.
bool IsFileName(std::wstring_view name);

// The names of the files of `folder` (as tokens write it, with the parting "/") that the body's
// tokens have, each once.
std::vector<std::string> FileNamesIn(std::wstring_view body, std::wstring_view folder);
// The body with tokens that name these files without a folder, as they cross the link.
std::wstring WithoutFolder(std::wstring_view body, std::wstring_view folder,
                           const std::vector<std::string>& names);
// The reverse, for pages.
std::wstring WithFolder(std::wstring_view body, std::wstring_view folder,
                        const std::vector<std::string>& names);

}  // namespace imsdk::account
