// How messages come out of the server's tables.
#pragma once

#include <cstdint>

#include "link/message.h"
#include "sqlite/database.h"

namespace imsdk::embedded {

// The columns that the functions below expect in front of a query's own, and where they come from:
// `MESSAGE_JOINS` follows a table `m` of messages, `CID_JOINS` one with a conversation's number.
#define MESSAGE_COLUMNS                                                                           \
  "c.tribe, c.first, f.appkey, f.nick, f.kind, g.appkey, g.nick, g.kind, m.position, m.msgid, "   \
  "m.msgtime, m.svrtime, m.msgtype, m.body, m.others, m.fixmsgread, m.autochatmsg, "              \
  "m.syschatmsg, m.withdrawn, m.read, m.files, m.previous, p.msgid, s.appkey, s.nick, m.device, " \
  "m.at_type, "
#define CID_JOINS(conversation)                     \
  "LEFT JOIN conversations c ON c.id=" conversation \
  " LEFT JOIN accounts f ON f.id=c.first "          \
  "LEFT JOIN accounts g ON g.id=c.second "
#define MESSAGE_JOINS \
  "LEFT JOIN accounts s ON s.id=m.sender LEFT JOIN messages p ON p.position=m.previous "
inline constexpr int kPositionColumn = 8;
inline constexpr int kPreviousColumn = 21;
inline constexpr int kDeviceColumn = 25;
inline constexpr int kMentionColumn = 26;
inline constexpr int kMessageColumns = 27;

// The conversation of the row as the account `viewer` sees it. In a tribe all see the same.
biz::IMConversationID ReadCid(const sqlite::Statement& row, std::int64_t viewer);
// The message of the row, its files included. May throw `sqlite::Error`.
link::Message ReadMessage(sqlite::Database& database, const sqlite::Statement& row,
                          std::int64_t viewer);

}  // namespace imsdk::embedded
