#include "source/bridge/bridgesinglemsg.h"

#include <utility>

#include "kexcore/kexcom.h"
#include "source/bridge/sendercheck.h"

namespace imsdk::bridge {
namespace {

using ns_log::CTraceProxy;

constexpr char kSource[] = "source\\bridge\\bridgesinglemsg";

constexpr std::wstring_view kOnReceiveNewMsg = L"onReceiveNewMsg";
constexpr std::wstring_view kOnReceiveOfflineMsg = L"onReceiveOfflineMsg";
constexpr std::wstring_view kOnSendNewMsg = L"onSendNewMsg";
constexpr std::wstring_view kOnSendMsgStatus = L"onSendMsgStatus";
constexpr std::wstring_view kOnPeerInputNotify = L"onPeerInputNotify";
constexpr std::wstring_view kOnShakeMsgNotify = L"onShakeMsgNotify";
constexpr std::wstring_view kOnTranslateMsgNotify = L"onTranslateMsgNotify";
constexpr std::wstring_view kOnTranslateSettingNotify = L"onTranslateSettingNotify";
constexpr std::wstring_view kOnFlagMyMsgReaded = L"onFlagMyMsgReaded";
constexpr std::wstring_view kOnMsgWithdrawNty = L"onMsgWithdrawNty";
constexpr std::wstring_view kNotifications[] = {
    kOnReceiveNewMsg,   kOnReceiveOfflineMsg, kOnSendNewMsg,         kOnSendMsgStatus,
    kOnPeerInputNotify, kOnShakeMsgNotify,    kOnTranslateMsgNotify, kOnTranslateSettingNotify,
    kOnFlagMyMsgReaded, kOnMsgWithdrawNty};

#define SINGLE(Method) IM_METHOD(CBridgeSingleMsg, Method)
constexpr MethodRow kMethods[] = {
    SINGLE(GetNewMsg),
    SINGLE(GetOfflineMsg),
    SINGLE(PeekNewMsg),
    SINGLE(PeekOfflineMsg),
    SINGLE(GetRemoteHisMsg),
    SINGLE(GetLocalHisMsg),
    SINGLE(GetUnreadCount),
    SINGLE(GetUnreadCountInBulk),
    SINGLE(SetMsgRead),
    SINGLE(GetReadedBoundary),
    SINGLE(DeleteLocalMsg),
    SINGLE(FastReSendChatMsg),
    SINGLE(ReSendChatMsg),
    SINGLE(ForwardChatMsg),
    SINGLE(SendBroadcastMsg),
    SINGLE(SendNormalChatMsg),
    SINGLE(SendAutoReplyMsg),
    SINGLE(GetFlagsMyMsgReaded),
    SINGLE(SetFlagsPeerMsgReaded),
    SINGLE(DoChatMsgWithdraw),
    SINGLE(SearchMsgByID),
    SINGLE(SearchDBMsg),
    SINGLE(SearchDBMsg2),
    SINGLE(SearchDBMsgCid),
    SINGLE(GetMsgPicture),
    SINGLE(RoamMsg),
    SINGLE(ClearRoamedTime),
    SINGLE(GetRoamStatus),
    SINGLE(SetRoamStatus),
    SINGLE(ShieldAutoReply),
    SINGLE(EditPic2SendMsg),
    SINGLE(ConvertMsgText2Emotion),
    SINGLE(SetNewMsgMaxCache),
    SINGLE(GetDynamicMsg),
    SINGLE(AddAudio2textSettingRemind),
    SINGLE(GetTranslateSetting),
    SINGLE(GetTranslateMsg),
};
#undef SINGLE

}  // namespace

std::span<const MethodRow> CBridgeSingleMsg::Methods() const { return kMethods; }
std::span<const std::wstring_view> CBridgeSingleMsg::Notifications() const {
  return kNotifications;
}

void CBridgeSingleMsg::OwnerPreConstruct() {
  translation_ = kexcore::GetService<client::ITranslationService>();
}

void CBridgeSingleMsg::OnAccountChanged() {
  events().DisconnectAll();
  mgr_ = nullptr;
  const biz::IMUserID account = Account();
  if (!account.valid()) return;
  const auto accounts = kexcore::GetService<biz::IIMAccountMgr>();
  const auto engine = accounts ? accounts->GetAccount(account) : nullptr;
  if (engine) mgr_ = engine->GetIMSingleChatMgr();
  if (!mgr_) {
    CTraceProxy(ns_log::kError, {"CBridgeSingleMsg::OnAccountChanged", kSource},
                L"GetIMSingleChatMgr.");
    return;
  }
  biz::IMSingleChatEvents& raised = mgr_->Events();
  Subscribe(raised.on_receive_new_msg, &CBridgeSingleMsg::OnReceiveNewMsg);
  Subscribe(raised.on_receive_offline_msg, &CBridgeSingleMsg::OnReceiveOfflineMsg);
  Subscribe(raised.on_send_new_msg, &CBridgeSingleMsg::OnSendNewMsg);
  Subscribe(raised.on_send_msg_status, &CBridgeSingleMsg::OnSendMsgStatus);
  Subscribe(raised.on_shake_msg, &CBridgeSingleMsg::OnShakeMsg);
  Subscribe(raised.on_flag_my_msg_readed, &CBridgeSingleMsg::OnFlagMyMsgReaded);
  Subscribe(raised.on_msg_withdraw, &CBridgeSingleMsg::OnMsgWithdraw);
  // An account that tells sub-accounts apart sees their whole nicks.
  const bool whole_nicks = engine->GetAccountType() == biz::kSubAccount;
  Subscribe<CBridgeSingleMsg>(
      raised.on_peer_input,
      [whole_nicks](CBridgeSingleMsg& self, const biz::IMUserID& peer, biz::IMInputStatus status) {
        const std::wstring_view nick = whole_nicks ? peer.nick : MainNick(peer.nick);
        self.Notify(kOnPeerInputNotify, PeerInputNotify{status, {peer.appkey, std::wstring(nick)}});
      });
  if (!translation_) return;
  Subscribe(translation_->Events().on_setting_changed, &CBridgeSingleMsg::OnTranslateSetting);
  Subscribe<CBridgeSingleMsg>(translation_->Events().on_translated,
                              [account](CBridgeSingleMsg& self, const biz::IMUserID& owner,
                                        const std::wstring& msgid, const std::wstring& text) {
                                if (owner == account)
                                  self.Notify(kOnTranslateMsgNotify, TranslateMsg{msgid, text});
                              });
}

CBridgeConversation::Conversation CBridgeSingleMsg::GetConversation(
    const biz::IMUserID& cid) const {
  return mgr_ ? mgr_->GetConversation(cid) : nullptr;
}

std::vector<biz::IMUnreadCount> CBridgeSingleMsg::GetConversations() const {
  return mgr_ ? mgr_->GetConversations() : std::vector<biz::IMUnreadCount>();
}

void CBridgeSingleMsg::SetNewMsgMaxCache(const MaxCacheRequest& request, ChatMgr mgr,
                                         Call<NoKeys> call) {
  mgr->SetNewMsgMaxCache(request.maxmsgcount);
  call.Finish({});
}

void CBridgeSingleMsg::OnReceiveNewMsg(const std::vector<biz::IMUserID>&,
                                       const std::vector<biz::IMMessage>& msgs) {
  CheckSenders(msgs, {"CBridgeSingleMsg::OnReceiveNewMsg", kSource},
               L"on receive msg. fromid is invalid!!", kEventBrief);
  Notify(kOnReceiveNewMsg, MsgsNotify{&msgs});
}

void CBridgeSingleMsg::OnReceiveOfflineMsg(bool, const std::vector<biz::IMUserID>&,
                                           const std::vector<biz::IMMessage>& msgs) {
  CheckSenders(msgs, {"CBridgeSingleMsg::OnReceiveOfflineMsg", kSource},
               L"on offline msg. fromid is invalid!!", kEventBrief);
  Notify(kOnReceiveOfflineMsg, MsgsNotify{&msgs});
}

void CBridgeSingleMsg::OnSendNewMsg(const std::vector<biz::IMUserID>&,
                                    const std::vector<biz::IMMessage>& msgs) {
  CheckSenders(msgs, {"CBridgeSingleMsg::OnSendNewMsg", kSource},
               L"on send msg. fromid is invalid!!", kEventBrief);
  Notify(kOnSendNewMsg, MsgsNotify{&msgs});
}

void CBridgeSingleMsg::OnSendMsgStatus(const biz::IMUserID&, biz::IMMsgType type,
                                       std::int64_t msgid, std::int64_t svrtime,
                                       const biz::ResultCode& result) {
  Notify(kOnSendMsgStatus, SendMsgStatusNotify{Envelope(result), type, msgid, svrtime});
}

void CBridgeSingleMsg::OnShakeMsg(const biz::IMUserID& cid) { Notify(kOnShakeMsgNotify, cid); }

void CBridgeSingleMsg::OnFlagMyMsgReaded(const biz::IMUserID&,
                                         const std::vector<biz::IMFlagMsgReaded>& flags) {
  Notify(kOnFlagMyMsgReaded, ReadFlags{flags});
}

void CBridgeSingleMsg::OnMsgWithdraw(const biz::IMUserID&, const biz::IMMsgWithdraw& withdraw,
                                     const biz::ResultCode& result) {
  Notify(kOnMsgWithdrawNty, WithdrawNotify{Envelope(result), {withdraw}});
}

void CBridgeSingleMsg::OnTranslateSetting(std::int32_t enable) {
  Notify(kOnTranslateSettingNotify, TranslateSetting{enable});
}

}  // namespace imsdk::bridge
