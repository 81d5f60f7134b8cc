// Messages that are taken back.
#include "device.h"

namespace imsdk::test {
namespace {

class WithdrawTest : public PeersTest {
 protected:
  std::int32_t Withdraw(const biz::IMUserID& self, const biz::IMUserID& peer, std::int64_t msgid) {
    return Done([&](auto done) { Chat(self, peer)->WithdrawMsg({msgid}, done); }).code;
  }
  static void ExpectGone(const biz::IMMessagePage& page) {
    ASSERT_EQ(page.msgs.size(), 1U);
    EXPECT_EQ(page.msgs[0].msgstatus, biz::kMsgWithdrawn);
    EXPECT_EQ(page.msgs[0].msgbody, L"");
  }
};

TEST_P(WithdrawTest, EverybodyHearsOnceAndTheTextIsGone) {
  Device second(server_->Link());
  second.Login(kHarbor);
  Device away(server_->Link());
  away.Login(kMariner);
  away.Logout(kMariner);
  Witness harbor(kHarbor);
  Witness there(kHarbor, second.accounts());
  Witness mariner(kMariner);
  Witness late(kMariner, away.accounts());
  Send(kHarbor, kMariner, L"unmistakable");
  ASSERT_TRUE(mariner.AwaitReceived(1));
  there.Await([](const Witness& seen) { return seen.sent.size() == 1; });
  const std::int64_t msgid = mariner.received[0].msgid;

  EXPECT_EQ(Withdraw(kMariner, kHarbor, msgid), biz::kEngineNotFound) << "a stranger's";
  EXPECT_EQ(Withdraw(kHarbor, kHarbor, msgid), biz::kEngineNotFound) << "another conversation's";
  EXPECT_EQ(Withdraw(kHarbor, kMariner, msgid + 1), biz::kEngineNotFound);
  EXPECT_EQ(Unread(Chat(kMariner, kHarbor)), 1);
  EXPECT_EQ(Withdraw(kHarbor, kMariner, msgid), 0);
  ExpectGone(History(kHarbor, kMariner));
  for (Witness* witness : {&harbor, &there, &mariner}) {
    witness->Await([](const Witness& seen) { return !seen.withdrawn.empty(); });
    EXPECT_EQ(witness->withdrawn[0].msgid, msgid);
    EXPECT_EQ(witness->withdrawn[0].fromid, kHarbor);
    EXPECT_EQ(witness->withdrawn[0].cid.user, witness == &mariner ? kHarbor : kMariner);
  }
  EXPECT_EQ(Withdraw(kHarbor, kMariner, msgid), 0) << "again";
  EXPECT_EQ(Unread(Chat(kMariner, kHarbor)), 0);
  EXPECT_TRUE(NewMessages(Chat(kMariner, kHarbor)).msgs.empty());
  ExpectGone(History(kMariner, kHarbor));

  // Who was away gets no text and nothing unread.
  away.Login(kMariner);
  Send(kHarbor, kMariner, L"after");
  ASSERT_TRUE(late.AwaitReceived(1));
  EXPECT_EQ(Bodies(late.received), std::vector<std::wstring>{L"after"});
  EXPECT_EQ(Unread(away.Chat(kMariner, kHarbor)), 1);
  const auto remote = Answer<biz::IMMessagePage>([&](auto done) {
                        Chat(kMariner, kHarbor)->GetRemoteHisMsg({}, done);
                      }).second;
  EXPECT_EQ(Bodies(remote.msgs), (std::vector<std::wstring>{L"", L"after"}));
  for (Witness* witness : {&harbor, &there, &mariner}) EXPECT_EQ(witness->withdrawn.size(), 1U);
  EXPECT_TRUE(late.withdrawn.empty());
}

TEST_P(WithdrawTest, ToOneselfAndOfAFailedDelivery) {
  Witness harbor(kHarbor);
  Send(kHarbor, kHarbor, L"note");
  ASSERT_TRUE(harbor.AwaitStatuses(1));
  EXPECT_EQ(Withdraw(kHarbor, kHarbor, harbor.sent[0].msgid), 0);
  ExpectGone(History(kHarbor, kHarbor));

  // The server took it, the answer was lost: its lateness changes nothing about the withdrawal.
  link_->FailNext(Operation::kDeliver, Fault::kDropAnswer);
  Send(kHarbor, kMariner, L"text");
  harbor.Await([](const Witness& seen) { return seen.sent.size() == 2; });
  const std::int64_t msgid = harbor.sent[1].msgid;
  EXPECT_EQ(Withdraw(kHarbor, kMariner, msgid), 0);
  ASSERT_TRUE(harbor.AwaitStatuses(2));
  EXPECT_EQ(harbor.statuses[1].code, biz::kEngineTimeout);
  ExpectGone(History(kHarbor, kMariner));
  EXPECT_EQ(harbor.withdrawn.size(), 2U);

  // A lost answer to the withdrawal: the server's own word arrives all the same.
  link_->FailNext(Operation::kWithdraw, Fault::kDropAnswer);
  Send(kHarbor, kMariner, L"text");
  ASSERT_TRUE(harbor.AwaitStatuses(3));
  EXPECT_EQ(Withdraw(kHarbor, kMariner, harbor.sent[2].msgid), biz::kEngineTimeout);
  harbor.Await([](const Witness& seen) { return seen.withdrawn.size() == 3; });
}

INSTANTIATE_TEST_SUITE_P(Servers, WithdrawTest, testing::ValuesIn(ServerKinds()), NameOf);

}  // namespace
}  // namespace imsdk::test
