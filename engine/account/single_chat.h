// The account's conversations as the bridge sees them.
#pragma once

#include <memory>

#include "account/account_state.h"
#include "account/outbox.h"
#include "imsdk/biz/single_chat.h"

namespace imsdk::account {

// A conversation holds nothing of its own, so that one may be made at each request.
class Conversation final : public RefPtrCounted<biz::IIMConversation> {
 public:
  Conversation(std::shared_ptr<AccountState> state, std::shared_ptr<Outbox> outbox,
               const biz::IMUserID& cid)
      : state_(std::move(state)), outbox_(std::move(outbox)), cid_(cid) {}

  const biz::IMUserID& GetCID() const override { return cid_; }
  biz::IMMessagePage GetNewMsg(const biz::IMPageRequest& request) override;
  void SetNewMsgReaded(biz::IMDoneCallback done) override;
  std::int32_t GetUnreadCount() const override;
  void GetLocalHisMsg(const biz::IMPageRequest& request, biz::IMPageCallback done) override;
  std::int32_t SendMsg(std::vector<biz::IMBodyItem> body,
                       const biz::IMSendOptions& options) override;
  std::int32_t ReSendMsg(std::int64_t msgid) override;

 private:
  const std::shared_ptr<AccountState> state_;
  const std::shared_ptr<Outbox> outbox_;
  const biz::IMUserID cid_;
};

class SingleChatMgr final : public RefPtrCounted<biz::IIMSingleChatMgr> {
 public:
  SingleChatMgr(std::shared_ptr<AccountState> state, std::shared_ptr<Outbox> outbox)
      : state_(std::move(state)), outbox_(std::move(outbox)) {}

  RefPtr<biz::IIMConversation> GetConversation(const biz::IMUserID& cid) override;
  std::vector<biz::IMUnreadCount> GetConversations() override;
  biz::IMSingleChatEvents& Events() override { return state_->events; }

 private:
  const std::shared_ptr<AccountState> state_;
  const std::shared_ptr<Outbox> outbox_;
};

// Whether the text can be a user: both parts are there and neither is too long.
bool CanNameUser(const biz::IMUserID& user);

}  // namespace imsdk::account
