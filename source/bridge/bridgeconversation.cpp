#include "source/bridge/bridgeconversation.h"

#include <utility>

#include "imsdk/client/chat_window.h"
#include "kexbase/time.h"
#include "kexcore/kexcom.h"
#include "source/bridge/jsparams/idtext.h"
#include "source/bridge/sendercheck.h"

namespace imsdk::bridge {
namespace {

using ns_log::kRoutine;

// Nobody waits for the marking: its outcome is only traced.
void MarkRead(biz::IIMConversation& chat, const CallBase& call) {
  call.Trace(kRoutine, L"SetNewMsgReaded req");
  const std::int64_t start = base::TimeTicks::Now().ToMilliseconds();
  chat.SetMsgRead({}, [start, site = call.site("SetNewMsgReaded")](const biz::ResultCode& result) {
    const std::int64_t timeOperate = base::TimeTicks::Now().ToMilliseconds() - start;
    ns_log::CTraceProxy(kRoutine, site, L"SetNewMsgReaded rsp")
        .Brief("_brief_,result,timeOperate", result.code, timeOperate);
  });
}

}  // namespace

void CBridgeConversation::OnAccountChanged(biz::IIMAccount* engine) {
  CBridgeBase::OnAccountChanged(engine);
  mgr_ = engine ? ChatMgrOf(*engine) : nullptr;
}

biz::ResultCode CBridgeConversation::Find(ChatMgr* mgr) const {
  *mgr = mgr_;
  return mgr_ ? biz::ResultCode() : NotReady();
}

biz::ResultCode CBridgeConversation::Find(const biz::IMConversationID& cid, Chat* chat) const {
  if (mgr_) *chat = mgr_->GetConversation(cid);
  if (*chat) return {};
  return {E_UNEXPECTED, 0, L"GetConversation failed!!"};
}

void CBridgeConversation::GetNewMsg(const In<biz::IMPageRequest>& request, Chat chat,
                                    PageCall call) {
  chat->GetNewMsg(request, [call, chat, seen = AskWindow(chat, call)](
                               const biz::ResultCode& result, const biz::IMMessagePage& page) {
    if (!result.ok()) return call.Finish(result);
    if (seen()) MarkRead(*chat, call);
    CheckSenders(page.msgs, call.site(), L"new msg. fromid is invalid!!", kFetchedBrief);
    call.Finish(result, page);
  });
}

void CBridgeConversation::GetOfflineMsg(const In<biz::IMNothing>& request, Chat chat,
                                        PageCall call) {
  const auto mark = [call, chat, seen = AskWindow(chat, call)](const biz::IMMessagePage& page) {
    if (!seen()) return;
    // What is unread and not in the page, the page has not got: new messages, or those that the
    // cache let go of.
    chat->GetUnreadCount(
        {}, [=, got = page.msgs.size()](const biz::ResultCode& result, const biz::IMCount& unread) {
          if (result.ok() && static_cast<std::size_t>(unread.count) == got) MarkRead(*chat, call);
        });
  };
  chat->GetOfflineMsg(request, RspFetchMsg(call, mark));
}

std::function<bool()> CBridgeConversation::AskWindow(const Chat& chat, const CallBase& call) const {
  const auto self = reinterpret_cast<std::uintptr_t>(this);  // only traced
  return [self, account = Account(), chat, call] {
    const auto windows = kexcore::GetService<client::IChatWindowService>();
    const biz::IMConversationID& cid = chat->GetCID();
    const bool seen =
        windows && (windows->IsVisible(account, cid) || windows->IsActivated(account, cid));
    call.Trace(kRoutine, seen ? L"window is visible or BeActived!!"
                              : L"window is NOT visible and BeActived!!")
        .Brief("_brief_,this,userid", self, ConversationText(cid));
    return seen;
  };
}

}  // namespace imsdk::bridge
