// A strand of the server as the task runner of a view.
#pragma once

#include <atomic>
#include <memory>
#include <mutex>
#include <optional>

#include "kexbase/task_runner.h"
#include "server/server_state.h"

namespace imsdk::host {

// Runs its tasks one at a time on whichever server thread is free. Bridges may hold it longer than
// the server lives; from `Close` on it refuses.
class StrandRunner final : public base::TaskRunner {
 public:
  explicit StrandRunner(Strand strand) : strand_(std::move(strand)) {}

  bool PostTask(const base::Location& from, std::function<void()> task) override;
  bool PostDelayedTask(const base::Location& from, std::function<void()> task,
                       std::chrono::milliseconds delay) override;
  bool RunsTasksOnCurrentThread() const override;

  // From now on tasks are dropped on the strand instead of run, those that are queued too: a long
  // queue holds up nobody's end. Any thread.
  void Drop() { *dropping_ = true; }
  // `Drop`, and refuses tasks from now on.
  void Close();

 private:
  mutable std::mutex lock_;
  std::optional<Strand> strand_;  // under lock_; empty once closed
  const std::shared_ptr<std::atomic<bool>> dropping_ = std::make_shared<std::atomic<bool>>(false);
};

}  // namespace imsdk::host
