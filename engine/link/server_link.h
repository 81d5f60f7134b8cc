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
#include <vector>

#include "imsdk/biz/message.h"
#include "imsdk/biz/user_id.h"

namespace imsdk::link {

// Largest text of a message, in bytes of UTF-8. Both sides hold to it.
inline constexpr std::size_t kMaxBodyBytes = 1024 * 1024;

// A message on its way: what sender and receiver have in common.
struct Message {
  std::int64_t msgid = 0;    // the sender's choice; unique and growing for one sender
  std::int64_t msgtime = 0;  // by the sender's clock
  std::int64_t svrtime = 0;  // by the server's clock; the server sets it
  biz::IMUserID from;
  biz::IMUserID to;
  std::int32_t msgtype = biz::kMsgText;
  std::wstring body;
  biz::IMMessageExt ext;
};

// Messages for one account, in the order in which its server took them. Positions count that
// order: `after` is the position that the batch follows, `upto` that of its last message. A batch
// whose `after` is not the `upto` of the batch before it tells that something was lost between.
struct Batch {
  std::int64_t after = 0;
  std::int64_t upto = 0;
  std::vector<Message> msgs;
  bool offline = false;  // the server had them before the session began
  bool more = false;     // more such messages follow
};

// What the server tells a session by itself. Calls come one after another, the first one after the
// session was given out, on any thread; they must not wait.
class SessionListener {
 public:
  virtual ~SessionListener() = default;
  virtual void OnBatch(Batch batch) = 0;
  // The session is over: `kEngineNoLink` when the link broke, another code when the server ended
  // it. The last call.
  virtual void OnEnded(const biz::ResultCode& why) = 0;
};

// Outcome, and the server's time of the message when it is good.
using DeliverCallback = std::function<void(const biz::ResultCode&, std::int64_t svrtime)>;
using DoneCallback = std::function<void(const biz::ResultCode&)>;

// An account's connection to its server. Any thread. Letting go of it ends it too.
class Session {
 public:
  virtual ~Session() = default;
  // Hands a message over. Good means: the server has it on its disk and will deliver it. A message
  // that the server knows already by sender and msgid is good again and not delivered again.
  virtual void Deliver(const Message& message, DeliverCallback done) = 0;
  // The account has everything up to this position in its own store: it need not be sent again.
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
  // Begins a session. The server then sends what the account has not acknowledged yet, oldest
  // first, and everything new after it.
  virtual void Connect(const biz::IMUserID& user, const std::wstring& token,
                       std::weak_ptr<SessionListener> listener, ConnectCallback done) = 0;
};

}  // namespace imsdk::link
