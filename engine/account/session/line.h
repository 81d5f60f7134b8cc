// The account's session with its server, as far as its parts ask the server for something.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <type_traits>
#include <utility>

#include "account/session/answer_within.h"
#include "imsdk/biz/user_id.h"
#include "kexbase/callback.h"
#include "link/server_link.h"

namespace imsdk::account {

// Every request is answered once, on the account's worker: by the server, when its time is over, or
// when the link is lost. Used on the worker only.
class Line : public std::enable_shared_from_this<Line> {
 public:
  Line(std::shared_ptr<base::TaskRunner> runner, std::chrono::milliseconds limit)
      : runner_(std::move(runner)), limit_(limit) {}

  void Connect(std::shared_ptr<link::Session> session) { session_ = std::move(session); }
  // The session is gone. What is open fails with `why`; what is asked later, for want of a link.
  void Drop(const biz::ResultCode& why) {
    session_.reset();
    for (const auto& [number, fail] : std::exchange(open_, {})) fail(why);
  }
  // Null without a link.
  const std::shared_ptr<link::Session>& session() const { return session_; }

  // Calls `operation(session, callback)`; `done` gets what the callback gets.
  template <class... Results, class Operation>
  void Ask(
      Operation operation,
      std::type_identity_t<std::function<void(const biz::ResultCode&, const Results&...)>> done) {
    if (!session_) {
      return done({biz::kEngineNoLink, 0, L"the server is out of reach"}, Results{}...);
    }
    const std::uint64_t number = ++last_;
    open_[number] = [done](const biz::ResultCode& why) { done(why, Results{}...); };
    std::function<void(const biz::ResultCode&, const Results&...)> answered =
        base::BindWeak(weak_from_this(),
                       [number, done = std::move(done)](Line& line, const biz::ResultCode& result,
                                                        const Results&... results) {
                         if (line.open_.erase(number) == 1) done(result, results...);
                       });
    const auto session = session_;  // an operation that fails at once may drop it
    operation(*session, AnswerWithin(runner_, limit_, std::move(answered),
                                     biz::ResultCode{biz::kEngineTimeout, 0,
                                                     L"the server did not answer in time"},
                                     Results{}...));
  }

 private:
  const std::shared_ptr<base::TaskRunner> runner_;
  const std::chrono::milliseconds limit_;
  std::shared_ptr<link::Session> session_;
  std::uint64_t last_ = 0;
  std::map<std::uint64_t, std::function<void(const biz::ResultCode&)>> open_;
};

}  // namespace imsdk::account
