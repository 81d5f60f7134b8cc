// "im.singlemsg": history, read state, and what the client's services do with messages.

#include "imsdk/client/dynamic_content.h"
#include "imsdk/client/translation.h"
#include "tests/bridge/chat_fixture.h"

namespace imsdk::test {
namespace {

TEST_F(SingleMsg, AnswersOfItsOwnHaveTheirKeysInOrder) {
  const std::wstring lighthouse = LR"({"appkey":"cnbazaro","nick":"lighthouse"})";
  chat.found.totalcount = 21;
  EXPECT_EQ(Payload(L"SearchDBMsg", WithCid(LR"("keywords":["a"],"fromids":[{"nick":"x"}])")),
            Answer(LR"("cid":)" + lighthouse +
                   LR"(,"keywords":["a"],"msgtypes":[],"currentpage":0,"totalpage":0,)"
                   LR"("totalcount":21,"msgs":[])"));
  EXPECT_TRUE(chat.last_search.fromids.empty());  // there is but one
  EXPECT_EQ(Payload(L"GetFlagsMyMsgReaded", WithCid(LR"("msgids":["3"])")),
            Answer(LR"("items":[{"cid":)" + lighthouse +
                   LR"(,"msgid":"3","msgtime":"4","readflag":1}])"));
  EXPECT_EQ(Payload(L"SetFlagsPeerMsgReaded", WithCid(LR"("msgids":["11"])")), kSuccess);
  EXPECT_EQ(chat.msgids, std::vector<std::int64_t>{11});
  EXPECT_EQ(Payload(L"GetTranslateSetting", L"{}"), Answer(LR"("enable":0)"));
  EXPECT_EQ(Payload(L"AddAudio2textSettingRemind", kCid), kSuccess);
  EXPECT_FALSE(chat.note.empty());
  chat.result = {biz::kEngineRefused, 0, L"too late"};
  EXPECT_EQ(Payload(L"DoChatMsgWithdraw", kCid),
            LR"({"code":-11,"subcode":0,"result":"too late"})");
}

TEST_F(SingleMsg, FetchedMessagesAreTracedAndChecked) {
  chat.page.msgs = {MakeMessage(5, kLighthouse, kHarbor, L"a"),
                    MakeMessage(6, kLighthouse, kHarbor, L"b")};
  chat.page.msgs[1].cid = biz::IMConversationID({L"cnbazaro", L"mariner"});
  for (const wchar_t* method :
       {L"GetOfflineMsg", L"PeekOfflineMsg", L"GetRemoteHisMsg", L"SearchMsgByID"}) {
    host.log->Clear();
    EXPECT_TRUE(Payload(method, kCid).starts_with(Answer(L"").substr(0, 41))) << method;
    EXPECT_EQ(host.log->Lines(L"response msgs.").at(0).items.at("msgids"), L"5,6");
    EXPECT_EQ(host.log->Lines(L"rsp msg. fromid is invalid!!").size(), 1u);
    const bool marks = method == std::wstring(L"GetOfflineMsg");
    EXPECT_EQ(host.log->Lines(L"window is NOT visible and BeActived!!").size(), marks ? 1u : 0u);
  }
}

TEST_F(SingleMsg, TracePointsFollowAMessage) {
  Payload(L"GetRemoteHisMsg", WithCid(LR"("msgid":"7","msgtime":"8")"));
  chat.result = {biz::kEngineNoLink, 0, {}};
  Payload(L"GetRemoteHisMsg", kCid);
  engine.Chats().events.on_flag_my_msg_readed(
      kLighthouse, {{kChat, 3, 4, biz::kMsgRead}, {kChat, 5, 6, biz::kMsgRead}});
  const struct {
    const wchar_t *node, *unique, *code, *msgid;
    int level;
    const char* function;
  } expected[] = {
      {L"imsdk_get_remote_msg", nullptr, L"0", L"7", 0,
       "CBridgeSingleMsg::GetRemoteHisMsg::RspFetchMsg"},
      {L"imsdk_get_remote_msg", nullptr, L"-5", L"0", 3,
       "CBridgeSingleMsg::GetRemoteHisMsg::RspFetchMsg"},
      {L"imsdk_read_flag_bridge_nty", L"3", L"0", L"3", 0, "CBridgeSingleMsg::OnFlagMyMsgReaded"},
      {L"imsdk_read_flag_bridge_nty", L"5", L"0", L"5", 0, "CBridgeSingleMsg::OnFlagMyMsgReaded"},
  };
  auto points = host.log->Lines();
  std::erase_if(points, [](const Line& line) { return !line.items.contains("node_name"); });
  ASSERT_EQ(points.size(), std::size(expected));
  for (std::size_t i = 0; i < points.size(); ++i) {
    auto& items = points[i].items;
    EXPECT_EQ(items["node_name"], expected[i].node);
    EXPECT_EQ(items["result_code"], expected[i].code);
    EXPECT_EQ(items["session_id"], L"cnbazarolighthouse");
    EXPECT_EQ(items["imsdk_msgid"], expected[i].msgid);
    EXPECT_EQ(points[i].level, expected[i].level);
    EXPECT_EQ(points[i].function, expected[i].function);
    EXPECT_FALSE(items["unique_id"].empty());
    if (expected[i].unique) {
      EXPECT_EQ(items["unique_id"], expected[i].unique);
    }
  }
}

class Translation final : public RefPtrCounted<client::ITranslationService> {
 public:
  bool IsEnabled() override { return true; }
  void Translate(const biz::IMUserID& account, const std::wstring& msgid, const std::wstring& text,
                 client::IMTranslateCallback done) override {
    if (text.empty()) return done({biz::kEngineEmpty, 0, L"nothing to translate"}, {});
    events.on_translated(account, msgid, L"~" + text);
    done({}, L"~" + text);
  }
  TranslationEvents& Events() override { return events; }

  TranslationEvents events;
};

TEST_F(SingleMsg, TranslatesThroughTheClient) {
  const std::wstring request = LR"({"msgid":"5","msgcontent":"text"})";
  EXPECT_EQ(Payload(L"GetTranslateMsg", request),
            LR"({"code":-2147418113,"subcode":0,"result":"no translation is set up"})");

  const RefPtr<Translation> translation(new Translation);
  const Registered<client::ITranslationService> service(translation);
  TestHost view;
  view.Bind(kHarbor);
  view.Invoke(L"workbench.im.event_register", L"r", L"register_all");
  EXPECT_EQ(view.Call(kPath, L"GetTranslateSetting").payload, Answer(LR"("enable":1)"));
  EXPECT_EQ(view.Call(kPath, L"GetTranslateMsg", request).payload,
            Answer(LR"("msgid":"5","msgcontent":"~text")"));
  EXPECT_TRUE(view.Call(kPath, L"GetTranslateMsg", L"{}").failed);
  translation->events.on_translated(kLighthouse, L"6", L"of another account");
  translation->events.on_setting_changed(0);
  ASSERT_EQ(view.page.notifications.size(), 2u);
  EXPECT_EQ(view.page.notifications[0].json, LR"({"msgid":"5","msgcontent":"~text"})");
  EXPECT_EQ(view.page.notifications[1].event, L"onTranslateSettingNotify");
  EXPECT_EQ(view.page.notifications[1].json, LR"({"enable":0})");
}

class Dynamic final : public RefPtrCounted<client::IDynamicContentService> {
 public:
  void GetContent(const biz::IMUserID& account, const std::wstring& biz_type,
                  const std::wstring& biz_uuid, client::IMDynamicCallback done) override {
    done({}, account.nick + L"/" + biz_type + L"/" + biz_uuid);
  }
};

TEST_F(SingleMsg, DynamicContentComesFromTheClient) {
  const std::wstring request = LR"({"bizType":"order","bizUuid":"u"})";
  EXPECT_TRUE(host.Call(kPath, L"GetDynamicMsg", request).failed);
  const Registered<client::IDynamicContentService> service(RefPtr(new Dynamic));
  EXPECT_EQ(Payload(L"GetDynamicMsg", request), Answer(LR"("content":"harbor/order/u")"));
}

TEST_F(SingleMsg, StateEventsReachThePage) {
  auto& events = engine.Chats().events;
  events.on_shake_msg(kLighthouse);
  events.on_flag_my_msg_readed(kLighthouse, {{kChat, 3, 4, biz::kMsgRead}});
  events.on_msg_withdraw(kLighthouse, {kChat, kHarbor, 5, 6, 7}, {});
  events.on_peer_input({L"cnbazaro", L"lighthouse:keeper"}, biz::kInputTyping);
  const std::wstring lighthouse = LR"({"appkey":"cnbazaro","nick":"lighthouse"})";
  const std::pair<const wchar_t*, std::wstring> expected[] = {
      {L"onShakeMsgNotify", lighthouse},
      {L"onFlagMyMsgReaded",
       LR"({"items":[{"cid":)" + lighthouse + LR"(,"msgid":"3","msgtime":"4","readflag":1}]})"},
      {L"onMsgWithdrawNty", LR"({"code":0,"subcode":0,"result":"success","withdraws":[{"cid":)" +
                                lighthouse +
                                LR"(,"fromid":{"appkey":"cnbazaro","nick":"harbor"},"msgid":"5",)"
                                LR"("msgtime":"6","svrtime":"7"}]})"},
      {L"onPeerInputNotify", LR"({"value":1,"cid":)" + lighthouse + L"}"},
  };
  ASSERT_EQ(host.page.notifications.size(), std::size(expected));
  for (std::size_t i = 0; i < std::size(expected); ++i) {
    EXPECT_EQ(host.page.notifications[i].event, expected[i].first);
    EXPECT_EQ(host.page.notifications[i].json, expected[i].second);
  }

  engine.Account().type = biz::kSubAccount;
  TestHost sub;
  sub.Bind(kHarbor);
  sub.Invoke(L"workbench.im.event_register", L"r", L"register_all");
  events.on_peer_input({L"cnbazaro", L"lighthouse:keeper"}, biz::kInputStopped);
  EXPECT_EQ(sub.page.notifications.at(0).json,
            LR"({"value":0,"cid":{"appkey":"cnbazaro","nick":"lighthouse:keeper"}})");
}

}  // namespace
}  // namespace imsdk::test
