#include "server/server_state.h"

namespace imsdk::host {

bool ViewList::Add(const std::shared_ptr<View>& view) {
  std::lock_guard hold(lock_);
  if (open_) views_.emplace(view.get(), view);
  return open_;
}

void ViewList::Remove(const View* view) {
  std::lock_guard hold(lock_);
  if (views_.erase(view) > 0 && views_.empty()) emptied_.notify_all();
}

void ViewList::CloseList() {
  std::lock_guard hold(lock_);
  open_ = false;
}

std::vector<std::shared_ptr<View>> ViewList::Snapshot() const {
  std::lock_guard hold(lock_);
  std::vector<std::shared_ptr<View>> views;
  views.reserve(views_.size());
  for (const auto& [key, weak] : views_) {
    if (auto view = weak.lock()) views.push_back(std::move(view));
  }
  return views;
}

std::size_t ViewList::size() const {
  std::lock_guard hold(lock_);
  return views_.size();
}

bool ViewList::WaitEmpty(std::chrono::steady_clock::time_point deadline) const {
  std::unique_lock hold(lock_);
  return emptied_.wait_until(hold, deadline, [this] { return views_.empty(); });
}

}  // namespace imsdk::host
