// A thread with a queue of tasks.
#pragma once

#include <memory>
#include <string>
#include <thread>

#include "kexbase/task_runner.h"

namespace base {

namespace internal {
class TaskQueue;
}

// Start and Stop are called by the owner, one at a time; task_runner() by anyone.
class Thread {
 public:
  // `name` (UTF-8) is what debuggers and system tools show; Linux cuts it to 15 bytes.
  explicit Thread(std::string name);

  // Stops the thread.
  ~Thread();

  Thread(const Thread&) = delete;
  Thread& operator=(const Thread&) = delete;

  // Starts the thread. False if it was started or stopped before, or if the system refuses another
  // thread.
  bool Start();

  // Runs every task posted before the call, refuses those posted after it, waits for the thread to
  // end. Delayed tasks that are not due are destroyed unrun, and so is everything in a thread that
  // was never started. Called from a task of this thread itself it does not wait: the thread ends
  // by itself after the tasks posted so far. A second call does nothing. Cannot be started again.
  void Stop();

  // The way to post to this thread. Never null, the same object each time; tasks posted before
  // Start wait for it. It may be kept for longer than the thread.
  std::shared_ptr<TaskRunner> task_runner() const;

  const std::string& name() const { return name_; }

 private:
  const std::string name_;
  const std::shared_ptr<internal::TaskQueue> queue_;
  std::thread thread_;
  bool started_ = false;
};

}  // namespace base
