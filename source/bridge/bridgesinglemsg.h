// Business module "im.singlemsg": one-to-one chats.
#pragma once

#include <vector>

#include "imsdk/biz/single_chat.h"
#include "source/bridge/jsparams/messagerecords.h"
#include "source/bridge/methodtable.h"

namespace imsdk::bridge {

class CBridgeSingleMsg final : public CBridgeBase {
 public:
  using CBridgeBase::CBridgeBase;
  using Conversation = RefPtr<biz::IIMConversation>;
  using ChatMgr = RefPtr<biz::IIMSingleChatMgr>;

  std::span<const std::wstring_view> Notifications() const override;

  void GetNewMsg(const HisMsgRequest& request, Conversation chat, Call<biz::IMMessagePage> call);
  void PeekNewMsg(const HisMsgRequest& request, Conversation chat, Call<biz::IMMessagePage> call);
  void GetLocalHisMsg(const HisMsgRequest& request, Conversation chat,
                      Call<biz::IMMessagePage> call);
  void GetUnreadCount(const CidRequest& request, Conversation chat, Call<CountAnswer> call);
  void GetUnreadCountInBulk(const CidsRequest& request, ChatMgr mgr, Call<UnreadsAnswer> call);
  void SetMsgRead(const CidRequest& request, Conversation chat, Call<NoKeys> call);
  void SendNormalChatMsg(const SendMsgRequest& request, Conversation chat, Call<NoKeys> call);
  void SendAutoReplyMsg(const SendMsgRequest& request, Conversation chat, Call<NoKeys> call);
  void SendBroadcastMsg(const BroadcastMsgRequest& request, ChatMgr mgr, Call<NoKeys> call);
  void ReSendChatMsg(const MsgRequest& request, Conversation chat, Call<NoKeys> call);

  void FastReSendChatMsg(const MsgRequest& request, Conversation chat, Call<NoKeys> call);
  void ConvertMsgText2Emotion(const EmotionText& request, Call<EmotionText> call);

  // Targets of the handlers: the conversation of the request's "cid", or the account's chats.
  template <class Request>
  biz::ResultCode Find(const Request& request, Conversation* chat, const CallBase& call) {
    return FindConversation(request.cid, chat, call);
  }
  template <class Request>
  biz::ResultCode Find(const Request&, ChatMgr* mgr, const CallBase&) {
    *mgr = mgr_;
    if (mgr_) return {};
    return {E_UNEXPECTED, 0, L"failed"};
  }

 private:
  std::span<const MethodRow> Methods() const override;
  void OnAccountChanged() override;
  biz::ResultCode FindConversation(const biz::IMUserID& cid, Conversation* chat,
                                   const CallBase& call) const;
  // Marks what a person can see now as read.
  void MarkSeen(const Conversation& chat, const CallBase& call) const;

  // Engine events, raised on engine threads.
  void OnReceiveNewMsg(const std::vector<biz::IMUserID>& cids,
                       const std::vector<biz::IMMessage>& msgs);
  void OnReceiveOfflineMsg(bool more, const std::vector<biz::IMUserID>& cids,
                           const std::vector<biz::IMMessage>& msgs);
  void OnSendNewMsg(const std::vector<biz::IMUserID>& cids,
                    const std::vector<biz::IMMessage>& msgs);
  void OnSendMsgStatus(const biz::IMUserID& cid, biz::IMMsgType type, std::int64_t msgid,
                       std::int64_t svrtime, const biz::ResultCode& result);

  ChatMgr mgr_;  // of the current account, or null. View's thread
};

}  // namespace imsdk::bridge
