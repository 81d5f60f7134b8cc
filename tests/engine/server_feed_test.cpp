// What a session is sent by itself: from where, in which order, how far ahead.
#include "server_fixture.h"

namespace imsdk::test {
namespace {

class ServerFeed : public ServerTest {
 protected:
  void SetUp() override { CreateAccounts({L"harbor", L"mariner"}); }
};

TEST_F(ServerFeed, ADeviceGoesOnBehindThePositionThatItNames) {
  const auto harbor = Connect(L"harbor");
  std::vector<std::string> positions;
  {
    const auto mariner = Connect(L"mariner", "desk", {}, false);
    for (std::int64_t msgid = 1; msgid <= 3; ++msgid) {
      harbor->Say(With(L"mariner"), msgid);
      mariner->Until([&](const Device& told) {
        return told.batches.size() == static_cast<std::size_t>(msgid);
      });
      EXPECT_FALSE(mariner->batches.back().offline);
      positions.push_back(mariner->batches.back().position);
    }
  }
  for (const bool restarted : {false, true}) {
    if (restarted) Start();
    for (std::size_t had = 1; had <= positions.size(); ++had) {
      const auto mariner = Connect(L"mariner", "desk", positions[had - 1], false);
      mariner->Settle();
      std::vector<std::int64_t> missing;
      for (std::size_t i = had + 1; i <= 3; ++i) missing.push_back(static_cast<std::int64_t>(i));
      EXPECT_EQ(mariner->Msgids(), missing);
      for (const auto& batch : mariner->batches) EXPECT_TRUE(batch.offline && !batch.more);
    }
  }
}

TEST_F(ServerFeed, ADeviceWithoutAPositionIsGivenOneAtOnce) {
  const auto harbor = Connect(L"harbor");
  std::string given;
  {
    const auto mariner = Connect(L"mariner");
    mariner->Until([](const Device& told) { return !told.start.empty(); });
    given = mariner->start;
  }
  harbor->Say(With(L"mariner"), 1);
  const auto other = Connect(L"mariner", "other");
  other->Settle();
  const auto mariner = Connect(L"mariner", "desk", given);
  mariner->Settle();
  EXPECT_EQ(mariner->Msgids(), std::vector<std::int64_t>{1}) << "whatever others have by now";
  EXPECT_EQ(mariner->start, "") << "it had one";
}

TEST_F(ServerFeed, APositionThatWasNeverGivenIsLost) {
  Connect(L"harbor")->Say(With(L"mariner"), 1);
  for (const char* position : {"-1", "x", "1x", " 1", "1000000", "99999999999999999999"}) {
    const auto device = std::make_shared<Device>();
    EXPECT_EQ(TryConnect(device, L"mariner", "desk", position).result.code,
              biz::kEnginePositionLost)
        << position;
  }
  const auto mariner = Connect(L"mariner");
  mariner->Settle();
  EXPECT_EQ(mariner->Msgids(), std::vector<std::int64_t>{1});
}

TEST_F(ServerFeed, ADeviceWithoutAPositionStandsWhereTheMostAdvancedOneDoes) {
  const auto harbor = Connect(L"harbor");
  harbor->Say(With(L"mariner"), 1);
  harbor->Say(With(L"mariner"), 2);
  std::string first;
  {
    const auto silent = Connect(L"mariner", "silent", {}, false);
    silent->Settle();
    EXPECT_EQ(silent->Msgids(), (std::vector<std::int64_t>{1, 2})) << "the first one has it all";
    first = silent->batches[0].position;
  }
  {
    const auto again = Connect(L"mariner", "silent");
    again->Settle();
    EXPECT_EQ(again->Msgids().size(), 2U) << "nothing was acknowledged";
  }
  for (const bool restarted : {false, true}) {
    if (restarted) Start();
    const auto phone = Connect(L"mariner", "phone");
    phone->Settle();
    EXPECT_TRUE(phone->Msgids().empty());
  }
  Connect(L"harbor")->Say(With(L"mariner"), 3);
  // A position is as good as an acknowledgement: what it names lies in the device's store.
  const auto all = Connect(L"mariner", "desk", first, false);
  all->Settle();
  Connect(L"mariner", "desk", all->batches.back().position, false)->Settle();
  const auto fresh = Connect(L"mariner", "fresh");
  fresh->Settle();
  EXPECT_TRUE(fresh->Msgids().empty());
}

TEST_F(ServerFeed, BatchesAreBoundedAndWaitForAcknowledgements) {
  const auto harbor = Connect(L"harbor");
  constexpr std::int64_t kMessages = 3250;
  for (std::int64_t msgid = 1; msgid <= kMessages; ++msgid) harbor->Say(With(L"mariner"), msgid);
  const auto mariner = Connect(L"mariner", "desk", {}, false);
  mariner->Until([](const Device& told) { return told.batches.size() == 4; });
  // One acknowledgement lets one more batch come, and the last one stands for all before it.
  mariner->Acknowledge(mariner->batches[0].position);
  mariner->Until([](const Device& told) { return told.batches.size() == 5; });
  mariner->Acknowledge("999999999");
  mariner->Until([](const Device& told) { return told.batches.size() == 7; });
  harbor->Say(With(L"mariner"), kMessages + 1);
  mariner->Settle();
  ASSERT_EQ(mariner->batches.size(), 8U);
  for (std::size_t i = 0; i < mariner->batches.size(); ++i) {
    const auto& batch = mariner->batches[i];
    EXPECT_EQ(batch.entries.size(), i < 6 ? 500U : i == 6 ? 250U : 1U);
    EXPECT_EQ(batch.offline, i < 7);
    EXPECT_EQ(batch.more, i < 6);
  }
  const auto got = mariner->Msgids();
  for (std::size_t i = 0; i < got.size(); ++i) EXPECT_EQ(got[i], static_cast<std::int64_t>(i) + 1);
}

TEST_F(ServerFeed, LargeMessagesMakeSmallBatches) {
  const auto harbor = Connect(L"harbor");
  const std::wstring large(biz::kMaxBodyBytes, L'x');
  for (std::int64_t msgid = 1; msgid <= 5; ++msgid) {
    ASSERT_TRUE(harbor->Say(With(L"mariner"), msgid, large).result.ok());
  }
  const auto mariner = Connect(L"mariner");
  mariner->Settle();
  EXPECT_EQ(mariner->Msgids().size(), 5U);
  for (const auto& batch : mariner->batches) EXPECT_LE(batch.entries.size(), 1U);
}

// Own stream and tribes, while online and after having been away: one order, nothing twice.
TEST_F(ServerFeed, StreamsAreMergedByTheOrderOfTheServer) {
  constexpr int kTribes = 12;
  std::vector<biz::IMConversationID> cids{With(L"mariner")};
  for (int i = 1; i <= kTribes; ++i) {
    const biz::IMTribeID tribe{1000 + i};
    ASSERT_EQ(server_->CreateTribe({tribe, L"t", Person(L"harbor"), {Person(L"mariner")}}), tribe);
    cids.emplace_back(tribe);
  }
  const auto harbor = Connect(L"harbor");
  const auto online = Connect(L"mariner", "online");
  std::vector<std::int64_t> sent;
  // Long runs in one conversation, and quick changes.
  for (std::size_t i = 0; i < 3500; ++i) {
    const std::size_t which = i < 1250 ? 3 : i < 2500 ? i * i % cids.size() : i % 2;
    sent.push_back(static_cast<std::int64_t>(i) + 1);
    ASSERT_TRUE(harbor->Say(cids[which], sent.back()).result.ok());
    if (i % 250 == 0) harbor->Ask(link::Withdraw{cids[which], sent.back()});
  }
  online->Settle();
  EXPECT_EQ(online->Msgids(), sent);
  for (const bool restarted : {false, true}) {
    if (restarted) Start();
    const auto away = Connect(L"mariner", "away", online->batches.front().position, false);
    away->Until([](const Device& told) { return told.batches.size() == 4; });
    away->Disconnect();
    const auto back = Connect(L"mariner", "away", away->batches.back().position);
    back->Settle();
    auto got = away->Msgids();
    for (const std::int64_t msgid : back->Msgids()) got.push_back(msgid);
    EXPECT_EQ(got, sent);
    EXPECT_EQ(away->All<link::Withdrawal>().size() + back->All<link::Withdrawal>().size(), 14U);
  }
}

}  // namespace
}  // namespace imsdk::test
