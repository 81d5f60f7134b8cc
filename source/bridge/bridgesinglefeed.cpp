#include "source/bridge/bridgesinglefeed.h"

#include <utility>

#include "imsdk/client/translation.h"
#include "kexcore/kexcom.h"
#include "source/bridge/conversationfeed.h"
#include "source/bridge/conversationform.h"
#include "source/bridge/jsparams/idtext.h"
#include "source/bridge/sendercheck.h"
#include "source/bridge/tracepoint.h"

namespace imsdk::bridge {
namespace {

constexpr Notification<PeerInputNotify> kOnPeerInputNotify{L"onPeerInputNotify",
                                                           "The peer began or stopped typing."};
constexpr Notification<biz::IMUserID> kOnShakeMsgNotify{L"onShakeMsgNotify",
                                                        "The peer sent a window shake."};
constexpr Notification<TranslateMsg> kOnTranslateMsgNotify{L"onTranslateMsgNotify",
                                                           "A message was translated."};
constexpr Notification<TranslateSetting> kOnTranslateSettingNotify{
    L"onTranslateSettingNotify", "Translation was switched on or off."};
constexpr Notification<biz::IMReadFlags, SingleForm> kOnFlagMyMsgReaded{
    L"onFlagMyMsgReaded", "The peer has read own messages."};

using Feed = ConversationFeed<SingleForm, "CBridgeSingleMsg">;

class SingleFeed final : public Feed {
  static constexpr MsgsRow kOnReceiveOfflineMsg{L"onReceiveOfflineMsg", kOfflineSays};

 public:
  static constexpr const NotifyInfo* kRows[] = {&kOnReceiveNewMsg,      &kOnReceiveOfflineMsg,
                                                &kOnSendNewMsg,         &kOnSendMsgStatus,
                                                &kOnPeerInputNotify,    &kOnShakeMsgNotify,
                                                &kOnTranslateMsgNotify, &kOnTranslateSettingNotify,
                                                &kOnFlagMyMsgReaded,    &kOnMsgWithdrawNty};

  explicit SingleFeed(RefPtr<biz::IIMAccount> account) : Feed(std::move(account), kRows) {}

 private:
  void Update() override {
    if (!mgr_) {
      mgr_ = account().GetIMSingleChatMgr();
      biz::IMSingleChatEvents& raised = mgr_->Events();
      SubscribeMsgs(raised);
      Subscribe(raised.on_peer_input, &SingleFeed::OnPeerInput);
      Subscribe(raised.on_shake_msg, &SingleFeed::OnShakeMsg);
      Subscribe(raised.on_flag_my_msg_readed, &SingleFeed::OnFlagMyMsgReaded);
    }
    if (!translation_ && (translation_ = kexcore::GetService<client::ITranslationService>())) {
      Subscribe(translation_->Events().on_translated, &SingleFeed::OnTranslated);
      Subscribe(translation_->Events().on_setting_changed, &SingleFeed::OnTranslateSetting);
    }
  }

  void NotifyMsgs(const MsgsRow& row, const Messages& msgs, const char* function,
                  std::wstring_view text) const {
    CheckSenders(msgs, {function}, text, kEventBrief);
    Notify(row, MsgsNotify{&msgs});
  }
  void OnReceiveNewMsg(const Messages& msgs) override {
    NotifyMsgs(kOnReceiveNewMsg, msgs, "CBridgeSingleMsg::OnReceiveNewMsg",
               L"on receive msg. fromid is invalid!!");
  }
  void OnReceiveOfflineMsg(const Messages& msgs) override {
    NotifyMsgs(kOnReceiveOfflineMsg, msgs, "CBridgeSingleMsg::OnReceiveOfflineMsg",
               L"on offline msg. fromid is invalid!!");
  }
  void OnSendNewMsg(const Messages& msgs) override {
    NotifyMsgs(kOnSendNewMsg, msgs, "CBridgeSingleMsg::OnSendNewMsg",
               L"on send msg. fromid is invalid!!");
  }
  // An account that tells sub-accounts apart sees their whole nicks.
  void OnPeerInput(const biz::IMUserID& peer, biz::InputStatus status) {
    const bool whole = account().GetAccountType() == biz::kSubAccount;
    const std::wstring_view nick = whole ? peer.nick : MainNick(peer.nick);
    Notify(kOnPeerInputNotify, {status, {peer.appkey, std::wstring(nick)}});
  }
  void OnShakeMsg(const biz::IMUserID& cid) { Notify(kOnShakeMsgNotify, cid); }
  void OnFlagMyMsgReaded(const biz::IMUserID&, const std::vector<biz::IMFlagMsgReaded>& flags) {
    for (const biz::IMFlagMsgReaded& flag : flags) {
      Mark(ns_log::CTraceProxy(ns_log::kRoutine, {"CBridgeSingleMsg::OnFlagMyMsgReaded"},
                               L"on my msg readed.")
               .Brief("_brief_,readflag", flag.readflag),
           {.node_name = "imsdk_read_flag_bridge_nty",
            .unique_id = base::NumberToWide(flag.msgid),
            .session_id = ConversationText(flag.cid),
            .imsdk_msgid = flag.msgid,
            .imsdk_msgtime = flag.msgtime});
    }
    Notify(kOnFlagMyMsgReaded, {flags});
  }
  void OnTranslated(const biz::IMUserID& owner, const std::wstring& msgid,
                    const std::wstring& text) {
    if (owner == account().GetSelfID()) Notify(kOnTranslateMsgNotify, {msgid, text});
  }
  void OnTranslateSetting(std::int32_t enable) { Notify(kOnTranslateSettingNotify, {enable}); }

  RefPtr<biz::IIMSingleChatMgr> mgr_;                // null until subscribed
  RefPtr<client::ITranslationService> translation_;  // the same, or while there is none
};

}  // namespace

constinit const NotifyList kSingleNotifications = SingleFeed::kRows;

std::shared_ptr<CAccountFeed> MakeSingleFeed(RefPtr<biz::IIMAccount> account) {
  return std::make_shared<SingleFeed>(std::move(account));
}

}  // namespace imsdk::bridge
