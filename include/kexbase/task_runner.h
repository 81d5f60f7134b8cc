// Where work is handed to a thread: the view's thread, an engine thread, a helper thread.
#pragma once

#include <chrono>
#include <functional>
#include <memory>

#include "kexbase/location.h"

namespace base {

// Runs closures one after another on one thread. Held by std::shared_ptr; it may outlive the loop
// it feeds, every post is then refused. A host with a loop of its own implements this interface.
//
// Threads: every function may be called from any thread, also from inside a running task.
// Errors: nothing throws out of a runner. A task that throws loses its exception and nothing else;
// the tasks after it run.
class TaskRunner {
 public:
  virtual ~TaskRunner() = default;

  TaskRunner(const TaskRunner&) = delete;
  TaskRunner& operator=(const TaskRunner&) = delete;

  // Queues `task` behind everything queued before it. False when the loop has ended: the task will
  // not run and is destroyed before the call returns, on the caller's thread. True means that it
  // was queued; it still does not run when the loop ends first, it is then destroyed with the loop.
  virtual bool PostTask(const Location& from, std::function<void()> task) = 0;

  // As PostTask, but not before `delay` has passed. A delay of zero or less is PostTask. Tasks with
  // the same due time run in the order in which they were posted.
  virtual bool PostDelayedTask(const Location& from, std::function<void()> task,
                               std::chrono::milliseconds delay) = 0;

  // True on the thread on which the tasks of this runner run.
  virtual bool RunsTasksOnCurrentThread() const = 0;

 protected:
  TaskRunner() = default;
};

}  // namespace base
