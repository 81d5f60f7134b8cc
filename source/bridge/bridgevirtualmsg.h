// Business module "im.virtualmsg": system and subscription messages that look as if a user had sent
// them, and the two modules that tell the page when some arrive.
#pragma once

#include <vector>

#include "imsdk/biz/virtual_chat.h"
#include "source/bridge/bridgeconversation.h"

namespace imsdk::bridge {

using VirtualChatMgr = RefPtr<biz::IIMVirtualChatMgr>;

class CBridgeVritualMsg final : public CBridgeConversation {
 public:
  using CBridgeConversation::CBridgeConversation;

 private:
  std::span<const MethodRow> Methods() const override;
  void OnAccountChanged() override;
  Conversation GetConversation(const biz::IMUserID& cid) const override;
  std::vector<biz::IMUnreadCount> GetConversations() const override;
  bool IsReady() const override { return static_cast<bool>(mgr_); }

  VirtualChatMgr mgr_;  // of the current account, or null. View's thread
};

// A module without methods, for one of the events.
class CBridgeVirtualEvent : public CBridgeBase {
 public:
  using CBridgeBase::CBridgeBase;

 protected:
  using Event = base::event<void(const std::vector<biz::IMMessage>&)>;

  std::span<const MethodRow> Methods() const final { return {}; }
  void OnAccountChanged() final;
  virtual Event& EventOf(biz::IMVirtualChatEvents& raised) const = 0;

 private:
  VirtualChatMgr mgr_;  // keeps the event while it is subscribed. View's thread
};

// "onReceiveSysMsg"
class CBridgeSysMsg final : public CBridgeVirtualEvent {
 public:
  using CBridgeVirtualEvent::CBridgeVirtualEvent;
  std::span<const std::wstring_view> Notifications() const override;

 private:
  Event& EventOf(biz::IMVirtualChatEvents& raised) const override;
};

// "onReceiveSubscribeMsg"
class CBridgeSubscribeMsg final : public CBridgeVirtualEvent {
 public:
  using CBridgeVirtualEvent::CBridgeVirtualEvent;
  std::span<const std::wstring_view> Notifications() const override;

 private:
  Event& EventOf(biz::IMVirtualChatEvents& raised) const override;
};

}  // namespace imsdk::bridge
