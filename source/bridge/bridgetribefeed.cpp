#include "source/bridge/bridgetribefeed.h"

#include <utility>

#include "source/bridge/jsparams/tribenotifies.h"

namespace imsdk::bridge {
namespace {

constexpr Notification<TribeActor> kOnClearTribeVisitor{L"onClearTribeVisitor",
                                                        "The tribe's visitors were cleared."};
constexpr Notification<TribeActor> kOnTribeClose{L"onTribeClose", "The tribe was closed."};
constexpr Notification<biz::IMTribeRequest> kOnEnabledTribe{L"onEnabledTribe",
                                                            "The tribe was enabled again."};
constexpr Notification<EnableNumChange> kOnEnableTribeNumChange{
    L"onEnableTribeNumChange",
    "The number of enabled tribes changed; `GetEnableTribeNum` tells it."};
constexpr Notification<TribeJoin> kOnJoinTribe{L"onJoinTribe", "The account joined a tribe."};
constexpr Notification<TribeJoin> kOnJoinTribeEx{L"onJoinTribeEx", "Somebody joined a tribe."};
constexpr Notification<TribeActor> kOnTribeKickMember{L"onTribeKickMember",
                                                      "The account was removed from a tribe."};
constexpr Notification<TribeActor> kOnTribeKickMemberEx{L"onTribeKickMemberEx",
                                                        "Somebody was removed from a tribe."};
constexpr Notification<TribeNtfImage> kOnTribeNtfTypeChange{L"onTribeNtfTypeChange",
                                                            "The tribe's notice image changed."};
constexpr Notification<TribeActor> kOnQuitTribe{L"onQuitTribe", "A member left the tribe."};
constexpr Notification<TribeActor> kOnTribeTransfer{
    L"onTribeTransfer", "The tribe was handed over from actor to recipient."};
constexpr Notification<TribeChange> kOnTribeBaseInfoChange{
    L"onTribeBaseInfoChange", "What the tribe says of itself changed."};
constexpr Notification<biz::IMTribeRequest> kOnTribeBulletinUpdate{L"onTribeBulletinUpdate",
                                                                   "The bulletin changed."};
constexpr Notification<TribeLevel> kOnTribeMemberChgLevel{L"onTribeMemberChgLevel",
                                                          "A member's level was changed."};
constexpr Notification<TribeMemberStatus> kOnTribeMemberStatusChange{
    L"onTribeMemberStatusChange",
    "A member came online or went; of tribes whose members were listed."};
constexpr Notification<TribeCount> kOnTribeMemberCntChange{
    L"onTribeMemberCntChange",
    "How many members there are, or are online, changed; gathered, of tribes whose members were "
    "listed."};
constexpr Notification<biz::IMNothing> kOnTribeShallowLogin{
    L"onTribeShallowLogin", "The account's tribes are known from now on."};
constexpr Notification<TribeMemberDisplay> kOnTribeMemberBaseInfoChange{
    L"onTribeMemberBaseInfoChange", "A member has another name to show."};

constexpr const NotifyInfo* kRows[] = {&kOnClearTribeVisitor,
                                       &kOnTribeClose,
                                       &kOnEnabledTribe,
                                       &kOnEnableTribeNumChange,
                                       &kOnJoinTribe,
                                       &kOnJoinTribeEx,
                                       &kOnTribeKickMember,
                                       &kOnTribeKickMemberEx,
                                       &kOnTribeNtfTypeChange,
                                       &kOnQuitTribe,
                                       &kOnTribeTransfer,
                                       &kOnTribeBaseInfoChange,
                                       &kOnTribeBulletinUpdate,
                                       &kOnTribeMemberChgLevel,
                                       &kOnTribeMemberStatusChange,
                                       &kOnTribeMemberCntChange,
                                       &kOnTribeShallowLogin,
                                       &kOnTribeMemberBaseInfoChange};

class TribeFeed final : public CAccountFeed {
 public:
  explicit TribeFeed(RefPtr<biz::IIMAccount> account) : CAccountFeed(std::move(account), kRows) {}

 private:
  using Tribe = biz::IMTribeID;
  using User = biz::IMUserID;

  void Update() override {
    if (mgr_) return;
    mgr_ = account().GetIMTribeMgr();
    if (!mgr_) return;
    biz::IMTribeEvents& raised = mgr_->Events();
    SubscribeActor<&kOnClearTribeVisitor>(raised.on_clear_visitor);
    SubscribeActor<&kOnQuitTribe>(raised.on_quit);
    SubscribeActor<&kOnTribeTransfer>(raised.on_transfer);
    Subscribe(raised.on_close, &TribeFeed::OnTribeClose);
    Subscribe(raised.on_enabled, &TribeFeed::OnEnabledTribe);
    Subscribe(raised.on_join, &TribeFeed::OnJoinTribe);
    Subscribe(raised.on_kick_member, &TribeFeed::OnTribeKickMember);
    Subscribe(raised.on_member_chg_level, &TribeFeed::OnTribeMemberChgLevel);
    Subscribe(raised.on_ntf_image, &TribeFeed::OnTribeNtfTypeChange);
    Subscribe(raised.on_base_info_change, &TribeFeed::OnTribeBaseInfoChange);
    Subscribe(raised.on_bulletin_update, &TribeFeed::OnTribeBulletinUpdate);
    Subscribe(raised.on_member_base_info_change, &TribeFeed::OnTribeMemberBaseInfoChange);
    Subscribe(raised.on_member_status, &TribeFeed::OnTribeMemberStatusChange);
    Subscribe(raised.on_member_count, &TribeFeed::OnTribeMemberCntChange);
    Subscribe(raised.on_shallow_login, &TribeFeed::OnTribeShallowLogin);
  }

  // An event that is told as it is.
  template <const Notification<TribeActor>* kRow>
  void SubscribeActor(base::event<biz::IMTribeEvents::Actor>& event) {
    Subscribe<TribeFeed>(
        event, [](TribeFeed& feed, const Tribe& tribe, const User& actor, const User& recipient) {
          feed.Notify(*kRow, {actor, tribe, recipient});
        });
  }
  // Whether an event is about the account itself.
  bool IsSelf(const User& user) const { return user == account().GetSelfID(); }

  void OnTribeClose(const Tribe& tribe, const User& actor, const User& recipient) {
    Notify(kOnTribeClose, {actor, tribe, recipient});
    Notify(kOnEnableTribeNumChange, {{actor, tribe, recipient}, true});
  }
  void OnEnabledTribe(const Tribe& tribe) {
    Notify(kOnEnabledTribe, {tribe});
    Notify(kOnEnableTribeNumChange, {{{}, tribe, {}}, false});
  }
  void OnJoinTribe(const Tribe& tribe, const User& actor, const biz::IMTribeMember& member) {
    const TribeJoin join{{actor, tribe, member.userid}, member};
    if (IsSelf(member.userid)) Notify(kOnJoinTribe, join);
    Notify(kOnJoinTribeEx, join);
  }
  void OnTribeKickMember(const Tribe& tribe, const User& actor, const User& recipient) {
    const TribeActor kick{actor, tribe, recipient};
    if (IsSelf(recipient)) Notify(kOnTribeKickMember, kick);
    Notify(kOnTribeKickMemberEx, kick);
  }
  void OnTribeMemberChgLevel(const Tribe& tribe, const User& actor, const User& recipient,
                             biz::TribeMemberLevel level) {
    Notify(kOnTribeMemberChgLevel, {{actor, tribe, recipient}, level});
  }
  void OnTribeNtfTypeChange(const Tribe& tribe, const std::wstring& path) {
    Notify(kOnTribeNtfTypeChange, {tribe, path});
  }
  void OnTribeBaseInfoChange(const Tribe& tribe, const biz::TribeModifyMap& changed) {
    TribeChange change{tribe, {}};
    for (const auto& [key, value] : changed) change.detail.push_back({key, value});
    Notify(kOnTribeBaseInfoChange, change);
    if (changed.contains(biz::kTribeKeyBulletin)) OnTribeBulletinUpdate(tribe);
  }
  void OnTribeBulletinUpdate(const Tribe& tribe) { Notify(kOnTribeBulletinUpdate, {tribe}); }
  void OnTribeMemberBaseInfoChange(const Tribe& tribe, const User& user,
                                   const biz::TribeUserModifyMap& changed) {
    const auto display = changed.find(biz::kTribeUserKeyDisplay);
    if (display == changed.end()) return;
    Notify(kOnTribeMemberBaseInfoChange, {tribe, user, display->second});
  }
  void OnTribeMemberStatusChange(const Tribe& tribe, const User& user,
                                 biz::TribeMemberBasicStatus status) {
    Notify(kOnTribeMemberStatusChange, {tribe, user, status});
  }
  void OnTribeMemberCntChange(const Tribe& tribe, std::uint32_t online, std::uint32_t total) {
    Notify(kOnTribeMemberCntChange, {tribe, online, total});
  }
  void OnTribeShallowLogin() { Notify(kOnTribeShallowLogin, {}); }

  RefPtr<biz::IIMTribeMgr> mgr_;  // null until subscribed
};

}  // namespace

constinit const NotifyList kTribeNotifications = kRows;

std::shared_ptr<CAccountFeed> MakeTribeFeed(RefPtr<biz::IIMAccount> account) {
  return std::make_shared<TribeFeed>(std::move(account));
}

}  // namespace imsdk::bridge
