// Mentions, remind types and the list of tribes as accounts see them.
#include "device.h"
#include "embedded/embedded_server.h"
#include "embedded/tribe_desk.h"
#include "store_fixture.h"

namespace imsdk::test {
namespace {

constexpr biz::IMTribeID kId{10001};
const biz::IMConversationID kTribe{kId};

class MentionsTest : public PeersTest {
 protected:
  void SetUp() override {
    PeersTest::SetUp();
    CreateAccount(kLighthouse);
    test::Login(kLighthouse);
    server_->CreateTribe({kId, L"Harbour", kHarbor, {kMariner, kLighthouse}});
    for (const auto& user : {kHarbor, kMariner, kLighthouse}) Await(user);
  }
  static RefPtr<biz::IIMConversation> Await(
      const biz::IMUserID& user, const RefPtr<biz::IIMAccountMgr>& accounts = Accounts()) {
    Eventually([&] { return static_cast<bool>(Chat(user, kTribe, accounts)); }, "it is known");
    return Chat(user, kTribe, accounts);
  }
  // Sends and waits until the receiver's store has it; returns its identifier.
  static std::int64_t Say(const biz::IMUserID& from, const biz::IMUserID& to,
                          const std::wstring& text, std::int32_t type,
                          const std::vector<biz::IMUserID>& members = {}) {
    Witness witness(to);
    biz::IMSendRequest request;
    request.tribeat = {0, type, 0, members};
    EXPECT_EQ(SendItems(Await(from), {Text(text)}, request), 0);
    witness.Await([](const Witness& seen) { return seen.tribe_received.size() == 1; });
    return witness.tribe_received.at(0).msgid;
  }
  static biz::IMTribeAt At(const biz::IMUserID& user, const biz::IMUserID& from,
                           std::int64_t msgid) {
    return Answer<biz::IMTribeAt>([&](auto done) {
             Chat(user, kTribe)->GetSendMsgTribeAtInfo({msgid, from}, done);
           })
        .second;
  }
  static std::int32_t UnreadMentions(const RefPtr<biz::IIMConversation>& chat) {
    return Answer<biz::IMAtUnread>([&](auto done) { chat->GetTribeAtMsgUnreadCount({}, done); })
        .second.count;
  }

  const biz::IMUserID kLighthouse = User(L"lighthouse");
};

TEST_P(MentionsTest, AreReadByTheirReadersOnAllDevicesAndSeenByTheirSender) {
  biz::IMSendRequest all;
  all.tribeat.atmsgtype = biz::kAtAll;
  const auto ours = Await(kHarbor);
  if (GetParam().name != "Embedded") {
    EXPECT_EQ(SendItems(ours, {Text(L"x")}, all), biz::kEngineUnsupported);
    EXPECT_EQ(Done([&](auto done) { ours->SetTribeAtMsgsReaded({}, done); }).code,
              biz::kEngineUnsupported);
    EXPECT_EQ(
        Answer<biz::IMMessagePage>([&](auto done) { ours->RoamTribeAtMsgs({}, done); }).first.code,
        biz::kEngineUnsupported);
    return;
  }
  for (const auto& [type, code] : {std::pair{3, biz::kEngineRefused}, {1, biz::kEngineRefused}}) {
    biz::IMSendRequest wrong;
    wrong.tribeat.atmsgtype = type;
    EXPECT_EQ(SendItems(ours, {Text(L"x")}, wrong), code);
  }
  EXPECT_EQ(SendItems(Chat(kHarbor, kMariner), {Text(L"x")}, all), biz::kEngineRefused);

  const struct {
    biz::IMUserID by, whom;
    std::int32_t subcode;
  } members[] = {{kHarbor, {}, 0},
                 {kMariner, {}, biz::kTribeAtAllRefused},
                 {kMariner, kLighthouse, 0},
                 {kMariner, User(L"nobody"), biz::kTribeUserNotAMember}};
  for (const auto& row : members) {
    const auto [result, found] = Answer<biz::IMAtMember>(
        [&](auto done) { Chat(row.by, kTribe)->AtTribeMember({row.whom}, done); });
    EXPECT_EQ(result.subcode, row.subcode);
    EXPECT_EQ(found.display, row.subcode == 0 ? row.whom.nick : L"");
  }

  Device second(server_->Link());
  second.Login(kMariner);
  Await(kMariner, second.accounts());
  const auto by_name = Say(kHarbor, kMariner, L"tide at four", biz::kAtMembers, {kMariner});
  const auto to_all = Say(kHarbor, kMariner, L"tide at five", biz::kAtAll);
  Say(kLighthouse, kMariner, L"tide at six", biz::kAtMembers, {kHarbor});
  EXPECT_EQ(At(kHarbor, {}, by_name), (biz::IMTribeAt{0, 1, biz::kAtRelationSender, {kMariner}}));
  EXPECT_EQ(At(kMariner, kHarbor, by_name),
            (biz::IMTribeAt{0, 1, biz::kAtRelationMember, {kMariner}}));
  EXPECT_EQ(At(kMariner, kHarbor, to_all), (biz::IMTribeAt{0, 2, biz::kAtRelationAll, {}}));
  EXPECT_EQ(At(kLighthouse, kHarbor, by_name).relation2me, biz::kAtRelationNone);

  const auto theirs = Await(kMariner);
  EXPECT_TRUE(Done([&](auto done) { theirs->SetMsgRead({}, done); }).ok());
  EXPECT_EQ(UnreadMentions(theirs), 2) << "reading a conversation reads no mention";
  std::mutex lock;
  std::vector<biz::IMAtReaded> told[2];
  const auto listen = [&](const RefPtr<biz::IIMAccountMgr>& accounts, const biz::IMUserID& user,
                          std::vector<biz::IMAtReaded>& into) {
    accounts->GetAccount(user)->GetIMTribeChatMgr()->Events().on_tribe_at_msg_readed.connect(
        [&](const auto&, const biz::IMAtReaded& what) {
          std::lock_guard hold(lock);
          into.push_back(what);
        });
  };
  listen(Accounts(), kHarbor, told[0]);
  listen(second.accounts(), kMariner, told[1]);
  // Read without a link; told when it is back.
  link_->FailNext(Operation::kOther, Fault::kBreak);
  EXPECT_TRUE(Done([&](auto done) { theirs->SetTribeAtMsgsReaded({{to_all}}, done); }).ok());
  EXPECT_EQ(UnreadMentions(theirs), 1);
  EXPECT_EQ(At(kMariner, kHarbor, to_all).msgreaded, biz::kMsgRead);
  const auto heard = [&] {
    std::lock_guard hold(lock);
    return told[0].size() == 1 && told[1].size() == 1;
  };
  Eventually(heard, "the sender and the other device hear of it");
  EXPECT_EQ(told[0][0].readers, std::vector{kMariner});
  EXPECT_EQ(told[0][0].counts[0].msgid, to_all);
  EXPECT_EQ(told[0][0].counts[0].readedcount, 1);
  EXPECT_EQ(told[0][0].counts[0].unreadcount, 1);
  EXPECT_EQ(UnreadMentions(Await(kMariner, second.accounts())), 1);
  const auto readers = Answer<biz::IMAtReaders>([&](auto done) {
                         ours->GetTribeAtMsgUnreadUsers({to_all}, done);
                       }).second;
  EXPECT_EQ(readers.readedusers, std::vector{kMariner});
  EXPECT_EQ(readers.unreadusers, std::vector{kLighthouse});
  const auto count = Answer<biz::IMAtUnread>([&](auto done) {
                       ours->GetTribeAtMsgUnreadCount({{to_all, by_name, 7}}, done);
                     }).second;
  EXPECT_EQ(count.count, 1) << "that of lighthouse";
  ASSERT_EQ(count.counts.size(), 2U);

  // Found by sender and relation, on a page and by conversation; roamed by a device that has
  // nothing.
  EXPECT_TRUE(Done([&](auto done) {
                Accounts()->GetAccount(kMariner)->GetIMTribeMgr()->SetAttention(
                    {kId, kLighthouse, true}, done);
              }).ok());
  using Numbers = std::vector<std::int32_t>;
  const struct {
    std::vector<biz::IMUserID> from;
    Numbers relations;
    std::wstring word;
    std::size_t found, attention;
  } searches[] = {{{}, {}, L"tide", 3, 1},
                  {{kHarbor}, {}, L"tide", 2, 0},
                  {{kHarbor, kLighthouse}, {biz::kAtRelationNone}, L"tide", 1, 1},
                  {{}, {biz::kAtRelationMember, biz::kAtRelationAll}, L"tide", 2, 0},
                  {{}, {biz::kAtRelationAll}, L"four", 0, 0},
                  {{User(L"nobody")}, {}, L"tide", 0, 0}};
  for (const auto& row : searches) {
    biz::IMSearchRequest request;
    request.fromids = row.from;
    request.atrelations = row.relations;
    request.keywords = {row.word};
    request.needpage = true;
    const auto search = [&](auto method) {
      return Answer<biz::IMSearchPage>([&](auto done) { ((*theirs).*method)(request, done); })
          .second.totalcount;
    };
    EXPECT_EQ(search(&biz::IIMConversation::SearchMsg), row.found);
    EXPECT_EQ(search(&biz::IIMConversation::SearchAttentionMsg), row.attention);
    const auto chats = Accounts()->GetAccount(kMariner)->GetIMTribeChatMgr();
    EXPECT_EQ(Answer<biz::IMConversations>([&](auto done) {
                chats->SearchConversations(request, done);
              }).second.cids.size(),
              row.found == 0 ? 0U : 1U);
  }
  Device third(server_->Link());
  third.Login(kMariner);
  const auto fresh = Await(kMariner, third.accounts());
  const auto page =
      Answer<biz::IMMessagePage>([&](auto done) { fresh->RoamTribeAtMsgs({}, done); }).second;
  EXPECT_EQ(Ids(page.msgs), (std::vector{by_name, to_all}));
  EXPECT_EQ(page.msgs.at(1).tribeat.msgreaded, biz::kMsgRead);
  EXPECT_EQ(UnreadMentions(fresh), 1);
  const auto around = Answer<biz::IMMessagePage>([&](auto done) {
                        fresh->RoamTribeAtMsgContext({to_all, {}, 3}, done);
                      }).second;
  EXPECT_EQ(Bodies(around.msgs),
            (std::vector<std::wstring>{L"tide at four", L"tide at five", L"tide at six"}));
}

TEST_P(MentionsTest, WhatDoesNotCountIsToldAndNotUnread) {
  if (GetParam().name != "Embedded") return;
  Device second(server_->Link());
  second.Login(kMariner);
  const auto there = Await(kMariner, second.accounts());
  const auto here = Await(kMariner);
  Say(kHarbor, kMariner, L"one", biz::kAtNobody);
  Eventually([&] { return Unread(there) == 1; }, "it counts there too");
  const auto tribes = [](const RefPtr<biz::IIMAccountMgr>& accounts) {
    const auto mgr = accounts->GetAccount(User(L"mariner"))->GetIMTribeMgr();
    EXPECT_TRUE(Done([&](auto done) { mgr->ShallowLogin({}, done); }).ok());
    return mgr;
  };
  EXPECT_TRUE(Done([&](auto done) {
                tribes(Accounts())->SetMsgRemindType({kId, biz::kRemindNothing}, done);
              }).ok());
  EXPECT_EQ(Unread(here), 0);
  Eventually([&] { return Unread(there) == 0; }, "the other device hears of the type");
  Say(kHarbor, kMariner, L"two", biz::kAtAll);
  EXPECT_EQ(Unread(here), 0);
  EXPECT_EQ(UnreadMentions(here), 1) << "a mention is one all the same";

  // The list is there without a link, with names and remind types.
  Again();
  Await(kMariner);
  EXPECT_EQ(Unread(Chat(kMariner, kTribe)), 0);
  link_->FailNext(Operation::kOther, Fault::kBreak);
  const auto listed = Answer<biz::IMTribes>([&](auto done) {
                        tribes(Accounts())->GetTribes({}, done);
                      }).second.tribes;
  ASSERT_EQ(listed.size(), 1U);
  EXPECT_EQ(listed[0].name, L"Harbour");
  EXPECT_EQ(listed[0].mine.remind, biz::kRemindNothing);
}

INSTANTIATE_TEST_SUITE_P(Servers, MentionsTest, testing::ValuesIn(ServerKinds()), NameOf);

class TwinsTest : public StoreTest {};

TEST_F(TwinsTest, TwoSendersOfOneIdentifierAreTwoMessages) {
  const auto lighthouse = User(L"lighthouse");
  account::ChatState chat;
  for (const auto& from : {kPeer, lighthouse}) {
    biz::IMMessage message = Received(from, 5, 7, from.nick);
    message.cid = kTribe;
    const auto arrival = store_.AddIncoming(message);
    ASSERT_TRUE(arrival);
    chat.AddIncoming({{message, *arrival}});
  }
  EXPECT_EQ(store_.Find(kTribe, 7, kPeer)->msgbody, kPeer.nick);
  EXPECT_EQ(store_.Find(kTribe, 7, lighthouse)->msgbody, L"lighthouse");
  EXPECT_FALSE(store_.Find(kTribe, 7, kSelf));
  biz::IMPageRequest one;
  one.count = 1;
  EXPECT_EQ(store_.Page(kTribe, one).msgs.size(), 2U) << "the next page would miss the other one";
  const auto fresh = chat.NewMessages(kTribe, {});
  EXPECT_EQ(fresh.msgs.size(), 2U);
  const auto gone = store_.Withdraw(kTribe, lighthouse, 7);
  chat.Forget(kTribe, gone->unread);
  EXPECT_EQ(Bodies(chat.NewMessages(kTribe, {}).msgs), std::vector{kPeer.nick});
}

}  // namespace
}  // namespace imsdk::test
