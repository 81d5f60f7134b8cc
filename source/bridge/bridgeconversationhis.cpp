// History, search and content of messages.
#include <utility>

#include "imsdk/client/dynamic_content.h"
#include "kexbase/guid.h"
#include "kexcore/kexcom.h"
#include "source/bridge/bridgeconversation.h"
#include "source/bridge/jsparams/idtext.h"
#include "source/bridge/sendercheck.h"
#include "source/bridge/tracepoint.h"

namespace imsdk::bridge {
namespace {

std::wstring MsgIdText(const biz::IMMessage& msg) { return base::NumberToWide(msg.msgid); }

// Answers with what was found and with what it was looked for by.
biz::IMCallback<biz::IMSearchPage> AnswerSearch(const In<biz::IMSearchRequest>& request,
                                                Call<SearchAnswer> call) {
  return [in = InConversation(request), keywords = request.keywords, msgtypes = request.msgtypes,
          call = std::move(call)](const biz::ResultCode& result, const biz::IMSearchPage& page) {
    call.Finish(result, {in, page, keywords, msgtypes});
  };
}

}  // namespace

biz::IMCallback<biz::IMMessagePage> CBridgeConversation::RspFetchMsg(
    PageCall call, std::function<void(const biz::IMMessagePage&)> then) {
  return [call = std::move(call), then = std::move(then)](const biz::ResultCode& result,
                                                          const biz::IMMessagePage& page) {
    if (!result.ok()) return call.Finish(result);
    constexpr char kInner[] = "RspFetchMsg";
    call.Trace(ns_log::kRoutine, L"response msgs.", kInner)
        .Brief("_brief_,msgids", Joined(page.msgs, MsgIdText));
    CheckSenders(page.msgs, call.site(kInner), L"rsp msg. fromid is invalid!!", kFetchedBrief);
    call.Finish(result, page);
    if (then) then(page);
  };
}

void CBridgeConversation::GetRemoteHisMsg(const In<biz::IMPageRequest>& request, Chat chat,
                                          PageCall call) {
  const biz::IMMsgPosition from{request.msgtime, request.msgid};
  chat->GetRemoteHisMsg(
      request, [call, from, cid = ConversationText(chat->GetCID()), answer = RspFetchMsg(call)](
                   const biz::ResultCode& result, const biz::IMMessagePage& page) {
        Mark(call.Trace(result.ok() ? ns_log::kRoutine : ns_log::kError, L"get remote msg rsp",
                        "RspFetchMsg")
                 .Brief("_brief_,count", page.msgs.size()),
             {.node_name = "imsdk_get_remote_msg",
              .unique_id = base::UTF8ToWide(base::GenerateGUID()),
              .result_code = result.code,
              .session_id = cid,
              .imsdk_msgid = from.msgid,
              .imsdk_msgtime = from.msgtime});
        answer(result, page);
      });
}

void CBridgeConversation::DeleteLocalMsg(const In<biz::IMDeleteRequest>& request, Chat chat,
                                         Call<biz::IMCount> call) {
  if (!request.all && request.msgids.empty()) return call.Invalid();
  chat->DeleteLocalMsg(request, std::move(call));
}

void CBridgeConversation::SearchDBMsg(const In<biz::IMSearchRequest>& request, Chat chat,
                                      Call<SearchAnswer> call) {
  chat->SearchMsg(request, AnswerSearch(request, std::move(call)));
}

void CBridgeConversation::SearchDBMsg2(const In<biz::IMSearchRequest>& request, ChatMgr mgr,
                                       Call<SearchAnswer> call) {
  const biz::IMConversationID& cid = request.cid;
  if (cid.user.empty() && cid.tribe.id == 0) {
    return mgr->SearchMsg(request, AnswerSearch(request, std::move(call)));
  }
  Chat chat;
  const biz::ResultCode found = Find(cid, &chat);
  if (!found.ok()) return call.Refuse(found);
  SearchDBMsg(request, std::move(chat), std::move(call));
}

void CBridgeConversation::SearchDBMsgCid(const SearchCidRequest& request, ChatMgr mgr,
                                         Call<SearchCidAnswer> call) {
  mgr->SearchConversations(request,
                           [call, msgtypes = request.msgtypes](const biz::ResultCode& result,
                                                               const biz::IMConversations& found) {
                             call.Finish(result, {found, msgtypes});
                           });
}

void CBridgeConversation::GetDynamicMsg(const DynamicMsgRequest& request,
                                        Call<DynamicMsgAnswer> call) {
  const auto service = kexcore::GetService<client::IDynamicContentService>();
  if (!service) return call.Fail(E_UNEXPECTED, L"no dynamic content is set up");
  service->GetContent(Account(), request.bizType, request.bizUuid,
                      [call](const biz::ResultCode& result, const std::wstring& content) {
                        call.Finish(result, {content});
                      });
}

}  // namespace imsdk::bridge
