// One logged-in account: its link to the server, and what comes over it.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "account/session/account_parts.h"
#include "account/session/mailbox.h"
#include "imsdk/biz/account.h"
#include "link/server_link.h"

namespace imsdk::account {

// What an account tells the manager of accounts. Called on the account's worker.
struct AccountHooks {
  std::function<void()> reconnected;
  std::function<void(const biz::ResultCode&)> reconnect_failed;
  std::function<void()> ended;  // the server ended the session for good
};

// A lost link is renewed by itself: at once, then with growing pauses. Each session goes on where
// the store stands; where the server does not know that place any more, the account begins anew and
// fetches what it missed as history.
class AccountCore : public std::enable_shared_from_this<AccountCore> {
 public:
  AccountCore(std::shared_ptr<const Environment> environment, const biz::IMUserID& user,
              const Worker& worker, std::wstring token, AccountHooks hooks);

  // Any thread.
  AccountParts parts() const {
    return {state_,   outbox_, roamer_,    reporter_, mentions_,
            courier_, tribes_, transfers_, contacts_};
  }
  // Opens the store and begins a session; `done` runs on the worker, before any event.
  void Open(biz::IMCallback<> done);
  // Uses this token for the next session.
  void RenewToken(std::wstring token);
  // Drops and renews the session.
  void Reconnect(biz::IMCallback<> done);
  // Ends the account: what was asked for before is stored. `done` runs on the worker when the
  // server has answered or its time is over. False, and nothing happens, for a second call.
  bool Close(biz::IMCallback<> done);

 private:
  class Listener;

  biz::ResultCode OpenStore();
  // Reports what the store has lost and prepares for its return. May throw `sqlite::Error`.
  void Recover(const sqlite::Loss& loss);
  void Connect();
  void ConnectAnswered(std::uint64_t attempt, const biz::ResultCode& result,
                       const link::Connected& connected);
  // The server has forgotten how far the account had read: tries again without that.
  void BeginAnew(const biz::ResultCode& why);
  void ConnectFailed(const biz::ResultCode& why);
  void RetryLater();
  // Tries the link now, unless it is there or an attempt is under way.
  void ConnectNow();
  // Forgets the session, if any; nothing that comes from it counts any more.
  void DropSession();
  void Lost(const biz::ResultCode& why);

  void Receive(std::uint64_t attempt, const std::shared_ptr<const link::Batch>& batch);
  void Hear(std::uint64_t attempt, const biz::IMConversationID& cid, std::int32_t status);
  void Hear(std::uint64_t attempt, const link::TribePresence& presence);
  void Hear(std::uint64_t attempt, const link::ContactPresence& presence);
  void SessionEnded(std::uint64_t attempt, const biz::ResultCode& why);
  void End(biz::IMCallback<> done);
  void Tell(const biz::ResultCode& outcome);

  const std::shared_ptr<AccountState> state_;
  const std::shared_ptr<Mailbox> mailbox_;
  const std::shared_ptr<Courier> courier_;
  const std::shared_ptr<Transfers> transfers_;
  const std::shared_ptr<Outbox> outbox_;
  const std::shared_ptr<Roamer> roamer_;
  const std::shared_ptr<Reporter> reporter_;
  const std::shared_ptr<Mentions> mentions_;
  const std::shared_ptr<TribeBook> tribes_;
  const std::shared_ptr<ContactBook> contacts_;
  const AccountHooks hooks_;

  // On the worker only.
  std::wstring token_;
  std::uint64_t attempt_ = 0;  // numbers the sessions and the attempts to begin one
  std::shared_ptr<Listener> listener_;
  std::shared_ptr<link::Session> session_;
  std::vector<biz::IMCallback<>> waiting_;  // for the outcome of the attempt
  bool connecting_ = false;
  bool opening_ = true;      // the first session of the account
  biz::ResultCode warning_;  // for the answer of the login: good, with a subcode
  bool outage_told_ = false;
  bool proved_ = false;  // the session brought messages, or is the first one
  std::chrono::steady_clock::time_point connected_at_;
  std::chrono::milliseconds retry_{0};
};

}  // namespace imsdk::account
