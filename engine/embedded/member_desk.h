// The members of tribes on the embedded server: their lists, names and levels, and the black list.
#pragma once

#include "embedded/outcome.h"
#include "embedded/presence.h"
#include "embedded/server_store.h"
#include "link/operations.h"

namespace imsdk::embedded {

// A desk; see `PostDesk`.
class MemberDesk {
 public:
  MemberDesk(ServerStore& store, Presence& presence) : store_(store), presence_(presence) {}

  Outcome<link::TribeMembers> Answer(const Caller& caller, const link::GetTribeMembers& request);
  Outcome<biz::IMTribeMembers> Answer(const Caller& caller, const link::FindTribeMembers& request);
  Outcome<link::Nothing> Answer(const Caller& caller, const link::SetTribeNickname& request);
  Outcome<link::Nothing> Answer(const Caller& caller, const link::SetTribeLevel& request);
  Outcome<link::Nothing> Answer(const Caller& caller, const link::RemoveMember& request);
  Outcome<link::Nothing> Answer(const Caller& caller, const link::SetRemindType& request);
  Outcome<link::Nothing> Answer(const Caller& caller, const link::SetAttention& request);
  Outcome<biz::IMTribeMembers> Answer(const Caller& caller, const link::GetAttention& request);
  Outcome<link::Nothing> Answer(const Caller& caller, const link::SetTribeBlack& request);
  Outcome<link::TribeBlack> Answer(const Caller& caller, const link::GetTribeBlack& request);

 private:
  biz::IMTribeMember Shown(const StoredMember& member);
  Outcome<link::Nothing> Transfer(const Caller& caller, const link::SetTribeLevel& request);

  ServerStore& store_;
  Presence& presence_;
};

}  // namespace imsdk::embedded
