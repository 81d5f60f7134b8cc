// One errand for a file, however many wait for its outcome.
#pragma once

#include <cstddef>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "imsdk/biz/callback.h"

namespace imsdk::account {

// Used on one sequence of tasks only.
template <class... Answer>
class OncePerFile {
 public:
  using Done = biz::IMCallback<Answer...>;
  // Runs the errand and calls its second argument once, at the end.
  using Errand = std::function<void(const std::string& name, Done done)>;

  // At most `at_once` errands run side by side.
  OncePerFile(std::size_t at_once, Errand errand) : at_once_(at_once), errand_(std::move(errand)) {}

  void Ask(const std::string& name, Done done) {
    auto& waiting = waiting_[name];
    waiting.push_back(std::move(done));
    if (waiting.size() > 1) return;
    queue_.push_back(name);
    Begin();
  }

 private:
  void Begin() {
    while (running_ < at_once_ && !queue_.empty()) {
      const std::string name = std::move(queue_.front());
      queue_.pop_front();
      ++running_;
      errand_(name, [this, name](const biz::ResultCode& result, const Answer&... answer) {
        --running_;
        auto waiting = waiting_.extract(name);
        for (const Done& done : waiting.mapped()) done(result, answer...);
        Begin();
      });
    }
  }

  const std::size_t at_once_;
  const Errand errand_;
  std::size_t running_ = 0;
  std::deque<std::string> queue_;
  std::map<std::string, std::vector<Done>> waiting_;
};

}  // namespace imsdk::account
