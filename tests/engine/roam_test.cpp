// History from the server: pages, boundaries, settings.
#include <algorithm>

#include "device.h"
#include "far_server.h"

namespace imsdk::test {
namespace {

constexpr std::int64_t kCount = 450;  // more than two fetches

// A server with a long conversation, and devices without any of it.
class RoamTest : public PeersTest {
 protected:
  void SetUp() override {
    PeersTest::SetUp();
    std::vector<link::Message> messages;
    for (std::int64_t id = 1; id <= kCount; ++id) {
      link::Message message;
      message.msgid = id;
      message.msgtime = 1000 + id / 6;  // six at a time
      message.svrtime = 2000 + id;
      message.from = id % 3 == 0 ? kHarbor : kMariner;
      message.cid = biz::IMConversationID(id % 3 == 0 ? kMariner : kHarbor);
      message.body = std::to_wstring(id);
      messages.push_back(message);
    }
    static_cast<FarServer&>(*server_).Seed(messages);
    chat_ = Chat(kHarbor, kMariner);
  }

  using Pages = void (biz::IIMConversation::*)(const biz::IMPageRequest&,
                                               biz::IMCallback<biz::IMMessagePage>);
  static std::pair<biz::ResultCode, biz::IMMessagePage> Page(
      const RefPtr<biz::IIMConversation>& chat, const biz::IMPageRequest& request,
      Pages pages = &biz::IIMConversation::GetLocalHisMsg) {
    return Answer<biz::IMMessagePage>([&](auto done) { ((*chat).*pages)(request, done); });
  }
  static std::vector<std::int64_t> Ids(const biz::IMMessagePage& page) {
    return test::Ids(page.msgs);
  }
  // All identifiers by pages, in one direction.
  static std::vector<std::int64_t> Walk(const RefPtr<biz::IIMConversation>& chat,
                                        biz::IMPageRequest request, Pages pages) {
    std::vector<std::int64_t> all;
    for (;;) {
      const auto [result, page] = Page(chat, request, pages);
      EXPECT_TRUE(result.ok());
      const auto ids = Ids(page);
      all.insert(request.gohistory ? all.begin() : all.end(), ids.begin(), ids.end());
      if (page.outofcache || ids.empty()) return all;
      const auto& edge = request.gohistory ? page.msgs.front() : page.msgs.back();
      request.msgtime = edge.msgtime;
      request.msgid = edge.msgid;
    }
  }
  static std::vector<std::int64_t> Range(std::int64_t first, std::int64_t last) {
    std::vector<std::int64_t> ids;
    for (; first <= last; ++first) ids.push_back(first);
    return ids;
  }
  biz::IMRoamed Roam(const biz::IMRoamRequest& request, std::int32_t code = 0) {
    const auto [result, roamed] =
        Answer<biz::IMRoamed>([&](auto done) { chat_->RoamMsg(request, done); });
    EXPECT_EQ(result.code, code);
    return roamed;
  }

  RefPtr<biz::IIMConversation> chat_;
};

TEST_P(RoamTest, PagingBackOnANewDevice) {
  EXPECT_TRUE(Page(chat_, {}).second.msgs.empty()) << "nothing is asked for unasked";
  const auto all = Range(1, kCount);
  EXPECT_EQ(Walk(chat_, {.count = 37, .gohistory = true, .autoroam = true},
                 &biz::IIMConversation::GetLocalHisMsg),
            all);
  const int asked = link_->Asked(Operation::kGetHistory);
  EXPECT_EQ(asked, 3) << "450 messages, 200 at a time";
  // Now all is here, in both directions, and so is the end.
  for (const bool roam : {false, true}) {
    EXPECT_EQ(Walk(chat_, {.count = 37, .gohistory = true, .autoroam = roam},
                   &biz::IIMConversation::GetLocalHisMsg),
              all);
    EXPECT_EQ(Walk(chat_, {.msgtime = 1, .count = 41, .autoroam = roam},
                   &biz::IIMConversation::GetLocalHisMsg),
              all);
  }
  EXPECT_EQ(link_->Asked(Operation::kGetHistory), asked);
  EXPECT_EQ(Unread(chat_), 0) << "history is not new";
  const auto list = Unreads(Chats(kHarbor));
  ASSERT_EQ(list.size(), 1U);

  // Another device pages towards newer messages from the very beginning, and at the server.
  Device second(server_->Link());
  second.Login(kHarbor);
  const auto there = second.Chat(kHarbor, kMariner);
  for (const bool keep : {false, true}) {
    EXPECT_EQ(Walk(there, {.count = 37, .gohistory = true, .autoroam = keep},
                   &biz::IIMConversation::GetRemoteHisMsg),
              all);
    EXPECT_EQ(Walk(there, {.msgtime = 1, .count = 41, .autoroam = keep},
                   &biz::IIMConversation::GetRemoteHisMsg),
              all);
    EXPECT_EQ(Ids(Page(there, {.count = 1000}).second), keep ? all : Range(1, 0));
  }
}

TEST_P(RoamTest, NewerThanAPlaceThatIsNotHere) {
  const auto page = Page(chat_, {.msgtime = 1001, .msgid = 8, .count = 3, .autoroam = true}).second;
  EXPECT_EQ(Ids(page), Range(9, 11));
}

TEST_P(RoamTest, SeveralAtOnceAndLiveOnesBetween) {
  Device second(server_->Link());
  second.Login(kHarbor);
  const auto there = second.Chat(kHarbor, kMariner);
  Witness witness(kHarbor, second.accounts());
  Send(kMariner, kHarbor, L"live");
  ASSERT_TRUE(witness.AwaitReceived(1));
  EXPECT_EQ(Bodies(Page(there, {}).second.msgs), std::vector<std::wstring>{L"live"});
  std::vector<std::future<biz::IMMessagePage>> pages;
  const std::pair<std::int64_t, std::int32_t> requests[] = {
      {0, 30}, {300, 100}, {60, 200}, {0, 500}};
  for (const auto& [id, count] : requests) {
    auto answer = std::make_shared<std::promise<biz::IMMessagePage>>();
    pages.push_back(answer->get_future());
    there->GetLocalHisMsg({.msgtime = id == 0 ? 0 : 1000 + id / 6,
                           .msgid = id,
                           .count = count,
                           .gohistory = true,
                           .autoroam = true},
                          [answer](const auto&, const auto& page) { answer->set_value(page); });
    Send(kMariner, kHarbor, L"more");
  }
  const auto first = pages[0].get();
  EXPECT_EQ(first.msgs.size(), 30U);
  EXPECT_EQ(Ids(pages[1].get()), Range(200, 299));
  EXPECT_EQ(Ids(pages[2].get()), Range(1, 59));
  auto last = Ids(pages[3].get());
  ASSERT_GE(last.size(), std::size_t{kCount} + 1);
  last.resize(kCount);
  EXPECT_EQ(last, Range(1, kCount));
  EXPECT_LE(link_->Asked(Operation::kGetHistory), 3);
  ASSERT_TRUE(witness.AwaitReceived(5)) << "what came live is told as new";
  EXPECT_EQ(Unread(there), 5);
}

TEST_P(RoamTest, BoundariesRangesAndDeletions) {
  const auto newest = Roam({.count = 50});
  EXPECT_EQ(newest.roamedcount, 50);
  EXPECT_EQ(newest.affectcount, 50);
  EXPECT_EQ(Ids(Page(chat_, {.count = 1000}).second), Range(401, kCount));
  // A range that does not reach what is here lies beyond the boundary.
  const auto range = Roam({.btime = 2060, .etime = 2119, .count = 7, .autoroam = true});
  EXPECT_EQ(range.roamedcount, 60);
  EXPECT_EQ(Ids(Page(chat_, {.count = 1000}).second), Range(401, kCount));
  auto ids = Range(60, 119);
  const auto upper = Range(401, kCount);
  ids.insert(ids.end(), upper.begin(), upper.end());
  EXPECT_EQ(Ids(Page(chat_, {.count = 1000, .ignoreboundary = true}).second), ids);
  // One that does moves it.
  const auto overlap = Roam({.etime = 2413, .count = 100});
  EXPECT_EQ(overlap.roamedcount, 100);
  EXPECT_EQ(overlap.affectcount, 87) << "401 to 413 were here";
  EXPECT_EQ(Ids(Page(chat_, {.count = 1000}).second), Range(314, kCount));

  EXPECT_EQ(Answer<biz::IMCount>([&](auto done) {
              chat_->DeleteLocalMsg({{420, 7}}, done);
            }).second.count,
            1);
  const auto by_id = [&](std::int64_t msgid) {
    return Answer<biz::IMMessagePage>([&](auto done) { chat_->SearchMsgByID({msgid}, done); });
  };
  EXPECT_EQ(by_id(420).first.code, biz::kEngineNotFound);
  EXPECT_EQ(Ids(by_id(421).second), Range(421, 421));
  biz::IMSearchRequest words;
  words.keywords = {L"42"};
  const auto found = Answer<biz::IMSearchPage>([&](auto done) { chat_->SearchMsg(words, done); });
  EXPECT_EQ(found.second.msgs.size(), 9U) << "421 to 429";
  const auto chats = Chats(kHarbor);
  const auto who =
      Answer<biz::IMConversations>([&](auto done) { chats->SearchConversations(words, done); });
  EXPECT_EQ(who.second.cids, std::vector{biz::IMConversationID(kMariner)});
  for (const bool kinds : {false, true}) {
    biz::IMSearchRequest much;
    kinds ? much.msgtypes.resize(100'000) : much.keywords.resize(100'000, L"42");
    const auto asked = [&](auto& where) {
      return Answer<biz::IMSearchPage>([&](auto done) { where.SearchMsg(much, done); }).first.code;
    };
    EXPECT_EQ(asked(*chat_), biz::kEngineTooLarge);
    EXPECT_EQ(asked(*chats), biz::kEngineTooLarge);
    EXPECT_EQ(Answer<biz::IMConversations>([&](auto done) {
                chats->SearchConversations(much, done);
              }).first.code,
              biz::kEngineTooLarge);
  }
  EXPECT_TRUE(Done([&](auto done) { chat_->ClearRoamedTime({}, done); }).ok());
  EXPECT_EQ(Ids(Page(chat_, {.count = 1000}).second), Range(kCount, kCount));
  EXPECT_EQ(Roam({.count = 50}).affectcount, 0);
  auto left = Range(401, kCount);
  std::erase(left, 420);
  EXPECT_EQ(Ids(Page(chat_, {.count = 1000}).second), left) << "a deleted message stays away";

  EXPECT_EQ(Answer<biz::IMCount>([&](auto done) {
              chat_->DeleteLocalMsg({.all = true}, done);
            }).second.count,
            196);
  const int asked = link_->Asked(Operation::kGetHistory);
  const auto page = Page(chat_, {.count = 5, .autoroam = true}).second;
  EXPECT_TRUE(page.msgs.empty());
  EXPECT_EQ(link_->Asked(Operation::kGetHistory), asked) << "there is nothing left to bring";
}

TEST_P(RoamTest, AFailureInTheMiddleLeavesWhatIsRight) {
  link_->FailNext(Operation::kGetHistory, Fault::kBreak, 1);
  EXPECT_EQ(Roam({.autoroam = true}, biz::kEngineNoLink).roamedcount, 200);
  EXPECT_EQ(Ids(Page(chat_, {.count = 1000}).second), Range(251, kCount));
  Eventually([&] { return Accounts()->GetAccount(kHarbor)->GetState() == biz::kAccountOnline; },
             "online again");
  // A page that needs what cannot be had gets what is here.
  link_->FailNext(Operation::kGetHistory, Fault::kDropAnswer);
  auto [result, page] = Page(
      chat_, {.msgtime = 1043, .msgid = 260, .count = 30, .gohistory = true, .autoroam = true});
  EXPECT_TRUE(result.ok());
  EXPECT_EQ(Ids(page), Range(251, 259));
  EXPECT_EQ(page.roamcode, biz::kEngineTimeout);
  link_->FailNext(Operation::kGetHistory, Fault::kDropAnswer);
  std::tie(result, page) = Page(
      chat_, {.msgtime = 1041, .msgid = 251, .count = 30, .gohistory = true, .autoroam = true});
  EXPECT_EQ(result.code, biz::kEngineTimeout) << "nothing is here";
  EXPECT_EQ(Walk(chat_, {.count = 60, .gohistory = true, .autoroam = true},
                 &biz::IIMConversation::GetLocalHisMsg),
            Range(1, kCount));
}

TEST_P(RoamTest, SwitchedOffAndOn) {
  const auto chats = Chats(kHarbor);
  const auto status = [&] {
    return Answer<biz::IMRoamStatus>([&](auto done) { chats->GetRoamStatus({}, done); }).second;
  };
  const auto set = [&](std::int32_t to) {
    return Done([&](auto done) { chats->SetRoamStatus({to}, done); }).code;
  };
  EXPECT_EQ(status().roamstatus, biz::kRoamingOn);
  EXPECT_EQ(status().opentime, 0);
  EXPECT_EQ(set(2), biz::kEngineRefused);
  Roam({.count = 10});
  EXPECT_EQ(set(biz::kRoamingOff), 0);
  Witness harbor(kHarbor);
  Send(kHarbor, kMariner, L"while off");
  ASSERT_TRUE(harbor.AwaitStatuses(1));
  const auto remote = [&] {
    return Page(chat_, {.count = 5}, &biz::IIMConversation::GetRemoteHisMsg);
  };
  EXPECT_EQ(remote().first.code, biz::kEngineRefused);
  Roam({.count = 10}, biz::kEngineRefused);
  const auto page = Page(chat_, {.count = 500, .autoroam = true});
  EXPECT_TRUE(page.first.ok());
  EXPECT_EQ(page.second.msgs.size(), 11U);
  EXPECT_EQ(page.second.roamcode, biz::kEngineRefused);
  EXPECT_EQ(set(biz::kRoamingOn), 0);
  EXPECT_GT(status().opentime, 0);
  Send(kHarbor, kMariner, L"on again");
  ASSERT_TRUE(harbor.AwaitStatuses(2));
  EXPECT_EQ(Bodies(remote().second.msgs), std::vector<std::wstring>{L"on again"});
  EXPECT_TRUE(remote().second.outofcache);
  const auto opened = status().opentime;
  EXPECT_EQ(set(biz::kRoamingOn), 0);
  EXPECT_EQ(status().opentime, opened) << "it was on";
  const auto other = Answer<biz::IMMessagePage>(
      [&](auto done) { Chat(kMariner, kHarbor)->GetRemoteHisMsg({.count = 1000}, done); });
  EXPECT_EQ(other.second.msgs.size(), std::size_t{kCount} + 2) << "each account's own setting";
}

// Its history is made up, so its server is, too.
INSTANTIATE_TEST_SUITE_P(Servers, RoamTest,
                         testing::Values(ServerKinds().at(1), ServerKinds().at(2)), NameOf);

}  // namespace
}  // namespace imsdk::test
