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

#include "imsdk/biz/user_id.h"
#include "link/message.h"
#include "link/operations.h"

namespace imsdk::link {

// What the server can do. What is asked of it and it cannot, the account refuses with
// `kEngineUnsupported`.
struct Capabilities {
  enum class Withdrawal {
    kNone,
    kAnnounced,  // the server keeps the text, clients hide it
    kErased,     // the text leaves the server's store
  };
  Withdrawal withdrawal = Withdrawal::kErased;
  bool roaming_switch = true;      // `GetRoaming`, `SetRoaming`; without it roaming is always on
  bool receipts = true;            // `ReportRead`
  bool typing = true;              // `SendTyping`
  bool tribes = true;              // what concerns tribes besides their messages
  bool contacts = true;            // users' names and presence, contacts and requests
  bool mentions = true;            // messages that mention, and who has read that
  bool join_approval = true;       // tribes that ask an administrator before somebody joins
  bool resumable_transfer = true;  // a transfer goes on where it ended
  bool private_files = true;       // only who is part of the conversation can fetch its files
  bool login_tokens = true;        // `Grant::token` logs in again without the password
};

// What the server tells a session by itself. Calls come one after another, the first one after the
// session was given out, on any thread; they must not wait.
class SessionListener {
 public:
  virtual ~SessionListener() = default;
  virtual void OnBatch(Batch batch) = 0;
  // The peer's typing state (`biz::InputStatus`). Not kept for sessions that begin later.
  virtual void OnTyping(const biz::IMConversationID& cid, std::int32_t status) = 0;
  // Who is online in a tribe that the session watches, gathered. Not kept.
  virtual void OnTribePresence(const TribePresence& presence) = 0;
  // Who of the account's contacts came or went, gathered. Not kept.
  virtual void OnContactPresence(const ContactPresence& presence) = 0;
  // The session is over: `kEngineNoLink` when the link broke, another code when the server ended
  // it. The last call.
  virtual void OnEnded(const biz::ResultCode& why) = 0;
};

// The connection of one device of an account to its server. Any thread. Letting go of it ends it
// too.
class Session {
 public:
  virtual ~Session() = default;
  // The one way of every operation.
  virtual void Ask(Request request) = 0;
  // The device has the batch of this position, and all before it, in its own store. The server
  // sends only so far ahead of this.
  virtual void Acknowledge(const std::string& position) = 0;
};

struct Password {
  std::wstring text;

  static constexpr auto Bounds() {
    return biz::Bounded(biz::Letters("password", &Password::text, biz::kMaxSecretLetters));
  }
};
struct Token {
  std::wstring text;

  static constexpr auto Bounds() {
    return biz::Bounded(biz::Letters("token", &Token::text, biz::kMaxSecretLetters));
  }
};
struct LoginRequest {
  biz::IMUserID user;
  std::variant<Password, Token> proof;

  static constexpr auto Bounds() {
    return biz::Bounded(biz::Inner("user", &LoginRequest::user),
                        biz::Inner("proof", &LoginRequest::proof));
  }
};

// What a login gives: a token that stands for the password until `expires` (milliseconds since the
// Unix epoch).
struct Grant {
  biz::IMUserID user;
  std::wstring token;
  std::int64_t expires = 0;
};
using LoginCallback = std::function<void(const biz::ResultCode&, const Grant&)>;

struct ConnectRequest {
  biz::IMUserID user;
  std::wstring token;
  std::string device;    // the account's name for this device
  std::string position;  // of the last batch that the account stored; empty for none
  std::weak_ptr<SessionListener> listener;
  // The device has lost some of what came behind the position, or without one everything, and comes
  // under a new name: the server sends it all again, from the very beginning without a position,
  // and what the account itself sent. A server that cannot do so begins as usual.
  bool restore = false;

  static constexpr auto Bounds() {
    return biz::Bounded(
        biz::Inner("user", &ConnectRequest::user),
        biz::Letters("token", &ConnectRequest::token, biz::kMaxSecretLetters),
        biz::Letters("device", &ConnectRequest::device, biz::kMaxNameLetters),
        biz::Letters("position", &ConnectRequest::position, biz::kMaxSecretLetters));
  }
};

struct Connected {
  std::shared_ptr<Session> session;
  Capabilities capabilities;
};
// `kEnginePositionLost`: the server does not know the position any more. The account then connects
// without one, and what it may have missed is fetched as history. A good result may have
// `kEngineDamaged` as its subcode: the server itself has lost something.
using ConnectCallback = std::function<void(const biz::ResultCode&, const Connected&)>;

// A server. Any thread.
class ServerLink {
 public:
  virtual ~ServerLink() = default;
  // Gives a fresh token; older ones stay good until they expire.
  virtual void Login(const LoginRequest& request, LoginCallback done) = 0;
  // Begins a session. The server sends what came after the position, oldest first, and everything
  // new after it. A device without a position stands where the device that has most stands; what
  // came before is history. The first batch that it is sent comes at once, without entries when
  // there are none, so that the account knows where to go on even when nothing happens.
  virtual void Connect(const ConnectRequest& request, ConnectCallback done) = 0;
};

}  // namespace imsdk::link
