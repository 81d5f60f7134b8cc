// The description of the protocol.
#pragma once

#include <string>
#include <string_view>

#include "source/bridge/bridgemodules.h"

namespace imsdk::bridge {

// The OpenRPC document of `modules`, made from their tables and record lists: JSON. `version` is
// the library's.
//
// Under "components" stand the records and the value sets, by name. A record that an answer or a
// notification holds has all its keys; the keys of a request may be missing. "x-paths" lists the
// routing paths, "x-notifications" what the modules send, "x-codes" the codes of the envelope, and
// "errors" of a method what a request that cannot be used is answered with.
std::wstring ProtocolDescription(const ModuleTable& modules, std::wstring_view version);

}  // namespace imsdk::bridge
