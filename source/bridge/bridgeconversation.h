// What all modules with conversations have in common: new messages, history, search, sending.
#pragma once

#include <functional>
#include <vector>

#include "imsdk/biz/chat_mgr.h"
#include "source/bridge/jsparams/contentrecords.h"
#include "source/bridge/jsparams/hisrecords.h"
#include "source/bridge/jsparams/sendrecords.h"
#include "source/bridge/methodtable.h"

namespace imsdk::bridge {

// The base of the modules whose messages belong to conversations. Its member functions serve every
// form (jsparams/form.h); the rows are in conversationrows.h. View's thread.
class CBridgeConversation : public CBridgeBase {
 public:
  using CBridgeBase::CBridgeBase;
  using Chat = RefPtr<biz::IIMConversation>;
  using ChatMgr = RefPtr<biz::IIMChatMgr>;
  using PageCall = Call<biz::IMMessagePage>;

  biz::ResultCode Find(const biz::IMConversationID& cid, Chat* chat) const;
  biz::ResultCode Find(ChatMgr* mgr) const;

  // New messages.
  void GetNewMsg(const In<biz::IMPageRequest>& request, Chat chat, PageCall call);
  void GetOfflineMsg(const In<biz::IMNothing>& request, Chat chat, PageCall call);

  // History and content: bridgeconversationhis.cpp.
  // Answers the messages that `kFetch` of the conversation gets.
  template <auto kFetch, class Request>
  void Fetch(const In<Request>& request, Chat chat, PageCall call) {
    (chat.get()->*kFetch)(request, RspFetchMsg(std::move(call)));
  }
  void GetRemoteHisMsg(const In<biz::IMPageRequest>& request, Chat chat, PageCall call);
  void DeleteLocalMsg(const In<biz::IMDeleteRequest>& request, Chat chat, Call<biz::IMCount> call);
  void SearchDBMsg(const In<biz::IMSearchRequest>& request, Chat chat, Call<SearchAnswer> call);
  void SearchDBMsg2(const In<biz::IMSearchRequest>& request, ChatMgr mgr, Call<SearchAnswer> call);
  void SearchDBMsgCid(const SearchCidRequest& request, ChatMgr mgr, Call<SearchCidAnswer> call);
  void GetDynamicMsg(const DynamicMsgRequest& request, Call<DynamicMsgAnswer> call);

  // Sending: bridgeconversationsend.cpp.
  template <bool kAutoReply>
  void SendMsg(const In<SendMsgRequest>& request, Chat chat, Call<> call) {
    Send(request, kAutoReply, std::move(chat), std::move(call));
  }
  void SendBroadcastMsg(const BroadcastMsgRequest& request, ChatMgr mgr, Call<> call);
  void ForwardChatMsg(const ForwardMsgRequest& request, ChatMgr mgr, Call<> call);
  template <bool kAtOnce>
  void ReSendMsg(const In<biz::IMMsgRequest>& request, Chat chat, Call<> call) {
    ReSend({request.msgid, kAtOnce}, std::move(chat), std::move(call));
  }
  void EditPic2SendMsg(const EditPicRequest& request, ChatMgr mgr, Call<> call);
  void ConvertMsgText2Emotion(const EmotionText& request, Call<EmotionText> call);

 protected:
  void OnAccountChanged(biz::IIMAccount* engine) override;
  // The account's manager of the form's conversations.
  virtual ChatMgr ChatMgrOf(biz::IIMAccount& account) const = 0;

 private:
  // Returns what tells whether a person can see the conversation when it is called. Any thread may
  // call it.
  std::function<bool()> AskWindow(const Chat& chat, const CallBase& call) const;
  static void Send(const In<SendMsgRequest>& request, bool autoreply, Chat chat, Call<> call);
  static void ReSend(const biz::IMResendRequest& request, Chat chat, Call<> call);
  // Answers with messages that had to be fetched, then hands them to `then`. A failure is answered
  // and that is all.
  static biz::IMCallback<biz::IMMessagePage> RspFetchMsg(
      PageCall call, std::function<void(const biz::IMMessagePage&)> then = nullptr);

  ChatMgr mgr_;  // of the current account, or null
};

}  // namespace imsdk::bridge
