#include "account/store/conversation_table.h"

namespace imsdk::account {

namespace {

// How far a sender's clock may be behind without its messages missing from the complete part.
constexpr std::int64_t kClockTolerance = 10 * 60 * 1000;

}  // namespace

std::int64_t ConversationTable::Find(const ChatKey& key) {
  auto row =
      store_.Use().Prepare("SELECT id FROM conversations WHERE appkey=? AND nick=? AND kind=?",
                           key.cid.appkey, key.cid.nick, std::int64_t{key.kind});
  return row.Step() ? row.Int64(0) : 0;
}

std::int64_t ConversationTable::Make(const ChatKey& key) {
  if (const std::int64_t known = Find(key); known != 0) return known;
  store_.Use()
      .Prepare("INSERT INTO conversations(appkey, nick, kind, whole) VALUES(?,?,?,?)",
               key.cid.appkey, key.cid.nick, std::int64_t{key.kind}, std::int64_t{key.is_virtual()})
      .Run();
  return store_.Use().LastInsertId();
}

Completeness ConversationTable::Complete(const ChatKey& key) {
  auto row = store_.Use().Prepare(
      "SELECT complete_time, complete_id, whole FROM conversations WHERE id=?", Find(key));
  if (!row.Step()) return {};
  return {{row.Int64(0), row.Int64(1)}, row.Bool(2)};
}

void ConversationTable::SetComplete(const ChatKey& key, const Position& from, bool whole) {
  store_.Use()
      .Prepare("UPDATE conversations SET complete_time=?2, complete_id=?3, whole=?4 WHERE id=?1",
               Make(key), from.msgtime, from.msgid, std::int64_t{whole})
      .Run();
}

void ConversationTable::ClearComplete(const ChatKey& key) {
  Position newest;
  {
    auto row = store_.Use().Prepare(
        "SELECT msgtime, msgid FROM messages WHERE conversation=? ORDER BY place DESC LIMIT 1",
        Find(key));
    if (row.Step()) newest = {row.Int64(0), row.Int64(1)};
  }
  SetComplete(key, newest, false);
}

void ConversationTable::Cover(std::int64_t conversation, const Position& live) {
  store_.Use()
      .Prepare(
          "UPDATE conversations SET complete_time=?2, complete_id=?3 WHERE id=?1 AND whole=0 AND "
          "((complete_time=0 AND complete_id=0) OR "
          "((?2, ?3) < (complete_time, complete_id) AND ?2 >= complete_time - ?4))",
          conversation, live.msgtime, live.msgid, kClockTolerance)
      .Run();
}

Position ConversationTable::ReadBoundary(const ChatKey& key) {
  auto row =
      store_.Use().Prepare("SELECT read_time, read_id FROM conversations WHERE id=?", Find(key));
  return row.Step() ? Position{row.Int64(0), row.Int64(1)} : Position{};
}

void ConversationTable::RaiseReadBoundary(std::int64_t conversation, const Position& to) {
  store_.Use()
      .Prepare(
          "UPDATE conversations SET read_time=?2, read_id=?3 "
          "WHERE id=?1 AND (read_time, read_id) < (?2, ?3)",
          conversation, to.msgtime, to.msgid)
      .Run();
}

Position ConversationTable::DeletedUpTo(std::int64_t conversation) {
  auto row = store_.Use().Prepare("SELECT deleted_time, deleted_id FROM conversations WHERE id=?",
                                  conversation);
  return row.Step() ? Position{row.Int64(0), row.Int64(1)} : Position{};
}

void ConversationTable::SetDeletedUpTo(std::int64_t conversation, const Position& to) {
  store_.Use()
      .Prepare("UPDATE conversations SET deleted_time=?2, deleted_id=?3, whole=1 WHERE id=?1",
               conversation, to.msgtime, to.msgid)
      .Run();
}

bool ConversationTable::ShieldsAutoReply(const ChatKey& key) {
  auto row = store_.Use().Prepare("SELECT shield FROM conversations WHERE id=?", Find(key));
  return row.Step() && row.Bool(0);
}

void ConversationTable::SetShieldAutoReply(const ChatKey& key, bool shield) {
  store_.Use()
      .Prepare("UPDATE conversations SET shield=?2 WHERE id=?1", Make(key), std::int64_t{shield})
      .Run();
}

}  // namespace imsdk::account
