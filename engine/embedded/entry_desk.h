// The ways into tribes on the embedded server: joining, inviting, and the decisions about both.
#pragma once

#include <optional>
#include <string>

#include "embedded/outcome.h"
#include "embedded/password_tries.h"
#include "embedded/post_desk.h"
#include "embedded/server_store.h"
#include "link/operations.h"

namespace imsdk::embedded {

// A desk; see `PostDesk`, which carries what the virtual user "tribe" tells of verification
// messages.
class EntryDesk {
 public:
  EntryDesk(ServerStore& store, PostDesk& post) : store_(store), post_(post) {}

  Outcome<biz::IMJoinedTribe> Answer(const Caller& caller, const link::JoinTribe& request);
  Outcome<link::Nothing> Answer(const Caller& caller, const link::InviteToTribe& request);
  Outcome<link::Nothing> Answer(const Caller& caller, const link::DecideVerify& request);
  Outcome<biz::IMTribeVerifyMsgs> Answer(const Caller& caller, const link::GetVerifyMsgs& request);
  Outcome<link::Nothing> Answer(const Caller& caller, const link::DeleteVerify& request);

 private:
  // The message of this action, if the caller has it in sight.
  std::optional<StoredVerify> InSight(const Caller& caller, const StoredTribe& tribe,
                                      const biz::IMTribeVerifyAction& action);
  // Whether the account may come in by what the tribe asks for.
  biz::ResultCode CheckJoin(const Caller& caller, const StoredTribe& tribe,
                            const std::wstring& password);
  // Adds a message, or renews the words of one that is open, and announces a new one.
  void Put(Effects& effects, const StoredTribe& tribe, StoredVerify verify);
  void Announce(Effects& effects, const StoredTribe& tribe, const StoredVerify& verify);

  ServerStore& store_;
  PostDesk& post_;
  PasswordTries tries_;
};

}  // namespace imsdk::embedded
