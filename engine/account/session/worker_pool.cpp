#include "account/session/worker_pool.h"

#include <algorithm>

namespace imsdk::account {

namespace {

constexpr std::chrono::milliseconds kTimeToFinish{1000};

}  // namespace

WorkerPool::WorkerPool(std::size_t threads) : turns_(threads), first_(Make()) {}

void WorkerPool::Hurry() { patience_->EndAfter(kTimeToFinish); }

Worker WorkerPool::Make() {
  auto runner = turns_.NewRunner();
  auto stores = std::make_shared<OpenStores>(open_, runner);
  return {std::move(runner), std::move(stores), patience_};
}

Worker WorkerPool::For(const biz::IMUserID& user) {
  base::AutoLock hold(lock_);
  if (known_.size() >= sweep_at_) {
    // Names that somebody only tried.
    std::erase_if(known_, [](const auto& entry) { return entry.second.runner.expired(); });
    sweep_at_ = std::max<std::size_t>(64, 2 * known_.size());
  }
  Known& known = known_[user];
  Worker worker{known.runner.lock(), known.stores.lock(), patience_};
  if (!worker.runner) {
    worker = Make();
  } else if (!worker.stores) {
    worker.stores = std::make_shared<OpenStores>(open_, worker.runner);
  }
  known = {worker.runner, worker.stores};
  return worker;
}

}  // namespace imsdk::account
