// Which messages of a conversation count as all there.
#include "store_fixture.h"

namespace imsdk::test {
namespace {

using Found = std::vector<std::int64_t>;

constexpr std::int64_t kHour = 3'600'000;

// The server's history of the chat: messages 1 to `count`, by their numbers in its order. Whoever
// sent them has a clock of its own.
class PartsTest : public StoreTest {
 protected:
  static account::Incoming From(std::int64_t id) {
    return {Received(kPeer, 1000 * id, id), "p" + std::to_string(id)};
  }
  void Live(std::int64_t id, std::int64_t previous = 0) {
    account::Incoming incoming = From(id);
    incoming.previous = previous;
    if (store_.MissesPrevious(incoming)) store_.OpenHole(incoming);
    store_.AddLive(incoming);
  }
  // A fetch of [first, last] from the server's history, where `all` is the newest message.
  account::KeptHistory Fetch(link::GetHistory request, std::int64_t first, std::int64_t last,
                             bool ends = false) {
    std::vector<account::Incoming> messages;
    for (std::int64_t id = first; id <= last; ++id) messages.push_back(From(id));
    request.cid = kChat;
    return store_.AddHistory(walk_, request, ends ? "" : "p" + std::to_string(first), messages);
  }
  account::KeptHistory FetchFrom(const std::string& place, std::int64_t first, std::int64_t last,
                                 bool ends = false) {
    link::GetHistory request;
    request.place = place;
    return Fetch(request, first, last, ends);
  }
  Found Visible() { return Ids(store_.Page(kChat, {.count = 1000}).msgs); }
  account::Part Part() { return store_.parts().Current(store_.conversations().Find(kChat)); }
  static Found Range(std::int64_t first, std::int64_t last) {
    Found ids;
    for (; first <= last; ++first) ids.push_back(first);
    return ids;
  }

  account::Walk walk_;
};

TEST_F(PartsTest, FetchesFromTheNewestEndGoOn) {
  Live(50);
  EXPECT_EQ(Visible(), Range(50, 50)) << "the first live message begins the part";
  FetchFrom(Part().edge, 40, 49);
  Live(51);
  EXPECT_EQ(Visible(), Range(40, 51));
  FetchFrom(Part().edge, 1, 39, true);
  EXPECT_EQ(Visible(), Range(1, 51));
  EXPECT_TRUE(Part().whole);
}

TEST_F(PartsTest, IslandsStayOutsideUntilThePartReachesThem) {
  Live(50);
  link::GetHistory by_time;
  by_time.etime = 20;
  Fetch(by_time, 10, 20);
  EXPECT_EQ(Visible(), Range(50, 50));
  EXPECT_EQ(store_.Page(kChat, {.count = 1000, .ignoreboundary = true}).msgs.size(), 12U);
  walk_ = {};
  FetchFrom("p50", 21, 49);
  EXPECT_EQ(Visible(), Range(21, 50)) << "next to each other, but nobody knows";
  EXPECT_EQ(FetchFrom(Part().edge, 5, 20).fresh, 5);
  EXPECT_EQ(Visible(), Range(5, 50));
  // A fetch by time that meets the part extends it.
  walk_ = {};
  by_time.etime = 7;
  Fetch(by_time, 2, 7);
  EXPECT_EQ(Visible(), Range(2, 50));
  EXPECT_EQ(Part().edge, "p2");
}

TEST_F(PartsTest, ClocksHideNothing) {
  Live(50);
  auto behind = From(51);
  behind.message.msgtime = 10;  // a clock that was set back by hours
  store_.AddLive(behind);
  auto ahead = From(52);
  ahead.message.msgtime = 52'000 + 5 * kHour;
  store_.AddLive(ahead);
  auto own = Sent(kPeer, 5, 53);  // the account's own
  store_.AddOutgoing(own, true);
  EXPECT_EQ(Visible(), (Found{53, 51, 50, 52}));
  // Nothing older counts as there by that.
  link::GetHistory by_time;
  by_time.etime = 20;
  Fetch(by_time, 10, 20);
  EXPECT_EQ(Visible(), (Found{53, 51, 50, 52}));
  EXPECT_TRUE(account::Lacks(Part(), {.msgtime = 20'000, .msgid = 20}, {}));
}

TEST_F(PartsTest, ForgettingLeavesTheNewest) {
  Live(50);
  FetchFrom("p50", 1, 49, true);
  store_.ClearComplete(kChat);
  EXPECT_EQ(Visible(), Range(50, 50));
  walk_ = {};
  EXPECT_EQ(FetchFrom("", 41, 50).fresh, 0);
  EXPECT_EQ(Visible(), Range(41, 50));
}

TEST_F(PartsTest, AMissingOneOpensAHole) {
  for (const std::int64_t id : {40, 41, 42, 43}) Live(id);
  Live(47, 46);  // 44 to 46 are missing
  EXPECT_EQ(Visible(), Range(47, 47)) << "behind the hole nothing is sure";
  Live(48, 47);
  const auto kept = FetchFrom(Part().edge, 38, 46);
  EXPECT_EQ(Visible(), Range(38, 48)) << "closed";
  Found missed;
  for (const auto& one : kept.missed) missed.push_back(one.message.msgid);
  EXPECT_EQ(missed, (Found{44, 45, 46})) << "38 and 39 were never to come by themselves";
  for (const auto& one : kept.missed) EXPECT_GT(one.arrival, 0);
  EXPECT_FALSE(store_.AddLive(From(44))) << "told of already";
  EXPECT_TRUE(store_.AddLive(From(38))) << "nobody was told of it";
  EXPECT_EQ(FetchFrom(Part().edge, 30, 37).fresh, 8) << "and it goes on from there";
  EXPECT_EQ(Visible(), Range(30, 48));
}

TEST_F(PartsTest, AWantedOneThatComesLateClosesTheHole) {
  for (const std::int64_t id : {40, 41}) Live(id);
  Live(44, 43);
  Live(45, 44);
  Live(47, 46);
  EXPECT_EQ(Visible(), Found{47});
  Live(43, 41);
  Live(46, 45);
  EXPECT_EQ(Visible(), (Found{40, 41, 43, 44, 45, 46, 47}));
}

TEST_F(PartsTest, WhatTheServerDoesNotHaveIsNotWaitedFor) {
  for (const std::int64_t id : {40, 41}) Live(id);
  Live(50, 45);
  // Comes down to the sender's message before: the wanted one is gone.
  FetchFrom(Part().edge, 41, 44);
  EXPECT_EQ(Visible(), (Found{40, 41, 42, 43, 44, 50}));
  EXPECT_TRUE(store_.conversations().Wanting().empty());
  // A sender who was never heard of may have written before the part began.
  auto stranger = From(61);
  stranger.message.fromid = User(L"stranger");
  stranger.previous = 7;
  ASSERT_TRUE(store_.MissesPrevious(stranger));
  store_.OpenHole(stranger);
  store_.AddLive(stranger);
  walk_ = {};
  FetchFrom(Part().edge, 42, 44);
  EXPECT_EQ(Visible().size(), 7U) << "one look is enough";
}

TEST_F(PartsTest, ALongHoleIsGivenUpAndFetchedWhenItIsAskedFor) {
  for (const std::int64_t id : {2, 4}) Live(id);
  Live(1000, 998);
  int fetches = 0;
  for (std::int64_t id = 997; store_.parts().Below(1) && fetches < 100; --id, ++fetches) {
    auto others = From(id);
    others.message.fromid = User(L"other");
    link::GetHistory request;
    request.cid = kChat;
    request.place = Part().edge;
    store_.AddHistory(walk_, request, others.place, {others});
  }
  EXPECT_EQ(fetches, 20);
  const auto visible = Visible();
  EXPECT_GT(visible.front(), 4) << "what is below is not complete with it any more";
  EXPECT_EQ(visible.back(), 1000);
}

TEST_F(PartsTest, APositionThatIsLost) {
  for (const std::int64_t id : {40, 41}) Live(id);
  store_.SetLinkPosition("here");
  store_.LosePosition();
  EXPECT_EQ(store_.LinkPosition(), "");
  EXPECT_EQ(store_.conversations().Wanting(), std::vector{kChat});
  Live(60, 59);
  EXPECT_EQ(Visible(), Range(60, 60));
  EXPECT_EQ(FetchFrom(Part().edge, 50, 59).missed.size(), 10U);
  EXPECT_TRUE(store_.parts().Below(1)) << "not down yet";
  EXPECT_EQ(FetchFrom(Part().edge, 39, 49).missed.size(), 8U);
  EXPECT_FALSE(store_.parts().Below(1));
  EXPECT_EQ(Visible(), Range(39, 60));
}

}  // namespace
}  // namespace imsdk::test
