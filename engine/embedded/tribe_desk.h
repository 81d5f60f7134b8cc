// Tribes on the embedded server: what they are, and the lists of them.
#pragma once

#include <vector>

#include "embedded/outcome.h"
#include "embedded/server_store.h"
#include "imsdk/embedded_server.h"
#include "link/operations.h"

namespace imsdk::embedded {

// A user becomes a member of a tribe, or is none any more. Again is good again. False for its
// owner.
struct SetMember {
  biz::IMTribeID tribe;
  biz::IMUserID user;
  bool member = true;
};

// Whether members see what was written before they joined.
struct SetOpenHistory {
  biz::IMTribeID tribe;
  bool open = false;
};

// A desk; see `PostDesk`. What nobody's session asks are the administration's requests.
class TribeDesk {
 public:
  explicit TribeDesk(ServerStore& store) : store_(store) {}

  Outcome<link::Tribes> Answer(const Caller& caller, const link::GetTribes& request);
  Outcome<biz::IMTribeInfo> Answer(const Caller& caller, const link::GetTribe& request);
  Outcome<biz::IMTribeRequest> Answer(const Caller& caller, const link::CreateTribe& request);
  Outcome<link::Nothing> Answer(const Caller& caller, const link::ChangeTribe& request);
  Outcome<biz::IMTribeTextValue> Answer(const Caller& caller, const link::GetJoinPassword& request);
  Outcome<biz::IMTribeNumberValue> Answer(const Caller& caller, const link::CountVisitors& request);
  Outcome<link::Nothing> Answer(const Caller& caller, const link::EnableTribe& request);

  Outcome<biz::IMTribeID> Answer(const Caller& nobody, const NewTribe& request);
  Outcome<link::Nothing> Answer(const Caller& nobody, const SetMember& request);
  Outcome<link::Nothing> Answer(const Caller& nobody, const SetOpenHistory& request);

 private:
  ServerStore& store_;
};

}  // namespace imsdk::embedded
