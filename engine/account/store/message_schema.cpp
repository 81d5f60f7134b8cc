#include "account/store/message_schema.h"

#include "account/store/mention_table.h"
#include "account/store/search_words.h"
#include "sqlite/tokenizer.h"

namespace imsdk::account {

namespace {

// What the full-text index has of a message beside its words, so that a search by conversation,
// kind of message or kind of conversation, and one for pictures, needs no other table.
#define FACETS(row)                                          \
  "'c' || " row ".conversation || ' t' || printf('%x', " row \
  ".msgtype) || ' k' || "                                    \
  "(SELECT type FROM conversations WHERE id=" row            \
  ".conversation) || "                                       \
  "iif(instr(" row ".body, 'pic:impicture|'), ' p', '')"
#define ADD_TO_INDEX \
  "INSERT INTO search(rowid, facets, body) VALUES(new.place, " FACETS("new") ", new.body);"
#define ADD_MESSAGES_TO_INDEX                \
  "INSERT INTO search(rowid, facets, body) " \
  "SELECT place, " FACETS("messages") ", body FROM messages"
#define TAKE_FROM_INDEX                              \
  "INSERT INTO search(search, rowid, facets, body) " \
  "VALUES('delete', old.place, " FACETS("old") ", old.body);"
#define TAKE_IF_INDEXED \
  "INSERT INTO search(search, rowid, facets, body) "                                       \
  "SELECT 'delete', old.place, " FACETS("old") ", old.body "                               \
  "WHERE NOT EXISTS(SELECT 1 FROM unindexed WHERE place=old.place);"                       \
  "DELETE FROM unindexed WHERE place=old.place;"

// One message a commit is the rule: with the usual 4, merging segments would take most of its time.
// Beginnings of one or two letters fit so many words that they have an index of their own.
//
// Status numbers in the conditions are `IMMsgStatus`: 0 sending, 2 failed, 3 received. A query that
// is to use a partial index repeats the condition of the index word by word. Types of conversations
// are `IMCIDType`; places are those of `MessagePlaces`, a server's place is its own text. An
// arrival of 0 is that of a message which nobody was told of: it came from the server's history
// alone.
constexpr const char* kSchema[] = {R"sql(
  CREATE TABLE session(position TEXT NOT NULL);
  INSERT INTO session VALUES('');
  CREATE TABLE users(id INTEGER PRIMARY KEY, appkey TEXT NOT NULL, nick TEXT NOT NULL,
    UNIQUE(appkey, nick));
  CREATE TABLE conversations(
    id INTEGER PRIMARY KEY, type INTEGER NOT NULL, appkey TEXT NOT NULL, nick TEXT NOT NULL,
    tribe INTEGER NOT NULL,
    part INTEGER NOT NULL DEFAULT 1, last_part INTEGER NOT NULL DEFAULT 1,
    floor_time INTEGER NOT NULL DEFAULT 0, floor_id INTEGER NOT NULL DEFAULT 0,
    reach_time INTEGER NOT NULL DEFAULT 0, reach_id INTEGER NOT NULL DEFAULT 0,
    edge TEXT NOT NULL DEFAULT '', whole INTEGER NOT NULL,
    read_time INTEGER NOT NULL DEFAULT 0, read_id INTEGER NOT NULL DEFAULT 0,
    deleted_time INTEGER NOT NULL DEFAULT 0, deleted_id INTEGER NOT NULL DEFAULT 0,
    shield INTEGER NOT NULL DEFAULT 0, member INTEGER NOT NULL DEFAULT 0,
    wanting INTEGER NOT NULL DEFAULT 0, UNIQUE(type, appkey, nick, tribe));
  CREATE TABLE below_holes(
    conversation INTEGER PRIMARY KEY, part INTEGER NOT NULL,
    floor_time INTEGER NOT NULL, floor_id INTEGER NOT NULL,
    reach_time INTEGER NOT NULL, reach_id INTEGER NOT NULL,
    edge TEXT NOT NULL, whole INTEGER NOT NULL,
    between_time INTEGER NOT NULL DEFAULT 9223372036854775807);
  CREATE TABLE holes(
    conversation INTEGER, sender INTEGER, msgid INTEGER, likely INTEGER NOT NULL,
    fetches INTEGER NOT NULL, PRIMARY KEY(conversation, sender, msgid)) WITHOUT ROWID;
  CREATE TABLE deleted(msgid INTEGER, conversation INTEGER, sender INTEGER,
    PRIMARY KEY(msgid, conversation, sender)) WITHOUT ROWID;
  CREATE TABLE files(name TEXT PRIMARY KEY, address TEXT NOT NULL, size INTEGER NOT NULL,
    own INTEGER NOT NULL) WITHOUT ROWID;

  CREATE TABLE messages(
    place INTEGER PRIMARY KEY,
    arrival INTEGER NOT NULL, part INTEGER NOT NULL,
    conversation INTEGER NOT NULL, sender INTEGER NOT NULL, msgid INTEGER NOT NULL,
    msgtime INTEGER NOT NULL, msgtype INTEGER NOT NULL,
    msgstatus INTEGER NOT NULL, svrtime INTEGER NOT NULL, server_place TEXT NOT NULL,
    readflag INTEGER NOT NULL, complete INTEGER NOT NULL,
    others TEXT NOT NULL, fixmsgread INTEGER NOT NULL, autochatmsg INTEGER NOT NULL,
    syschatmsg INTEGER NOT NULL, body TEXT NOT NULL);
  CREATE INDEX messages_by_place ON messages(conversation);
  CREATE UNIQUE INDEX messages_by_id ON messages(msgid, conversation, sender);
  CREATE INDEX messages_unread ON messages(conversation, arrival)
    WHERE readflag=0 AND msgstatus=3;
  CREATE INDEX messages_unsent ON messages(msgstatus, msgid) WHERE msgstatus IN (0, 2);
  CREATE INDEX messages_own ON messages(conversation, msgid) WHERE sender=0;
  CREATE INDEX messages_unreported ON messages(conversation)
    WHERE msgstatus=3 AND readflag=1 AND fixmsgread=0 AND syschatmsg=0;

  CREATE VIRTUAL TABLE search USING fts5(
    facets, body, content='', columnsize=0, prefix='1 2', tokenize='imsdk');
  INSERT INTO search(search, rank) VALUES('automerge', 8);
  CREATE TRIGGER search_add AFTER INSERT ON messages BEGIN
    )sql" ADD_TO_INDEX R"sql(
  END;
  CREATE TRIGGER search_remove AFTER DELETE ON messages BEGIN
    )sql" TAKE_FROM_INDEX R"sql(
  END;
  CREATE TRIGGER search_change AFTER UPDATE OF place, msgtype, body ON messages BEGIN
    )sql" TAKE_FROM_INDEX ADD_TO_INDEX R"sql(
  END;
)sql",
                                   // What of a body is words has changed, and an index without
                                   // content forgets only what it is told as it was.
                                   R"sql(
  INSERT INTO search(search) VALUES('delete-all');
  )sql" ADD_MESSAGES_TO_INDEX ";",
                                   // Relations are `TribeAtRelation`, 1 and 2 are mentions of the
                                   // account; `at_read` is a `MentionState`.
                                   R"sql(
  ALTER TABLE messages ADD COLUMN at_type INTEGER NOT NULL DEFAULT 0;
  ALTER TABLE messages ADD COLUMN relation INTEGER NOT NULL DEFAULT 0;
  ALTER TABLE messages ADD COLUMN at_read INTEGER NOT NULL DEFAULT 0;
  ALTER TABLE messages ADD COLUMN at_members TEXT NOT NULL DEFAULT '';
  CREATE INDEX messages_at_unread ON messages(conversation)
    WHERE relation IN (1, 2) AND at_read=0;
  CREATE INDEX messages_at_untold ON messages(conversation)
    WHERE relation IN (1, 2) AND at_read=1;

  ALTER TABLE session ADD COLUMN tribes_known INTEGER NOT NULL DEFAULT 0;
  CREATE TABLE tribes(
    id INTEGER PRIMARY KEY, type INTEGER NOT NULL, name TEXT NOT NULL, appkey TEXT NOT NULL,
    nick TEXT NOT NULL, description TEXT NOT NULL, portrait TEXT NOT NULL, bulletin TEXT NOT NULL,
    ntfimage TEXT NOT NULL, businessimage TEXT NOT NULL, class INTEGER NOT NULL,
    level INTEGER NOT NULL, auth INTEGER NOT NULL, at_all INTEGER NOT NULL,
    open_history INTEGER NOT NULL, visitors INTEGER NOT NULL, enabled INTEGER NOT NULL,
    members INTEGER NOT NULL, my_level INTEGER NOT NULL, nickname TEXT NOT NULL,
    remind INTEGER NOT NULL);
)sql",
                                   // What is not in the index yet. An index without content must
                                   // not be told to forget what it has never been told.
                                   R"sql(
  CREATE TABLE unindexed(place INTEGER PRIMARY KEY);
  DROP TRIGGER search_add;
  DROP TRIGGER search_remove;
  DROP TRIGGER search_change;
  CREATE TRIGGER search_add AFTER INSERT ON messages BEGIN
    INSERT INTO unindexed VALUES(new.place);
  END;
  CREATE TRIGGER search_remove AFTER DELETE ON messages BEGIN
    )sql" TAKE_IF_INDEXED R"sql(
  END;
  CREATE TRIGGER search_change AFTER UPDATE OF place, msgtype, body ON messages BEGIN
    )sql" TAKE_IF_INDEXED R"sql(
    INSERT INTO unindexed VALUES(new.place);
  END;
)sql"};

void Tokenize(std::string_view text, bool query,
              const std::function<void(std::string_view)>& emit) {
  if (query) return SearchUnits(text, emit);
  SearchUnits(SearchableText(text), emit);
}

}  // namespace

void PrepareMessageStore(sqlite::Database& database) {
  sqlite::RegisterTokenizer(database, "imsdk", Tokenize);
  sqlite::Migrate(database, kSchema);
}

void IndexMessages(sqlite::Database& database, std::int64_t upto) {
  database
      .Prepare(ADD_MESSAGES_TO_INDEX " WHERE place IN (SELECT place FROM unindexed WHERE place<=?)",
               upto)
      .Run();
  database.Prepare("DELETE FROM unindexed WHERE place<=?", upto).Run();
}

biz::IMMessage ReadMessage(const sqlite::Statement& row, const biz::IMUserID& self) {
  biz::IMMessage message;
  message.msgid = row.Int64(0);
  message.msgtime = row.Int64(1);
  message.cid = ReadConversation(row, kConversationColumn);
  const bool own = row.Int64(2) == kOwn;
  message.fromid = own ? self : biz::IMUserID{row.Wide(3), row.Wide(4)};
  if (!message.cid.is_tribe()) message.toid = own ? message.cid.user : self;
  message.msgtype = row.Int32(5);
  message.msgstatus = row.Int32(6);
  message.svrtime = row.Int64(7);
  message.readflag = row.Int32(8);
  message.extinfo = {row.Wide(9), row.Int32(10), row.Int32(11), row.Int32(12)};
  message.msgbody = row.Wide(13);
  message.tribeat = {row.Int32(kMentionColumn + 2) == 0 ? biz::kMsgUnread : biz::kMsgRead,
                     row.Int32(kMentionColumn), row.Int32(kMentionColumn + 1),
                     UnpackUsers(row.Wide(kMentionColumn + 3))};
  return message;
}

}  // namespace imsdk::account
