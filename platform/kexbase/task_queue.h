// The queue behind MessageLoop and Thread.
#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

#include "kexbase/task_runner.h"

namespace base::internal {

class TaskQueue final : public TaskRunner {
 public:
  // Tasks run on `thread` as far as anyone is told, until another one works the queue off.
  explicit TaskQueue(std::thread::id thread) : thread_(thread) {}

  bool PostTask(const Location& from, std::function<void()> task) override;
  bool PostDelayedTask(const Location& from, std::function<void()> task,
                       std::chrono::milliseconds delay) override;
  bool RunsTasksOnCurrentThread() const override;

  // Runs tasks until the queue ends.
  void Run() { Work(true); }

  // Runs tasks until none is due.
  void RunUntilIdle() { Work(false); }

  // Ends the queue after the running task.
  void Quit();

  // Refuses posts from now on, and ends the queue when what is due has run.
  void Drain();

  // Destroys what the ended queue still holds.
  void Clear();

 private:
  using Task = std::function<void()>;
  using Clock = std::chrono::steady_clock;
  enum class State { kOpen, kDraining, kEnded };

  void Work(bool wait);
  bool TakeDue(bool wait, std::vector<Task>* due);
  void MoveDelayedThatAreDue();
  void RunAndDestroy(Task* task);

  std::mutex mutex_;
  std::condition_variable changed_;
  std::vector<Task> ready_;
  std::multimap<Clock::time_point, Task> delayed_;  // equal keys keep the order of insertion
  std::atomic<State> state_{State::kOpen};          // changes under the mutex
  std::atomic<std::thread::id> thread_;
};

}  // namespace base::internal
