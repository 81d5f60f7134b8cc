// Messages that are withdrawn, deleted, read and reported.
#include <random>

#include "account/conversations/chat_state.h"
#include "store_fixture.h"

namespace imsdk::test {
namespace {

using account::Position;
using Found = std::vector<std::int64_t>;

class ChangesTest : public StoreTest {
 protected:
  Found All(const biz::IMConversationID& cid = kChat) { return Ids(store_.Page(cid, {}).msgs); }
};

TEST_F(ChangesTest, AWithdrawnMessageLeavesAnEmptyPlace) {
  store_.AddIncoming(Received(kPeer, 100, 1, L"first"));
  auto secret = Received(kPeer, 200, 2, L"secret");
  secret.extinfo.others = L"more";
  const auto arrival = store_.AddIncoming(secret);
  store_.AddOutgoing(Sent(kPeer, 300, 3), true);
  const auto withdrawn = store_.Withdraw(kChat, kPeer, 2);
  ASSERT_TRUE(withdrawn);
  EXPECT_EQ(withdrawn->message.msgbody, L"secret");
  EXPECT_EQ(withdrawn->arrival, arrival);
  ASSERT_EQ(withdrawn->unread.size(), 1U);
  const auto left = store_.Find(kChat, 2);
  EXPECT_EQ(left->msgstatus, biz::kMsgWithdrawn);
  EXPECT_EQ(left->readflag, biz::kMsgRead);
  EXPECT_EQ(left->msgbody + left->extinfo.others, L"");
  EXPECT_EQ(All(), (Found{1, 2, 3}));
  EXPECT_EQ(Find({L"secret"}), Found{});
  EXPECT_FALSE(store_.Withdraw(kChat, kPeer, 2)) << "twice";
  EXPECT_FALSE(store_.Withdraw(kChat, kPeer, 9)) << "unknown";

  EXPECT_FALSE(store_.Withdraw(kChat, kPeer, 3)) << "not the peer's";
  EXPECT_TRUE(store_.Withdraw(kChat, kSelf, 3)->unread.empty()) << "the account's own";
  store_.SetStatus(kChat, 3, biz::kMsgSent, 310);
  EXPECT_EQ(store_.Find(kChat, 3)->msgstatus, biz::kMsgWithdrawn) << "a late answer";
}

TEST_F(ChangesTest, DeletedMessagesStayAway) {
  for (std::int64_t id = 1; id <= 6; ++id) store_.AddIncoming(Received(kPeer, 100 * id, id));
  auto sending = Sent(kPeer, 700, 7);
  sending.msgstatus = biz::kMsgSending;
  store_.AddOutgoing(sending, true);
  store_.MarkRead(kChat, 2);

  auto removed = store_.Delete(kChat, {2, 5, 7, 99});
  EXPECT_EQ(removed.count, 2);
  ASSERT_EQ(removed.unread.size(), 1U) << "2 was read";
  EXPECT_EQ(removed.unread[0].position, (Position{500, 5}));
  EXPECT_EQ(removed.newest, (Position{700, 7}));
  EXPECT_EQ(All(), (Found{1, 3, 4, 6, 7}));
  EXPECT_EQ(Find({L"text"}), (Found{1, 3, 4, 6, 7}));
  EXPECT_FALSE(store_.AddIncoming(Received(kPeer, 500, 5)));
  EXPECT_FALSE(Fetched({Received(kPeer, 200, 2)}, "x").fresh);
  EXPECT_TRUE(store_.AddIncoming(Received(User(L"other"), 500, 5))) << "another conversation's";

  const Position upto = store_.BeginDeleteAll(kChat);
  removed = store_.DeleteNext(kChat, upto);
  EXPECT_EQ(removed.count, 4);
  EXPECT_EQ(removed.oldest, (Position{100, 1}));
  EXPECT_EQ(removed.unread.size(), 3U);
  EXPECT_EQ(All(), Found{7}) << "still being sent";
  EXPECT_EQ(Find({L"text"}), Found{7});
  EXPECT_TRUE(store_.parts().Current(store_.conversations().Find(kChat)).whole)
      << "nothing is missing";
  EXPECT_FALSE(Fetched({Received(kPeer, 50, 98)}, "x").fresh) << "older";
  EXPECT_FALSE(store_.AddIncoming(Received(kPeer, 600, 6))) << "sent again";
  EXPECT_TRUE(store_.AddIncoming(Received(kPeer, 650, 8))) << "new, by a clock that is behind";
  EXPECT_TRUE(store_.AddLive({Sent(kPeer, 640, 9)}));
  EXPECT_EQ(Fetched({Received(kPeer, 800, 10)}, "x").fresh, 1);
  EXPECT_EQ(store_.DeleteNext(kChat, removed.oldest).count, 0) << "came meanwhile";
  EXPECT_EQ(All(), (Found{9, 8, 7, 10}));
}

TEST_F(ChangesTest, TheReadBoundary) {
  const auto boundary = [&] {
    return store_.conversations().ReadBoundary(store_.conversations().Find(kChat));
  };
  const auto unread = [&] { return store_.Conversations().at(0).unread; };
  for (const std::int64_t id : {1, 2, 4, 3, 6}) store_.AddIncoming(Received(kPeer, 100 * id, id));
  EXPECT_TRUE(boundary().is_end());
  store_.MarkRead(kChat, 3);  // 1, 2 and 4; 3 arrived later
  EXPECT_EQ(boundary(), (Position{200, 2}));
  store_.MarkRead(kChat, 4);
  EXPECT_EQ(boundary(), (Position{300, 3})) << "the newest that this read";
  store_.AddIncoming(Received(kPeer, 600, 5));
  const auto read = store_.MarkReadUpTo(kChat, {600, 5});
  ASSERT_EQ(read.size(), 1U);
  EXPECT_EQ(read[0].position, (Position{600, 5}));
  EXPECT_EQ(unread(), 1) << "6 has the same time and stands behind";
  store_.MarkReadUpTo(kChat, {100, 1});
  EXPECT_EQ(boundary(), (Position{600, 5})) << "never back";
}

// The number of what was unread at login is not given again to what comes when all that is read.
TEST_F(ChangesTest, ArrivalsGrowOverALogin) {
  for (std::int64_t id = 1; id <= 3; ++id) store_.AddIncoming(Received(kPeer, 100, id));
  store_.Close();
  account::MessageStore again(folder_.path() / "messages.db", kSelf,
                              std::make_shared<account::OpenStores>());
  const std::int64_t last = again.Conversations().at(0).last_arrival;
  again.MarkRead(kChat, last);
  EXPECT_GT(again.AddIncoming(Received(kPeer, 100, 4)), last);
}

TEST_F(ChangesTest, FlagsInBothDirections) {
  for (std::int64_t id = 1; id <= 3; ++id) store_.AddOutgoing(Sent(kPeer, 100, id), true);
  for (std::int64_t id = 11; id <= 14; ++id) store_.AddIncoming(Received(kPeer, 100, id));
  auto note = Received(kPeer, 100, 15);
  note.readflag = biz::kMsgRead;
  note.extinfo.syschatmsg = 1;
  store_.AddIncoming(note);
  const auto changed = store_.SetPeerRead(kChat, {2, 3, 11, 99});
  EXPECT_EQ(changed.size(), 2U);
  EXPECT_TRUE(store_.SetPeerRead(kChat, {2, 3}).empty()) << "only what changed";
  const auto flags = [&](const Found& ids) {
    Found read;
    for (const auto& flag : store_.PeerReadFlags(kChat, ids)) {
      read.push_back(flag.readflag == biz::kMsgRead ? flag.msgid : -flag.msgid);
    }
    return read;
  };
  EXPECT_EQ(flags({}), (Found{-1, 2, 3}));
  EXPECT_EQ(flags({3, 1, 12, 99}), (Found{3, -1}));

  store_.MarkReadUpTo(kChat, {100, 13});
  EXPECT_EQ(store_.Reportable(kChat, {}), (Found{11, 12, 13}));
  EXPECT_EQ(store_.Reportable(kChat, {1, 12, 14, 15, 99}), (Found{12, 14}));
  store_.SetReported(kChat, {12, 13});
  EXPECT_EQ(store_.Reportable(kChat, {}), Found{11});
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
  for (const auto& cid : {kChat, With(User(L"other"))}) {
    EXPECT_EQ(Ids(store_.Page(cid, {.count = 1000}).msgs), sorted);
    EXPECT_EQ(Find({L"text"}, cid), sorted);
  }
  // As do times that no clock shows.
  const std::int64_t last = std::numeric_limits<std::int64_t>::max();
  const auto odd = User(L"odd");
  std::int64_t id = 0;
  for (const std::int64_t time : {last, std::int64_t{-5}, last - 1, std::int64_t{0}, -last}) {
    store_.AddIncoming(Received(odd, time, ++id));
  }
  EXPECT_EQ(Ids(store_.Page(With(odd), {.ignoreboundary = true}).msgs), (Found{5, 2, 4, 3, 1}));
}

TEST(ChatState, BoundOfflineAndKinds) {
  account::ChatState chat;
  const biz::IMConversationID system(kPeer, biz::kCIDSystem);
  std::vector<account::Arrived> arrived;
  for (std::int64_t id = 1; id <= 6; ++id) {
    arrived.push_back({Received(kPeer, 100, id), id, id % 2 == 0});
  }
  arrived.push_back({Received(kPeer, 100, 7), 7});
  arrived.back().message.cid = system;
  chat.AddIncoming(arrived);
  EXPECT_EQ(Ids(chat.OfflineMessages(kChat).msgs), (Found{2, 4, 6}));
  EXPECT_FALSE(chat.OfflineMessages(kChat).outofcache);
  chat.SetMaxCache(4);
  EXPECT_TRUE(chat.OfflineMessages(kChat).outofcache);
  auto page = chat.NewMessages(kChat, {.count = 2});
  EXPECT_TRUE(page.outofcache);
  EXPECT_EQ(Ids(chat.NewMessages(kChat, {}).msgs), (Found{4, 5, 6}));
  EXPECT_EQ(chat.Unread(kChat), 6);
  EXPECT_EQ(chat.Unread(system), 1);
  EXPECT_EQ(chat.Conversations({biz::kCIDUser}).size(), 1U);
  EXPECT_EQ(chat.Conversations({biz::kCIDSystem, biz::kCIDTribe}).size(), 1U);
  EXPECT_TRUE(chat.Knows(system));
  EXPECT_FALSE(chat.Knows(With(User(L"other"))));

  chat.Forget(kChat, {{{100, 1}, 1}, {{100, 5}, 5}});  // 1 is out of the cache already
  EXPECT_EQ(chat.Unread(kChat), 4);
  EXPECT_EQ(Ids(chat.NewMessages(kChat, {}).msgs), (Found{4, 6}));
  EXPECT_EQ(chat.MarkRead(kChat), 6);
  chat.Forget(kChat, {{{100, 6}, 6}});
  EXPECT_EQ(chat.Unread(kChat), 0) << "counted once";
  chat.SetMaxCache(0);
  chat.Remove(kChat, {}, {});
  EXPECT_TRUE(chat.Conversations({biz::kCIDUser}).empty()) << "no message is left";
}

}  // namespace
}  // namespace imsdk::test
