// What gets lost on the way from the server, comes late or comes twice.
#include <algorithm>
#include <set>

#include "device.h"
#include "far_server.h"

namespace imsdk::test {
namespace {

using Texts = std::vector<std::wstring>;

// Harbor hears only what the test lets through.
class HolesTest : public PeersTest {
 protected:
  FarServer& server() { return static_cast<FarServer&>(*server_); }

  // Sends texts from mariner to harbor, heard or not.
  void Say(const Texts& texts, bool heard) {
    Witness mariner(kMariner);
    server().SetDeaf(kHarbor, !heard);
    for (const auto& text : texts) Send(kMariner, kHarbor, text);
    ASSERT_TRUE(mariner.AwaitStatuses(texts.size()));
  }
  // What is kept back is forgotten, as a server does that loses its place in a stream.
  static std::multiset<std::wstring> Heard(const Witness& witness) {
    const Texts bodies = Bodies(witness.received);
    return {bodies.begin(), bodies.end()};
  }
};

TEST_P(HolesTest, AHoleIsNoticedAndFilled) {
  Witness harbor(kHarbor);
  Say({L"1", L"2"}, true);
  Say({L"3", L"4", L"5"}, false);
  Say({L"6"}, true);
  ASSERT_TRUE(harbor.AwaitReceived(6));
  const auto chat = Chat(kHarbor, kMariner);
  EXPECT_EQ(Bodies(LocalPage(chat, {.count = 100}).msgs),
            (Texts{L"1", L"2", L"3", L"4", L"5", L"6"}));
  EXPECT_EQ(Unread(chat), 6);
  // They come after all, in odd order, and are known.
  server().TellLate(kHarbor);
  Say({L"7"}, true);
  ASSERT_TRUE(harbor.AwaitReceived(7));
  EXPECT_EQ(Heard(harbor).size(), 7U) << "nothing is told of twice";
  EXPECT_EQ(Unread(chat), 7);
}

TEST_P(HolesTest, AHoleIsFilledWithTheNextLinkToo) {
  Witness harbor(kHarbor);
  Say({L"1"}, true);
  Say({L"2"}, false);
  link_->FailNext(Operation::kGetHistory, Fault::kDropAnswer);
  Say({L"3"}, true);
  ASSERT_TRUE(harbor.AwaitReceived(2));
  Eventually([&] { return link_->Asked(Operation::kGetHistory) == 1; }, "asked for in vain");
  EXPECT_EQ(Bodies(History(kHarbor, kMariner).msgs), Texts{L"3"}) << "behind the hole";
  Again();
  Eventually([&] { return History(kHarbor, kMariner).msgs.size() == 3; }, "filled");
}

TEST_P(HolesTest, WhatTheServerRefusesStaysAHole) {
  Witness harbor(kHarbor);
  Say({L"1"}, true);
  Say({L"2"}, false);
  const auto chats = Chats(kHarbor);
  ASSERT_TRUE(Done([&](auto done) { chats->SetRoamStatus({biz::kRoamingOff}, done); }).ok());
  Say({L"3"}, true);
  ASSERT_TRUE(harbor.AwaitReceived(2));
  const int asked = link_->Asked(Operation::kGetHistory);
  EXPECT_EQ(Bodies(History(kHarbor, kMariner).msgs), Texts{L"3"});
  Done([&](auto done) { Accounts()->NetReConnect({kHarbor}, done); });
  Eventually([&] { return link_->Asked(Operation::kGetHistory) > asked; }, "asked for again");
  EXPECT_EQ(Bodies(History(kHarbor, kMariner).msgs), Texts{L"3"}) << "not as if nothing lacked";
}

TEST_P(HolesTest, WhatCannotBeHadIsAskedForOnce) {
  Witness harbor(kHarbor);
  Say({L"1"}, true);
  link::Message odd;
  odd.cid = biz::IMConversationID(kHarbor);
  odd.from = kMariner;
  odd.msgid = std::int64_t{1} << 62;
  odd.msgtime = 1;  // a clock that stands still
  odd.previous = odd.msgid - 5;
  odd.body = L"odd";
  server().Seed({odd}, true);
  ASSERT_TRUE(harbor.AwaitReceived(2));
  Eventually([&] { return History(kHarbor, kMariner).msgs.size() == 2; }, "nothing is missing");
  const int asked = server().HistoryAsked();
  EXPECT_EQ(asked, 2) << "once by each of the two accounts";
  Done([&](auto done) { Accounts()->NetReConnect({kHarbor}, done); });
  Say({L"2"}, true);
  ASSERT_TRUE(harbor.AwaitReceived(3));
  EXPECT_EQ(server().HistoryAsked(), asked);
}

TEST_P(HolesTest, AForgottenPosition) {
  Witness before(kHarbor);
  Say({L"1", L"2"}, true);
  ASSERT_TRUE(before.AwaitReceived(2));
  Logout(kHarbor);
  Texts missed;
  for (int i = 0; i < 450; ++i) missed.push_back(L"missed " + std::to_wstring(i));
  Say(missed, false);
  server().SetDeaf(kHarbor, false);
  server().ForgetPositions();
  Witness harbor(kHarbor);
  Login(kHarbor);
  ASSERT_TRUE(harbor.AwaitReceived(450));
  const auto chat = Chat(kHarbor, kMariner);
  Eventually([&] { return LocalPage(chat, {.count = 1000}).msgs.size() == 452; }, "all of it");
  EXPECT_EQ(Unread(chat), 452);
  const auto heard = Heard(harbor);
  EXPECT_EQ(std::set(heard.begin(), heard.end()).size(), heard.size()) << "each once";
  // And it goes on from there.
  Say({L"3"}, true);
  ASSERT_TRUE(harbor.AwaitReceived(451));
  Again();
  EXPECT_EQ(LocalPage(Chat(kHarbor, kMariner), {.count = 1000}).msgs.size(), 453U);
}

TEST_P(HolesTest, OddOrderAndRepetitions) {
  Habits habits;
  habits.shuffles = habits.repeats = habits.same_place = true;
  server().Change(habits);
  Logout(kHarbor);
  Texts texts;
  for (int i = 0; i < 250; ++i) texts.push_back(std::to_wstring(i));
  Say(texts, true);
  Witness harbor(kHarbor);
  Login(kHarbor);
  ASSERT_TRUE(harbor.AwaitReceived(250));
  Say({L"last"}, true);
  ASSERT_TRUE(harbor.AwaitReceived(251));
  texts.push_back(L"last");
  EXPECT_EQ(Bodies(LocalPage(Chat(kHarbor, kMariner), {.count = 1000}).msgs), texts)
      << "in the order of time";
  EXPECT_EQ(Heard(harbor), (std::multiset<std::wstring>(texts.begin(), texts.end())));
  EXPECT_EQ(server().HistoryAsked(), 0) << "nothing was missing";
}

// What a server cannot do is refused, by name.
TEST_P(HolesTest, WhatTheServerCannotDo) {
  Witness harbor(kHarbor);
  Say({L"1"}, true);
  ASSERT_TRUE(harbor.AwaitReceived(1));
  Habits habits;
  habits.capabilities.withdrawal = link::Capabilities::Withdrawal::kNone;
  habits.capabilities.roaming_switch = false;
  habits.capabilities.receipts = false;
  habits.capabilities.typing = false;
  server().Change(habits);
  Done([&](auto done) { Accounts()->NetReConnect({kHarbor}, done); });
  const auto chat = Chat(kHarbor, kMariner);
  const auto chats = Chats(kHarbor);
  biz::IMBodyItem typing;
  typing.type = biz::kMsgInputStatus;
  typing.value = L"1";
  const std::int32_t codes[] = {
      SendItems(chat, {typing}),
      Done([&](auto done) { chat->WithdrawMsg({1}, done); }).code,
      Done([&](auto done) { chat->SetFlagsPeerMsgReaded({}, done); }).code,
      Done([&](auto done) { chats->SetRoamStatus({1}, done); }).code,
      Answer<biz::IMRoamStatus>([&](auto done) { chats->GetRoamStatus({}, done); }).first.code,
  };
  for (const std::int32_t code : codes) EXPECT_EQ(code, biz::kEngineUnsupported);
  EXPECT_FALSE(Done([&](auto done) { chat->WithdrawMsg({1}, done); }).text.empty());
}

INSTANTIATE_TEST_SUITE_P(Servers, HolesTest, testing::Values(ServerKinds().at(1)), NameOf);

}  // namespace
}  // namespace imsdk::test
