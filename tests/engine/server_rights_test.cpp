// Who may do what in a tribe, and how what was done is heard.
#include <map>
#include <set>

#include "server_fixture.h"
#include "sqlite/database.h"

namespace imsdk::test {
namespace {

constexpr biz::IMTribeID kId{77};

template <class Operation>
std::function<biz::ResultCode(Device&)> Asks(Operation operation) {
  return [operation](Device& device) { return device.Ask(operation).result; };
}

struct Teller {
  std::string operator()(const link::Message& m) { return "says " + std::to_string(m.msgid); }
  std::string operator()(const link::Membership& m) { return m.member ? "in" : "out"; }
  std::string operator()(const link::TribeHappening& h) { return std::visit(*this, h.change); }
  std::string operator()(const link::TribeJoined& c) { return "joined " + Of(c.member.userid); }
  std::string operator()(const link::TribeLeft& c) {
    return (c.kicked ? "kicked " : "quit ") + Of(c.user) + std::to_string(c.members);
  }
  std::string operator()(const link::TribeLevelChanged& c) { return "level " + Of(c.user); }
  std::string operator()(const link::TribeTransferred& c) { return "owner " + Of(c.owner); }
  std::string operator()(const link::TribeInfoChanged& c) {
    std::string text = "info";
    for (const auto& [key, value] : c.detail) text += std::to_string(key) + Narrow(value);
    return text;
  }
  std::string operator()(const link::TribeMemberChanged& c) {
    return Of(c.user) + " is " + Narrow(c.detail.at(biz::kTribeUserKeyNickname));
  }
  std::string operator()(const link::TribeEnabled& c) { return c.enabled ? "open" : "closed"; }
  std::string operator()(const link::TribeVisitorsCleared&) { return "cleared"; }
  template <class Other>
  std::string operator()(const Other&) {
    return "other";
  }
  static std::string Narrow(const std::wstring& text) { return {text.begin(), text.end()}; }
  static std::string Of(const biz::IMUserID& user) { return Narrow(user.nick); }
};

// What a device was told, in order.
std::vector<std::string> Story(const Device& device) {
  std::vector<std::string> story;
  for (const auto& batch : device.batches) {
    for (const auto& entry : batch.entries) story.push_back(std::visit(Teller{}, entry));
  }
  return story;
}

class ServerRights : public ServerTest {
 protected:
  void SetUp() override {
    CreateAccounts({L"harbor", L"pilot", L"mate", L"mariner", L"lighthouse", L"stranger"});
    Tribe({L"harbor", L"pilot", L"mate", L"mariner", L"lighthouse"});
    harbor_ = Connect(L"harbor");
    for (const auto* nick : {L"pilot", L"mate"}) {
      EXPECT_TRUE(Good(link::SetTribeLevel{kId, Person(nick), biz::kTribeManager}));
    }
    EXPECT_TRUE(Good(link::ChangeTribe{kId, biz::kTribeKeyAuthType, L"0"}));
  }
  template <class Operation>
  bool Good(Operation operation) {
    return harbor_->Ask(operation).result.ok();
  }
  std::shared_ptr<Device> harbor_;
};

TEST_F(ServerRights, AreOneTableOfRoleByOperation) {
  using biz::TribeMemberLevel;
  const auto mate = Person(L"mate");
  const auto light = Person(L"lighthouse");
  const auto stranger = Person(L"stranger");
  const auto harbor = Person(L"harbor");
  biz::IMTribeVerifyAction none{{}, kId, {}, 999};
  const struct {
    const char* name;
    std::function<biz::ResultCode(Device&)> ask;
    int outsider, member, manager, owner;  // sub-codes, 0 for success
  } rows[] = {
      {"members", Asks(link::GetTribeMembers{kId}), 2, 0, 0, 0},
      {"find", Asks(link::FindTribeMembers{kId, {light}}), 2, 0, 0, 0},
      {"name", Asks(link::ChangeTribe{kId, biz::kTribeKeyName, L"Quay"}), 2, 4, 0, 0},
      {"bulletin", Asks(link::ChangeTribe{kId, biz::kTribeKeyBulletin, L"b"}), 2, 4, 0, 0},
      {"auth", Asks(link::ChangeTribe{kId, biz::kTribeKeyAuthType, L"1"}), 2, 4, 0, 0},
      {"password", Asks(link::GetJoinPassword{kId}), 2, 4, 0, 0},
      {"visitors", Asks(link::CountVisitors{kId}), 2, 4, 0, 0},
      {"clear", Asks(link::CountVisitors{kId, true}), 2, 4, 0, 0},
      {"nickname", Asks(link::SetTribeNickname{kId, light, L"Lamp"}), 2, 4, 0, 0},
      {"nickname of a manager", Asks(link::SetTribeNickname{kId, mate, L"M"}), 2, 4, 5, 0},
      {"nickname of the owner", Asks(link::SetTribeNickname{kId, harbor, L"H"}), 2, 4, 5, 0},
      {"level", Asks(link::SetTribeLevel{kId, light, biz::kTribeMember}), 2, 3, 3, 0},
      {"transfer", Asks(link::SetTribeLevel{kId, harbor, biz::kTribeOwner}), 2, 3, 3, 16},
      {"remove the owner", Asks(link::RemoveMember{kId, harbor}), 2, 4, 5, 14},
      {"remove a manager", Asks(link::RemoveMember{kId, mate}), 2, 4, 5, 0},
      {"remove an outsider", Asks(link::RemoveMember{kId, Person(L"nobody")}), 2, 4, 6, 6},
      {"enable", Asks(link::EnableTribe{kId}), 2, 3, 3, 17},
      {"black", Asks(link::SetTribeBlack{kId, light, false}), 2, 4, 0, 0},
      {"black owner", Asks(link::SetTribeBlack{kId, harbor}), 2, 4, 5, 16},
      {"black list", Asks(link::GetTribeBlack{kId}), 2, 4, 0, 0},
      {"invite", Asks(link::InviteToTribe{{kId, {light}, {}}}), 2, 4, 11, 11},
      {"decide", Asks(link::DecideVerify{none}), 2, 4, 13, 13},
      {"own invitation", Asks(link::DecideVerify{none, true}), 13, 13, 13, 13},
      {"remind", Asks(link::SetRemindType{kId, biz::kRemindNothing}), 2, 0, 0, 0},
      {"attention", Asks(link::SetAttention{kId, light}), 2, 0, 0, 0},
      {"get attention", Asks(link::GetAttention{kId}), 2, 0, 0, 0},
      {"join", Asks(link::JoinTribe{{kId, L"wrong", {}}}), 9, 11, 11, 11},
  };
  const auto outsider = Connect(L"stranger");
  const auto member = Connect(L"mariner");
  const auto manager = Connect(L"pilot");
  std::map<int, std::set<std::wstring>> texts;
  for (const auto& row : rows) {
    const std::pair<Device*, int> roles[] = {{outsider.get(), row.outsider},
                                             {member.get(), row.member},
                                             {manager.get(), row.manager},
                                             {harbor_.get(), row.owner}};
    for (const auto& [device, expected] : roles) {
      const auto result = row.ask(*device);
      EXPECT_EQ(result.subcode, expected) << row.name;
      EXPECT_EQ(result.code, expected == 0 ? biz::kEngineOk : biz::kEngineRefused) << row.name;
      if (expected != 0) texts[expected].insert(result.text);
    }
  }
  std::set<std::wstring> all;
  for (const auto& [subcode, some] : texts) {
    for (const auto& text : some) {
      EXPECT_FALSE(text.empty());
      EXPECT_TRUE(all.insert(text).second) << "two refusals of one text, " << subcode;
    }
  }
}

TEST_F(ServerRights, WhoMaySeeATribeAndWhatOfIt) {
  const auto outsider = Connect(L"stranger");
  const auto shown = outsider->Ask(link::GetTribe{kId});
  ASSERT_TRUE(shown.result.ok());
  EXPECT_EQ(shown.reply.members, 5);
  EXPECT_EQ(shown.reply.owner, Person(L"harbor"));
  EXPECT_TRUE(Good(link::ChangeTribe{kId, biz::kTribeKeyVisitors, L"1"}));
  EXPECT_TRUE(Good(link::ChangeTribe{kId, biz::kTribeKeyBulletin, L"secret"}));
  EXPECT_TRUE(Good(link::ChangeTribe{kId, biz::kTribeKeyAuthType, L"3"}));
  for (int i = 0; i < 2; ++i) {
    EXPECT_TRUE(outsider->Ask(link::GetTribe{kId}).reply.bulletin.empty());
  }
  EXPECT_EQ(harbor_->Ask(link::CountVisitors{kId}).reply.num, 1);
  EXPECT_TRUE(Good(link::CountVisitors{kId, true}));
  EXPECT_EQ(harbor_->Ask(link::CountVisitors{kId}).reply.num, 0);
  outsider->Ask(link::GetTribe{kId});
  EXPECT_EQ(harbor_->Ask(link::CountVisitors{kId}).reply.num, 1);
  EXPECT_EQ(outsider->Ask(link::JoinTribe{{kId, {}, {}}}).result.subcode, biz::kTribeJoinClosed);
  EXPECT_TRUE(Good(link::ChangeTribe{kId, biz::kTribeKeyVisitors, L"0"}));
  for (const auto& ask : {Asks(link::GetTribe{kId}), Asks(link::GetTribeMembers{kId}),
                          Asks(link::JoinTribe{{kId, {}, {}}})}) {
    const auto hidden = ask(*outsider);
    EXPECT_EQ(hidden.subcode, biz::kTribeUnknown);
    EXPECT_EQ(hidden.text, outsider->Ask(link::GetTribe{{5}}).result.text);
  }
}

TEST_F(ServerRights, AClosedTribeIsReadAndLeftAndNothingElse) {
  EXPECT_TRUE(Good(link::EnableTribe{kId, false}));
  EXPECT_EQ(harbor_->Ask(link::EnableTribe{kId, false}).result.subcode, biz::kTribeAlreadySo);
  for (const auto& ask : {Asks(link::ChangeTribe{kId, biz::kTribeKeyName, L"x"}),
                          Asks(link::SetTribeNickname{kId, Person(L"harbor"), L"x"}),
                          Asks(link::SetTribeLevel{kId, Person(L"mariner"), biz::kTribeManager}),
                          Asks(link::RemoveMember{kId, Person(L"mariner")}),
                          Asks(link::InviteToTribe{{kId, {Person(L"stranger")}, {}}})}) {
    EXPECT_EQ(ask(*harbor_).subcode, biz::kTribeIsClosed);
  }
  EXPECT_EQ(harbor_->Say(kTribe, 1).result.subcode, biz::kTribeIsClosed);
  EXPECT_EQ(Connect(L"stranger")->Ask(link::JoinTribe{{kId, {}, {}}}).result.subcode,
            biz::kTribeIsClosed);
  EXPECT_TRUE(Good(link::GetTribeMembers{kId}));
  EXPECT_TRUE(Connect(L"mariner")->Ask(link::RemoveMember{kId, Person(L"mariner")}).result.ok());
  EXPECT_FALSE(harbor_->Ask(link::GetTribe{kId}).reply.enabled);
  EXPECT_TRUE(Good(link::EnableTribe{kId}));
  EXPECT_TRUE(harbor_->Say(kTribe, 1).result.ok());
}

TEST_F(ServerRights, ChangesStandAmongTheMessagesForAllWhoAreThere) {
  const auto mariner = Connect(L"mariner");
  const auto stranger = Connect(L"stranger");
  const auto phone = Connect(L"stranger", "phone");
  for (const auto& device : {harbor_, mariner, stranger, phone}) {
    device->Settle();
    device->batches.clear();
  }
  const auto entries = Count("SELECT count(*) FROM entries");
  harbor_->Ask(link::ChangeTribe{kId, biz::kTribeKeyName, L"a"});
  harbor_->Ask(link::ChangeTribe{kId, biz::kTribeKeyName, L"a"});
  mariner->Say(kTribe, 1);
  stranger->Ask(link::JoinTribe{{kId, {}, {}}});
  mariner->Say(kTribe, 2);
  stranger->Ask(link::SetTribeNickname{kId, Person(L"stranger"), L"nn"});
  harbor_->Ask(link::ChangeTribe{kId, biz::kTribeKeyJoinPassword, L"pw"});
  harbor_->Ask(link::RemoveMember{kId, Person(L"stranger")});
  mariner->Say(kTribe, 3);
  harbor_->Ask(link::SetTribeLevel{kId, Person(L"mate"), biz::kTribeOwner});
  EXPECT_EQ(Count("SELECT count(*) FROM entries"), entries + 8) << "one a change, and memberships";
  using Lines = std::vector<std::string>;
  const Lines before{"info1a", "says 1"};
  const Lines during{"joined stranger", "says 2", "stranger is nn", "info7", "kicked stranger5"};
  const Lines after{"says 3", "owner mate"};
  Lines all = before;
  all.insert(all.end(), during.begin(), during.end());
  all.insert(all.end(), after.begin(), after.end());
  Lines own{"in"};
  own.insert(own.end(), during.begin(), during.end());
  own.push_back("out");
  harbor_->Settle();
  EXPECT_EQ(Story(*harbor_), all);
  for (const auto& device : {stranger, phone}) {
    device->Settle();
    EXPECT_EQ(Story(*device), own);
  }
  EXPECT_EQ(stranger->Ask(link::GetHistory{.cid = kTribe}).result.code, biz::kEngineRefused);
  const auto quitted = stranger->Ask(link::GetTribes{.quitted = true}).reply.tribes;
  ASSERT_EQ(quitted.size(), 1U);
  EXPECT_EQ(quitted[0].tribeid, kId);
  // Who was away hears the same, as of before it came.
  const auto away = Connect(L"stranger", "away", "1");
  away->Settle();
  EXPECT_EQ(Story(*away), own);
  EXPECT_TRUE(away->batches.at(0).offline);
  const auto mate = harbor_->Ask(link::GetTribe{kId}).reply;
  EXPECT_EQ(mate.owner, Person(L"mate"));
  EXPECT_EQ(mate.mine.level, biz::kTribeManager);
}

TEST_F(ServerRights, InAMultiChatEverybodyRenamesAndInvites) {
  const auto mariner = Connect(L"mariner");
  biz::IMNewTribe fresh;
  fresh.name = L"chat";
  fresh.type = biz::kMultiChat;
  fresh.members = {Person(L"mariner")};
  const auto id = harbor_->Ask(link::CreateTribe{fresh}).reply.tribeid;
  EXPECT_TRUE(mariner->Ask(link::ChangeTribe{id, biz::kTribeKeyName, L"x"}).result.ok());
  EXPECT_TRUE(mariner->Ask(link::InviteToTribe{{id, {Person(L"stranger")}, {}}}).result.ok());
  EXPECT_TRUE(Connect(L"stranger")->Ask(link::GetTribeMembers{id}).result.ok()) << "at once";
  EXPECT_EQ(harbor_->Ask(link::ChangeTribe{id, biz::kTribeKeyAuthType, L"0"}).result.subcode,
            biz::kTribeNotAMultiChat);
  const auto lists = mariner->Ask(link::GetTribes{}).reply.tribes;
  ASSERT_EQ(lists.size(), 2U);
  EXPECT_EQ(lists[1].name, L"x");
  EXPECT_EQ(lists[1].members, 3);
}

TEST_F(ServerRights, FoundingHasItsBounds) {
  biz::IMNewTribe fresh;
  for (const wchar_t* blank : {L"", L"  ", L"\u3000\t"}) {
    fresh.name = blank;
    EXPECT_EQ(harbor_->Ask(link::CreateTribe{fresh}).result.code, biz::kEngineEmpty);
  }
  fresh.name = L"one of many";
  std::int32_t founded = 0;
  while (founded < 1100 && harbor_->Ask(link::CreateTribe{fresh}).result.ok()) ++founded;
  EXPECT_EQ(founded, 999) << "and the one that was there";
  EXPECT_TRUE(Connect(L"mariner")->Ask(link::CreateTribe{fresh}).result.ok());
}

TEST_F(ServerRights, StoresOfTheVersionBeforeOpen) {
  server_.reset();
  {
    sqlite::Database store(folder_ / "server" / "server.db");
    for (const char* index :
         {"uploads_of", "messages_at", "mentioned_by", "tribes_by_conversation", "managers_of",
          "managed_by", "verify_for", "verify_open", "contacts_of", "contact_groups_of",
          "contact_verify_for", "contact_verify_open"}) {
      store.Execute(("DROP INDEX " + std::string(index)).c_str());
    }
    for (const char* table : {"cloud_files", "mentioned", "mention_reads", "members", "attention",
                              "black", "visitors", "verify", "verify_deleted", "profiles",
                              "contacts", "contact_groups", "black_users", "contact_verify"}) {
      store.Execute(("DROP TABLE " + std::string(table)).c_str());
    }
    for (const char* column : {"type", "description", "portrait", "bulletin", "ntfimage",
                               "businessimage", "class", "level", "auth", "password", "at_all",
                               "visitors", "enabled", "members", "visits", "visit_era"}) {
      store.Execute(("ALTER TABLE tribes DROP COLUMN " + std::string(column)).c_str());
    }
    for (const char* column : {"at_type", "at_readed", "at_unread"}) {
      store.Execute(("ALTER TABLE messages DROP COLUMN " + std::string(column)).c_str());
    }
    store.Execute("ALTER TABLE uploads DROP COLUMN size");
    store.Execute("ALTER TABLE entries DROP COLUMN detail; PRAGMA user_version=1");
  }
  Start();
  const auto members = Connect(L"mariner")->Ask(link::GetTribeMembers{kId}).reply;
  ASSERT_EQ(members.members.size(), 5U);
  EXPECT_EQ(members.total, 5);
  EXPECT_EQ(members.members[0].level, biz::kTribeOwner);
  EXPECT_EQ(members.members[1].level, biz::kTribeMember);
  EXPECT_TRUE(SetMember(L"stranger", true));
}

}  // namespace
}  // namespace imsdk::test
