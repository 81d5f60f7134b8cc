#include "embedded/attempts.h"

#include <algorithm>
#include <utility>

#include "kexbase/growing_pause.h"

namespace imsdk::embedded {

namespace {

constexpr std::size_t kMostWaiting = 4;  // of one account
constexpr int kFree = 3;                 // wrong passwords that may be a slip of the hand
constexpr std::chrono::milliseconds kFirstPause{250};
constexpr std::chrono::milliseconds kLongestPause{2000};

}  // namespace

bool Attempts::Add(Attempt attempt) {
  std::deque<Attempt>& waiting = accounts_[attempt.account].waiting;
  if (waiting.size() >= kMostWaiting) return false;
  waiting.push_back(std::move(attempt));
  return true;
}

std::optional<Attempts::Attempt> Attempts::Take(Clock::time_point now) {
  const auto ready = [now](const auto& entry) {
    return !entry.second.waiting.empty() && entry.second.not_before <= now;
  };
  const auto after = accounts_.upper_bound(last_);
  auto next = std::find_if(after, accounts_.end(), ready);
  if (next == accounts_.end()) {
    next = std::find_if(accounts_.begin(), after, ready);
    if (next == after) return std::nullopt;
  }
  last_ = next->first;
  Attempt attempt = std::move(next->second.waiting.front());
  next->second.waiting.pop_front();
  return attempt;
}

std::vector<Attempts::Attempt> Attempts::TakeAll() {
  std::vector<Attempt> all;
  for (auto& [account, entry] : accounts_) {
    for (Attempt& attempt : entry.waiting) all.push_back(std::move(attempt));
    entry.waiting.clear();
  }
  return all;
}

std::optional<Attempts::Clock::time_point> Attempts::Next() const {
  std::optional<Clock::time_point> next;
  for (const auto& [account, entry] : accounts_) {
    if (!entry.waiting.empty()) next = std::min(next.value_or(entry.not_before), entry.not_before);
  }
  return next;
}

void Attempts::Note(std::int64_t account, bool good, Clock::time_point now) {
  Account& entry = accounts_[account];
  entry.wrong = good ? 0 : entry.wrong + 1;
  if (good && entry.waiting.empty()) {
    accounts_.erase(account);
    return;
  }
  entry.not_before = now + base::GrowingPause(entry.wrong, kFree, kFirstPause, kLongestPause);
}

}  // namespace imsdk::embedded
