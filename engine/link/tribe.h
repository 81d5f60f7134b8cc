// What happens in a tribe besides its messages, as it crosses the link.
#pragma once

#include <cstdint>
#include <utility>
#include <variant>
#include <vector>

#include "imsdk/biz/tribe_mgr.h"

namespace imsdk::link {

// The member's row as it is now; the status in it does not count.
struct TribeJoined {
  biz::IMTribeMember member;
  std::int32_t members = 0;  // the tribe has now
};
struct TribeLeft {
  biz::IMUserID user;
  bool kicked = false;
  std::int32_t members = 0;
};
struct TribeLevelChanged {
  biz::IMUserID user;
  biz::TribeMemberLevel level = biz::kTribeMember;
};
// The actor was the owner.
struct TribeTransferred {
  biz::IMUserID owner;
};
struct TribeInfoChanged {
  biz::TribeModifyMap detail;
};
struct TribeMemberChanged {
  biz::IMUserID user;
  biz::TribeUserModifyMap detail;
};
struct TribeEnabled {
  bool enabled = true;  // false: it was closed
};
struct TribeVisitorsCleared {};

using TribeChange =
    std::variant<TribeJoined, TribeLeft, TribeLevelChanged, TribeTransferred, TribeInfoChanged,
                 TribeMemberChanged, TribeEnabled, TribeVisitorsCleared>;

// One change of a tribe, for everybody who is a member when it happens, the one who joins or leaves
// by it included. It stands among the tribe's messages in the order of the server.
struct TribeHappening {
  biz::IMTribeID tribe;
  biz::IMUserID actor;
  TribeChange change;
};

// Who is online in a tribe, for sessions that watch it (`GetTribeMembers`). Not kept.
struct TribePresence {
  biz::IMTribeID tribe;
  std::int32_t online = 0;
  std::vector<std::pair<biz::IMUserID, biz::TribeMemberBasicStatus>> changed;
};

}  // namespace imsdk::link
