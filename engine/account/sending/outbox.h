// The messages that an account sends, from the first call to the answer of the server.
#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <unordered_map>
#include <utility>
#include <vector>

#include "account/sending/body_composer.h"
#include "account/session/account_state.h"
#include "imsdk/biz/message.h"
#include "imsdk/biz/single_chat.h"
#include "kexbase/lock.h"
#include "link/server_link.h"

namespace imsdk::account {

// An account's open messages: more are refused with `kEngineBusy`, so that a page that sends
// without looking cannot fill the memory.
inline constexpr int kMostOpenMessages = 10'000;
inline constexpr std::size_t kMostOpenContent = 4 * kMaxFileBytes;

// A message is stored as sending, announced, handed to the link, then stored as sent or failed,
// and its status is raised. What is stored as sending when the account stops is handed over again
// at the next login; the server recognises what it has.
class Outbox : public std::enable_shared_from_this<Outbox> {
 public:
  explicit Outbox(std::shared_ptr<AccountState> state) : state_(std::move(state)) {}

  // Any thread. Both return 0 or an `EngineCode` that refuses.
  std::int32_t Send(const biz::IMUserID& cid, std::vector<biz::IMBodyItem> items,
                    const biz::IMSendOptions& options);
  // `at_once`: without a link, one is asked for and waited for.
  std::int32_t Resend(const biz::IMUserID& cid, std::int64_t msgid, bool at_once);

  // Logs the account out as far as the callers can tell: what they send from now on is refused, and
  // everything taken before is queued on the worker. False when it was logged out already.
  bool StopTaking();

  // The rest on the account's worker.

  // Takes up what the store has from earlier sessions. May throw `sqlite::Error`.
  void Load();
  // How to ask for a link.
  void WantLink(std::function<void()> want_link) { want_link_ = std::move(want_link); }
  // The link is there: hands over what is open.
  void Connect(std::shared_ptr<link::Session> session);
  // The link is gone. What is open waits for the next `Connect`, at most for its time limit.
  void Disconnect() { session_.reset(); }
  // There is no hope for a link now: what is open fails, and so does what comes.
  void GiveUp(const biz::ResultCode& why);
  // Forgets what is open; the store keeps it as sending.
  void Close();

 private:
  using Deadline = std::chrono::steady_clock::time_point;

  // Handed over, or waiting for the link.
  struct Open {
    biz::IMMessage message;
    Deadline deadline;
  };

  // The one item of a typing state goes to the peer and nowhere else.
  std::int32_t SendInputStatus(const biz::IMUserID& cid, const std::vector<biz::IMBodyItem>& items);
  void AddOpen(biz::IMMessage message);
  void Prepare(biz::IMMessage message, const std::vector<biz::IMBodyItem>& items,
               const biz::IMSendOptions& options);
  // The stored message `msgid` as a body to send.
  ComposedBody Forwarded(std::int64_t msgid);
  void Announce(const biz::IMMessage& message, const biz::ResultCode& problem,
                const biz::ResultCode& stored);
  void TryAgain(const biz::IMUserID& cid, std::int64_t msgid);
  void HandOver(const biz::IMMessage& message);
  void Deliver(const biz::IMMessage& message);
  void Answered(std::int64_t msgid, const biz::ResultCode& result, std::int64_t svrtime);
  // Tells the outcome; `again` when the message may be sent again.
  void Settle(const biz::IMMessage& message, const biz::ResultCode& result, std::int64_t svrtime,
              bool again);
  bool IsStale(const std::pair<Deadline, std::int64_t>& entry) const;
  void CheckDeadlines();
  void WaitForDeadline();

  const std::shared_ptr<AccountState> state_;
  std::atomic<int> open_count_{0};
  std::atomic<std::size_t> open_content_{0};

  // Numbers are given out in the order in which messages are queued, and nothing is queued behind
  // the end of the account.
  base::Lock queue_lock_;
  base::Lock failed_lock_;
  std::unordered_map<std::int64_t, biz::IMUserID> failed_;  // may be sent again

  std::function<void()> want_link_;
  std::shared_ptr<link::Session> session_;
  bool hopeless_ = false;
  std::map<std::int64_t, Open> open_;
  // In order. An entry is stale when its message is not open any more, or open anew.
  std::deque<std::pair<Deadline, std::int64_t>> deadlines_;
  bool waiting_ = false;
};

}  // namespace imsdk::account
