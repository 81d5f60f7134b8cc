// The tables of an account's own store, and how messages come out of them.
#pragma once

#include <cstdint>

#include "account/store/conversation_table.h"
#include "imsdk/biz/message.h"
#include "sqlite/database.h"

namespace imsdk::account {

// Makes the tables of a fresh store. Throws `sqlite::Error`, also for a store of another version.
void PrepareMessageStore(sqlite::Database& database);

// Puts what is in `unindexed` up to a place into the full-text index, inside a transaction.
void IndexMessages(sqlite::Database& database, std::int64_t upto);

// The columns that `ReadMessage` expects, in front of the conditions of a query.
#define MESSAGE_QUERY                                                                    \
  "SELECT m.msgid, m.msgtime, m.sender, u.appkey, u.nick, m.msgtype, m.msgstatus, "      \
  "m.svrtime, m.readflag, m.others, m.fixmsgread, m.autochatmsg, m.syschatmsg, m.body, " \
  "m.complete, m.arrival, m.place, m.at_type, m.relation, m.at_read, "                   \
  "m.at_members, " CONVERSATION_COLUMNS                                                  \
  " FROM messages m "                                                                    \
  "JOIN conversations c ON c.id=m.conversation LEFT JOIN users u ON u.id=m.sender "
inline constexpr int kCompleteColumn = 14;
inline constexpr int kArrivalColumn = 15;
inline constexpr int kPlaceColumn = 16;
inline constexpr int kMentionColumn = 17;  // four of them
inline constexpr int kConversationColumn = 21;

// What stands as the sender of the account's own messages; others have a number in `users`.
inline constexpr std::int64_t kOwn = 0;

// The message of the current row of such a query, as the account `self` sees it.
biz::IMMessage ReadMessage(const sqlite::Statement& row, const biz::IMUserID& self);

}  // namespace imsdk::account
