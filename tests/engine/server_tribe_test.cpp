// Tribes on the server: one row a message, who sees what, thousands of listeners.
#include <chrono>
#include <future>
#include <thread>

#include "server_fixture.h"

namespace imsdk::test {
namespace {

using Ids = std::vector<std::int64_t>;

class ServerTribe : public ServerTest {
 protected:
  void SetUp() override { CreateAccounts({L"harbor", L"mariner", L"lighthouse", L"navigator"}); }

  // The store does nothing until the promise is kept, and then all that it was asked in one commit.
  std::promise<void> HoldStore() {
    std::promise<void> go_on;
    // The answer of a login comes on the store's thread.
    link_->Login({Person(L"nobody"), link::Token{}},
                 [held = go_on.get_future().share()](const auto&, const auto&) { held.wait(); });
    return go_on;
  }
  Answered<link::History> Page(Device& device, std::int32_t count = 100) {
    return device.Ask(link::GetHistory{.cid = kTribe, .count = count});
  }
};

TEST_F(ServerTribe, IsMadeOfAccountsUnderAnIdentifierOfItsOwn) {
  const auto harbor = Person(L"harbor");
  const auto mariner = Person(L"mariner");
  server_->Publish(VirtualKind::kSystem, Person(L"system"), harbor, L"hi");
  EXPECT_EQ(server_->CreateTribe({{7}, L"t", harbor, {mariner, harbor, mariner}}).id, 7);
  EXPECT_EQ(server_->CreateTribe({{7}, L"t", harbor, {}}).id, 0) << "taken";
  EXPECT_EQ(server_->CreateTribe({{-1}, L"t", harbor, {}}).id, 0);
  EXPECT_EQ(server_->CreateTribe({{8}, L"t", Person(L"nobody"), {}}).id, 0);
  EXPECT_EQ(server_->CreateTribe({{8}, L"t", harbor, {Person(L"system")}}).id, 0);
  const auto chosen = server_->CreateTribe({{}, L"t", harbor, {}});
  EXPECT_NE(chosen.id, 0);
  EXPECT_NE(server_->CreateTribe({{}, L"t", harbor, {}}), chosen);
  const auto device = Connect(L"mariner");
  device->Settle();
  const auto told = device->All<link::Membership>();
  ASSERT_EQ(told.size(), 1U);
  EXPECT_EQ(told[0].tribe.id, 7);
  EXPECT_TRUE(told[0].member);
}

TEST_F(ServerTribe, AMessageIsOneRowForAllMembersAndNoOutsider) {
  Tribe({L"harbor", L"mariner", L"lighthouse"});
  const auto harbor = Connect(L"harbor", "desk");
  const auto phone = Connect(L"harbor", "phone");
  const auto mariner = Connect(L"mariner");
  const auto navigator = Connect(L"navigator");
  const auto rows = Count("SELECT (SELECT count(*) FROM messages)+(SELECT count(*) FROM entries)");
  const auto first = harbor->Say(kTribe, 1, L"to all");
  ASSERT_TRUE(first.result.ok());
  EXPECT_EQ(harbor->Say(kTribe, 1).reply.place, first.reply.place) << "known";
  EXPECT_EQ(Count("SELECT (SELECT count(*) FROM messages)+(SELECT count(*) FROM entries)"),
            rows + 1);
  mariner->Say(kTribe, 2);
  harbor->Say(kTribe, 3);
  const auto lighthouse = Connect(L"lighthouse");
  const std::pair<std::shared_ptr<Device>, Ids> expected[] = {
      {harbor, {2}},           {phone, {1, 2, 3}}, {mariner, {1, 3}},
      {lighthouse, {1, 2, 3}}, {navigator, {}},
  };
  for (const auto& [device, msgids] : expected) {
    device->Settle();
    EXPECT_EQ(device->Msgids(), msgids);
  }
  const auto got = lighthouse->All<link::Message>();
  EXPECT_EQ(got[0].cid, kTribe);
  EXPECT_EQ(got[0].from, Person(L"harbor"));
  EXPECT_EQ(got[0].body, L"to all");
  EXPECT_EQ(got[0].place, first.reply.place);
  EXPECT_EQ((Ids{got[0].previous, got[1].previous, got[2].previous}), (Ids{0, 0, 1}));
  for (const auto code : {navigator->Say(kTribe, 9).result.code, Page(*navigator).result.code,
                          navigator->Ask(link::ReportRead{kTribe, {1}}).result.code,
                          navigator->Ask(link::MarkRead{kTribe, {1, 1}}).result.code,
                          navigator->Ask(link::Withdraw{kTribe, 1}).result.code}) {
    EXPECT_EQ(code, biz::kEngineRefused);
  }
}

TEST_F(ServerTribe, ItsOwnerRenamesIt) {
  Tribe({L"harbor", L"mariner"});
  const struct {
    const wchar_t* nick;
    biz::IMTribeID tribe;
    std::int32_t code;
  } rows[] = {
      {L"mariner", {77}, biz::kEngineRefused},
      {L"navigator", {77}, biz::kEngineRefused},
      {L"harbor", {5}, biz::kEngineRefused},
      {L"harbor", {77}, biz::kEngineOk},
  };
  for (const auto& [nick, tribe, code] : rows) {
    EXPECT_EQ(Count("SELECT count(*) FROM tribes WHERE name='Quay'"), 0);
    EXPECT_EQ(Connect(nick)->Ask(link::ChangeTribe{tribe, biz::kTribeKeyName, L"Quay"}).result.code,
              code)
        << nick;
  }
  EXPECT_EQ(Count("SELECT count(*) FROM tribes WHERE name='Quay'"), 1);
}

TEST_F(ServerTribe, JoiningAndLeavingAreTheEndsOfWhatIsSeen) {
  Tribe({L"harbor"});
  const auto harbor = Connect(L"harbor");
  const auto online = Connect(L"mariner", "online");
  std::int64_t msgid = 0;
  std::string joined;
  for (const bool member : {false, true, false, true}) {
    EXPECT_TRUE(SetMember(L"mariner", member));
    EXPECT_TRUE(SetMember(L"mariner", member)) << "again is good again";
    EXPECT_EQ(online->Say(kTribe, 1000 + msgid).result.ok(), member);
    for (int i = 0; i < 2; ++i) harbor->Say(kTribe, ++msgid);
  }
  const Ids seen{3, 4, 7, 8};
  online->Settle();
  EXPECT_EQ(online->Msgids(), seen);
  const auto changes = online->All<link::Membership>();
  ASSERT_EQ(changes.size(), 3U);
  EXPECT_FALSE(changes[1].member);
  // A hole before the joining is none.
  EXPECT_EQ(online->All<link::Message>()[0].previous, 0);
  EXPECT_EQ(online->All<link::Message>()[1].previous, 3);
  EXPECT_EQ(online->All<link::Message>()[2].previous, 0);
  for (const bool restarted : {false, true}) {
    if (restarted) Start();
    const auto away = Connect(L"mariner", "away", "1");
    away->Settle();
    EXPECT_EQ(away->Msgids(), (Ids{1002, 3, 4, 1006, 7, 8})) << "both stays";
    const auto page = Page(*away);
    EXPECT_EQ(MsgidsOf(page.reply.msgs), (Ids{1006, 7, 8})) << "this stay";
    EXPECT_EQ(page.reply.msgs[1].previous, 0);
    EXPECT_TRUE(page.reply.next.empty());
  }
  EXPECT_TRUE(server_->Change(embedded::SetOpenHistory{kTribe.tribe, true}));
  EXPECT_EQ(Page(*Connect(L"mariner")).reply.msgs.size(), 10U);
  EXPECT_EQ(Page(*Connect(L"navigator")).result.code, biz::kEngineRefused);
  EXPECT_TRUE(SetMember(L"mariner", false));
  EXPECT_EQ(Page(*Connect(L"mariner")).result.code, biz::kEngineRefused);
  EXPECT_FALSE(SetMember(L"nobody", true));
}

TEST_F(ServerTribe, WithdrawalsAndReportsConcernTheSenderOfTheMessage) {
  Tribe({L"harbor", L"mariner", L"lighthouse"});
  const auto harbor = Connect(L"harbor");
  const auto mariner = Connect(L"mariner");
  const auto lighthouse = Connect(L"lighthouse");
  harbor->Say(kTribe, 1);
  mariner->Say(kTribe, 2);
  mariner->Say(kTribe, 3);
  EXPECT_EQ(harbor->Ask(link::Withdraw{kTribe, 2}).result.code, biz::kEngineNotFound);
  const auto entries = Count("SELECT count(*) FROM entries");
  EXPECT_TRUE(harbor->Ask(link::Withdraw{kTribe, 1}).result.ok());
  EXPECT_EQ(Count("SELECT count(*) FROM entries"), entries + 1) << "one for all members";
  EXPECT_TRUE(lighthouse->Ask(link::ReportRead{kTribe, {1, 2, 3}}).result.ok());
  EXPECT_TRUE(harbor->Ask(link::ReportRead{kTribe, {2, 3}}).result.ok());
  for (const auto& device : {harbor, mariner, lighthouse}) {
    device->Settle();
    const auto told = device->All<link::Withdrawal>();
    ASSERT_EQ(told.size(), 1U);
    EXPECT_EQ(told[0].cid, kTribe);
    EXPECT_EQ(told[0].from, Person(L"harbor"));
    EXPECT_EQ(device->All<link::PeerRead>().size(), device == mariner ? 1U : 0U);
  }
  EXPECT_EQ(mariner->All<link::PeerRead>()[0].reader, Person(L"lighthouse"));
  EXPECT_EQ(mariner->All<link::PeerRead>()[0].msgids, (Ids{2, 3}));
  const auto late = Page(*Connect(L"lighthouse", "new")).reply.msgs;
  ASSERT_EQ(late.size(), 3U);
  EXPECT_TRUE(late[0].withdrawn && late[0].body.empty());
  EXPECT_TRUE(late[2].read);
}

// What comes while the server is busy shares one commit and one push.
TEST_F(ServerTribe, WhoeverIsAnsweredHearsNothingOfTheNextOperationYet) {
  Tribe({L"harbor", L"mariner"});
  const auto desk = Connect(L"harbor", "desk");
  const auto phone = Connect(L"harbor", "phone");
  const auto mariner = Connect(L"mariner");
  for (const auto& device : {desk, phone, mariner}) device->Settle();
  std::promise<void> go_on = HoldStore();
  const auto kick = link::RemoveMember{{77}, Person(L"mariner")};
  // The answer to a change comes behind what is new; here the next change is in the store by then.
  const auto done = [](const biz::ResultCode& result, const auto&) { EXPECT_TRUE(result.ok()); };
  desk->AskOnly(link::ChangeTribe{{77}, biz::kTribeKeyName, L"Quay"}, done);
  phone->AskOnly(link::ChangeTribe{{77}, biz::kTribeKeyName, L"Pier"}, done);
  mariner->AskOnly(link::SetTribeNickname{{77}, Person(L"mariner"), L"M"}, done);
  phone->AskOnly(kick, done);
  go_on.set_value();
  for (const auto& device : {desk, phone, mariner}) {
    device->Settle();
    EXPECT_EQ(device->All<link::TribeHappening>().size(), 4U);
    std::vector<std::int64_t> places;
    for (const auto& batch : device->batches) places.push_back(std::stoll(batch.position));
    EXPECT_TRUE(std::is_sorted(places.begin(), places.end())) << "no position goes back";
  }
}

TEST_F(ServerTribe, HappeningsOfOneCommitAreSeenAsIfTheyCameOneByOne) {
  Tribe({L"harbor", L"mariner"});
  const auto harbor = Connect(L"harbor", "desk");
  const auto phone = Connect(L"harbor", "phone");
  const auto mariner = Connect(L"mariner");
  for (const auto& device : {harbor, phone, mariner}) device->Settle();

  std::promise<void> go_on = HoldStore();
  const auto say = [](Device& device, std::int64_t msgid) {
    link::Deliver deliver;
    deliver.message.cid = kTribe;
    deliver.message.msgid = msgid;
    device.AskOnly(deliver, [](const biz::ResultCode& result, const link::Delivered&) {
      EXPECT_TRUE(result.ok());
    });
  };
  std::vector<std::thread> changes;
  const auto set_member = [&](bool member) {
    changes.emplace_back([=, this] { EXPECT_TRUE(SetMember(L"mariner", member)); });
    std::this_thread::sleep_for(std::chrono::milliseconds(100));  // it waits behind what was asked
  };
  say(*harbor, 1);
  say(*mariner, 2);
  say(*harbor, 3);
  set_member(false);
  say(*harbor, 4);
  set_member(true);
  say(*harbor, 5);
  say(*mariner, 6);
  go_on.set_value();
  for (auto& change : changes) change.join();
  const std::pair<std::shared_ptr<Device>, Ids> expected[] = {
      {harbor, {2, 6}}, {phone, {1, 2, 3, 4, 5, 6}}, {mariner, {1, 3, 5}}};
  for (const auto& [device, msgids] : expected) {
    device->Settle();
    EXPECT_EQ(device->Msgids(), msgids);
  }
  EXPECT_EQ(mariner->All<link::Message>()[2].previous, 0) << "4 was not for it";
}

class ServerCrowd : public ServerTest {};

TEST_F(ServerCrowd, AThousandListenersHearOneMessage) {
  constexpr std::size_t kListeners = 1000;
  std::vector<std::wstring> nicks{L"harbor"};
  for (std::size_t i = 0; i < kListeners; ++i) nicks.push_back(L"member" + std::to_wstring(i));
  embedded::Seeding accounts;
  for (const auto& nick : nicks) accounts.users.push_back(Person(nick));
  ASSERT_TRUE(server_->Seed(accounts, [](const auto&) {}));
  Tribe(nicks);
  const auto harbor = Connect(L"harbor");
  std::vector<std::shared_ptr<Device>> listeners;
  for (std::size_t i = 1; i < nicks.size(); ++i) listeners.push_back(Connect(nicks[i]));
  for (const auto& listener : listeners) listener->Settle();

  constexpr std::int64_t kMessages = 20;
  std::chrono::steady_clock::duration spent{};
  for (std::int64_t msgid = 1; msgid <= kMessages; ++msgid) {
    harbor->Say(kTribe, msgid, L"a message of the usual length to everybody who is there");
    // The server turns to this when all have been told.
    const auto start = std::chrono::steady_clock::now();
    harbor->Ask(link::GetRoaming{});
    spent += std::chrono::steady_clock::now() - start;
  }
  for (const auto& listener : listeners) {
    listener->Settle();
    ASSERT_EQ(listener->Msgids().size(), std::size_t{kMessages});
    EXPECT_EQ(listener->Msgids().back(), kMessages);
  }
  RecordProperty(
      "microseconds_a_message",
      std::to_string(
          std::chrono::duration_cast<std::chrono::microseconds>(spent / kMessages).count()));
  EXPECT_EQ(Count("SELECT count(*) FROM messages"), kMessages);
}

}  // namespace
}  // namespace imsdk::test
