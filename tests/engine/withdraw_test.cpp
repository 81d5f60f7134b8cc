// Messages that are taken back.
#include <fstream>

#include "device.h"
#include "embedded/post_desk.h"
#include "kexbase/time.h"

namespace imsdk::test {
namespace {

class WithdrawTest : public PeersTest {
 protected:
  std::int32_t Withdraw(const biz::IMUserID& self, const biz::IMUserID& peer, std::int64_t msgid) {
    return Done([&](auto done) { Chat(self, peer)->WithdrawMsg(msgid, done); }).code;
  }
  static void ExpectGone(const biz::IMMessagePage& page) {
    ASSERT_EQ(page.msgs.size(), 1U);
    EXPECT_EQ(page.msgs[0].msgstatus, biz::kMsgWithdrawn);
    EXPECT_EQ(page.msgs[0].msgbody, L"");
  }
};

TEST_F(WithdrawTest, EverybodyHearsOnceAndTheTextIsGone) {
  Device second(server_);
  second.Login(kHarbor);
  Device away(server_);
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
  EXPECT_EQ(Chat(kMariner, kHarbor)->GetUnreadCount(), 1);
  EXPECT_EQ(Withdraw(kHarbor, kMariner, msgid), 0);
  ExpectGone(History(kHarbor, kMariner));
  for (Witness* witness : {&harbor, &there, &mariner}) {
    witness->Await([](const Witness& seen) { return !seen.withdrawn.empty(); });
    EXPECT_EQ(witness->withdrawn[0].msgid, msgid);
    EXPECT_EQ(witness->withdrawn[0].fromid, kHarbor);
    EXPECT_EQ(witness->withdrawn[0].cid, witness == &mariner ? kHarbor : kMariner);
  }
  EXPECT_EQ(Withdraw(kHarbor, kMariner, msgid), 0) << "again";
  EXPECT_EQ(Chat(kMariner, kHarbor)->GetUnreadCount(), 0);
  EXPECT_TRUE(Chat(kMariner, kHarbor)->GetNewMsg({}).msgs.empty());
  ExpectGone(History(kMariner, kHarbor));

  // Who was away gets no text and nothing unread.
  away.Login(kMariner);
  Send(kHarbor, kMariner, L"after");
  ASSERT_TRUE(late.AwaitReceived(1));
  EXPECT_EQ(Bodies(late.received), std::vector<std::wstring>{L"after"});
  EXPECT_EQ(away.Chat(kMariner, kHarbor)->GetUnreadCount(), 1);
  const auto remote = Answer<biz::IMMessagePage>([&](auto done) {
                        Chat(kMariner, kHarbor)->GetRemoteHisMsg({}, done);
                      }).second;
  EXPECT_EQ(Bodies(remote.msgs), (std::vector<std::wstring>{L"", L"after"}));
  for (Witness* witness : {&harbor, &there, &mariner}) EXPECT_EQ(witness->withdrawn.size(), 1U);
  EXPECT_TRUE(late.withdrawn.empty());

  engine_.reset();
  std::ifstream store(folder_.path() / "server" / "server.db", std::ios::binary);
  const std::string bytes{std::istreambuf_iterator<char>(store), {}};
  EXPECT_NE(bytes.find("after"), std::string::npos);
  EXPECT_EQ(bytes.find("unmistakable"), std::string::npos);
}

TEST_F(WithdrawTest, ToOneselfAndOfAFailedDelivery) {
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

TEST(PostDesk, TheLimitIsByTheServersClock) {
  TempFolder folder;
  embedded::ServerStore store(folder.path() / "server.db");
  for (const auto* nick : {L"harbor", L"mariner"}) store.AddAccount(User(nick), "");
  const embedded::Caller harbor{User(L"harbor"), store.FindAccount(User(L"harbor"))->id, 1};
  const std::int64_t receiver = store.FindAccount(User(L"mariner"))->id;
  const std::int64_t now = base::Time::Now().ToMilliseconds();
  const struct {
    std::int64_t age;
    std::chrono::milliseconds limit;
    const wchar_t* refused;
  } cases[] = {
      {110'000, std::chrono::minutes(2), nullptr},
      {121'000, std::chrono::minutes(2), L"within 2 minutes"},
      {61'000, std::chrono::minutes(1), L"within 1 minute "},
      {0, std::chrono::milliseconds(-1), L"within 0 seconds"},
  };
  std::int64_t msgid = 0;
  for (const auto& one : cases) {
    SCOPED_TRACE(one.age);
    link::Message message;
    message.msgid = ++msgid;
    message.svrtime = now - one.age;
    message.msgtime = now + 3'600'000;  // the sender's clock says nothing
    store.mail().Add(harbor.account, receiver, message);
    embedded::PostDesk desk(store, one.limit);
    const auto outcome = desk.Withdraw(harbor, User(L"mariner"), msgid);
    EXPECT_EQ(outcome.result.code, one.refused ? biz::kEngineRefused : 0);
    EXPECT_EQ(outcome.push.size(), one.refused ? 0U : 2U);
    const std::wstring reason = one.refused ? one.refused : L"";
    EXPECT_NE(outcome.result.text.find(reason), std::wstring::npos);
  }
  embedded::PostDesk desk(store, std::chrono::minutes(2));
  EXPECT_TRUE(desk.Withdraw(harbor, User(L"mariner"), 1).push.empty()) << "again";
}

}  // namespace
}  // namespace imsdk::test
