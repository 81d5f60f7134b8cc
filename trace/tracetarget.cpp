#include "trace/tracetarget.h"

#include "kexbase/lock.h"
#include "kexcore/kexcom.h"

namespace ns_log {
namespace {

base::Lock g_lock;
RefPtr<ILogger> g_logger;  // under g_lock

void Set(RefPtr<ILogger> logger) {
  // Parameters end after locals, so the old logger is released outside the lock.
  base::AutoLock hold(g_lock);
  std::swap(g_logger, logger);
}

}  // namespace

void TraceTarget::Attach() {
  const RefPtr<ILogService> service = kexcore::GetService<ILogService>();
  Set(service ? RefPtr<ILogger>::Adopt(service->GetLogger("imsdk")) : nullptr);
}

void TraceTarget::Detach() { Set(nullptr); }

RefPtr<ILogger> TraceTarget::Logger() {
  base::AutoLock hold(g_lock);
  return g_logger;
}

}  // namespace ns_log
