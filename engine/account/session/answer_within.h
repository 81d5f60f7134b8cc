// Guards an operation of a link that may never answer.
#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <type_traits>
#include <utility>

#include "kexbase/task_runner.h"

namespace imsdk::account {

// A callback to give to the link. `done` is called once on `runner`: with the link's answer, or
// with `late` when there is none after `limit`. What comes after that is ignored. A runner that
// ends first drops `done` uncalled.
template <class... Args>
std::function<void(Args...)> AnswerWithin(const std::shared_ptr<base::TaskRunner>& runner,
                                          std::chrono::milliseconds limit,
                                          std::function<void(Args...)> done,
                                          std::type_identity_t<std::decay_t<Args>>... late) {
  const auto once = std::make_shared<std::function<void(Args...)>>(std::move(done));
  const auto settle = [once](auto&... args) {
    if (auto open = std::exchange(*once, nullptr)) open(args...);
  };
  runner->PostDelayedTask(
      FROM_HERE, [settle, late...] { settle(late...); }, limit);
  return [runner, settle](Args... args) {
    runner->PostTask(FROM_HERE, [settle, args...] { settle(args...); });
  };
}

}  // namespace imsdk::account
