// The two clocks.
#pragma once

#include <compare>
#include <cstdint>

namespace base {

// A point on the monotonic clock: for measuring how long something takes. Its zero means nothing,
// and it does not change with the calendar. Any thread; never fails; costs tens of nanoseconds.
class TimeTicks {
 public:
  constexpr TimeTicks() = default;
  static TimeTicks Now();

  constexpr int64_t ToMilliseconds() const { return microseconds_ / 1000; }

  friend constexpr bool operator==(TimeTicks a, TimeTicks b) {
    return a.microseconds_ == b.microseconds_;
  }
  friend constexpr auto operator<=>(TimeTicks a, TimeTicks b) {
    return a.microseconds_ <=> b.microseconds_;
  }

 private:
  constexpr explicit TimeTicks(int64_t microseconds) : microseconds_(microseconds) {}

  int64_t microseconds_ = 0;
};

// A point on the calendar: counted from 1970-01-01 00:00:00 UTC without leap seconds. Jumps when
// the machine's clock is set. Any thread; never fails; costs tens of nanoseconds.
class Time {
 public:
  constexpr Time() = default;
  static Time Now();

  constexpr int64_t ToMilliseconds() const { return microseconds_ / 1000; }

  friend constexpr bool operator==(Time a, Time b) { return a.microseconds_ == b.microseconds_; }
  friend constexpr auto operator<=>(Time a, Time b) { return a.microseconds_ <=> b.microseconds_; }

 private:
  constexpr explicit Time(int64_t microseconds) : microseconds_(microseconds) {}

  int64_t microseconds_ = 0;
};

}  // namespace base
