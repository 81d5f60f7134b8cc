// A server that takes messages and may lose them before they are in its archive.
#include "device.h"
#include "far_server.h"

namespace imsdk::test {
namespace {

using Texts = std::vector<std::wstring>;

class TakenTest : public PeersTest {
 protected:
  void SetUp() override {
    PeersTest::SetUp();
    Habits habits;
    habits.takes = true;
    server().Change(habits);
  }
  FarServer& server() { return static_cast<FarServer&>(*server_); }
  std::int32_t Stored() { return History(kHarbor, kMariner).msgs.at(0).msgstatus; }
};

TEST_P(TakenTest, SentIsArchived) {
  Witness harbor(kHarbor);
  Witness mariner(kMariner);
  Send(kHarbor, kMariner, L"text");
  Eventually([&] { return link_->Asked(Operation::kDeliver) == 1; }, "taken");
  EXPECT_EQ(Stored(), biz::kMsgSending);
  EXPECT_TRUE(harbor.statuses.empty());
  server().ArchiveTaken();
  ASSERT_TRUE(harbor.AwaitStatuses(1));
  EXPECT_EQ(harbor.statuses[0].code, 0);
  EXPECT_GT(harbor.statuses[0].svrtime, 0);
  EXPECT_EQ(Stored(), biz::kMsgSent);
  ASSERT_TRUE(mariner.AwaitReceived(1));
}

TEST_P(TakenTest, WhatIsLostIsDeliveredAgain) {
  Witness harbor(kHarbor);
  Witness mariner(kMariner);
  Send(kHarbor, kMariner, L"lost");
  Eventually([&] { return link_->Asked(Operation::kDeliver) == 1; }, "taken");
  server().LoseTaken();
  Eventually([&] { return link_->Asked(Operation::kDeliver) == 2; }, "again after a while");
  server().LoseTaken();
  Done([&](auto done) { Accounts()->NetReConnect({kHarbor}, done); });
  Eventually([&] { return link_->Asked(Operation::kDeliver) >= 3; }, "again with another link");
  EXPECT_TRUE(harbor.statuses.empty());
  server().Change({});
  Eventually(
      [&] {
        server().ArchiveTaken();
        return !History(kHarbor, kMariner).msgs.empty() && Stored() == biz::kMsgSent;
      },
      "sent at last");
  ASSERT_TRUE(mariner.AwaitReceived(1));
  Send(kHarbor, kMariner, L"after");
  ASSERT_TRUE(mariner.AwaitReceived(2));
  EXPECT_EQ(Bodies(mariner.received), (Texts{L"lost", L"after"})) << "shown once";
  ASSERT_TRUE(harbor.AwaitStatuses(2));
  EXPECT_EQ(harbor.statuses.size(), 2U) << "one outcome each";
}

TEST_P(TakenTest, OneThatIsNeverArchivedFails) {
  setup_.timeouts.send = std::chrono::milliseconds(60);
  Again();
  Witness harbor(kHarbor);
  Send(kHarbor, kMariner, L"text");
  ASSERT_TRUE(harbor.AwaitStatuses(1));
  EXPECT_EQ(harbor.statuses[0].code, biz::kEngineTimeout);
  EXPECT_EQ(Stored(), biz::kMsgFailed);
  // The server's word counts more than the clock.
  server().ArchiveTaken();
  ASSERT_TRUE(harbor.AwaitStatuses(2));
  EXPECT_EQ(harbor.statuses[1].code, 0);
  EXPECT_EQ(Stored(), biz::kMsgSent);
  EXPECT_EQ(Resend(Chat(kHarbor, kMariner), harbor.statuses[0].msgid, false), biz::kEngineNotFound);
}

// Whoever receives a message can tell which one came before it.
TEST_P(TakenTest, EachNamesTheOneBefore) {
  server().Change({});
  Witness harbor(kHarbor);
  Witness mariner(kMariner);
  Send(kHarbor, kMariner, L"1");
  Send(kHarbor, User(L"nobody"), L"fails");
  Send(kHarbor, kMariner, L"2");
  ASSERT_TRUE(harbor.AwaitStatuses(3));
  ASSERT_TRUE(mariner.AwaitReceived(2));
  Again();
  Witness again(kHarbor);
  Send(kHarbor, kMariner, L"3");
  ASSERT_TRUE(again.AwaitStatuses(1));
  std::vector<std::int64_t> previous;
  for (const auto& message : server().Archived(kHarbor, kMariner)) {
    previous.push_back(message.previous);
  }
  EXPECT_EQ(previous, (std::vector<std::int64_t>{0, harbor.sent[0].msgid, harbor.sent[2].msgid}));
}

INSTANTIATE_TEST_SUITE_P(Servers, TakenTest, testing::Values(ServerKinds().at(1)), NameOf);

}  // namespace
}  // namespace imsdk::test
