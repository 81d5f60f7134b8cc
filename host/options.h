// The command line of bridgehost.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "host.h"

namespace imsdk::host {

extern const std::string_view kUsage;

// Reads the arguments behind the program's name into `*options`. False when they make no sense;
// `*error` then says why. Without "--data" the demo set is used, in the user's data home.
bool ReadOptions(const std::vector<std::string>& arguments, HostOptions* options,
                 std::string* error);

}  // namespace imsdk::host
