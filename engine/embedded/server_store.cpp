#include "embedded/server_store.h"

#include <algorithm>

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
)sql",
                                   R"sql(
  -- Positions go on counting where they were, now for entries.
  ALTER TABLE accounts ADD COLUMN channel INTEGER NOT NULL DEFAULT 0;
  ALTER TABLE accounts ADD COLUMN roaming INTEGER NOT NULL DEFAULT 1;
  ALTER TABLE accounts ADD COLUMN roam_opened INTEGER NOT NULL DEFAULT 0;
  CREATE TABLE devices(
    id INTEGER PRIMARY KEY, account INTEGER NOT NULL, name TEXT NOT NULL,
    acknowledged INTEGER NOT NULL, UNIQUE(account, name));
  ALTER TABLE messages ADD COLUMN withdrawn INTEGER NOT NULL DEFAULT 0;
  ALTER TABLE messages ADD COLUMN read INTEGER NOT NULL DEFAULT 0;
  DROP INDEX messages_for;
  CREATE INDEX messages_between ON messages(
    min(sender, receiver), max(sender, receiver), msgtime, msgid, svrtime);
  CREATE TABLE entries(
    position INTEGER PRIMARY KEY AUTOINCREMENT,
    account INTEGER NOT NULL, kind INTEGER NOT NULL, message INTEGER NOT NULL,
    peer INTEGER NOT NULL, numbers TEXT NOT NULL, device INTEGER NOT NULL);
  CREATE INDEX entries_for ON entries(account, position);
  INSERT INTO entries
    SELECT position, receiver, 0, position, sender, '', 0 FROM messages WHERE sender<>receiver
    ORDER BY position;
  CREATE TABLE reads(
    account INTEGER NOT NULL, peer INTEGER NOT NULL, msgtime INTEGER NOT NULL,
    msgid INTEGER NOT NULL, entry INTEGER NOT NULL, PRIMARY KEY(account, peer)) WITHOUT ROWID;
)sql"};

}  // namespace

ServerStore::ServerStore(const std::filesystem::path& file) : database_(file), mail_(database_) {
  // What is taken back leaves no copy in a page that is free.
  database_.Execute("PRAGMA secure_delete=ON");
  sqlite::Migrate(database_, kSchema);
}

std::optional<StoredAccount> ServerStore::FindAccount(const biz::IMUserID& user) {
  auto row = database_.Prepare(
      "SELECT id, password_hash, channel, roam_opened, roaming FROM accounts "
      "WHERE appkey=? AND nick=?",
      user.appkey, user.nick);
  if (!row.Step()) return std::nullopt;
  return StoredAccount{row.Int64(0),
                       row.Text(1),
                       static_cast<link::Channel>(row.Int32(2)),
                       {row.Int64(3), row.Int32(4)}};
}

bool ServerStore::HasAccounts() { return database_.Prepare("SELECT 1 FROM accounts").Step(); }

bool ServerStore::AddAccount(const biz::IMUserID& user, const std::string& password_hash,
                             link::Channel channel) {
  database_
      .Prepare(
          "INSERT OR IGNORE INTO accounts(appkey, nick, password_hash, channel) VALUES(?,?,?,?)",
          user.appkey, user.nick, password_hash, static_cast<std::int64_t>(channel))
      .Run();
  return database_.Changes() == 1;
}

void ServerStore::SetRoaming(std::int64_t account, const biz::IMRoamStatus& roaming) {
  database_
      .Prepare("UPDATE accounts SET roaming=?, roam_opened=? WHERE id=?", roaming.roamstatus,
               roaming.opentime, account)
      .Run();
}

std::int64_t ServerStore::NewestTime() {
  auto row = database_.Prepare("SELECT max(roam_opened) FROM accounts");
  return std::max(mail_.NewestTime(), row.Step() ? row.Int64(0) : 0);
}

StoredDevice ServerStore::Device(std::int64_t account, const std::string& name) {
  for (;;) {
    {
      auto row = database_.Prepare(
          "SELECT id, acknowledged FROM devices WHERE account=? AND name=?", account, name);
      if (row.Step()) return {row.Int64(0), row.Int64(1)};
    }
    database_
        .Prepare(
            "INSERT INTO devices(account, name, acknowledged) "
            "SELECT id, ?, acknowledged FROM accounts WHERE id=?",
            name, account)
        .Run();
  }
}

bool ServerStore::HasOtherDevices(std::int64_t account, std::int64_t device) {
  return database_.Prepare("SELECT 1 FROM devices WHERE account=? AND id<>?", account, device)
      .Step();
}

void ServerStore::SetAcknowledged(std::int64_t device, std::int64_t position) {
  database_
      .Prepare("UPDATE devices SET acknowledged=max(acknowledged, ?) WHERE id=?", position, device)
      .Run();
  database_
      .Prepare(
          "UPDATE accounts SET acknowledged=max(acknowledged, ?) "
          "WHERE id=(SELECT account FROM devices WHERE id=?)",
          position, device)
      .Run();
}

void ServerStore::SetAllAcknowledged() {
  database_
      .Prepare("UPDATE accounts SET acknowledged=coalesce((SELECT max(position) FROM entries), 0)")
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

}  // namespace imsdk::embedded
