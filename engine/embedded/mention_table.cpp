#include "embedded/mention_table.h"

namespace imsdk::embedded {

void MentionTable::Put(Position message, std::int32_t type, const std::vector<std::int64_t>& named,
                       std::int32_t unread) {
  database_
      .Prepare("UPDATE messages SET at_type=?2, at_unread=?3 WHERE position=?1", message, type,
               unread)
      .Run();
  std::int64_t number = 0;
  for (const std::int64_t account : named) {
    database_
        .Prepare("INSERT OR IGNORE INTO mentioned(message, number, account) VALUES(?,?,?)", message,
                 ++number, account)
        .Run();
  }
}

void MentionTable::Remove(Position message) {
  database_
      .Prepare("UPDATE messages SET at_type=0, at_readed=0, at_unread=0 WHERE position=?", message)
      .Run();
  database_.Prepare("DELETE FROM mentioned WHERE message=?", message).Run();
  database_.Prepare("DELETE FROM mention_reads WHERE message=?", message).Run();
}

std::optional<StoredMention> MentionTable::Find(std::int64_t conversation, std::int64_t sender,
                                                std::int64_t msgid) {
  auto row = database_.Prepare(
      "SELECT position, at_type, at_readed, at_unread FROM messages "
      "WHERE conversation=? AND msgid=? AND sender=? AND at_type<>0",
      conversation, msgid, sender);
  if (!row.Step()) return std::nullopt;
  return StoredMention{row.Int64(0), conversation, sender,      msgid,
                       row.Int32(1), row.Int32(2), row.Int32(3)};
}

bool MentionTable::Concerns(const StoredMention& mention, std::int64_t account, const Stay& stay) {
  if (account == mention.sender || mention.message <= stay.joined) return false;
  if (mention.type == biz::kAtAll) return true;
  auto row = database_.Prepare("SELECT 1 FROM mentioned WHERE message=? AND account=?",
                               mention.message, account);
  return row.Step();
}

bool MentionTable::SetRead(StoredMention* mention, std::int64_t account) {
  database_
      .Prepare("INSERT OR IGNORE INTO mention_reads(message, account) VALUES(?,?)",
               mention->message, account)
      .Run();
  if (database_.Changes() == 0) return false;
  database_
      .Prepare("UPDATE messages SET at_readed=at_readed+1, at_unread=at_unread-1 WHERE position=?",
               mention->message)
      .Run();
  ++mention->readed;
  --mention->unread;
  return true;
}

bool MentionTable::HasRead(Position message, std::int64_t account) {
  auto row = database_.Prepare("SELECT 1 FROM mention_reads WHERE message=? AND account=?", message,
                               account);
  return row.Step();
}

void MentionTable::Forget(std::int64_t account, const Stay& stay) {
  database_
      .Prepare(
          "UPDATE messages INDEXED BY messages_at SET at_unread=at_unread-1 "
          "WHERE conversation=?1 AND at_type<>0 AND position>?2 AND sender<>?3 "
          "AND (at_type=2 OR EXISTS(SELECT 1 FROM mentioned WHERE message=position AND "
          "account=?3)) "
          "AND NOT EXISTS(SELECT 1 FROM mention_reads WHERE message=position AND account=?3)",
          stay.conversation, stay.joined, account)
      .Run();
}

// Those of `mentioned` whose stay began before the message, then those who have read it; each a
// part in order, so that no part of the list costs as much as all of it.
#define READERS_AMONG(mentioned)                                                            \
  "SELECT a.id, a.appkey, a.nick, r.account IS NOT NULL FROM ("                             \
  "SELECT * FROM (SELECT b.account FROM " mentioned                                         \
  " JOIN stays s ON s.account=b.account AND s.until=?6 AND s.conversation=?2 "              \
  "WHERE b.account>?4 AND b.account<>?3 AND s.joined<?1 ORDER BY b.account LIMIT ?5) "      \
  "UNION SELECT * FROM (SELECT account FROM mention_reads WHERE message=?1 AND account>?4 " \
  "ORDER BY account LIMIT ?5)) x JOIN accounts a ON a.id=x.account "                        \
  "LEFT JOIN mention_reads r ON r.message=?1 AND r.account=x.account ORDER BY x.account LIMIT ?5"

std::vector<StoredReader> MentionTable::ReadersBehind(const StoredMention& mention,
                                                      std::int64_t account, std::int64_t count) {
  const bool all = mention.type == biz::kAtAll;
  auto row = database_.Prepare(
      all ? READERS_AMONG("(SELECT account FROM members WHERE conversation=?2) b")
          : READERS_AMONG("(SELECT account FROM mentioned WHERE message=?1) b"),
      mention.message, mention.conversation, mention.sender, account, count, kNever);
  std::vector<StoredReader> readers;
  while (row.Step()) {
    readers.push_back({row.Int64(0), {{row.Wide(1), row.Wide(2)}, row.Bool(3)}});
  }
  return readers;
}

#undef READERS_AMONG

}  // namespace imsdk::embedded
