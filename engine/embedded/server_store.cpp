#include "embedded/server_store.h"

namespace imsdk::embedded {

namespace {

constexpr const char* kSchema[] = {R"sql(
  CREATE TABLE accounts(
    id INTEGER PRIMARY KEY, appkey TEXT NOT NULL, nick TEXT NOT NULL,
    password_hash TEXT NOT NULL, acknowledged INTEGER NOT NULL DEFAULT 0,
    UNIQUE(appkey, nick));
  CREATE TABLE tokens(
    hash TEXT PRIMARY KEY, account INTEGER NOT NULL, expires INTEGER NOT NULL) WITHOUT ROWID;
  CREATE INDEX tokens_by_end ON tokens(expires);
  CREATE TABLE messages(
    position INTEGER PRIMARY KEY AUTOINCREMENT,
    sender INTEGER NOT NULL, receiver INTEGER NOT NULL, msgid INTEGER NOT NULL,
    msgtime INTEGER NOT NULL, svrtime INTEGER NOT NULL, msgtype INTEGER NOT NULL,
    body TEXT NOT NULL, others TEXT NOT NULL, fixmsgread INTEGER NOT NULL,
    autochatmsg INTEGER NOT NULL, syschatmsg INTEGER NOT NULL,
    UNIQUE(sender, msgid));
  CREATE INDEX messages_for ON messages(receiver, position);
)sql"};

}  // namespace

ServerStore::ServerStore(const std::filesystem::path& file) : database_(file) {
  sqlite::Migrate(database_, kSchema);
}

std::optional<StoredAccount> ServerStore::FindAccount(const biz::IMUserID& user) {
  auto row = database_.Prepare(
      "SELECT id, password_hash, acknowledged FROM accounts WHERE appkey=? AND nick=?", user.appkey,
      user.nick);
  if (!row.Step()) return std::nullopt;
  return StoredAccount{row.Int64(0), row.Text(1), row.Int64(2)};
}

bool ServerStore::HasAccounts() { return database_.Prepare("SELECT 1 FROM accounts").Step(); }

bool ServerStore::AddAccount(const biz::IMUserID& user, const std::string& password_hash) {
  database_
      .Prepare("INSERT OR IGNORE INTO accounts(appkey, nick, password_hash) VALUES(?,?,?)",
               user.appkey, user.nick, password_hash)
      .Run();
  return database_.Changes() == 1;
}

void ServerStore::SetAcknowledged(std::int64_t account, std::int64_t position) {
  database_
      .Prepare("UPDATE accounts SET acknowledged=max(acknowledged, ?) WHERE id=?", position,
               account)
      .Run();
}

void ServerStore::AddToken(std::int64_t account, const std::string& hash, std::int64_t expires,
                           std::int64_t now) {
  database_.Prepare("DELETE FROM tokens WHERE expires<=?", now).Run();
  database_
      .Prepare("INSERT INTO tokens(hash, account, expires) VALUES(?,?,?)", hash, account, expires)
      .Run();
}

bool ServerStore::HasToken(std::int64_t account, const std::string& hash, std::int64_t now) {
  return database_
      .Prepare("SELECT 1 FROM tokens WHERE hash=? AND account=? AND expires>?", hash, account, now)
      .Step();
}

std::optional<std::int64_t> ServerStore::FindMessage(std::int64_t sender, std::int64_t msgid) {
  auto row =
      database_.Prepare("SELECT svrtime FROM messages WHERE sender=? AND msgid=?", sender, msgid);
  if (!row.Step()) return std::nullopt;
  return row.Int64(0);
}

std::int64_t ServerStore::AddMessage(std::int64_t sender, std::int64_t receiver,
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

std::vector<StoredMessage> ServerStore::MessagesFor(std::int64_t receiver, std::int64_t after,
                                                    std::int64_t count, std::size_t bytes) {
  auto row = database_.Prepare(
      "SELECT m.position, m.msgid, m.msgtime, m.svrtime, s.appkey, s.nick, r.appkey, r.nick, "
      "m.msgtype, m.body, m.others, m.fixmsgread, m.autochatmsg, m.syschatmsg "
      "FROM messages m JOIN accounts s ON s.id=m.sender JOIN accounts r ON r.id=m.receiver "
      "WHERE m.receiver=? AND m.position>? AND m.sender<>m.receiver "
      "ORDER BY m.position LIMIT ?",
      receiver, after, count);
  std::vector<StoredMessage> found;
  std::size_t text = 0;
  while (text < bytes && row.Step()) {
    StoredMessage& stored = found.emplace_back();
    link::Message& message = stored.message;
    stored.position = row.Int64(0);
    message.msgid = row.Int64(1);
    message.msgtime = row.Int64(2);
    message.svrtime = row.Int64(3);
    message.from = {row.Wide(4), row.Wide(5)};
    message.to = {row.Wide(6), row.Wide(7)};
    message.msgtype = row.Int32(8);
    message.body = row.Wide(9);
    message.ext = {row.Wide(10), row.Int32(11), row.Int32(12), row.Int32(13)};
    text += message.body.size() * sizeof(wchar_t);
  }
  return found;
}

std::int64_t ServerStore::NewestFor(std::int64_t receiver) {
  auto row = database_.Prepare(
      "SELECT position FROM messages WHERE receiver=? AND sender<>receiver "
      "ORDER BY position DESC LIMIT 1",
      receiver);
  return row.Step() ? row.Int64(0) : 0;
}

std::int64_t ServerStore::NewestTime() {
  auto row = database_.Prepare("SELECT svrtime FROM messages ORDER BY position DESC LIMIT 1");
  return row.Step() ? row.Int64(0) : 0;
}

}  // namespace imsdk::embedded
