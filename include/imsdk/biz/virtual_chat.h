// Virtual conversations of one account: system and subscription messages that look as if a user
// had sent them.
#pragma once

#include <vector>

#include "imsdk/biz/single_chat.h"

namespace imsdk::biz {

using BizSysMsg = IMMessage;
using BizSubscribeMsg = IMMessage;

// Raised on engine threads, in the order of arrival.
struct IMVirtualChatEvents {
  base::event<void(const std::vector<BizSysMsg>&)> on_receive_sys_msg;
  base::event<void(const std::vector<BizSubscribeMsg>&)> on_receive_subscribe_msg;
};

// The virtual conversations of one account. Counted, any thread.
class IIMVirtualChatMgr : public IKexCOMRefCounted {
 public:
  // The virtual conversation `cid`; null when there is none, or the account is logged out. What
  // needs a peer (sending, withdrawing, roaming, read reports) is refused with `kEngineRefused`.
  virtual RefPtr<IIMConversation> GetConversation(const IMUserID& cid) = 0;
  // Every virtual conversation, the one with the newest message first.
  virtual std::vector<IMUnreadCount> GetConversations() = 0;
  // Lives as long as the manager.
  virtual IMVirtualChatEvents& Events() = 0;

 protected:
  ~IIMVirtualChatMgr() = default;
};

}  // namespace imsdk::biz
