// Many sequences of tasks on a few threads, in turns.
#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <vector>

#include "kexbase/task_runner.h"
#include "kexbase/thread.h"

namespace imsdk::account {

// Each runner is a sequence, as one thread would be: its tasks run one after another, each seeing
// what the one before it did. But it belongs to no thread: whichever is free takes the runner that
// has waited longest and gives it a short turn. So a long task holds up its own sequence and no
// other, and a long queue waits behind everybody's short ones.
class Turns {
 public:
  // Throws `std::runtime_error` when the system gives no threads.
  explicit Turns(std::size_t threads);
  ~Turns() { Stop(); }
  Turns(const Turns&) = delete;
  Turns& operator=(const Turns&) = delete;

  // A new sequence. It may outlive this; posts are then refused. Any thread.
  std::shared_ptr<base::TaskRunner> NewRunner();

  // Runs what was posted before the call, refuses what is posted later, ends the threads. Delayed
  // tasks that are not due are destroyed unrun. Not for a task of these threads.
  void Stop();

 private:
  class Runner;
  // What the runners and the threads share.
  struct Shared {
    std::mutex lock;
    std::condition_variable changed;
    std::deque<std::shared_ptr<Runner>> ready;
    std::atomic<bool> stopping{false};
    bool ended = false;  // nobody runs anything any more
    // For delayed tasks, which it hands to their runners.
    base::Thread timer{"ImTimer"};

    void Add(std::shared_ptr<Runner> runner);
    void Work();
  };

  const std::shared_ptr<Shared> shared_ = std::make_shared<Shared>();
  std::vector<std::unique_ptr<base::Thread>> threads_;
};

}  // namespace imsdk::account
