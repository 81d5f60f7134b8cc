#include "server/strand_runner.h"

#include <boost/asio/post.hpp>
#include <boost/asio/steady_timer.hpp>

namespace imsdk::host {
namespace asio = boost::asio;
namespace {

void RunTask(const std::function<void()>& task) {
  try {
    task();
  } catch (...) {  // a task loses its own exception and nothing else
  }
}

}  // namespace

bool StrandRunner::PostTask(const base::Location&, std::function<void()> task) {
  std::lock_guard hold(lock_);
  if (!strand_) return false;
  asio::post(*strand_, [dropping = dropping_, task = std::move(task)] {
    if (!*dropping) RunTask(task);
  });
  return true;
}

bool StrandRunner::PostDelayedTask(const base::Location& from, std::function<void()> task,
                                   std::chrono::milliseconds delay) {
  if (delay.count() <= 0) return PostTask(from, std::move(task));
  std::lock_guard hold(lock_);
  if (!strand_) return false;
  auto timer = std::make_shared<asio::steady_timer>(*strand_, delay);
  timer->async_wait([timer, dropping = dropping_,
                     task = std::move(task)](const boost::system::error_code& failure) {
    if (!failure && !*dropping) RunTask(task);
  });
  return true;
}

bool StrandRunner::RunsTasksOnCurrentThread() const {
  std::lock_guard hold(lock_);
  return strand_ && strand_->running_in_this_thread();
}

void StrandRunner::Close() {
  Drop();
  std::lock_guard hold(lock_);
  strand_.reset();
}

}  // namespace imsdk::host
