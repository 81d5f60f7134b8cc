// Operations of any thread that the account's worker carries out.
#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <type_traits>
#include <utility>

#include "account/session/account_state.h"
#include "imsdk/biz/callback.h"
#include "link/check_bounds.h"
#include "sqlite/interrupt.h"

namespace imsdk::account {

inline biz::ResultCode TooMuchOpen() {
  return {biz::kEngineBusy, 0, L"too many operations of this account are open"};
}

// Runs `work(AccountState&, request)` on the account's worker, or `refuse` with the reason when the
// account is logged out, the request breaks its bounds, or too much is open. The request is copied
// once, behind a pointer; as long as somebody holds that the operation counts as open. Holds the
// state until then, so that one of the two runs also when everybody else lets go of it.
template <class Request, class Work, class Refuse>
void OnWorker(const std::shared_ptr<AccountState>& state, Request&& request, Work work,
              Refuse refuse) {
  using Kept = std::decay_t<Request>;
  if (state->closed) return refuse(NotLoggedIn());
  link::Held held;
  if (const auto why = link::CheckBounds(request, &held); !why.ok()) return refuse(why);
  auto ticket = state->admission->Enter(held.all());
  if (!ticket) return refuse(TooMuchOpen());
  struct Admitted {
    Kept request;
    Admission::Ticket ticket;
  };
  const auto admitted =
      std::make_shared<const Admitted>(Admitted{std::forward<Request>(request), std::move(ticket)});
  state->runner->PostTask(FROM_HERE,
                          [state, work = std::move(work), refuse,
                           kept = std::shared_ptr<const Kept>(admitted, &admitted->request)] {
                            if (state->ended || state->patience->over())
                              return refuse(NotLoggedIn());
                            work(*state, kept);
                          });
}

// A search that takes longer is given up.
inline constexpr std::chrono::seconds kLongestQuery{10};

// Answers with what `read(AccountState&, const Request&)`, which may throw, finds in the store. It
// is given up when the account is logged out meanwhile.
template <class Result, class Request, class Read>
void Answer(AccountState& here, const Request& kept, const biz::IMCallback<Result>& done,
            const Read& read) {
  here.commit.Flush();  // what was done before is part of the answer
  Result found{};
  bool given_up = false;
  biz::ResultCode result = sqlite::Guarded([&] {
    const auto end = std::chrono::steady_clock::now() + kLongestQuery;
    const sqlite::Interrupt unless(here.store.database(), [&] {
      return given_up = here.closed || std::chrono::steady_clock::now() > end;
    });
    found = read(here, kept);
  });
  if (given_up) {
    result = here.closed ? NotLoggedIn()
                         : biz::ResultCode{biz::kEngineBusy, 0, L"this takes too long to find"};
  }
  done(result, result.ok() ? found : Result{});
}

// The same from any thread.
template <class Result, class Request, class Read>
void Query(const std::shared_ptr<AccountState>& state, const Request& request,
           biz::IMCallback<Result> done, Read read) {
  OnWorker(
      state, request,
      [read = std::move(read), done](AccountState& here, const auto& kept) {
        Answer(here, *kept, done, read);
      },
      [done](const biz::ResultCode& why) { done(why, {}); });
}

// The same for what goes by the store's full-text index, after that has all there is.
template <class Result, class Request, class Read>
void Search(const std::shared_ptr<AccountState>& state, const Request& request,
            biz::IMCallback<Result> done, Read read) {
  OnWorker(
      state, request,
      [read = std::move(read), done](AccountState& here, const auto& kept) {
        here.commit.Flush();
        here.Index([state = here.shared_from_this(), read, done, kept](const biz::ResultCode& why) {
          why.ok() ? Answer(*state, *kept, done, read) : done(why, {});
        });
      },
      [done](const biz::ResultCode& why) { done(why, {}); });
}

// Changes the store with `write(AccountState&, const Request&)`, which may throw and runs again
// when its transaction had to be repeated; then `after(AccountState&, Result&)`, when it was
// stored, makes it known.
template <class Result, class Request, class Write, class After>
void Change(const std::shared_ptr<AccountState>& state, const Request& request,
            biz::IMCallback<Result> done, Write write, After after) {
  OnWorker(
      state, request,
      [write = std::move(write), after = std::move(after), done](AccountState& here,
                                                                 const auto& kept) {
        const auto outcome = std::make_shared<Result>();
        here.commit.Add(
            [&here, write, kept, outcome](sqlite::Database&) { *outcome = write(here, *kept); },
            [&here, after, outcome, done](const biz::ResultCode& stored) {
              if (stored.ok()) after(here, *outcome);
              done(stored, stored.ok() ? *outcome : Result{});
            });
      },
      [done](const biz::ResultCode& why) { done(why, {}); });
}

// The same for what leaves nothing to tell.
template <class Request, class Write, class After>
void Change(const std::shared_ptr<AccountState>& state, const Request& request,
            biz::IMCallback<> done, Write write, After after) {
  Change<bool>(
      state, request,
      [done = std::move(done)](const biz::ResultCode& result, bool) { done(result); },
      [write = std::move(write)](AccountState& here, const Request& kept) {
        write(here, kept);
        return true;
      },
      [after = std::move(after)](AccountState& here, bool) { after(here); });
}

template <class Request, class Write>
void Change(const std::shared_ptr<AccountState>& state, const Request& request,
            biz::IMCallback<> done, Write write) {
  Change(state, request, std::move(done), std::move(write), [](AccountState&) {});
}

// Answers with what the server replies to `operation`. What breaks the operation's bounds is
// refused here.
template <class Operation, class... Answer>
void AskServer(const std::shared_ptr<AccountState>& state, Operation operation,
               std::function<void(const biz::ResultCode&, const Answer&...)> done) {
  using Reply = typename Operation::Reply;
  OnWorker(
      state, std::move(operation),
      [done](AccountState& here, const auto& kept) {
        here.line->Ask(*kept, [done, kept](const biz::ResultCode& result, const Reply& reply) {
          if constexpr (sizeof...(Answer) == 0) {
            done(result);
          } else {
            done(result, reply);
          }
        });
      },
      [done](const biz::ResultCode& why) { done(why, Answer{}...); });
}

// Asks for all parts of a list, `parts` among them a part's items, and hands them over together.
template <class Operation, class Items>
void AskParts(const std::shared_ptr<AccountState>& state, Operation operation,
              Items Operation::Reply::*items,
              std::function<void(const biz::ResultCode&, const Items&)> done,
              std::shared_ptr<Items> found = std::make_shared<Items>()) {
  using Reply = typename Operation::Reply;
  AskServer(state, operation,
            biz::IMCallback<Reply>([state, operation, items, done, found](
                                       const biz::ResultCode& result, const Reply& part) {
              if (!result.ok()) return done(result, {});
              found->insert(found->end(), (part.*items).begin(), (part.*items).end());
              if (part.next.empty()) return done({}, *found);
              Operation further = operation;
              further.place = part.next;
              AskParts(state, std::move(further), items, done, found);
            }));
}

}  // namespace imsdk::account
