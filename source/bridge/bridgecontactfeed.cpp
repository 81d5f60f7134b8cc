#include "source/bridge/bridgecontactfeed.h"

#include <utility>

#include "source/bridge/jsparams/contactrecords.h"

namespace imsdk::bridge {
namespace {

constexpr Notification<ContactChange> kOnContactChanged{
    L"onContactChanged", "Somebody is a contact now, is another one than before, or is none."};
constexpr Notification<biz::IMNothing> kOnContactGroupsChanged{L"onContactGroupsChanged",
                                                               "The groups of the list changed."};
constexpr Notification<ContactStatuses> kOnContactStatus{L"onContactStatus",
                                                         "Contacts came or went; gathered."};
constexpr Notification<biz::IMContactVerifyMsg> kOnContactVerifyMsg{
    L"onContactVerifyMsg", "A request to become a contact came, or was decided on."};

constexpr const NotifyInfo* kRows[] = {&kOnContactChanged, &kOnContactGroupsChanged,
                                       &kOnContactStatus, &kOnContactVerifyMsg};

class ContactFeed final : public CAccountFeed {
 public:
  explicit ContactFeed(RefPtr<biz::IIMAccount> account) : CAccountFeed(std::move(account), kRows) {}

 private:
  void Update() override {
    if (mgr_) return;
    mgr_ = account().GetIMContactMgr();
    if (!mgr_) return;
    biz::IMContactEvents& events = mgr_->Events();
    Subscribe(events.on_contact_changed, &ContactFeed::OnContactChanged);
    Subscribe(events.on_contact_removed, &ContactFeed::OnContactRemoved);
    Subscribe(events.on_groups_changed, &ContactFeed::OnGroupsChanged);
    Subscribe(events.on_contact_status, &ContactFeed::OnContactStatus);
    Subscribe(events.on_contact_verify_msg, &ContactFeed::OnContactVerifyMsg);
  }

  void OnContactChanged(const biz::IMListedContact& contact) {
    Notify(kOnContactChanged, {contact});
  }
  void OnContactRemoved(const biz::IMUserID& user) {
    Notify(kOnContactChanged, {{{.userid = user}}, true});
  }
  void OnGroupsChanged() { Notify(kOnContactGroupsChanged, {}); }
  void OnContactStatus(const std::vector<biz::IMContact>& contacts) {
    Notify(kOnContactStatus, {contacts});
  }
  void OnContactVerifyMsg(const biz::IMContactVerifyMsg& msg) { Notify(kOnContactVerifyMsg, msg); }

  RefPtr<biz::IIMContactMgr> mgr_;  // null until subscribed
};

}  // namespace

constinit const NotifyList kContactNotifications = kRows;

std::shared_ptr<CAccountFeed> MakeContactFeed(RefPtr<biz::IIMAccount> account) {
  return std::make_shared<ContactFeed>(std::move(account));
}

}  // namespace imsdk::bridge
