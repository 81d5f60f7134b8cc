#include "embedded/server_store.h"

#include <algorithm>
#include <utility>

#include "kexbase/time.h"

namespace imsdk::embedded {

namespace {

// The files of conversations. `node` is made of the message's position and the file's number in it;
// names of messages that were there before are filled in from their bodies.
constexpr const char* kCloudFileStep = R"sql(
  CREATE TABLE cloud_files(
    node INTEGER PRIMARY KEY, conversation INTEGER NOT NULL, name TEXT, folded TEXT);
  CREATE INDEX cloud_files_of ON cloud_files(conversation, node);
  CREATE INDEX cloud_files_unnamed ON cloud_files(node) WHERE name IS NULL;
  INSERT INTO cloud_files(node, conversation)
    SELECT (h.message<<14)+h.number, m.conversation
    FROM message_files h JOIN messages m ON m.position=h.message;
  ALTER TABLE uploads ADD COLUMN size INTEGER NOT NULL DEFAULT 0;
  CREATE INDEX uploads_of ON uploads(account);
  UPDATE uploads SET size=coalesce(
    (SELECT size FROM message_files h WHERE h.address=uploads.address LIMIT 1), 0);
)sql";

// Users' names and portraits, lists of contacts, and requests. `folded` is nick and name in small
// letters.
constexpr const char* kContactStep = R"sql(
  CREATE TABLE profiles(
    account INTEGER PRIMARY KEY, display TEXT NOT NULL, portrait TEXT NOT NULL,
    folded TEXT NOT NULL);
  CREATE TABLE contacts(
    owner INTEGER NOT NULL, contact INTEGER NOT NULL, gid INTEGER NOT NULL,
    asterisk INTEGER NOT NULL, PRIMARY KEY(owner, contact)) WITHOUT ROWID;
  CREATE INDEX contacts_of ON contacts(contact);
  CREATE TABLE contact_groups(
    gid INTEGER PRIMARY KEY AUTOINCREMENT, owner INTEGER NOT NULL, parent INTEGER NOT NULL,
    name TEXT NOT NULL);
  CREATE INDEX contact_groups_of ON contact_groups(owner);
  CREATE TABLE black_users(
    owner INTEGER NOT NULL, account INTEGER NOT NULL, addtime INTEGER NOT NULL,
    PRIMARY KEY(owner, account)) WITHOUT ROWID;
  CREATE TABLE contact_verify(
    id INTEGER PRIMARY KEY AUTOINCREMENT, audience INTEGER NOT NULL, sender INTEGER NOT NULL,
    type INTEGER NOT NULL, msgtime INTEGER NOT NULL, words TEXT NOT NULL, gid INTEGER NOT NULL,
    deleted INTEGER NOT NULL DEFAULT 0);
  CREATE INDEX contact_verify_for ON contact_verify(audience, id);
  CREATE INDEX contact_verify_open ON contact_verify(sender, audience) WHERE type IN (1,6,7);
)sql";

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
)sql",
                                   R"sql(
  -- What a tribe is. `members`, `visits` and `level` are kept here so that nobody has to count;
  -- `visit_era` grows when the visitors are cleared.
  ALTER TABLE tribes ADD COLUMN type INTEGER NOT NULL DEFAULT 0;
  ALTER TABLE tribes ADD COLUMN description TEXT NOT NULL DEFAULT '';
  ALTER TABLE tribes ADD COLUMN portrait TEXT NOT NULL DEFAULT '';
  ALTER TABLE tribes ADD COLUMN bulletin TEXT NOT NULL DEFAULT '';
  ALTER TABLE tribes ADD COLUMN ntfimage TEXT NOT NULL DEFAULT '';
  ALTER TABLE tribes ADD COLUMN businessimage TEXT NOT NULL DEFAULT '';
  ALTER TABLE tribes ADD COLUMN class INTEGER NOT NULL DEFAULT 0;
  ALTER TABLE tribes ADD COLUMN level INTEGER NOT NULL DEFAULT 1;
  ALTER TABLE tribes ADD COLUMN auth INTEGER NOT NULL DEFAULT 3;
  ALTER TABLE tribes ADD COLUMN password TEXT NOT NULL DEFAULT '';
  ALTER TABLE tribes ADD COLUMN at_all INTEGER NOT NULL DEFAULT 0;
  ALTER TABLE tribes ADD COLUMN visitors INTEGER NOT NULL DEFAULT 0;
  ALTER TABLE tribes ADD COLUMN enabled INTEGER NOT NULL DEFAULT 1;
  ALTER TABLE tribes ADD COLUMN members INTEGER NOT NULL DEFAULT 0;
  ALTER TABLE tribes ADD COLUMN visits INTEGER NOT NULL DEFAULT 0;
  ALTER TABLE tribes ADD COLUMN visit_era INTEGER NOT NULL DEFAULT 0;
  CREATE INDEX tribes_by_conversation ON tribes(conversation);

  -- Who is a member now. `activity` counts messages and fades, it was so at `active_at`.
  CREATE TABLE members(
    conversation INTEGER NOT NULL, account INTEGER NOT NULL, level INTEGER NOT NULL,
    nickname TEXT NOT NULL DEFAULT '', remind INTEGER NOT NULL DEFAULT 0,
    activity INTEGER NOT NULL DEFAULT 0, active_at INTEGER NOT NULL DEFAULT 0,
    PRIMARY KEY(conversation, account)) WITHOUT ROWID;
  CREATE INDEX managers_of ON members(conversation) WHERE level>1;
  CREATE INDEX managed_by ON members(account) WHERE level>1;
  INSERT INTO members(conversation, account, level)
    SELECT s.conversation, s.account, CASE WHEN t.owner=s.account THEN 3 ELSE 1 END
    FROM stays s JOIN tribes t ON t.conversation=s.conversation
    WHERE s.until=9223372036854775807;
  UPDATE tribes SET members=(SELECT count(*) FROM members m WHERE m.conversation=tribes.conversation);
  -- An owner who is no member any more could not be found in the tribe: one of the members follows.
  UPDATE tribes SET owner=coalesce((SELECT account FROM members m
      WHERE m.conversation=tribes.conversation ORDER BY account LIMIT 1), owner)
    WHERE NOT EXISTS(SELECT 1 FROM members m
      WHERE m.conversation=tribes.conversation AND m.account=tribes.owner);
  UPDATE members SET level=3 WHERE account=(
    SELECT owner FROM tribes WHERE tribes.conversation=members.conversation);

  CREATE TABLE attention(
    account INTEGER NOT NULL, conversation INTEGER NOT NULL, member INTEGER NOT NULL,
    PRIMARY KEY(account, conversation, member)) WITHOUT ROWID;
  CREATE TABLE black(
    conversation INTEGER NOT NULL, account INTEGER NOT NULL, addtime INTEGER NOT NULL,
    PRIMARY KEY(conversation, account)) WITHOUT ROWID;
  CREATE TABLE visitors(
    conversation INTEGER NOT NULL, account INTEGER NOT NULL, era INTEGER NOT NULL,
    PRIMARY KEY(conversation, account)) WITHOUT ROWID;

  -- Requests, invitations and what became of them. `audience` is an account, or below zero the
  -- conversation of a tribe whose managers see it; `subject` would join; `manager` decided.
  CREATE TABLE verify(
    id INTEGER PRIMARY KEY AUTOINCREMENT, audience INTEGER NOT NULL, conversation INTEGER NOT NULL,
    sender INTEGER NOT NULL, subject INTEGER NOT NULL, type INTEGER NOT NULL,
    msgtime INTEGER NOT NULL, words TEXT NOT NULL, manager INTEGER NOT NULL DEFAULT 0);
  CREATE INDEX verify_for ON verify(audience, id);
  CREATE INDEX verify_open ON verify(conversation, subject) WHERE type<3;
  CREATE TABLE verify_deleted(
    account INTEGER NOT NULL, verify INTEGER NOT NULL, PRIMARY KEY(account, verify)) WITHOUT ROWID;

  -- Texts of what happens in a tribe.
  ALTER TABLE entries ADD COLUMN detail TEXT NOT NULL DEFAULT '';
)sql",
                                   R"sql(
  -- Whom messages of tribes mention, and how many have read that and have not. Who is mentioned
  -- together with all others has no row of its own.
  ALTER TABLE messages ADD COLUMN at_type INTEGER NOT NULL DEFAULT 0;
  ALTER TABLE messages ADD COLUMN at_readed INTEGER NOT NULL DEFAULT 0;
  ALTER TABLE messages ADD COLUMN at_unread INTEGER NOT NULL DEFAULT 0;
  CREATE INDEX messages_at ON messages(conversation) WHERE at_type<>0;
  CREATE TABLE mentioned(
    message INTEGER NOT NULL, number INTEGER NOT NULL, account INTEGER NOT NULL,
    PRIMARY KEY(message, number)) WITHOUT ROWID;
  CREATE UNIQUE INDEX mentioned_by ON mentioned(message, account);
  CREATE TABLE mention_reads(
    message INTEGER NOT NULL, account INTEGER NOT NULL, PRIMARY KEY(message, account)) WITHOUT ROWID;
)sql",
                                   kCloudFileStep, kContactStep};

void Prepare(sqlite::Database& database) {
  // What is taken back leaves no copy in a page that is free.
  database.Execute("PRAGMA secure_delete=ON");
  sqlite::Migrate(database, kSchema);
  FileTable(database).NameFiles();
}

}  // namespace

ServerStore::ServerStore(const sqlite::StorePlace& place)
    : opened_(sqlite::OpenStore(place, {sqlite::Locking::kExclusive, Prepare})),
      database_(*opened_.database),
      generation_(sqlite::GenerationOf(database_)),
      last_time_(std::max(mail_.NewestTime(), accounts_.NewestOpenTime())) {
  if (loss() && loss()->kind == sqlite::Loss::Kind::kDamaged && !loss()->complete) KeepNumbers();
}

void ServerStore::KeepNumbers() {
  // Nobody new gets the number of an account or a conversation that could not be read, and with it
  // what others wrote. Nobody can log in to these.
  sqlite::Transaction transaction(database_);
  database_.Execute(R"sql(
    INSERT OR IGNORE INTO accounts(id, appkey, nick, kind, password_hash)
      SELECT id, '', 'lost ' || id, 0, '' FROM (
        SELECT sender AS id FROM messages UNION SELECT first FROM conversations
        UNION SELECT second FROM conversations UNION SELECT account FROM stays
        UNION SELECT owner FROM tribes UNION SELECT account FROM devices
        UNION SELECT account FROM members UNION SELECT owner FROM contacts
        UNION SELECT contact FROM contacts UNION SELECT account FROM black_users)
      WHERE id>0;
    INSERT OR IGNORE INTO conversations(id, first, second, tribe)
      SELECT id, -id, -id, 0 FROM (
        SELECT conversation AS id FROM messages UNION SELECT conversation FROM tribes
        UNION SELECT conversation FROM stays)
      WHERE id>0;
  )sql");
  transaction.Commit();
}

std::string ServerStore::PositionText(Position position) const {
  const std::string text = std::to_string(position);
  return generation_.empty() ? text : text + '.' + generation_;
}

std::optional<Position> ServerStore::KnownPosition(const std::string& text) const {
  const std::size_t dot = text.find('.');
  const std::string life = dot == std::string::npos ? std::string() : text.substr(dot + 1);
  return life == generation_ ? ParsePosition(text.substr(0, dot)) : std::nullopt;
}

std::int64_t ServerStore::Now() {
  return last_time_ = std::max(last_time_, base::Time::Now().ToMilliseconds());
}

}  // namespace imsdk::embedded
