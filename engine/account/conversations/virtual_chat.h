// The account's virtual conversations as the bridge sees them.
#pragma once

#include <utility>
#include <vector>

#include "account/conversations/conversation.h"
#include "account/session/account_parts.h"
#include "imsdk/biz/virtual_chat.h"

namespace imsdk::account {

class VirtualChatMgr final : public RefPtrCounted<biz::IIMVirtualChatMgr> {
 public:
  explicit VirtualChatMgr(AccountParts account) : account_(std::move(account)) {}

  RefPtr<biz::IIMConversation> GetConversation(const biz::IMUserID& cid) override {
    if (account_.state->closed) return {};
    const auto key = account_.state->chat.FindVirtual(WellFormed(cid));
    return key ? RefPtr<biz::IIMConversation>(new Conversation(account_, *key))
               : RefPtr<biz::IIMConversation>();
  }
  std::vector<biz::IMUnreadCount> GetConversations() override {
    if (account_.state->closed) return {};
    return account_.state->chat.Conversations(true);
  }
  biz::IMVirtualChatEvents& Events() override { return account_.state->virtual_events; }

 private:
  const AccountParts account_;
};

}  // namespace imsdk::account
