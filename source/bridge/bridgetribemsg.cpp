// Business module "im.tribemsg": messages of tribes, and whom they mention.
#include <algorithm>
#include <utility>

#include "source/bridge/bridgemodules.h"
#include "source/bridge/bridgetribemsgfeed.h"
#include "source/bridge/conversationform.h"
#include "source/bridge/conversationrows.h"
#include "source/bridge/jsparams/idtext.h"
#include "source/bridge/jsparams/tribemsgrecords.h"

namespace imsdk::bridge {
namespace {

using ns_log::kRoutine;

void TraceNewTMMsgs(const std::vector<biz::IMMessage>& msgs, const ns_log::TraceSite& site) {
  for (const biz::IMMessage& msg : msgs) {
    ns_log::CTraceProxy(kRoutine, site, L"new msg")
        .Brief("_brief_,it->cid,it->msgid", ConversationText(msg.cid), msg.msgid);
  }
}

void TraceFetchedTMMsgs(const biz::ResultCode& result, const std::vector<biz::IMMessage>& msgs,
                        const ns_log::TraceSite& site) {
  constexpr wchar_t kText[] = L"RspFetchTMMsg";
  ns_log::CTraceProxy(kRoutine, site, kText).Brief("_brief_,code", result.code);
  if (!result.ok()) return;
  ns_log::CTraceProxy(kRoutine, site, kText).Brief("_brief_,msgids", MsgIdsText(msgs));
}

constexpr ConversationKind kTribeKind =
    KindOf<&biz::IIMAccount::GetIMTribeChatMgr>({.chats = nullptr,
                                                 .trace_new = &TraceNewTMMsgs,
                                                 .trace_fetched = &TraceFetchedTMMsgs,
                                                 .fetched_by = "CBridgeTribeMsg::RspFetchTMMsg",
                                                 .traces_files = true});

class CBridgeTribeMsg final : public ConversationModule<TribeForm> {
 public:
  static constexpr Name kName = "CBridgeTribeMsg";
  static constexpr RowTexts kTexts{.invalid = L"invalid"};

  // The look-up is traced by the same text as that of single chats.
  explicit CBridgeTribeMsg(ModuleContext context)
      : ConversationModule(std::move(context), kTribeKind, kTribeMsgNotifications,
                           &MakeTribeMsgFeed,
                           {"CBridgeTribeMsg::OnAccountChanged", L"GetIMSingleChatMgr."}) {}
  std::span<const MethodRow> Methods() const override;

  void GetLocalHisMsg(const In<biz::IMPageRequest>& request, Chat chat, PageCall call) {
    chat->GetLocalHisMsg(request, [call, cid = chat->GetCID()](const biz::ResultCode& result,
                                                               const biz::IMMessagePage& page) {
      DoGetDBHisMsg(page.roamcode);
      GetLocalHisMsgImp(cid, result, page, call);
    });
  }

  void DoChatMsgWithdraw(const In<biz::IMWithdrawRequest>& request, Chat chat, Call<> call) {
    chat->WithdrawMsg(request, [call](const biz::ResultCode& result) { call.FinishSend(result); });
  }

  void GetRoamStatus(const biz::IMNothing& request, ChatMgr mgr, Call<biz::IMRoamStatus> call) {
    mgr->GetRoamStatus(request,
                       [call](const biz::ResultCode& result, const biz::IMRoamStatus& status) {
                         constexpr wchar_t kUnknown[] = L"unknown error";
                         if (!result.ok())
                           return call.Fail({result.code, result.subcode, kUnknown}, kUnknown);
                         call.Succeed(status);
                       });
  }

  void GetSendMsgTribeAtInfo(const In<SentMsgRequest>& request, Chat chat,
                             Call<biz::IMTribeAt> call) {
    if (request.msgid == 0) return call.Invalid();
    ToEngine(request.msgbody, call);  // traces it
    chat->GetSendMsgTribeAtInfo(request, std::move(call));
  }

 private:
  // That the server could not be asked before the store was read.
  static void DoGetDBHisMsg(std::int32_t code) {
    if (code == 0) return;
    ns_log::CTraceProxy(ns_log::kWarning, {"CBridgeTribeMsg::DoGetDBHisMsg"}, L"roam failed!!")
        .Brief("_brief_,code", code);
  }

  // Messages of another conversation never reach a page that asked for `bizcid`.
  static void GetLocalHisMsgImp(const biz::IMConversationID& bizcid, const biz::ResultCode& result,
                                const biz::IMMessagePage& page, const PageCall& call) {
    const auto stranger =
        std::find_if(page.msgs.begin(), page.msgs.end(),
                     [&](const biz::IMMessage& msg) { return msg.cid != bizcid; });
    if (stranger == page.msgs.end()) return call.Finish(result, page);
    constexpr wchar_t kDiscard[] = L"discard local history msgs.";
    ns_log::CTraceProxy(ns_log::kWarning, {"CBridgeTribeMsg::GetLocalHisMsgImp"}, kDiscard)
        .Brief("_brief_,bizcid,stCurrentCID", ConversationText(bizcid),
               ConversationText(stranger->cid));
    call.Fail({E_UNEXPECTED, 0, L"failed"}, kDiscard);
  }
};

using M = CBridgeTribeMsg;
using Chat = biz::IIMConversation;
using Rows = ConversationRows<M>;
constexpr RowTexts kInvalid{.invalid = L"invalid!"};
constexpr MethodRow kMethods[] = {
    With({.input = L"get new msg"}, Rows::kGetNewMsg),
    With({.input = L"get off msg"}, Rows::kGetOfflineMsg),
    With({.input = L"peek new msg"}, Rows::kPeekNewMsg),
    With({.input = L"peek off msg"}, Rows::kPeekOfflineMsg),
    Rows::kGetRemoteHisMsg,
    Row<M, "GetLocalHisMsg", &M::GetLocalHisMsg>("A page of the history on this machine."),
    Rows::kDeleteLocalMsg,
    Rows::kGetUnreadCount,
    Rows::kGetUnreadCountInBulk,
    Rows::kSetMsgRead,
    With(kInvalid, Rows::kGetReadedBoundary),
    Row<M, "SendNormalTribeMsg", &M::SendMsg<false>>(
        "Sends a message; how it went on comes as onSendMsgStatus."),
    Rows::kReSendChatMsg,
    Rows::kFastReSendChatMsg,
    Rows::kForwardChatMsg,
    Rows::kRoamMsg,
    Rows::kClearRoamedTime,
    Row<M, "GetRoamStatus", &M::GetRoamStatus>("Whether the server hands out history."),
    Rows::kSetRoamStatus,
    Row<M, "DoChatMsgWithdraw", &M::DoChatMsgWithdraw>("Takes an own message back.",
                                                       {.input = L"do msg withdraw"}),
    Rows::kEditPic2SendMsg,
    Rows::kConvertMsgText2Emotion,
    Rows::kSearchMsgByID,
    Rows::kSearchDBMsg,
    Rows::kSearchDBMsg2,
    Rows::kSearchDBMsgCid,
    Row<M, "SearchAttentionMsg", &M::Search<&Chat::SearchAttentionMsg>>(
        "Searches the messages of the members whom the account pays attention to.", kInvalid),
    Rows::kGetMsgPicture<"GetMsgPictures">,
    Row<M, "RoamTribeAtMsgs", &M::Fetch<&Chat::RoamTribeAtMsgs, biz::IMPageRequest>>(
        "A page of the server's messages that mention the account."),
    Row<M, "GetSendMsgTribeAtInfo", &M::GetSendMsgTribeAtInfo>(
        "Whom a message mentions; an own one unless its sender is named."),
    Row<M, "RoamTribeAtMsgContext",
        &M::Fetch<&Chat::RoamTribeAtMsgContext, biz::IMAtContextRequest>>(
        "The messages around a mention, from the server."),
    Row<M, "SetTribeAtMsgsReaded", &Chat::SetTribeAtMsgsReaded>(
        "Marks mentions of the account as read; all unread ones when none are named."),
    Row<M, "GetTribeAtMsgUnreadCount", &Chat::GetTribeAtMsgUnreadCount>(
        "The number of unread mentions, and how far the own messages named were read."),
    Row<M, "GetTribeAtMsgUnreadUsers", &Chat::GetTribeAtMsgUnreadUsers>(
        "Who has read an own message that mentions, and who has not."),
    Rows::kSetNewMsgMaxCache,
    Row<M, "AtTribeMember", &Chat::AtTribeMember>(
        "Whether a member, or all, can be mentioned, and the name to write."),
    Rows::kGetDynamicMsg,
};

std::span<const MethodRow> CBridgeTribeMsg::Methods() const { return kMethods; }

}  // namespace

std::shared_ptr<CBridgeBase> MakeBridgeTribeMsg(const ModuleContext& context) {
  return std::make_shared<CBridgeTribeMsg>(context);
}

}  // namespace imsdk::bridge
