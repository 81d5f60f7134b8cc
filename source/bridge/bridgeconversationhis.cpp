// History, search and content of messages.
#include <utility>

#include "imsdk/client/dynamic_content.h"
#include "kexbase/guid.h"
#include "kexcore/kexcom.h"
#include "source/bridge/bridgeconversation.h"
#include "source/bridge/jsparams/idtext.h"
#include "source/bridge/tracepoint.h"

namespace imsdk::bridge {
namespace {

bool NamesNone(const biz::IMConversationID& cid) { return cid.user.empty() && cid.tribe.id == 0; }

}  // namespace

biz::IMCallback<biz::IMSearchPage> CBridgeConversation::AnswerSearch(
    const In<biz::IMSearchRequest>& request, Call<SearchAnswer> call) {
  return [in = InConversation(request),
          asked = SearchFilters{request.keywords, request.msgtypes, request.fromids,
                                request.atrelations},
          call = std::move(call)](const biz::ResultCode& result, const biz::IMSearchPage& page) {
    call.Finish(result, {in, page, asked});
  };
}

ns_log::TraceSite CBridgeConversation::FetchSite(const CallBase& call) const {
  return kind_.fetched_by ? ns_log::TraceSite{kind_.fetched_by} : call.site("RspFetchMsg");
}

biz::IMCallback<biz::IMMessagePage> CBridgeConversation::RspFetchMsg(
    PageCall call, std::function<void(const biz::IMMessagePage&)> then) const {
  return [call, then = std::move(then), &kind = kind_, site = FetchSite(call)](
             const biz::ResultCode& result, const biz::IMMessagePage& page) {
    kind.trace_fetched(result, page.msgs, site);
    call.Finish(result, page);
    if (result.ok() && then) then(page);
  };
}

void CBridgeConversation::GetRemoteHisMsg(const In<biz::IMPageRequest>& request, Chat chat,
                                          PageCall call) {
  const biz::IMMsgPosition from{request.msgtime, request.msgid};
  chat->GetRemoteHisMsg(
      request,
      [from, cid = ConversationText(chat->GetCID()), site = FetchSite(call),
       answer = RspFetchMsg(call)](const biz::ResultCode& result, const biz::IMMessagePage& page) {
        Mark(ns_log::CTraceProxy(result.ok() ? ns_log::kRoutine : ns_log::kError, site,
                                 L"get remote msg rsp")
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

void CBridgeConversation::SearchDBMsg2(const In<biz::IMSearchRequest>& request, ChatMgr mgr,
                                       Call<SearchAnswer> call) {
  if (NamesNone(request.cid)) {
    return mgr->SearchMsg(request, AnswerSearch(request, std::move(call)));
  }
  Chat chat;
  const biz::ResultCode found = Find(request.cid, &chat);
  if (!found.ok()) return call.Refuse(found);
  Search<&biz::IIMConversation::SearchMsg>(request, std::move(chat), std::move(call));
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
