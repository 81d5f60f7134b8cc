// How much memory the host may hold for its pages, all views together.
#pragma once

#include <cstddef>
#include <memory>
#include <mutex>
#include <utility>

namespace imsdk::host {

// One bound for whatever pages make the host hold: frames that are being received or wait to be
// read, calls without an answer, the views themselves. Any thread.
//
// Nobody may hold more than is left for the others. So one view alone gets half of the whole,
// three get a quarter each, and however greedy the views are, a newcomer finds as much free as the
// greediest of them holds.
class MemoryBudget {
 public:
  // `limit` in bytes.
  explicit MemoryBudget(std::size_t limit) : limit_(limit) {}
  MemoryBudget(const MemoryBudget&) = delete;
  MemoryBudget& operator=(const MemoryBudget&) = delete;

  std::size_t used() const;

 private:
  friend class MemoryShare;
  bool Take(std::size_t bytes, std::size_t held);
  void Give(std::size_t bytes);

  const std::size_t limit_;
  mutable std::mutex lock_;
  std::size_t used_ = 0;  // under lock_
};

// What one view holds. One thread at a time; the end gives everything back.
class MemoryShare {
 public:
  explicit MemoryShare(std::shared_ptr<MemoryBudget> budget) : budget_(std::move(budget)) {}
  MemoryShare(const MemoryShare&) = delete;
  MemoryShare& operator=(const MemoryShare&) = delete;
  ~MemoryShare() { budget_->Give(held_); }

  // False when that would be more than is left for the others; nothing changes then.
  bool Take(std::size_t bytes);
  // Gives back what was taken before.
  void Give(std::size_t bytes);
  std::size_t held() const { return held_; }

 private:
  const std::shared_ptr<MemoryBudget> budget_;
  std::size_t held_ = 0;
};

}  // namespace imsdk::host
