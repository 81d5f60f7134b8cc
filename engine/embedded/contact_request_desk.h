// Requests to become a contact on the embedded server, and the decisions on them.
#pragma once

#include <optional>

#include "embedded/contact_desk.h"
#include "embedded/outcome.h"
#include "embedded/server_store.h"
#include "link/operations.h"

namespace imsdk::embedded {

// A desk; see `PostDesk`.
class ContactRequestDesk {
 public:
  explicit ContactRequestDesk(ServerStore& store) : store_(store) {}

  Outcome<link::Nothing> Answer(const Caller& caller, const link::AskContact& request);
  Outcome<link::Nothing> Answer(const Caller& caller, const link::DecideContact& request);
  Outcome<biz::IMContactVerifyMsgs> Answer(const Caller& caller,
                                           const link::GetContactVerify& request);
  Outcome<link::Nothing> Answer(const Caller& caller, const link::DeleteContactVerify& request);

 private:
  // What the action names among what the caller sees.
  std::optional<StoredContactVerify> Named(const Caller& caller,
                                           const biz::IMContactAction& action);
  biz::ResultCode CarryOut(const Caller& caller, const StoredContactVerify& verify,
                           Effects& effects);

  ServerStore& store_;
};

}  // namespace imsdk::embedded
