// Who talks with whom on the embedded server: pairs of accounts, and stays in tribes.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "embedded/streams.h"
#include "imsdk/biz/user_id.h"
#include "sqlite/database.h"

namespace imsdk::embedded {

// An account sees of a tribe what has a position behind `joined`, and not behind `until`.
struct Stay {
  std::int64_t conversation = 0;
  Position joined = 0;
  Position until = kNever;
};

// Used on the store's thread. Functions may throw `sqlite::Error`.
class ConversationTable {
 public:
  explicit ConversationTable(sqlite::Database& database) : database_(database) {}

  // The conversation of two accounts, or of one with itself.
  std::optional<std::int64_t> FindPair(std::int64_t one, std::int64_t other);
  std::int64_t MakePair(std::int64_t one, std::int64_t other);

  // The conversation of a new tribe.
  std::int64_t MakeTribe(biz::IMTribeID tribe);

  // The stay that an account has in a tribe now.
  std::optional<Stay> CurrentStay(std::int64_t account, std::int64_t conversation);
  // The account's stays that saw something behind `after`.
  std::vector<Stay> StaysAfter(std::int64_t account, Position after);
  void Join(std::int64_t account, std::int64_t conversation, Position joined);
  void Leave(std::int64_t account, std::int64_t conversation, Position until);

 private:
  sqlite::Database& database_;
};

}  // namespace imsdk::embedded
