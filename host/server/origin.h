// Origins of pages, as browsers write them.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace imsdk::host {

// The origin that a browser sends for pages of `url`: "http://localhost:5173". `url` is scheme http
// or https, a host, and maybe a port and one "/"; its letters may be capitals and its port the
// scheme's own. Nothing for any other text: a path belongs to no origin.
std::optional<std::string> OriginOf(std::string_view url);

}  // namespace imsdk::host
