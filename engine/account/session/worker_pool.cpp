#include "account/session/worker_pool.h"

#include <stdexcept>

#include "account/store/open_stores.h"

namespace imsdk::account {

WorkerPool::WorkerPool(std::size_t threads) {
  for (std::size_t i = 0; i < threads; ++i) {
    threads_.push_back(std::make_unique<base::Thread>("ImAccounts" + std::to_string(i)));
    if (!threads_.back()->Start()) throw std::runtime_error("the system gives no threads");
    workers_.push_back({threads_.back()->task_runner(), std::make_shared<OpenStores>()});
  }
}

WorkerPool::~WorkerPool() { Stop(); }

void WorkerPool::Stop() {
  for (const auto& thread : threads_) thread->Stop();
}

const Worker& WorkerPool::For(const biz::IMUserID& user) const {
  return workers_[std::hash<biz::IMUserID>{}(user) % workers_.size()];
}

}  // namespace imsdk::account
