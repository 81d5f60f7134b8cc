// The thread on which the client's services work through what they are asked.
#pragma once

#include <atomic>
#include <functional>
#include <string>

#include "imsdk/biz/user_id.h"
#include "kexbase/thread.h"

namespace imsdk::host {

// Takes few enough jobs to end soon and to hold little memory. Any thread, but for its owner's
// `Start` and `Stop`.
class Worker {
 public:
  static constexpr int kMostWaiting = 64;
  // Does the job when `problem` is good; else only tells it.
  using Job = std::function<void(const biz::ResultCode& problem)>;

  explicit Worker(std::string name) : thread_(std::move(name)) {}

  void Start() { thread_.Start(); }
  // Finishes the job that is under way, and fails those that wait and those that come later.
  void Stop();
  // Calls `job` once: behind the others on the worker's thread or, when too many wait or the worker
  // has stopped, with the problem before this returns.
  void Do(Job job);

 private:
  base::Thread thread_;
  std::atomic<int> waiting_{0};
  std::atomic<bool> stopped_{false};
};

}  // namespace imsdk::host
