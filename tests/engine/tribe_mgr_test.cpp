// Tribes as accounts see them, over the embedded server: what several devices know, and what each
// of them is told.
#include <algorithm>
#include <map>

#include "device.h"
#include "embedded/embedded_server.h"
#include "embedded/tribe_desk.h"

namespace imsdk::test {
namespace {

using Story = std::vector<std::string>;
using Mgr = RefPtr<biz::IIMTribeMgr>;
using Asks = std::function<void(const Mgr&, biz::IMCallback<>)>;

constexpr biz::IMTribeID kId{10001};

std::string Narrow(const std::wstring& text) { return {text.begin(), text.end()}; }
std::string Of(const biz::IMUserID& user) { return Narrow(user.nick); }

Mgr MgrOf(const biz::IMUserID& user, const RefPtr<biz::IIMAccountMgr>& accounts = Accounts()) {
  return accounts->GetAccount(user)->GetIMTribeMgr();
}
biz::ResultCode Do(const Mgr& mgr, const Asks& operation) {
  return Done([&](auto done) { operation(mgr, done); });
}
biz::ResultCode DeepLogin(const Mgr& mgr) {
  return Done([&](auto done) { mgr->DeepLogin({kId}, done); });
}

std::string Names(const std::vector<biz::IMTribeMember>& members) {
  std::string names;
  for (const auto& one : members) names += std::to_string(one.level) + Narrow(one.display) + ' ';
  return names;
}
std::string Roster(const Mgr& mgr) {
  const auto [result, roster] =
      Answer<biz::IMTribeRoster>([&](auto done) { mgr->GetTribeMemberList({kId}, done); });
  return result.ok() ? Names(roster.memberlist) : "refused";
}
// What the account knows of the tribe itself, and the members that it knows.
std::string Known(const Mgr& mgr) {
  for (const auto& t :
       Answer<biz::IMTribes>([&](auto done) { mgr->GetTribes({}, done); }).second.tribes) {
    if (t.tribeid != kId) continue;
    return Narrow(t.name + L'|' + t.bulletin + L'|' + t.ntfimage + L'|') +
           std::to_string(t.authtype) + (t.enabled ? "|open " : "|closed ") +
           std::to_string(t.members) + ": " + Roster(mgr);
  }
  return "none";
}

// What one account was told of its tribes and in them, in order.
class Log {
 public:
  explicit Log(const biz::IMUserID& user, const RefPtr<biz::IIMAccountMgr>& accounts = Accounts())
      : lines_(std::make_shared<Lines>()) {
    auto& events = MgrOf(user, accounts)->Events();
    const auto say = [lines = lines_](const std::string& line) {
      std::lock_guard hold(lines->lock);
      lines->story.push_back(line);
    };
    const auto map = [](const auto& detail) {
      std::string text;
      for (const auto& [key, value] : detail) text += ' ' + std::to_string(key) + Narrow(value);
      return text;
    };
    const auto two = [&](auto& event, const std::string& name) {
      event.connect([say, name](const auto&, const auto& actor, const auto& recipient) {
        say(name + ' ' + Of(actor) + ' ' + Of(recipient));
      });
    };
    two(events.on_clear_visitor, "clear");
    two(events.on_close, "close");
    two(events.on_kick_member, "kick");
    two(events.on_quit, "quit");
    two(events.on_transfer, "transfer");
    events.on_enabled.connect([say](const auto&) { say("enabled"); });
    events.on_join.connect([say](const auto&, const auto& actor, const auto& member) {
      say("join " + Of(actor) + ' ' + Narrow(member.display));
    });
    events.on_member_chg_level.connect(
        [say](const auto&, const auto& actor, const auto& who, auto level) {
          say("level " + Of(actor) + ' ' + Of(who) + ' ' + std::to_string(level));
        });
    events.on_ntf_image.connect([say](const auto&, const auto& p) { say("image " + Narrow(p)); });
    events.on_base_info_change.connect(
        [say, map](const auto&, const auto& detail) { say("info" + map(detail)); });
    events.on_bulletin_update.connect([say](const auto&) { say("bulletin"); });
    events.on_member_base_info_change.connect(
        [say, map](const auto&, const auto& who, const auto& detail) {
          say("member " + Of(who) + map(detail));
        });
    events.on_member_status.connect([say](const auto&, const auto& who, auto status) {
      say("status " + Of(who) + ' ' + std::to_string(status));
    });
    events.on_member_count.connect([say](const auto&, auto online, auto total) {
      say("count " + std::to_string(online) + '/' + std::to_string(total));
    });
    events.on_shallow_login.connect([say] { say("shallow"); });
    auto& messages = accounts->GetAccount(user)->GetIMTribeChatMgr()->Events();
    messages.on_receive_new_msg.connect([say](const auto&, const auto& list) {
      for (const auto& one : list) say("says " + Narrow(one.msgbody));
    });
  }

  // Without the counts, which come by the clock, unless they are asked for.
  Story Told(bool counts = false) const {
    std::lock_guard hold(lines_->lock);
    Story story;
    for (const auto& line : lines_->story) {
      if (counts || !line.starts_with("count")) story.push_back(line);
    }
    return story;
  }
  void Await(const Story& wanted) const {
    Eventually([&] { return Told().size() >= wanted.size(); }, "the story");
    EXPECT_EQ(Told(), wanted);
  }
  void AwaitLine(const std::string& line) const {
    Eventually([&] { return std::ranges::count(Told(true), line) == 1; }, line.c_str());
  }

 private:
  struct Lines {
    std::mutex lock;
    Story story;
  };
  const std::shared_ptr<Lines> lines_;
};

class TribeMgrTest : public PeersTest {
 protected:
  void SetUp() override {
    PeersTest::SetUp();
    for (const auto& user : {kLighthouse, kNavigator}) {
      CreateAccount(user);
      test::Login(user);
    }
    server_->CreateTribe({kId, L"Harbour", kHarbor, {kMariner, kLighthouse}});
  }
  static Mgr Open(const biz::IMUserID& user,
                  const RefPtr<biz::IIMAccountMgr>& accounts = Accounts()) {
    const Mgr mgr = MgrOf(user, accounts);
    EXPECT_TRUE(Done([&](auto done) { mgr->ShallowLogin({}, done); }).ok());
    DeepLogin(mgr);
    return mgr;
  }

  const biz::IMUserID kLighthouse = User(L"lighthouse");
  const biz::IMUserID kNavigator = User(L"navigator");
};

TEST_P(TribeMgrTest, WhatIsDoneIsKnownToTheAskerAtOnceAndToAllConcerned) {
  Device second(server_->Link());
  Device away(server_->Link());
  second.Login(kHarbor);
  away.Login(kHarbor);
  Open(kHarbor, away.accounts());
  away.Logout(kHarbor);
  const auto there = Open(kHarbor, second.accounts());
  std::map<std::wstring, Mgr> mgrs;
  std::map<std::wstring, std::unique_ptr<Log>> logs;
  for (const auto& user : {kHarbor, kMariner, kLighthouse, kNavigator}) {
    mgrs[user.nick] = Open(user);
    logs[user.nick] = std::make_unique<Log>(user);
  }
  const Log log_there(kHarbor, second.accounts());

#define OP(call) [&](const Mgr& m, auto done) { m->call; }
  const struct {
    const wchar_t* by;
    Asks does;
    std::string told;   // to all members
    std::string known;  // to the asker, when it is answered
    bool lighthouse = false;
  } steps[] = {
      {L"harbor", OP(SetTribeName({kId, L"Quay"}, done)), "info 1Quay",
       "Quay|||3|open 3: 3harbor 1lighthouse 1mariner ", true},
      {L"harbor", OP(SetTribe({kId, biz::kTribeKeyBulletin, L"tide"}, done)), "bulletin",
       "Quay|tide||3|open 3: 3harbor 1lighthouse 1mariner ", true},
      {L"harbor", OP(SetTribe({kId, biz::kTribeKeyNtfImage, L"n"}, done)), "image n",
       "Quay|tide|n|3|open 3: 3harbor 1lighthouse 1mariner ", true},
      {L"harbor", OP(ChangeLevel({2, kId, kMariner}, done)), "level harbor mariner 2",
       "Quay|tide|n|3|open 3: 3harbor 2mariner 1lighthouse ", true},
      {L"mariner", OP(SetMyTribeNickname({kId, {}, L"Max"}, done)), "member mariner 1Max 4Max",
       "Quay|tide|n|3|open 3: 3harbor 2Max 1lighthouse ", true},
      {L"mariner", OP(SetTribeMemberNicknameByAdmin({kId, kLighthouse, L"Lux"}, done)),
       "member lighthouse 1Lux 4Lux", "Quay|tide|n|3|open 3: 3harbor 2Max 1Lux ", true},
      {L"mariner", OP(SetMyTribeNickname({kId, {}, L""}, done)), "member mariner 1 4mariner",
       "Quay|tide|n|3|open 3: 3harbor 2mariner 1Lux ", true},
      {L"mariner", OP(KickTribeMember({kId, kLighthouse}, done)), "kick mariner lighthouse",
       "Quay|tide|n|3|open 2: 3harbor 2mariner ", true},
      {L"harbor", OP(SetAuthType({kId, biz::kJoinByPassword}, done)), "info 61",
       "Quay|tide|n|1|open 2: 3harbor 2mariner "},
      {L"harbor", OP(SetJoinPwd({kId, L"shell"}, done)), "info 7",
       "Quay|tide|n|1|open 2: 3harbor 2mariner "},
      {L"lighthouse",
       [](const Mgr& m, const biz::IMCallback<>& done) {
         m->JoinTribe({kId, L"shell", {}},
                      [done](const auto& result, const auto&) { done(result); });
       },
       "join lighthouse lighthouse", "Quay|tide|n|1|open 3: 3harbor 2mariner 1lighthouse ", true},
      {L"lighthouse", OP(QuitTribe({kId}, done)), "quit lighthouse lighthouse", "none", true},
      {L"harbor", OP(TransferTribe({kId, kMariner}, done)), "transfer harbor mariner",
       "Quay|tide|n|1|open 2: 3mariner 2harbor "},
      {L"mariner", OP(ClearVisitors({kId}, done)), "clear mariner ",
       "Quay|tide|n|1|open 2: 3mariner 2harbor "},
      {L"mariner", OP(CloseTribe({kId}, done)), "close mariner ",
       "Quay|tide|n|1|closed 2: 3mariner 2harbor "},
      {L"mariner", OP(EnableTribe({kId}, done)), "enabled",
       "Quay|tide|n|1|open 2: 3mariner 2harbor "},
  };
#undef OP
  Story all;
  Story of_lighthouse;
  for (const auto& step : steps) {
    SCOPED_TRACE(step.told);
    const Mgr& asker = mgrs[step.by];
    EXPECT_TRUE(Do(asker, step.does).ok());
    if (step.told.starts_with("join")) {
      EXPECT_NE(Known(asker), "none") << "at once";
    }
    DeepLogin(asker);
    EXPECT_EQ(Known(asker), step.known);
    all.push_back(step.told);
    if (step.lighthouse) of_lighthouse.push_back(step.told);
  }
  log_there.Await(all);
  logs[L"harbor"]->Await(all);
  logs[L"mariner"]->Await(all);
  logs[L"lighthouse"]->Await(of_lighthouse);
  logs[L"navigator"]->Await({});

  away.Login(kHarbor);
  const Log nothing(kHarbor, away.accounts());
  const auto back = Open(kHarbor, away.accounts());
  for (const auto& mgr : {mgrs[L"harbor"], mgrs[L"mariner"], there, back}) {
    EXPECT_EQ(Known(mgr), std::end(steps)[-1].known);
  }
  nothing.Await({"shallow"});
  const auto quitted =
      Answer<biz::IMTribeInfo>([&](auto done) { mgrs[L"lighthouse"]->GetTribe({kId}, done); });
  EXPECT_TRUE(quitted.first.ok());
  EXPECT_EQ(quitted.second.mine.level, biz::kTribeNobody);
}

TEST_P(TribeMgrTest, LoginsByDepthAndWhatFailsOfThem) {
  const Mgr mgr = MgrOf(kHarbor);
  const Log log(kHarbor);
  const auto tribes = [&] {
    return Answer<biz::IMTribes>([&](auto done) { mgr->GetTribes({}, done); }).first.code;
  };
  const auto shallow = [&] { return Done([&](auto done) { mgr->ShallowLogin({}, done); }).code; };
  EXPECT_EQ(tribes(), biz::kEngineRefused);
  EXPECT_EQ(DeepLogin(mgr).code, biz::kEngineRefused) << "the shallow one comes first";
  Eventually([&] { return shallow() == 0; }, "the login has fetched them");
  EXPECT_EQ(shallow(), 0);
  EXPECT_EQ(tribes(), 0);
  log.Await({"shallow"});
  for (const Fault fault : {Fault::kRefuse, Fault::kBreak}) {
    link_->FailNext(Operation::kOther, fault);
    EXPECT_EQ(DeepLogin(mgr).code, biz::kEngineNoLink);
    EXPECT_EQ(Roster(mgr), "refused");
  }
  Eventually([&] { return DeepLogin(mgr).ok(); }, "the link is back");
  EXPECT_EQ(Roster(mgr), "3harbor 1lighthouse 1mariner ");
  EXPECT_EQ(Done([&](auto done) { mgr->DeepLogin({{7}}, done); }).subcode, biz::kTribeNotAMember);

  const auto select = [&] {
    return Done([&](auto done) { mgr->SelectTribeSearchResult({kId}, done); }).code;
  };
  EXPECT_EQ(select(), biz::kEngineNotFound);
  const struct {
    const wchar_t* key;
    std::string found;
    bool select = false;
  } searches[] = {{L"H", "3harbor 1lighthouse "},
                  {L"r", "3harbor 1mariner "},
                  {L"x", ""},
                  {L"LIGHT", "1lighthouse ", true},
                  {L"h", "1lighthouse 3harbor "}};
  for (const auto& search : searches) {
    const auto found = Answer<biz::IMTribeMembers>([&](auto done) {
      mgr->SearchTribeMember({kId, search.key}, done);
    });
    EXPECT_EQ(Names(found.second.memberlist), search.found) << Narrow(search.key);
    if (search.select) {
      EXPECT_EQ(select(), 0);
    }
  }
}

TEST_P(TribeMgrTest, EventsStandAmongTheMessages) {
  const Mgr mgr = Open(kHarbor);
  const Log log(kMariner);
  Witness harbor(kHarbor);
  Story story;
  for (std::size_t i = 1; i <= 5; ++i) {
    const std::wstring text = std::to_wstring(i);
    SendItems(Chat(kHarbor, biz::IMConversationID(kId)), {Text(text)});
    ASSERT_TRUE(harbor.Await([&](const auto& seen) { return seen.tribe_statuses.size() == i; }));
    EXPECT_TRUE(Done([&](auto done) { mgr->SetTribeName({kId, text}, done); }).ok());
    story.insert(story.end(), {"says " + Narrow(text), "info 1" + Narrow(text)});
  }
  log.Await(story);
}

TEST_P(TribeMgrTest, PresenceAndCountsAreGathered) {
  const Mgr mgr = Open(kHarbor);
  const Log log(kHarbor);
  Logout(kMariner);
  log.AwaitLine("status mariner 0");
  log.AwaitLine("count 2/3");
  test::Login(kMariner);
  log.AwaitLine("status mariner 1");
  log.AwaitLine("count 3/3");
  auto& server = *server_;
  const auto start = std::chrono::steady_clock::now();
  for (const auto& name : {L"1", L"2", L"3", L"4"}) {
    const biz::IMUserID user = User(std::wstring(L"crowd") + name);
    CreateAccount(user);
    EXPECT_TRUE(
        static_cast<embedded::Server&>(server).Change(embedded::SetMember{kId, user, true}));
  }
  log.AwaitLine("count 3/7");
  const auto seconds = (std::chrono::steady_clock::now() - start) / std::chrono::seconds(1);
  const Story told = log.Told(true);
  EXPECT_LE(std::ranges::count_if(told, [](auto& line) { return line.starts_with("count"); }),
            2 + 1 + seconds);
}

TEST_P(TribeMgrTest, WhatALostLinkMissedIsKnownWhenItIsBack) {
  Device second(server_->Link());
  second.Login(kHarbor);
  const Mgr there = Open(kHarbor, second.accounts());
  const Mgr mgr = Open(kMariner);
  const Log log(kMariner);
  link_->Shut(true);
  link_->EndAll(biz::kEngineNoLink);
  EXPECT_TRUE(Done([&](auto done) { there->SetTribeName({kId, L"Quay"}, done); }).ok());
  EXPECT_TRUE(Done([&](auto done) { there->KickTribeMember({kId, kLighthouse}, done); }).ok());
  EXPECT_EQ(Known(mgr), "Harbour|||3|open 3: 3harbor 1lighthouse 1mariner ") << "what it knew";
  EXPECT_FALSE(Done([&](auto done) { mgr->QuitTribe({kId}, done); }).ok());
  link_->Shut(false);
  Eventually([&] { return Known(mgr) == Known(there); }, "it is known again");
  EXPECT_EQ(Known(mgr), "Quay|||3|open 2: 3harbor 1mariner ");
  EXPECT_TRUE(Done([&](auto done) { there->SetTribeName({kId, L"Pier"}, done); }).ok());
  log.AwaitLine("info 1Pier");
}

TEST_P(TribeMgrTest, TheRemindTypeIsTheAccountsOnEveryDevice) {
  Device second(server_->Link());
  second.Login(kHarbor);
  const Mgr there = Open(kHarbor, second.accounts());
  for (const std::int32_t type : {2, 0, 1}) {
    EXPECT_TRUE(Done([&](auto done) { Open(kHarbor)->SetMsgRemindType({kId, type}, done); }).ok());
    const auto set = [type](const Mgr& mgr) {
      return Answer<biz::IMTribeNumberValue>([&](auto done) {
               mgr->GetMsgRemindType({kId}, done);
             }).second.num == type;
    };
    EXPECT_TRUE(set(MgrOf(kHarbor)));
    Eventually([&] { return set(there); }, "the other device hears of it");
  }
}

// Otherwise a small request could have an answer of any size.
TEST_P(TribeMgrTest, WhatIsNamedOftenIsAnsweredOnce) {
  const Mgr mgr = Open(kHarbor);
  const std::vector<biz::IMTribeRequest> tribes(5000, {kId});
  EXPECT_EQ(Answer<biz::IMTribes>([&](auto done) {
              mgr->GetListedTribes({tribes}, done);
            }).second.tribes.size(),
            1U);
  std::vector<biz::IMUserID> users(5000, kMariner);
  users.push_back(User(L"nobody"));
  for (const bool deep : {false, true}) {
    if (deep) DeepLogin(mgr);
    EXPECT_EQ(Names(Answer<biz::IMTribeMembers>([&](auto done) {
                      mgr->GetTribeMemberbyID({kId, users}, done);
                    }).second.memberlist),
              "1mariner ");
    const auto nicks = Answer<biz::IMTribeDisplayNicks>([&](auto done) {
                         mgr->GetListDNick({kId, users}, done);
                       }).second;
    EXPECT_EQ(nicks.nicklist.size(), 1U);
    EXPECT_EQ(nicks.left, std::vector{User(L"nobody")});
  }
}

TEST_P(TribeMgrTest, EachTextHasABoundOfItsOwn) {
  const Mgr mgr = Open(kHarbor);
  const auto nickname = static_cast<biz::TribeModifyKey>(0);
  const struct {
    biz::TribeModifyKey key;
    std::size_t most;
    const wchar_t* name;
  } rows[] = {{biz::kTribeKeyName, 128, L"name"},
              {biz::kTribeKeyDescription, 1024, L"description"},
              {biz::kTribeKeyPortrait, 1024, L"portrait"},
              {biz::kTribeKeyBulletin, 4096, L"value"},
              {biz::kTribeKeyJoinPassword, 64, L"password"},
              {biz::kTribeKeyNtfImage, 1024, L"ntfimage"},
              {biz::kTribeKeyBusinessImage, 1024, L"businessimage"},
              {nickname, 64, L"nickname"}};
  for (const auto& row : rows) {
    for (const std::size_t size : {row.most, row.most + 1}) {
      const std::wstring text(size, L'x');
      const auto result = Done([&](auto done) {
        if (row.key == nickname) return mgr->SetMyTribeNickname({kId, {}, text}, done);
        mgr->SetTribe({kId, row.key, text}, done);
      });
      EXPECT_EQ(result.code, size > row.most ? biz::kEngineTooLarge : 0) << Narrow(row.name);
      EXPECT_EQ(result.text.find(row.name) != std::wstring::npos, size > row.most)
          << Narrow(row.name) << ": " << Narrow(result.text);
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Servers, TribeMgrTest, testing::Values(ServerKinds().at(0)), NameOf);

}  // namespace
}  // namespace imsdk::test
