// "im.tribemgr": what each method asks of the engine and answers, and what its events tell.

#include "kexcom/result.h"
#include "tests/bridge/chat_fixture.h"

namespace imsdk::test {
namespace {

const biz::IMUserID kMariner{L"cnbazaro", L"mariner"};
const biz::IMTribeID kTribe{10001};

biz::IMTribeInfo Quay() {
  biz::IMTribeInfo tribe;
  tribe.tribeid = kTribe;
  tribe.type = biz::kMultiChat;
  tribe.name = L"Quay";
  tribe.owner = kHarbor;
  tribe.description = L"by the water";
  tribe.portrait = L"p.png";
  tribe.ntfimage = L"n.png";
  tribe.businessimage = L"b.png";
  tribe.classtype = 3;
  tribe.level = 2;
  tribe.mine = {biz::kTribeManager, L"H", biz::kRemindAll, 4};
  return tribe;
}

biz::IMTribeMember Mariner() {
  return {kMariner, biz::kMemberOnline, L"Max", L"M", L"m.png", 5, biz::kTribeMember};
}

#define MARINER_ID LR"({"appkey":"cnbazaro","nick":"mariner"})"
#define MARINER_MEMBER                                                               \
  LR"({"appkey":"cnbazaro","nick":"mariner","status":1,"display":"Max","name":"M",)" \
  LR"("portrait":"m.png","activelevel":5,"level":1})"
#define SUMMARY LR"({"tribeid":"10001","display":"Quay","portrait":"p.png","unreadnum":4,"type":1})"
#define SHALLOW LR"({"mylevel":2,"tribeid":)" SUMMARY LR"(,"signature":"by the water","type":1})"

class TribeMgr : public SingleMsg {
 protected:
  TribeMgr() {
    auto& [tribe, all, count, text, number, nickname, roster, members, nicks, classes, black,
           verify, made, joined] = tribes.answers;
    tribe = Quay();
    all.tribes = {Quay()};
    count = {3, 2};
    text.str = L"text";
    number.num = 9;
    nickname.nickname = L"H";
    roster = {7, 1, {Mariner()}};
    members.memberlist = {Mariner()};
    nicks = {{{kMariner, L"Max"}}, {kLighthouse}};
    classes.classlist = {{3, L"Work"}};
    black.list = {{kMariner, L"Max", L"m.png", 1700000000000}};
    verify.msgs = {
        {kMariner, L"M", kTribe, L"Quay", 1700000000000, 77, L"please", {}, biz::kVerifyJoinAsked}};
  }

  Delivery Call(const std::wstring& method, const std::wstring& json = LR"({"tribeid":"10001"})") {
    return host.Call(L"im.tribemgr", method, json);
  }

  // Whether a line with this text names the tribe.
  bool Traced(std::wstring_view text, std::wstring_view tribe) {
    const auto lines = host.log->Lines(text);
    return lines.size() == 1 && lines[0].items.at("tribeid") == tribe;
  }

  MemoryTribeMgr& tribes = *engine.Account().tribes;
};

TEST_F(TribeMgr, EachMethodAsksItsOperationAndAnswersItsShape) {
  const struct {
    const wchar_t* method;
    const char* operation;
    const wchar_t* answer;  // behind the envelope's code and subcode
  } rows[] = {
      {L"GetShallowTribe", "GetTribe", L"\"result\":" SHALLOW L"}"},
      {L"GetShallowTribeList", "GetTribes",
       L"\"result\":\"success\",\"tribelist\":[" SHALLOW L"]}"},
      {L"GetQuittedTribe", "GetQuittedTribe",
       L"\"result\":\"success\",\"tribeids\":[" SUMMARY L"]}"},
      {L"GetShallowTribeEx", "GetListedTribes",
       LR"("result":"success","tribelist":[{"ntfImage":"n.png","businessImage":"b.png",)"
       LR"("tribeid":"10001","unreadNum":4}]})"},
      {L"GetTribeMemberList", "GetTribeMemberList",
       LR"("result":"success","total":7,"online":1,"memberlist":[)" MARINER_MEMBER L"]}"},
      {L"GetTribeMemberbyID", "GetTribeMemberbyID",
       LR"("result":"success","memberlist":[)" MARINER_MEMBER L"]}"},
      {L"GetAttentionMembers", "GetAttentionMembers",
       LR"("result":"success","memberlist":[)" MARINER_MEMBER L"]}"},
      {L"SearchTribeMember", "SearchTribeMember",
       LR"("result":"success","memberlist":[)" MARINER_MEMBER L"]}"},
      {L"GetMultiChatMembers", "GetMultiChatMembers",
       LR"("result":"success","memberlist":[)" MARINER_MEMBER L"]}"},
      {L"GetTribeBulletin", "GetTribeBulletin", LR"("result":"success","str":"text"})"},
      {L"GetTribeBaseInfo", "GetTribe",
       LR"("result":{"tribename":"Quay","ownid":{"appkey":"cnbazaro","nick":"harbor"},)"
       LR"("tribeid":"10001","des":"by the water","portrait":"p.png","classtype":3,"level":2}})"},
      {L"GetAllClass", "GetAllClass",
       LR"("result":"success","classlist":[{"index":3,"name":"Work"}]})"},
      {L"GetMyTribeNickname", "GetMyTribeNickname", LR"("result":"success","nickname":"H"})"},
      {L"GetVisitorCount", "GetVisitorCount", LR"("result":"success","num":9})"},
      {L"GetJoinPwd", "GetJoinPwd", LR"("result":"success","str":"text"})"},
      {L"GetTribeBlackList", "GetTribeBlackList",
       LR"("result":"success","list":[{"userid":)" MARINER_ID LR"(,"nick":"Max","portrait":"m.png","addtime":1700000000000}]})"},
      {L"GetListDNick", "GetListDNick",
       LR"("result":"success","nicklist":[{"userid":)" MARINER_ID LR"(,"display":"Max"}]})"},
      {L"GetTribeVerifyMsgs", "GetTribeVerifyMsgs",
       LR"("result":"success","msgs":[{"fromid":)" MARINER_ID LR"(,"fromname":"M","tribeid":"10001","tribename":"Quay","msgtime":1700000000000,)"
       LR"("msgid":"77","authinfo":"please","managerid":{"appkey":"","nick":""},"type":1}]})"},
      {L"GetEnableTribeNum", "GetEnableTribeNum", LR"("result":{"total":3,"enable":2}})"},
  };
  for (const auto& row : rows) {
    const Delivery answer = Call(row.method);
    EXPECT_EQ(answer.payload, std::wstring(LR"({"code":0,"subcode":0,)") + row.answer);
    EXPECT_EQ(tribes.asked.back(), row.operation);
    EXPECT_FALSE(answer.failed);
  }
}

// What the request's keys become, and that the engine's refusals pass through.
TEST_F(TribeMgr, RequestsReachTheEngine) {
  tribes.result = {biz::kEngineRefused, biz::kTribeManagersOnly, L"not you"};
  Call(L"ChangeLevel", LR"({"level":2,"tribeid":"10001","userid":)" MARINER_ID L"}");
  EXPECT_EQ(tribes.Last<biz::IMTribeMemberLevel>().level, biz::kTribeManager);
  EXPECT_EQ(tribes.Last<biz::IMTribeMemberLevel>().userid, kMariner);
  Call(L"GetShallowTribeEx", LR"({"tribelist":[{"tribeid":"10001"},7,{"tribeid":"2"}]})");
  ASSERT_EQ(tribes.Last<biz::IMTribeList>().tribelist.size(), 2U);
  EXPECT_EQ(tribes.Last<biz::IMTribeList>().tribelist[0].tribeid, kTribe);
  Call(L"GetTribeVerifyMsgs", LR"({"btime":"5","msgid":"9","count":3,"gohistory":1})");
  EXPECT_EQ(tribes.Last<biz::IMTribeVerifyPage>().btime, 5);
  EXPECT_EQ(tribes.Last<biz::IMTribeVerifyPage>().msgid, 9);
  Call(L"AddToTribeBlack", LR"({"fromid":)" MARINER_ID LR"(,"tribeid":"10001","msgid":"77"})");
  EXPECT_EQ(tribes.Last<biz::IMTribeVerifyAction>().fromid, kMariner);
  const Delivery answer = Call(L"SetTribeName", LR"({"tribeid":"10001","str":"Pier"})");
  EXPECT_EQ(answer.payload, LR"({"code":-11,"subcode":4,"result":"not you"})");
  EXPECT_TRUE(answer.failed);
}

TEST_F(TribeMgr, LoginOnceAndMembersAfterADeepLogin) {
  EXPECT_EQ(Call(L"InitTribe", L"").payload, LR"({"code":0,"subcode":0,"result":"success"})");
  tribes.logged_in = true;
  tribes.asked.clear();
  EXPECT_EQ(Call(L"InitTribe", L"").payload, LR"({"code":0,"subcode":0,"result":"Alread Login"})");
  EXPECT_TRUE(tribes.asked.empty()) << "no second login";

  const struct {
    const char* fails;
    const wchar_t* text;
    bool ends;
  } rows[] = {{"DeepLogin", L"deep login error", false},
              {"GetTribeMemberList", L"get tribe member list error", true},
              {"", L"success", true}};
  for (const auto& row : rows) {
    tribes.results = {{row.fails, {-8, 3, L"engine's own"}}};
    host.log->Clear();
    const Delivery answer = Call(L"GetTribeMemberList");
    EXPECT_NE(answer.payload.find(row.text), std::wstring::npos) << answer.payload;
    EXPECT_EQ(answer.payload.find(L"engine's own"), std::wstring::npos);
    EXPECT_EQ(answer.failed, *row.fails != 0);
    EXPECT_TRUE(Traced(L"begin", L"10001"));
    EXPECT_EQ(Traced(L"end", L"10001"), row.ends);
  }
}

TEST_F(TribeMgr, DisplayNicksTraceWhoIsLeft) {
  Call(L"GetListDNick");
  const auto lines = host.log->Lines(L"rsp: left");
  ASSERT_EQ(lines.size(), 1U);
  EXPECT_EQ(lines[0].function, "CBridgeTribeMgr::GeListDNickCallback");
  EXPECT_EQ(lines[0].items.at("jsonLeftIDs"), LR"([{"appkey":"cnbazaro","nick":"lighthouse"}])");
  EXPECT_TRUE(Call(L"GetListDNick", L"{oops").failed);
  EXPECT_EQ(host.log->Lines(L"PARAM ERROR, JSON:").size(), 1U);
}

#define HARBOR_ID LR"({"appkey":"cnbazaro","nick":"harbor"})"
#define ACTOR(actor, recipient) \
  LR"({"actor":)" actor LR"(,"tribeid":"10001","recipient":)" recipient

// What each event tells the page, in order.
TEST_F(TribeMgr, EventsBecomeNotifications) {
  using Told = std::vector<std::pair<std::wstring, std::wstring>>;
  const biz::IMTribeEvents& raised = tribes.events;
  biz::IMTribeMember self = Mariner();
  self.userid = kHarbor;
  const std::wstring joined = ACTOR(HARBOR_ID, MARINER_ID) LR"(,"info":)" MARINER_MEMBER L"}";
  const std::wstring by_mariner = ACTOR(MARINER_ID, HARBOR_ID) L"}";
  const std::wstring by_harbor = ACTOR(HARBOR_ID, MARINER_ID) L"}";
  const std::wstring alone = ACTOR(HARBOR_ID, LR"({"appkey":"","nick":""})") L"}";
  const std::wstring only = LR"({"tribeid":"10001"})";
  const struct {
    std::function<void()> raise;
    Told told;
  } rows[] = {
      {[&] { raised.on_clear_visitor(kTribe, kHarbor, {}); }, {{L"onClearTribeVisitor", alone}}},
      {[&] { raised.on_close(kTribe, kHarbor, {}); },
       {{L"onTribeClose", alone}, {L"onEnableTribeNumChange", alone}}},
      {[&] { raised.on_enabled(kTribe); },
       {{L"onEnabledTribe", only}, {L"onEnableTribeNumChange", only}}},
      {[&] { raised.on_join(kTribe, kHarbor, Mariner()); }, {{L"onJoinTribeEx", joined}}},
      {[&] { raised.on_kick_member(kTribe, kHarbor, kMariner); },
       {{L"onTribeKickMemberEx", by_harbor}}},
      {[&] { raised.on_kick_member(kTribe, kMariner, kHarbor); },
       {{L"onTribeKickMember", by_mariner}, {L"onTribeKickMemberEx", by_mariner}}},
      {[&] { raised.on_quit(kTribe, kHarbor, kMariner); }, {{L"onQuitTribe", by_harbor}}},
      {[&] { raised.on_transfer(kTribe, kHarbor, kMariner); }, {{L"onTribeTransfer", by_harbor}}},
      {[&] { raised.on_member_chg_level(kTribe, kHarbor, kMariner, biz::kTribeManager); },
       {{L"onTribeMemberChgLevel", ACTOR(HARBOR_ID, MARINER_ID) LR"(,"level":2})"}}},
      {[&] { raised.on_ntf_image(kTribe, L"n.png"); },
       {{L"onTribeNtfTypeChange", LR"({"tribeid":"10001","ntfImage":"n.png"})"}}},
      {[&] { raised.on_base_info_change(kTribe, {}); },
       {{L"onTribeBaseInfoChange", LR"({"tribeid":"10001","detail":[]})"}}},
      {[&] {
         raised.on_base_info_change(
             kTribe, {{biz::kTribeKeyBulletin, L"b"}, {biz::kTribeKeyName, L"Quay"}});
       },
       {{L"onTribeBaseInfoChange",
         LR"({"tribeid":"10001","detail":[{"key":1,"value":"Quay"},{"key":5,"value":"b"}]})"},
        {L"onTribeBulletinUpdate", only}}},
      {[&] { raised.on_bulletin_update(kTribe); }, {{L"onTribeBulletinUpdate", only}}},
      {[&] {
         raised.on_member_base_info_change(kTribe, kMariner, {{biz::kTribeUserKeyDisplay, L"Max"}});
       },
       {{L"onTribeMemberBaseInfoChange",
         LR"({"tribeid":"10001","userid":)" MARINER_ID LR"(,"display":"Max"})"}}},
      {[&] { raised.on_member_status(kTribe, kMariner, biz::kMemberOnline); },
       {{L"onTribeMemberStatusChange",
         LR"({"tribeid":"10001","userid":)" MARINER_ID LR"(,"status":1})"}}},
      {[&] { raised.on_member_count(kTribe, 2, 7); },
       {{L"onTribeMemberCntChange", LR"({"tribeid":"10001","online":2,"total":7})"}}},
      {[&] { raised.on_shallow_login(); }, {{L"onTribeShallowLogin", L"{}"}}},
  };
  for (const auto& row : rows) {
    host.page.notifications.clear();
    row.raise();
    host.RunLoop();
    Told told;
    for (const auto& one : host.page.notifications) told.emplace_back(one.event, one.json);
    EXPECT_EQ(told, row.told);
  }
  host.page.notifications.clear();
  raised.on_join(kTribe, kMariner, self);
  host.RunLoop();
  ASSERT_EQ(host.page.notifications.size(), 2U);
  EXPECT_EQ(host.page.notifications[0].event, L"onJoinTribe");
  EXPECT_EQ(host.page.notifications[0].json, host.page.notifications[1].json);
}

}  // namespace
}  // namespace imsdk::test
