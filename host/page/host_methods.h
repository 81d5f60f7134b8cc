// What the host serves itself, as the description of the protocol has it.
#pragma once

#include "kexbase/values.h"

namespace imsdk::host {

// The methods of `HostCalls`, one OpenRPC method object each. Any thread.
base::ListValue HostMethods();

}  // namespace imsdk::host
