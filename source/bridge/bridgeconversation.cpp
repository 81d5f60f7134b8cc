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
  chat.SetMsgRead({}, [start](const biz::ResultCode& result) {
    const std::int64_t timeOperate = base::TimeTicks::Now().ToMilliseconds() - start;
    CTraceProxy(kRoutine, {"CBridgeConversation::MarkSeen::SetNewMsgReaded", kSource},
                L"SetNewMsgReaded rsp")
        .Brief("_brief_,result,timeOperate", result.code, timeOperate);
  });
}

}  // namespace

void CBridgeConversation::OnAccountChanged(biz::IIMAccount* engine) {
  mgr_ = engine ? ChatMgrOf(*engine) : nullptr;
}

biz::ResultCode CBridgeConversation::Find(ChatMgr* mgr) const {
  *mgr = mgr_;
  if (mgr_) return {};
  return {E_UNEXPECTED, 0, L"failed"};
}

biz::ResultCode CBridgeConversation::Find(const biz::IMConversationID& cid, Chat* chat,
                                          const CallBase& call) const {
  if (mgr_) *chat = mgr_->GetConversation(cid);
  if (*chat) return {};
  CTraceProxy(ns_log::kError, call.site(), L"GetConversation failed!!");
  return {E_UNEXPECTED, 0, L"GetConversation failed!!"};
}

void CBridgeConversation::GetNewMsg(const In<biz::IMPageRequest>& request, Chat chat,
                                    PageCall call) {
  chat->GetNewMsg(request, [call, seen = MarkSeen(chat, call)](const biz::ResultCode& result,
                                                               const biz::IMMessagePage& page) {
    seen();
    CheckSenders(page.msgs, call.site(), L"new msg. fromid is invalid!!", kFetchedBrief);
    call.Finish(result, page);
  });
}

void CBridgeConversation::GetOfflineMsg(const In<biz::IMNothing>& request, Chat chat,
                                        PageCall call) {
  chat->GetOfflineMsg(request, RspFetchMsg(call, MarkSeen(chat, call)));
}

std::function<void()> CBridgeConversation::MarkSeen(const Chat& chat, const CallBase& call) const {
  const auto self = reinterpret_cast<std::uintptr_t>(this);  // only traced
  return [self, account = Account(), chat, call] {
    const auto windows = kexcore::GetService<client::IChatWindowService>();
    const biz::IMConversationID& cid = chat->GetCID();
    const bool seen =
        windows && (windows->IsVisible(account, cid) || windows->IsActivated(account, cid));
    CTraceProxy(
        kRoutine, call.site(),
        seen ? L"window is visible or BeActived!!" : L"window is NOT visible and BeActived!!")
        .Brief("_brief_,this,userid", self, ConversationText(cid));
    if (seen) MarkRead(*chat, call);
  };
}

}  // namespace imsdk::bridge
