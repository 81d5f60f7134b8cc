// "im.virtualmsg" and the two modules that tell of virtual conversations.

#include "tests/bridge/chat_fixture.h"

namespace imsdk::test {
namespace {

TEST_F(SingleMsg, VirtualConversationsAreReadLikeOthers) {
  const std::wstring path = L"im.virtualmsg";
  auto& system = engine.Account().virtual_chats->Chat(biz::IMUserID{L"cnbazaro", L"system"});
  const std::wstring cid = LR"({"cid":{"appkey":"cnbazaro","nick":"system"}})";
  system.page.msgs = {MakeMessage(5, system.GetCID().user, kHarbor, L"welcome")};
  system.unread = 1;
  for (const wchar_t* method : {L"GetNewMsg", L"PeekNewMsg", L"GetLocalHisMsg"}) {
    EXPECT_NE(host.Call(path, method, cid).payload.find(L"welcome"), std::wstring::npos) << method;
  }
  EXPECT_NE(host.Call(path, L"GetUnreadCountInBulk").payload.find(LR"("count":1)"),
            std::wstring::npos);
  host.Call(path, L"SetMsgRead", cid);
  EXPECT_EQ(system.unread, 0);
  EXPECT_TRUE(host.Call(path, L"GetNewMsg", kCid).failed);  // a real user is none of them
  EXPECT_TRUE(host.Call(path, L"SetMsgRead", L"{}").failed);
  EXPECT_EQ(host.Call(path, L"SendNormalChatMsg", kCid).payload, L"");  // no such method
  EXPECT_EQ(host.log->Lines(L"GetNewMsg").at(0).function, "CBridgeVritualMsg::GetNewMsg");

  auto& events = engine.Account().virtual_chats->events;
  events.on_receive_sys_msg(system.page.msgs);
  events.on_receive_subscribe_msg(system.page.msgs);
  ASSERT_EQ(host.page.notifications.size(), 2u);
  EXPECT_EQ(host.page.notifications[0].event, L"onReceiveSysMsg");
  EXPECT_EQ(host.page.notifications[1].event, L"onReceiveSubscribeMsg");
  EXPECT_EQ(host.page.notifications[0].path, L"sysmsg");
  EXPECT_EQ(host.page.notifications[1].path, L"subscribemsg");
  host.Invoke(L"workbench.im.event_notify", L"raised", L"onPage");
  EXPECT_EQ(host.page.notifications.at(2).path, L"");
  EXPECT_TRUE(host.page.notifications[1].json.starts_with(LR"({"msgs":[{"msgid":"5")"));
}

TEST(AccountThatIsNotLoggedIn, IsTracedByEveryModuleThatLooksItUp) {
  MemoryEngine engine;
  TestHost host;
  host.Bind(kLighthouse);
  const std::pair<const wchar_t*, std::vector<std::string>> expected[] = {
      {L"GetIMSingleChatMgr.", {"CBridgeSingleMsg", "CBridgeTribeMsg"}},
      {L"GetIMTribeMgr.", {"CBridgeTribeMgr"}},
      {L"GetIMVirtualChatMgr.", {"CBridgeVritualMsg", "CBridgeSubscribeMsg", "CBridgeSysMsg"}}};
  for (const auto& [text, modules] : expected) {
    std::vector<std::string> functions;
    for (const Line& line : host.log->Lines(text)) functions.push_back(line.function);
    std::vector<std::string> named;
    for (const auto& module : modules) named.push_back(module + "::OnAccountChanged");
    EXPECT_EQ(functions, named);
  }
}

}  // namespace
}  // namespace imsdk::test
