#include "embedded/password_tries.h"

#include "kexbase/growing_pause.h"

namespace imsdk::embedded {

namespace {

constexpr int kFree = 4;
constexpr std::chrono::seconds kFirstWait{1};
constexpr std::chrono::seconds kLongestWait{64};
constexpr std::chrono::minutes kForgotten{10};
constexpr std::size_t kMany = 1000;

}  // namespace

bool PasswordTries::MayTry(std::int64_t account, Clock::time_point now) {
  const auto tries = tries_.find(account);
  if (tries == tries_.end()) return true;
  const auto wait = base::GrowingPause(tries->second.failed, kFree, kFirstWait, kLongestWait);
  return now - tries->second.last >= wait;
}

void PasswordTries::Failed(std::int64_t account, Clock::time_point now) {
  const auto over = [&](const auto& tries) { return now - tries.second.last > kForgotten; };
  if (tries_.size() > kMany) std::erase_if(tries_, over);
  Tries& tries = tries_[account];
  if (now - tries.last > kForgotten) tries.failed = 0;
  ++tries.failed;
  tries.last = now;
}

}  // namespace imsdk::embedded
