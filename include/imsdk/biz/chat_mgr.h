// The conversations of one account, by kind, and what happens in them.
#pragma once

#include <cstdint>
#include <vector>

#include "imsdk/biz/conversation.h"
#include "kexbase/event.h"

namespace imsdk::biz {

// One conversation in a list.
struct IMUnreadCount {
  IMConversationID cid;
  std::int32_t count = 0;
};

struct IMUnreads {
  std::vector<IMUnreadCount> unreads;
};

struct IMMaxCacheRequest {
  std::int32_t maxmsgcount = 0;
};

// What single chats, tribes and virtual conversations have in common. A manager knows the
// conversations of its own kinds only. Counted, any thread.
class IIMChatMgr : public IKexCOMRefCounted {
 public:
  // The conversation `cid`. Null when `cid` is of another kind or cannot name anybody (a part of a
  // user's name is empty or over 256 UTF-16 code units, a tribe is 0 or not one of the account's, a
  // virtual conversation is not there), or the account is logged out. A single chat is made when it
  // is new. A virtual conversation is found by its user whichever of the virtual kinds `cid` says.
  virtual RefPtr<IIMConversation> GetConversation(const IMConversationID& cid) = 0;
  // The unread counts of the conversations named, in their order, 0 for those that are not there.
  // Without any, of every conversation that has a message, the one with the newest message first.
  // Answered at once.
  virtual void GetUnreadCounts(const IMConversations& request, IMCallback<IMUnreads> done) = 0;
  // Searches all conversations.
  virtual void SearchMsg(const IMSearchRequest& request, IMCallback<IMSearchPage> done) = 0;
  // The conversations with at least one message that fits; keywords, kinds and times count.
  virtual void SearchConversations(const IMSearchRequest& request,
                                   IMCallback<IMConversations> done) = 0;
  // At most this many new messages of the account are kept in memory; the oldest ones give way, and
  // are still in the store. 0 or less sets the engine's own bound, which is also the largest one.
  virtual void SetNewMsgMaxCache(const IMMaxCacheRequest& request, IMCallback<> done) = 0;
  virtual void GetRoamStatus(const IMNothing& request, IMCallback<IMRoamStatus> done) = 0;
  // Anything that is no `IMRoaming` is refused with `kEngineRefused`. Switching roaming on sets its
  // open time to now.
  virtual void SetRoamStatus(const IMSetRoamRequest& request, IMCallback<> done) = 0;

 protected:
  ~IIMChatMgr() = default;
};

// Events are raised on engine threads, in the order in which things happened to the account. The
// two lists of the message events run side by side: the conversation and its message.

// What happens in single chats.
struct IMSingleChatEvents {
  base::event<void(const std::vector<IMUserID>&, const std::vector<IMMessage>&)> on_receive_new_msg;
  // The truth value tells whether more offline messages follow. The lists are empty when more were
  // promised and none of those that came is to be told of.
  base::event<void(bool, const std::vector<IMUserID>&, const std::vector<IMMessage>&)>
      on_receive_offline_msg;
  // Also for a message that another device of the account sent; it has its final status then.
  base::event<void(const std::vector<IMUserID>&, const std::vector<IMMessage>&)> on_send_new_msg;
  // Conversation, kind, msgid, server time (0 when it failed or is not known yet), outcome.
  base::event<void(const IMUserID&, IMMsgType, std::int64_t, std::int64_t, const ResultCode&)>
      on_send_msg_status;
  // The peer's typing state. It is not repeated; a state of typing is over after some seconds.
  base::event<void(const IMUserID&, InputStatus)> on_peer_input;
  // The peer shook the window. Comes after the event of the message that carries the shake, and
  // not for offline messages.
  base::event<void(const IMUserID&)> on_shake_msg;
  // The peer has reported messages of this account read.
  base::event<void(const IMUserID&, const std::vector<IMFlagMsgReaded>&)> on_flag_my_msg_readed;
  // A message was taken back, by the peer or by this account.
  base::event<void(const IMUserID&, const IMMsgWithdraw&, const ResultCode&)> on_msg_withdraw;
};

// What happens in tribes; each event is as its namesake above.
struct IMTribeChatEvents {
  base::event<void(const std::vector<IMTribeID>&, const std::vector<TMMessage>&)>
      on_receive_new_msg;
  base::event<void(bool, const std::vector<IMTribeID>&, const std::vector<TMMessage>&)>
      on_receive_offline_msg;
  base::event<void(const std::vector<IMTribeID>&, const std::vector<TMMessage>&)> on_send_new_msg;
  base::event<void(const IMTribeID&, TMMsgType, std::int64_t, std::int64_t, const ResultCode&)>
      on_send_msg_status;
  base::event<void(const IMTribeID&, const TMMsgWithdraw&, const ResultCode&)> on_msg_withdraw;
  // Mentions were read: other members read mentions of own messages, or the account read mentions
  // of it, on whatever device. Several readings may come as one event.
  base::event<void(const IMTribeID&, const IMAtReaded&)> on_tribe_at_msg_readed;
};

using BizSysMsg = IMMessage;
using BizSubscribeMsg = IMMessage;

// What arrives in virtual conversations, in the order of arrival.
struct IMVirtualChatEvents {
  base::event<void(const std::vector<BizSysMsg>&)> on_receive_sys_msg;
  base::event<void(const std::vector<BizSubscribeMsg>&)> on_receive_subscribe_msg;
};

// The managers. Their events live as long as the manager.

class IIMSingleChatMgr : public IIMChatMgr {
 public:
  virtual IMSingleChatEvents& Events() = 0;

 protected:
  ~IIMSingleChatMgr() = default;
};

class IIMTribeChatMgr : public IIMChatMgr {
 public:
  virtual IMTribeChatEvents& Events() = 0;

 protected:
  ~IIMTribeChatMgr() = default;
};

// System and subscription messages that look as if a user had sent them.
class IIMVirtualChatMgr : public IIMChatMgr {
 public:
  virtual IMVirtualChatEvents& Events() = 0;

 protected:
  ~IIMVirtualChatMgr() = default;
};

}  // namespace imsdk::biz
