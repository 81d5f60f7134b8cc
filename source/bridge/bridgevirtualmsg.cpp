// Business module "im.virtualmsg": system and subscription messages that look as if a user had sent
// them, and the two modules without methods that tell the page when some arrive.
#include <utility>

#include "source/bridge/bridgemodules.h"
#include "source/bridge/conversationform.h"
#include "source/bridge/conversationrows.h"

namespace imsdk::bridge {
namespace {

constexpr wchar_t kLookUpText[] = L"GetIMVirtualChatMgr.";

class CBridgeVritualMsg final : public ConversationModule<VirtualForm> {
 public:
  static constexpr Name kName = "CBridgeVritualMsg";

  explicit CBridgeVritualMsg(ModuleContext context)
      : ConversationModule(std::move(context), kPeerKind<&biz::IIMAccount::GetIMVirtualChatMgr>, {},
                           nullptr, {"CBridgeVritualMsg::OnAccountChanged", kLookUpText}) {}
  std::span<const MethodRow> Methods() const override;
};

using Rows = ConversationRows<CBridgeVritualMsg>;
constexpr MethodRow kMethods[] = {
    Rows::kGetNewMsg,         Rows::kPeekNewMsg,           Rows::kGetLocalHisMsg,
    Rows::kGetUnreadCount,    Rows::kGetUnreadCountInBulk, Rows::kSetMsgRead,
    Rows::kGetReadedBoundary, Rows::kDeleteLocalMsg,
};

std::span<const MethodRow> CBridgeVritualMsg::Methods() const { return kMethods; }

using MsgsRow = Notification<MsgsNotify, VirtualForm>;
constexpr MsgsRow kOnReceiveSysMsg{L"onReceiveSysMsg", "System messages came."};
constexpr MsgsRow kOnReceiveSubscribeMsg{L"onReceiveSubscribeMsg", "Subscription messages came."};

template <const MsgsRow& kRow>
constexpr const NotifyInfo* kRows[] = {&kRow};

// The messages of `kEvent` under the notification `kRow`.
template <auto kEvent, const MsgsRow& kRow>
class VirtualFeed final : public CAccountFeed {
 public:
  static std::shared_ptr<CAccountFeed> Make(RefPtr<biz::IIMAccount> account) {
    return std::make_shared<VirtualFeed>(std::move(account));
  }
  explicit VirtualFeed(RefPtr<biz::IIMAccount> account)
      : CAccountFeed(std::move(account), kRows<kRow>) {}

 private:
  void Update() override {
    if (mgr_) return;
    mgr_ = account().GetIMVirtualChatMgr();
    Subscribe(mgr_->Events().*kEvent, &VirtualFeed::OnMsgs);
  }
  void OnMsgs(const std::vector<biz::IMMessage>& msgs) { Notify(kRow, MsgsNotify{&msgs}); }

  RefPtr<biz::IIMVirtualChatMgr> mgr_;  // null until subscribed
};

}  // namespace

std::shared_ptr<CBridgeBase> MakeBridgeVritualMsg(const ModuleContext& context) {
  return std::make_shared<CBridgeVritualMsg>(context);
}
std::shared_ptr<CBridgeBase> MakeBridgeSysMsg(const ModuleContext& context) {
  return std::make_shared<CBridgeBase>(
      context, kRows<kOnReceiveSysMsg>,
      &VirtualFeed<&biz::IMVirtualChatEvents::on_receive_sys_msg, kOnReceiveSysMsg>::Make,
      LookUp{"CBridgeSysMsg::OnAccountChanged", kLookUpText});
}
std::shared_ptr<CBridgeBase> MakeBridgeSubscribeMsg(const ModuleContext& context) {
  return std::make_shared<CBridgeBase>(
      context, kRows<kOnReceiveSubscribeMsg>,
      &VirtualFeed<&biz::IMVirtualChatEvents::on_receive_subscribe_msg,
                   kOnReceiveSubscribeMsg>::Make,
      LookUp{"CBridgeSubscribeMsg::OnAccountChanged", kLookUpText});
}

}  // namespace imsdk::bridge
