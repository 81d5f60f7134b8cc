#include "embedded/server_store.h"

#include <algorithm>

#include "kexbase/time.h"

namespace imsdk::embedded {

namespace {

constexpr const char* kSchema[] = {R"sql(
  -- `kind` is that of a conversation with the account: 0 for a user, others are virtual.
  CREATE TABLE accounts(
    id INTEGER PRIMARY KEY, appkey TEXT NOT NULL, nick TEXT NOT NULL, kind INTEGER NOT NULL,
    password_hash TEXT NOT NULL, acknowledged INTEGER NOT NULL DEFAULT 0,
    roaming INTEGER NOT NULL DEFAULT 1, roam_opened INTEGER NOT NULL DEFAULT 0,
    UNIQUE(appkey, nick));
  CREATE TABLE tokens(
    hash TEXT PRIMARY KEY, account INTEGER NOT NULL, expires INTEGER NOT NULL) WITHOUT ROWID;
  CREATE INDEX tokens_by_end ON tokens(expires);
  CREATE TABLE devices(
    id INTEGER PRIMARY KEY, account INTEGER NOT NULL, name TEXT NOT NULL, UNIQUE(account, name));

  -- Two accounts, the one with the smaller number first, or a tribe.
  CREATE TABLE conversations(
    id INTEGER PRIMARY KEY, first INTEGER NOT NULL, second INTEGER NOT NULL,
    tribe INTEGER NOT NULL, UNIQUE(first, second, tribe));
  CREATE TABLE tribes(
    id INTEGER PRIMARY KEY, conversation INTEGER NOT NULL, name TEXT NOT NULL,
    owner INTEGER NOT NULL, open_history INTEGER NOT NULL DEFAULT 0);
  CREATE TABLE stays(
    account INTEGER NOT NULL, until INTEGER NOT NULL, conversation INTEGER NOT NULL,
    joined INTEGER NOT NULL, PRIMARY KEY(account, until, conversation)) WITHOUT ROWID;

  -- Messages and entries share one count of positions. A stream is an account's, or a tribe's under
  -- its conversation's number below zero. A tribe's messages are in no stream but their own order.
  CREATE TABLE messages(
    position INTEGER PRIMARY KEY, conversation INTEGER NOT NULL, sender INTEGER NOT NULL,
    device INTEGER NOT NULL, previous INTEGER NOT NULL, msgid INTEGER NOT NULL,
    msgtime INTEGER NOT NULL, svrtime INTEGER NOT NULL, msgtype INTEGER NOT NULL,
    body TEXT NOT NULL, others TEXT NOT NULL, fixmsgread INTEGER NOT NULL,
    autochatmsg INTEGER NOT NULL, syschatmsg INTEGER NOT NULL, files INTEGER NOT NULL,
    withdrawn INTEGER NOT NULL DEFAULT 0, read INTEGER NOT NULL DEFAULT 0,
    UNIQUE(conversation, msgid, sender));
  CREATE INDEX messages_of ON messages(conversation);
  CREATE INDEX messages_by_time ON messages(conversation, svrtime);
  CREATE INDEX messages_by_sender ON messages(conversation, sender);
  CREATE TABLE entries(
    position INTEGER PRIMARY KEY, stream INTEGER NOT NULL, kind INTEGER NOT NULL,
    conversation INTEGER NOT NULL, message INTEGER NOT NULL, actor INTEGER NOT NULL,
    numbers TEXT NOT NULL, device INTEGER NOT NULL);
  CREATE INDEX entries_of ON entries(stream, position);
  CREATE TABLE reads(
    account INTEGER NOT NULL, conversation INTEGER NOT NULL, msgtime INTEGER NOT NULL,
    msgid INTEGER NOT NULL, entry INTEGER NOT NULL,
    PRIMARY KEY(account, conversation)) WITHOUT ROWID;

  CREATE TABLE message_files(
    message INTEGER NOT NULL, number INTEGER NOT NULL, name TEXT NOT NULL, address TEXT NOT NULL,
    size INTEGER NOT NULL, PRIMARY KEY(message, number)) WITHOUT ROWID;
  CREATE INDEX messages_with ON message_files(address);
  CREATE TABLE uploads(
    address TEXT NOT NULL, account INTEGER NOT NULL, PRIMARY KEY(address, account)) WITHOUT ROWID;
)sql"};

}  // namespace

PreparedDatabase::PreparedDatabase(const std::filesystem::path& file)
    : sqlite::Database(file, sqlite::Locking::kExclusive) {
  // What is taken back leaves no copy in a page that is free.
  Execute("PRAGMA secure_delete=ON");
  sqlite::Migrate(*this, kSchema);
}

ServerStore::ServerStore(const std::filesystem::path& file)
    : database_(file), last_time_(std::max(mail_.NewestTime(), accounts_.NewestOpenTime())) {}

std::int64_t ServerStore::Now() {
  return last_time_ = std::max(last_time_, base::Time::Now().ToMilliseconds());
}

}  // namespace imsdk::embedded
