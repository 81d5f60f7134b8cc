// Logging in to the embedded server.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "embedded/attempts.h"
#include "embedded/mail_room.h"
#include "embedded/server_store.h"
#include "kexbase/thread.h"
#include "link/server_link.h"
#include "sqlite/group_commit.h"

namespace imsdk::embedded {

// Lives on the store's thread. Passwords are hashed on a thread of their own, so that a login does
// not hold up a message.
class Gate : public std::enable_shared_from_this<Gate> {
 public:
  // Throws `std::runtime_error`.
  Gate(ServerStore& store, sqlite::GroupCommit& commit, MailRoom& room,
       std::shared_ptr<base::TaskRunner> here, std::int64_t token_life_ms);

  void Login(const link::LoginRequest& request, const link::LoginCallback& done);
  void Connect(const link::ConnectRequest& request, const link::ConnectCallback& done);
  // A token for an account on the administration's word. May throw `sqlite::Error`.
  biz::ResultCode IssueToken(const biz::IMUserID& user, std::wstring* token);

  // Finishes the hash that is under way; the others are not begun. Any thread but the store's.
  void Stop() { hashing_.Stop(); }
  // After it: whoever waits, and whoever comes, is told that the server stops.
  void RefuseAll();

 private:
  void Verify(const link::LoginRequest& request, const StoredAccount& account,
              const link::LoginCallback& done);
  void CheckNext();
  void Checked(bool good);
  void Give(const biz::IMUserID& user, std::int64_t account, const link::LoginCallback& done);
  // The account that the token stands for, or a failure.
  biz::ResultCode CheckToken(const biz::IMUserID& user, const std::wstring& token,
                             StoredAccount* account);
  // Where the session begins, or `kEnginePositionLost`.
  biz::ResultCode FindStart(const link::ConnectRequest& request, const StoredAccount& account,
                            Position* start);
  // No such account, as far as is known.
  biz::ResultCode UnknownHere() const;

  ServerStore& store_;
  sqlite::GroupCommit& commit_;
  MailRoom& room_;
  const std::shared_ptr<base::TaskRunner> here_;
  const std::int64_t token_life_ms_;
  base::Thread hashing_;
  Attempts attempts_;
  std::optional<Attempts::Attempt> under_way_;
  bool stops_ = false;
};

}  // namespace imsdk::embedded
