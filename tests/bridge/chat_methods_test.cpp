// Every method of the chat modules with requests that no page should send, and the module of
// virtual conversations.

#include <set>
#include <vector>

#include "tests/bridge/single_msg_fixture.h"

namespace imsdk::test {
namespace {

const std::vector<std::wstring> kConversationMethods = {
    L"GetNewMsg",         L"PeekNewMsg",           L"GetLocalHisMsg",
    L"GetUnreadCount",    L"GetUnreadCountInBulk", L"SetMsgRead",
    L"GetReadedBoundary", L"DeleteLocalMsg"};
const std::vector<std::wstring> kSingleMethods = {
    L"GetOfflineMsg",       L"PeekOfflineMsg",        L"GetRemoteHisMsg",
    L"FastReSendChatMsg",   L"ReSendChatMsg",         L"ForwardChatMsg",
    L"SendBroadcastMsg",    L"SendNormalChatMsg",     L"SendAutoReplyMsg",
    L"GetFlagsMyMsgReaded", L"SetFlagsPeerMsgReaded", L"DoChatMsgWithdraw",
    L"SearchMsgByID",       L"SearchDBMsg",           L"SearchDBMsg2",
    L"SearchDBMsgCid",      L"GetMsgPicture",         L"RoamMsg",
    L"ClearRoamedTime",     L"GetRoamStatus",         L"SetRoamStatus",
    L"ShieldAutoReply",     L"EditPic2SendMsg",       L"ConvertMsgText2Emotion",
    L"SetNewMsgMaxCache",   L"GetDynamicMsg",         L"AddAudio2textSettingRemind",
    L"GetTranslateSetting", L"GetTranslateMsg"};
// Those that need neither a conversation nor a service, and so succeed whatever they get.
const std::set<std::wstring> kContent = {L"GetUnreadCountInBulk", L"SearchDBMsg2",
                                         L"SearchDBMsgCid",       L"GetRoamStatus",
                                         L"SetRoamStatus",        L"ConvertMsgText2Emotion",
                                         L"SetNewMsgMaxCache",    L"GetTranslateSetting"};

// A request with a value of a wrong type under each key that any request has.
std::wstring WrongTypes() {
  std::wstring json = L"{";
  for (const wchar_t* key :
       {L"cid",      L"cids",        L"msgid",      L"msgids",    L"msgtime",        L"svrtime",
        L"btime",    L"etime",       L"count",      L"gohistory", L"ignoreboundary", L"autoroam",
        L"keywords", L"msgtypes",    L"needpage",   L"page",      L"pictureid",      L"autosend",
        L"msgbody",  L"msgtype",     L"fileMD5",    L"filepath",  L"msgcontent",     L"bizType",
        L"bizUuid",  L"maxmsgcount", L"roamstatus", L"setignore", L"type",           L"value",
        L"jvale",    L"all"}) {
    if (json.size() > 1) json += L',';
    json += L'"' + std::wstring(key) + LR"(":{"appkey":[],"nick":{"x":1.5}})";
  }
  return json + L"}";
}

class ChatMethods : public SingleMsg {
 protected:
  void ExpectOneFailureEach(const std::wstring& path, const std::vector<std::wstring>& methods) {
    const std::wstring requests[] = {L"{}", WrongTypes(), L"[]", L"null", L"{oops", L""};
    for (const std::wstring& method : methods) {
      for (const std::wstring& request : requests) {
        const std::size_t before = host.page.answers.size();
        const auto answer = host.Call(path, method, request);
        EXPECT_EQ(host.page.answers.size(), before + 1) << method << request;
        EXPECT_TRUE(answer.payload.starts_with(LR"({"code":)")) << method << request;
        const bool parses = request != L"{oops" && !request.empty();
        const bool without_keys = method == L"GetRoamStatus" || method == L"GetTranslateSetting";
        EXPECT_EQ(answer.failed, (!parses && !without_keys) || !kContent.contains(method))
            << method << request << answer.payload;
      }
    }
    EXPECT_TRUE(chat.sent.empty());
  }
};

TEST_F(ChatMethods, SingleChatAnswersEveryBadRequestOnce) {
  ExpectOneFailureEach(kPath, kConversationMethods);
  ExpectOneFailureEach(kPath, kSingleMethods);
}

TEST_F(ChatMethods, VirtualConversationsAnswerEveryBadRequestOnce) {
  ExpectOneFailureEach(L"im.virtualmsg", kConversationMethods);
  EXPECT_EQ(host.Call(L"im.virtualmsg", L"SendNormalChatMsg", kCid).payload,
            L"");  // no such method
}

TEST_F(ChatMethods, NobodyLoggedInFailsEverything) {
  TestHost view;
  view.Bind();
  for (const std::wstring& path : {kPath, std::wstring(L"im.virtualmsg")}) {
    for (const std::wstring& method : kConversationMethods) {
      EXPECT_TRUE(view.Call(path, method, kCid).failed) << path << method;
    }
  }
}

TEST_F(ChatMethods, VirtualConversationsAreReadLikeOthers) {
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

  auto& events = engine.Account().virtual_chats->events;
  events.on_receive_sys_msg(system.page.msgs);
  events.on_receive_subscribe_msg(system.page.msgs);
  ASSERT_EQ(host.page.notifications.size(), 2u);
  EXPECT_EQ(host.page.notifications[0].event, L"onReceiveSysMsg");
  EXPECT_EQ(host.page.notifications[1].event, L"onReceiveSubscribeMsg");
  EXPECT_TRUE(host.page.notifications[1].json.starts_with(LR"({"msgs":[{"msgid":"5")"));
}

}  // namespace
}  // namespace imsdk::test
