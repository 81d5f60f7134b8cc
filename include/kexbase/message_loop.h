// A queue of tasks that the thread which calls Run works off.
#pragma once

#include <memory>

#include "kexbase/task_runner.h"

namespace base {

namespace internal {
class TaskQueue;
}

// Belongs to the thread that constructed it, until another thread calls Run or RunUntilIdle: that
// one then becomes the loop's thread. Only one thread at a time may run a loop, and a task must not
// call Run or RunUntilIdle of the loop that runs it.
//
// A loop ends once, by Quit or by its destruction. From then on posts are refused, and tasks that
// have not started are destroyed unrun: on the loop's thread as Run returns, otherwise in the
// destructor.
class MessageLoop {
 public:
  MessageLoop();
  ~MessageLoop();

  MessageLoop(const MessageLoop&) = delete;
  MessageLoop& operator=(const MessageLoop&) = delete;

  // The way to post to this loop. Never null, the same object each time; it may be kept for longer
  // than the loop.
  std::shared_ptr<TaskRunner> task_runner() const;

  // Runs tasks as they come and waits between them. Returns after Quit; at once if the loop has
  // ended already.
  void Run();

  // Runs everything that is due, including what these tasks post, and returns when nothing is due.
  // Delayed tasks that are not due stay queued.
  void RunUntilIdle();

  // Ends the loop after the task that is running. Any thread; a second call does nothing.
  void Quit();

 private:
  const std::shared_ptr<internal::TaskQueue> queue_;
};

}  // namespace base
