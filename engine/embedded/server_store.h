// What the embedded server keeps about accounts: names, passwords, tokens, devices, settings.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "embedded/mail_store.h"
#include "link/server_link.h"
#include "sqlite/database.h"

namespace imsdk::embedded {

struct StoredAccount {
  std::int64_t id = 0;
  std::string password_hash;
  link::Channel channel = link::Channel::kSingleChat;  // of what it sends; others are virtual users
  biz::IMRoamStatus roaming;

  bool is_virtual() const { return channel != link::Channel::kSingleChat; }
};

struct StoredDevice {
  std::int64_t id = 0;
  std::int64_t acknowledged = 0;  // position up to which the device has everything
};

// The statements of the server's database. Every function may throw `sqlite::Error`.
class ServerStore {
 public:
  explicit ServerStore(const std::filesystem::path& file);

  sqlite::Database& database() { return database_; }
  MailStore& mail() { return mail_; }

  std::optional<StoredAccount> FindAccount(const biz::IMUserID& user);
  bool HasAccounts();
  // False when the account exists. A virtual user has no password.
  bool AddAccount(const biz::IMUserID& user, const std::string& password_hash,
                  link::Channel channel = link::Channel::kSingleChat);
  void SetRoaming(std::int64_t account, const biz::IMRoamStatus& roaming);
  // The latest time of the server that the store knows.
  std::int64_t NewestTime();

  // The account's device of this name. A new one stands where the account stands.
  StoredDevice Device(std::int64_t account, const std::string& name);
  bool HasOtherDevices(std::int64_t account, std::int64_t device);
  // The device has everything up to `position`, and so the account stands there at least.
  void SetAcknowledged(std::int64_t device, std::int64_t position);
  // The account has everything that is there, on devices to come too.
  void SetAllAcknowledged();

  // Tokens are known by their hashes. Adding one drops those that are over.
  void AddToken(std::int64_t account, const std::string& hash, std::int64_t expires,
                std::int64_t now);
  bool HasToken(std::int64_t account, const std::string& hash, std::int64_t now);

 private:
  sqlite::Database database_;
  MailStore mail_;
};

}  // namespace imsdk::embedded
