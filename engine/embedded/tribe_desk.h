// Tribes on the embedded server: making them, joining and leaving.
#pragma once

#include "embedded/outcome.h"
#include "embedded/server_store.h"
#include "imsdk/embedded_server.h"
#include "link/operations.h"

namespace imsdk::embedded {

// A user becomes a member of a tribe, or is none any more. Again is good again.
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

  Outcome<link::Nothing> Answer(const Caller& caller, const link::SetTribeName& request);
  Outcome<biz::IMTribeID> Answer(const Caller& nobody, const NewTribe& request);
  Outcome<link::Nothing> Answer(const Caller& nobody, const SetMember& request);
  Outcome<link::Nothing> Answer(const Caller& nobody, const SetOpenHistory& request);

 private:
  void Change(Effects& effects, std::int64_t account, std::int64_t conversation, bool member);

  ServerStore& store_;
};

}  // namespace imsdk::embedded
