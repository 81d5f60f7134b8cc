// The account's conversations of some kinds as the bridge sees them.
#pragma once

#include <type_traits>
#include <utility>

#include "account/session/account_parts.h"
#include "account/store/message_search.h"
#include "imsdk/biz/chat_mgr.h"

namespace imsdk::account {

// `Interface` is the manager of single chats, of tribes or of virtual conversations.
template <class Interface>
class ChatMgr final : public RefPtrCounted<Interface> {
 public:
  using EventsOfKind = std::remove_reference_t<decltype(std::declval<Interface>().Events())>;

  // `events` are those of the account's state.
  ChatMgr(AccountParts account, ChatKinds kinds, EventsOfKind& events)
      : account_(std::move(account)), kinds_(std::move(kinds)), events_(events) {}

  RefPtr<biz::IIMConversation> GetConversation(const biz::IMConversationID& cid) override;
  void GetUnreadCounts(const biz::IMConversations& request,
                       biz::IMCallback<biz::IMUnreads> done) override;
  void SearchMsg(const biz::IMSearchRequest& request,
                 biz::IMCallback<biz::IMSearchPage> done) override;
  void SearchConversations(const biz::IMSearchRequest& request,
                           biz::IMCallback<biz::IMConversations> done) override;
  void SetNewMsgMaxCache(const biz::IMMaxCacheRequest& request, biz::IMCallback<> done) override;
  void GetRoamStatus(const biz::IMNothing& request,
                     biz::IMCallback<biz::IMRoamStatus> done) override;
  void SetRoamStatus(const biz::IMSetRoamRequest& request, biz::IMCallback<> done) override;
  EventsOfKind& Events() override { return events_; }

 private:
  const AccountParts account_;
  const ChatKinds kinds_;
  EventsOfKind& events_;
};

extern template class ChatMgr<biz::IIMSingleChatMgr>;
extern template class ChatMgr<biz::IIMTribeChatMgr>;
extern template class ChatMgr<biz::IIMVirtualChatMgr>;

// Whether the text can be a user: both parts are there and neither is too long.
bool CanNameUser(const biz::IMUserID& user);

}  // namespace imsdk::account
