// One-to-one conversations of one account.
#pragma once

#include <cstdint>
#include <functional>
#include <vector>

#include "imsdk/biz/message.h"
#include "imsdk/biz/user_id.h"
#include "kexbase/event.h"
#include "kexcom/ref_counted.h"

namespace imsdk::biz {

// Called once, on an engine thread or before the operation returns. An engine that stops calls
// what is open with `kEngineNotLoggedIn` or drops it uncalled.
using IMPageCallback = std::function<void(const ResultCode&, IMMessagePage)>;
using IMDoneCallback = std::function<void(const ResultCode&)>;

// How a message is sent.
struct IMSendOptions {
  bool autosend = false;   // sent by the client itself, not typed by its user
  bool autoreply = false;  // an automatic reply
};

// One conversation. Counted, any thread; operations without a callback do not wait for a disk or
// the server.
class IIMConversation : public IKexCOMRefCounted {
 public:
  virtual const IMUserID& GetCID() const = 0;
  // The new messages: those received and not yet read, as far as the cache holds them. Reads only.
  // `outofcache` tells that unread messages were dropped from the bounded cache, or that the cache
  // held fewer than `count`.
  virtual IMMessagePage GetNewMsg(const IMPageRequest& request) = 0;
  // Marks every message received so far as read, in the cache at once and in the store.
  virtual void SetNewMsgReaded(IMDoneCallback done) = 0;
  virtual std::int32_t GetUnreadCount() const = 0;
  // A page of the account's own store.
  virtual void GetLocalHisMsg(const IMPageRequest& request, IMPageCallback done) = 0;
  // Sends a message. Returns 0 or more when it was taken: it is in the store, `on_send_new_msg`
  // has been or will be raised with it, and `on_send_msg_status` follows once. A negative value is
  // an `EngineCode`: refused, nothing was stored.
  virtual std::int32_t SendMsg(std::vector<IMBodyItem> body, const IMSendOptions& options) = 0;
  // Sends the stored message `msgid` again; only one that failed. Returns as `SendMsg`. Resending
  // never delivers twice: the server knows the message by its identifier.
  virtual std::int32_t ReSendMsg(std::int64_t msgid) = 0;

 protected:
  ~IIMConversation() = default;
};

// One conversation in a list.
struct IMUnreadCount {
  IMUserID cid;
  std::int32_t count = 0;
};

// Single-chat events of one account. Raised on engine threads, in the order in which things
// happened to the account. The two lists of the message events run side by side: the
// conversation and its message.
struct IMSingleChatEvents {
  base::event<void(const std::vector<IMUserID>&, const std::vector<IMMessage>&)> on_receive_new_msg;
  // The truth value tells whether more offline messages follow.
  base::event<void(bool, const std::vector<IMUserID>&, const std::vector<IMMessage>&)>
      on_receive_offline_msg;
  base::event<void(const std::vector<IMUserID>&, const std::vector<IMMessage>&)> on_send_new_msg;
  // Conversation, kind, msgid, server time (0 when it failed), outcome.
  base::event<void(const IMUserID&, IMMsgType, std::int64_t, std::int64_t, const ResultCode&)>
      on_send_msg_status;
};

// The conversations of one account. Counted, any thread.
class IIMSingleChatMgr : public IKexCOMRefCounted {
 public:
  // The conversation with `cid`, made when it is new. Null when `cid` cannot name a user (a part
  // is empty or over 256 UTF-16 code units) or the account is logged out.
  virtual RefPtr<IIMConversation> GetConversation(const IMUserID& cid) = 0;
  // Every conversation that has a message, the one with the newest message first.
  virtual std::vector<IMUnreadCount> GetConversations() = 0;
  // Lives as long as the manager.
  virtual IMSingleChatEvents& Events() = 0;

 protected:
  ~IIMSingleChatMgr() = default;
};

}  // namespace imsdk::biz
