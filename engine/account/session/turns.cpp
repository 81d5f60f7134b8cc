#include "account/session/turns.h"

#include <stdexcept>
#include <string>
#include <thread>
#include <utility>

#include "kexbase/callback.h"

namespace imsdk::account {

namespace {

// A turn ends with the first task after this time.
constexpr std::chrono::milliseconds kTurn{5};

}  // namespace

class Turns::Runner final : public base::TaskRunner, public std::enable_shared_from_this<Runner> {
 public:
  explicit Runner(std::weak_ptr<Shared> shared) : shared_(std::move(shared)) {}

  bool PostTask(const base::Location&, std::function<void()> task) override {
    const auto shared = shared_.lock();
    if (!shared) return false;
    {
      const std::lock_guard hold(lock_);
      if (shared->stopping) return false;
      tasks_.push_back(std::move(task));
      if (std::exchange(waits_, true)) return true;
    }
    shared->Add(shared_from_this());
    return true;
  }

  bool PostDelayedTask(const base::Location& from, std::function<void()> task,
                       std::chrono::milliseconds delay) override {
    if (delay.count() <= 0) return PostTask(from, std::move(task));
    const auto shared = shared_.lock();
    if (!shared) return false;
    // The runner lives as long as somebody waits for it.
    return shared->timer.task_runner()->PostDelayedTask(
        from,
        [self = shared_from_this(), from, task = std::move(task)]() mutable {
          self->PostTask(from, std::move(task));
        },
        delay);
  }

  bool RunsTasksOnCurrentThread() const override {
    return thread_.load(std::memory_order_relaxed) == std::this_thread::get_id();
  }

  // Runs some tasks on this thread. True when there are more.
  bool TakeTurn() {
    thread_.store(std::this_thread::get_id(), std::memory_order_relaxed);
    const auto end = std::chrono::steady_clock::now() + kTurn;
    bool more = true;
    do {
      std::function<void()> task;
      {
        const std::lock_guard hold(lock_);
        task = std::move(tasks_.front());
        tasks_.pop_front();
      }
      try {
        task();
      } catch (...) {  // a task's failure is its own
      }
      task = nullptr;  // what it held goes before the next one begins
      const std::lock_guard hold(lock_);
      more = waits_ = !tasks_.empty();
      if (!more) thread_.store({}, std::memory_order_relaxed);
    } while (more && std::chrono::steady_clock::now() < end);
    if (more) thread_.store({}, std::memory_order_relaxed);
    return more;
  }

  // Destroys what nobody runs any more; tasks may hold the runner.
  void Clear() {
    std::deque<std::function<void()>> tasks;  // destroyed without the lock
    const std::lock_guard hold(lock_);
    tasks.swap(tasks_);
  }

 private:
  const std::weak_ptr<Shared> shared_;
  std::mutex lock_;
  std::deque<std::function<void()>> tasks_;
  bool waits_ = false;  // for its turn, or has it
  std::atomic<std::thread::id> thread_;
};

void Turns::Shared::Add(std::shared_ptr<Runner> runner) {
  {
    const std::lock_guard hold(lock);
    if (!ended) {
      ready.push_back(std::move(runner));
      changed.notify_one();
      return;
    }
  }
  runner->Clear();
}

void Turns::Shared::Work() {
  while (true) {
    std::shared_ptr<Runner> runner;
    {
      std::unique_lock hold(lock);
      changed.wait(hold, [this] { return stopping || !ready.empty(); });
      if (ready.empty()) return;
      runner = std::move(ready.front());
      ready.pop_front();
    }
    if (runner->TakeTurn()) Add(std::move(runner));
  }
}

Turns::Turns(std::size_t threads) {
  bool started = shared_->timer.Start();
  for (std::size_t i = 0; i < threads; ++i) {
    threads_.push_back(std::make_unique<base::Thread>("ImAccounts" + std::to_string(i)));
    started = threads_.back()->Start() && started;
    threads_.back()->task_runner()->PostTask(FROM_HERE,
                                             [shared = shared_.get()] { shared->Work(); });
  }
  if (started) return;
  Stop();
  throw std::runtime_error("the system gives no threads");
}

std::shared_ptr<base::TaskRunner> Turns::NewRunner() { return std::make_shared<Runner>(shared_); }

void Turns::Stop() {
  {
    const std::lock_guard hold(shared_->lock);
    shared_->stopping = true;
  }
  shared_->changed.notify_all();
  shared_->timer.Stop();
  for (const auto& thread : threads_) thread->Stop();
  std::deque<std::shared_ptr<Runner>> late;
  {
    const std::lock_guard hold(shared_->lock);
    shared_->ended = true;
    late.swap(shared_->ready);
  }
  for (const auto& runner : late) runner->Clear();
}

}  // namespace imsdk::account
