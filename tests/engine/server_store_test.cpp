// The embedded server's store: old files, pages of history, what devices are to hear.
#include "embedded/server_store.h"

#include "embedded/embedded_server.h"
#include "engine_fixture.h"

namespace imsdk::test {
namespace {

using embedded::EntryKind;
using embedded::ServerStore;

// The schema of version 1, with some messages of two accounts.
constexpr const char* kVersion1 = R"sql(
  CREATE TABLE accounts(
    id INTEGER PRIMARY KEY, appkey TEXT NOT NULL, nick TEXT NOT NULL,
    password_hash TEXT NOT NULL, acknowledged INTEGER NOT NULL DEFAULT 0, UNIQUE(appkey, nick));
  CREATE TABLE tokens(
    hash TEXT PRIMARY KEY, account INTEGER NOT NULL, expires INTEGER NOT NULL) WITHOUT ROWID;
  CREATE INDEX tokens_by_end ON tokens(expires);
  CREATE TABLE messages(
    position INTEGER PRIMARY KEY AUTOINCREMENT,
    sender INTEGER NOT NULL, receiver INTEGER NOT NULL, msgid INTEGER NOT NULL,
    msgtime INTEGER NOT NULL, svrtime INTEGER NOT NULL, msgtype INTEGER NOT NULL,
    body TEXT NOT NULL, others TEXT NOT NULL, fixmsgread INTEGER NOT NULL,
    autochatmsg INTEGER NOT NULL, syschatmsg INTEGER NOT NULL, UNIQUE(sender, msgid));
  CREATE INDEX messages_for ON messages(receiver, position);
  INSERT INTO accounts VALUES(1, 'cnbazaro', 'harbor', 'x', 0), (2, 'cnbazaro', 'mariner', 'x', 3);
  INSERT INTO messages VALUES
    (1, 1, 2, 11, 100, 100, 0, 'a', '', 0, 0, 0), (2, 2, 1, 12, 101, 101, 0, 'b', '', 0, 0, 0),
    (3, 1, 2, 13, 102, 102, 0, 'c', '', 0, 0, 0), (5, 1, 2, 14, 103, 103, 0, 'd', '', 0, 0, 0),
    (7, 1, 1, 15, 104, 104, 0, 'note', '', 0, 0, 0), (8, 1, 2, 16, 105, 105, 0, 'e', '', 0, 0, 0);
  PRAGMA user_version=1;
)sql";

std::vector<std::int64_t> Ids(const link::History& history) {
  std::vector<std::int64_t> ids;
  for (const auto& message : history.msgs) ids.push_back(message.msgid);
  return ids;
}

TEST(ServerStore, AFileOfTheFirstVersionGoesOnWorking) {
  TempFolder folder;
  sqlite::Database(folder.path() / "server.db").Execute(kVersion1);
  for (const bool again : {false, true}) {
    SCOPED_TRACE(again);
    ServerStore store(folder.path() / "server.db");
    const auto device = store.Device(2, "new");
    EXPECT_EQ(device.acknowledged, 3) << "where the account stood";
    const auto entries = store.mail().EntriesFor(2, device.id, device.acknowledged, 100, 1 << 20);
    ASSERT_EQ(entries.size(), again ? 3U : 2U);
    EXPECT_EQ(entries[0].position, 5);
    EXPECT_EQ(entries[1].position, 8);
    EXPECT_EQ(std::get<link::Message>(entries[0].entry).body, L"d");
    EXPECT_EQ(std::get<link::Message>(entries[0].entry).from, User(L"harbor"));
    link::HistoryRequest request;
    request.count = 10;
    EXPECT_EQ(Ids(store.mail().History(1, 2, request, 0)),
              (std::vector<std::int64_t>{11, 12, 13, 14, 16}));
    EXPECT_EQ(Ids(store.mail().History(1, 1, request, 0)), std::vector<std::int64_t>{15});
    EXPECT_EQ(store.FindAccount(User(L"harbor"))->roaming.roamstatus, biz::kRoamingOn);
    EXPECT_EQ(store.FindAccount(User(L"harbor"))->roaming.opentime, 0);
    const auto added = store.mail().AddEntry({2, EntryKind::kPeerRead, 0, 1, {11}, 0});
    EXPECT_GT(added, 8) << "after everything that was there";
  }
}

TEST(ServerStore, HistoryPagesAreExactOverEqualTimes) {
  TempFolder folder;
  ServerStore store(folder.path() / "server.db");
  for (const auto* nick : {L"a", L"b", L"c"}) store.AddAccount(User(nick), "");
  constexpr std::int64_t kCount = 60;
  // Stored out of order; six at a time have one msgtime; another conversation lies between.
  for (std::int64_t i = 0; i < kCount; ++i) {
    const std::int64_t id = 1 + (i * 37) % kCount;
    link::Message message;
    message.msgid = id;
    message.msgtime = 1000 + id / 6;
    message.svrtime = 5000 + id;
    store.mail().Add(1 + id % 2, 2 - id % 2, message);
    store.mail().Add(3, 1, message);
  }
  for (const bool older : {true, false}) {
    for (const std::int32_t count : {1, 5, 6, 7, 59, 60, 61}) {
      SCOPED_TRACE(std::to_string(count) + (older ? " back" : " on"));
      std::vector<std::int64_t> all;
      link::HistoryRequest request;
      request.count = count;
      request.older = older;
      if (!older) request.position = {1, 0};
      for (bool more = true; more;) {
        const auto page = store.mail().History(2, 1, request, 0);
        const auto ids = Ids(page);
        ASSERT_FALSE(ids.empty());
        all.insert(older ? all.begin() : all.end(), ids.begin(), ids.end());
        const auto& edge = older ? page.msgs.front() : page.msgs.back();
        request.position = {edge.msgtime, edge.msgid};
        more = page.more;
      }
      ASSERT_EQ(all.size(), std::size_t{kCount});
      for (std::int64_t i = 0; i < kCount; ++i) EXPECT_EQ(all[static_cast<std::size_t>(i)], i + 1);
    }
  }
  const struct {
    std::int64_t btime, etime, opentime;
    std::vector<std::int64_t> ids;
  } ranges[] = {
      {1009, 0, 0, {54, 55, 56, 57, 58, 59, 60}},
      {0, 1000, 0, {1, 2, 3, 4, 5}},
      {1009, 1009, 0, {54, 55, 56, 57, 58, 59}},
      {0, 0, 5059, {59, 60}},
  };
  for (const auto& range : ranges) {
    const link::HistoryRequest request{{}, {}, true, range.btime, range.etime, 100};
    EXPECT_EQ(Ids(store.mail().History(1, 2, request, range.opentime)), range.ids);
  }
  // No page walks the conversation.
  auto plan = store.database().Prepare(
      "EXPLAIN QUERY PLAN SELECT m.body FROM messages m WHERE min(m.sender, m.receiver)=1 AND "
      "max(m.sender, m.receiver)=2 AND (m.msgtime, m.msgid)<(5, 5) AND m.msgtime>=0 AND "
      "m.msgtime<=9 AND m.svrtime>=0 ORDER BY m.msgtime DESC, m.msgid DESC");
  while (plan.Step()) EXPECT_NE(plan.Text(3).find("messages_between"), std::string::npos);
}

TEST(ServerStore, AReadPlaceReplacesTheOlderOne) {
  TempFolder folder;
  ServerStore store(folder.path() / "server.db");
  for (const auto* nick : {L"a", L"b"}) store.AddAccount(User(nick), "");
  const std::int64_t phone = store.Device(1, "phone").id;
  const std::int64_t desk = store.Device(1, "desk").id;
  EXPECT_TRUE(store.mail().AdvanceRead(1, 2, {10, 1}, phone));
  EXPECT_TRUE(store.mail().AdvanceRead(1, 2, {10, 2}, phone));
  EXPECT_TRUE(store.mail().AdvanceRead(1, 2, {10, 2}, phone)) << "of what came since";
  EXPECT_FALSE(store.mail().AdvanceRead(1, 2, {9, 7}, desk));
  const auto entries = store.mail().EntriesFor(1, desk, 0, 10, 1 << 20);
  ASSERT_EQ(entries.size(), 1U);
  EXPECT_EQ(std::get<link::ReadElsewhere>(entries[0].entry).upto.msgid, 2);
  EXPECT_TRUE(store.mail().EntriesFor(1, phone, 0, 10, 1 << 20).empty());
}

}  // namespace
}  // namespace imsdk::test
