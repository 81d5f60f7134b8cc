// Which messages of tribes mention whom on the embedded server, and who has read that.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "embedded/conversation_table.h"
#include "embedded/streams.h"
#include "link/mention_operations.h"
#include "sqlite/database.h"

namespace imsdk::embedded {

// A message that mentions somebody. Counts are kept with it, so that nobody has to count: those of
// the mentioned who have read it, and those whose present stay began before it and who have not.
struct StoredMention {
  Position message = 0;
  std::int64_t conversation = 0;
  std::int64_t sender = 0;
  std::int64_t msgid = 0;
  std::int32_t type = biz::kAtNobody;
  std::int32_t readed = 0;
  std::int32_t unread = 0;

  biz::IMAtReadCounts counts() const { return {msgid, readed, unread}; }
};

// One of those who are mentioned, or have been.
struct StoredReader {
  std::int64_t account = 0;
  link::MentionReader reader;
};

// Used on the store's thread. Functions may throw `sqlite::Error`.
class MentionTable {
 public:
  explicit MentionTable(sqlite::Database& database) : database_(database) {}

  // The message mentions these accounts by name. `unread` of its readers are members now.
  void Put(Position message, std::int32_t type, const std::vector<std::int64_t>& named,
           std::int32_t unread);
  // It was taken back and mentions nobody any more.
  void Remove(Position message);
  std::optional<StoredMention> Find(std::int64_t conversation, std::int64_t sender,
                                    std::int64_t msgid);
  // Whether the message is meant for an account that has this stay now.
  bool Concerns(const StoredMention& mention, std::int64_t account, const Stay& stay);
  // Counts a reading. False, and nothing happens, when the account has read it before.
  bool SetRead(StoredMention* mention, std::int64_t account);
  bool HasRead(Position message, std::int64_t account);
  // The account's stay ends: what it has not read does not wait for it any more.
  void Forget(std::int64_t account, const Stay& stay);
  // At most `count` readers behind an account, in the order of the accounts' numbers.
  std::vector<StoredReader> ReadersBehind(const StoredMention& mention, std::int64_t account,
                                          std::int64_t count);

 private:
  sqlite::Database& database_;
};

}  // namespace imsdk::embedded
