// "im.tribemsg": what messages of tribes have of their own, and mentions.

#include "tests/bridge/chat_fixture.h"

namespace imsdk::test {
namespace {

const biz::IMTribeID kTribe{10001};
const std::wstring kHarborText = LR"({"appkey":"cnbazaro","nick":"harbor"})";
const std::wstring kLighthouseText = LR"({"appkey":"cnbazaro","nick":"lighthouse"})";

std::wstring InTribe(const std::wstring& keys) { return LR"({"tribeid":"10001",)" + keys + L"}"; }

class TribeMsg : public ChatPage {
 protected:
  TribeMsg() : ChatPage(L"im.tribemsg", biz::IMConversationID(kTribe)) {
    biz::IMMessage msg = MakeMessage(5, kLighthouse, {}, L"hello");
    msg.cid = chat.GetCID();
    msg.tribeat = {biz::kMsgUnread, biz::kAtMembers, biz::kAtRelationMember, {kHarbor}};
    chat.page.msgs = {msg};
  }

  // As pages get it.
  const std::wstring message =
      LR"({"msgid":"5","msgtime":"1700000000005","cid":{"tribeid":"10001","type":3},"fromid":)" +
      kLighthouseText +
      LR"(,"msgtype":0,"tribeat":{"msgreaded":0,"atmsgtype":1,"relation2me":1,"atmembers":[)" +
      kHarborText +
      LR"(]},"msgstatus":3,"msgbody":"hello","svrtime":"1700000000006",)"
      LR"("extinfo":{"others":"","fixmsgread":0,"autochatmsg":0,"syschatmsg":0}})";
};

TEST_F(TribeMsg, MessagesHaveTheirKeysInOrderAndAreTraced) {
  const std::wstring page = Answer(LR"("outofcache":0,"msgs":[)" + message + L"]");
  const struct {
    const wchar_t* method;
    const wchar_t* input;  // the text of its first line
    bool fetched;
  } cases[] = {{L"GetNewMsg", L"get new msg", false},
               {L"PeekNewMsg", L"peek new msg", false},
               {L"GetOfflineMsg", L"get off msg", true},
               {L"PeekOfflineMsg", L"peek off msg", true},
               {L"GetLocalHisMsg", L"GetLocalHisMsg", false},
               {L"GetRemoteHisMsg", L"GetRemoteHisMsg", true},
               {L"SearchMsgByID", L"SearchMsgByID", true},
               {L"RoamTribeAtMsgs", L"RoamTribeAtMsgs", true},
               {L"RoamTribeAtMsgContext", L"RoamTribeAtMsgContext", true}};
  for (const auto& c : cases) {
    host.log->Clear();
    EXPECT_EQ(Payload(c.method, InTribe(LR"("msgid":"5")")), page) << c.method;
    const auto input = host.log->Lines(c.input);
    ASSERT_EQ(input.size(), 1u) << c.method;
    EXPECT_EQ(input[0].brief, "_brief_,jsonStr");
    EXPECT_EQ(input[0].function, "CBridgeTribeMsg::" + base::WideToUTF8(c.method));
    const auto fetched = host.log->Lines(L"RspFetchTMMsg");
    ASSERT_EQ(fetched.size(), c.fetched ? 2u : 0u) << c.method;
    if (!c.fetched) continue;
    EXPECT_EQ(fetched[0].items.at("code"), L"0");
    EXPECT_EQ(fetched[1].items.at("msgids"), L"5");
    EXPECT_EQ(fetched[1].function, "CBridgeTribeMsg::RspFetchTMMsg");
  }
  host.log->Clear();
  Payload(L"GetNewMsg", InTribe(L"\"count\":3"));
  const Line traced = host.log->Lines(L"new msg").at(0);
  EXPECT_EQ(traced.brief, "_brief_,it->cid,it->msgid");
  EXPECT_EQ(traced.items.at("it->cid"), L"10001");
  chat.result = {biz::kEngineNoLink, 0, {}};
  host.log->Clear();
  EXPECT_TRUE(Payload(L"RoamTribeAtMsgs", InTribe(L"\"count\":3")).starts_with(LR"({"code":-5,)"));
  EXPECT_EQ(host.log->Lines(L"RspFetchTMMsg").size(), 1u);
}

TEST_F(TribeMsg, LocalHistoryOfAnotherConversationIsDiscarded) {
  chat.page.roamcode = biz::kEngineNoLink;
  EXPECT_TRUE(Payload(L"GetLocalHisMsg", InTribe(L"\"autoroam\":1")).starts_with(LR"({"code":0,)"));
  const Line roamed = host.log->Lines(L"roam failed!!").at(0);
  EXPECT_EQ(roamed.function, "CBridgeTribeMsg::DoGetDBHisMsg");
  EXPECT_EQ(roamed.items.at("code"), L"-5");

  chat.page.msgs.push_back(MakeMessage(6, kLighthouse, kHarbor, L"of a single chat"));
  EXPECT_EQ(Payload(L"GetLocalHisMsg", InTribe(L"\"count\":2")),
            LR"({"code":-2147418113,"subcode":0,"result":"failed"})");
  const Line discarded = host.log->Lines(L"discard local history msgs.").at(0);
  EXPECT_EQ(discarded.function, "CBridgeTribeMsg::GetLocalHisMsgImp");
  EXPECT_EQ(discarded.items.at("bizcid"), L"10001");
  EXPECT_EQ(discarded.items.at("stCurrentCID"), L"cnbazarolighthouse");
}

TEST_F(TribeMsg, MethodsHaveTheirOwnTexts) {
  for (const wchar_t* method : {L"GetReadedBoundary", L"SearchAttentionMsg"}) {
    EXPECT_TRUE(Payload(method, L"[oops").ends_with(LR"("invalid!"})")) << method;
  }
  for (const wchar_t* method :
       {L"GetSendMsgTribeAtInfo", L"GetTribeAtMsgUnreadCount", L"GetTribeAtMsgUnreadUsers",
        L"RoamTribeAtMsgs", L"RoamTribeAtMsgContext", L"SetTribeAtMsgsReaded", L"AtTribeMember",
        L"SetNewMsgMaxCache"}) {
    EXPECT_TRUE(Payload(method, L"[oops").ends_with(LR"("invalid"})")) << method;
  }
  chat.result = {biz::kEngineRefused, 3, L"too late"};
  EXPECT_EQ(Payload(L"DoChatMsgWithdraw", InTribe(L"\"msgid\":\"5\"")),
            LR"({"code":-11,"subcode":0,"result":"failed"})");
  EXPECT_EQ(host.log->Lines(L"do msg withdraw").size(), 1u);
  engine.Account().tribe_chats->result = {biz::kEngineNoLink, 0, L"no link"};
  EXPECT_EQ(Payload(L"GetRoamStatus", L"{}"),
            LR"({"code":-5,"subcode":0,"result":"unknown error"})");
  Payload(L"GetMsgPicture", InTribe(L"\"count\":1"));
  EXPECT_EQ(host.log->Lines(L"GetMsgPicture").at(0).function, "CBridgeTribeMsg::GetMsgPictures");
}

TEST_F(TribeMsg, SearchesReadTheWholeRequestAndRepeatItsFilters) {
  const std::wstring filters = LR"("fromids":[)" + kLighthouseText +
                               LR"(],"atrelations":[1,2],"keywords":["a"],"msgtypes":[0],)"
                               LR"("btime":"3","etime":"9")";
  const std::wstring request = LR"({"cid":{"tribeid":"10001"},)" + filters +
                               LR"(,"msgtime":"8","msgid":"7","gohistory":1,"ignoreboundary":1,)"
                               LR"("count":5,"needpage":1,"page":2})";
  chat.found = {2, 3, 11, chat.page.msgs};
  for (const wchar_t* method : {L"SearchAttentionMsg", L"SearchDBMsg", L"SearchDBMsg2"}) {
    chat.last_search = {};
    EXPECT_EQ(Payload(method, request),
              Answer(LR"("cid":{"tribeid":"10001","type":3},"fromids":[)" + kLighthouseText +
                     LR"(],"keywords":["a"],"msgtypes":[0],"atrelations":[1,2],"currentpage":2,)"
                     LR"("totalpage":3,"totalcount":11,"msgs":[)" +
                     message + L"]"))
        << method;
    const biz::IMSearchRequest& asked = chat.last_search;
    EXPECT_EQ(asked.fromids, std::vector<biz::IMUserID>{kLighthouse});
    EXPECT_EQ(asked.atrelations,
              (std::vector<std::int32_t>{biz::kAtRelationMember, biz::kAtRelationAll}));
    EXPECT_EQ(asked.etime, 9);
    EXPECT_TRUE(asked.gohistory && asked.ignoreboundary && asked.needpage);
    EXPECT_EQ(asked.page, 2);
  }
  // The conversations' search has the filters alone.
  Payload(L"SearchDBMsgCid", request);
  const biz::IMSearchRequest& asked = engine.Account().tribe_chats->last_search;
  EXPECT_EQ(asked.atrelations.size(), 2u);
  EXPECT_EQ(asked.count, 0);
}

TEST_F(TribeMsg, MentionsAreSentAndAskedFor) {
  Payload(L"SendNormalTribeMsg",
          InTribe(LR"("msgbody":[{"type":0,"value":"@all"}],"tribeat":{"atmsgtype":1,)"
                  LR"("relation2me":3,"atmembers":[)" +
                  kLighthouseText + L"]}"));
  EXPECT_EQ(chat.sent_request.tribeat.atmsgtype, biz::kAtMembers);
  EXPECT_EQ(chat.sent_request.tribeat.atmembers, std::vector<biz::IMUserID>{kLighthouse});

  chat.AnswerOf<biz::IMTribeAt>() = {1, biz::kAtAll, biz::kAtRelationSender, {}};
  chat.AnswerOf<biz::IMAtUnread>() = {2, {{5, 1, 0}}};
  chat.AnswerOf<biz::IMAtReaders>() = {{kHarbor}, {kLighthouse}};
  chat.AnswerOf<biz::IMAtMember>() = {kLighthouse, L"Keeper"};
  const struct {
    const wchar_t* method;
    std::wstring request;
    std::wstring keys;
  } cases[] = {
      {L"GetSendMsgTribeAtInfo", LR"("msgid":"5","msgbody":[{"filecontent":"AAEC"}])",
       LR"("msgreaded":1,"atmsgtype":2,"relation2me":3,"atmembers":[])"},
      {L"GetTribeAtMsgUnreadCount", LR"("msgids":["5"])",
       LR"("count":2,"counts":[{"msgid":"5","readedcount":1,"unreadcount":0}])"},
      {L"GetTribeAtMsgUnreadUsers", LR"("msgid":"5")",
       LR"("unreadusers":[)" + kHarborText + LR"(],"readedusers":[)" + kLighthouseText + L"]"},
      {L"AtTribeMember", LR"("userid":)" + kLighthouseText,
       LR"("userid":)" + kLighthouseText + LR"(,"display":"Keeper")"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(Payload(c.method, InTribe(c.request)), Answer(c.keys)) << c.method;
  }
  EXPECT_EQ(host.log->Lines(L"json").at(0).items.at("it->filecontent"), L"AAEC");
  EXPECT_EQ(chat.Last<biz::IMAtMemberRequest>().userid, kLighthouse);
  EXPECT_EQ(Payload(L"SetTribeAtMsgsReaded", InTribe(LR"("msgids":["5","6"])")), kSuccess);
  EXPECT_EQ(chat.Last<biz::IMMsgsRequest>().msgids, (std::vector<std::int64_t>{5, 6}));
  const std::size_t asked = chat.asked.size();
  EXPECT_TRUE(
      Payload(L"GetSendMsgTribeAtInfo", InTribe(L"\"msgbody\":[]")).ends_with(LR"("invalid"})"));
  EXPECT_EQ(chat.asked.size(), asked);
}

TEST_F(TribeMsg, EventsReachThePage) {
  auto& events = engine.Account().tribe_chats->events;
  const std::vector<biz::IMMessage>& msgs = chat.page.msgs;
  events.on_receive_new_msg({kTribe}, msgs);
  events.on_receive_offline_msg(false, {kTribe}, msgs);
  events.on_send_new_msg({kTribe}, msgs);
  events.on_send_msg_status(kTribe, biz::kMsgText, 6, 42, {});
  events.on_msg_withdraw(kTribe, {chat.GetCID(), kLighthouse, 5, 6, 7}, {-1, 2, L"why"});
  events.on_tribe_at_msg_readed(kTribe, {{kLighthouse}, {{5, 1, 2}}});
  const std::wstring list = LR"("msgs":[)" + message + L"]";
  const std::pair<const wchar_t*, std::wstring> expected[] = {
      {L"onReceiveNewMsg", L"{" + list + L"}"},
      {L"onReceiveOfflineMsg", LR"({"result":"success",)" + list + L"}"},
      {L"onSendNewMsg", L"{" + list + L"}"},
      {L"onSendMsgStatus",
       LR"({"code":0,"subcode":0,"msgtype":0,"msgid":"6","svrtime":"42","result":"success"})"},
      {L"onMsgWithdrawNty",
       LR"({"code":-1,"subcode":2,"result":"failed","withdraws":[{"cid":{"tribeid":"10001",)"
       LR"("type":3},"fromid":)" +
           kLighthouseText + LR"(,"msgid":"5","msgtime":"6","svrtime":"7"}]})"},
      {L"onTribeAtMsgReaded",
       LR"({"tribeid":"10001","readers":[)" + kLighthouseText +
           LR"(],"counts":[{"msgid":"5","readedcount":1,"unreadcount":2}]})"},
  };
  ASSERT_EQ(host.page.notifications.size(), std::size(expected));
  for (std::size_t i = 0; i < std::size(expected); ++i) {
    EXPECT_EQ(host.page.notifications[i].event, expected[i].first);
    EXPECT_EQ(host.page.notifications[i].json, expected[i].second);
    EXPECT_EQ(host.page.notifications[i].path, L"im.tribemsg");
  }
  EXPECT_EQ(host.log->Lines(L"on offline msg.").at(0).items.at("wscResult"), expected[1].second);
  EXPECT_EQ(host.log->Lines(L"on msg withdraw.").at(0).brief,
            "_brief_,withdraw.cid, withdraw.fromid, withdraw.msgid");
}

}  // namespace
}  // namespace imsdk::test
