// The ways into a tribe: requests, invitations, passwords, the black list.
#include <thread>

#include "server_fixture.h"

namespace imsdk::test {
namespace {

constexpr biz::IMTribeID kId{77};

class ServerEntry : public ServerTest {
 protected:
  void SetUp() override {
    CreateAccounts({L"harbor", L"pilot", L"mariner", L"stranger"});
    Tribe({L"harbor", L"pilot", L"mariner"});
    harbor_ = Connect(L"harbor");
    pilot_ = Connect(L"pilot");
    stranger_ = Connect(L"stranger");
    harbor_->Ask(link::SetTribeLevel{kId, Person(L"pilot"), biz::kTribeManager});
    SetAuth(L"2");
  }
  void SetAuth(const wchar_t* auth) {
    EXPECT_TRUE(harbor_->Ask(link::ChangeTribe{kId, biz::kTribeKeyAuthType, auth}).result.ok());
  }
  Answered<biz::IMJoinedTribe> Join(const std::wstring& words, const std::wstring& password = {}) {
    return stranger_->Ask(link::JoinTribe{{kId, password, words}});
  }
  static std::vector<biz::IMTribeVerifyMsg> Messages(Device& device,
                                                     biz::IMTribeVerifyPage page = {}) {
    return device.Ask(link::GetVerifyMsgs{page}).reply.msgs;
  }
  static link::DecideVerify Decide(const biz::IMTribeVerifyMsg& msg, link::Decision decision,
                                   bool invitation = false) {
    return {{msg.fromid, kId, L"words", msg.msgid}, invitation, decision};
  }
  std::shared_ptr<Device> harbor_, pilot_, stranger_;
};

TEST_F(ServerEntry, ARequestIsDecidedOnceHoweverManyDecide) {
  for (int round = 0; round < 10; ++round) {
    const auto joined = Join(L"please");
    ASSERT_TRUE(joined.result.ok() && joined.reply.waiting);
    EXPECT_TRUE(Join(L"pretty please").reply.waiting) << "the same request";
    const auto seen = Messages(*pilot_);
    ASSERT_EQ(seen.size(), static_cast<std::size_t>(round + 1));
    EXPECT_EQ(seen.back().authinfo, L"pretty please");
    EXPECT_EQ(seen.back().type, biz::kVerifyJoinAsked);
    biz::ResultCode results[2];
    std::thread other(
        [&] { results[1] = pilot_->Ask(Decide(seen.back(), link::Decision::kRefuse)).result; });
    results[0] = harbor_->Ask(Decide(seen.back(), link::Decision::kAllow)).result;
    other.join();
    EXPECT_NE(results[0].ok(), results[1].ok()) << "exactly one";
    EXPECT_EQ(results[0].ok() ? results[1].subcode : results[0].subcode, biz::kTribeAlreadyDecided);
    const auto outcome = Messages(*stranger_).back();
    EXPECT_EQ(outcome.type, results[0].ok() ? biz::kVerifyJoinAllowed : biz::kVerifyJoinRefused);
    EXPECT_EQ(outcome.managerid, Person(results[0].ok() ? L"harbor" : L"pilot"));
    EXPECT_EQ(Messages(*harbor_).back().managerid, outcome.managerid);
    EXPECT_EQ(stranger_->Ask(link::GetTribeMembers{kId}).result.ok(), results[0].ok());
    SetMember(L"stranger", false);
  }
}

TEST_F(ServerEntry, MessagesAreAnnouncedKeptPagedAndDeletedForOneAlone) {
  Join(L"one");
  const auto first = Messages(*harbor_).at(0);
  harbor_->Settle();
  const auto told = harbor_->All<link::Message>().back();
  EXPECT_EQ(told.cid, biz::IMConversationID(Person(L"tribe"), biz::kCIDSystem));
  EXPECT_EQ(told.body, L"stranger asks to join pilots");
  EXPECT_EQ(told.ext.others,
            L"{\"tribeid\":\"77\",\"msgid\":\"" + std::to_wstring(first.msgid) + L"\",\"type\":1}");
  Start();
  harbor_ = Connect(L"harbor");
  pilot_ = Connect(L"pilot");
  stranger_ = Connect(L"stranger");
  EXPECT_EQ(Connect(L"mariner")->Ask(link::GetVerifyMsgs{}).reply.msgs.size(), 0U);
  EXPECT_TRUE(harbor_->Ask(Decide(first, link::Decision::kRefuse)).result.ok());
  Join(L"two");
  const auto both = Messages(*harbor_);
  ASSERT_EQ(both.size(), 2U);
  EXPECT_EQ(both[0].type, biz::kVerifyJoinRefused);
  const struct {
    biz::IMTribeVerifyPage page;
    std::vector<std::int64_t> msgids;
  } pages[] = {
      {{.count = 1}, {both[1].msgid}},
      {{.msgid = both[1].msgid, .gohistory = 1}, {both[0].msgid}},
      {{.msgid = both[0].msgid}, {both[1].msgid}},
      {{.btime = both[1].msgtime + 1}, {}},
      {{.etime = both[1].msgtime}, {both[0].msgid, both[1].msgid}},
  };
  for (const auto& [page, msgids] : pages) {
    std::vector<std::int64_t> got;
    for (const auto& msg : Messages(*harbor_, page)) got.push_back(msg.msgid);
    EXPECT_EQ(got, msgids);
  }
  const biz::IMTribeVerifyAction action{{}, kId, {}, both[1].msgid};
  EXPECT_TRUE(harbor_->Ask(link::DeleteVerify{action}).result.ok());
  EXPECT_EQ(Messages(*harbor_).size(), 1U);
  EXPECT_EQ(Messages(*pilot_).size(), 2U);
  EXPECT_EQ(stranger_->Ask(link::DeleteVerify{action}).result.subcode, biz::kTribeNoSuchRequest);
  EXPECT_TRUE(pilot_->Ask(Decide(both[1], link::Decision::kAllow)).result.ok()) << "still open";
}

TEST_F(ServerEntry, WhoIsBlackNeitherAsksNorIsInvited) {
  Join(L"one");
  EXPECT_TRUE(
      harbor_->Ask(Decide(Messages(*harbor_).at(0), link::Decision::kRefuseAndBlack)).result.ok());
  const auto list = harbor_->Ask(link::GetTribeBlack{kId}).reply.list;
  ASSERT_EQ(list.size(), 1U);
  EXPECT_EQ(list[0].userid, Person(L"stranger"));
  EXPECT_GT(list[0].addtime, 0);
  EXPECT_EQ(Join(L"two").result.subcode, biz::kTribeBlackListed);
  const link::InviteToTribe invite{{kId, {Person(L"stranger")}, L"come"}};
  EXPECT_EQ(harbor_->Ask(invite).result.subcode, biz::kTribeBlackListed);
  harbor_->Ask(link::SetTribeBlack{kId, Person(L"stranger"), false});
  SetAuth(L"3");
  EXPECT_TRUE(harbor_->Ask(invite).result.ok());
  const auto invited = Messages(*stranger_).back();
  EXPECT_EQ(invited.type, biz::kVerifyInvited);
  EXPECT_EQ(invited.fromid, Person(L"harbor"));
  EXPECT_EQ(pilot_->Ask(Decide(invited, link::Decision::kAllow, true)).result.subcode,
            biz::kTribeNoSuchRequest);
  EXPECT_TRUE(stranger_->Ask(Decide(invited, link::Decision::kAllow, true)).result.ok());
  EXPECT_EQ(stranger_->Ask(Decide(invited, link::Decision::kAllow, true)).result.subcode,
            biz::kTribeAlreadyDecided);
  const auto outcome = Messages(*harbor_).back();
  EXPECT_EQ(outcome.type, biz::kVerifyInviteAccepted);
  EXPECT_EQ(outcome.managerid, Person(L"stranger"));
}

TEST_F(ServerEntry, PasswordsAreTriedSlowly) {
  SetAuth(L"1");
  EXPECT_EQ(Join({}).result.subcode, biz::kTribeWrongPassword) << "none is set";
  harbor_->Ask(link::ChangeTribe{kId, biz::kTribeKeyJoinPassword, L"tide"});
  EXPECT_EQ(harbor_->Ask(link::GetJoinPassword{kId}).reply.str, L"tide");
  for (int i = 0; i < 4; ++i) EXPECT_EQ(Join({}, L"x").result.subcode, biz::kTribeWrongPassword);
  EXPECT_EQ(Join({}, L"tide").result.subcode, biz::kTribeTooManyTries);
  std::this_thread::sleep_for(std::chrono::milliseconds(1100));
  EXPECT_TRUE(Join({}, L"tide").result.ok());
}

}  // namespace
}  // namespace imsdk::test
