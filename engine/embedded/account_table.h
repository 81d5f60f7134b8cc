// What the embedded server keeps about accounts: names, passwords, tokens, devices, settings.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "embedded/streams.h"
#include "imsdk/biz/conversation_id.h"
#include "imsdk/biz/history.h"
#include "sqlite/database.h"

namespace imsdk::embedded {

struct StoredAccount {
  std::int64_t id = 0;
  std::string password_hash;
  biz::IMCIDType kind = biz::kCIDUser;  // of the conversations with it; others are virtual users
  biz::IMRoamStatus roaming;
  Position acknowledged = 0;  // its most advanced device has everything up to this

  bool is_virtual() const { return kind != biz::kCIDUser; }
};

// Used on the store's thread. Functions may throw `sqlite::Error`.
class AccountTable {
 public:
  explicit AccountTable(sqlite::Database& database) : database_(database) {}

  std::optional<StoredAccount> Find(const biz::IMUserID& user);
  // Empty for a number that no account has.
  biz::IMUserID User(std::int64_t account);
  bool Any();
  // False when the account exists. A virtual user has no password.
  bool Add(const biz::IMUserID& user, const std::string& password_hash,
           biz::IMCIDType kind = biz::kCIDUser);

  void SetRoaming(std::int64_t account, const biz::IMRoamStatus& roaming);
  // The latest open time of all accounts.
  std::int64_t NewestOpenTime();

  // The account's device of this name, known from now on.
  std::int64_t Device(std::int64_t account, const std::string& name);
  bool HasOtherDevices(std::int64_t account, std::int64_t device);
  // A device of the account has everything up to `position`.
  void SetAcknowledged(std::int64_t account, Position position);
  // All have everything up to `position`.
  void SetAllAcknowledged(Position position);

  // Tokens are known by their hashes. Adding one drops those that are over.
  void AddToken(std::int64_t account, const std::string& hash, std::int64_t expires,
                std::int64_t now);
  bool HasToken(std::int64_t account, const std::string& hash, std::int64_t now);

 private:
  sqlite::Database& database_;
};

}  // namespace imsdk::embedded
