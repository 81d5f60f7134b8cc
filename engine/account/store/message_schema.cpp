#include "account/store/message_schema.h"

#include "account/store/search_words.h"
#include "sqlite/tokenizer.h"

namespace imsdk::account {

namespace {

// What the full-text index has of a message beside its words, so that a search by conversation,
// kind of message or kind of conversation, and one for pictures, needs no other table.
#define FACETS(row)                                          \
  "'c' || " row ".conversation || ' t' || printf('%x', " row \
  ".msgtype) || ' k' || "                                    \
  "(SELECT kind FROM conversations WHERE id=" row            \
  ".conversation) || "                                       \
  "iif(instr(" row ".body, 'pic:impicture|'), ' p', '')"
#define ADD_TO_INDEX \
  "INSERT INTO search(rowid, facets, body) VALUES(new.place, " FACETS("new") ", new.body);"
#define TAKE_FROM_INDEX                              \
  "INSERT INTO search(search, rowid, facets, body) " \
  "VALUES('delete', old.place, " FACETS("old") ", old.body);"

// One message a commit is the rule: with the usual 4, merging segments would take most of its time.
// Beginnings of one or two letters fit so many words that they have an index of their own.
//
// Status numbers in the conditions are `IMMsgStatus`: 0 sending, 2 failed, 3 received. A query that
// is to use a partial index repeats the condition of the index word by word. Kinds are `ChatKind`;
// places are those of `MessagePlaces`.
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
)sql",
                                   R"sql(
  ALTER TABLE conversations RENAME TO old_conversations;
  CREATE TABLE conversations(
    id INTEGER PRIMARY KEY, appkey TEXT NOT NULL, nick TEXT NOT NULL, kind INTEGER NOT NULL,
    complete_time INTEGER NOT NULL DEFAULT 0, complete_id INTEGER NOT NULL DEFAULT 0,
    whole INTEGER NOT NULL,
    read_time INTEGER NOT NULL DEFAULT 0, read_id INTEGER NOT NULL DEFAULT 0,
    deleted_time INTEGER NOT NULL DEFAULT 0, deleted_id INTEGER NOT NULL DEFAULT 0,
    shield INTEGER NOT NULL DEFAULT 0, UNIQUE(appkey, nick, kind));
  INSERT INTO conversations(id, appkey, nick, kind, whole)
    SELECT id, appkey, nick, 0, 1 FROM old_conversations;
  DROP TABLE old_conversations;
  CREATE TABLE deleted(msgid INTEGER, conversation INTEGER, PRIMARY KEY(msgid, conversation))
    WITHOUT ROWID;

  DROP INDEX messages_by_time;
  DROP INDEX messages_by_id;
  DROP INDEX messages_unread;
  DROP INDEX messages_unsent;
  ALTER TABLE messages RENAME TO old_messages;
  CREATE TABLE messages(
    place INTEGER PRIMARY KEY,
    arrival INTEGER NOT NULL,
    conversation INTEGER NOT NULL, msgid INTEGER NOT NULL, msgtime INTEGER NOT NULL,
    outgoing INTEGER NOT NULL, msgtype INTEGER NOT NULL, msgstatus INTEGER NOT NULL,
    svrtime INTEGER NOT NULL, readflag INTEGER NOT NULL, complete INTEGER NOT NULL,
    others TEXT NOT NULL, fixmsgread INTEGER NOT NULL, autochatmsg INTEGER NOT NULL,
    syschatmsg INTEGER NOT NULL, body TEXT NOT NULL);
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

  CREATE TEMP TABLE places(place INTEGER PRIMARY KEY, arrival INTEGER);
  INSERT INTO places SELECT
      (time << 21) + (1 << 19) + row_number() OVER same * max(1, (1 << 20) / (count(*) OVER (
        PARTITION BY time) + 1)), arrival
    FROM (SELECT arrival, msgtime, msgid, max(0, min(msgtime, (1 << 42) - 1)) AS time
          FROM old_messages)
    WINDOW same AS (PARTITION BY time ORDER BY msgtime, msgid, arrival);
  INSERT INTO messages SELECT p.place, m.arrival, conversation, msgid, msgtime, outgoing, msgtype,
      msgstatus, svrtime, readflag, complete, others, fixmsgread, autochatmsg, syschatmsg, body
    FROM places p JOIN old_messages m ON m.arrival=p.arrival ORDER BY p.place;
  DROP TABLE places;
  DROP TABLE old_messages;

  CREATE INDEX messages_by_place ON messages(conversation);
  CREATE UNIQUE INDEX messages_by_id ON messages(msgid, conversation);
  CREATE INDEX messages_unread ON messages(conversation, arrival)
    WHERE readflag=0 AND msgstatus=3;
  CREATE INDEX messages_unsent ON messages(msgstatus, msgid) WHERE msgstatus IN (0, 2);
  CREATE INDEX messages_own ON messages(conversation) WHERE outgoing=1;
  CREATE INDEX messages_unreported ON messages(conversation)
    WHERE msgstatus=3 AND readflag=1 AND fixmsgread=0 AND syschatmsg=0;
  UPDATE conversations SET (read_time, read_id) = (read.msgtime, read.msgid)
    FROM (SELECT m.conversation, m.msgtime, m.msgid, max(m.place) FROM messages m
          LEFT JOIN (SELECT conversation, min(place) AS first FROM messages
                     WHERE readflag=0 AND msgstatus=3 GROUP BY conversation) AS unread
            ON unread.conversation=m.conversation
          WHERE m.msgstatus=3 AND m.readflag=1 AND (first IS NULL OR m.place < first)
          GROUP BY m.conversation) AS read
    WHERE read.conversation=conversations.id;
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

biz::IMMessage ReadMessage(const sqlite::Statement& row, const biz::IMUserID& self) {
  biz::IMMessage message;
  message.msgid = row.Int64(0);
  message.msgtime = row.Int64(1);
  message.cid = {row.Wide(2), row.Wide(3)};
  const bool outgoing = row.Bool(4);
  message.fromid = outgoing ? self : message.cid;
  message.toid = outgoing ? message.cid : self;
  message.msgtype = row.Int32(5);
  message.msgstatus = row.Int32(6);
  message.svrtime = row.Int64(7);
  message.readflag = row.Int32(8);
  message.extinfo = {row.Wide(9), row.Int32(10), row.Int32(11), row.Int32(12)};
  message.msgbody = row.Wide(13);
  return message;
}

}  // namespace imsdk::account
