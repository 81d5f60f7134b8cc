#include "embedded/conversation_table.h"

#include <algorithm>

namespace imsdk::embedded {

std::optional<std::int64_t> ConversationTable::FindPair(std::int64_t one, std::int64_t other) {
  auto row =
      database_.Prepare("SELECT id FROM conversations WHERE first=? AND second=? AND tribe=0",
                        std::min(one, other), std::max(one, other));
  if (!row.Step()) return std::nullopt;
  return row.Int64(0);
}

std::int64_t ConversationTable::MakePair(std::int64_t one, std::int64_t other) {
  if (const auto known = FindPair(one, other)) return *known;
  database_
      .Prepare("INSERT INTO conversations(first, second, tribe) VALUES(?,?,0)",
               std::min(one, other), std::max(one, other))
      .Run();
  return database_.LastInsertId();
}

std::int64_t ConversationTable::MakeTribe(biz::IMTribeID tribe) {
  database_.Prepare("INSERT INTO conversations(first, second, tribe) VALUES(0,0,?)", tribe.id)
      .Run();
  return database_.LastInsertId();
}

std::optional<Stay> ConversationTable::CurrentStay(std::int64_t account,
                                                   std::int64_t conversation) {
  auto row =
      database_.Prepare("SELECT joined FROM stays WHERE account=? AND until=? AND conversation=?",
                        account, kNever, conversation);
  if (!row.Step()) return std::nullopt;
  return Stay{conversation, row.Int64(0), kNever};
}

std::vector<Stay> ConversationTable::StaysAfter(std::int64_t account, Position after) {
  auto row = database_.Prepare(
      "SELECT conversation, joined, until FROM stays WHERE account=? AND until>?", account, after);
  std::vector<Stay> stays;
  while (row.Step()) stays.push_back({row.Int64(0), row.Int64(1), row.Int64(2)});
  return stays;
}

void ConversationTable::Join(std::int64_t account, std::int64_t conversation, Position joined) {
  database_
      .Prepare("INSERT INTO stays(account, until, conversation, joined) VALUES(?,?,?,?)", account,
               kNever, conversation, joined)
      .Run();
}

void ConversationTable::Leave(std::int64_t account, std::int64_t conversation, Position until) {
  database_
      .Prepare("UPDATE stays SET until=? WHERE account=? AND until=? AND conversation=?", until,
               account, kNever, conversation)
      .Run();
}

}  // namespace imsdk::embedded
