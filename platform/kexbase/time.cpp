#include "kexbase/time.h"

#include <chrono>

namespace base {

namespace {

template <class Clock>
int64_t Microseconds() {
  const auto since = Clock::now().time_since_epoch();
  return std::chrono::duration_cast<std::chrono::microseconds>(since).count();
}

}  // namespace

TimeTicks TimeTicks::Now() { return TimeTicks(Microseconds<std::chrono::steady_clock>()); }

Time Time::Now() { return Time(Microseconds<std::chrono::system_clock>()); }

}  // namespace base
