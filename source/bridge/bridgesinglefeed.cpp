#include "source/bridge/bridgesinglefeed.h"

#include <utility>

#include "imsdk/client/translation.h"
#include "kexcore/kexcom.h"
#include "source/bridge/conversationform.h"
#include "source/bridge/jsparams/idtext.h"
#include "source/bridge/sendercheck.h"
#include "source/bridge/tracepoint.h"

namespace imsdk::bridge {
namespace {

using MsgsRow = Notification<MsgsNotify, SingleForm>;
constexpr MsgsRow kOnReceiveNewMsg{L"onReceiveNewMsg", "New messages came."};
constexpr MsgsRow kOnReceiveOfflineMsg{L"onReceiveOfflineMsg",
                                       "Messages came that were sent while nobody was logged in."};
constexpr MsgsRow kOnSendNewMsg{
    L"onSendNewMsg", "Messages are being sent from this account, also on another device."};
constexpr Notification<SendMsgStatusNotify> kOnSendMsgStatus{L"onSendMsgStatus",
                                                             "A message was sent, or failed."};
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
constexpr Notification<WithdrawNotify, SingleForm> kOnMsgWithdrawNty{
    L"onMsgWithdrawNty", "A message was taken back, by the peer or by this account."};

constexpr const NotifyInfo* kRows[] = {
    &kOnReceiveNewMsg,   &kOnReceiveOfflineMsg, &kOnSendNewMsg,         &kOnSendMsgStatus,
    &kOnPeerInputNotify, &kOnShakeMsgNotify,    &kOnTranslateMsgNotify, &kOnTranslateSettingNotify,
    &kOnFlagMyMsgReaded, &kOnMsgWithdrawNty};

using Users = std::vector<biz::IMUserID>;
using Messages = std::vector<biz::IMMessage>;

class SingleFeed final : public CAccountFeed {
 public:
  explicit SingleFeed(RefPtr<biz::IIMAccount> account) : CAccountFeed(std::move(account), kRows) {}

 private:
  void Update() override {
    if (!mgr_) {
      mgr_ = account().GetIMSingleChatMgr();
      biz::IMSingleChatEvents& raised = mgr_->Events();
      Subscribe(raised.on_receive_new_msg, &SingleFeed::OnReceiveNewMsg);
      Subscribe(raised.on_receive_offline_msg, &SingleFeed::OnReceiveOfflineMsg);
      Subscribe(raised.on_send_new_msg, &SingleFeed::OnSendNewMsg);
      Subscribe(raised.on_send_msg_status, &SingleFeed::OnSendMsgStatus);
      Subscribe(raised.on_peer_input, &SingleFeed::OnPeerInput);
      Subscribe(raised.on_shake_msg, &SingleFeed::OnShakeMsg);
      Subscribe(raised.on_flag_my_msg_readed, &SingleFeed::OnFlagMyMsgReaded);
      Subscribe(raised.on_msg_withdraw, &SingleFeed::OnMsgWithdraw);
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
  void OnReceiveNewMsg(const Users&, const Messages& msgs) {
    NotifyMsgs(kOnReceiveNewMsg, msgs, "CBridgeSingleMsg::OnReceiveNewMsg",
               L"on receive msg. fromid is invalid!!");
  }
  void OnReceiveOfflineMsg(bool, const Users&, const Messages& msgs) {
    NotifyMsgs(kOnReceiveOfflineMsg, msgs, "CBridgeSingleMsg::OnReceiveOfflineMsg",
               L"on offline msg. fromid is invalid!!");
  }
  void OnSendNewMsg(const Users&, const Messages& msgs) {
    NotifyMsgs(kOnSendNewMsg, msgs, "CBridgeSingleMsg::OnSendNewMsg",
               L"on send msg. fromid is invalid!!");
  }
  void OnSendMsgStatus(const biz::IMUserID&, biz::IMMsgType type, std::int64_t msgid,
                       std::int64_t svrtime, const biz::ResultCode& result) {
    Notify(kOnSendMsgStatus, {Envelope(result), type, msgid, svrtime});
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
  void OnMsgWithdraw(const biz::IMUserID&, const biz::IMMsgWithdraw& withdraw,
                     const biz::ResultCode& result) {
    Notify(kOnMsgWithdrawNty, {Envelope(result), {withdraw}});
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

constinit const NotifyList kSingleNotifications = kRows;

std::shared_ptr<CAccountFeed> MakeSingleFeed(RefPtr<biz::IIMAccount> account) {
  return std::make_shared<SingleFeed>(std::move(account));
}

}  // namespace imsdk::bridge
