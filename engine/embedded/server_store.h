// The embedded server's store: its file, its tables, its time.
#pragma once

#include <cstdint>
#include <filesystem>

#include "embedded/account_table.h"
#include "embedded/conversation_table.h"
#include "embedded/file_table.h"
#include "embedded/mail_table.h"
#include "sqlite/database.h"

namespace imsdk::embedded {

// The server's tables, made when the file is new. Positions are counted in memory, so the file is
// held against other servers.
struct PreparedDatabase : sqlite::Database {
  explicit PreparedDatabase(const std::filesystem::path& file);
};

// Used on one thread.
class ServerStore {
 public:
  // Opens or makes the file. Throws `sqlite::Error`.
  explicit ServerStore(const std::filesystem::path& file);

  sqlite::Database& database() { return database_; }
  AccountTable& accounts() { return accounts_; }
  ConversationTable& conversations() { return conversations_; }
  MailTable& mail() { return mail_; }
  FileTable& files() { return files_; }

  // The server's time: it never goes back, also over restarts.
  std::int64_t Now();
  // A time later than all that was given before.
  std::int64_t LaterThanAll() { return last_time_ = Now() + 1; }

 private:
  PreparedDatabase database_;
  AccountTable accounts_{database_};
  ConversationTable conversations_{database_};
  MailTable mail_{database_};
  FileTable files_{database_};
  std::int64_t last_time_;
};

}  // namespace imsdk::embedded
