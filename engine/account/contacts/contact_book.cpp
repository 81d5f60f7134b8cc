#include "account/contacts/contact_book.h"

#include <utility>

namespace imsdk::account {

void ContactBook::WhenKnown(biz::IMCallback<> then) {
  if (fresh_) return then({});
  waiting_.push_back(std::move(then));
  if (!fetching_) Connected();
}

const biz::IMListedContact* ContactBook::Find(const biz::IMUserID& user) const {
  const auto found = contacts_.find(user);
  return found == contacts_.end() ? nullptr : &found->second;
}

void ContactBook::Connected() {
  fetching_ = true;
  Fetch(++last_fetch_, std::make_shared<Fetched>(), {});
}

void ContactBook::Disconnected() {
  fresh_ = false;
  for (auto& [user, listed] : contacts_) listed.contact.status = biz::kContactOffline;
  ShowMarked();
}

void ContactBook::Fetch(std::uint64_t fetch, const std::shared_ptr<Fetched>& found,
                        std::string place) {
  state_->line->Ask(link::GetContacts{std::move(place)},
                    [weak = weak_from_this(), fetch, found](const biz::ResultCode& result,
                                                            const link::Contacts& part) {
                      const auto self = weak.lock();
                      if (!self || fetch != self->last_fetch_) return;
                      if (result.ok()) found->groups = part.groups;
                      for (const biz::IMListedContact& one : part.contacts) {
                        found->contacts.insert_or_assign(one.contact.userid, one);
                      }
                      if (result.ok() && !part.next.empty()) {
                        return self->Fetch(fetch, found, part.next);
                      }
                      self->FetchEnded(result, std::move(*found));
                    });
}

void ContactBook::FetchEnded(const biz::ResultCode& result, Fetched found) {
  fetching_ = false;
  if (result.ok()) {
    known_ = fresh_ = true;
    groups_ = std::move(found.groups);
    contacts_ = std::move(found.contacts);
    ShowMarked();
  }
  for (const auto& [told, offline] : std::exchange(held_, {})) Happened(told, offline);
  for (const auto& presence : std::exchange(held_presence_, {})) Present(presence);
  // What was known before is better than nothing.
  const biz::ResultCode outcome = known_ ? biz::ResultCode{} : result;
  for (const auto& then : std::exchange(waiting_, {})) then(outcome);
}

void ContactBook::Happened(const Told& told, bool offline) {
  if (fetching_) return held_.emplace_back(told, offline), void();
  std::visit([&](const auto& what) { Take(what, offline); }, told);
}

void ContactBook::Take(const link::ContactChanged& changed, bool offline) {
  const biz::IMUserID& user = changed.contact.contact.userid;
  if (user == state_->self) return;
  const auto known = contacts_.find(user);
  if (changed.removed) {
    if (known == contacts_.end()) return;
    contacts_.erase(known);
    ShowMarked();
    if (!offline) state_->contact_events.on_contact_removed(user);
    return;
  }
  biz::IMListedContact listed = changed.contact;
  // Who is new here is offline until the server tells.
  if (known != contacts_.end()) listed.contact.status = known->second.contact.status;
  contacts_.insert_or_assign(user, listed);
  ShowMarked();
  listed.contact.unreadnum = state_->chat.Unread(biz::IMConversationID(user));
  if (!offline) state_->contact_events.on_contact_changed(listed);
}

void ContactBook::Take(const link::ContactGroupsChanged& changed, bool offline) {
  groups_ = changed.groups;
  if (!offline) state_->contact_events.on_groups_changed();
}

void ContactBook::Take(const link::ContactVerifyTold& told, bool offline) {
  if (!offline && told.msg.msgid != 0) state_->contact_events.on_contact_verify_msg(told.msg);
}

void ContactBook::Present(const link::ContactPresence& presence) {
  if (fetching_) return held_presence_.push_back(presence);
  std::vector<biz::IMContact> changed;
  for (const auto& [user, status] : presence.changed) {
    const auto known = contacts_.find(user);
    if (known == contacts_.end()) continue;
    biz::IMContact& contact = known->second.contact;
    if (std::exchange(contact.status, status) == status) continue;
    changed.push_back(contact);
    changed.back().unreadnum = state_->chat.Unread(biz::IMConversationID(user));
  }
  ShowMarked();
  if (!changed.empty()) state_->contact_events.on_contact_status(changed);
}

void ContactBook::ShowMarked() {
  std::vector<biz::IMContact> marked;
  for (const auto& [user, listed] : contacts_) {
    if (listed.asterisk) marked.push_back(listed.contact);
  }
  const base::AutoLock lock(lock_);
  marked_ = std::move(marked);
}

std::vector<biz::IMContact> ContactBook::Marked() const {
  const base::AutoLock lock(lock_);
  return marked_;
}

}  // namespace imsdk::account
