#include "source/bridge/bridgetribemsgfeed.h"

#include <utility>

#include "source/bridge/conversationfeed.h"
#include "source/bridge/jsparams/tribemsgrecords.h"

namespace imsdk::bridge {
namespace {

using Feed = ConversationFeed<TribeForm, "CBridgeTribeMsg">;

class TribeMsgFeed final : public Feed {
  static constexpr Notification<OfflineMsgsNotify, TribeForm> kOnReceiveOfflineMsg{
      L"onReceiveOfflineMsg", kOfflineSays};
  static constexpr Notification<TribeAtReadedNotify> kOnTribeAtMsgReaded{
      L"onTribeAtMsgReaded",
      "Mentions were read: by others in own messages, or by the account on some device."};

 public:
  static constexpr const NotifyInfo* kRows[] = {&kOnReceiveNewMsg,  &kOnReceiveOfflineMsg,
                                                &kOnSendNewMsg,     &kOnSendMsgStatus,
                                                &kOnMsgWithdrawNty, &kOnTribeAtMsgReaded};

  explicit TribeMsgFeed(RefPtr<biz::IIMAccount> account) : Feed(std::move(account), kRows) {}

 private:
  void Update() override {
    if (mgr_) return;
    mgr_ = account().GetIMTribeChatMgr();
    SubscribeMsgs(mgr_->Events());
    Subscribe(mgr_->Events().on_tribe_at_msg_readed, &TribeMsgFeed::OnTribeAtMsgReaded);
  }

  void OnReceiveNewMsg(const Messages& msgs) override { Notify(kOnReceiveNewMsg, {&msgs}); }
  void OnReceiveOfflineMsg(const Messages& msgs) override {
    const OfflineMsgsNotify payload{{&msgs}};
    ns_log::CTraceProxy(ns_log::kRoutine, {"CBridgeTribeMsg::OnReceiveOfflineMsg"},
                        L"on offline msg.")
        .Brief("_brief_,wscResult", [&payload](std::wstring* made) -> std::wstring_view {
          return *made = kOnReceiveOfflineMsg.Text(payload);
        });
    Notify(kOnReceiveOfflineMsg, payload);
  }
  void OnSendNewMsg(const Messages& msgs) override { Notify(kOnSendNewMsg, {&msgs}); }
  void OnTribeAtMsgReaded(const biz::IMTribeID& tribe, const biz::IMAtReaded& readed) {
    Notify(kOnTribeAtMsgReaded, {tribe, readed});
  }

  RefPtr<biz::IIMTribeChatMgr> mgr_;  // null until subscribed
};

}  // namespace

constinit const NotifyList kTribeMsgNotifications = TribeMsgFeed::kRows;

std::shared_ptr<CAccountFeed> MakeTribeMsgFeed(RefPtr<biz::IIMAccount> account) {
  return std::make_shared<TribeMsgFeed>(std::move(account));
}

}  // namespace imsdk::bridge
