#include "account/session/worker_pool.h"

#include <algorithm>
#include <stdexcept>

namespace imsdk::account {

namespace {

constexpr std::chrono::milliseconds kTimeToFinish{1000};

}  // namespace

WorkerPool::WorkerPool(std::size_t threads) : turns_(threads), first_(Make()) {
  if (!aside_.Start()) throw std::runtime_error("the system gives no threads");
}

void WorkerPool::Hurry() { patience_->EndAfter(kTimeToFinish); }

void WorkerPool::Stop() {
  // What it has done goes on among the accounts.
  aside_.Stop();
  turns_.Stop();
}

Worker WorkerPool::Make() {
  auto runner = turns_.NewRunner();
  auto stores = std::make_shared<OpenStores>(open_, runner);
  return {std::move(runner), std::move(stores), patience_, aside_.task_runner()};
}

Worker WorkerPool::For(const biz::IMUserID& user) {
  base::AutoLock hold(lock_);
  if (known_.size() >= sweep_at_) {
    // Names that somebody only tried.
    std::erase_if(known_, [](const auto& entry) { return entry.second.runner.expired(); });
    sweep_at_ = std::max<std::size_t>(64, 2 * known_.size());
  }
  Known& known = known_[user];
  Worker worker{known.runner.lock(), known.stores.lock(), patience_, aside_.task_runner()};
  if (!worker.runner) {
    worker = Make();
  } else if (!worker.stores) {
    worker.stores = std::make_shared<OpenStores>(open_, worker.runner);
  }
  known = {worker.runner, worker.stores};
  return worker;
}

}  // namespace imsdk::account
