// Virtual users, window shakes, notes, shielded replies, forwarded messages.
#include "device.h"

namespace imsdk::test {
namespace {

using Texts = std::vector<std::wstring>;

class VirtualTest : public PeersTest {};

TEST_P(VirtualTest, MessagesOfVirtualUsers) {
  const auto system = User(L"system");
  const auto news = User(L"news");
  const auto chats = Accounts()->GetAccount(kHarbor)->GetIMVirtualChatMgr();
  EXPECT_FALSE(chats->GetConversation(biz::IMConversationID(system, biz::kCIDSubscribe)));
  const std::wstring large(2 << 20, L'x');
  const struct {
    VirtualKind kind;
    biz::IMUserID from, to;
    std::wstring text;
    bool sent;
  } cases[] = {
      {VirtualKind::kSystem, system, kHarbor, L"welcome", true},
      {VirtualKind::kSubscription, news, kHarbor, L"fog", true},
      {VirtualKind::kSubscription, system, kHarbor, L"another kind", false},
      {VirtualKind::kSystem, kMariner, kHarbor, L"an account", false},
      {VirtualKind::kSystem, system, news, L"to a virtual user", false},
      {VirtualKind::kSystem, system, User(L"nobody"), L"to nobody", false},
      {VirtualKind::kSystem, system, kHarbor, L"", false},
      {VirtualKind::kSystem, system, kHarbor, large, false},
      {VirtualKind{0}, User(L"x"), kHarbor, L"no kind", false},
  };
  Witness harbor(kHarbor);
  for (const auto& one : cases) {
    EXPECT_EQ(server_->Publish(one.kind, one.from, one.to, one.text), one.sent);
  }
  harbor.Await([](const Witness& w) { return !w.system.empty() && !w.subscribed.empty(); });
  EXPECT_EQ(Bodies(harbor.system), Texts{L"welcome"});
  EXPECT_EQ(Bodies(harbor.subscribed), Texts{L"fog"});
  EXPECT_TRUE(harbor.received.empty());
  EXPECT_FALSE(CreateAccount(system));
  EXPECT_EQ(TokenOf(*server_, system), L"");
  EXPECT_EQ(Login(system, L"").result.code, biz::kEngineUnknownUser);

  const auto list = Unreads(chats);
  ASSERT_EQ(list.size(), 2U);
  EXPECT_EQ(list[0].cid, biz::IMConversationID(news, biz::kCIDSubscribe));
  EXPECT_EQ(list[0].count, 1);
  const auto singles = Chats(kHarbor);
  EXPECT_TRUE(Unreads(singles).empty());
  const auto chat = chats->GetConversation(biz::IMConversationID(system, biz::kCIDSubscribe));
  ASSERT_TRUE(chat);
  EXPECT_EQ(Unread(chat), 1);
  biz::IMPageRequest roaming;
  roaming.autoroam = true;
  const auto page =
      Answer<biz::IMMessagePage>([&](auto done) { chat->GetLocalHisMsg(roaming, done); });
  EXPECT_EQ(page.first.code, 0) << "there is nothing to roam";
  EXPECT_EQ(Bodies(page.second.msgs), Texts{L"welcome"});
  EXPECT_TRUE(Done([&](auto done) { chat->SetMsgRead({}, done); }).ok());
  EXPECT_EQ(Unread(chat), 0);

  // What needs a peer.
  const std::int64_t msgid = harbor.system[0].msgid;
  EXPECT_EQ(SendItems(chat, {Text(L"hi")}, {}), biz::kEngineRefused);
  EXPECT_EQ(Resend(chat, msgid, false), biz::kEngineRefused);
  std::vector<std::int32_t> codes;
  const auto done = [&codes](const biz::ResultCode& result, auto...) {
    codes.push_back(result.code);
  };
  chat->WithdrawMsg({msgid}, done);
  chat->GetRemoteHisMsg({}, done);
  chat->RoamMsg({}, done);
  chat->ClearRoamedTime({}, done);
  chat->SetFlagsPeerMsgReaded({}, done);
  chat->GetFlagsMyMsgReaded({}, done);
  chat->ShieldAutoReply({true}, done);
  chat->AddSysMsg({L"note"}, done);
  EXPECT_EQ(codes, std::vector<std::int32_t>(8, biz::kEngineRefused));
}

TEST_P(VirtualTest, AShakeComesAfterItsMessageAndNotLater) {
  const auto shake = [&] {
    return SendItems(Chat(kHarbor, kMariner), {{biz::kMsgShake, L"", L"ignored", {}, ""}}, {});
  };
  Logout(kMariner);
  Witness harbor(kHarbor);
  Witness mariner(kMariner);
  EXPECT_EQ(shake(), 0);
  ASSERT_TRUE(harbor.AwaitStatuses(1));
  Login(kMariner);
  ASSERT_TRUE(mariner.AwaitReceived(1));
  EXPECT_EQ(shake(), 0);
  mariner.Await([](const Witness& w) { return !w.order.empty() && w.order.back() == "shake"; });
  EXPECT_EQ(mariner.order, (std::vector<std::string>{"offline", "new", "shake"}));
  EXPECT_EQ(mariner.received[1].msgtype, biz::kMsgShake);
  EXPECT_EQ(mariner.received[1].msgbody, L"");
}

TEST_P(VirtualTest, ShieldedRepliesAndNotes) {
  const auto chat = Chat(kMariner, kHarbor);
  const auto reply = [&](const wchar_t* text) {
    biz::IMSendRequest request;
    request.autoreply = true;
    SendItems(Chat(kHarbor, kMariner), {Text(text)}, request);
  };
  const auto shield = [&](bool ignore) {
    EXPECT_TRUE(Done([&](auto done) { chat->ShieldAutoReply({ignore}, done); }).ok());
  };
  Witness mariner(kMariner);
  shield(true);
  reply(L"away");
  Send(kHarbor, kMariner, L"back");
  ASSERT_TRUE(mariner.AwaitReceived(1));
  EXPECT_EQ(Bodies(mariner.received), Texts{L"back"});
  EXPECT_EQ(Unread(chat), 1);
  EXPECT_EQ(Bodies(History(kMariner, kHarbor).msgs), (Texts{L"away", L"back"}));
  shield(false);
  reply(L"gone");
  ASSERT_TRUE(mariner.AwaitReceived(2));
  EXPECT_EQ(Unread(chat), 2);

  EXPECT_TRUE(Done([&](auto done) { chat->AddSysMsg({L"note"}, done); }).ok());
  EXPECT_EQ(Done([&](auto done) { chat->AddSysMsg({L""}, done); }).code, biz::kEngineEmpty);
  ASSERT_TRUE(mariner.AwaitReceived(3));
  EXPECT_EQ(mariner.received[2].extinfo.syschatmsg, 1);
  EXPECT_EQ(mariner.received[2].cid, biz::IMConversationID(kHarbor));
  EXPECT_EQ(Unread(chat), 2) << "a note is read";
  EXPECT_TRUE(Done([&](auto done) { chat->SetMsgRead({}, done); }).ok());
  EXPECT_TRUE(Done([&](auto done) { chat->SetFlagsPeerMsgReaded({}, done); }).ok());
  EXPECT_EQ(History(kHarbor, kMariner).msgs.size(), 3U) << "on this device only";
}

TEST_P(VirtualTest, ForwardedMessages) {
  Witness harbor(kHarbor);
  Witness mariner(kMariner);
  biz::IMBodyItem picture{biz::kMsgPicture, L"{\"w\":1}", L"", base::FilePath(L"a.png"), "bytes"};
  SendItems(Chat(kHarbor, kMariner), {picture}, {});
  ASSERT_TRUE(mariner.AwaitReceived(1));
  const biz::IMMessage original = mariner.received[0];
  const auto back = Chat(kMariner, kHarbor);
  const auto pictures = Answer<biz::IMPictures>([&](auto done) { back->GetMsgPicture({}, done); });
  ASSERT_EQ(pictures.second.pictures.size(), 1U);
  EXPECT_EQ(pictures.second.pictures[0].msgid, original.msgid);
  biz::IMSendRequest forward;
  forward.forward_msgid = original.msgid;
  EXPECT_EQ(SendItems(back, {}, forward), 0);
  forward.forward_msgtype = biz::kMsgFile;
  EXPECT_EQ(SendItems(back, {Text(L"as it is")}, forward), 0);
  ASSERT_TRUE(harbor.AwaitReceived(2));
  const auto digest = [](const std::wstring& body) { return body.substr(body.find(L"&fileMD5")); };
  EXPECT_EQ(digest(harbor.received[0].msgbody), digest(original.msgbody));
  EXPECT_EQ(harbor.received[0].msgtype, biz::kMsgPicture);
  EXPECT_EQ(harbor.received[0].extinfo.others, L"{\"w\":1}");
  EXPECT_EQ(harbor.received[1].msgbody, L"as it is");
  EXPECT_EQ(harbor.received[1].msgtype, biz::kMsgFile);

  forward.forward_msgid = 12345;
  EXPECT_EQ(SendItems(back, {}, forward), 0);
  ASSERT_TRUE(mariner.AwaitStatuses(3));
  EXPECT_EQ(mariner.statuses[2].code, biz::kEngineNotFound);
  EXPECT_EQ(mariner.sent[2].msgstatus, biz::kMsgFailed);
}

TEST_P(VirtualTest, SubAccountsAreToldByTheirNicks) {
  const std::pair<const wchar_t*, biz::IMAccountType> cases[] = {
      {L"shop", biz::kMainAccount},  {L"shop:anna", biz::kSubAccount},
      {L":shop", biz::kMainAccount}, {L":shop:anna", biz::kSubAccount},
      {L"shop:", biz::kSubAccount},
  };
  for (const auto& [nick, type] : cases) {
    CreateAccount(User(nick));
    ASSERT_TRUE(Login(User(nick)).result.ok());
    EXPECT_EQ(Accounts()->GetAccount(User(nick))->GetAccountType(), type);
  }
}

INSTANTIATE_TEST_SUITE_P(Servers, VirtualTest, testing::ValuesIn(ServerKinds()), NameOf);

}  // namespace
}  // namespace imsdk::test
