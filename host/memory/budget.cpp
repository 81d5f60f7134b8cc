#include "memory/budget.h"

namespace imsdk::host {

std::size_t MemoryBudget::used() const {
  const std::lock_guard hold(lock_);
  return used_;
}

bool MemoryBudget::Take(std::size_t bytes, std::size_t held) {
  const std::lock_guard hold(lock_);
  if (bytes == 0) return true;
  if (bytes > limit_ - used_ || held + bytes > limit_ - used_ - bytes) return false;
  used_ += bytes;
  return true;
}

void MemoryBudget::Give(std::size_t bytes) {
  const std::lock_guard hold(lock_);
  used_ -= bytes;
}

bool MemoryShare::Take(std::size_t bytes) {
  if (!budget_->Take(bytes, held_)) return false;
  held_ += bytes;
  return true;
}

void MemoryShare::Give(std::size_t bytes) {
  budget_->Give(bytes);
  held_ -= bytes;
}

}  // namespace imsdk::host
