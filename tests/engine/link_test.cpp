// A link that loses, forgets and breaks, and a store that refuses.
#include <algorithm>
#include <atomic>
#include <chrono>
#include <thread>

#include "account/files/data_folder.h"
#include "engine_fixture.h"
#include "faulty_link.h"
#include "sqlite/database.h"

namespace imsdk::test {
namespace {

const biz::IMUserID kHarbor = User(L"harbor");
const biz::IMUserID kMariner = User(L"mariner");

class LinkTest : public ServerTest {
 protected:
  void SetUp() override {
    setup_.wrap_link = [this](auto real) { return link_ = std::make_shared<FaultyLink>(real); };
    ServerTest::SetUp();
    CreateAccount(kHarbor);
    CreateAccount(kMariner);
    ASSERT_TRUE(Login(kHarbor).result.ok());
    ASSERT_TRUE(Login(kMariner).result.ok());
  }

  void ExpectOnce(Witness& mariner, const std::wstring& text) {
    Send(kHarbor, kMariner, L"after");
    mariner.Await([](const Witness& witness) {
      return !witness.received.empty() && witness.received.back().msgbody == L"after";
    });
    EXPECT_EQ(Bodies(mariner.received), (std::vector<std::wstring>{text, L"after"}));
    EXPECT_EQ(Bodies(History(kMariner, kHarbor).msgs), (std::vector<std::wstring>{text, L"after"}));
  }

  std::shared_ptr<FaultyLink> link_;
};

TEST_P(LinkTest, AForgottenDeliveryFailsAndMayBeSentAgain) {
  for (const Fault fault : {Fault::kDropRequest, Fault::kDropAnswer}) {
    SCOPED_TRACE(fault == Fault::kDropRequest ? "request" : "answer");
    const auto peer = User(fault == Fault::kDropRequest ? L"first" : L"second");
    CreateAccount(peer);
    Login(peer);
    Witness harbor(kHarbor);
    Witness theirs(peer);
    link_->FailNext(Operation::kDeliver, fault);
    Send(kHarbor, peer, L"text");
    ASSERT_TRUE(harbor.AwaitStatuses(1));
    EXPECT_EQ(harbor.statuses[0].code, biz::kEngineTimeout);
    const std::int64_t msgid = harbor.statuses[0].msgid;
    EXPECT_EQ(History(kHarbor, peer).msgs[0].msgstatus, biz::kMsgFailed);

    EXPECT_EQ(Resend(Chat(kHarbor, kMariner), msgid, false), biz::kEngineNotFound) << "not there";
    ASSERT_EQ(Resend(Chat(kHarbor, peer), msgid, false), 0);
    ASSERT_TRUE(harbor.AwaitStatuses(2));
    EXPECT_EQ(harbor.statuses[1].code, 0);
    EXPECT_EQ(harbor.statuses[1].msgid, msgid);
    EXPECT_EQ(Resend(Chat(kHarbor, peer), msgid, false), biz::kEngineNotFound) << "it did not fail";
    Send(kHarbor, peer, L"after");
    ASSERT_TRUE(theirs.AwaitReceived(2));
    EXPECT_EQ(Bodies(theirs.received), (std::vector<std::wstring>{L"text", L"after"}));
    EXPECT_EQ(harbor.sent.size(), 2U) << "sending again announces nothing";
  }
}

TEST_P(LinkTest, ABreakInTheMiddleOfADeliveryIsMended) {
  Witness harbor(kHarbor);
  Witness mariner(kMariner);
  const auto reconnected = std::make_shared<std::atomic<int>>(0);  // events may come to the end
  Accounts()->Events().on_net_reconnect_ok.connect([=](const auto&) { ++*reconnected; });
  link_->FailNext(Operation::kDeliver, Fault::kBreak);
  Send(kHarbor, kMariner, L"text");
  ASSERT_TRUE(harbor.AwaitStatuses(1));
  EXPECT_EQ(harbor.statuses[0].code, 0);
  EXPECT_EQ(*reconnected, 1);
  ExpectOnce(mariner, L"text");
}

TEST_P(LinkTest, ALostBatchIsFetchedAgain) {
  Witness harbor(kHarbor);
  Witness mariner(kMariner);
  Send(kHarbor, kMariner, L"before");
  ASSERT_TRUE(mariner.AwaitReceived(1));
  link_->LoseNextBatch();
  Send(kHarbor, kMariner, L"lost");
  ASSERT_TRUE(harbor.AwaitStatuses(2));
  Send(kHarbor, kMariner, L"after");
  ASSERT_TRUE(mariner.AwaitReceived(3));
  auto heard = Bodies(mariner.received);
  std::sort(heard.begin(), heard.end());
  EXPECT_EQ(heard, (std::vector<std::wstring>{L"after", L"before", L"lost"}));
  EXPECT_EQ(Bodies(History(kMariner, kHarbor).msgs),
            (std::vector<std::wstring>{L"before", L"lost", L"after"}));
}

TEST_P(LinkTest, WithoutALinkThingsFailUntilItIsBack) {
  Witness harbor(kHarbor);
  std::mutex lock;
  std::vector<std::string> told;
  const auto tell = [&](const char* what) {
    std::lock_guard hold(lock);
    told.emplace_back(what);
  };
  Accounts()->Events().on_net_reconnect_ok.connect([&](const auto&) { tell("ok"); });
  Accounts()->Events().on_net_reconnect_failed.connect(
      [&](const auto&, const auto&) { tell("failed"); });
  const auto reconnect = [] {
    return Wait<biz::ResultCode>([](auto done) { Accounts()->NetReConnect({kHarbor}, done); });
  };
  EXPECT_TRUE(reconnect().ok());
  link_->Shut(true);
  EXPECT_EQ(reconnect().code, biz::kEngineNoLink);
  EXPECT_NE(Accounts()->GetAccount(kHarbor)->GetState(), biz::kAccountOnline);
  Send(kHarbor, kMariner, L"text");
  ASSERT_TRUE(harbor.AwaitStatuses(1));
  EXPECT_EQ(harbor.statuses[0].code, biz::kEngineNoLink);

  link_->Shut(false);
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
  while (Accounts()->GetAccount(kHarbor)->GetState() != biz::kAccountOnline) {
    ASSERT_LT(std::chrono::steady_clock::now(), deadline) << "the link is renewed by itself";
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
  EXPECT_EQ(Resend(Chat(kHarbor, kMariner), harbor.statuses[0].msgid, false), 0);
  ASSERT_TRUE(harbor.AwaitStatuses(2));
  EXPECT_EQ(harbor.statuses[1].code, 0);
  engine_.reset();
  EXPECT_EQ(told, (std::vector<std::string>{"ok", "failed", "ok"}));
}

TEST_P(LinkTest, ASessionThatTheServerEndsIsALogout) {
  std::promise<biz::IMUserID> out;
  Accounts()->Events().on_logouted.connect([&](const auto& user) { out.set_value(user); });
  Logout(kMariner);
  auto logged_out = std::move(out);
  out = {};
  link_->EndAll(biz::kEngineRefused);
  EXPECT_EQ(out.get_future().get(), kHarbor);
  EXPECT_FALSE(Accounts()->GetAccount(kHarbor));
}

TEST_P(LinkTest, ALoginWithoutAnAnswerTimesOut) {
  Logout(kHarbor);
  link_->Shut(true, biz::kEngineRefused);
  EXPECT_EQ(Login(kHarbor).result.code, biz::kEngineTimeout);
  EXPECT_EQ(LoginByToken(kHarbor, TokenOf(*server_, kHarbor)).result.code, biz::kEngineRefused);
  link_->Shut(false);
  EXPECT_TRUE(Login(kHarbor).result.ok());
}

TEST_P(LinkTest, ALockedStoreFailsAndLosesNothing) {
  const account::DataFolder data(folder_.path());
  sqlite::Database intruder(data.MessageStore(kHarbor));
  Witness harbor(kHarbor);
  Witness mariner(kMariner);
  {
    sqlite::Transaction transaction(intruder);
    EXPECT_EQ(Send(kHarbor, kMariner, L"refused"), biz::kEngineStorage);
    Send(kMariner, kHarbor, L"waits");
  }
  ASSERT_TRUE(harbor.AwaitReceived(1)) << "the server sends it again";
  EXPECT_EQ(Bodies(harbor.received), std::vector<std::wstring>{L"waits"});
  EXPECT_EQ(Bodies(History(kHarbor, kMariner).msgs), std::vector<std::wstring>{L"waits"});
  EXPECT_TRUE(harbor.sent.empty()) << "what was refused is not announced";
}

TEST_P(LinkTest, StoppingWithOpenOperationsIsPrompt) {
  setup_.timeouts.send = std::chrono::minutes(10);
  setup_.timeouts.logout = std::chrono::minutes(10);
  Begin();
  Login(kHarbor);
  for (int i = 0; i < 5; ++i) {
    link_->FailNext(Operation::kDeliver, Fault::kDropRequest);
    Send(kHarbor, kMariner, std::to_wstring(i));
  }
  std::atomic<int> answers{0};
  for (int i = 0; i < 5; ++i) {
    Chat(kHarbor, kMariner)->GetLocalHisMsg({}, [&](const auto&, auto) { ++answers; });
    Accounts()->LoginByPassword({kMariner, L"pass"}, [&](const auto&, const auto&) { ++answers; });
  }
  const auto kept = Chat(kHarbor, kMariner);
  const auto manager = Accounts();
  const auto start = std::chrono::steady_clock::now();
  engine_.reset();
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5));
  EXPECT_LE(answers, 10);
  EXPECT_FALSE(Accounts());
  EXPECT_EQ(SendItems(kept, {Text(L"late")}, {}), biz::kEngineNotLoggedIn);
  EXPECT_FALSE(manager->GetAccount(kHarbor));

  // What was taken is sent at the next login, and was not before.
  Begin();
  Witness harbor(kHarbor);
  Witness mariner(kMariner);
  Login(kMariner);
  Login(kHarbor);
  ASSERT_TRUE(mariner.AwaitReceived(5));
  ASSERT_TRUE(harbor.AwaitStatuses(5));
  EXPECT_EQ(Bodies(mariner.received), (std::vector<std::wstring>{L"0", L"1", L"2", L"3", L"4"}));
}

INSTANTIATE_TEST_SUITE_P(Servers, LinkTest, testing::ValuesIn(ServerKinds()), NameOf);

}  // namespace
}  // namespace imsdk::test
