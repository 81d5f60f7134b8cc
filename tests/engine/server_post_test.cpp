// Messages between users through the server's link: delivery, devices, withdrawal, reports, typing.
#include <fstream>
#include <iterator>

#include "server_fixture.h"

namespace imsdk::test {
namespace {

class ServerPost : public ServerTest {
 protected:
  void SetUp() override { CreateAccounts({L"harbor", L"mariner", L"lighthouse"}); }
};

TEST_F(ServerPost, LoginTellsWhyNot) {
  using Proof = std::variant<link::Password, link::Token>;
  const struct {
    const wchar_t* nick;
    Proof proof;
    std::int32_t code;
  } cases[] = {
      {L"harbor", link::Password{L"pass"}, biz::kEngineOk},
      {L"harbor", link::Password{L"Pass"}, biz::kEngineWrongPassword},
      {L"nobody", link::Password{L"pass"}, biz::kEngineUnknownUser},
      {L"harbor", link::Token{TokenOf(*server_, Person(L"harbor"))}, biz::kEngineOk},
      {L"harbor", link::Token{TokenOf(*server_, Person(L"mariner"))}, biz::kEngineTokenExpired},
      {L"nobody", link::Token{L"x"}, biz::kEngineUnknownUser},
  };
  for (const auto& [nick, proof, code] : cases) {
    const auto answer = Await<link::Grant>([&, nick = nick, &proof = proof](auto done) {
      link_->Login({Person(nick), proof}, done);
    });
    EXPECT_EQ(answer.result.code, code);
    EXPECT_EQ(answer.reply.token.empty(), code != 0);
  }
  options_.token_life_ms = 0;
  Start();
  EXPECT_EQ(TryConnect(std::make_shared<Device>(), L"harbor", "desk", {}).result.code,
            biz::kEngineTokenExpired);
}

TEST_F(ServerPost, AMessageArrivesOnceAndKeepsWhatItIs) {
  const auto harbor = Connect(L"harbor");
  const auto mariner = Connect(L"mariner");
  link::Deliver deliver;
  deliver.message = {With(L"mariner"),     {}, 11, 500, 0, biz::kMsgShake, L"\U0001F514 bell",
                     {L"others", 1, 1, 1}, {}};
  const auto first = harbor->Ask(deliver);
  ASSERT_TRUE(first.result.ok());
  EXPECT_EQ(first.reply.step, link::Step::kArchived);
  deliver.message.body = L"another text";
  const auto again = harbor->Ask(deliver);
  EXPECT_TRUE(again.result.ok());
  EXPECT_EQ(again.reply.svrtime, first.reply.svrtime);
  EXPECT_EQ(again.reply.place, first.reply.place);
  harbor->Say(With(L"mariner"), 12);
  mariner->Settle();
  const auto got = mariner->All<link::Message>();
  ASSERT_EQ(MsgidsOf(got), (std::vector<std::int64_t>{11, 12}));
  EXPECT_EQ(got[0].cid, With(L"harbor"));
  EXPECT_EQ(got[0].from, Person(L"harbor"));
  EXPECT_EQ(got[0].msgtime, 500);
  EXPECT_EQ(got[0].msgtype, biz::kMsgShake);
  EXPECT_EQ(got[0].body, L"\U0001F514 bell");
  EXPECT_EQ(got[0].ext.others, L"others");
  EXPECT_EQ(got[0].ext.autochatmsg, 1);
  EXPECT_EQ(got[0].svrtime, first.reply.svrtime);
  EXPECT_EQ(got[0].place, first.reply.place);
  EXPECT_EQ(got[0].previous, 0);
  EXPECT_EQ(got[1].previous, 11);
  EXPECT_TRUE(harbor->All<link::Message>().empty()) << "the only device knows what it sent";
}

TEST_F(ServerPost, RefusalsOfADelivery) {
  ASSERT_TRUE(server_->Publish(VirtualKind::kSystem, Person(L"system"), Person(L"harbor"), L"hi"));
  const auto harbor = Connect(L"harbor");
  using biz::IMConversationID;
  const struct {
    IMConversationID cid;
    std::size_t letters;
    std::int32_t code;
  } cases[] = {
      {With(L"harbor"), 1, biz::kEngineOk},
      {With(L"mariner"), biz::kMaxBodyBytes, biz::kEngineOk},
      {With(L"mariner"), biz::kMaxBodyBytes + 1, biz::kEngineTooLarge},
      {With(L"nobody"), 1, biz::kEngineUnknownUser},
      {With(L"system"), 1, biz::kEngineUnknownUser},
      {IMConversationID(Person(L"system"), biz::kCIDSystem), 1, biz::kEngineUnknownUser},
      {IMConversationID(Person(L"mariner"), biz::kCIDSystem), 1, biz::kEngineUnknownUser},
      {IMConversationID(biz::IMTribeID{5}), 1, biz::kEngineRefused},
      {IMConversationID(), 1, biz::kEngineUnknownUser},
  };
  std::int64_t msgid = 0;
  for (const auto& [cid, letters, code] : cases) {
    EXPECT_EQ(harbor->Say(cid, ++msgid, std::wstring(letters, L'x')).result.code, code) << msgid;
  }
  EXPECT_EQ(Count("SELECT count(*) FROM messages"), 3);
}

TEST_F(ServerPost, OtherDevicesHearWhatTheAccountDoes) {
  const auto phone = Connect(L"harbor", "phone");
  const auto desk = Connect(L"harbor", "desk");
  const auto mariner = Connect(L"mariner");
  phone->Say(With(L"mariner"), 1);
  mariner->Say(With(L"harbor"), 2);
  EXPECT_TRUE(phone->Ask(link::MarkRead{With(L"mariner"), {2, 2}}).result.ok());
  EXPECT_TRUE(phone->Ask(link::MarkRead{With(L"mariner"), {3, 1}}).result.ok());
  EXPECT_TRUE(phone->Ask(link::MarkRead{With(L"mariner"), {1, 1}}).result.ok()) << "behind";
  for (const auto& device : {phone, desk}) device->Settle();
  EXPECT_EQ(phone->Msgids(), std::vector<std::int64_t>{2});
  EXPECT_EQ(desk->Msgids(), (std::vector<std::int64_t>{1, 2}));
  EXPECT_EQ(desk->All<link::Message>()[0].cid, With(L"mariner"));
  EXPECT_EQ(desk->All<link::Message>()[0].from, Person(L"harbor"));
  EXPECT_TRUE(phone->All<link::ReadElsewhere>().empty());
  const auto reads = desk->All<link::ReadElsewhere>();
  ASSERT_FALSE(reads.empty());
  EXPECT_EQ(reads.back().cid, With(L"mariner"));
  EXPECT_EQ(reads.back().upto.msgtime, 3);
  EXPECT_EQ(Count("SELECT count(*) FROM entries WHERE kind=3"), 1) << "one place a conversation";
}

TEST_F(ServerPost, AWithdrawalErasesAndIsTold) {
  options_.withdraw_limit_ms = 60'000;
  Start();
  const auto harbor = Connect(L"harbor");
  const auto mariner = Connect(L"mariner");
  harbor->Say(With(L"mariner"), 1, L"SECRETTEXT");
  harbor->Say(With(L"lighthouse"), 2);
  const struct {
    Device& who;
    biz::IMConversationID cid;
    std::int64_t msgid;
    std::int32_t code;
  } cases[] = {
      {*mariner, With(L"harbor"), 1, biz::kEngineNotFound},
      {*harbor, With(L"mariner"), 2, biz::kEngineNotFound},
      {*harbor, With(L"nobody"), 1, biz::kEngineNotFound},
      {*harbor, With(L"mariner"), 1, biz::kEngineOk},
      {*harbor, With(L"mariner"), 1, biz::kEngineOk},
  };
  for (const auto& [who, cid, msgid, code] : cases) {
    EXPECT_EQ(who.Ask(link::Withdraw{cid, msgid}).result.code, code);
  }
  for (const auto& device : {harbor, mariner}) {
    device->Settle();
    const auto told = device->All<link::Withdrawal>();
    ASSERT_EQ(told.size(), 1U);
    EXPECT_EQ(told[0].from, Person(L"harbor"));
    EXPECT_EQ(told[0].cid, With(device == harbor ? L"mariner" : L"harbor"));
    EXPECT_EQ(told[0].msgid, 1);
  }
  const auto history = mariner->Ask(link::GetHistory{.cid = With(L"harbor"), .count = 5});
  ASSERT_EQ(history.reply.msgs.size(), 1U);
  EXPECT_TRUE(history.reply.msgs[0].withdrawn);
  EXPECT_EQ(history.reply.msgs[0].body, L"");
  server_.reset();
  std::string file;
  for (const char* name : {"server.db", "server.db-wal"}) {
    std::ifstream in(folder_ / "server" / name, std::ios::binary);
    file.append(std::istreambuf_iterator<char>(in), {});
  }
  EXPECT_EQ(file.find("SECRETTEXT"), std::string::npos);

  options_.withdraw_limit_ms = -1;
  Start();
  const auto late = Connect(L"harbor");
  const auto refused = late->Ask(link::Withdraw{With(L"lighthouse"), 2});
  EXPECT_EQ(refused.result.code, biz::kEngineRefused);
  EXPECT_FALSE(refused.result.text.empty());
}

TEST_F(ServerPost, ReportsOfReadingReachTheSenderOnce) {
  const auto harbor = Connect(L"harbor");
  const auto mariner = Connect(L"mariner");
  for (std::int64_t msgid : {1, 2, 3}) harbor->Say(With(L"mariner"), msgid);
  mariner->Say(With(L"harbor"), 4);
  mariner->Ask(link::ReportRead{With(L"harbor"), {1, 2, 4, 99}});
  mariner->Ask(link::ReportRead{With(L"harbor"), {2, 3}});
  mariner->Ask(link::ReportRead{With(L"harbor"), {3}});
  harbor->Settle();
  const auto told = harbor->All<link::PeerRead>();
  ASSERT_EQ(told.size(), 2U);
  EXPECT_EQ(told[0].cid, With(L"mariner"));
  EXPECT_EQ(told[0].reader, Person(L"mariner"));
  EXPECT_EQ(told[0].msgids, (std::vector<std::int64_t>{1, 2}));
  EXPECT_EQ(told[1].msgids, std::vector<std::int64_t>{3});
  mariner->Settle();
  EXPECT_TRUE(mariner->All<link::PeerRead>().empty());
}

TEST_F(ServerPost, TypingIsForUsersWhoAreThere) {
  Tribe({L"harbor", L"mariner"});
  const auto harbor = Connect(L"harbor");
  const auto mariner = Connect(L"mariner");
  const auto lighthouse = Connect(L"lighthouse");
  EXPECT_TRUE(harbor->Ask(link::SendTyping{With(L"mariner"), biz::kInputTyping}).result.ok());
  EXPECT_EQ(harbor->Ask(link::SendTyping{kTribe, 1}).result.code, biz::kEngineRefused);
  EXPECT_EQ(harbor->Ask(link::SendTyping{With(L"nobody"), 1}).result.code, biz::kEngineUnknownUser);
  mariner->Until([](const Device& told) { return !told.typing.empty(); });
  lighthouse->Settle();
  EXPECT_EQ(mariner->typing[0], std::pair(With(L"harbor"), std::int32_t{biz::kInputTyping}));
  EXPECT_TRUE(lighthouse->typing.empty());
}

TEST_F(ServerPost, VirtualUsersSendAndAreOfOneKind) {
  const auto harbor = Connect(L"harbor");
  const auto system = VirtualKind::kSystem;
  const struct {
    VirtualKind kind;
    biz::IMUserID from, to;
    const wchar_t* text;
    bool good;
  } cases[] = {
      {system, Person(L"system"), Person(L"harbor"), L"one", true},
      {system, Person(L"system"), Person(L"harbor"), L"two", true},
      {VirtualKind::kSubscription, Person(L"system"), Person(L"harbor"), L"x", false},
      {system, Person(L"mariner"), Person(L"harbor"), L"x", false},
      {system, Person(L"system"), Person(L"nobody"), L"x", false},
      {system, Person(L"system"), Person(L"system"), L"x", false},
      {system, Person(L"system"), Person(L"harbor"), L"", false},
      {VirtualKind::kSubscription, Person(L"coast"), Person(L"harbor"), L"three", true},
  };
  for (const auto& [kind, from, to, text, good] : cases) {
    EXPECT_EQ(server_->Publish(kind, from, to, text), good);
  }
  harbor->Settle();
  const auto got = harbor->All<link::Message>();
  ASSERT_EQ(got.size(), 3U);
  EXPECT_EQ(got[1].cid, biz::IMConversationID(Person(L"system"), biz::kCIDSystem));
  EXPECT_EQ(got[2].cid, biz::IMConversationID(Person(L"coast"), biz::kCIDSubscribe));
  EXPECT_GT(got[1].msgid, got[0].msgid);
  EXPECT_EQ(got[1].previous, got[0].msgid);
  EXPECT_TRUE(TokenOf(*server_, Person(L"system")).empty());
}

TEST_F(ServerPost, ASessionThatIsOverAnswersThatAndHearsNothing) {
  const auto harbor = Connect(L"harbor");
  const auto mariner = Connect(L"mariner");
  EXPECT_TRUE(mariner->Ask(link::Logout{}).result.ok());
  harbor->Say(With(L"mariner"), 1);
  EXPECT_EQ(mariner->Say(With(L"harbor"), 2).result.code, biz::kEngineNotLoggedIn);
  EXPECT_EQ(mariner->Ask(link::GetHistory{}).result.code, biz::kEngineNotLoggedIn);
  EXPECT_EQ(mariner->Ask(link::Upload{}).result.code, biz::kEngineNotLoggedIn);
  EXPECT_EQ(mariner->Ask(link::Logout{}).result.code, biz::kEngineNotLoggedIn);
  server_.reset();
  EXPECT_TRUE(mariner->batches.empty());
  EXPECT_TRUE(mariner->ends.empty());
  ASSERT_EQ(harbor->ends.size(), 1U);
  EXPECT_EQ(harbor->ends[0].code, biz::kEngineNoLink);
}

}  // namespace
}  // namespace imsdk::test
