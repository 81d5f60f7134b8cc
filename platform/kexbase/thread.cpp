#include "kexbase/thread.h"

#include <system_error>

#include "kexbase/os.h"
#include "kexbase/task_queue.h"

namespace base {

Thread::Thread(std::string name)
    : name_(std::move(name)), queue_(std::make_shared<internal::TaskQueue>(std::thread::id())) {}

Thread::~Thread() { Stop(); }

std::shared_ptr<TaskRunner> Thread::task_runner() const { return queue_; }

bool Thread::Start() {
  if (started_) return false;
  try {
    thread_ = std::thread([queue = queue_, name = name_] {
      internal::SetCurrentThreadName(name);
      queue->Run();
    });
  } catch (const std::system_error&) {
    return false;
  }
  started_ = true;
  return true;
}

void Thread::Stop() {
  if (!started_) {
    started_ = true;
    queue_->Quit();
    queue_->Clear();
  }
  if (!thread_.joinable()) return;
  queue_->Drain();
  if (thread_.get_id() == std::this_thread::get_id()) {
    thread_.detach();
  } else {
    thread_.join();
  }
}

}  // namespace base
