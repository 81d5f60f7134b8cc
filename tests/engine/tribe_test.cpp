// Conversations of tribes.
#include "device.h"
#include "embedded/embedded_server.h"
#include "embedded/tribe_desk.h"
#include "far_server.h"

namespace imsdk::test {
namespace {

using Texts = std::vector<std::wstring>;

class TribeTest : public PeersTest {
 protected:
  void SetUp() override {
    PeersTest::SetUp();
    CreateAccount(kNavigator);
    server_->CreateTribe({kTribe.tribe, L"Harbour", kHarbor, {kMariner}});
    for (const auto& user : {kHarbor, kMariner}) {
      Eventually([&] { return static_cast<bool>(Chat(user, kTribe)); }, "the tribe is known");
    }
  }

  const biz::IMUserID kNavigator = User(L"navigator");
  const biz::IMConversationID kTribe{biz::IMTribeID{10001}};
};

TEST_P(TribeTest, NamesOfTribesAreChecked) {
  const auto tribes = Accounts()->GetAccount(kHarbor)->GetIMTribeMgr();
  const std::pair<std::wstring, std::int32_t> rows[] = {
      {L"", biz::kEngineEmpty},
      {std::wstring(129, L'x'), biz::kEngineTooLarge},
      {std::wstring(128, L'x'), biz::kEngineOk},
  };
  for (const auto& [name, code] : rows) {
    const biz::IMTribeText request{kTribe.tribe, name};
    // The server checks them, where it can have them changed.
    EXPECT_EQ(Done([&](auto done) { tribes->SetTribeName(request, done); }).code,
              GetParam().name == "Embedded" ? code : biz::kEngineUnsupported);
  }
}

TEST_P(TribeTest, SentReadWithdrawnByTheSameCode) {
  Device second(server_->Link());
  second.Login(kMariner);
  Witness harbor(kHarbor);
  Witness mariner(kMariner);
  EXPECT_FALSE(Chat(kHarbor, biz::IMConversationID(biz::IMTribeID{7}))) << "not one of its own";
  EXPECT_FALSE(Chat(kHarbor, biz::IMConversationID(biz::IMTribeID{0})));
  const auto ours = Chat(kHarbor, kTribe);
  const auto theirs = Chat(kMariner, kTribe);
  ASSERT_EQ(SendItems(ours, {Text(L"low tide at four")}), 0);
  ASSERT_EQ(SendItems(theirs, {Text(L"aye")}), 0);
  const auto all = [](const Witness& seen) {
    return seen.tribe_received.size() == 1 && seen.tribe_sent.size() == 1 &&
           seen.tribe_statuses.size() == 1;
  };
  ASSERT_TRUE(harbor.Await(all));
  ASSERT_TRUE(mariner.Await(all));
  const biz::IMMessage& in = mariner.tribe_received[0];
  EXPECT_EQ(in.msgbody, L"low tide at four");
  EXPECT_EQ(in.cid, kTribe);
  EXPECT_EQ(in.fromid, kHarbor);
  EXPECT_TRUE(in.toid.empty());
  EXPECT_EQ(harbor.tribe_statuses[0].code, 0);
  EXPECT_TRUE(harbor.received.empty() && harbor.sent.empty()) << "no event of single chats";
  for (const auto& chat : {ours, theirs}) {
    EXPECT_EQ(Bodies(LocalPage(chat).msgs), (Texts{L"low tide at four", L"aye"}));
    EXPECT_EQ(Unread(chat), 1);
    biz::IMSearchRequest words;
    words.keywords = {L"tide"};
    EXPECT_EQ(Answer<biz::IMSearchPage>([&](auto done) {
                chat->SearchMsg(words, done);
              }).second.msgs.size(),
              1U);
  }
  const auto tribes = Accounts()->GetAccount(kHarbor)->GetIMTribeChatMgr();
  ASSERT_EQ(Unreads(tribes).size(), 1U);
  EXPECT_EQ(Unreads(tribes)[0].count, 1);
  EXPECT_TRUE(Unreads(Chats(kHarbor)).empty());

  // Read here, read on the other device.
  const auto there = [&](std::int32_t unread) {
    const auto chat = Chat(kMariner, kTribe, second.accounts());
    return chat && Unread(chat) == unread;
  };
  Eventually([&] { return there(1); }, "there too");
  EXPECT_TRUE(Done([&](auto done) { theirs->SetMsgRead({}, done); }).ok());
  Eventually([&] { return there(0); }, "follows");

  const std::int64_t msgid = in.msgid;
  EXPECT_EQ(Done([&](auto done) { theirs->WithdrawMsg({msgid}, done); }).code, biz::kEngineNotFound)
      << "somebody else's";
  EXPECT_TRUE(Done([&](auto done) { ours->WithdrawMsg({msgid}, done); }).ok());
  mariner.Await([](const Witness& seen) { return seen.tribe_withdrawn.size() == 1; });
  EXPECT_EQ(Bodies(LocalPage(theirs).msgs), (Texts{L"", L"aye"}));

  // What tribes do not have.
  biz::IMBodyItem typing;
  typing.type = biz::kMsgInputStatus;
  typing.value = L"1";
  EXPECT_EQ(SendItems(ours, {typing}), biz::kEngineRefused);
  EXPECT_EQ(Done([&](auto done) { ours->ShieldAutoReply({true}, done); }).code,
            biz::kEngineRefused);
}

TEST_P(TribeTest, AfterARestart) {
  Witness mariner(kMariner);
  SendItems(Chat(kHarbor, kTribe), {Text(L"1")});
  ASSERT_TRUE(mariner.Await([](const Witness& seen) { return seen.tribe_received.size() == 1; }));
  Again();
  EXPECT_EQ(Unread(Chat(kMariner, kTribe)), 1);
  EXPECT_EQ(Bodies(LocalPage(Chat(kMariner, kTribe)).msgs), Texts{L"1"});
  Logout(kMariner);
  Witness harbor(kHarbor);
  SendItems(Chat(kHarbor, kTribe), {Text(L"2")});
  ASSERT_TRUE(harbor.Await([](const Witness& seen) { return seen.tribe_statuses.size() == 1; }));
  Witness later(kMariner);
  Login(kMariner);
  ASSERT_TRUE(later.Await([](const Witness& seen) { return seen.tribe_received.size() == 1; }));
  EXPECT_EQ(Bodies(later.tribe_received), Texts{L"2"});
}

INSTANTIATE_TEST_SUITE_P(Servers, TribeTest, testing::ValuesIn(ServerKinds()), NameOf);

// The embedded server's own members and history.
class EmbeddedTribeTest : public TribeTest {};

TEST_P(EmbeddedTribeTest, WhoeverComesBackMissesNothingThatMayBeSeen) {
  auto& server = static_cast<embedded::Server&>(*server_);
  Witness harbor(kHarbor);
  std::size_t said = 0;
  const auto say = [&](std::size_t count) {
    for (const std::size_t end = said + count; said < end; ++said) {
      SendItems(Chat(kHarbor, kTribe), {Text(std::to_wstring(said))});
    }
    ASSERT_TRUE(harbor.Await([&](const auto& seen) { return seen.tribe_statuses.size() == said; }));
  };
  const auto all = [&] { return LocalPage(Chat(kMariner, kTribe), {.count = 1000}).msgs.size(); };
  server.Change(embedded::SetOpenHistory{kTribe.tribe, true});
  say(5);
  Eventually([&] { return all() == said; }, "the beginning");
  for (const std::size_t absent : {10U, 300U}) {  // less than one fetch, and more
    server.Change(embedded::SetMember{kTribe.tribe, kMariner, false});
    say(absent);
    server.Change(embedded::SetMember{kTribe.tribe, kMariner, true});
    say(1);
    Eventually([&] { return all() == said; }, "what was said meanwhile");
  }
}

INSTANTIATE_TEST_SUITE_P(Servers, EmbeddedTribeTest, testing::Values(ServerKinds().at(0)), NameOf);

// Joining is asked for at the server here.
class FarTribeTest : public TribeTest {};

TEST_P(FarTribeTest, JoiningFetchesTheNewestHistory) {
  auto& server = static_cast<FarServer&>(*server_);
  Habits habits;
  habits.shows_past = true;
  server.Change(habits);
  Witness harbor(kHarbor);
  for (int i = 0; i < 250; ++i) SendItems(Chat(kHarbor, kTribe), {Text(std::to_wstring(i))});
  ASSERT_TRUE(harbor.Await([](const Witness& seen) { return seen.tribe_statuses.size() == 250; }));
  Login(kNavigator);
  Witness navigator(kNavigator);
  EXPECT_FALSE(Chat(kNavigator, kTribe));
  server.Join(kTribe.tribe, kNavigator);
  Eventually([&] { return static_cast<bool>(Chat(kNavigator, kTribe)); }, "a tribe more");
  const auto chat = Chat(kNavigator, kTribe);
  Eventually([&] { return LocalPage(chat, {.count = 1000}).msgs.size() == 200; }, "the newest");
  EXPECT_EQ(Unread(chat), 0) << "history is not new";
  SendItems(Chat(kHarbor, kTribe), {Text(L"welcome")});
  ASSERT_TRUE(navigator.Await([](const Witness& seen) { return !seen.tribe_received.empty(); }));
  EXPECT_EQ(Bodies(navigator.tribe_received), Texts{L"welcome"});
  EXPECT_EQ(LocalPage(chat, {.count = 1000, .autoroam = true}).msgs.size(), 251U);

  server.Leave(kTribe.tribe, kNavigator);
  Witness outsider(kNavigator);
  SendItems(chat, {Text(L"still here?")});
  ASSERT_TRUE(outsider.Await([](const Witness& seen) { return seen.tribe_statuses.size() == 1; }));
  EXPECT_EQ(outsider.tribe_statuses[0].code, biz::kEngineRefused);
}

INSTANTIATE_TEST_SUITE_P(Servers, FarTribeTest, testing::Values(ServerKinds().at(1)), NameOf);

}  // namespace
}  // namespace imsdk::test
