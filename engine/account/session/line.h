// The account's session with its server: the one way of everything that is asked of it.
#pragma once

#include <chrono>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <set>
#include <utility>

#include "account/session/capabilities.h"
#include "imsdk/biz/user_id.h"
#include "kexbase/callback.h"
#include "kexbase/lock.h"
#include "kexbase/task_runner.h"
#include "link/server_link.h"

namespace imsdk::account {

template <class Reply>
using Replied = std::function<void(const biz::ResultCode&, const Reply&)>;

// Every operation is answered once, on the account's worker: by the server, when its time is over,
// when the link is lost, or at once when there is no link, the server cannot do it, or the account
// is logged out. Used on the worker only, but for `Can`.
class Line : public std::enable_shared_from_this<Line> {
 public:
  struct Limits {
    std::chrono::milliseconds request;
    std::chrono::milliseconds send;
    std::chrono::milliseconds transfer;  // without a byte that crosses
    std::chrono::milliseconds logout;
  };

  Line(std::shared_ptr<base::TaskRunner> runner, Limits limits)
      : runner_(std::move(runner)), limits_(limits) {}

  void Connect(const link::Connected& connected);
  // The session is gone. What is open fails with `why`; what is asked later, for want of a link.
  void Drop(const biz::ResultCode& why);
  // The account is logged out: what is open and what is asked from now on fails. `done` runs when
  // the server has answered or its time is over.
  void Close(std::function<void()> done);
  bool connected() const { return session_ != nullptr; }

  // Whether the server of the latest session can do this; says so when it cannot. Any thread.
  template <class Operation>
  biz::ResultCode Can() const {
    base::AutoLock hold(lock_);
    return Missing<Operation>(capabilities_);
  }

  template <class Operation>
  void Ask(Operation operation, Replied<typename Operation::Reply> done) {
    using Reply = typename Operation::Reply;
    if (closed_) return done(NotLoggedIn(), Reply{});
    if (!session_) return done({biz::kEngineNoLink, 0, L"the server is out of reach"}, Reply{});
    if (const auto why = Can<Operation>(); !why.ok()) return done(why, Reply{});
    if constexpr (kHasBoundOfItsOwn<Operation>) {
      Begin(LimitOf<Operation>(), std::move(operation), std::move(done));
    } else {
      // Its time begins with its turn.
      auto held = std::make_shared<Operation>(std::move(operation));
      turns_.push_back({[this, held, done] {
                          Begin(LimitOf<Operation>(), std::move(*held),
                                [this, done](const biz::ResultCode& result, const Reply& reply) {
                                  --at_once_;
                                  done(result, reply);
                                  TakeTurns();
                                });
                        },
                        [done](const biz::ResultCode& why) { done(why, Reply{}); }});
      TakeTurns();
    }
  }

 private:
  using Clock = std::chrono::steady_clock;
  using Fail = std::function<void(const biz::ResultCode&)>;
  // What waits, so that an account that asks much leaves the server time for others.
  struct Turn {
    std::function<void()> begin;
    Fail fail;
  };
  static constexpr int kMostAtOnce = 16;
  struct Open {
    Fail fail;
    std::chrono::milliseconds limit;
    Clock::time_point deadline;
  };

  template <class Operation>
  static constexpr bool kTransfers =
      std::is_same_v<Operation, link::Upload> || std::is_same_v<Operation, link::Download>;
  // Whoever asks these asks only so many at once.
  template <class Operation>
  static constexpr bool kHasBoundOfItsOwn =
      kTransfers<Operation> || std::is_same_v<Operation, link::Deliver> ||
      std::is_same_v<Operation, link::SendTyping> || std::is_same_v<Operation, link::Logout>;
  template <class Operation>
  std::chrono::milliseconds LimitOf() const {
    if (std::is_same_v<Operation, link::Deliver>) return limits_.send;
    return kTransfers<Operation> ? limits_.transfer : limits_.request;
  }

  template <class Operation>
  void Begin(std::chrono::milliseconds limit, Operation operation,
             Replied<typename Operation::Reply> done) {
    using Reply = typename Operation::Reply;
    const std::uint64_t number =
        Add(limit, [done](const biz::ResultCode& why) { done(why, Reply{}); });
    if constexpr (kTransfers<Operation>) {
      operation.progress = [line = weak_from_this(), runner = runner_, number,
                            told = std::move(operation.progress)](std::uint64_t bytes) {
        if (told) told(bytes);
        runner->PostTask(FROM_HERE,
                         base::BindWeak(line, [number](Line& here) { here.Prolong(number); }));
      };
    }
    const auto session = session_;  // an operation that fails at once may drop it
    session->Ask(link::Asked<Operation>{
        std::move(operation),
        [line = weak_from_this(), runner = runner_, number, done = std::move(done)](
            const biz::ResultCode& result, const Reply& reply) {
          runner->PostTask(FROM_HERE,
                           base::BindWeak(line, [number, done, result, reply](Line& here) {
                             if (here.Remove(number)) done(result, reply);
                           }));
        }});
  }

  std::uint64_t Add(std::chrono::milliseconds limit, Fail fail);
  // False when it was answered before.
  bool Remove(std::uint64_t number);
  void Prolong(std::uint64_t number);
  void TakeTurns();
  void Wait();
  void CheckDeadlines();
  void FailAll(const biz::ResultCode& why);

  const std::shared_ptr<base::TaskRunner> runner_;
  const Limits limits_;
  std::shared_ptr<link::Session> session_;
  bool closed_ = false;
  std::uint64_t last_ = 0;
  std::map<std::uint64_t, Open> open_;
  std::deque<Turn> turns_;
  int at_once_ = 0;
  std::set<std::pair<Clock::time_point, std::uint64_t>> deadlines_;
  Clock::time_point waits_until_ = Clock::time_point::max();

  mutable base::Lock lock_;
  link::Capabilities capabilities_;
};

}  // namespace imsdk::account
