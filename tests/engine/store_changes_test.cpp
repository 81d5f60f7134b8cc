// Messages that are withdrawn, deleted, read and reported; stores of an earlier version.
#include <random>

#include "store_fixture.h"

namespace imsdk::test {
namespace {

using account::Position;
using account::Synced;
using Found = std::vector<std::int64_t>;

class ChangesTest : public StoreTest {
 protected:
  Found All(const account::ChatKey& key = kPeer) { return Ids(store_.Page(key, {}).msgs); }
};

TEST_F(ChangesTest, AWithdrawnMessageLeavesAnEmptyPlace) {
  store_.AddIncoming(Received(kPeer, 100, 1, L"first"));
  auto secret = Received(kPeer, 200, 2, L"secret");
  secret.extinfo.others = L"more";
  const auto arrival = store_.AddIncoming(secret);
  store_.AddOutgoing(Sent(kPeer, 300, 3), true);
  const auto withdrawn = store_.Withdraw(kPeer, kPeer, 2);
  ASSERT_TRUE(withdrawn);
  EXPECT_EQ(withdrawn->message.msgbody, L"secret");
  EXPECT_EQ(withdrawn->arrival, arrival);
  ASSERT_EQ(withdrawn->unread.size(), 1U);
  const auto left = store_.Find(kPeer, 2);
  EXPECT_EQ(left->msgstatus, biz::kMsgWithdrawn);
  EXPECT_EQ(left->readflag, biz::kMsgRead);
  EXPECT_EQ(left->msgbody + left->extinfo.others, L"");
  EXPECT_EQ(All(), (Found{1, 2, 3}));
  EXPECT_EQ(Find({L"secret"}), Found{});
  EXPECT_FALSE(store_.Withdraw(kPeer, kPeer, 2)) << "twice";
  EXPECT_FALSE(store_.Withdraw(kPeer, kPeer, 9)) << "unknown";

  EXPECT_FALSE(store_.Withdraw(kPeer, kPeer, 3)) << "not the peer's";
  EXPECT_TRUE(store_.Withdraw(kPeer, kSelf, 3)->unread.empty()) << "the account's own";
  store_.SetStatus(kPeer, 3, biz::kMsgSent, 310);
  EXPECT_EQ(store_.Find(kPeer, 3)->msgstatus, biz::kMsgWithdrawn) << "a late answer";
}

TEST_F(ChangesTest, DeletedMessagesStayAway) {
  for (std::int64_t id = 1; id <= 6; ++id) store_.AddIncoming(Received(kPeer, 100 * id, id));
  auto sending = Sent(kPeer, 700, 7);
  sending.msgstatus = biz::kMsgSending;
  store_.AddOutgoing(sending, true);
  store_.MarkRead(kPeer, 2);

  auto removed = store_.Delete(kPeer, {2, 5, 7, 99});
  EXPECT_EQ(removed.count, 2);
  ASSERT_EQ(removed.unread.size(), 1U) << "2 was read";
  EXPECT_EQ(removed.unread[0].position, (Position{500, 5}));
  EXPECT_EQ(removed.newest, (Position{700, 7}));
  EXPECT_EQ(All(), (Found{1, 3, 4, 6, 7}));
  EXPECT_EQ(Find({L"text"}), (Found{1, 3, 4, 6, 7}));
  EXPECT_FALSE(store_.AddIncoming(Received(kPeer, 500, 5)));
  EXPECT_FALSE(store_.AddSynced(Received(kPeer, 200, 2), Synced::kRoamed));
  EXPECT_TRUE(store_.AddIncoming(Received(User(L"other"), 500, 5))) << "another conversation's";

  const Position upto = store_.BeginDeleteAll(kPeer);
  removed = store_.DeleteNext(kPeer, upto);
  EXPECT_EQ(removed.count, 4);
  EXPECT_EQ(removed.oldest, (Position{100, 1}));
  EXPECT_EQ(removed.unread.size(), 3U);
  EXPECT_EQ(All(), Found{7}) << "still being sent";
  EXPECT_EQ(Find({L"text"}), Found{7});
  EXPECT_TRUE(store_.conversations().Complete(kPeer).whole) << "nothing is missing";
  EXPECT_FALSE(store_.AddSynced(Received(kPeer, 50, 98), Synced::kRoamed)) << "older";
  EXPECT_FALSE(store_.AddIncoming(Received(kPeer, 600, 6))) << "sent again";
  EXPECT_TRUE(store_.AddIncoming(Received(kPeer, 650, 8))) << "new, by a clock that is behind";
  EXPECT_TRUE(store_.AddSynced(Sent(kPeer, 640, 9), Synced::kLive));
  EXPECT_TRUE(store_.AddSynced(Received(kPeer, 800, 10), Synced::kRoamed));
  EXPECT_EQ(store_.DeleteNext(kPeer, removed.oldest).count, 0) << "came meanwhile";
  EXPECT_EQ(All(), (Found{9, 8, 7, 10}));
}

TEST_F(ChangesTest, TheReadBoundary) {
  const auto boundary = [&] { return store_.conversations().ReadBoundary(kPeer); };
  const auto unread = [&] { return store_.Conversations().at(0).unread; };
  for (const std::int64_t id : {1, 2, 4, 3, 6}) store_.AddIncoming(Received(kPeer, 100 * id, id));
  EXPECT_TRUE(boundary().is_end());
  store_.MarkRead(kPeer, 3);  // 1, 2 and 4; 3 arrived later
  EXPECT_EQ(boundary(), (Position{200, 2}));
  store_.MarkRead(kPeer, 4);
  EXPECT_EQ(boundary(), (Position{300, 3})) << "the newest that this read";
  store_.AddIncoming(Received(kPeer, 600, 5));
  const auto read = store_.MarkReadUpTo(kPeer, {600, 5});
  ASSERT_EQ(read.size(), 1U);
  EXPECT_EQ(read[0].position, (Position{600, 5}));
  EXPECT_EQ(unread(), 1) << "6 has the same time and stands behind";
  store_.MarkReadUpTo(kPeer, {100, 1});
  EXPECT_EQ(boundary(), (Position{600, 5})) << "never back";
}

// The number of what was unread at login is not given again to what comes when all that is read.
TEST_F(ChangesTest, ArrivalsGrowOverALogin) {
  for (std::int64_t id = 1; id <= 3; ++id) store_.AddIncoming(Received(kPeer, 100, id));
  store_.Close();
  account::MessageStore again(folder_.path() / "messages.db", kSelf,
                              std::make_shared<account::OpenStores>());
  const std::int64_t last = again.Conversations().at(0).last_arrival;
  again.MarkRead(kPeer, last);
  EXPECT_GT(again.AddIncoming(Received(kPeer, 100, 4)), last);
}

TEST_F(ChangesTest, FlagsInBothDirections) {
  for (std::int64_t id = 1; id <= 3; ++id) store_.AddOutgoing(Sent(kPeer, 100, id), true);
  for (std::int64_t id = 11; id <= 14; ++id) store_.AddIncoming(Received(kPeer, 100, id));
  auto note = Received(kPeer, 100, 15);
  note.readflag = biz::kMsgRead;
  note.extinfo.syschatmsg = 1;
  store_.AddIncoming(note);
  const auto changed = store_.SetPeerRead(kPeer, {2, 3, 11, 99});
  EXPECT_EQ(changed.size(), 2U);
  EXPECT_TRUE(store_.SetPeerRead(kPeer, {2, 3}).empty()) << "only what changed";
  const auto flags = [&](const Found& ids) {
    Found read;
    for (const auto& flag : store_.PeerReadFlags(kPeer, ids)) {
      read.push_back(flag.readflag == biz::kMsgRead ? flag.msgid : -flag.msgid);
    }
    return read;
  };
  EXPECT_EQ(flags({}), (Found{-1, 2, 3}));
  EXPECT_EQ(flags({3, 1, 12, 99}), (Found{3, -1}));

  store_.MarkReadUpTo(kPeer, {100, 13});
  EXPECT_EQ(store_.Reportable(kPeer, {}), (Found{11, 12, 13}));
  EXPECT_EQ(store_.Reportable(kPeer, {1, 12, 14, 15, 99}), (Found{12, 14}));
  store_.SetReported(kPeer, {12, 13});
  EXPECT_EQ(store_.Reportable(kPeer, {}), Found{11});
}

// Whatever the order in which they come, messages of one millisecond are read in theirs.
TEST_F(ChangesTest, MessagesOfOneMillisecond) {
  std::vector<std::int64_t> ids;
  for (std::int64_t id = 1; id <= 400; ++id) ids.push_back(id);
  const Found sorted = ids;
  std::shuffle(ids.begin(), ids.end(), std::mt19937(7));
  sqlite::Transaction transaction(store_.database());
  for (const std::int64_t id : ids) {
    store_.AddIncoming(Received(kPeer, 1000, id));
    store_.AddIncoming(Received(User(L"other"), 1000, id));
  }
  transaction.Commit();
  for (const account::ChatKey& key : {account::ChatKey(kPeer), account::ChatKey(User(L"other"))}) {
    EXPECT_EQ(Ids(store_.Page(key, {.count = 1000}).msgs), sorted);
    EXPECT_EQ(Find({L"text"}, key), sorted);
  }
  // As do times that no clock shows.
  const std::int64_t last = std::numeric_limits<std::int64_t>::max();
  const auto odd = User(L"odd");
  std::int64_t id = 0;
  for (const std::int64_t time : {last, std::int64_t{-5}, last - 1, std::int64_t{0}, -last}) {
    store_.AddIncoming(Received(odd, time, ++id));
  }
  EXPECT_EQ(Ids(store_.Page(odd, {.ignoreboundary = true}).msgs), (Found{5, 2, 4, 3, 1}));
}

TEST_F(ChangesTest, AStoreOfVersionOne) {
  {
    sqlite::Database old(folder_.path() / "messages.db");
    old.Execute(R"sql(
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
      INSERT INTO conversations VALUES(1, 'cnbazaro', 'mariner'), (7, 'cnbazaro', 'other');
      INSERT INTO messages VALUES
        (1, 1, 13, 200, 0, 0, 3, 240, 1, 1, '', 0, 0, 0, 'third light'),
        (2, 1, 11, 100, 1, 0, 1, 140, 0, 1, 'x', 0, 1, 0, 'first'),
        (3, 1, 12, 200, 0, 1, 3, 240, 1, 1, '', 0, 0, 0, 'pic:impicture|m?filepath=a.png'),
        (4, 1, 14, 300, 0, 0, 3, 340, 0, 1, '', 0, 0, 0, '灯塔 light'),
        (9, 7, 13, 200, 1, 3, 2, 0, 0, 0, '', 0, 0, 0, 'failed light');
      PRAGMA user_version=1)sql");
  }
  EXPECT_EQ(Ids(store_.Page(kPeer, {}).msgs), (Found{11, 12, 13, 14}));
  EXPECT_EQ(Find({L"light"}), (Found{13, 14}));
  EXPECT_EQ(Find({L"\u5854"}), Found{14});
  EXPECT_EQ(Find({L"light"}, User(L"other")), Found{13});
  EXPECT_EQ(store_.search().Pictures(kPeer, {}).size(), 1U);
  const auto first = *store_.Find(kPeer, 11);
  EXPECT_EQ(first.fromid, kSelf);
  EXPECT_EQ(first.svrtime, 140);
  EXPECT_EQ(first.extinfo.others, L"x");
  EXPECT_EQ(first.extinfo.autochatmsg, 1);
  EXPECT_TRUE(store_.conversations().Complete(kPeer).whole);
  EXPECT_EQ(store_.conversations().ReadBoundary(kPeer), (Position{200, 13}));
  EXPECT_FALSE(store_.FindUnsent(User(L"other"), 13)->complete);
  EXPECT_EQ(store_.NewestUnread(9).at(0).arrival, 4);
  EXPECT_EQ(store_.AddIncoming(Received(kPeer, 400, 15)), 5);
  EXPECT_FALSE(store_.AddIncoming(Received(kPeer, 300, 14)));
}

TEST(ChatState, BoundOfflineAndKinds) {
  account::ChatState chat;
  const account::ChatKey system(kPeer, account::kSystemChat);
  std::vector<account::Arrived> arrived;
  for (std::int64_t id = 1; id <= 6; ++id) {
    arrived.push_back({Received(kPeer, 100, id), id, account::kSingleChat, id % 2 == 0});
  }
  arrived.push_back({Received(kPeer, 100, 7), 7, account::kSystemChat});
  chat.AddIncoming(arrived);
  EXPECT_EQ(Ids(chat.OfflineMessages(kPeer).msgs), (Found{2, 4, 6}));
  chat.SetMaxCache(4);
  auto page = chat.NewMessages(kPeer, {.count = 2});
  EXPECT_TRUE(page.outofcache);
  EXPECT_EQ(Ids(chat.NewMessages(kPeer, {}).msgs), (Found{4, 5, 6}));
  EXPECT_EQ(chat.Unread(kPeer), 6);
  EXPECT_EQ(chat.Unread(system), 1);
  EXPECT_EQ(chat.Conversations().size(), 1U);
  EXPECT_EQ(chat.Conversations(true).size(), 1U);
  EXPECT_EQ(chat.FindVirtual(kPeer), system);
  EXPECT_FALSE(chat.FindVirtual(User(L"other")));

  chat.Forget(kPeer, {{{100, 1}, 1}, {{100, 5}, 5}});  // 1 is out of the cache already
  EXPECT_EQ(chat.Unread(kPeer), 4);
  EXPECT_EQ(Ids(chat.NewMessages(kPeer, {}).msgs), (Found{4, 6}));
  EXPECT_EQ(chat.MarkRead(kPeer), 6);
  chat.Forget(kPeer, {{{100, 6}, 6}});
  EXPECT_EQ(chat.Unread(kPeer), 0) << "counted once";
  chat.SetMaxCache(0);
  chat.Remove(kPeer, {}, {});
  EXPECT_TRUE(chat.Conversations().empty()) << "no message is left";
}

}  // namespace
}  // namespace imsdk::test
