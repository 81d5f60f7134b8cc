// Slows down who tries passwords.
#pragma once

#include <chrono>
#include <cstdint>
#include <map>

namespace imsdk::embedded {

// Counts what an account tried in vain, whatever tribe it was for. After a few tries it has to
// wait, twice as long after each further one, and a while later all is forgotten. Kept in memory: a
// restart takes longer than the wait. One thread.
class PasswordTries {
 public:
  using Clock = std::chrono::steady_clock;

  bool MayTry(std::int64_t account, Clock::time_point now);
  void Failed(std::int64_t account, Clock::time_point now);
  void Succeeded(std::int64_t account) { tries_.erase(account); }

 private:
  struct Tries {
    int failed = 0;
    Clock::time_point last{};
  };
  std::map<std::int64_t, Tries> tries_;
};

}  // namespace imsdk::embedded
