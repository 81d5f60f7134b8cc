// The account's one-to-one conversations as the bridge sees them.
#pragma once

#include <utility>
#include <vector>

#include "account/session/account_parts.h"
#include "imsdk/biz/single_chat.h"

namespace imsdk::account {

class SingleChatMgr final : public RefPtrCounted<biz::IIMSingleChatMgr> {
 public:
  explicit SingleChatMgr(AccountParts account) : account_(std::move(account)) {}

  RefPtr<biz::IIMConversation> GetConversation(const biz::IMUserID& cid) override;
  std::vector<biz::IMUnreadCount> GetConversations() override;
  void SearchMsg(const biz::IMSearchRequest& request, biz::IMSearchCallback done) override;
  void SearchConversations(const biz::IMSearchRequest& request, biz::IMUsersCallback done) override;
  void SetNewMsgMaxCache(std::int32_t count) override;
  void GetRoamStatus(biz::IMRoamStatusCallback done) override;
  void SetRoamStatus(std::int32_t status, biz::IMDoneCallback done) override;
  biz::IMSingleChatEvents& Events() override { return account_.state->events; }

 private:
  const AccountParts account_;
};

// Whether the text can be a user: both parts are there and neither is too long.
bool CanNameUser(const biz::IMUserID& user);

}  // namespace imsdk::account
