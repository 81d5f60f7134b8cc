// What the script channel adds to the protocol of the bridge.
#pragma once

#include <string>
#include <string_view>

namespace imsdk::host {

// The library's document, UTF-8, with what belongs to the host: "x-frames" are the frames of the
// script channel by who sends them, "x-page-events" the events that a page raises for the host.
// Empty when `document` is not a description.
std::string WithPageProtocol(std::string_view document);

}  // namespace imsdk::host
