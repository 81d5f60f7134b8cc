#include "source/bridge/bridgevirtualmsg.h"

#include "kexcore/kexcom.h"

namespace imsdk::bridge {
namespace {

constexpr char kSource[] = "source\\bridge\\bridgevirtualmsg";

constexpr std::wstring_view kSysNotifications[] = {L"onReceiveSysMsg"};
constexpr std::wstring_view kSubscribeNotifications[] = {L"onReceiveSubscribeMsg"};

#define VIRTUAL(Method) IM_METHOD(CBridgeVritualMsg, Method)
constexpr MethodRow kMethods[] = {
    VIRTUAL(GetNewMsg),         VIRTUAL(PeekNewMsg),           VIRTUAL(GetLocalHisMsg),
    VIRTUAL(GetUnreadCount),    VIRTUAL(GetUnreadCountInBulk), VIRTUAL(SetMsgRead),
    VIRTUAL(GetReadedBoundary), VIRTUAL(DeleteLocalMsg),
};
#undef VIRTUAL

VirtualChatMgr FindVirtualChatMgr(const biz::IMUserID& account) {
  const auto accounts = kexcore::GetService<biz::IIMAccountMgr>();
  const auto engine = accounts && account.valid() ? accounts->GetAccount(account) : nullptr;
  return engine ? engine->GetIMVirtualChatMgr() : nullptr;
}

}  // namespace

std::span<const MethodRow> CBridgeVritualMsg::Methods() const { return kMethods; }

void CBridgeVritualMsg::OnAccountChanged() { mgr_ = FindVirtualChatMgr(Account()); }

CBridgeConversation::Conversation CBridgeVritualMsg::GetConversation(
    const biz::IMUserID& cid) const {
  return mgr_ ? mgr_->GetConversation(cid) : nullptr;
}

std::vector<biz::IMUnreadCount> CBridgeVritualMsg::GetConversations() const {
  return mgr_ ? mgr_->GetConversations() : std::vector<biz::IMUnreadCount>();
}

void CBridgeVirtualEvent::OnAccountChanged() {
  events().DisconnectAll();
  mgr_ = FindVirtualChatMgr(Account());
  if (!mgr_) return;
  const std::wstring_view name = Notifications().front();
  Subscribe<CBridgeVirtualEvent>(
      EventOf(mgr_->Events()),
      [name](const CBridgeVirtualEvent& self, const std::vector<biz::IMMessage>& msgs) {
        self.Notify(name, MsgsNotify{&msgs});
      });
}

std::span<const std::wstring_view> CBridgeSysMsg::Notifications() const {
  return kSysNotifications;
}

CBridgeSysMsg::Event& CBridgeSysMsg::EventOf(biz::IMVirtualChatEvents& raised) const {
  return raised.on_receive_sys_msg;
}

std::span<const std::wstring_view> CBridgeSubscribeMsg::Notifications() const {
  return kSubscribeNotifications;
}

CBridgeSubscribeMsg::Event& CBridgeSubscribeMsg::EventOf(biz::IMVirtualChatEvents& raised) const {
  return raised.on_receive_subscribe_msg;
}

}  // namespace imsdk::bridge
