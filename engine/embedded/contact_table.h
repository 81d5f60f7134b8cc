// Who knows whom on the embedded server: names and portraits, lists of contacts, black lists.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "imsdk/biz/contact.h"
#include "sqlite/database.h"

namespace imsdk::embedded {

// A user as everybody sees him; without a status.
struct StoredUser {
  std::int64_t account = 0;
  biz::IMContact shown{};
};
struct StoredContact {
  std::int64_t account = 0;  // the contact's
  biz::IMListedContact listed{};
};

// Used on the store's thread. Functions may throw `sqlite::Error`.
class ContactTable {
 public:
  explicit ContactTable(sqlite::Database& database) : database_(database) {}

  // Users; virtual ones are none.
  std::optional<StoredUser> User(const biz::IMUserID& user);
  std::optional<StoredUser> User(std::int64_t account);
  std::vector<StoredUser> Search(const std::wstring& key, std::int64_t count);
  // False when it was so already.
  bool SetProfile(const StoredUser& user);

  // The list of `owner`.
  std::optional<StoredContact> Find(std::int64_t owner, std::int64_t contact);
  std::vector<StoredContact> Behind(std::int64_t owner, std::int64_t contact, std::int64_t count);
  std::int64_t Count(std::int64_t owner);
  void Put(std::int64_t owner, const StoredContact& contact);
  void Remove(std::int64_t owner, std::int64_t contact);
  // On whose lists the account is.
  std::vector<std::int64_t> OwnersOf(std::int64_t contact);

  // Groups of a list, by their numbers.
  std::vector<biz::IMContactGroup> Groups(std::int64_t owner);
  // Returns its number.
  std::int64_t AddGroup(std::int64_t owner, const biz::IMContactGroup& group);
  void RenameGroup(std::int64_t owner, const biz::IMContactGroup& group);
  // With its sub-groups. Returns the contacts that are in the root group now.
  std::vector<std::int64_t> RemoveGroup(std::int64_t owner, std::int64_t gid);

  bool IsBlack(std::int64_t owner, std::int64_t account);
  // False when it was so already.
  bool SetBlack(std::int64_t owner, std::int64_t account, bool on, std::int64_t now);
  // The newest first.
  std::vector<StoredUser> Black(std::int64_t owner);

 private:
  sqlite::Database& database_;
};

}  // namespace imsdk::embedded
