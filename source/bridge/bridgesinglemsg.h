// Business module "im.singlemsg": one-to-one chats.
#pragma once

#include <vector>

#include "imsdk/client/translation.h"
#include "source/bridge/bridgeconversation.h"
#include "source/bridge/jsparams/contentrecords.h"
#include "source/bridge/jsparams/sendrecords.h"

namespace imsdk::bridge {

// The method table and the events are in bridgesinglemsg.cpp, sending in bridgesinglesend.cpp,
// history and read state in bridgesinglehis.cpp.
class CBridgeSingleMsg final : public CBridgeConversation {
 public:
  using CBridgeConversation::CBridgeConversation;
  using CBridgeConversation::Find;
  using ChatMgr = RefPtr<biz::IIMSingleChatMgr>;
  using PageCall = Call<biz::IMMessagePage>;

  std::span<const std::wstring_view> Notifications() const override;

  void GetOfflineMsg(const CidRequest& request, Conversation chat, PageCall call);
  void PeekOfflineMsg(const CidRequest& request, Conversation chat, PageCall call);
  void SetNewMsgMaxCache(const MaxCacheRequest& request, ChatMgr mgr, Call<NoKeys> call);

  void SendNormalChatMsg(const SendMsgRequest& request, Conversation chat, Call<NoKeys> call);
  void SendAutoReplyMsg(const SendMsgRequest& request, Conversation chat, Call<NoKeys> call);
  void SendBroadcastMsg(const BroadcastMsgRequest& request, ChatMgr mgr, Call<NoKeys> call);
  void ForwardChatMsg(const ForwardMsgRequest& request, ChatMgr mgr, Call<NoKeys> call);
  void ReSendChatMsg(const MsgRequest& request, Conversation chat, Call<NoKeys> call);
  void FastReSendChatMsg(const MsgRequest& request, Conversation chat, Call<NoKeys> call);
  void EditPic2SendMsg(const EditPicRequest& request, ChatMgr mgr, Call<NoKeys> call);
  void ShieldAutoReply(const ShieldRequest& request, Conversation chat, Call<NoKeys> call);
  void ConvertMsgText2Emotion(const EmotionText& request, Call<EmotionText> call);

  void GetRemoteHisMsg(const HisMsgRequest& request, Conversation chat, PageCall call);
  void GetFlagsMyMsgReaded(const MsgsRequest& request, Conversation chat, Call<ReadFlags> call);
  void SetFlagsPeerMsgReaded(const MsgsRequest& request, Conversation chat, Call<NoKeys> call);
  void DoChatMsgWithdraw(const WithdrawRequest& request, Conversation chat, Call<NoKeys> call);
  void SearchMsgByID(const MsgRequest& request, Conversation chat, PageCall call);
  void SearchDBMsg(const SearchRequest& request, Conversation chat, Call<SearchAnswer> call);
  void SearchDBMsg2(const SearchRequest& request, ChatMgr mgr, Call<SearchAnswer> call);
  void SearchDBMsgCid(const SearchRequest& request, ChatMgr mgr, Call<SearchCidAnswer> call);
  void GetMsgPicture(const PictureRequest& request, Conversation chat, Call<PicturesAnswer> call);
  void RoamMsg(const RoamRequest& request, Conversation chat, Call<biz::IMRoamed> call);
  void ClearRoamedTime(const CidRequest& request, Conversation chat, Call<NoKeys> call);
  void GetRoamStatus(const NoKeys& request, ChatMgr mgr, Call<biz::IMRoamStatus> call);
  void SetRoamStatus(const SetRoamRequest& request, ChatMgr mgr, Call<NoKeys> call);
  void GetDynamicMsg(const DynamicMsgRequest& request, Call<DynamicMsgAnswer> call);
  void AddAudio2textSettingRemind(const CidRequest& request, Conversation chat, Call<NoKeys> call);
  void GetTranslateSetting(const NoKeys& request, Call<TranslateSetting> call);
  void GetTranslateMsg(const TranslateMsg& request, Call<TranslateMsg> call);

  // The target of a handler that works on several conversations: the account's chats.
  template <class Request>
  biz::ResultCode Find(const Request&, ChatMgr* mgr, const CallBase&) {
    *mgr = mgr_;
    if (mgr_) return {};
    return {E_UNEXPECTED, 0, L"failed"};
  }

 private:
  std::span<const MethodRow> Methods() const override;
  void OwnerPreConstruct() override;
  void OnAccountChanged() override;
  Conversation GetConversation(const biz::IMUserID& cid) const override;
  std::vector<biz::IMUnreadCount> GetConversations() const override;
  bool IsReady() const override { return static_cast<bool>(mgr_); }

  // Events, raised on other threads.
  void OnReceiveNewMsg(const std::vector<biz::IMUserID>& cids,
                       const std::vector<biz::IMMessage>& msgs);
  void OnReceiveOfflineMsg(bool more, const std::vector<biz::IMUserID>& cids,
                           const std::vector<biz::IMMessage>& msgs);
  void OnSendNewMsg(const std::vector<biz::IMUserID>& cids,
                    const std::vector<biz::IMMessage>& msgs);
  void OnSendMsgStatus(const biz::IMUserID& cid, biz::IMMsgType type, std::int64_t msgid,
                       std::int64_t svrtime, const biz::ResultCode& result);
  void OnShakeMsg(const biz::IMUserID& cid);
  void OnFlagMyMsgReaded(const biz::IMUserID& cid, const std::vector<biz::IMFlagMsgReaded>& flags);
  void OnMsgWithdraw(const biz::IMUserID& cid, const biz::IMMsgWithdraw& withdraw,
                     const biz::ResultCode& result);
  void OnTranslateSetting(std::int32_t enable);

  // View's thread.
  ChatMgr mgr_;                                      // of the current account, or null
  RefPtr<client::ITranslationService> translation_;  // or null
};

}  // namespace imsdk::bridge
