// History, read state and content of single-chat messages.
#include <utility>

#include "imsdk/client/dynamic_content.h"
#include "kexcore/kexcom.h"
#include "source/bridge/bridgesinglemsg.h"
#include "source/bridge/jsparams/idtext.h"
#include "source/bridge/sendercheck.h"

namespace imsdk::bridge {
namespace {

using ns_log::CTraceProxy;

constexpr wchar_t kAudio2textRemind[] =
    L"Audio messages can be shown as text. The settings have a switch for it.";

std::wstring MsgIdText(const biz::IMMessage& msg) { return base::NumberToWide(msg.msgid); }

// Answers with messages that had to be fetched, then runs `then`.
biz::IMPageCallback RspFetchMsg(
    Call<biz::IMMessagePage> call, std::function<void()> then = [] {}) {
  return [call = std::move(call), then = std::move(then)](const biz::ResultCode& result,
                                                          const biz::IMMessagePage& page) {
    CTraceProxy(ns_log::kRoutine, call.site(), L"response msgs.")
        .Brief("_brief_,msgids", Joined(page.msgs, MsgIdText));
    CheckSenders(page.msgs, call.site(), L"rsp msg. fromid is invalid!!", kFetchedBrief);
    call.Finish(result, page);
    then();
  };
}

biz::IMSearchCallback AnswerSearch(const SearchRequest& request, Call<SearchAnswer> call) {
  return [cid = request.cid, keywords = request.keywords, msgtypes = request.msgtypes,
          call = std::move(call)](const biz::ResultCode& result, biz::IMSearchPage page) {
    call.Finish(result, {std::move(page), cid, keywords, msgtypes});
  };
}

}  // namespace

void CBridgeSingleMsg::GetOfflineMsg(const CidRequest&, Conversation chat, PageCall call) {
  chat->GetOfflineMsg(RspFetchMsg(call, MarkSeen(chat, call)));
}

void CBridgeSingleMsg::PeekOfflineMsg(const CidRequest&, Conversation chat, PageCall call) {
  chat->GetOfflineMsg(RspFetchMsg(std::move(call)));
}

void CBridgeSingleMsg::GetRemoteHisMsg(const HisMsgRequest& request, Conversation chat,
                                       PageCall call) {
  chat->GetRemoteHisMsg(request, RspFetchMsg(std::move(call)));
}

void CBridgeSingleMsg::GetFlagsMyMsgReaded(const MsgsRequest& request, Conversation chat,
                                           Call<ReadFlags> call) {
  chat->GetFlagsMyMsgReaded(request.msgids, std::move(call));
}

void CBridgeSingleMsg::SetFlagsPeerMsgReaded(const MsgsRequest& request, Conversation chat,
                                             Call<NoKeys> call) {
  chat->SetFlagsPeerMsgReaded(request.msgids, std::move(call));
}

void CBridgeSingleMsg::DoChatMsgWithdraw(const WithdrawRequest& request, Conversation chat,
                                         Call<NoKeys> call) {
  chat->WithdrawMsg(request.msgid, std::move(call));
}

void CBridgeSingleMsg::SearchMsgByID(const MsgRequest& request, Conversation chat, PageCall call) {
  chat->SearchMsgByID(request.msgid, RspFetchMsg(std::move(call)));
}

void CBridgeSingleMsg::SearchDBMsg(const SearchRequest& request, Conversation chat,
                                   Call<SearchAnswer> call) {
  chat->SearchMsg(request, AnswerSearch(request, std::move(call)));
}

void CBridgeSingleMsg::SearchDBMsg2(const SearchRequest& request, ChatMgr mgr,
                                    Call<SearchAnswer> call) {
  if (request.cid.empty()) return mgr->SearchMsg(request, AnswerSearch(request, std::move(call)));
  Conversation chat;
  const biz::ResultCode found = Find(request, &chat, call);
  if (!found.ok()) return call.Finish(found);
  SearchDBMsg(request, std::move(chat), std::move(call));
}

void CBridgeSingleMsg::SearchDBMsgCid(const SearchRequest& request, ChatMgr mgr,
                                      Call<SearchCidAnswer> call) {
  mgr->SearchConversations(request,
                           [call, msgtypes = request.msgtypes](const biz::ResultCode& result,
                                                               std::vector<biz::IMUserID> cids) {
                             call.Finish(result, {msgtypes, std::move(cids)});
                           });
}

void CBridgeSingleMsg::GetMsgPicture(const PictureRequest& request, Conversation chat,
                                     Call<PicturesAnswer> call) {
  chat->GetMsgPicture(request, std::move(call));
}

void CBridgeSingleMsg::RoamMsg(const RoamRequest& request, Conversation chat,
                               Call<biz::IMRoamed> call) {
  chat->RoamMsg(request, std::move(call));
}

void CBridgeSingleMsg::ClearRoamedTime(const CidRequest&, Conversation chat, Call<NoKeys> call) {
  chat->ClearRoamedTime(std::move(call));
}

void CBridgeSingleMsg::GetRoamStatus(const NoKeys&, ChatMgr mgr, Call<biz::IMRoamStatus> call) {
  mgr->GetRoamStatus(std::move(call));
}

void CBridgeSingleMsg::SetRoamStatus(const SetRoamRequest& request, ChatMgr mgr,
                                     Call<NoKeys> call) {
  mgr->SetRoamStatus(request.roamstatus, std::move(call));
}

void CBridgeSingleMsg::GetDynamicMsg(const DynamicMsgRequest& request,
                                     Call<DynamicMsgAnswer> call) {
  const auto service = kexcore::GetService<client::IDynamicContentService>();
  if (!service) return call.Fail(E_UNEXPECTED, L"no dynamic content is set up");
  service->GetContent(Account(), request.bizType, request.bizUuid, std::move(call));
}

void CBridgeSingleMsg::AddAudio2textSettingRemind(const CidRequest&, Conversation chat,
                                                  Call<NoKeys> call) {
  chat->AddSysMsg(kAudio2textRemind, std::move(call));
}

void CBridgeSingleMsg::GetTranslateSetting(const NoKeys&, Call<TranslateSetting> call) {
  call.Succeed({translation_ && translation_->IsEnabled() ? 1 : 0});
}

void CBridgeSingleMsg::GetTranslateMsg(const TranslateMsg& request, Call<TranslateMsg> call) {
  if (!translation_) return call.Fail(E_UNEXPECTED, L"no translation is set up");
  translation_->Translate(
      Account(), request.msgid, request.msgcontent,
      [call, msgid = request.msgid](const biz::ResultCode& result, const std::wstring& text) {
        call.Finish(result, {msgid, text});
      });
}

}  // namespace imsdk::bridge
