// Bridges without a library behind them, for tests of the server.
#pragma once

#include <atomic>
#include <functional>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "page/backend.h"

namespace imsdk::host {

// Makes bridges that know five methods:
//   "echo"    answers with the browser id it was called under and its arguments, as a list
//   "keep"    answers when `AnswerKept` is called, from a thread of its own
//   "notify"  raises the event args[1] with the payload args[2]
//   "flood"   raises args[0] events of args[1] characters each
//   "block"   holds up its thread until `Unblock` is called, and answers
class StubBackend final : public Backend {
 public:
  struct Kept {
    std::shared_ptr<base::TaskRunner> runner;
    std::function<void()> answer;
  };

  RefPtr<bridge::IIMSDKBridge> NewBridge() override;
  // "harbor" is known, "absent" is not, "slow" is never answered.
  void LogIn(const std::string& nick, std::function<void(LoginOutcome)> done) override;
  void Fetch(const std::string& path, std::function<void()> done) override;

  // Answers every kept call from a thread that is not the view's.
  void AnswerKept();
  std::size_t KeptCount();
  // The runner of the view whose call was kept first.
  std::shared_ptr<base::TaskRunner> KeptRunner();
  void Unblock();
  int blocked() const { return blocked_; }
  std::size_t SlowLogins();
  void DropSlowLogins();
  // The fetches that were asked for so far: their paths and what answers them.
  std::vector<std::pair<std::string, std::function<void()>>> TakeFetches();
  int bridges() const { return bridges_; }
  int bound() const { return bound_; }

 private:
  class Bridge;

  std::atomic<int> bridges_{0};
  std::atomic<int> bound_{0};
  std::atomic<int> blocked_{0};
  std::atomic<bool> open_{false};
  std::mutex lock_;
  std::vector<Kept> kept_;
  std::vector<std::function<void(LoginOutcome)>> slow_;
  std::vector<std::pair<std::string, std::function<void()>>> fetches_;
};

}  // namespace imsdk::host
