// The messages that an account sends, from the first call to the word of the server.
#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "account/files/courier.h"
#include "account/files/transfers.h"
#include "account/sending/open_bodies.h"
#include "account/session/account_state.h"
#include "imsdk/biz/conversation.h"
#include "kexbase/lock.h"
#include "link/operations.h"

namespace imsdk::account {

// An account's open messages: more are refused with `kEngineBusy`, so that a page that sends
// without looking cannot fill the memory.
inline constexpr int kMostOpenMessages = 10'000;

// A message is stored as sending and announced; its files are brought to the server, in the order
// of its conversation; it is handed to the link, until the server has it in its archive; then it is
// stored as sent or failed, and its status is raised. One that the server took and has not archived
// in time is handed over again, and so is, at the next login, what is stored as sending when the
// account stops: the server recognises what it has.
class Outbox : public std::enable_shared_from_this<Outbox> {
 public:
  Outbox(std::shared_ptr<AccountState> state, std::shared_ptr<Courier> courier,
         std::shared_ptr<Transfers> transfers)
      : state_(std::move(state)), courier_(std::move(courier)), transfers_(std::move(transfers)) {}

  // Any thread. A refusal is answered at once, everything else when it is in the store.
  void Send(const biz::IMConversationID& cid, const biz::IMSendRequest& request,
            biz::IMCallback<> done);
  // Any thread. Answers at once.
  // `at_once`: without a link, one is asked for and waited for.
  biz::ResultCode Resend(const biz::IMConversationID& cid, const biz::IMResendRequest& request);

  // Logs the account out as far as the callers can tell: what they send from now on is refused, and
  // everything taken before is queued on the worker, but for messages whose large file is still
  // being copied: `Finish` refuses these. False when it was logged out already.
  bool StopTaking();

  // The rest on the account's worker.

  // Takes up what the store has from earlier sessions. May throw `sqlite::Error`.
  void Load();
  // How to ask for a link.
  void WantLink(std::function<void()> want_link) { want_link_ = std::move(want_link); }
  // The link is there: hands over what is open.
  void Connected();
  // The link is gone. What is open waits for the next one, at most for its time limit.
  void Disconnected();
  // There is no hope for a link now: what is open fails, and so does what comes. What the server
  // has taken waits on.
  void GiveUp(const biz::ResultCode& why);
  // The store knows by the server's own word that it has this message; so it was before.
  void Archived(const biz::IMMessage& message, std::int64_t svrtime);
  // Stores what was taken and waits for that.
  void Finish();
  // Forgets what is open; the store keeps it as sending.
  void Close();

 private:
  using Clock = std::chrono::steady_clock;
  using Deadline = Clock::time_point;

  enum class Stage {
    kWaiting,    // for the link, or for its turn behind a message whose files are on their way
    kPreparing,  // its files are on their way
    kHanded,
    kTaken,  // by a server that may still lose it
  };
  // Taken, and waiting to be stored.
  struct Waiting {
    biz::IMMessage message;
    biz::IMSendRequest request;
    biz::IMCallback<> done;
  };
  struct Open {
    biz::IMMessage message;  // without its text, which the store has
    Deadline deadline;
    Stage stage = Stage::kWaiting;
    int taken = 0;            // how often
    std::size_t in_work = 0;  // bytes, while it is prepared or handed over
  };
  // What is put together with a message before it is handed over.
  struct Parcel {
    biz::IMConversationID cid;
    std::int64_t msgid = 0;
    std::uint64_t link = 0;  // number of the link that it is for
    biz::IMMessage message{};
    std::vector<std::string> names{};
    std::vector<link::File> files{};
    bool aside = false;  // its files are large: others of its conversation do not wait for it
  };

  // The one item of a typing state goes to the peer and nowhere else.
  biz::ResultCode SendInputStatus(const biz::IMConversationID& cid,
                                  const std::vector<biz::IMBodyItem>& items);
  void AddOpen(biz::IMMessage message);
  void SetDeadline(std::int64_t msgid, Open& open);
  // Queues what is to be sent, or refuses it.
  biz::ResultCode Take(const biz::IMConversationID& cid, const biz::IMSendRequest& request,
                       const link::Held& holds, const biz::IMCallback<>& done);
  // Stores some of what waits, in a task of its own, so that a broadcast to many leaves time for
  // what is asked between. False when nothing waits any more.
  bool PrepareSome();
  void PrepareInTurns();
  // Returns the bytes of its text.
  std::size_t Prepare(Waiting waiting);
  // Whether the message waits for its large file, which is copied aside: what is written behind it
  // goes first.
  bool WaitsForCopy(Waiting& waiting);
  void Copied(const biz::IMBody& body, const std::shared_ptr<const ComposedBody>& composed);
  void RefuseCopying();
  // The stored message `msgid` as a body to send.
  ComposedBody Forwarded(std::int64_t msgid);
  void Announce(const biz::IMMessage& message, const ComposedBody& body);
  void TryAgain(const biz::IMConversationID& cid, std::int64_t msgid);
  void HandOver(const biz::IMMessage& message);
  // Conversations take turns, each message behind those of its conversation whose files are to be
  // waited for. Only so much is handed over at once: the server has others to serve.
  void Queue(const biz::IMConversationID& cid, std::int64_t msgid);
  void Ready(const biz::IMConversationID& cid);
  void TakeTurns();
  void TakeTurn(const biz::IMConversationID& cid);
  // Whether so much is to be brought that what is typed meanwhile should go first.
  bool IsLarge(const Parcel& parcel) const;
  // The message with its text out of the store. Null when it is not there; it has failed then.
  std::shared_ptr<Parcel> Load(const biz::IMConversationID& cid, std::int64_t msgid);
  void StopWork(Open& open);
  void FetchFiles(const std::shared_ptr<Parcel>& parcel);
  void Provided(const std::shared_ptr<Parcel>& parcel, const biz::ResultCode& result,
                const link::File& file);
  void Prepared(const std::shared_ptr<Parcel>& parcel, const biz::ResultCode& result);
  void Deliver(const Parcel& parcel);
  void Delivered(std::int64_t msgid, const biz::ResultCode& result, const link::Delivered& how);
  void Answered(std::int64_t msgid, const biz::ResultCode& result, const link::Delivered& how = {});
  // Tells the outcome; `again` when the message may be sent again.
  void Settle(const biz::IMMessage& message, const biz::ResultCode& result, std::int64_t svrtime,
              bool again);
  bool IsStale(const std::pair<Deadline, std::int64_t>& entry) const;
  void CheckDeadlines();
  void WaitForDeadline();

  const std::shared_ptr<AccountState> state_;
  const std::shared_ptr<Courier> courier_;
  const std::shared_ptr<Transfers> transfers_;
  std::atomic<int> open_count_{0};
  OpenBodies bodies_;

  // Numbers are given out in the order in which messages are queued, and nothing is queued behind
  // the end of the account.
  base::Lock queue_lock_;
  std::deque<Waiting> queue_;
  bool preparing_ = false;
  std::map<biz::IMBody, std::deque<Waiting>> copying_;  // on the worker
  base::Lock failed_lock_;
  std::unordered_map<std::int64_t, biz::IMConversationID> failed_;  // may be sent again

  std::function<void()> want_link_;
  std::uint64_t link_ = 0;  // numbers the links
  bool hopeless_ = false;
  std::map<std::int64_t, Open> open_;
  // Messages whose turn has not come; the first one's files are on their way.
  std::unordered_map<biz::IMConversationID, std::deque<std::int64_t>> turns_;
  std::deque<biz::IMConversationID> ready_;  // whose first message may go
  bool taking_turns_ = false;
  std::size_t in_work_ = 0;
  std::size_t bytes_in_work_ = 0;
  // In order. An entry is stale when its message is not open any more, or has another deadline.
  std::deque<std::pair<Deadline, std::int64_t>> deadlines_;
  bool waiting_ = false;
};

}  // namespace imsdk::account
