// The host's logger, as the library holds it between start and stop of the business layer.
#pragma once

#include "kexcore/logger.h"

namespace ns_log {

// Any thread.
class TraceTarget {
 public:
  // Fetches the logger "imsdk" from the host's logging facility, if there is one.
  static void Attach();
  // Drops it; lines written from now on go nowhere.
  static void Detach();
  // The logger, or null.
  static RefPtr<ILogger> Logger();
};

}  // namespace ns_log
