// Operations of any thread that the account's worker carries out.
#pragma once

#include <functional>
#include <memory>
#include <utility>

#include "account/session/account_state.h"
#include "imsdk/biz/callback.h"

namespace imsdk::account {

// Runs `work` on the account's worker, or `refuse` with the reason when the account is logged out.
// Holds the state until then, so that one of the two runs also when everybody else lets go of it.
template <class Work, class Refuse>
void OnWorker(const std::shared_ptr<AccountState>& state, Work work, Refuse refuse) {
  if (state->closed) return refuse(NotLoggedIn());
  state->runner->PostTask(FROM_HERE, [state, work = std::move(work), refuse] {
    if (state->ended) return refuse(NotLoggedIn());
    work(*state);
  });
}

// Answers with what `read(AccountState&)`, which may throw, finds in the store.
template <class Result, class Read>
void Query(const std::shared_ptr<AccountState>& state, biz::IMCallback<Result> done, Read read) {
  OnWorker(
      state,
      [read = std::move(read), done](AccountState& here) {
        here.commit.Flush();  // what was done before is part of the answer
        Result found{};
        const biz::ResultCode result = sqlite::Guarded([&] { found = read(here); });
        done(result, result.ok() ? found : Result{});
      },
      [done](const biz::ResultCode& why) { done(why, {}); });
}

// Changes the store with `write(AccountState&)`, which may throw and runs again when its
// transaction had to be repeated; then `after(AccountState&, Result&)`, when it was stored, makes
// it known.
template <class Result, class Write, class After>
void Change(const std::shared_ptr<AccountState>& state, biz::IMCallback<Result> done, Write write,
            After after) {
  OnWorker(
      state,
      [write = std::move(write), after = std::move(after), done](AccountState& here) {
        const auto outcome = std::make_shared<Result>();
        here.commit.Add([&here, write, outcome](sqlite::Database&) { *outcome = write(here); },
                        [&here, after, outcome, done](const biz::ResultCode& stored) {
                          if (stored.ok()) after(here, *outcome);
                          done(stored, stored.ok() ? *outcome : Result{});
                        });
      },
      [done](const biz::ResultCode& why) { done(why, {}); });
}

// The same for what leaves nothing to tell.
template <class Write, class After>
void Change(const std::shared_ptr<AccountState>& state, biz::IMCallback<> done, Write write,
            After after) {
  Change<bool>(
      state, [done = std::move(done)](const biz::ResultCode& result, bool) { done(result); },
      [write = std::move(write)](AccountState& here) {
        write(here);
        return true;
      },
      [after = std::move(after)](AccountState& here, bool) { after(here); });
}

template <class Write>
void Change(const std::shared_ptr<AccountState>& state, biz::IMCallback<> done, Write write) {
  Change(state, std::move(done), std::move(write), [](AccountState&) {});
}

// Answers with what the server replies to `operation`.
template <class Operation, class... Answer>
void AskServer(const std::shared_ptr<AccountState>& state, Operation operation,
               std::function<void(const biz::ResultCode&, const Answer&...)> done) {
  using Reply = typename Operation::Reply;
  OnWorker(
      state,
      [operation = std::move(operation), done](AccountState& here) {
        here.line->Ask(operation, [done](const biz::ResultCode& result, const Reply& reply) {
          if constexpr (sizeof...(Answer) == 0) {
            done(result);
          } else {
            done(result, reply);
          }
        });
      },
      [done](const biz::ResultCode& why) { done(why, Answer{}...); });
}

}  // namespace imsdk::account
