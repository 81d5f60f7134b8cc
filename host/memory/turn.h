// One at a time: work that takes much memory and a thread while it lasts.
#pragma once

#include <deque>
#include <functional>
#include <memory>
#include <mutex>

namespace imsdk::host {

// Gives passes in the order in which they were asked for, one at a time, so that what large frames
// take does not add up and a thread is left for everybody else. Any thread; lives longer than its
// passes.
class Turn {
 public:
  // The turn lasts as long as this does.
  using Pass = std::shared_ptr<void>;
  using Go = std::function<void(Pass)>;

  // `go` is called once it is its turn: before this returns, or on the thread of whoever lets the
  // pass go. It hands the work on rather than doing it.
  void Enter(Go go);
  // Drops who waits, and from now on everybody.
  void Close();

 private:
  Pass MakePass();
  void Leave();

  std::mutex lock_;
  std::deque<Go> waiting_;  // under lock_, as what follows
  bool taken_ = false;
  bool closed_ = false;
};

}  // namespace imsdk::host
