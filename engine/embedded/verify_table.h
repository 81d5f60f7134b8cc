// Verification messages on the embedded server: requests to join, invitations, and what became of
// them.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "imsdk/biz/tribe_mgr.h"
#include "sqlite/database.h"

namespace imsdk::embedded {

struct StoredVerify {
  std::int64_t id = 0;
  // Who sees it: an account, or below zero the conversation of a tribe, for its managers.
  std::int64_t audience = 0;
  std::int64_t conversation = 0;
  std::int64_t sender = 0;   // who asks or invites
  std::int64_t subject = 0;  // who would join
  biz::TribeVerifyType type = biz::kVerifyJoinAsked;
  std::int64_t msgtime = 0;
  std::wstring words{};
  std::int64_t manager = 0;  // who decided

  bool is_open() const { return type == biz::kVerifyJoinAsked || type == biz::kVerifyInvited; }
};

// Used on the store's thread. Functions may throw `sqlite::Error`.
class VerifyTable {
 public:
  explicit VerifyTable(sqlite::Database& database) : database_(database) {}

  // Returns its identifier.
  std::int64_t Add(const StoredVerify& verify);
  std::optional<StoredVerify> Find(std::int64_t id);
  // What waits for a decision about somebody who would join.
  std::vector<StoredVerify> Open(std::int64_t conversation, std::int64_t subject);
  void SetWords(std::int64_t id, const std::wstring& words);
  void Decide(const StoredVerify& decided);

  // What the account sees, oldest first; see `biz::IMTribeVerifyPage`.
  std::vector<biz::IMTribeVerifyMsg> Page(std::int64_t account, const biz::IMTribeVerifyPage& page);
  // The account sees it no more.
  void Delete(std::int64_t account, std::int64_t id);

 private:
  sqlite::Database& database_;
};

}  // namespace imsdk::embedded
