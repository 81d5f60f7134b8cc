#include "memory/turn.h"

#include <utility>

namespace imsdk::host {

Turn::Pass Turn::MakePass() {
  return {this, [](void* turn) { static_cast<Turn*>(turn)->Leave(); }};
}

void Turn::Enter(Go go) {
  {
    const std::lock_guard hold(lock_);
    if (closed_) return;
    if (std::exchange(taken_, true)) return waiting_.push_back(std::move(go));
  }
  go(MakePass());
}

void Turn::Leave() {
  Go next;
  {
    const std::lock_guard hold(lock_);
    taken_ = !waiting_.empty();
    if (!taken_) return;
    next = std::move(waiting_.front());
    waiting_.pop_front();
  }
  next(MakePass());
}

void Turn::Close() {
  std::deque<Go> dropped;  // destroyed outside the lock: it may hold the last of a view
  {
    const std::lock_guard hold(lock_);
    closed_ = true;
    dropped.swap(waiting_);
  }
}

}  // namespace imsdk::host
