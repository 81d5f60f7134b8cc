// One conversation of an account as the bridge sees it.
#pragma once

#include <utility>

#include "account/session/account_parts.h"
#include "account/session/capabilities.h"
#include "account/session/on_worker.h"
#include "imsdk/biz/conversation.h"

namespace imsdk::account {

// A conversation holds nothing of its own, so that one may be made at each request. It refuses what
// its kind cannot do.
class Conversation final : public RefPtrCounted<biz::IIMConversation> {
 public:
  Conversation(AccountParts account, biz::IMConversationID cid)
      : account_(std::move(account)), cid_(std::move(cid)) {}

  const biz::IMConversationID& GetCID() const override { return cid_; }

  // conversation.cpp: new messages, reading, sending.
  void GetNewMsg(const biz::IMPageRequest& request,
                 biz::IMCallback<biz::IMMessagePage> done) override;
  void GetOfflineMsg(const biz::IMNothing& request,
                     biz::IMCallback<biz::IMMessagePage> done) override;
  void SetMsgRead(const biz::IMNothing& request, biz::IMCallback<> done) override;
  void GetUnreadCount(const biz::IMNothing& request, biz::IMCallback<biz::IMCount> done) override;
  void GetReadedBoundary(const biz::IMNothing& request,
                         biz::IMCallback<biz::IMMsgPosition> done) override;
  void SendMsg(const biz::IMSendRequest& request, biz::IMCallback<> done) override;
  void ReSendMsg(const biz::IMResendRequest& request, biz::IMCallback<> done) override;
  void WithdrawMsg(const biz::IMWithdrawRequest& request, biz::IMCallback<> done) override;
  void GetFlagsMyMsgReaded(const biz::IMMsgsRequest& request,
                           biz::IMCallback<biz::IMReadFlags> done) override;
  void SetFlagsPeerMsgReaded(const biz::IMMsgsRequest& request, biz::IMCallback<> done) override;
  void ShieldAutoReply(const biz::IMShieldRequest& request, biz::IMCallback<> done) override;
  void AddSysMsg(const biz::IMNote& request, biz::IMCallback<> done) override;

  // conversation_history.cpp: pages, roaming, search, deletion.
  void GetLocalHisMsg(const biz::IMPageRequest& request,
                      biz::IMCallback<biz::IMMessagePage> done) override;
  void GetRemoteHisMsg(const biz::IMPageRequest& request,
                       biz::IMCallback<biz::IMMessagePage> done) override;
  void RoamMsg(const biz::IMRoamRequest& request, biz::IMCallback<biz::IMRoamed> done) override;
  void ClearRoamedTime(const biz::IMNothing& request, biz::IMCallback<> done) override;
  void SearchMsgByID(const biz::IMMsgRequest& request,
                     biz::IMCallback<biz::IMMessagePage> done) override;
  void SearchMsg(const biz::IMSearchRequest& request,
                 biz::IMCallback<biz::IMSearchPage> done) override;
  void GetMsgPicture(const biz::IMPictureRequest& request,
                     biz::IMCallback<biz::IMPictures> done) override;
  void DeleteLocalMsg(const biz::IMDeleteRequest& request,
                      biz::IMCallback<biz::IMCount> done) override;

  // conversation_mentions.cpp: mentions.
  void AtTribeMember(const biz::IMAtMemberRequest& request,
                     biz::IMCallback<biz::IMAtMember> done) override;
  void GetSendMsgTribeAtInfo(const biz::IMMsgRequest& request,
                             biz::IMCallback<biz::IMTribeAt> done) override;
  void GetTribeAtMsgUnreadCount(const biz::IMMsgsRequest& request,
                                biz::IMCallback<biz::IMAtUnread> done) override;
  void GetTribeAtMsgUnreadUsers(const biz::IMMsgRequest& request,
                                biz::IMCallback<biz::IMAtReaders> done) override;
  void RoamTribeAtMsgs(const biz::IMPageRequest& request,
                       biz::IMCallback<biz::IMMessagePage> done) override;
  void RoamTribeAtMsgContext(const biz::IMAtContextRequest& request,
                             biz::IMCallback<biz::IMMessagePage> done) override;
  void SetTribeAtMsgsReaded(const biz::IMMsgsRequest& request, biz::IMCallback<> done) override;
  void SearchAttentionMsg(const biz::IMSearchRequest& request,
                          biz::IMCallback<biz::IMSearchPage> done) override;

 private:
  const std::shared_ptr<AccountState>& state() const { return account_.state; }
  // Ends an operation that conversations of this kind have not. False for all others.
  template <class... Answer>
  bool Refuses(Ability ability, const biz::IMCallback<Answer...>& done) const {
    const biz::ResultCode why = Allows(cid_.type, ability);
    if (!why.ok()) done(why, Answer{}...);
    return !why.ok();
  }
  // Hands an operation of one of the account's parts its request and its callback, on the worker.
  template <class Request, class... Answer, class Work>
  void Pass(const Request& request, biz::IMCallback<Answer...> done, Work work) const {
    OnWorker(
        state(), request,
        [account = account_, cid = cid_, work, done](AccountState&, const auto& kept) {
          // It is open until it is answered.
          work(account, cid, *kept,
               [kept, done](const biz::ResultCode& result, const Answer&... answer) {
                 done(result, answer...);
               });
        },
        [done](const biz::ResultCode& why) { done(why, Answer{}...); });
  }

  const AccountParts account_;
  const biz::IMConversationID cid_;
};

}  // namespace imsdk::account
