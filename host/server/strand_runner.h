// A strand of the server as the task runner of a view.
#pragma once

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

  // Refuses tasks from now on. What is queued still runs unless the server ends first.
  void Close();

 private:
  mutable std::mutex lock_;
  std::optional<Strand> strand_;  // under lock_; empty once closed
};

}  // namespace imsdk::host
