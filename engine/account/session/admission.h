// How much an account's worker has still to do.
#pragma once

#include <algorithm>
#include <cstddef>
#include <memory>

#include "kexbase/lock.h"

namespace imsdk::account {

// What is open of an account: more is refused with `kEngineBusy`, so that a page that asks without
// waiting cannot fill the memory.
inline constexpr std::size_t kMostOpenRequests = 10'000;
inline constexpr std::size_t kMostRequestBytes = 64 * 1024 * 1024;

// Any thread.
class Admission : public std::enable_shared_from_this<Admission> {
 public:
  // Counts as open until its last holder lets go of it.
  using Ticket = std::shared_ptr<const void>;

  // Null when there is no room. Something of any size gets in when nothing else is open.
  Ticket Enter(std::size_t bytes) {
    {
      base::AutoLock hold(lock_);
      const bool room =
          requests_ == 0 || bytes <= kMostRequestBytes - std::min(bytes_, kMostRequestBytes);
      if (requests_ >= kMostOpenRequests || !room) return nullptr;
      ++requests_;
      bytes_ += bytes;
    }
    return {this, [self = shared_from_this(), bytes](const void*) { self->Leave(bytes); }};
  }

 private:
  void Leave(std::size_t bytes) {
    base::AutoLock hold(lock_);
    --requests_;
    bytes_ -= bytes;
  }

  base::Lock lock_;
  std::size_t requests_ = 0;
  std::size_t bytes_ = 0;
};

}  // namespace imsdk::account
