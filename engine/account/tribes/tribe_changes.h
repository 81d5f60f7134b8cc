// What one change of a tribe does to what an account knows, and what it is told by.
#pragma once

#include "account/tribes/roster.h"
#include "imsdk/biz/tribe_mgr.h"
#include "link/tribe.h"

namespace imsdk::account {

// Changes apply to what may have them already: the last one counts.
void ChangeTribeInfo(const link::TribeHappening& happening, const biz::IMUserID& self,
                     biz::IMTribeInfo* tribe);
void ChangeRoster(const link::TribeHappening& happening, Roster* roster);
void RaiseTribeChange(const biz::IMTribeEvents& events, const link::TribeHappening& happening);

inline biz::ResultCode NoTribesYet() {
  return {biz::kEngineRefused, 0, L"the tribes are not logged in: InitTribe comes first"};
}
inline biz::ResultCode NoMemberOf() {
  return {biz::kEngineRefused, biz::kTribeNotAMember, L"the account is no member of this tribe"};
}

}  // namespace imsdk::account
