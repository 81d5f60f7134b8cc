#include "account/store/conversation_table.h"

namespace imsdk::account {

std::int64_t ConversationTable::Find(const biz::IMConversationID& cid) {
  auto row = store_.Use().Prepare(
      "SELECT id FROM conversations WHERE type=? AND appkey=? AND nick=? AND tribe=?",
      std::int64_t{cid.type}, cid.user.appkey, cid.user.nick, cid.tribe.id);
  return row.Step() ? row.Int64(0) : 0;
}

std::int64_t ConversationTable::Make(const biz::IMConversationID& cid) {
  if (const std::int64_t known = Find(cid); known != 0) return known;
  store_.Use()
      .Prepare("INSERT INTO conversations(type, appkey, nick, tribe, whole) VALUES(?,?,?,?,?)",
               std::int64_t{cid.type}, cid.user.appkey, cid.user.nick, cid.tribe.id,
               std::int64_t{cid.is_virtual()})
      .Run();
  return store_.Use().LastInsertId();
}

Position ConversationTable::ReadBoundary(std::int64_t conversation) {
  auto row =
      store_.Use().Prepare("SELECT read_time, read_id FROM conversations WHERE id=?", conversation);
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
      .Prepare("UPDATE conversations SET deleted_time=?2, deleted_id=?3 WHERE id=?1", conversation,
               to.msgtime, to.msgid)
      .Run();
}

bool ConversationTable::ShieldsAutoReply(const biz::IMConversationID& cid) {
  auto row = store_.Use().Prepare("SELECT shield FROM conversations WHERE id=?", Find(cid));
  return row.Step() && row.Bool(0);
}

void ConversationTable::SetShieldAutoReply(const biz::IMConversationID& cid, bool shield) {
  store_.Use()
      .Prepare("UPDATE conversations SET shield=?2 WHERE id=?1", Make(cid), std::int64_t{shield})
      .Run();
}

bool ConversationTable::SetMember(const biz::IMConversationID& cid, bool member) {
  store_.Use()
      .Prepare("UPDATE conversations SET member=?2 WHERE id=?1 AND member<>?2",
               member ? Make(cid) : Find(cid), std::int64_t{member})
      .Run();
  return store_.Use().Changes() == 1;
}

void ConversationTable::SetWanting(std::int64_t conversation, bool wanting) {
  store_.Use()
      .Prepare("UPDATE conversations SET wanting=?2 WHERE id=?1", conversation,
               std::int64_t{wanting})
      .Run();
}

std::vector<biz::IMConversationID> ConversationTable::Wanting() {
  auto row = store_.Use().Prepare("SELECT " CONVERSATION_COLUMNS
                                  " FROM conversations c WHERE c.wanting=1 "
                                  "OR c.id IN (SELECT conversation FROM below_holes) "
                                  "ORDER BY c.id");
  std::vector<biz::IMConversationID> found;
  while (row.Step()) found.push_back(ReadConversation(row, 0));
  return found;
}

biz::IMConversationID ReadConversation(const sqlite::Statement& row, int column) {
  biz::IMConversationID cid;
  cid.type = static_cast<biz::IMCIDType>(row.Int32(column));
  cid.user = {row.Wide(column + 1), row.Wide(column + 2)};
  cid.tribe = {row.Int64(column + 3)};
  return cid;
}

}  // namespace imsdk::account
