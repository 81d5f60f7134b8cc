#include "embedded/contact_desk.h"

#include <algorithm>
#include <optional>
#include <string>
#include <utility>

#include "embedded/contact_entries.h"

namespace imsdk::embedded {

namespace {

constexpr std::int64_t kContactsInPart = 500;
constexpr std::int64_t kMostContacts = 10'000;
constexpr std::size_t kMostGroups = 500;
constexpr std::size_t kMostBlack = 1'000;
constexpr std::int64_t kMostFound = 50;

biz::ResultCode NoSuchGroup() {
  return Refusal(biz::kContactNoSuchGroup, L"the list has no such group");
}
biz::ResultCode TooMany(const wchar_t* text) { return Refusal(biz::kContactTooMany, text); }

// A group of the list; the root group is none.
const biz::IMContactGroup* FindGroup(const std::vector<biz::IMContactGroup>& groups,
                                     std::int64_t gid) {
  const auto found = std::find_if(groups.begin(), groups.end(),
                                  [gid](const auto& group) { return group.gid == gid; });
  return found == groups.end() ? nullptr : &*found;
}

}  // namespace

biz::ResultCode CheckRoom(ServerStore& store, const NewContact& contact) {
  if (store.contacts().Find(contact.owner, contact.contact)) return {};
  if (store.contacts().Count(contact.owner) < kMostContacts) return {};
  return TooMany(L"the list of contacts is full");
}

void PutContact(ServerStore& store, Effects& effects, const NewContact& contact) {
  if (store.contacts().Find(contact.owner, contact.contact)) return;
  const bool grouped = FindGroup(store.contacts().Groups(contact.owner), contact.gid) != nullptr;
  store.contacts().Put(contact.owner,
                       {contact.contact, {.gid = grouped ? contact.gid : biz::kRootGroup}});
  TellContact(store.mail(), effects, contact.owner, contact.contact);
  effects.glances.push_back({contact.owner, contact.contact});
}

void PutBlack(ServerStore& store, Effects& effects, std::int64_t owner, std::int64_t account,
              bool on) {
  if (!store.contacts().SetBlack(owner, account, on, store.Now())) return;
  effects.glances.push_back({account, owner});
}

biz::IMContact ContactDesk::Shown(const Caller& caller, StoredUser user) {
  user.shown.status = presence_.Seen({caller.account, user.account});
  return std::move(user.shown);
}

Outcome<link::Contacts> ContactDesk::Answer(const Caller& caller,
                                            const link::GetContacts& request) {
  Position behind = 0;
  if (!request.place.empty()) {
    const auto place = ParsePosition(request.place);
    if (!place) return Failure(biz::kEngineNotFound, L"the list has no such place");
    behind = *place;
  }
  auto listed = store_.contacts().Behind(caller.account, behind, kContactsInPart);
  Outcome<link::Contacts> outcome;
  outcome.reply.groups = store_.contacts().Groups(caller.account);
  if (std::ssize(listed) == kContactsInPart) {
    outcome.reply.next = std::to_string(listed.back().account);
  }
  for (StoredContact& one : listed) {
    one.listed.contact.status = presence_.Seen({caller.account, one.account});
    outcome.reply.contacts.push_back(std::move(one.listed));
  }
  return outcome;
}

Outcome<biz::IMContacts> ContactDesk::Answer(const Caller& caller, const link::FindUsers& request) {
  biz::IMContacts found;
  for (const biz::IMUserID& user : request.users) {
    if (auto one = store_.contacts().User(user)) {
      found.contacts.push_back(Shown(caller, std::move(*one)));
    }
  }
  return found;
}

Outcome<biz::IMContacts> ContactDesk::Answer(const Caller& caller,
                                             const link::SearchUsers& request) {
  biz::IMContacts found;
  if (request.search.key.empty()) return found;
  for (StoredUser& user : store_.contacts().Search(request.search.key, kMostFound)) {
    found.contacts.push_back(Shown(caller, std::move(user)));
  }
  return found;
}

Outcome<link::Nothing> ContactDesk::Answer(const Caller& caller, const link::SetProfile& request) {
  const biz::IMProfile& profile = request.profile;
  Outcome<link::Nothing> outcome;
  if (!store_.contacts().SetProfile(
          {caller.account,
           {.userid = caller.user, .display = profile.display, .portrait = profile.portrait}})) {
    return outcome;
  }
  TellContact(store_.mail(), outcome.effects, caller.account, caller.account);
  for (const std::int64_t owner : store_.contacts().OwnersOf(caller.account)) {
    TellContact(store_.mail(), outcome.effects, owner, caller.account);
  }
  return outcome;
}

template <class Change>
Outcome<link::Nothing> ContactDesk::ChangeContact(const Caller& caller, const biz::IMUserID& user,
                                                  const Change& change) {
  const auto found = store_.contacts().User(user);
  auto contact = found ? store_.contacts().Find(caller.account, found->account) : std::nullopt;
  if (!contact) return Refusal(biz::kContactNoContact, L"the user is no contact");
  Outcome<link::Nothing> outcome;
  change(*contact);
  TellContact(store_.mail(), outcome.effects, caller.account, contact->account);
  return outcome;
}

Outcome<link::Nothing> ContactDesk::Answer(const Caller& caller,
                                           const link::RemoveContact& request) {
  return ChangeContact(caller, request.user, [&](const StoredContact& contact) {
    store_.contacts().Remove(caller.account, contact.account);
  });
}

Outcome<link::Nothing> ContactDesk::Answer(const Caller& caller, const link::MoveContact& request) {
  const std::int64_t gid = request.place.gid;
  if (gid != biz::kRootGroup && !FindGroup(store_.contacts().Groups(caller.account), gid)) {
    return NoSuchGroup();
  }
  return ChangeContact(caller, request.place.userid, [&](StoredContact& contact) {
    contact.listed.gid = gid;
    store_.contacts().Put(caller.account, contact);
  });
}

Outcome<link::Nothing> ContactDesk::Answer(const Caller& caller, const link::SetAsterisk& request) {
  return ChangeContact(caller, request.mark.userid, [&](StoredContact& contact) {
    contact.listed.asterisk = request.mark.on;
    store_.contacts().Put(caller.account, contact);
  });
}

Outcome<biz::IMContactGroupRequest> ContactDesk::Answer(const Caller& caller,
                                                        const link::SetContactGroup& request) {
  biz::IMContactGroup group = request.group;
  const auto groups = store_.contacts().Groups(caller.account);
  const bool removes = group.name.find_first_not_of(L" \t\r\n\u00A0\u3000") == group.name.npos;
  const biz::IMContactGroup* known = FindGroup(groups, group.gid);
  const biz::IMContactGroup* parent = FindGroup(groups, group.parent);
  Outcome<biz::IMContactGroupRequest> outcome;
  if (group.gid != biz::kRootGroup) {
    if (!known) return NoSuchGroup();
    if (removes) {
      for (const std::int64_t contact : store_.contacts().RemoveGroup(caller.account, group.gid)) {
        TellContact(store_.mail(), outcome.effects, caller.account, contact);
      }
    } else {
      store_.contacts().RenameGroup(caller.account, group);
    }
  } else {
    if (removes) return Failure(biz::kEngineEmpty, L"a group has a name");
    // Two levels: a list that is deeper nobody finds his way in.
    if (group.parent != biz::kRootGroup && (!parent || parent->parent != biz::kRootGroup)) {
      return NoSuchGroup();
    }
    if (groups.size() >= kMostGroups) return TooMany(L"the list has as many groups as it may");
    group.gid = store_.contacts().AddGroup(caller.account, group);
  }
  TellGroups(store_.mail(), outcome.effects, caller.account);
  outcome.reply.groupid = group.gid;
  return outcome;
}

Outcome<link::Nothing> ContactDesk::Answer(const Caller& caller, const link::SetBlack& request) {
  const auto user = store_.contacts().User(request.black.userid);
  if (!user) return UnknownUser();
  if (user->account == caller.account) return IsYourself();
  if (request.black.on && store_.contacts().Black(caller.account).size() >= kMostBlack) {
    return TooMany(L"the black list is full");
  }
  Outcome<link::Nothing> outcome;
  PutBlack(store_, outcome.effects, caller.account, user->account, request.black.on);
  return outcome;
}

Outcome<biz::IMContacts> ContactDesk::Answer(const Caller& caller, const link::GetBlack&) {
  biz::IMContacts black;
  for (StoredUser& user : store_.contacts().Black(caller.account)) {
    black.contacts.push_back(Shown(caller, std::move(user)));
  }
  return black;
}

}  // namespace imsdk::embedded
