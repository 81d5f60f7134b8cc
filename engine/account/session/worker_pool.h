// The few threads on which all accounts of the engine live.
#pragma once

#include <atomic>
#include <chrono>
#include <cstddef>
#include <memory>
#include <unordered_map>

#include "account/session/turns.h"
#include "account/store/open_stores.h"
#include "imsdk/biz/user_id.h"
#include "kexbase/lock.h"
#include "kexbase/thread.h"

namespace imsdk::account {

// How long the engine still has when it stops. Any thread.
class Patience {
 public:
  using Clock = std::chrono::steady_clock;

  void EndAfter(std::chrono::milliseconds left) { end_ = (Clock::now() + left).time_since_epoch(); }
  // What is not begun by now is not begun any more.
  bool over() const { return Clock::now().time_since_epoch() >= end_.load(); }

 private:
  std::atomic<Clock::duration> end_{Clock::duration::max()};
};

// Where one account works: a sequence of its own, without locks, and the bookkeeping of the
// database connection that it may have open.
struct Worker {
  std::shared_ptr<base::TaskRunner> runner;
  std::shared_ptr<OpenStores> stores;
  std::shared_ptr<const Patience> patience;
  // For what goes over a large file from one end to the other and touches nothing of the account.
  std::shared_ptr<base::TaskRunner> aside;
};

class WorkerPool {
 public:
  // Throws `std::runtime_error` when the system gives no threads.
  explicit WorkerPool(std::size_t threads);

  // Begins the end: what is posted already has a second to be done.
  void Hurry();
  // Runs what was posted before the call and ends the threads. With `Hurry` before it, two seconds
  // at most.
  void Stop();

  // The worker of this account, the same sequence as long as somebody holds it. Any thread.
  Worker For(const biz::IMUserID& user);
  // One that belongs to no account.
  const Worker& First() const { return first_; }

 private:
  Worker Make();

  base::Thread aside_{"ImLargeFiles"};  // of all accounts, one file after another
  Turns turns_;
  const std::shared_ptr<OpenList> open_ = std::make_shared<OpenList>();
  const std::shared_ptr<Patience> patience_ = std::make_shared<Patience>();
  const Worker first_;
  base::Lock lock_;
  struct Known {
    std::weak_ptr<base::TaskRunner> runner;
    std::weak_ptr<OpenStores> stores;
  };
  std::unordered_map<biz::IMUserID, Known> known_;
  std::size_t sweep_at_ = 64;
};

}  // namespace imsdk::account
