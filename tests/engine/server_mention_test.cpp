// Mentions on the server: who may, whom they concern, who has read them.
#include <atomic>
#include <map>
#include <set>
#include <utility>

#include "server_fixture.h"

namespace imsdk::test {
namespace {

using Users = std::vector<biz::IMUserID>;

class ServerMentions : public ServerTest {
 protected:
  void SetUp() override { CreateAccounts({L"harbor", L"mariner", L"lighthouse", L"navigator"}); }

  static Answered<link::Delivered> Mention(Device& device, std::int64_t msgid, std::int32_t type,
                                           const Users& members = {},
                                           const biz::IMConversationID& cid = kTribe) {
    link::Message message;
    message.cid = cid;
    message.msgid = message.msgtime = msgid;
    message.body = L"look";
    message.at = {type, members};
    return device.Ask(link::Deliver{message});
  }
  static biz::ResultCode Read(Device& device, const std::vector<link::MessageName>& names) {
    return device.Ask(link::ReadMentions{kTribe.tribe, names}).result;
  }
  static std::string Counts(Device& device, std::int64_t msgid) {
    std::string text;
    for (const auto& one :
         device.Ask(link::CountMentionReaders{kTribe.tribe, {msgid}}).reply.counts) {
      text += std::to_string(one.readedcount) + '/' + std::to_string(one.unreadcount);
    }
    return text;
  }
  // Who has read, then who has not.
  static std::string Readers(Device& device, std::int64_t msgid) {
    std::set<std::wstring> names[2];
    link::GetMentionReaders ask{kTribe.tribe, msgid};
    do {
      const auto part = device.Ask(ask);
      if (!part.result.ok()) return std::to_string(part.result.code);
      for (const auto& one : part.reply.readers) {
        EXPECT_TRUE(names[one.read ? 0 : 1].insert(one.user.nick).second) << "told twice";
      }
      ask.place = part.reply.next;
    } while (!ask.place.empty());
    std::string text;
    for (const auto& some : names) {
      for (const auto& name : some) text += std::string(name.begin(), name.end()) + ' ';
      text += '/';
    }
    return text;
  }
  std::string MentionsOf(Device& device) {
    std::string text;
    for (const auto& one :
         device.Ask(link::GetHistory{.cid = kTribe, .count = 100, .mentions = true}).reply.msgs) {
      text += std::to_string(one.msgid) + (one.at.read ? "r " : " ");
    }
    return text;
  }
};

TEST_F(ServerMentions, MayBeMadeByWhomTheTribeAllows) {
  Tribe({L"harbor", L"mariner", L"lighthouse"});
  const Users lighthouse{Person(L"lighthouse")};
  const Users stranger{Person(L"nobody")};
  const struct {
    const wchar_t* nick;
    const wchar_t* permission;
    std::int32_t type;
    Users members;
    std::int32_t code, subcode;
    biz::IMConversationID cid = kTribe;
  } rows[] = {
      {L"harbor", L"0", biz::kAtAll, {}, 0, 0},
      {L"mariner", L"0", biz::kAtAll, {}, biz::kEngineRefused, biz::kTribeAtAllRefused},
      {L"mariner", L"0", biz::kAtMembers, lighthouse, 0, 0},
      {L"mariner", L"1", biz::kAtAll, {}, 0, 0},
      {L"mariner", L"1", biz::kAtMembers, stranger, biz::kEngineRefused, biz::kTribeUserNotAMember},
      {L"mariner", L"1", biz::kAtMembers, {}, biz::kEngineRefused, biz::kTribeUserNotAMember},
      {L"mariner", L"1", 3, {}, biz::kEngineRefused, 0},
      {L"mariner", L"1", -1, {}, biz::kEngineRefused, 0},
      {L"mariner", L"1", biz::kAtAll, {}, biz::kEngineRefused, 0, With(L"harbor")},
      {L"navigator", L"1", biz::kAtAll, {}, biz::kEngineRefused, biz::kTribeNotAMember},
  };
  const auto owner = Connect(L"harbor", "owner");
  std::int64_t msgid = 0;
  for (const auto& row : rows) {
    owner->Ask(link::ChangeTribe{kTribe.tribe, biz::kTribeKeyAtAll, row.permission});
    const auto said = Mention(*Connect(row.nick), ++msgid, row.type, row.members, row.cid);
    if (row.subcode == biz::kTribeNotAMember) {
      EXPECT_EQ(said.result.code, row.code) << "an outsider";
      continue;
    }
    EXPECT_EQ(said.result.code, row.code) << msgid;
    EXPECT_EQ(said.result.subcode, row.subcode) << msgid;
    EXPECT_EQ(said.result.ok(), said.result.text.empty());
  }
}

TEST_F(ServerMentions, ReadersAreExactWhileManyRead) {
  constexpr int kMany = 60;
  std::vector<std::wstring> nicks{L"harbor"};
  for (int i = 0; i < kMany; ++i) nicks.push_back(L"m" + std::to_wstring(i));
  CreateAccounts({nicks.begin() + 1, nicks.end()});
  Tribe(nicks);
  const auto harbor = Connect(L"harbor");
  ASSERT_TRUE(Mention(*harbor, 1, biz::kAtAll).result.ok());
  ASSERT_TRUE(Mention(*harbor, 2, biz::kAtMembers,
                      {Person(L"m0"), Person(L"m1"), Person(L"harbor"), Person(L"mariner")})
                  .result.ok());
  EXPECT_EQ(Counts(*harbor, 1), "0/60");
  EXPECT_EQ(Counts(*harbor, 2), "0/2");
  std::vector<std::shared_ptr<Device>> readers;
  for (int i = 0; i < kMany; ++i)
    readers.push_back(Connect(nicks[static_cast<std::size_t>(i) + 1]));
  // All but the last ten read, each three times.
  std::atomic<int> open{0};
  for (int round = 0; round < 3; ++round) {
    for (int i = 0; i < kMany - 10; ++i) {
      ++open;
      readers[static_cast<std::size_t>(i)]->AskOnly(
          link::ReadMentions{kTribe.tribe, {{Person(L"harbor"), 1}, {Person(L"harbor"), 2}}},
          [&open](const biz::ResultCode& result, const auto&) {
            EXPECT_TRUE(result.ok());
            --open;
          });
    }
  }
  for (const auto& reader : readers) reader->Settle();
  EXPECT_EQ(open, 0);
  EXPECT_EQ(Counts(*harbor, 1), "50/10");
  EXPECT_EQ(Counts(*harbor, 2), "2/0");
  EXPECT_EQ(Readers(*harbor, 2), "m0 m1 //");
  harbor->Settle();
  std::set<biz::IMUserID> told;
  std::int32_t last = 0;
  for (const auto& read : harbor->All<link::MentionsRead>()) {
    EXPECT_TRUE(told.insert(read.reader).second) << "told once";
    EXPECT_EQ(read.sender, Person(L"harbor"));
    EXPECT_EQ(read.counts[0].readedcount, ++last);
    EXPECT_EQ(read.counts[0].unreadcount, kMany - last);
  }
  EXPECT_EQ(last, 50);

  // Who leaves is waited for no more, and who has read stays among the readers; who comes later,
  // or again, is not meant.
  EXPECT_TRUE(SetMember(L"m59", false));
  EXPECT_TRUE(SetMember(L"m0", false));
  EXPECT_TRUE(SetMember(L"navigator", true));
  EXPECT_TRUE(SetMember(L"m59", true));
  EXPECT_EQ(Counts(*harbor, 1), "50/9");
  const auto navigator = Connect(L"navigator");
  for (const auto& late : {navigator, readers.back()}) {
    EXPECT_TRUE(Read(*late, {{Person(L"harbor"), 1}}).ok());
  }
  EXPECT_EQ(Counts(*harbor, 1), "50/9");
  EXPECT_EQ(Counts(*navigator, 1), "") << "somebody else's";
  EXPECT_EQ(Readers(*navigator, 1), std::to_string(biz::kEngineNotFound));
  const auto list = Readers(*harbor, 1);
  EXPECT_NE(list.find("m0 "), list.npos);
  EXPECT_EQ(list.substr(list.find('/')), "/m50 m51 m52 m53 m54 m55 m56 m57 m58 /");
  EXPECT_TRUE(harbor->Ask(link::Withdraw{kTribe, 1}).result.ok());
  EXPECT_EQ(Counts(*harbor, 1), "") << "it mentions nobody any more";
}

TEST_F(ServerMentions, AreSeenAsTheStayAllows) {
  Tribe({L"harbor", L"lighthouse"});
  const auto harbor = Connect(L"harbor");
  const auto lighthouse = Connect(L"lighthouse");
  harbor->Ask(link::ChangeTribe{kTribe.tribe, biz::kTribeKeyAtAll, L"1"});
  const auto around = [](Device& device, const wchar_t* from, std::int64_t msgid) {
    const auto asked = device.Ask(link::GetContext{kTribe, {Person(from), msgid}, 3});
    std::string text = std::to_string(asked.result.code) + ':';
    for (const auto& one : asked.reply.msgs) text += ' ' + std::to_string(one.msgid);
    return text;
  };
  Mention(*harbor, 1, biz::kAtAll);
  Mention(*harbor, 2, biz::kAtMembers, {Person(L"mariner")});
  SetMember(L"mariner", true);
  Mention(*harbor, 3, biz::kAtAll);
  Mention(*lighthouse, 3, biz::kAtMembers, {Person(L"mariner")});  // two senders, one identifier
  SetMember(L"mariner", false);
  Mention(*harbor, 4, biz::kAtAll);
  const auto mariner = Connect(L"mariner", "desk", "1");
  const auto refused = std::to_string(biz::kEngineRefused) + ':';
  EXPECT_EQ(around(*mariner, L"harbor", 3), refused);
  EXPECT_EQ(Read(*mariner, {{Person(L"harbor"), 3}}).code, biz::kEngineRefused);
  EXPECT_EQ(mariner->Ask(link::GetHistory{.cid = kTribe, .mentions = true}).result.code,
            biz::kEngineRefused);
  SetMember(L"mariner", true);
  Mention(*harbor, 5, biz::kAtAll);
  Mention(*mariner, 6, biz::kAtAll);
  Mention(*lighthouse, 7, biz::kAtMembers, {Person(L"harbor")});
  EXPECT_EQ(MentionsOf(*mariner), "5 ") << "of this stay, its own not";
  EXPECT_EQ(around(*mariner, L"harbor", 4), std::to_string(biz::kEngineNotFound) + ':');
  EXPECT_EQ(around(*mariner, L"harbor", 5), "0: 5 6");
  harbor->Ask(link::ChangeTribe{kTribe.tribe, biz::kTribeKeyOpenHistory, L"1"});
  EXPECT_EQ(around(*mariner, L"harbor", 4), "0: 3 4 5");
  EXPECT_EQ(MentionsOf(*mariner), "5 ") << "what was before can be seen and is not meant";
  const auto page = mariner->Ask(link::GetHistory{.cid = kTribe, .count = 100}).reply.msgs;
  ASSERT_EQ(page.size(), 8U);
  for (const auto& message : page) EXPECT_EQ(message.at.before, message.msgid < 5);
  EXPECT_TRUE(Read(*mariner, {{Person(L"harbor"), 4}, {Person(L"harbor"), 5}}).ok());
  EXPECT_EQ(MentionsOf(*mariner), "5r ");
  EXPECT_EQ(Counts(*harbor, 4), "0/1") << "lighthouse alone";
  EXPECT_EQ(Counts(*harbor, 5), "1/1");

  // Of two messages with one identifier one is read.
  EXPECT_TRUE(Read(*lighthouse, {{Person(L"harbor"), 3}}).ok());
  EXPECT_EQ(Counts(*harbor, 3), "1/0");
  EXPECT_EQ(Counts(*lighthouse, 3), "0/0") << "mariner has left since";
  mariner->Settle();
  std::string fed;
  for (const auto& message : mariner->All<link::Message>()) {
    fed += std::to_string(message.msgid) + ' ';
  }
  EXPECT_EQ(fed, "3 3 5 7 ");
}

TEST_F(ServerMentions, AnotherDeviceIsToldWhatWasReadAndOfRemindTypes) {
  Tribe({L"harbor", L"mariner"});
  const auto harbor = Connect(L"harbor");
  const auto desk = Connect(L"mariner", "desk");
  const auto phone = Connect(L"mariner", "phone");
  Mention(*harbor, 1, biz::kAtAll);
  EXPECT_TRUE(Read(*desk, {{Person(L"harbor"), 1}}).ok());
  EXPECT_TRUE(desk->Ask(link::SetRemindType{kTribe.tribe, biz::kRemindNothing}).result.ok());
  for (const auto& [device, count] : {std::pair{desk, 0U}, std::pair{phone, 1U}}) {
    device->Settle();
    const auto read = device->All<link::MentionsRead>();
    const auto reminds = device->All<link::RemindChanged>();
    ASSERT_EQ(read.size(), count);
    ASSERT_EQ(reminds.size(), count);
    if (count == 0) continue;
    EXPECT_EQ(read[0].reader, Person(L"mariner"));
    EXPECT_EQ(read[0].sender, Person(L"harbor"));
    EXPECT_EQ(reminds[0].type, biz::kRemindNothing);
  }
}

TEST_F(ServerMentions, TenThousandMessagesOverAHundredTribesWithAReloadInTheMiddle) {
  constexpr int kTribes = 100;
  constexpr int kMessages = 10'000;
  std::vector<biz::IMConversationID> tribes;
  for (int i = 1; i <= kTribes; ++i) {
    const NewTribe tribe{{1000 + i}, L"t", Person(L"harbor"), {Person(L"mariner")}};
    tribes.push_back(biz::IMConversationID(server_->CreateTribe(tribe)));
  }
  const auto harbor = Connect(L"harbor");
  auto mariner = Connect(L"mariner", "desk", "1");
  std::atomic<int> archived{0};
  std::vector<link::Batch> seen;
  for (int i = 1; i <= kMessages; ++i) {
    link::Message message;
    message.cid = tribes[static_cast<std::size_t>(i * 7 % kTribes)];
    message.msgid = message.msgtime = i;
    message.body = L"burst";
    harbor->AskOnly(link::Deliver{message}, [&](const biz::ResultCode& result, const auto&) {
      if (result.ok()) ++archived;
    });
    if (i != kMessages / 2) continue;
    mariner->Until([](const Device& device) { return device.Msgids().size() > 500; });
    mariner->Disconnect();
    seen = mariner->batches;
    mariner = Connect(L"mariner", "desk", seen.back().position);
  }
  harbor->Settle();
  mariner->Settle();
  EXPECT_EQ(archived, kMessages);
  std::map<std::int64_t, std::int64_t> newest;  // by tribe
  std::set<std::int64_t> msgids;
  const auto take = [&](const std::vector<link::Batch>& batches) {
    for (const auto& batch : batches) {
      for (const auto& entry : batch.entries) {
        const auto* message = std::get_if<link::Message>(&entry);
        if (!message) continue;
        EXPECT_TRUE(msgids.insert(message->msgid).second) << "twice";
        EXPECT_LT(std::exchange(newest[message->cid.tribe.id], message->msgid), message->msgid);
      }
    }
  };
  take(seen);
  take(mariner->batches);
  EXPECT_EQ(msgids.size(), static_cast<std::size_t>(kMessages));
}

}  // namespace
}  // namespace imsdk::test
