// The forms of conversations that there are modules for, and the base of such a module.
#pragma once

#include "source/bridge/bridgeconversation.h"

namespace imsdk::bridge {

struct SingleForm : UserForm<biz::kCIDUser> {
  static RefPtr<biz::IIMChatMgr> ChatMgrOf(biz::IIMAccount& account) {
    return account.GetIMSingleChatMgr();
  }
};

// Whichever virtual kind a conversation is of, its manager finds it by its user.
struct VirtualForm : UserForm<biz::kCIDSystem> {
  static RefPtr<biz::IIMChatMgr> ChatMgrOf(biz::IIMAccount& account) {
    return account.GetIMVirtualChatMgr();
  }
};

template <class F>
class ConversationModule : public CBridgeConversation {
 public:
  using Form = F;
  using CBridgeConversation::CBridgeConversation;

 protected:
  ChatMgr ChatMgrOf(biz::IIMAccount& account) const override { return F::ChatMgrOf(account); }
};

}  // namespace imsdk::bridge
