#include "embedded/mail_table.h"

#include <sstream>

#include "embedded/file_table.h"

namespace imsdk::embedded {

namespace {

std::string JoinNumbers(const std::vector<std::int64_t>& numbers) {
  std::string text;
  for (const std::int64_t number : numbers) text += std::to_string(number) + ' ';
  return text;
}

}  // namespace

std::vector<std::int64_t> SplitNumbers(const std::string& text) {
  std::istringstream in(text);
  std::vector<std::int64_t> numbers;
  for (std::int64_t number = 0; in >> number;) numbers.push_back(number);
  return numbers;
}

MailTable::MailTable(sqlite::Database& database) : database_(database) {
  // The newest row of each table is never deleted without a newer one in its place, so this never
  // goes back.
  auto row = database_.Prepare(
      "SELECT max(coalesce((SELECT max(position) FROM messages), 0), "
      "coalesce((SELECT max(position) FROM entries), 0))");
  if (row.Step()) newest_ = row.Int64(0);
}

std::int64_t MailTable::NewestTime() {
  auto row = database_.Prepare("SELECT svrtime FROM messages ORDER BY position DESC LIMIT 1");
  return row.Step() ? row.Int64(0) : 0;
}

std::optional<KnownMessage> MailTable::Find(std::int64_t conversation, std::int64_t sender,
                                            std::int64_t msgid) {
  auto row = database_.Prepare(
      "SELECT position, svrtime, withdrawn FROM messages "
      "WHERE conversation=? AND msgid=? AND sender=?",
      conversation, msgid, sender);
  if (!row.Step()) return std::nullopt;
  return KnownMessage{row.Int64(0), row.Int64(1), row.Bool(2)};
}

Position MailTable::Add(const Sending& sending, const link::Message& message) {
  database_
      .Prepare(
          "INSERT INTO messages(position, conversation, sender, device, previous, msgid, msgtime, "
          "svrtime, msgtype, body, others, fixmsgread, autochatmsg, syschatmsg, files) "
          "VALUES(?1,?2,?3,?4, coalesce((SELECT max(position) FROM messages WHERE conversation=?2 "
          "AND sender=?3), 0), ?5,?6,?7,?8,?9,?10,?11,?12,?13,?14)",
          ++newest_, sending.conversation, sending.sender, sending.device, message.msgid,
          message.msgtime, message.svrtime, message.msgtype, message.body, message.ext.others,
          message.ext.fixmsgread, message.ext.autochatmsg, message.ext.syschatmsg,
          static_cast<std::int64_t>(!message.files.empty()))
      .Run();
  std::int64_t number = 0;
  for (const link::File& file : message.files) {
    database_
        .Prepare(
            "INSERT INTO message_files(message, number, name, address, size) VALUES(?,?,?,?,?)",
            newest_, ++number, file.name, file.address, static_cast<std::int64_t>(file.size))
        .Run();
    AddNode(database_, sending.conversation, NodeOf(newest_, number),
            NameInBody(message.body, file.name));
  }
  return newest_;
}

void MailTable::Withdraw(Position message) {
  database_
      .Prepare("UPDATE messages SET withdrawn=1, body='', others='', files=0 WHERE position=?",
               message)
      .Run();
  database_.Prepare("DELETE FROM message_files WHERE message=?", message).Run();
  database_
      .Prepare("DELETE FROM cloud_files WHERE node BETWEEN ? AND ?", NodeOf(message, 0),
               NodeOf(message + 1, 0) - 1)
      .Run();
}

std::vector<std::int64_t> MailTable::SetRead(std::int64_t conversation, std::int64_t reader,
                                             std::int64_t msgid) {
  std::vector<std::int64_t> senders;
  auto row = database_.Prepare(
      "UPDATE messages SET read=1 WHERE conversation=? AND msgid=? AND sender<>? AND read=0 AND "
      "withdrawn=0 RETURNING sender",
      conversation, msgid, reader);
  while (row.Step()) senders.push_back(row.Int64(0));
  return senders;
}

Position MailTable::AddEntry(const NewEntry& entry) {
  const bool tribe = entry.stream.kind == Stream::Kind::kTribe;
  database_
      .Prepare(
          "INSERT INTO entries(position, stream, kind, conversation, message, actor, numbers, "
          "device, detail) VALUES(?,?,?,?,?,?,?,?,?)",
          ++newest_, tribe ? -entry.stream.id : entry.stream.id,
          static_cast<std::int64_t>(entry.kind), entry.conversation, entry.message, entry.actor,
          JoinNumbers(entry.numbers), entry.device, entry.detail)
      .Run();
  return newest_;
}

std::optional<Position> MailTable::AdvanceRead(std::int64_t account, std::int64_t conversation,
                                               const biz::IMMsgPosition& upto,
                                               std::int64_t device) {
  {
    auto row = database_.Prepare(
        "SELECT entry, (msgtime, msgid) > (?, ?) FROM reads WHERE account=? AND conversation=?",
        upto.msgtime, upto.msgid, account, conversation);
    if (row.Step()) {
      if (row.Bool(1)) return std::nullopt;
      database_.Prepare("DELETE FROM entries WHERE position=?", row.Int64(0)).Run();
    }
  }
  const Position entry = AddEntry({{Stream::Kind::kAccount, account},
                                   EntryKind::kReadElsewhere,
                                   conversation,
                                   0,
                                   0,
                                   {upto.msgtime, upto.msgid},
                                   device});
  database_
      .Prepare(
          "INSERT OR REPLACE INTO reads(account, conversation, msgtime, msgid, entry) "
          "VALUES(?,?,?,?,?)",
          account, conversation, upto.msgtime, upto.msgid, entry)
      .Run();
  return entry;
}

}  // namespace imsdk::embedded
