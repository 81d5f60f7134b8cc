// The embedded server's store: its file, its tables, its time.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "embedded/account_table.h"
#include "embedded/contact_table.h"
#include "embedded/contact_verify_table.h"
#include "embedded/conversation_table.h"
#include "embedded/file_table.h"
#include "embedded/mail_table.h"
#include "embedded/member_table.h"
#include "embedded/mention_table.h"
#include "embedded/tribe_table.h"
#include "embedded/verify_table.h"
#include "sqlite/kept_store.h"

namespace imsdk::embedded {

// Used on one thread. Positions are counted in memory, so the file is held against other servers.
class ServerStore {
 public:
  // Opens or makes the file. Throws `sqlite::Error`.
  explicit ServerStore(const sqlite::StorePlace& place);

  // What the file was found to have lost.
  const std::optional<sqlite::Loss>& loss() const { return opened_.loss; }
  // Whether it has lost something at some time, and with that accounts, maybe.
  bool HasLost() const { return !generation_.empty(); }

  // A position as the link has it. After a loss positions are counted anew, so they carry the life
  // of the store that they belong to; one of another life is not known.
  std::string PositionText(Position position) const;
  std::optional<Position> KnownPosition(const std::string& text) const;

  sqlite::Database& database() { return database_; }
  AccountTable& accounts() { return accounts_; }
  ConversationTable& conversations() { return conversations_; }
  MailTable& mail() { return mail_; }
  FileTable& files() { return files_; }
  TribeTable& tribes() { return tribes_; }
  MemberTable& members() { return members_; }
  VerifyTable& verify() { return verify_; }
  MentionTable& mentions() { return mentions_; }
  ContactTable& contacts() { return contacts_; }
  ContactVerifyTable& contact_verify() { return contact_verify_; }

  // The server's time: it never goes back, also over restarts.
  std::int64_t Now();
  // A time later than all that was given before.
  std::int64_t LaterThanAll() { return last_time_ = Now() + 1; }

 private:
  void KeepNumbers();

  sqlite::OpenedStore opened_;
  sqlite::Database& database_;
  const std::string generation_;
  AccountTable accounts_{database_};
  ConversationTable conversations_{database_};
  MailTable mail_{database_};
  FileTable files_{database_};
  TribeTable tribes_{database_};
  MemberTable members_{database_};
  VerifyTable verify_{database_};
  MentionTable mentions_{database_};
  ContactTable contacts_{database_};
  ContactVerifyTable contact_verify_{database_};
  std::int64_t last_time_;
};

}  // namespace imsdk::embedded
