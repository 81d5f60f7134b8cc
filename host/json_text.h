// Wide text as a JSON string.
#pragma once

#include <string>
#include <string_view>

namespace imsdk::host {

// Appends `text` to `out` as a JSON string with its quotes, in UTF-8: control characters, the quote
// and the backslash are escaped, ill-formed wide text becomes U+FFFD. One pass. Any thread.
void AppendJsonText(std::wstring_view text, std::string* out);

// The same for UTF-8. Ill-formed UTF-8 becomes U+FFFD.
void AppendJsonText(std::string_view utf8, std::string* out);

}  // namespace imsdk::host
