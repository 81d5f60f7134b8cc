// One account on several devices.
#include <stdexcept>

#include "account/session/device_name.h"
#include "device.h"

namespace imsdk::test {
namespace {

class DevicesTest : public PeersTest {
 protected:
  using Texts = std::vector<std::wstring>;

  // Waits until the witness was told of exactly these, received or sent.
  static void ExpectReceived(Witness& witness, const Texts& texts) {
    witness.Await([&](const Witness& seen) { return seen.received.size() >= texts.size(); });
    EXPECT_EQ(Bodies(witness.received), texts);
  }
  static void ExpectSent(Witness& witness, const Texts& texts) {
    witness.Await([&](const Witness& seen) { return seen.sent.size() >= texts.size(); });
    EXPECT_EQ(Bodies(witness.sent), texts);
  }
};

TEST_P(DevicesTest, EachHearsWhatItHasNotHeard) {
  Device second(server_->Link());
  second.Login(kHarbor);
  Witness here(kHarbor);
  Witness there(kHarbor, second.accounts());
  Witness mariner(kMariner);
  Send(kMariner, kHarbor, L"1");
  ExpectReceived(here, {L"1"});
  ExpectReceived(there, {L"1"});

  Send(kHarbor, kMariner, L"2");
  ExpectSent(there, {L"2"});
  ASSERT_TRUE(here.AwaitStatuses(1));
  EXPECT_EQ(there.sent[0].msgstatus, biz::kMsgSent);
  if (!GetParam().rude) {
    EXPECT_EQ(there.sent[0].svrtime, here.statuses[0].svrtime);
  }
  EXPECT_EQ(there.sent[0].cid, biz::IMConversationID(kMariner));
  Send(kHarbor, kHarbor, L"note");
  ExpectSent(there, {L"2", L"note"});
  EXPECT_EQ(Unread(second.Chat(kHarbor, kHarbor)), 0);
  ExpectReceived(mariner, {L"2"});

  second.Logout(kHarbor);
  Send(kMariner, kHarbor, L"3");
  ExpectReceived(here, {L"1", L"3"});
  Send(kHarbor, kMariner, L"4");
  ASSERT_TRUE(here.AwaitStatuses(3));
  second.Login(kHarbor);
  ExpectSent(there, {L"2", L"note", L"4"});
  ExpectReceived(there, {L"1", L"3"});
  EXPECT_EQ(Bodies(there.offline), Texts{L"3"});
  EXPECT_FALSE(there.more.back()) << "what follows the messages is over too";

  // A new device stands where the account stands.
  Device third(server_->Link());
  Witness fresh(kHarbor, third.accounts());
  third.Login(kHarbor);
  Send(kMariner, kHarbor, L"5");
  fresh.Await([](const Witness& seen) {
    return !seen.received.empty() && seen.received.back().msgbody == L"5";
  });
  if (!GetParam().rude) {
    EXPECT_EQ(Bodies(fresh.received), Texts{L"5"});
  }
  ExpectReceived(there, {L"1", L"3", L"5"});
  ExpectReceived(here, {L"1", L"3", L"5"});
  EXPECT_EQ(here.sent.size(), 3U) << "its own messages do not come back";
  EXPECT_TRUE(there.statuses.empty());
  const auto page = Answer<biz::IMMessagePage>(
      [&](auto done) { second.Chat(kHarbor, kMariner)->GetLocalHisMsg({}, done); });
  EXPECT_EQ(Bodies(page.second.msgs), (Texts{L"1", L"2", L"3", L"4", L"5"}));
}

TEST_P(DevicesTest, WhatOneReadsIsReadOnAll) {
  const auto faulty = std::make_shared<FaultyLink>(server_->Link());
  Device second(faulty);
  second.Login(kHarbor);
  Witness here(kHarbor);
  Witness there(kHarbor, second.accounts());
  const auto ours = Chat(kHarbor, kMariner);
  const auto theirs = second.Chat(kHarbor, kMariner);
  const auto read = [](const auto& chat) {
    EXPECT_TRUE(Done([&](auto done) { chat->SetMsgRead({}, done); }).ok());
  };
  auto send_two = [&, count = std::size_t{0}]() mutable {
    Send(kMariner, kHarbor, L"a");
    Send(kMariner, kHarbor, L"b");
    count += 2;
    return here.AwaitReceived(count) && there.AwaitReceived(count);
  };
  ASSERT_TRUE(send_two());
  EXPECT_EQ(Unread(theirs), 2);
  read(ours);
  Eventually([&] { return Unread(theirs) == 0; }, "the other device follows");
  EXPECT_TRUE(NewMessages(theirs).msgs.empty());
  const auto boundary = [](const auto& chat) {
    return Answer<biz::IMMsgPosition>([&](auto done) { chat->GetReadedBoundary({}, done); })
        .second.msgid;
  };
  EXPECT_EQ(boundary(theirs), here.received[1].msgid);
  EXPECT_EQ(boundary(ours), here.received[1].msgid);

  // So do virtual conversations.
  ASSERT_TRUE(server_->Publish(VirtualKind::kSystem, User(L"system"), kHarbor, L"welcome"));
  for (Witness* witness : {&here, &there}) {
    witness->Await([](const Witness& seen) { return !seen.system.empty(); });
  }
  const auto virtual_chat = [](const auto& accounts, const biz::IMUserID& self) {
    return Chat(self, biz::IMConversationID(User(L"system"), biz::kCIDSystem), accounts);
  };
  const auto announcements = virtual_chat(second.accounts(), kHarbor);
  EXPECT_EQ(Unread(announcements), 1);
  read(virtual_chat(Accounts(), kHarbor));
  Eventually([&] { return Unread(announcements) == 0; }, "the other device follows");

  // Without a link it is told when the link is back; an answer that is lost, too.
  ASSERT_TRUE(send_two());
  faulty->Shut(true);
  faulty->EndAll(biz::kEngineNoLink);
  Eventually(
      [&] { return second.accounts()->GetAccount(kHarbor)->GetState() != biz::kAccountOnline; },
      "offline");
  read(theirs);
  EXPECT_EQ(Unread(ours), 2);
  faulty->Shut(false);
  Eventually([&] { return Unread(ours) == 0; }, "told later");
  ASSERT_TRUE(send_two());
  faulty->FailNext(Operation::kMarkRead, Fault::kDropRequest);
  read(theirs);
  Done([&](auto done) { second.accounts()->NetReConnect({kHarbor}, done); });
  Eventually([&] { return Unread(ours) == 0; }, "told again");
}

// Whatever comes first, history or the messages themselves: they are told of, once, and unread.
TEST_P(DevicesTest, HistoryDoesNotHideWhatIsNew) {
  constexpr std::size_t kCount = 600;
  constexpr std::size_t kAtLeast = 100;  // come before they are acknowledged
  const auto faulty = std::make_shared<FaultyLink>(server_->Link());
  Device second(faulty);
  second.Login(kHarbor);
  // History is answered after the batch that tells a new device where it stands.
  Answer<biz::IMMessagePage>([&](auto done) {
    second.Chat(kHarbor, kMariner)->GetRemoteHisMsg({.count = 1, .autoroam = true}, done);
  });
  const auto asked = faulty->Asked(Operation::kGetHistory);
  second.Logout(kHarbor);
  Witness here(kHarbor);
  Witness there(kHarbor, second.accounts());
  for (std::size_t i = 0; i < kCount; ++i) Send(kMariner, kHarbor, std::to_wstring(i));
  ASSERT_TRUE(here.AwaitReceived(kCount));
  faulty->HoldAcknowledgements(true);
  second.Login(kHarbor);
  ASSERT_TRUE(there.AwaitReceived(kAtLeast));
  const auto chat = second.Chat(kHarbor, kMariner);
  const auto page = Answer<biz::IMMessagePage>([&](auto done) {
    chat->GetRemoteHisMsg({.count = 1000, .autoroam = true}, done);
    Eventually([&] { return faulty->Asked(Operation::kGetHistory) == asked + 1; },
               "it is asked for");
    faulty->HoldAcknowledgements(false);
  });
  EXPECT_GE(page.second.msgs.size(), kCount / 2) << "a server may have a limit of its own";
  ASSERT_TRUE(there.AwaitReceived(kCount));
  EXPECT_EQ(Unread(chat), static_cast<std::int32_t>(kCount)) << "all came as new";
  const auto offline =
      Answer<biz::IMMessagePage>([&](auto done) { chat->GetOfflineMsg({}, done); });
  EXPECT_EQ(Bodies(offline.second.msgs), Bodies(here.received));
}

TEST_P(DevicesTest, AnInstallationKeepsItsName) {
  const auto name = account::DeviceName(folder_.path() / "client" / "device");
  EXPECT_FALSE(name.empty());
  Again();
  EXPECT_EQ(account::DeviceName(folder_.path() / "client" / "device"), name);
  EXPECT_NE(account::DeviceName(folder_.path() / "another"), name);
  EXPECT_THROW(account::DeviceName(folder_.path() / "no" / "folder"), std::runtime_error);
}

TEST_P(DevicesTest, ReadReportsComeBackToAllDevices) {
  Device second(server_->Link());
  second.Login(kHarbor);
  Witness here(kHarbor);
  Witness there(kHarbor, second.accounts());
  Witness mariner(kMariner);
  for (const auto* text : {L"1", L"2", L"3"}) Send(kHarbor, kMariner, text);
  ASSERT_TRUE(mariner.AwaitReceived(3));
  const auto theirs = Chat(kMariner, kHarbor);
  const auto report = [&](const std::vector<std::int64_t>& msgids) {
    return Done([&](auto done) { theirs->SetFlagsPeerMsgReaded({msgids}, done); }).code;
  };
  EXPECT_EQ(report({mariner.received[1].msgid, 12345}), 0);
  EXPECT_EQ(Unread(theirs), 3) << "a report reads nothing";
  Done([&](auto done) { theirs->SetMsgRead({}, done); });
  EXPECT_EQ(report({}), 0) << "all that are read";
  const int asked = link_->Asked(Operation::kReportRead);
  EXPECT_EQ(report({}), 0);
  EXPECT_EQ(report({mariner.received[0].msgid}), 0);
  EXPECT_EQ(link_->Asked(Operation::kReportRead), asked) << "nothing is left to report";
  for (Witness* witness : {&here, &there}) {
    witness->Await([](const Witness& seen) { return seen.flags.size() >= 3; });
    ASSERT_EQ(witness->flags.size(), 3U);
    EXPECT_EQ(witness->flags[0].msgid, mariner.received[1].msgid);
    EXPECT_EQ(witness->flags[0].readflag, biz::kMsgRead);
    EXPECT_EQ(witness->flags[0].cid, biz::IMConversationID(kMariner));
  }
  const auto flags = Answer<biz::IMReadFlags>([&](auto done) {
                       second.Chat(kHarbor, kMariner)->GetFlagsMyMsgReaded({}, done);
                     }).second.items;
  ASSERT_EQ(flags.size(), 3U);
  for (const auto& flag : flags) EXPECT_EQ(flag.readflag, biz::kMsgRead);
}

TEST_P(DevicesTest, TypingGoesToWhoeverIsThere) {
  Device second(server_->Link());
  second.Login(kMariner);
  Witness here(kMariner);
  Witness there(kMariner, second.accounts());
  Witness harbor(kHarbor);
  const auto typing = [&](std::vector<std::wstring> values) {
    std::vector<biz::IMBodyItem> items;
    for (const auto& value : values) items.push_back({biz::kMsgInputStatus, L"", value, {}, ""});
    if (values.size() > 1) items.back().type = biz::kMsgText;
    return SendItems(Chat(kHarbor, kMariner), items, {});
  };
  EXPECT_EQ(typing({L"1"}), 0);
  for (Witness* witness : {&here, &there}) {
    witness->Await([](const Witness& seen) { return !seen.inputs.empty(); });
    EXPECT_EQ(witness->inputs[0], std::pair(kHarbor, biz::kInputTyping));
  }
  for (const auto& refused : std::vector<std::vector<std::wstring>>{{L""}, {L"2"}, {L"1", L"hi"}}) {
    EXPECT_EQ(typing(refused), biz::kEngineRefused);
  }
  // Not kept for later, and nothing of a message.
  second.Logout(kMariner);
  EXPECT_EQ(typing({L"0"}), 0);
  here.Await([](const Witness& seen) { return seen.inputs.size() == 2; });
  EXPECT_EQ(here.inputs[1].second, biz::kInputStopped);
  second.Login(kMariner);
  Send(kHarbor, kMariner, L"text");
  ASSERT_TRUE(there.AwaitReceived(1));
  ASSERT_TRUE(here.AwaitReceived(1));
  ASSERT_TRUE(harbor.AwaitStatuses(1));
  EXPECT_EQ(there.inputs.size(), 1U);
  EXPECT_EQ(Bodies(here.received), Texts{L"text"});
  EXPECT_EQ(Bodies(harbor.sent), Texts{L"text"});
}

INSTANTIATE_TEST_SUITE_P(Servers, DevicesTest, testing::ValuesIn(ServerKinds()), NameOf);

}  // namespace
}  // namespace imsdk::test
