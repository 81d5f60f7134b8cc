// Every operation that asks the server, and everything that can happen to it meanwhile.
#include <atomic>

#include "device.h"

namespace imsdk::test {
namespace {

class FaultsTest : public PeersTest {};

TEST_P(FaultsTest, EachOperationIsAnsweredOnce) {
  Witness harbor(kHarbor);
  // Fresh ones for each fault.
  std::int64_t own = 0;
  std::int64_t theirs = 0;
  biz::IMUserID unknown;

  using Done = std::function<void(const biz::ResultCode&)>;
  const auto chat = [&] { return Chat(kHarbor, kMariner); };
  const auto chats = [&] { return Chats(kHarbor); };
  const auto only = [](Done done) {
    return [done](const biz::ResultCode& result, const auto&) { done(result); };
  };
  const struct {
    const char* what;
    Operation operation;
    std::function<void(Done)> run;
  } operations[] = {
      {"withdraw", Operation::kWithdraw, [&](Done done) { chat()->WithdrawMsg({own}, done); }},
      {"remote page", Operation::kGetHistory,
       [&](Done done) { chat()->GetRemoteHisMsg({}, only(done)); }},
      {"remote page, kept", Operation::kGetHistory,
       [&](Done done) { chat()->GetRemoteHisMsg({.autoroam = true}, only(done)); }},
      {"local page", Operation::kGetHistory,
       [&](Done done) { Chat(kHarbor, unknown)->GetLocalHisMsg({.autoroam = true}, only(done)); }},
      {"roam", Operation::kGetHistory, [&](Done done) { chat()->RoamMsg({}, only(done)); }},
      {"get roaming", Operation::kGetRoaming,
       [&](Done done) { chats()->GetRoamStatus({}, only(done)); }},
      {"set roaming", Operation::kSetRoaming,
       [&](Done done) { chats()->SetRoamStatus({1}, done); }},
      {"report", Operation::kReportRead,
       [&](Done done) { chat()->SetFlagsPeerMsgReaded({{theirs}}, done); }},
  };
  const struct {
    const char* what;
    Fault fault;
    bool logout;
    std::int32_t code;
  } faults[] = {
      {"no request", Fault::kDropRequest, false, biz::kEngineTimeout},
      {"no answer", Fault::kDropAnswer, false, biz::kEngineTimeout},
      {"a break", Fault::kBreak, false, biz::kEngineNoLink},
      {"a logout", Fault::kDropRequest, true, biz::kEngineNotLoggedIn},
  };
  for (const auto& fault : faults) {
    const std::size_t round = harbor.received.size() + 1;
    Send(kHarbor, kMariner, L"own");
    Send(kMariner, kHarbor, L"theirs");
    ASSERT_TRUE(harbor.AwaitStatuses(round));
    ASSERT_TRUE(harbor.AwaitReceived(round));
    own = harbor.sent.back().msgid;
    theirs = harbor.received.back().msgid;
    unknown = User(L"nobody " + std::to_wstring(round));

    // All at once, so that the limits run side by side.
    struct Answers {
      std::atomic<int> count{0};
      std::atomic<int> code{1};
    };
    std::vector<std::shared_ptr<Answers>> answers;
    const auto run = [&](const auto& operation) {
      const auto answer = answers.emplace_back(std::make_shared<Answers>());
      operation.run([answer](const biz::ResultCode& result) {
        answer->code = result.code;
        ++answer->count;
      });
    };
    for (const auto& operation : operations) {
      link_->FailNext(operation.operation, fault.fault, 0);
      if (fault.fault != Fault::kBreak) {
        run(operation);
        continue;
      }
      // A break ends them all: one at a time.
      run(operation);
      Eventually([&] { return answers.back()->count > 0; }, operation.what);
      Eventually([&] { return Accounts()->GetAccount(kHarbor)->GetState() == biz::kAccountOnline; },
                 "the link is back");
    }
    if (fault.logout) Logout(kHarbor);
    for (std::size_t i = 0; i < answers.size(); ++i) {
      SCOPED_TRACE(std::string(operations[i].what) + ", " + fault.what);
      Eventually([&] { return answers[i]->count > 0; }, "no answer");
      EXPECT_EQ(answers[i]->code, fault.code);
    }
    for (const auto& answer : answers) EXPECT_EQ(answer->count, 1);
    if (fault.logout) Login(kHarbor);
    // What was never asked for has left its fault behind. Now nothing stands in the way.
    link_->Heal();
    answers.clear();
    for (const auto& operation : operations) run(operation);
    for (std::size_t i = 0; i < answers.size(); ++i) {
      SCOPED_TRACE(std::string(operations[i].what) + " after " + fault.what);
      Eventually([&] { return answers[i]->count > 0; }, "no answer");
      EXPECT_EQ(answers[i]->code, 0);
    }
  }
}

TEST_P(FaultsTest, WithoutALinkThingsFailAtOnce) {
  Witness harbor(kHarbor);
  link_->Shut(true);
  EXPECT_EQ(Done([&](auto done) { Accounts()->NetReConnect({kHarbor}, done); }).code,
            biz::kEngineNoLink);
  const auto chat = Chat(kHarbor, kMariner);
  EXPECT_EQ(Done([&](auto done) { chat->WithdrawMsg({1}, done); }).code, biz::kEngineNoLink);
  EXPECT_EQ(Answer<biz::IMMessagePage>([&](auto done) {
              chat->GetLocalHisMsg({.autoroam = true}, done);
            }).first.code,
            biz::kEngineNoLink);
}

// The pause before the next attempt is a minute here: only `at_once` gets the message through.
TEST_P(FaultsTest, AtOnceTriesTheLinkNow) {
  setup_.timeouts.first_retry = setup_.timeouts.longest_retry = std::chrono::minutes(1);
  setup_.timeouts.send = std::chrono::seconds(30);
  Again();
  Witness harbor(kHarbor);
  Witness mariner(kMariner);
  link_->Shut(true);
  Done([&](auto done) { Accounts()->NetReConnect({kHarbor}, done); });
  Send(kHarbor, kMariner, L"text");
  ASSERT_TRUE(harbor.AwaitStatuses(1));
  const std::int64_t msgid = harbor.statuses[0].msgid;
  for (const bool at_once : {false, true}) {
    EXPECT_EQ(Resend(Chat(kHarbor, kMariner), msgid, at_once), 0);
    ASSERT_TRUE(harbor.AwaitStatuses(at_once ? 3 : 2));
    EXPECT_EQ(harbor.statuses.back().code, biz::kEngineNoLink) << "the link is shut";
  }
  link_->Shut(false);
  EXPECT_EQ(Resend(Chat(kHarbor, kMariner), msgid, false), 0);
  ASSERT_TRUE(harbor.AwaitStatuses(4));
  EXPECT_EQ(harbor.statuses[3].code, biz::kEngineNoLink) << "nobody tries the link";
  EXPECT_EQ(Resend(Chat(kHarbor, kMariner), msgid, true), 0);
  ASSERT_TRUE(harbor.AwaitStatuses(5));
  EXPECT_EQ(harbor.statuses[4].code, 0);
  ASSERT_TRUE(mariner.AwaitReceived(1));
}

INSTANTIATE_TEST_SUITE_P(Servers, FaultsTest, testing::ValuesIn(ServerKinds()), NameOf);

}  // namespace
}  // namespace imsdk::test
