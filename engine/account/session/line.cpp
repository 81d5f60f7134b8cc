#include "account/session/line.h"

#include <algorithm>

namespace imsdk::account {

void Line::Connect(const link::Connected& connected) {
  session_ = connected.session;
  base::AutoLock hold(lock_);
  capabilities_ = connected.capabilities;
}

void Line::Drop(const biz::ResultCode& why) {
  session_.reset();
  FailAll(why);
}

void Line::Close(std::function<void()> done) {
  closed_ = true;
  FailAll(NotLoggedIn());
  if (!session_) return done();
  // Whatever the server says, the account is logged out here.
  Begin(limits_.logout, link::Logout{},
        [line = weak_from_this(), done = std::move(done)](const auto&, const auto&) {
          if (const auto here = line.lock()) here->session_.reset();
          done();
        });
  // The task keeps the line until then, however soon everybody else lets go of it.
  runner_->PostDelayedTask(
      FROM_HERE, [self = shared_from_this()] {}, limits_.logout + std::chrono::milliseconds{1000});
}

std::uint64_t Line::Add(std::chrono::milliseconds limit, Fail fail) {
  const std::uint64_t number = ++last_;
  const auto deadline = Clock::now() + limit;
  open_.emplace(number, Open{std::move(fail), limit, deadline});
  deadlines_.emplace(deadline, number);
  Wait();
  return number;
}

bool Line::Remove(std::uint64_t number) {
  const auto entry = open_.find(number);
  if (entry == open_.end()) return false;
  deadlines_.erase({entry->second.deadline, number});
  open_.erase(entry);
  return true;
}

void Line::Prolong(std::uint64_t number) {
  const auto entry = open_.find(number);
  if (entry == open_.end()) return;
  deadlines_.erase({entry->second.deadline, number});
  entry->second.deadline = Clock::now() + entry->second.limit;
  deadlines_.emplace(entry->second.deadline, number);
}

void Line::Wait() {
  if (deadlines_.empty() || deadlines_.begin()->first >= waits_until_) return;
  // One task waits for the first deadline, however many operations are open.
  waits_until_ = deadlines_.begin()->first;
  const auto left = std::chrono::ceil<std::chrono::milliseconds>(waits_until_ - Clock::now());
  runner_->PostDelayedTask(FROM_HERE,
                           base::BindWeak(weak_from_this(),
                                          [until = waits_until_](Line& line) {
                                            if (line.waits_until_ == until) line.CheckDeadlines();
                                          }),
                           std::max(left, std::chrono::milliseconds{1}));
}

void Line::CheckDeadlines() {
  waits_until_ = Clock::time_point::max();
  const auto now = Clock::now();
  while (!deadlines_.empty() && deadlines_.begin()->first <= now) {
    const std::uint64_t number = deadlines_.begin()->second;
    const Fail fail = std::move(open_.at(number).fail);
    Remove(number);
    fail({biz::kEngineTimeout, 0, L"the server did not answer in time"});
  }
  Wait();
}

void Line::TakeTurns() {
  while (!turns_.empty() && session_ && at_once_ < kMostAtOnce) {
    const Turn next = std::move(turns_.front());
    turns_.pop_front();
    ++at_once_;
    next.begin();
  }
}

void Line::FailAll(const biz::ResultCode& why) {
  deadlines_.clear();
  const std::deque<Turn> turns = std::exchange(turns_, {});
  for (const auto& [number, open] : std::exchange(open_, {})) open.fail(why);
  for (const Turn& turn : turns) turn.fail(why);
}

}  // namespace imsdk::account
