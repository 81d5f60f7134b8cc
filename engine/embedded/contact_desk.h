// Users and contacts on the embedded server: names and portraits, lists, groups, the black list.
#pragma once

#include <cstdint>

#include "embedded/outcome.h"
#include "embedded/presence.h"
#include "embedded/server_store.h"
#include "link/operations.h"

namespace imsdk::embedded {

inline biz::ResultCode IsYourself() {
  return Refusal(biz::kContactYourself, L"nobody is a contact of himself");
}

// Somebody who comes into a list, if he is not in it already.
struct NewContact {
  std::int64_t owner = 0;
  std::int64_t contact = 0;
  std::int64_t gid = biz::kRootGroup;  // the root group, when there is none of this number
};
// `kContactTooMany` when the list is full. May throw `sqlite::Error`.
biz::ResultCode CheckRoom(ServerStore& store, const NewContact& contact);
// Tells the list's owner. May throw `sqlite::Error`.
void PutContact(ServerStore& store, Effects& effects, const NewContact& contact);

// Who is on it can do nothing to the list's owner any more. May throw `sqlite::Error`.
void PutBlack(ServerStore& store, Effects& effects, std::int64_t owner, std::int64_t account,
              bool on);

// A desk; see `PostDesk`.
class ContactDesk {
 public:
  ContactDesk(ServerStore& store, Presence& presence) : store_(store), presence_(presence) {}

  Outcome<link::Contacts> Answer(const Caller& caller, const link::GetContacts& request);
  Outcome<biz::IMContacts> Answer(const Caller& caller, const link::FindUsers& request);
  Outcome<biz::IMContacts> Answer(const Caller& caller, const link::SearchUsers& request);
  Outcome<link::Nothing> Answer(const Caller& caller, const link::SetProfile& request);
  Outcome<link::Nothing> Answer(const Caller& caller, const link::RemoveContact& request);
  Outcome<link::Nothing> Answer(const Caller& caller, const link::MoveContact& request);
  Outcome<link::Nothing> Answer(const Caller& caller, const link::SetAsterisk& request);
  Outcome<biz::IMContactGroupRequest> Answer(const Caller& caller,
                                             const link::SetContactGroup& request);
  Outcome<link::Nothing> Answer(const Caller& caller, const link::SetBlack& request);
  Outcome<biz::IMContacts> Answer(const Caller& caller, const link::GetBlack& request);

 private:
  // The user with the status that the caller may see.
  biz::IMContact Shown(const Caller& caller, StoredUser user);
  // Changes one of the caller's contacts.
  template <class Change>
  Outcome<link::Nothing> ChangeContact(const Caller& caller, const biz::IMUserID& user,
                                       const Change& change);

  ServerStore& store_;
  Presence& presence_;
};

}  // namespace imsdk::embedded
