// One conversation of an account as the bridge sees it.
#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "account/conversations/chat_key.h"
#include "account/session/account_parts.h"
#include "imsdk/biz/single_chat.h"

namespace imsdk::account {

// A conversation holds nothing of its own, so that one may be made at each request. One with a
// virtual user refuses what needs a peer.
class Conversation final : public RefPtrCounted<biz::IIMConversation> {
 public:
  Conversation(AccountParts account, ChatKey key)
      : account_(std::move(account)), key_(std::move(key)) {}

  const biz::IMUserID& GetCID() const override { return key_.cid; }

  // conversation.cpp: new messages, reading, sending.
  biz::IMMessagePage GetNewMsg(const biz::IMPageRequest& request) override;
  void GetOfflineMsg(biz::IMPageCallback done) override;
  void SetNewMsgReaded(biz::IMDoneCallback done) override;
  std::int32_t GetUnreadCount() const override;
  void GetReadedBoundary(biz::IMPositionCallback done) override;
  std::int32_t SendMsg(std::vector<biz::IMBodyItem> body,
                       const biz::IMSendOptions& options) override;
  std::int32_t ReSendMsg(std::int64_t msgid, bool at_once) override;
  void WithdrawMsg(std::int64_t msgid, biz::IMDoneCallback done) override;
  void GetFlagsMyMsgReaded(const std::vector<std::int64_t>& msgids,
                           biz::IMFlagsCallback done) override;
  void SetFlagsPeerMsgReaded(const std::vector<std::int64_t>& msgids,
                             biz::IMDoneCallback done) override;
  void ShieldAutoReply(bool ignore, biz::IMDoneCallback done) override;
  void AddSysMsg(const std::wstring& text, biz::IMDoneCallback done) override;

  // conversation_history.cpp: pages, roaming, search, deletion.
  void GetLocalHisMsg(const biz::IMPageRequest& request, biz::IMPageCallback done) override;
  void GetRemoteHisMsg(const biz::IMPageRequest& request, biz::IMPageCallback done) override;
  void RoamMsg(const biz::IMRoamRequest& request, biz::IMRoamCallback done) override;
  void ClearRoamedTime(biz::IMDoneCallback done) override;
  void SearchMsgByID(std::int64_t msgid, biz::IMPageCallback done) override;
  void SearchMsg(const biz::IMSearchRequest& request, biz::IMSearchCallback done) override;
  void GetMsgPicture(const biz::IMPictureRequest& request, biz::IMPicturesCallback done) override;
  void DeleteLocalMsg(const std::vector<std::int64_t>& msgids, biz::IMCountCallback done) override;
  void DeleteAllLocalMsg(biz::IMCountCallback done) override;

 private:
  const std::shared_ptr<AccountState>& state() const { return account_.state; }
  // Ends an operation that a virtual conversation has not. False for a single chat.
  template <class... Results>
  bool NeedsPeer(const std::function<void(const biz::ResultCode&, Results...)>& done) const {
    if (!key_.is_virtual()) return false;
    done({biz::kEngineRefused, 0, L"a virtual conversation has no peer"},
         std::decay_t<Results>{}...);
    return true;
  }

  const AccountParts account_;
  const ChatKey key_;
};

}  // namespace imsdk::account
