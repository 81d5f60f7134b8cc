// Requests to become a contact on the embedded server, and what became of them.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "imsdk/biz/contact.h"
#include "sqlite/database.h"

namespace imsdk::embedded {

struct StoredContactVerify {
  std::int64_t id = 0;
  std::int64_t audience = 0;  // the account that sees it
  std::int64_t sender = 0;    // who asks; for one who asked, who decided
  biz::IMContactVerifyType type = biz::kContactAsked;
  std::int64_t msgtime = 0;
  std::wstring words{};
  std::int64_t gid = biz::kRootGroup;  // in the list of who asks

  // Agreeing, refusing and the black list end it.
  bool is_open() const {
    return type == biz::kContactAsked || type == biz::kContactIgnored ||
           type == biz::kContactReported;
  }
};

// Used on the store's thread. Functions may throw `sqlite::Error`.
class ContactVerifyTable {
 public:
  explicit ContactVerifyTable(sqlite::Database& database) : database_(database) {}

  // Returns its identifier.
  std::int64_t Add(const StoredContactVerify& verify);
  // What this account sees; nothing when it has deleted it.
  std::optional<StoredContactVerify> Find(std::int64_t audience, std::int64_t id);
  // The request of `sender` that waits for a decision, deleted or not.
  std::optional<StoredContactVerify> Open(std::int64_t audience, std::int64_t sender);
  // How many of the account's requests wait.
  std::int64_t CountOpen(std::int64_t sender);
  void Change(const StoredContactVerify& verify);

  // What the account sees, oldest first; see `biz::IMContactVerifyPage`.
  std::vector<biz::IMContactVerifyMsg> Page(std::int64_t audience,
                                            const biz::IMContactVerifyPage& page);
  biz::IMContactVerifyMsg Message(std::int64_t id);
  // The account sees it no more.
  void Delete(std::int64_t audience, std::int64_t id);

 private:
  sqlite::Database& database_;
};

}  // namespace imsdk::embedded
