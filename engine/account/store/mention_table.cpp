#include "account/store/mention_table.h"

#include <string_view>

#include "kexbase/strings.h"

namespace imsdk::account {

namespace {

void PackText(std::wstring* packed, const std::wstring& text) {
  *packed += std::to_wstring(text.size()) + L' ' + text;
}

// Takes a text off the front; false when there is none.
bool UnpackText(std::wstring_view* packed, std::wstring* text) {
  const std::size_t blank = packed->find(L' ');
  std::int64_t length = 0;
  if (blank == packed->npos || !base::StringToInt64(packed->substr(0, blank), &length))
    return false;
  packed->remove_prefix(blank + 1);
  if (length < 0 || packed->size() < static_cast<std::size_t>(length)) return false;
  *text = packed->substr(0, static_cast<std::size_t>(length));
  packed->remove_prefix(static_cast<std::size_t>(length));
  return true;
}

std::vector<link::MessageName> ReadNames(sqlite::Statement row) {
  std::vector<link::MessageName> names;
  while (row.Step()) names.push_back({{row.Wide(0), row.Wide(1)}, row.Int64(2)});
  return names;
}

#define NAMES_QUERY                                                                       \
  "SELECT u.appkey, u.nick, m.msgid FROM messages m JOIN users u ON u.id=m.sender WHERE " \
  "m.conversation=?1 AND m.relation IN (1, 2) AND "

}  // namespace

std::wstring PackUsers(const std::vector<biz::IMUserID>& users) {
  std::wstring packed;
  for (const biz::IMUserID& user : users) {
    PackText(&packed, user.appkey);
    PackText(&packed, user.nick);
  }
  return packed;
}

std::vector<biz::IMUserID> UnpackUsers(const std::wstring& packed) {
  std::vector<biz::IMUserID> users;
  std::wstring_view left = packed;
  biz::IMUserID user;
  while (UnpackText(&left, &user.appkey) && UnpackText(&left, &user.nick)) users.push_back(user);
  return users;
}

std::int32_t MentionTable::CountUnread(const biz::IMConversationID& cid) {
  auto row = store_.Use().Prepare(
      "SELECT count(*) FROM messages INDEXED BY messages_at_unread "
      "WHERE conversation=? AND relation IN (1, 2) AND at_read=0",
      conversations_.Find(cid));
  return row.Step() ? row.Int32(0) : 0;
}

std::vector<link::MessageName> MentionTable::MarkRead(const biz::IMConversationID& cid,
                                                      const std::vector<std::int64_t>& msgids) {
  const std::int64_t conversation = conversations_.Find(cid);
  std::vector<link::MessageName> marked;
  if (msgids.empty()) {
    marked =
        ReadNames(store_.Use().Prepare(NAMES_QUERY "m.at_read=0 ORDER BY m.place", conversation));
    store_.Use()
        .Prepare(
            "UPDATE messages INDEXED BY messages_at_unread SET at_read=1 "
            "WHERE conversation=? AND relation IN (1, 2) AND at_read=0",
            conversation)
        .Run();
  }
  for (const std::int64_t msgid : msgids) {
    const auto some = ReadNames(
        store_.Use().Prepare(NAMES_QUERY "m.at_read=0 AND m.msgid=?2", conversation, msgid));
    marked.insert(marked.end(), some.begin(), some.end());
    store_.Use()
        .Prepare(
            "UPDATE messages SET at_read=1 WHERE msgid=?2 AND conversation=?1 "
            "AND relation IN (1, 2) AND at_read=0",
            conversation, msgid)
        .Run();
  }
  return marked;
}

std::vector<link::MessageName> MentionTable::SetTold(
    const biz::IMConversationID& cid, const std::vector<link::MessageName>& messages) {
  const std::int64_t conversation = conversations_.Find(cid);
  std::vector<link::MessageName> were_unread;
  for (const link::MessageName& name : messages) {
    auto row = store_.Use().Prepare(
        "SELECT m.place, m.at_read FROM messages m JOIN users u ON u.id=m.sender WHERE m.msgid=? "
        "AND m.conversation=? AND u.appkey=? AND u.nick=? AND m.relation IN (1, 2) AND m.at_read<2",
        name.msgid, conversation, name.from.appkey, name.from.nick);
    if (!row.Step()) continue;
    if (row.Int32(1) == 0) were_unread.push_back(name);
    store_.Use().Prepare("UPDATE messages SET at_read=2 WHERE place=?", row.Int64(0)).Run();
  }
  return were_unread;
}

std::vector<link::MessageName> MentionTable::Untold(const biz::IMConversationID& cid) {
  return ReadNames(store_.Use().Prepare(NAMES_QUERY "m.at_read=1 LIMIT ?2",
                                        conversations_.Find(cid),
                                        static_cast<std::int64_t>(link::kMostMentions)));
}

std::vector<biz::IMConversationID> MentionTable::WithUntold() {
  auto row = store_.Use().Prepare("SELECT " CONVERSATION_COLUMNS
                                  " FROM conversations c WHERE c.id IN (SELECT conversation FROM "
                                  "messages WHERE relation IN (1, 2) AND at_read=1)");
  std::vector<biz::IMConversationID> found;
  while (row.Step()) found.push_back(ReadConversation(row, 0));
  return found;
}

}  // namespace imsdk::account
