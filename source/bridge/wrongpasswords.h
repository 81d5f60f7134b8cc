// Slows a view down that tries passwords.
#pragma once

#include <chrono>

#include "imsdk/biz/user_id.h"
#include "kexbase/growing_pause.h"

namespace imsdk::bridge {

// Counts what a view tried in vain, whatever account it was for, so that it gains nothing by going
// from one account to the next. A good login in between takes nothing back: who tries may have an
// account of its own. View's thread.
class WrongPasswords {
 public:
  using Clock = std::chrono::steady_clock;

  // How long the view's next password has to wait.
  std::chrono::milliseconds Pause(Clock::time_point now) const {
    const auto pause = base::GrowingPause(count_, kFree, kFirstPause, kLongestPause);
    const auto over = std::chrono::ceil<std::chrono::milliseconds>(now - last_);
    return std::max(pause - over, std::chrono::milliseconds::zero());
  }
  // Why a login by password failed; an account that is not there was a try as well.
  void Note(std::int32_t code, Clock::time_point now) {
    if (code != biz::kEngineWrongPassword && code != biz::kEngineUnknownUser) return;
    count_ = now - last_ > kForgotten ? 1 : count_ + 1;
    last_ = now;
  }

 private:
  static constexpr int kFree = 3;  // may be slips of the hand
  static constexpr std::chrono::milliseconds kFirstPause{250};
  static constexpr std::chrono::milliseconds kLongestPause{2000};
  static constexpr std::chrono::minutes kForgotten{1};

  int count_ = 0;
  Clock::time_point last_{};
};

}  // namespace imsdk::bridge
