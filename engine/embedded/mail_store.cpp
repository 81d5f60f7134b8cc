#include "embedded/mail_store.h"

#include <algorithm>
#include <limits>
#include <sstream>
#include <string>
#include <utility>

namespace imsdk::embedded {

namespace {

// The columns that `ReadMessage` expects, and the tables that they come from.
#define MESSAGE_COLUMNS                                                                    \
  "m.msgid, m.msgtime, m.svrtime, s.appkey, s.nick, r.appkey, r.nick, m.msgtype, m.body, " \
  "m.others, m.fixmsgread, m.autochatmsg, m.syschatmsg, s.channel, m.withdrawn, m.read"
constexpr int kMessageColumns = 16;

// The most of a conversation that goes into one answer.
constexpr std::int32_t kMostInHistory = 1000;
constexpr std::size_t kBytesInHistory = 4 * 1024 * 1024;

link::Message ReadMessage(const sqlite::Statement& row) {
  link::Message message;
  message.msgid = row.Int64(0);
  message.msgtime = row.Int64(1);
  message.svrtime = row.Int64(2);
  message.from = {row.Wide(3), row.Wide(4)};
  message.to = {row.Wide(5), row.Wide(6)};
  message.msgtype = row.Int32(7);
  message.body = row.Wide(8);
  message.ext = {row.Wide(9), row.Int32(10), row.Int32(11), row.Int32(12)};
  message.channel = static_cast<link::Channel>(row.Int32(13));
  message.withdrawn = row.Bool(14);
  message.read = row.Bool(15);
  return message;
}

std::string Join(const std::vector<std::int64_t>& numbers) {
  std::string text;
  for (const std::int64_t number : numbers) text += std::to_string(number) + ' ';
  return text;
}

std::vector<std::int64_t> Split(const std::string& text) {
  std::istringstream in(text);
  std::vector<std::int64_t> numbers;
  for (std::int64_t number = 0; in >> number;) numbers.push_back(number);
  return numbers;
}

link::Entry ReadEntry(const sqlite::Statement& row) {
  const auto kind = static_cast<EntryKind>(row.Int32(kMessageColumns + 1));
  const biz::IMUserID peer{row.Wide(kMessageColumns + 2), row.Wide(kMessageColumns + 3)};
  std::vector<std::int64_t> numbers = Split(row.Text(kMessageColumns + 4));
  switch (kind) {
    case EntryKind::kPeerRead:
      return link::PeerRead{peer, std::move(numbers)};
    case EntryKind::kReadElsewhere:
      numbers.resize(2);
      return link::ReadElsewhere{peer,
                                 static_cast<link::Channel>(row.Int32(kMessageColumns + 5)),
                                 {numbers[0], numbers[1]}};
    default:
      break;
  }
  link::Message message = ReadMessage(row);
  if (kind == EntryKind::kMessage) return message;
  return link::Withdrawal{std::move(message.from), std::move(message.to), message.msgid,
                          message.msgtime, message.svrtime};
}

std::size_t TextOf(const link::Entry& entry) {
  const auto* message = std::get_if<link::Message>(&entry);
  return message ? message->body.size() * sizeof(wchar_t) : 0;
}

}  // namespace

std::optional<KnownMessage> MailStore::Find(std::int64_t sender, std::int64_t msgid) {
  auto row = database_.Prepare(
      "SELECT position, receiver, svrtime, withdrawn FROM messages WHERE sender=? AND msgid=?",
      sender, msgid);
  if (!row.Step()) return std::nullopt;
  return KnownMessage{row.Int64(0), row.Int64(1), row.Int64(2), row.Bool(3)};
}

std::int64_t MailStore::Add(std::int64_t sender, std::int64_t receiver,
                            const link::Message& message) {
  database_
      .Prepare(
          "INSERT INTO messages(sender, receiver, msgid, msgtime, svrtime, msgtype, body, others, "
          "fixmsgread, autochatmsg, syschatmsg) VALUES(?,?,?,?,?,?,?,?,?,?,?)",
          sender, receiver, message.msgid, message.msgtime, message.svrtime, message.msgtype,
          message.body, message.ext.others, message.ext.fixmsgread, message.ext.autochatmsg,
          message.ext.syschatmsg)
      .Run();
  return database_.LastInsertId();
}

void MailStore::Withdraw(std::int64_t row) {
  database_.Prepare("UPDATE messages SET withdrawn=1, body='', others='' WHERE position=?", row)
      .Run();
}

bool MailStore::SetRead(std::int64_t sender, std::int64_t receiver, std::int64_t msgid) {
  database_
      .Prepare(
          "UPDATE messages SET read=1 "
          "WHERE sender=? AND msgid=? AND receiver=? AND read=0 AND withdrawn=0",
          sender, msgid, receiver)
      .Run();
  return database_.Changes() == 1;
}

std::int64_t MailStore::NewestTime() {
  auto row = database_.Prepare("SELECT svrtime FROM messages ORDER BY position DESC LIMIT 1");
  return row.Step() ? row.Int64(0) : 0;
}

std::int64_t MailStore::AddEntry(const NewEntry& entry) {
  database_
      .Prepare(
          "INSERT INTO entries(account, kind, message, peer, numbers, device) VALUES(?,?,?,?,?,?)",
          entry.account, static_cast<std::int64_t>(entry.kind), entry.message, entry.peer,
          Join(entry.numbers), entry.device)
      .Run();
  return database_.LastInsertId();
}

bool MailStore::AdvanceRead(std::int64_t account, std::int64_t peer, const biz::IMMsgPosition& upto,
                            std::int64_t device) {
  {
    auto row = database_.Prepare(
        "SELECT entry, (msgtime, msgid) > (?, ?) FROM reads WHERE account=? AND peer=?",
        upto.msgtime, upto.msgid, account, peer);
    if (row.Step()) {
      if (row.Bool(1)) return false;
      database_.Prepare("DELETE FROM entries WHERE position=?", row.Int64(0)).Run();
    }
  }
  const std::int64_t entry =
      AddEntry({account, EntryKind::kReadElsewhere, 0, peer, {upto.msgtime, upto.msgid}, device});
  database_
      .Prepare(
          "INSERT OR REPLACE INTO reads(account, peer, msgtime, msgid, entry) VALUES(?,?,?,?,?)",
          account, peer, upto.msgtime, upto.msgid, entry)
      .Run();
  return true;
}

std::vector<StoredEntry> MailStore::EntriesFor(std::int64_t account, std::int64_t device,
                                               std::int64_t after, std::int64_t count,
                                               std::size_t bytes) {
  auto row = database_.Prepare(
      "SELECT " MESSAGE_COLUMNS
      ", e.position, e.kind, p.appkey, p.nick, e.numbers, p.channel FROM entries e "
      "JOIN accounts p ON p.id=e.peer LEFT JOIN messages m ON m.position=e.message "
      "LEFT JOIN accounts s ON s.id=m.sender LEFT JOIN accounts r ON r.id=m.receiver "
      "WHERE e.account=? AND e.position>? AND e.device<>? ORDER BY e.position LIMIT ?",
      account, after, device, count);
  std::vector<StoredEntry> found;
  std::size_t text = 0;
  while (text < bytes && row.Step()) {
    found.push_back({row.Int64(kMessageColumns), ReadEntry(row)});
    text += TextOf(found.back().entry);
  }
  return found;
}

std::int64_t MailStore::NewestFor(std::int64_t account, std::int64_t device) {
  auto row = database_.Prepare(
      "SELECT position FROM entries WHERE account=? AND device<>? ORDER BY position DESC LIMIT 1",
      account, device);
  return row.Step() ? row.Int64(0) : 0;
}

link::History MailStore::History(std::int64_t account, std::int64_t peer,
                                 const link::HistoryRequest& request, std::int64_t opentime) {
  constexpr std::int64_t kEnd = std::numeric_limits<std::int64_t>::max();
  const bool newest = request.position.msgtime == 0 && request.position.msgid == 0;
  const bool older = request.older || newest;
  const std::int64_t time = newest ? kEnd : request.position.msgtime;
  const std::int64_t id = newest ? kEnd : request.position.msgid;
  const std::int64_t last = request.etime > 0 ? request.etime : kEnd;
  const auto count = static_cast<std::size_t>(std::clamp(request.count, 1, kMostInHistory));
#define HISTORY_QUERY(compare, order)                                                     \
  "SELECT " MESSAGE_COLUMNS                                                               \
  " FROM messages m JOIN accounts s ON s.id=m.sender JOIN accounts r ON r.id=m.receiver " \
  "WHERE min(m.sender, m.receiver)=? AND max(m.sender, m.receiver)=? "                    \
  "AND (m.msgtime, m.msgid)" compare                                                      \
  "(?, ?) AND m.msgtime>=? AND m.msgtime<=? AND m.svrtime>=? ORDER BY m.msgtime" order    \
  ", m.msgid" order
  auto row = database_.Prepare(older ? HISTORY_QUERY("<", " DESC") : HISTORY_QUERY(">", ""),
                               std::min(account, peer), std::max(account, peer), time, id,
                               request.btime, last, opentime);
#undef HISTORY_QUERY
  link::History history;
  std::size_t text = 0;
  while (row.Step()) {
    if (history.msgs.size() == count || text >= kBytesInHistory) {
      history.more = true;
      break;
    }
    history.msgs.push_back(ReadMessage(row));
    text += history.msgs.back().body.size() * sizeof(wchar_t);
  }
  if (older) std::reverse(history.msgs.begin(), history.msgs.end());
  return history;
}

}  // namespace imsdk::embedded
