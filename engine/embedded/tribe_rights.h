// Who may do what in a tribe: one table, which every operation passes.
#pragma once

#include <cstdint>

#include "embedded/outcome.h"
#include "embedded/server_store.h"

namespace imsdk::embedded {

enum class TribeAct {
  kRead,  // what members see
  kReadAsManager,
  kReadJoining,  // password and black list
  kRename,
  kChange,         // what else describes the tribe
  kChangeJoining,  // how one becomes a member
  kDecide,         // about a request to join
  kEnable,         // and closing
  kInvite,
  kNickname,    // one's own
  kNicknameOf,  // somebody's who is below
  kMention,
  kMentionAll,  // everybody, where the tribe allows it to all
  kLevel,
  kTransfer,
  kRemove,  // somebody who is below
  kQuit,
  kOwnSetting,
};

// A member who does something, and the other one whom it is done to.
struct Admitted {
  biz::ResultCode result;  // why not
  StoredTribe tribe;
  StoredMember self;
  StoredMember other;

  bool ok() const { return result.ok(); }
};

// Outsiders hear `kTribeUnknown` of what they may not see. May throw `sqlite::Error`.
Admitted Admit(ServerStore& store, const Caller& caller, biz::IMTribeID tribe, TribeAct act);
// The same with another member, who is not the caller and, where the act asks for it, below.
Admitted Admit(ServerStore& store, const Caller& caller, biz::IMTribeID tribe, TribeAct act,
               const biz::IMUserID& other);

biz::ResultCode UnknownTribe();

}  // namespace imsdk::embedded
