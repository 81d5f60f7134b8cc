// Who talks with whom on the embedded server: pairs of accounts, tribes, and stays in tribes.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "embedded/streams.h"
#include "imsdk/biz/user_id.h"
#include "sqlite/database.h"

namespace imsdk::embedded {

struct StoredTribe {
  std::int64_t conversation = 0;
  bool open_history = false;  // members see what was before they joined
  std::int64_t owner = 0;     // an account
};

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

  std::optional<StoredTribe> FindTribe(biz::IMTribeID tribe);
  // An identifier that no tribe has.
  biz::IMTribeID FreeTribe();
  // Returns the conversation of the new tribe.
  std::int64_t AddTribe(biz::IMTribeID tribe, const std::wstring& name, std::int64_t owner);
  void SetTribeName(biz::IMTribeID tribe, const std::wstring& name);
  void SetOpenHistory(biz::IMTribeID tribe, bool open);

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
