#include "source/bridge/bridgeconversation.h"

#include <utility>

#include "imsdk/client/chat_window.h"
#include "kexbase/time.h"
#include "kexcore/kexcom.h"
#include "source/bridge/jsparams/idtext.h"
#include "source/bridge/sendercheck.h"

namespace imsdk::bridge {
namespace {

using ns_log::CTraceProxy;
using ns_log::kRoutine;

constexpr char kSource[] = "source\\bridge\\bridgeconversation";

// Nobody waits for the marking: its outcome is only traced.
void MarkRead(biz::IIMConversation& chat, const CallBase& call) {
  CTraceProxy(kRoutine, call.site(), L"SetNewMsgReaded req");
  const std::int64_t start = base::TimeTicks::Now().ToMilliseconds();
  chat.SetNewMsgReaded([start](const biz::ResultCode& result) {
    const std::int64_t timeOperate = base::TimeTicks::Now().ToMilliseconds() - start;
    CTraceProxy(kRoutine, {"CBridgeConversation::MarkSeen::SetNewMsgReaded", kSource},
                L"SetNewMsgReaded rsp")
        .Brief("_brief_,result,timeOperate", result.code, timeOperate);
  });
}

}  // namespace

biz::ResultCode CBridgeConversation::FindConversation(const biz::IMUserID& cid, Conversation* chat,
                                                      const CallBase& call) const {
  *chat = GetConversation(cid);
  if (*chat) return {};
  CTraceProxy(ns_log::kError, call.site(), L"GetConversation failed!!");
  return {E_UNEXPECTED, 0, L"GetConversation failed!!"};
}

void CBridgeConversation::GetNewMsg(const HisMsgRequest& request, Conversation chat,
                                    Call<biz::IMMessagePage> call) {
  const biz::IMMessagePage page = chat->GetNewMsg(request);
  MarkSeen(chat, call)();
  CheckSenders(page.msgs, call.site(), L"new msg. fromid is invalid!!", kFetchedBrief);
  call.Succeed(page);
}

std::function<void()> CBridgeConversation::MarkSeen(const Conversation& chat,
                                                    const CallBase& call) const {
  const auto self = reinterpret_cast<std::uintptr_t>(this);  // only traced
  return [self, account = Account(), chat, call] {
    const auto windows = kexcore::GetService<client::IChatWindowService>();
    const biz::IMUserID& cid = chat->GetCID();
    const bool seen =
        windows && (windows->IsVisible(account, cid) || windows->IsActivated(account, cid));
    CTraceProxy(
        kRoutine, call.site(),
        seen ? L"window is visible or BeActived!!" : L"window is NOT visible and BeActived!!")
        .Brief("_brief_,this,userid", self, IdText(cid));
    if (seen) MarkRead(*chat, call);
  };
}

void CBridgeConversation::PeekNewMsg(const HisMsgRequest& request, Conversation chat,
                                     Call<biz::IMMessagePage> call) {
  call.Succeed(chat->GetNewMsg(request));
}

void CBridgeConversation::GetLocalHisMsg(const HisMsgRequest& request, Conversation chat,
                                         Call<biz::IMMessagePage> call) {
  chat->GetLocalHisMsg(request, std::move(call));
}

void CBridgeConversation::GetUnreadCount(const CidRequest&, Conversation chat,
                                         Call<CountAnswer> call) {
  call.Succeed({chat->GetUnreadCount()});
}

void CBridgeConversation::GetUnreadCountInBulk(const CidsRequest& request,
                                               Call<UnreadsAnswer> call) {
  if (!IsReady()) return call.Fail(E_UNEXPECTED, L"failed");
  UnreadsAnswer answer;
  if (request.cids.empty()) answer.unreads = GetConversations();
  for (const biz::IMUserID& cid : request.cids) {
    const Conversation chat = GetConversation(cid);
    answer.unreads.push_back({cid, chat ? chat->GetUnreadCount() : 0});
  }
  call.Succeed(answer);
}

void CBridgeConversation::SetMsgRead(const CidRequest&, Conversation chat, Call<NoKeys> call) {
  chat->SetNewMsgReaded(std::move(call));
}

void CBridgeConversation::GetReadedBoundary(const CidRequest&, Conversation chat,
                                            Call<biz::IMMsgPosition> call) {
  chat->GetReadedBoundary(std::move(call));
}

void CBridgeConversation::DeleteLocalMsg(const DeleteMsgRequest& request, Conversation chat,
                                         Call<CountAnswer> call) {
  if (!request.all && request.msgids.empty()) return call.Fail(E_INVALIDARG, L"invalid!");
  if (request.all) return chat->DeleteAllLocalMsg(std::move(call));
  chat->DeleteLocalMsg(request.msgids, std::move(call));
}

}  // namespace imsdk::bridge
