// "im.contact": what each method asks of the engine and answers, and what its events tell.
#include "kexcom/result.h"
#include "source/bridge/jsparams/longuserid.h"
#include "tests/bridge/chat_fixture.h"

namespace imsdk::test {
namespace {

const biz::IMUserID kMariner{L"cnbazaro", L"mariner"};

#define MARINER \
  LR"({"appkey":"cnbazaro","nick":"mariner","status":1,"display":"Max","portrait":"m.png","unreadnum":4})"
#define MARINER_ID LR"({"appkey":"cnbazaro","nick":"mariner"})"
#define VERIFY \
  LR"({"fromid":)" MARINER LR"(,"fromname":"Max","msgtime":"1700000000000","msgid":"77",)" \
  LR"("authinfo":"please","gidinpeergroup":"5","type":1})"

TEST(LongUserId, IsSplitIntoSiteAndIdentifier) {
  const struct {
    const wchar_t* text;
    std::int32_t site;
    const wchar_t* identifier;
  } rows[] = {
      {L"", 0, L"[UNKNOW]"},
      {L"mariner", 0, L"[UNKNOW]mariner"},
      {L"cnbazaro", 0, L"[UNKNOW]cnbazaro"},
      {L"cnmirolo", 0, L"[UNKNOW]cnmirolo"},
      {L"cnbazaroM", 1, L"cnbazaroM"},
      {L"cnmiroloM", 1, L"cnbazaroM"},
      {L"cnmirolocnmirolo", 1, L"cnbazarocnmirolo"},
      {L"CNMIROLOM", 1, L"CNMIROLOM"},
      {L"[UNKNOW]x", 0, L"[UNKNOW]x"},
      {L"[UNKNOW]", 0, L"[UNKNOW][UNKNOW]"},
      {L"othersit\u6e2f", 1, L"othersit\u6e2f"},
  };
  for (const auto& row : rows) {
    const biz::IMLongUserID split = bridge::SplitLongUserId(row.text);
    EXPECT_EQ(split.site, row.site) << row.identifier;
    EXPECT_EQ(split.identifier, row.identifier);
  }
}

class Contact : public SingleMsg {
 protected:
  Contact() {
    const biz::IMContact max{kMariner, biz::kContactOnline, L"Max", L"m.png", 4};
    auto& [infos, names, nicks, group, verify, list, made] = contacts.answers;
    infos.contacts = {max};
    names.names = {{kMariner, L"Max"}};
    nicks.nicks = {{L"cnbazaromariner", L"Max"}};
    group = {L"crew", {{7, 5, L"deck"}}, {kMariner}};
    verify.msgs = {{max, L"Max", 1700000000000, 77, L"please", 5, biz::kContactAsked}};
    contacts.marked = {max};
  }
  Delivery Call(const std::wstring& method, const std::wstring& json) {
    return host.Call(L"im.contact", method, json);
  }

  MemoryContacts& contacts = *engine.Account().contacts;
};

constexpr wchar_t kAction[] =
    LR"({"fromid":)" MARINER LR"(,"gidinpeergroup":"5","authinfo":"so be it","msgid":"77"})";

TEST_F(Contact, EachMethodAsksItsOperationAndAnswersItsShape) {
  const struct {
    const wchar_t* method;
    std::wstring json;
    const wchar_t* result;  // behind the envelope's code and subcode
  } rows[] = {
      {L"GetContactBaseInfo", L"[{\"userid\":" MARINER L"}]", L"\"result\":[" MARINER L"]}"},
      {L"GetGroupInfo", LR"({"groupid":"5"})",
       LR"("result":"success","subgroups":[{"groupid":"7","parentid":"5","name":"deck"}],)"
       LR"("uids":[)" MARINER_ID L"]}"},
      {L"AgreeAddContact", kAction, LR"("result":"success"})"},
      {L"AgreeAndAddContact", kAction, LR"("result":"success"})"},
      {L"RefuseAddContact", kAction, LR"("result":"success"})"},
      {L"AddToBlack", kAction, LR"("result":"success"})"},
      {L"ReportAddContact", kAction, LR"("result":"success"})"},
      {L"IgnoreAddContact", kAction, LR"("result":"success"})"},
      {L"DeleteContactVerifyMsgs", std::wstring(L"[") + kAction + L"]", LR"("result":"success"})"},
      {L"GetContactVerifyMsgs", LR"({"btime":"5","msgid":"9","count":3,"ignoreboundary":1})",
       L"\"result\":[" VERIFY L"]}"},
      {L"GetContactDisplayName", L"{\"userids\":[" MARINER_ID L"]}",
       LR"("result":[{"appkey":"cnbazaro","nick":"mariner","display":"Max"}]})"},
  };
  for (const auto& row : rows) {
    const Delivery answer = Call(row.method, row.json);
    EXPECT_EQ(answer.payload, std::wstring(LR"({"code":0,"subcode":0,)") + row.result);
    EXPECT_EQ(base::UTF8ToWide(contacts.asked.back()), row.method);
    EXPECT_EQ(host.log->Lines(row.method).at(0).brief, "_brief_,jsonStr");

    // The engine's refusals pass through; what is no JSON reaches nobody.
    contacts.result = {biz::kEngineRefused, biz::kContactAlreadyDecided, L"too late"};
    EXPECT_TRUE(Call(row.method, row.json)
                    .payload.starts_with(LR"({"code":-11,"subcode":105,"result":"too late")"));
    contacts.result = {};
    const std::size_t asked = contacts.asked.size();
    const Delivery invalid = Call(row.method, L"{oops");
    EXPECT_EQ(invalid.payload, LR"({"code":-2147024809,"subcode":0,"result":"invalid!"})");
    EXPECT_TRUE(invalid.failed);
    EXPECT_EQ(contacts.asked.size(), asked);
  }
  EXPECT_EQ(host.log->Lines(L"invalid!").size(), std::size(rows));
  EXPECT_EQ(Call(L"GetAsteriskUserList", L"").payload,
            LR"({"code":0,"subcode":0,"result":[{"appkey":"cnbazaro","nick":"mariner",)"
            LR"("display":"Max","portrait":"m.png"}]})");
}

TEST_F(Contact, RequestsReachTheEngine) {
  Call(L"AgreeAddContact", kAction);
  const auto& action = contacts.Last<biz::IMContactAction>();
  EXPECT_EQ(action.fromid, kMariner);
  EXPECT_EQ(action.gidinpeergroup, 5);
  EXPECT_EQ(action.authinfo, L"so be it");
  EXPECT_EQ(action.msgid, 77);
  contacts.asked.clear();
  EXPECT_TRUE(Call(L"AgreeAddContact", L"{}").failed);
  EXPECT_EQ(contacts.asked.size(), 1U) << "empty fields are the engine's to judge";
  EXPECT_TRUE(contacts.Last<biz::IMContactAction>().fromid.empty());
  Call(L"GetContactVerifyMsgs",
       LR"({"btime":"5","etime":"6","msgid":"9","count":3,"gohistory":1})");
  const auto& page = contacts.Last<biz::IMContactVerifyPage>();
  EXPECT_EQ(page.btime, 5);
  EXPECT_EQ(page.etime, 6);
  EXPECT_EQ(page.msgid, 9);
  EXPECT_EQ(page.count, 3);
  EXPECT_EQ(page.gohistory, 1);
}

TEST_F(Contact, DecisionsNeedAConnectedAccount) {
  for (const auto state : {biz::kAccountOffline, biz::kAccountConnecting}) {
    engine.Account().state = state;
    contacts.asked.clear();
    for (const wchar_t* method :
         {L"AgreeAddContact", L"AgreeAndAddContact", L"RefuseAddContact", L"AddToBlack"}) {
      EXPECT_EQ(Call(method, kAction).payload,
                LR"({"code":-2147418113,"subcode":0,"result":"failed"})");
    }
    EXPECT_TRUE(contacts.asked.empty());
    for (const wchar_t* method : {L"ReportAddContact", L"IgnoreAddContact"}) {
      EXPECT_FALSE(Call(method, kAction).failed);
    }
  }
}

TEST_F(Contact, AGroupIsNamedAndTraced) {
  Call(L"GetGroupInfo", LR"({"groupid":"-9000000000000000000"})");
  for (const wchar_t* json :
       {L"{}", LR"({"groupid":"7x"})", LR"({"groupid":""})", LR"({"groupid":5})", L"[]"}) {
    EXPECT_EQ(Call(L"GetGroupInfo", json).payload,
              LR"({"code":-2147024809,"subcode":0,"result":"invalid gid json"})");
  }
  EXPECT_EQ(host.log->Lines(L"invalid gid json").size(), 6U);
  EXPECT_TRUE(contacts.asked.empty());
  Call(L"GetGroupInfo", LR"({"groupid":"9000000000000000000"})");
  EXPECT_EQ(host.log->Lines(L"begin").at(0).items.at("groupid"), L"9000000000000000000");
  EXPECT_TRUE(host.log->Lines(L"can NOT get display name!").empty());
  contacts.AnswerOf<biz::IMContactGroupInfo>().name.clear();
  EXPECT_FALSE(Call(L"GetGroupInfo", LR"({"groupid":"5"})").failed);
  EXPECT_EQ(host.log->Lines(L"can NOT get display name!").size(), 1U);
}

TEST_F(Contact, NicksComeInTheOrderOfTheRequest) {
  const Delivery answer =
      Call(L"GetUserDisplayNick", LR"(["cnbazaroghost","cnmirolomariner",7,"","cnbazaromariner"])");
  EXPECT_EQ(answer.payload,
            LR"({"code":0,"subcode":0,"result":[{"uid":"cnbazaroghost","snick":"","is_valid":0},)"
            LR"({"uid":"cnmirolomariner","snick":"Max","is_valid":1},)"
            LR"({"uid":"","snick":"","is_valid":0},{"uid":"","snick":"","is_valid":0},)"
            LR"({"uid":"cnbazaromariner","snick":"Max","is_valid":1}]})");
  EXPECT_EQ(contacts.Last<biz::IMLongUserIDs>().users.size(), 3U);
  EXPECT_EQ(host.log->Lines(L"invalid uid").size(), 2U);
  const auto left = host.log->Lines(L"rsp: left");
  ASSERT_EQ(left.size(), 1U);
  EXPECT_EQ(left[0].items.at("jsonLeftIDs"), LR"(["cnbazaroghost","",""])");
}

TEST_F(Contact, EventsBecomeNotifications) {
  const biz::IMContact max{kMariner, biz::kContactOnline, L"Max", L"m.png", 4};
  contacts.events.on_contact_changed(biz::IMListedContact{max, 5, true});
  contacts.events.on_contact_removed(kMariner);
  contacts.events.on_groups_changed();
  contacts.events.on_contact_status({max});
  contacts.events.on_contact_verify_msg(contacts.AnswerOf<biz::IMContactVerifyMsgs>().msgs[0]);
  host.loop.RunUntilIdle();
  const std::pair<std::wstring, std::wstring> told[] = {
      {L"onContactChanged",
       LR"({"contact":{"userid":)" MARINER LR"(,"groupid":"5","asterisk":1},"removed":0})"},
      {L"onContactChanged",
       LR"({"contact":{"userid":{"appkey":"cnbazaro","nick":"mariner","status":0,"display":"",)"
       LR"("portrait":"","unreadnum":0},"groupid":"0","asterisk":0},"removed":1})"},
      {L"onContactGroupsChanged", L"{}"},
      {L"onContactStatus", L"{\"list\":[" MARINER L"]}"},
      {L"onContactVerifyMsg", VERIFY},
  };
  ASSERT_EQ(host.page.notifications.size(), std::size(told));
  for (std::size_t i = 0; i < std::size(told); ++i) {
    EXPECT_EQ(host.page.notifications[i].event, told[i].first);
    EXPECT_EQ(host.page.notifications[i].json, told[i].second);
    EXPECT_EQ(host.page.notifications[i].path, L"im.contact");
  }
}

}  // namespace
}  // namespace imsdk::test
