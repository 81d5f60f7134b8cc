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

// How the conversations of one module differ, beside their records (jsparams/form.h). Static.
struct ConversationKind {
  // The account's manager of them.
  RefPtr<biz::IIMChatMgr> (*chats)(biz::IIMAccount& account);
  // Traces new messages on their way to the page.
  void (*trace_new)(const std::vector<biz::IMMessage>& msgs, const ns_log::TraceSite& site);
  // Traces what a fetch brought. `site` is that of who takes its answer: `fetched_by`, or without
  // it a function inside the handler.
  void (*trace_fetched)(const biz::ResultCode& result, const std::vector<biz::IMMessage>& msgs,
                        const ns_log::TraceSite& site);
  const char* fetched_by = nullptr;
  bool traces_files = false;  // every file that comes with a body, not only unreadable ones
};

// The base of the modules whose messages belong to conversations. Its member functions serve every
// kind; the rows are in conversationrows.h. View's thread.
class CBridgeConversation : public CBridgeBase {
 public:
  CBridgeConversation(ModuleContext context, const ConversationKind& kind, NotifyList notifications,
                      CAccountFeed::Make feed, const LookUp& look_up)
      : CBridgeBase(std::move(context), notifications, feed, look_up), kind_(kind) {}
  using Chat = RefPtr<biz::IIMConversation>;
  using ChatMgr = RefPtr<biz::IIMChatMgr>;
  using PageCall = Call<biz::IMMessagePage>;

  biz::ResultCode Find(const biz::IMConversationID& cid, Chat* chat) const;
  biz::ResultCode Find(ChatMgr* mgr) const;

  // New messages.
  void GetNewMsg(const In<biz::IMPageRequest>& request, Chat chat, PageCall call);
  void GetOfflineMsg(const In<biz::IMNothing>& request, Chat chat, PageCall call);
  void SetMsgRead(const In<biz::IMNothing>& request, Chat chat, Call<> call);

  // History and content: bridgeconversationhis.cpp.
  // Answers the messages that `kFetch` of the conversation gets.
  template <auto kFetch, class Request>
  void Fetch(const In<Request>& request, Chat chat, PageCall call) {
    (chat.get()->*kFetch)(request, RspFetchMsg(std::move(call)));
  }
  void GetRemoteHisMsg(const In<biz::IMPageRequest>& request, Chat chat, PageCall call);
  void DeleteLocalMsg(const In<biz::IMDeleteRequest>& request, Chat chat, Call<biz::IMCount> call);
  // Answers with what `kSearch` of the conversation finds.
  template <auto kSearch>
  void Search(const In<biz::IMSearchRequest>& request, Chat chat, Call<SearchAnswer> call) {
    (chat.get()->*kSearch)(request, AnswerSearch(request, std::move(call)));
  }
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
  void ReSendMsg(const In<biz::IMResendRequest>& request, Chat chat, Call<> call) {
    ReSend({request.msgid, kAtOnce}, std::move(chat), std::move(call));
  }
  void EditPic2SendMsg(const EditPicRequest& request, ChatMgr mgr, Call<> call);
  void ConvertMsgText2Emotion(const EmotionText& request, Call<EmotionText> call);

 protected:
  void OnAccountChanged(biz::IIMAccount* engine) override;
  // The engine's form of a body. What cannot be read of it is left out and traced.
  biz::IMBody ToEngine(const std::vector<BodyItem>& items, const CallBase& call) const;

 private:
  // Returns what tells whether a person can see the conversation when it is called. Any thread may
  // call it.
  std::function<bool()> AskWindow(const Chat& chat, const CallBase& call) const;
  void Send(const In<SendMsgRequest>& request, bool autoreply, Chat chat, Call<> call) const;
  static void ReSend(const biz::IMResendRequest& request, Chat chat, Call<> call);
  // Answers with messages that had to be fetched, then hands them to `then`. A failure is answered
  // and that is all.
  biz::IMCallback<biz::IMMessagePage> RspFetchMsg(
      PageCall call, std::function<void(const biz::IMMessagePage&)> then = nullptr) const;
  ns_log::TraceSite FetchSite(const CallBase& call) const;
  // Answers with what was found and with what it was looked for by.
  static biz::IMCallback<biz::IMSearchPage> AnswerSearch(const In<biz::IMSearchRequest>& request,
                                                         Call<SearchAnswer> call);

  const ConversationKind& kind_;
  ChatMgr mgr_;  // of the current account, or null
};

}  // namespace imsdk::bridge
