// What the feeds of modules with conversations have in common: messages that come, are sent and are
// taken back.
#pragma once

#include <memory>
#include <utility>
#include <vector>

#include "source/bridge/accountfeed.h"
#include "source/bridge/jsparams/hisrecords.h"
#include "source/bridge/jsparams/idtext.h"
#include "source/bridge/methodtable.h"

namespace imsdk::bridge {

// Conversations of the form `F`; `kModule` is the module's class as traces name it.
template <class F, Name kModule>
class ConversationFeed : public CAccountFeed {
 protected:
  using MsgsRow = Notification<MsgsNotify, F>;
  using Messages = std::vector<biz::IMMessage>;

  static constexpr MsgsRow kOnReceiveNewMsg{L"onReceiveNewMsg", "New messages came."};
  static constexpr MsgsRow kOnSendNewMsg{
      L"onSendNewMsg", "Messages are being sent from this account, also on another device."};
  static constexpr Notification<SendMsgStatusNotify> kOnSendMsgStatus{
      L"onSendMsgStatus", "A message was sent, or failed."};
  static constexpr Notification<WithdrawNotify, F> kOnMsgWithdrawNty{
      L"onMsgWithdrawNty", "A message was taken back, by its sender or by this account."};

  // Of "onReceiveOfflineMsg", whose payload is the module's.
  static constexpr char kOfflineSays[] = "Messages came that were sent while nobody was logged in.";

  using CAccountFeed::CAccountFeed;

  // Subscribes to what the events of all such conversations have.
  template <class Raised>
  void SubscribeMsgs(Raised& raised) {
    Handle(raised.on_receive_new_msg, [](ConversationFeed& feed, const auto&,
                                         const Messages& msgs) { feed.OnReceiveNewMsg(msgs); });
    Handle(raised.on_receive_offline_msg,
           [](ConversationFeed& feed, bool, const auto&, const Messages& msgs) {
             feed.OnReceiveOfflineMsg(msgs);
           });
    Handle(raised.on_send_new_msg, [](ConversationFeed& feed, const auto&, const Messages& msgs) {
      feed.OnSendNewMsg(msgs);
    });
    Handle(raised.on_send_msg_status,
           [](ConversationFeed& feed, const auto&, biz::IMMsgType type, std::int64_t msgid,
              std::int64_t svrtime, const biz::ResultCode& result) {
             feed.Notify(kOnSendMsgStatus, {Envelope(result), type, msgid, svrtime});
           });
    Handle(raised.on_msg_withdraw,
           [](ConversationFeed& feed, const auto&, const biz::IMMsgWithdraw& withdraw,
              const biz::ResultCode& result) { feed.OnMsgWithdraw(withdraw, result); });
  }

  virtual void OnReceiveNewMsg(const Messages& msgs) = 0;
  virtual void OnReceiveOfflineMsg(const Messages& msgs) = 0;
  virtual void OnSendNewMsg(const Messages& msgs) = 0;

 private:
  template <class Sig, class Handler>
  void Handle(base::event<Sig>& event, Handler handler) {
    Subscribe<ConversationFeed>(event, std::move(handler));
  }
  // The page is told "success" or "failed".
  void OnMsgWithdraw(const biz::IMMsgWithdraw& withdraw, const biz::ResultCode& result) {
    ns_log::CTraceProxy(ns_log::kRoutine, {kTraceName<kModule, "OnMsgWithdraw">.data()},
                        L"on msg withdraw.")
        .Brief("_brief_,withdraw.cid, withdraw.fromid, withdraw.msgid",
               ConversationText(withdraw.cid), IdText(withdraw.fromid), withdraw.msgid);
    Notify(kOnMsgWithdrawNty, {Envelope({result.code, result.subcode, {}}), {withdraw}});
  }
};

}  // namespace imsdk::bridge
