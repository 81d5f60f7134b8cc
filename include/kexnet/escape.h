#pragma once

#include <string>
#include <string_view>

namespace net {

// `utf8` as the value of a URL's query parameter. Letters, digits and - _ . ! ~ * ' ( ) of ASCII
// stay as they are, every other byte becomes % and two upper-case hexadecimal digits; a space
// becomes "+" if `use_plus`, else "%20". Bytes that are not UTF-8 are escaped as they stand. Any
// thread.
std::string EscapeQueryParamValue(std::string_view utf8, bool use_plus);

}  // namespace net
