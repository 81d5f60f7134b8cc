#include "account/message_store.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace imsdk::account {

namespace {

// Status numbers in the conditions are `IMMsgStatus`: 0 sending, 2 failed, 3 received. A query that
// is to use a partial index repeats the condition of the index word by word.
constexpr const char* kSchema[] = {R"sql(
  CREATE TABLE conversations(
    id INTEGER PRIMARY KEY, appkey TEXT NOT NULL, nick TEXT NOT NULL, UNIQUE(appkey, nick));
  CREATE TABLE messages(
    arrival INTEGER PRIMARY KEY,
    conversation INTEGER NOT NULL, msgid INTEGER NOT NULL, msgtime INTEGER NOT NULL,
    outgoing INTEGER NOT NULL, msgtype INTEGER NOT NULL, msgstatus INTEGER NOT NULL,
    svrtime INTEGER NOT NULL, readflag INTEGER NOT NULL, complete INTEGER NOT NULL,
    others TEXT NOT NULL, fixmsgread INTEGER NOT NULL, autochatmsg INTEGER NOT NULL,
    syschatmsg INTEGER NOT NULL, body TEXT NOT NULL);
  CREATE INDEX messages_by_time ON messages(conversation, msgtime, msgid);
  CREATE UNIQUE INDEX messages_by_id ON messages(msgid, conversation);
  CREATE INDEX messages_unread ON messages(conversation, arrival)
    WHERE readflag=0 AND msgstatus=3;
  CREATE INDEX messages_unsent ON messages(msgstatus, msgid) WHERE msgstatus IN (0, 2);
)sql"};

// The columns that `Read` expects, in front of the conditions of a query.
#define MESSAGE_QUERY                                                                    \
  "SELECT m.msgid, m.msgtime, c.appkey, c.nick, m.outgoing, m.msgtype, m.msgstatus, "    \
  "m.svrtime, m.readflag, m.others, m.fixmsgread, m.autochatmsg, m.syschatmsg, m.body, " \
  "m.complete FROM messages m JOIN conversations c ON c.id=m.conversation "
constexpr int kCompleteColumn = 14;

// What a request for history gets that names no count, and the most that any gets.
constexpr std::int32_t kDefaultCount = 20;
constexpr std::int32_t kMostCount = 1000;

}  // namespace

MessageStore::MessageStore(const std::filesystem::path& file, const biz::IMUserID& self,
                           std::shared_ptr<OpenStores> open)
    : self_(self), lazy_(file, std::move(open), [](sqlite::Database& database) {
        sqlite::Migrate(database, kSchema);
      }) {}

std::int64_t MessageStore::FindConversation(const biz::IMUserID& cid) {
  auto row = database().Prepare("SELECT id FROM conversations WHERE appkey=? AND nick=?",
                                cid.appkey, cid.nick);
  return row.Step() ? row.Int64(0) : 0;
}

std::int64_t MessageStore::Conversation(const biz::IMUserID& cid) {
  if (const std::int64_t known = FindConversation(cid); known != 0) return known;
  database()
      .Prepare("INSERT INTO conversations(appkey, nick) VALUES(?,?)", cid.appkey, cid.nick)
      .Run();
  return database().LastInsertId();
}

bool MessageStore::Add(const biz::IMMessage& message, bool outgoing, bool complete) {
  const std::int64_t conversation = Conversation(message.cid);
  database()
      .Prepare(
          "INSERT INTO messages(conversation, msgid, msgtime, outgoing, msgtype, msgstatus, "
          "svrtime, readflag, complete, others, fixmsgread, autochatmsg, syschatmsg, body) "
          "VALUES(?,?,?,?,?,?,?,?,?,?,?,?,?,?) ON CONFLICT(msgid, conversation) DO NOTHING",
          conversation, message.msgid, message.msgtime, outgoing, message.msgtype,
          message.msgstatus, message.svrtime, message.readflag, complete, message.extinfo.others,
          message.extinfo.fixmsgread, message.extinfo.autochatmsg, message.extinfo.syschatmsg,
          message.msgbody)
      .Run();
  return database().Changes() == 1;
}

void MessageStore::AddOutgoing(const biz::IMMessage& message, bool complete) {
  Add(message, true, complete);
}

std::optional<std::int64_t> MessageStore::AddIncoming(const biz::IMMessage& message) {
  if (!Add(message, false, true)) return std::nullopt;
  return database().LastInsertId();
}

void MessageStore::SetStatus(const biz::IMUserID& cid, std::int64_t msgid, biz::IMMsgStatus status,
                             std::int64_t svrtime) {
  database()
      .Prepare("UPDATE messages SET msgstatus=?, svrtime=? WHERE msgid=? AND conversation=?",
               std::int64_t{status}, svrtime, msgid, FindConversation(cid))
      .Run();
}

void MessageStore::MarkRead(const biz::IMUserID& cid, std::int64_t arrival) {
  database()
      .Prepare(
          "UPDATE messages SET readflag=1 "
          "WHERE conversation=? AND arrival<=? AND readflag=0 AND msgstatus=3",
          FindConversation(cid), arrival)
      .Run();
}

biz::IMMessage MessageStore::Read(const sqlite::Statement& row) const {
  biz::IMMessage message;
  message.msgid = row.Int64(0);
  message.msgtime = row.Int64(1);
  message.cid = {row.Wide(2), row.Wide(3)};
  const bool outgoing = row.Bool(4);
  message.fromid = outgoing ? self_ : message.cid;
  message.toid = outgoing ? message.cid : self_;
  message.msgtype = row.Int32(5);
  message.msgstatus = row.Int32(6);
  message.svrtime = row.Int64(7);
  message.readflag = row.Int32(8);
  message.extinfo = {row.Wide(9), row.Int32(10), row.Int32(11), row.Int32(12)};
  message.msgbody = row.Wide(13);
  return message;
}

biz::IMMessagePage MessageStore::Page(const biz::IMUserID& cid, const biz::IMPageRequest& request) {
  const std::int32_t count =
      request.count > 0 ? std::min(request.count, kMostCount) : kDefaultCount;
  const bool newest = request.msgtime == 0 && request.msgid == 0;
  // Without a position the page is the newest one, whichever way it goes on.
  const bool older = request.gohistory || newest;
  const std::int64_t end = std::numeric_limits<std::int64_t>::max();
  const std::int64_t time = newest ? end : request.msgtime;
  const std::int64_t id = newest ? end : request.msgid;
  const std::int64_t conversation = FindConversation(cid);
  // One more than asked for tells whether the store goes on.
  const std::int64_t limit = std::int64_t{count} + 1;
  auto row = older ? database().Prepare(MESSAGE_QUERY
                                        "WHERE m.conversation=? AND (m.msgtime, m.msgid) < (?, ?) "
                                        "ORDER BY m.msgtime DESC, m.msgid DESC LIMIT ?",
                                        conversation, time, id, limit)
                   : database().Prepare(MESSAGE_QUERY
                                        "WHERE m.conversation=? AND (m.msgtime, m.msgid) > (?, ?) "
                                        "ORDER BY m.msgtime, m.msgid LIMIT ?",
                                        conversation, time, id, limit);
  biz::IMMessagePage page;
  page.outofcache = true;
  while (row.Step()) {
    if (page.msgs.size() == static_cast<std::size_t>(count)) {
      page.outofcache = false;
      break;
    }
    page.msgs.push_back(Read(row));
  }
  if (older) std::reverse(page.msgs.begin(), page.msgs.end());
  return page;
}

std::vector<StoredConversation> MessageStore::Conversations() {
  auto row = database().Prepare(
      "SELECT c.appkey, c.nick, m.msgtime, m.msgid, "
      "(SELECT count(*) FROM messages WHERE conversation=c.id AND readflag=0 AND msgstatus=3), "
      "(SELECT max(arrival) FROM messages WHERE conversation=c.id AND readflag=0 AND msgstatus=3) "
      "FROM conversations c JOIN messages m ON m.arrival="
      "(SELECT arrival FROM messages WHERE conversation=c.id "
      "ORDER BY msgtime DESC, msgid DESC LIMIT 1)");
  std::vector<StoredConversation> found;
  while (row.Step()) {
    found.push_back(
        {{row.Wide(0), row.Wide(1)}, {row.Int64(2), row.Int64(3)}, row.Int64(5), row.Int32(4)});
  }
  return found;
}

std::vector<biz::IMMessage> MessageStore::NewestUnread(std::size_t count) {
  auto row = database().Prepare(MESSAGE_QUERY
                                "WHERE m.arrival IN (SELECT arrival FROM messages "
                                "WHERE readflag=0 AND msgstatus=3 "
                                "ORDER BY arrival DESC LIMIT ?) ORDER BY m.arrival DESC",
                                static_cast<std::int64_t>(count));
  std::vector<biz::IMMessage> found;
  while (row.Step()) found.push_back(Read(row));
  return found;
}

std::vector<Unsent> MessageStore::Sending() {
  auto row = database().Prepare(MESSAGE_QUERY
                                "WHERE m.msgstatus IN (0, 2) AND m.msgstatus=0 ORDER BY m.msgid");
  std::vector<Unsent> found;
  while (row.Step()) found.push_back({Read(row), row.Bool(kCompleteColumn)});
  return found;
}

std::vector<std::pair<biz::IMUserID, std::int64_t>> MessageStore::Failed() {
  auto row = database().Prepare(
      "SELECT c.appkey, c.nick, m.msgid FROM messages m JOIN conversations c "
      "ON c.id=m.conversation WHERE m.msgstatus IN (0, 2) AND m.msgstatus=2");
  std::vector<std::pair<biz::IMUserID, std::int64_t>> found;
  while (row.Step()) found.push_back({{row.Wide(0), row.Wide(1)}, row.Int64(2)});
  return found;
}

std::optional<Unsent> MessageStore::FindUnsent(const biz::IMUserID& cid, std::int64_t msgid) {
  auto row = database().Prepare(MESSAGE_QUERY
                                "WHERE m.msgid=? AND m.conversation=? AND m.msgstatus IN (0, 2)",
                                msgid, FindConversation(cid));
  if (!row.Step()) return std::nullopt;
  return Unsent{Read(row), row.Bool(kCompleteColumn)};
}

}  // namespace imsdk::account
