#include "kexbase/task_queue.h"

#include <algorithm>

namespace base::internal {

bool TaskQueue::PostTask(const Location&, std::function<void()> task) {
  const std::lock_guard hold(mutex_);
  if (state_ != State::kOpen) return false;
  ready_.push_back(std::move(task));
  if (ready_.size() == 1) changed_.notify_one();
  return true;
}

bool TaskQueue::PostDelayedTask(const Location& from, std::function<void()> task,
                                std::chrono::milliseconds delay) {
  if (delay.count() <= 0) return PostTask(from, std::move(task));
  constexpr std::chrono::milliseconds kLongest = std::chrono::hours(24 * 365);
  const Clock::time_point due = Clock::now() + std::min(delay, kLongest);
  const std::lock_guard hold(mutex_);
  if (state_ != State::kOpen) return false;
  const auto added = delayed_.emplace(due, std::move(task));
  if (added == delayed_.begin()) changed_.notify_one();
  return true;
}

bool TaskQueue::RunsTasksOnCurrentThread() const {
  return thread_.load(std::memory_order_relaxed) == std::this_thread::get_id();
}

void TaskQueue::Quit() {
  const std::lock_guard hold(mutex_);
  state_ = State::kEnded;
  changed_.notify_one();
}

void TaskQueue::Drain() {
  const std::lock_guard hold(mutex_);
  if (state_ == State::kOpen) state_ = State::kDraining;
  changed_.notify_one();
}

void TaskQueue::Clear() {
  std::vector<Task> ready;
  std::multimap<Clock::time_point, Task> delayed;
  const std::lock_guard hold(mutex_);
  ready.swap(ready_);
  delayed.swap(delayed_);
}

void TaskQueue::Work(bool wait) {
  thread_.store(std::this_thread::get_id(), std::memory_order_relaxed);
  std::vector<Task> due;
  while (TakeDue(wait, &due)) {
    for (Task& task : due) {
      if (state_ == State::kEnded) break;
      RunAndDestroy(&task);
    }
    due.clear();
  }
  if (state_ != State::kEnded) return;
  Clear();
  // The system may give the next thread this one's id.
  thread_.store(std::thread::id(), std::memory_order_relaxed);
}

// Takes every task that is due, in order. False when there is nothing more to run.
bool TaskQueue::TakeDue(bool wait, std::vector<Task>* due) {
  std::unique_lock hold(mutex_);
  while (state_ != State::kEnded) {
    MoveDelayedThatAreDue();
    if (!ready_.empty()) {
      due->swap(ready_);
      return true;
    }
    if (state_ == State::kDraining) {
      state_ = State::kEnded;
    } else if (!wait) {
      return false;
    } else if (delayed_.empty()) {
      changed_.wait(hold);
    } else {
      changed_.wait_until(hold, Clock::time_point(delayed_.begin()->first));
    }
  }
  return false;
}

void TaskQueue::MoveDelayedThatAreDue() {
  if (delayed_.empty()) return;
  const auto end = delayed_.upper_bound(Clock::now());
  for (auto it = delayed_.begin(); it != end; ++it) ready_.push_back(std::move(it->second));
  delayed_.erase(delayed_.begin(), end);
}

void TaskQueue::RunAndDestroy(Task* task) {
  try {
    (*task)();
  } catch (...) {  // a task's failure is its own
  }
  *task = nullptr;
}

}  // namespace base::internal
