#include "source/bridge/bridgeconversation.h"

#include <utility>

#include "imsdk/client/chat_window.h"
#include "kexbase/time.h"
#include "kexcore/kexcom.h"
#include "source/bridge/jsparams/idtext.h"

namespace imsdk::bridge {
namespace {

using ns_log::kRoutine;

// Marks the new messages read. When nobody waits for it, its outcome is only traced.
void MarkRead(biz::IIMConversation& chat, const CallBase& call, biz::IMCallback<> then = nullptr) {
  call.Trace(kRoutine, L"SetNewMsgReaded req");
  const std::int64_t start = base::TimeTicks::Now().ToMilliseconds();
  chat.SetMsgRead({}, [start, site = call.site("SetNewMsgReaded"),
                       then = std::move(then)](const biz::ResultCode& result) {
    const std::int64_t timeOperate = base::TimeTicks::Now().ToMilliseconds() - start;
    ns_log::CTraceProxy(kRoutine, site, L"SetNewMsgReaded rsp")
        .Brief("_brief_,result,timeOperate", result.code, timeOperate);
    if (then) then(result);
  });
}

}  // namespace

void CBridgeConversation::OnAccountChanged(biz::IIMAccount* engine) {
  CBridgeBase::OnAccountChanged(engine);
  mgr_ = engine ? kind_.chats(*engine) : nullptr;
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
  chat->GetNewMsg(request, [call, chat, seen = AskWindow(chat, call), &kind = kind_](
                               const biz::ResultCode& result, const biz::IMMessagePage& page) {
    if (!result.ok()) return call.Finish(result);
    if (seen()) MarkRead(*chat, call);
    kind.trace_new(page.msgs, call.site());
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

void CBridgeConversation::SetMsgRead(const In<biz::IMNothing>&, Chat chat, Call<> call) {
  MarkRead(*chat, call, call);
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
