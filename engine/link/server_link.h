// The one door between an account's client side and its server. Whatever is on the other side (a
// server in this process, or one on other machines) is reached by these operations only.
//
// Every operation returns at once. Its callback is called at most once, on any thread and also
// before the operation returns; a link that lost its server may forget it, so callers that need an
// answer set a time limit of their own. Failures are `biz::EngineCode`s: `kEngineNoLink` and
// `kEngineTimeout` leave open whether the server carried the operation out, every other code says
// that it did not. Nothing throws.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <variant>
#include <vector>

#include "imsdk/biz/history.h"
#include "imsdk/biz/message.h"
#include "imsdk/biz/user_id.h"

namespace imsdk::link {

// Largest text of a message, in bytes of UTF-8. Both sides hold to it.
inline constexpr std::size_t kMaxBodyBytes = 1024 * 1024;

// Where a message belongs.
enum class Channel : std::int32_t {
  kSingleChat = 0,
  kSystem = 1,  // from a virtual user, like the next one
  kSubscription = 2,
};

// A message on its way: what sender and receiver have in common.
struct Message {
  std::int64_t msgid = 0;    // the sender's choice; unique and growing for one sender
  std::int64_t msgtime = 0;  // by the sender's clock
  std::int64_t svrtime = 0;  // by the server's clock; the server sets it and what follows `ext`
  biz::IMUserID from;
  biz::IMUserID to;
  std::int32_t msgtype = biz::kMsgText;
  std::wstring body;
  biz::IMMessageExt ext;
  Channel channel = Channel::kSingleChat;
  bool withdrawn = false;  // its text is gone
  bool read = false;       // its receiver has reported it read
};

// A message was taken back by its sender.
struct Withdrawal {
  biz::IMUserID from;
  biz::IMUserID to;
  std::int64_t msgid = 0;
  std::int64_t msgtime = 0;
  std::int64_t svrtime = 0;  // of the message
};

// `peer` has reported messages of this account read.
struct PeerRead {
  biz::IMUserID peer;
  std::vector<std::int64_t> msgids;
};

// Another device of this account has read the conversation up to and with this place.
struct ReadElsewhere {
  biz::IMUserID cid;
  Channel channel = Channel::kSingleChat;
  biz::IMMsgPosition upto;
};

// Something that happened to an account. Its messages are those that others sent to it, and those
// that other devices of it sent.
using Entry = std::variant<Message, Withdrawal, PeerRead, ReadElsewhere>;

// What happened, in the order of the server. Positions count that order: `after` is the position
// that the batch follows, `upto` that of its last entry. A batch whose `after` is not the `upto` of
// the batch before it tells that something was lost between.
struct Batch {
  std::int64_t after = 0;
  std::int64_t upto = 0;
  std::vector<Entry> entries;
  bool offline = false;  // the server had them before the session began
  bool more = false;     // more such entries follow
};

// What the server tells a session by itself. Calls come one after another, the first one after the
// session was given out, on any thread; they must not wait.
class SessionListener {
 public:
  virtual ~SessionListener() = default;
  virtual void OnBatch(Batch batch) = 0;
  // The peer's typing state (`biz::IMInputStatus`). Not kept for sessions that begin later.
  virtual void OnSignal(const biz::IMUserID& from, std::int32_t status) = 0;
  // The session is over: `kEngineNoLink` when the link broke, another code when the server ended
  // it. The last call.
  virtual void OnEnded(const biz::ResultCode& why) = 0;
};

// Which part of the conversation with `peer` to hand out. Its order is (msgtime, msgid).
struct HistoryRequest {
  biz::IMUserID peer;
  biz::IMMsgPosition position;  // not part of the answer; none for the newest end
  bool older = true;            // before the position; without one, always
  std::int64_t btime = 0;       // msgtime from here on
  std::int64_t etime = 0;       // msgtime up to and with this; 0: to the end
  std::int32_t count = 0;       // at most this many; the server has a limit of its own
};

// Oldest first. `more` tells that the range goes on in the direction that was asked for.
struct History {
  std::vector<Message> msgs;
  bool more = false;
};

// Outcome, and the server's time of the message when it is good.
using DeliverCallback = std::function<void(const biz::ResultCode&, std::int64_t svrtime)>;
using DoneCallback = std::function<void(const biz::ResultCode&)>;
using HistoryCallback = std::function<void(const biz::ResultCode&, const History&)>;
using RoamingCallback = std::function<void(const biz::ResultCode&, const biz::IMRoamStatus&)>;

// The connection of one device of an account to its server. Any thread. Letting go of it ends it
// too.
class Session {
 public:
  virtual ~Session() = default;
  // Hands a message over. Good means: the server has it on its disk and will deliver it. A message
  // that the server knows already by sender and msgid is good again and not delivered again.
  virtual void Deliver(const Message& message, DeliverCallback done) = 0;
  // Takes back a message that this account sent to `peer`: its text leaves the server's store, and
  // everybody concerned hears of it, this device too. Again is good again. `kEngineNotFound` for an
  // unknown message, `kEngineRefused` for one that is too old.
  virtual void Withdraw(const biz::IMUserID& peer, std::int64_t msgid, DoneCallback done) = 0;
  // Tells `peer` that these messages of it were read. Those that were reported before and unknown
  // ones are passed over.
  virtual void ReportRead(const biz::IMUserID& peer, const std::vector<std::int64_t>& msgids,
                          DoneCallback done) = 0;
  // Tells the account's other devices that the conversation is read up to and with a place.
  virtual void MarkRead(const biz::IMUserID& peer, const biz::IMMsgPosition& upto,
                        DoneCallback done) = 0;
  // Passes the typing state on to the sessions that `peer` has now. Nobody learns what became of
  // it.
  virtual void Signal(const biz::IMUserID& peer, std::int32_t status) = 0;
  // Hands out a part of a conversation. What is in it and is also to come in batches has come
  // before the answer. `kEngineRefused` while roaming is off.
  virtual void GetHistory(const HistoryRequest& request, HistoryCallback done) = 0;
  virtual void GetRoaming(RoamingCallback done) = 0;
  // `status` is a `biz::IMRoaming`. Switching on sets the open time to now.
  virtual void SetRoaming(std::int32_t status, DoneCallback done) = 0;
  // The device has everything up to this position in its own store: it need not be sent again.
  // The server sends only so far ahead of this.
  virtual void Acknowledge(std::int64_t upto) = 0;
  // Logs out. The listener hears nothing further.
  virtual void Close(DoneCallback done) = 0;
};

// What a login gives: a token that stands for the password until `expires` (milliseconds since the
// Unix epoch).
struct Grant {
  biz::IMUserID user;
  std::wstring token;
  std::int64_t expires = 0;
};

using GrantCallback = std::function<void(const biz::ResultCode&, const Grant&)>;
// The session, and the position that its first batch follows.
using ConnectCallback =
    std::function<void(const biz::ResultCode&, std::shared_ptr<Session>, std::int64_t position)>;

// A server. Any thread.
class ServerLink {
 public:
  virtual ~ServerLink() = default;
  // Both give a fresh token; older ones stay good until they expire.
  virtual void LoginByPassword(const biz::IMUserID& user, const std::wstring& password,
                               GrantCallback done) = 0;
  virtual void LoginByToken(const biz::IMUserID& user, const std::wstring& token,
                            GrantCallback done) = 0;
  // Begins a session of the device that the account knows by this name. The server then sends what
  // the device has not acknowledged yet, oldest first, and everything new after it. A device of a
  // new name stands where the device that has most stands; what came before is history.
  virtual void Connect(const biz::IMUserID& user, const std::wstring& token,
                       const std::string& device, std::weak_ptr<SessionListener> listener,
                       ConnectCallback done) = 0;
};

}  // namespace imsdk::link
