// "im.singlemsg": new messages and events.

#include <gtest/gtest.h>

#include "source/bridge/sendercheck.h"
#include "tests/bridge/chat_fixture.h"

namespace imsdk::test {
namespace {

TEST_F(SingleMsg, MessagesAnswerHasItsKeysInOrder) {
  chat.page.msgs = {MakeMessage(5, kLighthouse, kHarbor, L"a \"b\"\n")};
  chat.page.outofcache = true;
  const std::wstring expected =
      LR"({"code":0,"subcode":0,"result":"success","outofcache":1,"msgs":[{"msgid":"5",)"
      LR"("msgtime":"1700000000005","cid":{"appkey":"cnbazaro","nick":"lighthouse"},)"
      LR"("fromid":{"appkey":"cnbazaro","nick":"lighthouse"},)"
      LR"("toid":{"appkey":"cnbazaro","nick":"harbor"},"msgtype":0,"msgstatus":3,)"
      LR"("msgbody":"a \"b\"\n","svrtime":"1700000000006","readflag":0,)"
      LR"("extinfo":{"others":"","fixmsgread":0,"autochatmsg":0,"syschatmsg":0}}]})";
  for (const wchar_t* method : {L"GetNewMsg", L"PeekNewMsg", L"GetLocalHisMsg"}) {
    EXPECT_EQ(host.Call(kPath, method, kCid).payload, expected) << method;
  }
}

TEST_F(SingleMsg, EventsReachThePageAndForeignSendersAreTraced) {
  auto odd = MakeMessage(7, kLighthouse, kHarbor, L"x");
  odd.cid = biz::IMConversationID({L"cnbazaro", L"mariner"});
  const std::vector<biz::IMMessage> msgs{MakeMessage(6, kLighthouse, kHarbor, L"ok"), odd};
  auto& events = engine.Chats().events;
  const std::vector<biz::IMUserID> cids{kLighthouse, odd.cid.user};
  events.on_receive_new_msg(cids, msgs);
  events.on_receive_offline_msg(false, cids, msgs);
  events.on_send_new_msg(cids, msgs);
  events.on_send_msg_status(kLighthouse, biz::kMsgText, 6, 42, {});
  ASSERT_EQ(host.page.notifications.size(), 4u);
  EXPECT_EQ(host.page.notifications[0].event, L"onReceiveNewMsg");
  EXPECT_EQ(host.page.notifications[1].event, L"onReceiveOfflineMsg");
  EXPECT_EQ(host.page.notifications[2].event, L"onSendNewMsg");
  EXPECT_TRUE(host.page.notifications[0].json.starts_with(LR"({"msgs":[{"msgid":"6")"));
  EXPECT_EQ(host.page.notifications[3].json,
            LR"({"code":0,"subcode":0,"msgtype":0,"msgid":"6","svrtime":"42","result":"success"})");
  for (const wchar_t* text :
       {L"on receive msg. fromid is invalid!!", L"on offline msg. fromid is invalid!!",
        L"on send msg. fromid is invalid!!"}) {
    const auto lines = host.log->Lines(text);
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_EQ(lines[0].brief, "_brief_,msg.cid, msg.toid, msg.fromid, msg.msgtime");
    EXPECT_EQ(lines[0].items.at("node_name"), L"imsdk_bc_msg_fromid_check");
    EXPECT_EQ(lines[0].items.at("session_id"), L"cnbazaromariner");
    EXPECT_EQ(lines[0].items.at("imsdk_msgid"), L"7");
  }
}

TEST(MainNick, EndsBeforeTheFirstColonUnlessItStandsFirst) {
  const struct {
    const wchar_t* nick;
    const wchar_t* main;
  } cases[] = {{L"a:b", L"a"},     {L"a:b:c", L"a"}, {L"a:", L"a"}, {L":a", L":a"},
               {L":a:b", L":a:b"}, {L"a", L"a"},     {L"", L""}};
  for (const auto& c : cases) EXPECT_EQ(bridge::MainNick(c.nick), c.main);
}

}  // namespace
}  // namespace imsdk::test
