#include "source/bridge/bridgesinglemsg.h"

#include <algorithm>
#include <utility>

#include "imsdk/client/chat_window.h"
#include "imsdk/client/emotion_list.h"
#include "kexbase/base64.h"
#include "kexbase/time.h"
#include "kexcore/kexcom.h"
#include "source/bridge/emotiontext.h"
#include "source/bridge/jsparams/idtext.h"
#include "source/bridge/sendercheck.h"

namespace imsdk::bridge {
namespace {

using ns_log::CTraceProxy;
using ns_log::kRoutine;

constexpr char kSource[] = "source\\bridge\\bridgesinglemsg";

constexpr std::wstring_view kOnReceiveNewMsg = L"onReceiveNewMsg";
constexpr std::wstring_view kOnReceiveOfflineMsg = L"onReceiveOfflineMsg";
constexpr std::wstring_view kOnSendNewMsg = L"onSendNewMsg";
constexpr std::wstring_view kOnSendMsgStatus = L"onSendMsgStatus";
constexpr std::wstring_view kNotifications[] = {kOnReceiveNewMsg, kOnReceiveOfflineMsg,
                                                kOnSendNewMsg, kOnSendMsgStatus};

constexpr char kEventBrief[] = "_brief_,msg.cid, msg.toid, msg.fromid, msg.msgtime";

#define SINGLE(Method) IM_METHOD(CBridgeSingleMsg, Method)
#define SINGLE_NOT_BUILT(Method) IM_METHOD_NOT_BUILT(CBridgeSingleMsg, Method)
constexpr MethodRow kMethods[] = {
    SINGLE(GetNewMsg),
    SINGLE_NOT_BUILT(GetOfflineMsg),
    SINGLE(PeekNewMsg),
    SINGLE_NOT_BUILT(PeekOfflineMsg),
    SINGLE_NOT_BUILT(GetRemoteHisMsg),
    SINGLE(GetLocalHisMsg),
    SINGLE(GetUnreadCount),
    SINGLE(GetUnreadCountInBulk),
    SINGLE(SetMsgRead),
    SINGLE_NOT_BUILT(GetReadedBoundary),
    SINGLE_NOT_BUILT(DeleteLocalMsg),
    SINGLE(FastReSendChatMsg),
    SINGLE(ReSendChatMsg),
    SINGLE_NOT_BUILT(ForwardChatMsg),
    SINGLE(SendBroadcastMsg),
    SINGLE(SendNormalChatMsg),
    SINGLE(SendAutoReplyMsg),
    SINGLE_NOT_BUILT(GetFlagsMyMsgReaded),
    SINGLE_NOT_BUILT(SetFlagsPeerMsgReaded),
    SINGLE_NOT_BUILT(DoChatMsgWithdraw),
    SINGLE_NOT_BUILT(SearchMsgByID),
    SINGLE_NOT_BUILT(SearchDBMsg),
    SINGLE_NOT_BUILT(SearchDBMsg2),
    SINGLE_NOT_BUILT(SearchDBMsgCid),
    SINGLE_NOT_BUILT(GetMsgPicture),
    SINGLE_NOT_BUILT(RoamMsg),
    SINGLE_NOT_BUILT(ClearRoamedTime),
    SINGLE_NOT_BUILT(GetRoamStatus),
    SINGLE_NOT_BUILT(SetRoamStatus),
    SINGLE_NOT_BUILT(ShieldAutoReply),
    SINGLE_NOT_BUILT(EditPic2SendMsg),
    SINGLE(ConvertMsgText2Emotion),
    SINGLE_NOT_BUILT(SetNewMsgMaxCache),
    SINGLE_NOT_BUILT(GetDynamicMsg),
    SINGLE_NOT_BUILT(AddAudio2textSettingRemind),
    SINGLE_NOT_BUILT(GetTranslateSetting),
    SINGLE_NOT_BUILT(GetTranslateMsg),
};

void CheckSenders(const std::vector<biz::IMMessage>& msgs, const ns_log::TraceSite& site,
                  std::wstring_view text, const char* brief) {
  for (const biz::IMMessage& msg : msgs) CheckSender(msg, site, text, brief);
}

// The engine's form of a body item. Content that is no Base64 is left out, and traced.
biz::IMBodyItem ToEngine(const BodyItem& item, const CallBase& call) {
  biz::IMBodyItem made{item.type, item.jvale, item.value, base::FilePath(item.filepath), {}};
  if (!base::Base64Decode(base::WideToUTF8(item.filecontent), &made.filecontent)) {
    CTraceProxy(ns_log::kWarning, call.site(), L"json")
        .Brief("_brief_,it->filecontent", item.filecontent);
    made.filecontent.clear();
  }
  return made;
}

std::vector<biz::IMBodyItem> ToEngine(const std::vector<BodyItem>& items, const CallBase& call) {
  std::vector<biz::IMBodyItem> body;
  body.reserve(items.size());
  for (const BodyItem& item : items) body.push_back(ToEngine(item, call));
  return body;
}

}  // namespace

std::span<const MethodRow> CBridgeSingleMsg::Methods() const { return kMethods; }
std::span<const std::wstring_view> CBridgeSingleMsg::Notifications() const {
  return kNotifications;
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
}

biz::ResultCode CBridgeSingleMsg::FindConversation(const biz::IMUserID& cid, Conversation* chat,
                                                   const CallBase& call) const {
  if (mgr_) *chat = mgr_->GetConversation(cid);
  if (*chat) return {};
  CTraceProxy(ns_log::kError, call.site(), L"GetConversation failed!!");
  return {E_UNEXPECTED, 0, L"GetConversation failed!!"};
}

void CBridgeSingleMsg::GetNewMsg(const HisMsgRequest& request, Conversation chat,
                                 Call<biz::IMMessagePage> call) {
  const biz::IMMessagePage page = chat->GetNewMsg(request.ToPage());
  MarkSeen(chat, call);
  CheckSenders(page.msgs, call.site(), L"new msg. fromid is invalid!!",
               "_brief_,it->cid, it->toid, it->fromid, it->msgtime");
  call.Succeed(page);
}

void CBridgeSingleMsg::MarkSeen(const Conversation& chat, const CallBase& call) const {
  const auto windows = kexcore::GetService<client::IChatWindowService>();
  const biz::IMUserID account = Account();
  const biz::IMUserID& cid = chat->GetCID();
  const bool seen =
      windows && (windows->IsVisible(account, cid) || windows->IsActivated(account, cid));
  CTraceProxy(kRoutine, call.site(),
              seen ? L"window is visible or BeActived!!" : L"window is NOT visible and BeActived!!")
      .Brief("_brief_,this,userid", reinterpret_cast<std::uintptr_t>(this), IdText(cid));
  if (!seen) return;
  CTraceProxy(kRoutine, call.site(), L"SetNewMsgReaded req");
  const std::int64_t start = base::TimeTicks::Now().ToMilliseconds();
  chat->SetNewMsgReaded([start](const biz::ResultCode& result) {
    const std::int64_t timeOperate = base::TimeTicks::Now().ToMilliseconds() - start;
    CTraceProxy(kRoutine, {"CBridgeSingleMsg::GetNewMsg::SetNewMsgReaded", kSource},
                L"SetNewMsgReaded rsp")
        .Brief("_brief_,result,timeOperate", result.code, timeOperate);
  });
}

void CBridgeSingleMsg::PeekNewMsg(const HisMsgRequest& request, Conversation chat,
                                  Call<biz::IMMessagePage> call) {
  call.Succeed(chat->GetNewMsg(request.ToPage()));
}

void CBridgeSingleMsg::GetLocalHisMsg(const HisMsgRequest& request, Conversation chat,
                                      Call<biz::IMMessagePage> call) {
  chat->GetLocalHisMsg(request.ToPage(),
                       [call](const biz::ResultCode& result, const biz::IMMessagePage& page) {
                         call.Finish(result, page);
                       });
}

void CBridgeSingleMsg::GetUnreadCount(const CidRequest&, Conversation chat,
                                      Call<CountAnswer> call) {
  call.Succeed({chat->GetUnreadCount()});
}

void CBridgeSingleMsg::GetUnreadCountInBulk(const CidsRequest& request, ChatMgr mgr,
                                            Call<UnreadsAnswer> call) {
  UnreadsAnswer answer;
  if (request.cids.empty()) answer.unreads = mgr->GetConversations();
  for (const biz::IMUserID& cid : request.cids) {
    const Conversation chat = mgr->GetConversation(cid);
    answer.unreads.push_back({cid, chat ? chat->GetUnreadCount() : 0});
  }
  call.Succeed(answer);
}

void CBridgeSingleMsg::SetMsgRead(const CidRequest&, Conversation chat, Call<NoKeys> call) {
  chat->SetNewMsgReaded([call](const biz::ResultCode& result) { call.Finish(result); });
}

void CBridgeSingleMsg::SendNormalChatMsg(const SendMsgRequest& request, Conversation chat,
                                         Call<NoKeys> call) {
  call.FinishSend(
      chat->SendMsg(ToEngine(request.msgbody, call), {.autosend = request.autosend != 0}));
}

void CBridgeSingleMsg::SendAutoReplyMsg(const SendMsgRequest& request, Conversation chat,
                                        Call<NoKeys> call) {
  call.FinishSend(chat->SendMsg(ToEngine(request.msgbody, call),
                                {.autosend = request.autosend != 0, .autoreply = true}));
}

void CBridgeSingleMsg::SendBroadcastMsg(const BroadcastMsgRequest& request, ChatMgr mgr,
                                        Call<NoKeys> call) {
  const std::vector<biz::IMBodyItem> body = ToEngine(request.msgbody, call);
  // One refusal does not keep the message from the others; the answer carries the first one.
  std::int32_t status = request.cids.empty() ? E_INVALIDARG : 0;
  for (const biz::IMUserID& cid : request.cids) {
    const Conversation chat = mgr->GetConversation(cid);
    const std::int32_t sent = chat ? chat->SendMsg(body, {}) : E_UNEXPECTED;
    if (status >= 0) status = std::min(sent, 0);
  }
  call.FinishSend(status);
}

void CBridgeSingleMsg::ReSendChatMsg(const MsgRequest& request, Conversation chat,
                                     Call<NoKeys> call) {
  std::int64_t msgid = 0;
  base::StringToInt64(request.msgid, &msgid);
  call.FinishSend(chat->ReSendMsg(msgid));
}

void CBridgeSingleMsg::FastReSendChatMsg(const MsgRequest& request, Conversation chat,
                                         Call<NoKeys> call) {
  ReSendChatMsg(request, std::move(chat), std::move(call));
}

void CBridgeSingleMsg::ConvertMsgText2Emotion(const EmotionText& request, Call<EmotionText> call) {
  EmotionText converted = request;
  if (const auto service = kexcore::GetService<client::IEmotionListService>()) {
    converted.value = TextToEmotion(request.value, service->GetEmotions());
  }
  call.Succeed(converted);
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
  const biz::ResultCode envelope = Envelope(result);
  Notify(kOnSendMsgStatus,
         SendMsgStatusNotify{envelope.code, envelope.subcode, type, msgid, svrtime, envelope.text});
}

}  // namespace imsdk::bridge
