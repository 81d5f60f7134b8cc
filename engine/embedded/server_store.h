// What the embedded server keeps: accounts, tokens, and every message that it took.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "link/server_link.h"
#include "sqlite/database.h"

namespace imsdk::embedded {

struct StoredAccount {
  std::int64_t id = 0;
  std::string password_hash;
  std::int64_t acknowledged = 0;  // position up to which the account has its messages
};

// A message and its place in the order of the server.
struct StoredMessage {
  std::int64_t position = 0;
  link::Message message;
};

// The statements of the server's database. Every function may throw `sqlite::Error`.
class ServerStore {
 public:
  explicit ServerStore(const std::filesystem::path& file);

  sqlite::Database& database() { return database_; }

  std::optional<StoredAccount> FindAccount(const biz::IMUserID& user);
  bool HasAccounts();
  // False when the account exists.
  bool AddAccount(const biz::IMUserID& user, const std::string& password_hash);
  void SetAcknowledged(std::int64_t account, std::int64_t position);

  // Tokens are known by their hashes. Adding one drops those that are over.
  void AddToken(std::int64_t account, const std::string& hash, std::int64_t expires,
                std::int64_t now);
  bool HasToken(std::int64_t account, const std::string& hash, std::int64_t now);

  // The server time of a message that is there already.
  std::optional<std::int64_t> FindMessage(std::int64_t sender, std::int64_t msgid);
  // Returns the message's position.
  std::int64_t AddMessage(std::int64_t sender, std::int64_t receiver, const link::Message& message);
  // Messages for `receiver` after a position, oldest first: at most `count`, and no more after
  // about `bytes` of text.
  std::vector<StoredMessage> MessagesFor(std::int64_t receiver, std::int64_t after,
                                         std::int64_t count, std::size_t bytes);
  // The position of the newest message for `receiver`, or 0.
  std::int64_t NewestFor(std::int64_t receiver);
  std::int64_t NewestTime();

 private:
  sqlite::Database database_;
};

}  // namespace imsdk::embedded
