// Contacts on the server: requests and decisions, lists, the black list, presence.
#include <string>
#include <vector>

#include "server_fixture.h"

namespace imsdk::test {
namespace {

using biz::IMContactVerifyType;

class ServerContact : public ServerTest {
 protected:
  ServerContact() { CreateAccounts({L"harbor", L"mariner", L"lighthouse"}); }

  static biz::IMContactVerifyMsgs Requests(Device& device) {
    return device.Ask(link::GetContactVerify{}).reply;
  }
  static biz::ResultCode AskFor(Device& device, const std::wstring& nick,
                                const std::wstring& words = L"it is me", std::int64_t gid = 0) {
    return device.Ask(link::AskContact{{Person(nick), gid, words}}).result;
  }
  static biz::ResultCode Decide(Device& device, const biz::IMContactVerifyMsg& msg,
                                IMContactVerifyType type, const std::wstring& words = {}) {
    return device.Ask(link::DecideContact{{msg.fromid.userid, 0, words, msg.msgid}, type}).result;
  }
  static std::vector<std::wstring> Nicks(Device& device) {
    std::vector<std::wstring> nicks;
    for (const auto& one : device.Ask(link::GetContacts{}).reply.contacts) {
      nicks.push_back(one.contact.userid.nick);
    }
    return nicks;
  }
  // `mariner` lets `harbor` have him.
  void Befriend(Device& harbor, Device& mariner) {
    ASSERT_TRUE(AskFor(harbor, L"mariner").ok());
    ASSERT_TRUE(Decide(mariner, Requests(mariner).msgs.back(), biz::kContactAgreed).ok());
  }
  static bool Shows(const Device& device, const std::wstring& nick, biz::IMContactStatus status) {
    const auto told = device.contact_statuses.find(Person(nick));
    return told != device.contact_statuses.end() && told->second.back() == status;
  }
};

TEST_F(ServerContact, EveryDecisionIsSeenFromBothSides) {
  struct Case {
    IMContactVerifyType decision;
    int told_as;  // to who asked; 0: not at all
    std::vector<std::wstring> of_harbor, of_mariner;
    bool final = true;
  };
  const Case cases[] = {
      {biz::kContactAgreed, biz::kContactAnsweredYes, {L"mariner"}, {}},
      {biz::kContactAgreedAndAdded, biz::kContactAnsweredAndAdded, {L"mariner"}, {L"harbor"}},
      {biz::kContactRefused, biz::kContactAnsweredNo, {}, {}},
      {biz::kContactBlacked, biz::kContactAnsweredNo, {}, {}},
      {biz::kContactIgnored, 0, {}, {}, false},
      {biz::kContactReported, 0, {}, {}, false},
  };
  int number = 0;
  for (const Case& one : cases) {
    SCOPED_TRACE(one.decision);
    const std::wstring asks = L"asks" + std::to_wstring(++number);
    const std::wstring asked = L"asked" + std::to_wstring(number);
    CreateAccounts({asks, asked});
    const auto harbor = Connect(asks);
    const auto mariner = Connect(asked);
    const auto group = harbor->Ask(link::SetContactGroup{{0, 0, L"crew"}}).reply.groupid;
    ASSERT_TRUE(AskFor(*harbor, asked, L"first words").ok());
    ASSERT_TRUE(AskFor(*harbor, asked, L"better words", group).ok());

    auto requests = Requests(*mariner).msgs;
    ASSERT_EQ(requests.size(), 1U) << "asked again it is the same request";
    EXPECT_EQ(requests[0].fromid.userid, Person(asks));
    EXPECT_EQ(requests[0].authinfo, L"better words");
    EXPECT_EQ(requests[0].gidinpeergroup, group);
    EXPECT_EQ(requests[0].type, biz::kContactAsked);
    ASSERT_TRUE(Decide(*mariner, requests[0], one.decision, L"so be it").ok());

    EXPECT_EQ(Requests(*mariner).msgs.at(0).type, one.decision);
    const auto answers = Requests(*harbor).msgs;
    ASSERT_EQ(answers.size(), one.told_as == 0 ? 0U : 1U);
    if (one.told_as != 0) {
      EXPECT_EQ(answers[0].type, one.told_as);
      EXPECT_EQ(answers[0].fromid.userid, Person(asked));
      EXPECT_EQ(answers[0].authinfo, L"so be it");
    }
    EXPECT_EQ(Nicks(*harbor).size(), one.of_harbor.size());
    EXPECT_EQ(Nicks(*mariner).size(), one.of_mariner.size());
    if (!one.of_harbor.empty()) {
      EXPECT_EQ(harbor->Ask(link::GetContacts{}).reply.contacts.at(0).gid, group);
      EXPECT_EQ(AskFor(*harbor, asked).subcode, biz::kContactAlready);
    }
    const auto again = Decide(*mariner, requests[0], biz::kContactAgreed);
    EXPECT_EQ(again.subcode, one.final ? biz::kContactAlreadyDecided : 0);
    EXPECT_EQ(AskFor(*harbor, asked).subcode,
              !one.final || !one.of_harbor.empty()   ? biz::kContactAlready
              : one.decision == biz::kContactBlacked ? biz::kContactBlackListed
                                                     : 0);
  }
}

TEST_F(ServerContact, OneOfTwoDevicesDecidesAndAllAreTold) {
  const auto harbor = Connect(L"harbor");
  const auto desk = Connect(L"mariner");
  const auto phone = Connect(L"mariner", "phone");
  ASSERT_TRUE(AskFor(*harbor, L"mariner").ok());
  const auto request = Requests(*desk).msgs.at(0);
  const link::DecideContact agree{{request.fromid.userid, 0, {}, request.msgid},
                                  biz::kContactAgreed};
  link::DecideContact refuse = agree;
  refuse.type = biz::kContactRefused;
  const auto first = Await<link::Nothing>([&](auto done) {
    desk->AskOnly(agree, done);
    phone->AskOnly(refuse, [](const biz::ResultCode&, const link::Nothing&) {});
  });
  const bool agreed = first.result.ok();
  phone->Settle();
  EXPECT_EQ(Requests(*phone).msgs.at(0).type, agreed ? biz::kContactAgreed : biz::kContactRefused);
  EXPECT_EQ(Requests(*harbor).msgs.size(), 1U) << "who asked hears of one decision";
  for (const auto& device : {desk, phone}) {
    device->Until([](const Device& told) {
      const auto all = told.All<link::ContactVerifyTold>();
      return !all.empty() && all.back().msg.type != biz::kContactAsked;
    });
  }
  // What another one decided on, and what is somebody else's, is out of reach.
  const auto lighthouse = Connect(L"lighthouse");
  EXPECT_EQ(Decide(*lighthouse, request, biz::kContactAgreed).subcode, biz::kContactNoSuchRequest);
  EXPECT_EQ(Decide(*harbor, request, biz::kContactAgreed).subcode, biz::kContactNoSuchRequest);
  EXPECT_TRUE(
      lighthouse->Ask(link::DeleteContactVerify{{{{{}, 0, {}, request.msgid}}}}).result.ok());
  EXPECT_EQ(Requests(*desk).msgs.size(), 1U);
}

TEST_F(ServerContact, WhoIsOnTheBlackListReachesNobodyAndSeesNobody) {
  const auto harbor = Connect(L"harbor");
  const auto mariner = Connect(L"mariner");
  Befriend(*harbor, *mariner);
  harbor->Until([](const Device& d) { return Shows(d, L"mariner", biz::kContactOnline); });

  ASSERT_TRUE(mariner->Ask(link::SetBlack{{Person(L"harbor"), true}}).result.ok());
  harbor->Until([](const Device& d) { return Shows(d, L"mariner", biz::kContactOffline); });
  EXPECT_EQ(harbor->Ask(link::FindUsers{{Person(L"mariner")}}).reply.contacts.at(0).status,
            biz::kContactOffline);
  const auto refused = harbor->Say(With(L"mariner"), 1).result;
  EXPECT_EQ(refused.code, biz::kEngineRefused);
  EXPECT_EQ(refused.subcode, biz::kContactBlackListed);
  EXPECT_TRUE(harbor->Ask(link::SendTyping{With(L"mariner"), 1}).result.ok());
  EXPECT_TRUE(mariner->Say(With(L"harbor"), 2).result.ok()) << "it binds one side only";
  ASSERT_TRUE(harbor->Ask(link::RemoveContact{Person(L"mariner")}).result.ok());
  EXPECT_EQ(AskFor(*harbor, L"mariner").subcode, biz::kContactBlackListed);
  EXPECT_EQ(mariner->Ask(link::GetBlack{}).reply.contacts.size(), 1U);

  Start();  // it is kept
  const auto back = Connect(L"harbor");
  const auto owner = Connect(L"mariner");
  EXPECT_EQ(back->Say(With(L"mariner"), 3).result.subcode, biz::kContactBlackListed);
  ASSERT_TRUE(owner->Ask(link::SetBlack{{Person(L"harbor"), false}}).result.ok());
  EXPECT_TRUE(back->Say(With(L"mariner"), 4).result.ok());
  EXPECT_TRUE(AskFor(*back, L"mariner").ok());
  owner->Settle();
  EXPECT_TRUE(mariner->typing.empty());
}

TEST_F(ServerContact, PresenceIsForThoseWhoHaveTheContact) {
  const auto harbor = Connect(L"harbor");
  const auto lighthouse = Connect(L"lighthouse");
  {
    const auto mariner = Connect(L"mariner");
    Befriend(*harbor, *mariner);
    harbor->Until([](const Device& d) { return Shows(d, L"mariner", biz::kContactOnline); });
    mariner->Disconnect();
  }
  harbor->Until([](const Device& d) { return Shows(d, L"mariner", biz::kContactOffline); });
  const auto again = Connect(L"mariner");
  harbor->Until([](const Device& d) { return Shows(d, L"mariner", biz::kContactOnline); });
  EXPECT_EQ(harbor->Ask(link::GetContacts{}).reply.contacts.at(0).contact.status,
            biz::kContactOnline);
  // Neither a stranger nor, in turn, the contact himself.
  EXPECT_TRUE(lighthouse->contact_statuses.empty());
  EXPECT_FALSE(again->contact_statuses.contains(Person(L"harbor")));
  for (const auto& device : {lighthouse, again}) {
    EXPECT_EQ(device->Ask(link::FindUsers{{Person(L"harbor"), Person(L"nobody")}})
                  .reply.contacts.at(0)
                  .status,
              biz::kContactOffline);
  }
}

TEST_F(ServerContact, GroupsHoldContactsAndAreTheListsOwn) {
  const auto harbor = Connect(L"harbor");
  const auto mariner = Connect(L"mariner");
  Befriend(*harbor, *mariner);
  const auto make = [&](std::int64_t gid, std::int64_t parent, const std::wstring& name) {
    return harbor->Ask(link::SetContactGroup{{gid, parent, name}});
  };
  const auto crew = make(0, 0, L"crew").reply.groupid;
  const auto deck = make(0, crew, L"deck").reply.groupid;
  EXPECT_NE(crew, deck);
  EXPECT_EQ(make(0, deck, L"deeper").result.subcode, biz::kContactNoSuchGroup);
  EXPECT_EQ(make(0, 0, L" \u3000").result.code, biz::kEngineEmpty);
  EXPECT_EQ(make(deck + 1, 0, L"unknown").result.subcode, biz::kContactNoSuchGroup);
  EXPECT_EQ(mariner->Ask(link::SetContactGroup{{crew, 0, L"taken over"}}).result.subcode,
            biz::kContactNoSuchGroup);
  const auto move = [&](std::int64_t gid) {
    return harbor->Ask(link::MoveContact{{Person(L"mariner"), gid}}).result;
  };
  EXPECT_EQ(move(deck + 1).subcode, biz::kContactNoSuchGroup);
  EXPECT_TRUE(move(deck).ok());
  EXPECT_TRUE(harbor->Ask(link::SetAsterisk{{Person(L"mariner"), true}}).result.ok());
  EXPECT_EQ(harbor->Ask(link::SetAsterisk{{Person(L"lighthouse"), true}}).result.subcode,
            biz::kContactNoContact);
  EXPECT_TRUE(make(crew, 0, L"hands").result.ok());
  auto list = harbor->Ask(link::GetContacts{}).reply;
  EXPECT_EQ(list.groups.at(0).name, L"hands");
  EXPECT_EQ(list.contacts.at(0).gid, deck);
  EXPECT_TRUE(list.contacts.at(0).asterisk);

  // Without its group a contact is in none, and keeps its mark.
  EXPECT_TRUE(make(crew, 0, L"").result.ok());
  list = harbor->Ask(link::GetContacts{}).reply;
  EXPECT_TRUE(list.groups.empty());
  EXPECT_EQ(list.contacts.at(0).gid, biz::kRootGroup);
  EXPECT_TRUE(list.contacts.at(0).asterisk);
}

TEST_F(ServerContact, NamesReachWhoHasTheContactAndAreFound) {
  const auto harbor = Connect(L"harbor");
  const auto mariner = Connect(L"mariner");
  Befriend(*harbor, *mariner);
  const std::wstring name = L"Old M\u00c4RINER <b>";
  ASSERT_TRUE(mariner->Ask(link::SetProfile{{name, L"face"}}).result.ok());
  harbor->Until([&](const Device& told) {
    const auto all = told.All<link::ContactChanged>();
    return !all.empty() && all.back().contact.contact.display == name &&
           all.back().contact.contact.portrait == L"face";
  });
  const auto found = [&](const std::wstring& key) {
    return harbor->Ask(link::SearchUsers{{key}}).reply.contacts.size();
  };
  EXPECT_EQ(found(L"HARB"), 1U);
  EXPECT_EQ(found(L"mariner"), 1U);
  EXPECT_EQ(found(L"<B>"), 1U);
  EXPECT_EQ(found(L""), 0U);
  EXPECT_EQ(found(L"nobody"), 0U);
  EXPECT_EQ(AskFor(*harbor, L"nobody").code, biz::kEngineUnknownUser);
  EXPECT_EQ(AskFor(*harbor, L"harbor").subcode, biz::kContactYourself);
}

TEST_F(ServerContact, RequestsArePagedFromAnyMessageInBothDirections) {
  constexpr int kAll = 25;
  const auto mariner = Connect(L"mariner");
  for (int i = 0; i < kAll; ++i) {
    const std::wstring nick = L"n" + std::to_wstring(i);
    CreateAccounts({nick});
    ASSERT_TRUE(AskFor(*Connect(nick), L"mariner").ok());
  }
  const auto page = [&](const biz::IMContactVerifyPage& asked) {
    std::vector<std::wstring> nicks;
    std::vector<std::int64_t> ids;
    for (const auto& msg : mariner->Ask(link::GetContactVerify{asked}).reply.msgs) {
      nicks.push_back(msg.fromid.userid.nick);
      ids.push_back(msg.msgid);
    }
    return std::make_pair(nicks, ids);
  };
  using Nicks = std::vector<std::wstring>;
  const auto [newest, ids] = page({});
  ASSERT_EQ(newest.size(), 20U);
  EXPECT_EQ(newest.back(), L"n24");
  const std::int64_t boundary = ids.front();  // n5
  EXPECT_EQ(page({0, 0, boundary, 3, 1, 0}).first, (Nicks{L"n3", L"n4", L"n5"}));
  EXPECT_EQ(page({0, 0, boundary, 3, 1, 1}).first, (Nicks{L"n2", L"n3", L"n4"}));
  EXPECT_EQ(page({0, 0, boundary, 3, 0, 0}).first, (Nicks{L"n5", L"n6", L"n7"}));
  EXPECT_EQ(page({0, 0, boundary, 3, 0, 1}).first, (Nicks{L"n6", L"n7", L"n8"}));
  EXPECT_EQ(page({0, 0, 0, 1000, 0, 0}).first.size(), std::size_t{kAll});
  EXPECT_TRUE(page({0, 1, 0, 0, 0, 0}).first.empty()) << "nothing is that old";

  // One that was taken off the list is gone for all pages, and still waits for who asked.
  ASSERT_TRUE(mariner->Ask(link::DeleteContactVerify{{{{{}, 0, {}, boundary}}}}).result.ok());
  EXPECT_EQ(page({0, 0, boundary, 2, 1, 0}).first, (Nicks{L"n3", L"n4"}));
  ASSERT_TRUE(AskFor(*Connect(L"n5"), L"mariner", L"please").ok());
  EXPECT_EQ(page({0, 0, boundary, 2, 1, 0}).first, (Nicks{L"n4", L"n5"}));
}

}  // namespace
}  // namespace imsdk::test
