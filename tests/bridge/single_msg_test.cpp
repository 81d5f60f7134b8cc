// "im.singlemsg": new messages and events.

#include <gtest/gtest.h>

#include <optional>

#include "source/bridge/sendercheck.h"
#include "tests/bridge/single_msg_fixture.h"

namespace imsdk::test {
namespace {

class Windows final : public RefPtrCounted<client::IChatWindowService> {
 public:
  Windows(bool visible, bool activated) : visible_(visible), activated_(activated) {}
  void SetViewAccount(const std::wstring&, const biz::IMUserID&) override {}
  bool IsVisible(const biz::IMUserID& account, const biz::IMConversationID& cid) override {
    return visible_ && account == kHarbor && cid == kChat;
  }
  bool IsActivated(const biz::IMUserID&, const biz::IMConversationID&) override {
    return activated_;
  }

 private:
  const bool visible_;
  const bool activated_;
};

TEST_F(SingleMsg, GetNewMsgMarksReadOnlyWhatIsSeen) {
  const struct {
    bool service, visible, activated;
    int unread;
    const wchar_t* trace;
  } cases[] = {{false, false, false, 3, L"window is NOT visible and BeActived!!"},
               {true, false, false, 3, L"window is NOT visible and BeActived!!"},
               {true, true, false, 0, L"window is visible or BeActived!!"},
               {true, false, true, 0, L"window is visible or BeActived!!"}};
  for (const auto& c : cases) {
    std::optional<Registered<client::IChatWindowService>> windows;
    if (c.service) windows.emplace(RefPtr(new Windows(c.visible, c.activated)));
    host.log->Clear();
    chat.unread = 3;
    EXPECT_FALSE(host.Call(kPath, L"PeekNewMsg", kCid).failed);
    EXPECT_EQ(chat.unread, 3);
    EXPECT_FALSE(host.Call(kPath, L"GetNewMsg", kCid).failed);
    EXPECT_EQ(chat.unread, c.unread);
    const auto lines = host.log->Lines(c.trace);
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_EQ(lines[0].brief, "_brief_,this,userid");
    EXPECT_EQ(lines[0].function, "CBridgeSingleMsg::GetNewMsg");
    const std::size_t marked = c.unread == 0 ? 1 : 0;
    EXPECT_EQ(host.log->Lines(L"SetNewMsgReaded req").size(), marked);
    EXPECT_EQ(host.log->Lines(L"SetNewMsgReaded rsp").size(), marked);
  }
}

TEST_F(SingleMsg, GetOfflineMsgMarksReadOnlyWhatThePageGot) {
  const Registered<client::IChatWindowService> windows(RefPtr(new Windows(true, true)));
  const struct {
    bool good;
    int unread;
    bool marked;
  } cases[] = {{true, 1, true}, {true, 2, false}, {false, 1, false}};
  for (const auto& c : cases) {
    chat.page.msgs = {MakeMessage(5, kLighthouse, kHarbor, L"a")};
    chat.page.outofcache = !c.marked;
    chat.result = {c.good ? 0 : biz::kEngineStorage, 0, {}};
    chat.unread = c.unread;
    host.log->Clear();
    const auto answer = Payload(L"GetOfflineMsg", kCid);
    if (c.good) {
      EXPECT_NE(answer.find(c.marked ? LR"("outofcache":0)" : LR"("outofcache":1)"), answer.npos);
    }
    EXPECT_EQ(chat.unread, c.marked ? 0 : c.unread);
    // What follows a good fetch follows no other.
    EXPECT_EQ(host.log->Lines(L"window is visible or BeActived!!").size(), c.good ? 1u : 0u);
    EXPECT_EQ(host.log->Lines(L"response msgs.").size(), c.good ? 1u : 0u);
    if (c.marked) {
      const Line marked = host.log->Lines(L"SetNewMsgReaded rsp").at(0);
      EXPECT_EQ(marked.function, "CBridgeSingleMsg::GetOfflineMsg::SetNewMsgReaded");
      EXPECT_EQ(marked.source, "source\\bridge\\bridgeconversation");
    }
  }
  chat.result = {biz::kEngineStorage, 0, {}};
  chat.unread = 1;
  EXPECT_TRUE(host.Call(kPath, L"GetNewMsg", kCid).failed);
  EXPECT_EQ(chat.unread, 1);
}

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

TEST_F(SingleMsg, PageRequestsReachTheEngine) {
  host.Call(kPath, L"GetLocalHisMsg",
            LR"({"cid":{"appkey":"cnbazaro","nick":"lighthouse"},"msgtime":"1700000000001",)"
            LR"("msgid":"9007199254740993","count":20,"gohistory":1,"autoroam":"1"})");
  EXPECT_EQ(chat.last_request.msgtime, 1'700'000'000'001);
  EXPECT_EQ(chat.last_request.msgid, 9'007'199'254'740'993);
  EXPECT_EQ(chat.last_request.count, 20);
  EXPECT_TRUE(chat.last_request.gohistory);
  EXPECT_FALSE(chat.last_request.autoroam);  // a string is no flag
}

TEST_F(SingleMsg, UnreadCounts) {
  chat.unread = 2;
  EXPECT_EQ(host.Call(kPath, L"GetUnreadCount", kCid).payload,
            LR"({"code":0,"subcode":0,"result":"success","count":2})");
  const std::wstring one =
      LR"({"code":0,"subcode":0,"result":"success","unreads":)"
      LR"([{"cid":{"appkey":"cnbazaro","nick":"lighthouse"},"count":2}]})";
  EXPECT_EQ(host.Call(kPath, L"GetUnreadCountInBulk").payload, one);
  EXPECT_EQ(host.Call(kPath, L"GetUnreadCountInBulk",
                      LR"({"cids":[{"appkey":"cnbazaro","nick":"lighthouse"},5]})")
                .payload,
            one);
  host.Call(kPath, L"SetMsgRead", kCid);
  EXPECT_EQ(chat.unread, 0);
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
