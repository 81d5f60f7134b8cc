// The few threads on which all accounts of the engine live.
#pragma once

#include <cstddef>
#include <memory>
#include <vector>

#include "imsdk/biz/user_id.h"
#include "kexbase/thread.h"

namespace imsdk::account {

class OpenStores;

// One thread of the pool. An account stays on its worker, so that its work is in sequence without
// a lock; so do the database connections of the worker's accounts.
struct Worker {
  std::shared_ptr<base::TaskRunner> runner;
  std::shared_ptr<OpenStores> stores;
};

class WorkerPool {
 public:
  // Throws `std::runtime_error` when the system gives no threads.
  explicit WorkerPool(std::size_t threads);
  ~WorkerPool();

  // Runs what was posted before the call and ends the threads.
  void Stop();

  // The worker of this account, the same one each time.
  const Worker& For(const biz::IMUserID& user) const;
  const Worker& First() const { return workers_.front(); }

 private:
  std::vector<std::unique_ptr<base::Thread>> threads_;
  std::vector<Worker> workers_;
};

}  // namespace imsdk::account
