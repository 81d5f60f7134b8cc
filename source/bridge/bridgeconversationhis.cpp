// History, search and content of messages.
#include <utility>

#include "imsdk/client/dynamic_content.h"
#include "kexcore/kexcom.h"
#include "source/bridge/bridgeconversation.h"
#include "source/bridge/jsparams/idtext.h"
#include "source/bridge/sendercheck.h"

namespace imsdk::bridge {
namespace {

using ns_log::CTraceProxy;

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

biz::IMCallback<biz::IMMessagePage> CBridgeConversation::RspFetchMsg(PageCall call,
                                                                     std::function<void()> then) {
  return [call = std::move(call), then = std::move(then)](const biz::ResultCode& result,
                                                          const biz::IMMessagePage& page) {
    CTraceProxy(ns_log::kRoutine, call.site(), L"response msgs.")
        .Brief("_brief_,msgids", Joined(page.msgs, MsgIdText));
    CheckSenders(page.msgs, call.site(), L"rsp msg. fromid is invalid!!", kFetchedBrief);
    call.Finish(result, page);
    if (then) then();
  };
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
  const biz::ResultCode found = Find(cid, &chat, call);
  if (!found.ok()) return call.Finish(found);
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
