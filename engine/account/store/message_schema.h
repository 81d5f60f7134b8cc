// The tables of an account's own store, and how messages come out of them.
#pragma once

#include <cstdint>

#include "account/conversations/chat_key.h"
#include "sqlite/database.h"

namespace imsdk::account {

// Makes or brings up to date the tables of a fresh connection. Throws `sqlite::Error`.
void PrepareMessageStore(sqlite::Database& database);

// The columns that `ReadMessage` expects, in front of the conditions of a query.
#define MESSAGE_QUERY                                                                    \
  "SELECT m.msgid, m.msgtime, c.appkey, c.nick, m.outgoing, m.msgtype, m.msgstatus, "    \
  "m.svrtime, m.readflag, m.others, m.fixmsgread, m.autochatmsg, m.syschatmsg, m.body, " \
  "m.complete, m.arrival, m.place, c.kind FROM messages m "                              \
  "JOIN conversations c ON c.id=m.conversation "
inline constexpr int kCompleteColumn = 14;
inline constexpr int kArrivalColumn = 15;
inline constexpr int kPlaceColumn = 16;
inline constexpr int kKindColumn = 17;

// The message of the current row of such a query, as the account `self` sees it.
biz::IMMessage ReadMessage(const sqlite::Statement& row, const biz::IMUserID& self);

}  // namespace imsdk::account
