// The base of a module with conversations of one form, and what those with a user have in common.
#pragma once

#include "source/bridge/bridgeconversation.h"
#include "source/bridge/sendercheck.h"

namespace imsdk::bridge {

using SingleForm = UserForm<biz::kCIDUser>;
// Whichever virtual kind a conversation is of, its manager finds it by its user.
using VirtualForm = UserForm<biz::kCIDSystem>;

template <class F>
class ConversationModule : public CBridgeConversation {
 public:
  using Form = F;
  using CBridgeConversation::CBridgeConversation;
};

// The kind of conversations that `kChats` of the account manages.
template <auto kChats>
constexpr ConversationKind KindOf(ConversationKind others) {
  others.chats = [](biz::IIMAccount& account) {
    return RefPtr<biz::IIMChatMgr>((account.*kChats)());
  };
  return others;
}

// Conversations with a user: each message is from one side or the other.
template <auto kChats>
inline constexpr ConversationKind kPeerKind = KindOf<kChats>({.chats = nullptr,
                                                              .trace_new = &CheckNewMsgs,
                                                              .trace_fetched = &CheckFetchedMsgs});

}  // namespace imsdk::bridge
