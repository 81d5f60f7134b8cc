// Messages between two accounts that are well.
#include "engine_fixture.h"
#include "far_server.h"

namespace imsdk::test {
namespace {

const biz::IMUserID kHarbor = User(L"harbor");
const biz::IMUserID kMariner = User(L"mariner");

class ChatTest : public ServerTest {
 protected:
  void SetUp() override {
    ServerTest::SetUp();
    CreateAccount(kHarbor);
    CreateAccount(kMariner);
    ASSERT_TRUE(Login(kHarbor).result.ok());
  }
  void Restart() {
    Begin();
    ASSERT_TRUE(Login(kHarbor).result.ok());
  }
};

TEST_P(ChatTest, BothSidesSeeTheSameMessage) {
  Login(kMariner);
  Witness harbor(kHarbor);
  Witness mariner(kMariner);
  const std::wstring text =
      L"two\nlines \U0001F6A2 \u05E9\u05DC\u05D5\u05DD <img onerror=x> ' \" \\";
  biz::IMSendRequest reply;
  reply.autoreply = true;
  ASSERT_EQ(SendItems(Chat(kHarbor, kMariner), {Text(text)}, reply), 0);
  ASSERT_TRUE(harbor.AwaitStatuses(1));
  ASSERT_TRUE(mariner.AwaitReceived(1));
  EXPECT_EQ(harbor.order, (std::vector<std::string>{"send", "status"}));
  EXPECT_EQ(mariner.order, std::vector<std::string>{"new"});

  const biz::IMMessage& out = harbor.sent.front();
  const biz::IMMessage& in = mariner.received.front();
  EXPECT_EQ(in.msgid, out.msgid);
  EXPECT_EQ(in.msgtime, out.msgtime);
  EXPECT_EQ(in.msgbody, text);
  EXPECT_EQ(in.cid, biz::IMConversationID(kHarbor));
  EXPECT_EQ(in.fromid, kHarbor);
  EXPECT_EQ(in.toid, kMariner);
  EXPECT_EQ(in.msgstatus, biz::kMsgReceived);
  EXPECT_EQ(in.readflag, biz::kMsgUnread);
  EXPECT_EQ(in.extinfo.autochatmsg, 1);
  if (GetParam().rude) {
    EXPECT_EQ(harbor.statuses.front().svrtime, 0);
    static_cast<FarServer&>(*server_).TellTimes();
    Eventually([&] { return History(kHarbor, kMariner).msgs.at(0).svrtime != 0; }, "told later");
  } else {
    EXPECT_EQ(in.svrtime, harbor.statuses.front().svrtime);
  }
  EXPECT_EQ(out.cid, biz::IMConversationID(kMariner));
  EXPECT_EQ(out.msgstatus, biz::kMsgSending);

  const auto page = History(kHarbor, kMariner);
  ASSERT_EQ(page.msgs.size(), 1U);
  EXPECT_EQ(page.msgs.front().msgstatus, biz::kMsgSent);
  EXPECT_EQ(page.msgs.front().svrtime, in.svrtime);
}

TEST_P(ChatTest, OfflineMessagesWaitAndComeInOrder) {
  constexpr int kCount = 600;  // more than one batch
  Witness harbor(kHarbor);
  for (int i = 0; i < kCount; ++i) Send(kHarbor, kMariner, std::to_wstring(i));
  ASSERT_TRUE(harbor.AwaitStatuses(kCount));
  Restart();
  Witness mariner(kMariner);
  Login(kMariner);
  ASSERT_TRUE(mariner.AwaitReceived(kCount));
  EXPECT_EQ(mariner.offline.size(), std::size_t{kCount});
  for (int i = 0; i < kCount; ++i) {
    EXPECT_EQ(mariner.offline[static_cast<std::size_t>(i)].msgbody, std::to_wstring(i));
  }
  EXPECT_FALSE(mariner.more.back());
  EXPECT_TRUE(mariner.more.front());
  EXPECT_EQ(Unread(Chat(kMariner, kHarbor)), kCount);

  Logout(kMariner);
  Login(kMariner);
  Send(kHarbor, kMariner, L"live");
  ASSERT_TRUE(mariner.AwaitReceived(kCount + 1));
  EXPECT_EQ(mariner.received.size(), std::size_t{kCount + 1}) << "nothing comes twice";
  EXPECT_EQ(mariner.order.back(), "new");
}

TEST_P(ChatTest, UnreadCountsFallWhenReadAndSurviveARestart) {
  Login(kMariner);
  Witness mariner(kMariner);
  for (const auto* text : {L"1", L"2", L"3"}) Send(kHarbor, kMariner, text);
  ASSERT_TRUE(mariner.AwaitReceived(3));
  auto chat = Chat(kMariner, kHarbor);
  EXPECT_EQ(Unread(chat), 3);
  EXPECT_EQ(Bodies(NewMessages(chat).msgs), (std::vector<std::wstring>{L"1", L"2", L"3"}));
  EXPECT_EQ(Unread(chat), 3) << "fetching reads nothing";

  Restart();
  Login(kMariner);
  chat = Chat(kMariner, kHarbor);
  EXPECT_EQ(Bodies(NewMessages(chat).msgs), (std::vector<std::wstring>{L"1", L"2", L"3"}));
  const auto read = [&] {
    return Wait<biz::ResultCode>([&](auto done) { chat->SetMsgRead({}, done); });
  };
  EXPECT_TRUE(read().ok());
  EXPECT_EQ(Unread(chat), 0);
  EXPECT_TRUE(NewMessages(chat).msgs.empty());
  EXPECT_TRUE(read().ok()) << "nothing to read is fine";

  Restart();
  Login(kMariner);
  EXPECT_EQ(Unread(Chat(kMariner, kHarbor)), 0);
  for (const auto& message : History(kMariner, kHarbor).msgs) {
    EXPECT_EQ(message.readflag, biz::kMsgRead);
  }
}

TEST_P(ChatTest, ConversationsWithTheNewestFirst) {
  for (const auto* nick : {L"a", L"b", L"c"}) CreateAccount(User(nick));
  Witness harbor(kHarbor);
  for (const auto* nick : {L"a", L"b", L"c", L"a"}) {
    Send(kHarbor, User(nick), L"hello");
    harbor.AwaitStatuses(harbor.statuses.size() + 1);
  }
  Chat(kHarbor, User(L"never written to"));
  const auto names = [] {
    std::wstring nicks;
    const auto account = Accounts()->GetAccount(kHarbor);
    for (const auto& entry : Unreads(account->GetIMSingleChatMgr())) {
      nicks += entry.cid.user.nick;
    }
    return nicks;
  };
  EXPECT_EQ(names(), L"acb");
  Restart();
  EXPECT_EQ(names(), L"acb");
}

TEST_P(ChatTest, ToOneselfAndToNobody) {
  Witness harbor(kHarbor);
  EXPECT_EQ(Send(kHarbor, kHarbor, L"note"), 0);
  ASSERT_TRUE(harbor.AwaitStatuses(1));
  EXPECT_EQ(harbor.statuses[0].code, 0);
  EXPECT_EQ(Unread(Chat(kHarbor, kHarbor)), 0);

  EXPECT_EQ(Send(kHarbor, User(L"nobody"), L"?"), 0) << "taken, the server decides";
  ASSERT_TRUE(harbor.AwaitStatuses(2));
  EXPECT_EQ(harbor.statuses[1].code, biz::kEngineUnknownUser);
  EXPECT_EQ(History(kHarbor, User(L"nobody")).msgs.at(0).msgstatus, biz::kMsgFailed);
  EXPECT_EQ(harbor.received.size(), 0U);

  EXPECT_FALSE(Chat(kHarbor, {L"", L"mariner"}));
  EXPECT_FALSE(Chat(kHarbor, User(std::wstring(129, L'\U0001F600')))) << "258 code units";
  EXPECT_TRUE(Chat(kHarbor, User(std::wstring(128, L'\U0001F600'))));
}

TEST_P(ChatTest, TheCacheOfNewMessagesIsBounded) {
  constexpr int kCount = 2100;
  Login(kMariner);
  Witness mariner(kMariner);
  for (int i = 0; i < kCount; ++i) Send(kHarbor, kMariner, std::to_wstring(i));
  ASSERT_TRUE(mariner.AwaitReceived(kCount));
  const auto chat = Chat(kMariner, kHarbor);
  EXPECT_EQ(Unread(chat), kCount);
  biz::IMPageRequest request;
  request.count = 10;
  request.gohistory = true;
  auto page = NewMessages(chat, request);
  EXPECT_EQ(page.msgs.back().msgbody, std::to_wstring(kCount - 1));
  EXPECT_TRUE(page.outofcache) << "unread messages were dropped";
  int cached = 0;
  while (!page.msgs.empty()) {
    cached += static_cast<int>(page.msgs.size());
    request.msgtime = page.msgs.front().msgtime;
    request.msgid = page.msgs.front().msgid;
    page = NewMessages(chat, request);
  }
  EXPECT_EQ(cached, 2000);
}

INSTANTIATE_TEST_SUITE_P(Servers, ChatTest, testing::ValuesIn(ServerKinds()), NameOf);

}  // namespace
}  // namespace imsdk::test
