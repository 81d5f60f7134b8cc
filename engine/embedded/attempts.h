// Whose password is checked next.
#pragma once

#include <chrono>
#include <cstdint>
#include <deque>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "link/server_link.h"

namespace imsdk::embedded {

// Checking a password is slow on purpose. Accounts take turns, so that a flood of attempts for one
// of them costs the others one check each; and after some wrong ones in a row an account's next
// check waits longer and longer. Nobody is shut out: whoever knows the password gets in when its
// turn comes, and a token needs no check. Used on one sequence of tasks.
class Attempts {
 public:
  using Clock = std::chrono::steady_clock;
  struct Attempt {
    std::int64_t account = 0;
    biz::IMUserID user{};
    std::string hash{};
    std::wstring password{};
    link::LoginCallback done{};
  };

  // False when too many of the account wait.
  bool Add(Attempt attempt);
  // The one whose turn it is; nothing when all that wait have to wait longer.
  std::optional<Attempt> Take(Clock::time_point now);
  // Whoever waits, in no order.
  std::vector<Attempt> TakeAll();
  // When somebody who waits may go; nothing when nobody waits.
  std::optional<Clock::time_point> Next() const;
  void Note(std::int64_t account, bool good, Clock::time_point now);

 private:
  struct Account {
    std::deque<Attempt> waiting{};
    int wrong = 0;  // in a row
    Clock::time_point not_before{};
  };
  std::map<std::int64_t, Account> accounts_;
  std::int64_t last_ = 0;  // whose turn was last
};

}  // namespace imsdk::embedded
