#include "kexbase/message_loop.h"

#include "kexbase/task_queue.h"

namespace base {

MessageLoop::MessageLoop()
    : queue_(std::make_shared<internal::TaskQueue>(std::this_thread::get_id())) {}

MessageLoop::~MessageLoop() {
  queue_->Quit();
  queue_->Clear();
}

std::shared_ptr<TaskRunner> MessageLoop::task_runner() const { return queue_; }

void MessageLoop::Run() { queue_->Run(); }

void MessageLoop::RunUntilIdle() { queue_->RunUntilIdle(); }

void MessageLoop::Quit() { queue_->Quit(); }

}  // namespace base
