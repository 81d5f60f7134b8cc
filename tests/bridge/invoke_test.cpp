// The entry of script calls: routing, refusals and their traces, page events, registration.

#include <gtest/gtest.h>

#include "kexcom/result.h"
#include "tests/support/memory_engine.h"
#include "tests/support/test_host.h"

namespace imsdk {
namespace {

using test::Line;
using test::TestHost;

constexpr char kSource[] = "source\\bridge\\imsdkbridge";

void ExpectLine(const std::vector<Line>& lines, int level, const char* function,
                const char* brief) {
  ASSERT_EQ(lines.size(), 1u);
  EXPECT_EQ(lines[0].level, level);
  EXPECT_EQ(lines[0].function, function);
  EXPECT_EQ(lines[0].source, kSource);
  EXPECT_EQ(lines[0].brief, brief);
}

TEST(JsInvoke, DropsMethodsThatAreNotRegistered) {
  const wchar_t* const methods[] = {L"workbench.login.invoke", L"", L"workbench.i", L"im.login",
                                    L"Workbench.im.login.invoke"};
  for (const std::wstring method : methods) {
    TestHost host;
    host.Bind();
    host.Invoke(method, L"1", L"GetCurrentLoginID");
    const auto lines = host.log->Lines(L"NOT Register! method " + method);
    ExpectLine(lines, 3, "CIMSDKBridge::JsInvoke", "_brief_,method");
    EXPECT_EQ(lines[0].items.at("method"), method);
    EXPECT_TRUE(host.page.answers.empty());
  }
}

TEST(JsInvoke, IgnoresUnknownPathsInSilence) {
  const wchar_t* const methods[] = {L"workbench.im.login.invoke.invoke", L"workbench.im.login",
                                    L"workbench.im.other.invoke",        L"workbench.im..invoke",
                                    L"workbench.im.login.invoke.x",      L"workbench.im.invoke"};
  for (const wchar_t* method : methods) {
    TestHost host;
    host.Bind();
    host.log->Clear();
    host.Invoke(method, L"1", L"GetCurrentLoginID");
    EXPECT_TRUE(host.log->Lines().empty()) << host.log->Lines().size();
    EXPECT_TRUE(host.page.answers.empty());
  }
}

TEST(JsInvoke, RefusesAnotherPagesCall) {
  TestHost host;
  host.Bind();
  const bridge::SdkParam foreign{
      L"view-2", L"workbench.im.login.invoke", {L"7", L"GetCurrentLoginID", L"{}"}};
  host.bridge->JsInvoke(foreign);
  EXPECT_TRUE(host.page.answers.empty());
  EXPECT_EQ(host.log->Lines(L"already done!!!").size(), 1u);
  const auto lines = host.log->Lines(L"browserId NOT match!!!");
  ExpectLine(lines, 3, "CIMSDKBridge::JsInvoke",
             "_brief_,sdkParam.browserId,sdkParam.method,strSeqID,strParam2,strParam3");
  EXPECT_EQ(lines[0].items.at("sdkParam.browserId"), L"view-2");
  EXPECT_EQ(lines[0].items.at("strParam2"), L"GetCurrentLoginID");

  // An older call that still waits under the same identifier is consumed by the refusal.
  host.Invoke(L"workbench.im.nobody.invoke", L"7", L"Wait");
  host.bridge->JsInvoke(foreign);
  ASSERT_EQ(host.page.answers.size(), 1u);
  EXPECT_TRUE(host.page.answers[0].failed);
  EXPECT_EQ(host.page.answers[0].payload, L"");
}

TEST(JsInvoke, DispatchesWithoutSequenceIdButCannotAnswer) {
  TestHost host;
  host.Bind();
  host.Invoke(L"workbench.im.login.invoke", L"", L"GetCurrentLoginID");
  ExpectLine(host.log->Lines(L"invalid seqid"), 2, "CIMSDKBridge::JsInvoke", "_brief_,");
  EXPECT_EQ(host.log->Lines(L"GetCurrentLoginID").size(), 1u);
  ExpectLine(host.log->Lines(L"ERROR!!!"), 3, "CIMSDKBridge::JSResponse", "_brief_,strSeqID");
  EXPECT_TRUE(host.page.answers.empty());
}

TEST(JsInvoke, OnlyTracesLargeJsonInUtf16Units) {
  std::wstring pairs;  // two units each
  for (int i = 0; i < 2048; ++i) pairs += L"\U0001F600";
  const struct {
    std::wstring json;
    bool traced;
  } cases[] = {{std::wstring(4096, L' '), false},
               {std::wstring(4097, L' '), true},
               {pairs, false},
               {pairs + L"x", true}};
  for (const auto& c : cases) {
    TestHost host;
    host.Bind();
    host.Invoke(L"workbench.im.login.invoke", L"1", L"GetCurrentLoginID", c.json);
    const auto lines = host.log->Lines(L"unexpected json!!! too large.");
    EXPECT_EQ(lines.size(), c.traced ? 1u : 0u);
    if (c.traced) {
      ExpectLine(lines, 3, "CIMSDKBridge::JsInvoke", "_brief_,scRoutingPath,bizmethod,jsonparam");
      EXPECT_EQ(lines[0].items.at("scRoutingPath"), L"im.login");
    }
    EXPECT_EQ(host.page.answers.size(), 1u);
  }
}

TEST(JsInvoke, TracesAnEmptyModuleEntryAndAnUnknownMethod) {
  TestHost host(
      [](bridge::ModuleTable& modules, const auto&) { modules[L"im.contact"] = nullptr; });
  host.Bind();
  host.Invoke(L"workbench.im.contact.invoke", L"1", L"GetUserInfo");
  ExpectLine(host.log->Lines(L"null pointer!!! path,method"), 3, "CIMSDKBridge::JsInvoke",
             "_brief_,scRoutingPath,bizmethod");
  EXPECT_TRUE(host.page.answers.empty());

  const wchar_t* const unknown[] = {
      L"getcurrentloginid",  L"GetCurrentLogin", L"",
      L"GetCurrentLoginIDx", L"\x540D",          L"GetCurrentLoginI\U0001F600"};
  for (const std::wstring bizmethod : unknown) {
    host.log->Clear();
    host.page.answers.clear();
    host.Invoke(L"workbench.im.login.invoke", L"2", bizmethod);
    const auto lines = host.log->Lines(L"Invalid js invoke!!! path,method");
    ExpectLine(lines, 3, "CIMSDKBridge::JsInvoke", "_brief_,scRoutingPath,bizmethod");
    EXPECT_EQ(lines[0].items.at("bizmethod"), bizmethod);
    ASSERT_EQ(host.page.answers.size(), 1u);
    EXPECT_TRUE(host.page.answers[0].failed);
    EXPECT_EQ(host.page.answers[0].payload, L"");
  }
}

TEST(JsInvoke, RoutesAllEightPaths) {
  TestHost host;
  host.Bind();
  for (const wchar_t* path : {L"im.singlemsg", L"im.tribemsg", L"im.tribemgr", L"im.bizutil",
                              L"im.contact", L"im.filetransfer", L"im.login", L"im.virtualmsg"}) {
    EXPECT_EQ(host.Call(path, L"NoSuchMethod").payload, L"") << path;
  }
  EXPECT_EQ(host.log->Lines(L"Invalid js invoke!!! path,method").size(), 8u);
}

TEST(JsInvoke, ReadsArgumentsThatAreNoTexts) {
  TestHost host;
  host.Bind();
  const struct {
    bridge::ScriptArg arg;
    const wchar_t* seq;
  } cases[] = {{std::int64_t{9007199254740993}, L"9007199254740993"},
               {1.5, L"1.5"},
               {true, L"true"},
               {std::wstring(L"x"), L"x"}};
  for (const auto& c : cases) {
    host.bridge->JsInvoke({L"view-1", L"workbench.im.login.invoke", {c.arg, L"GetCurrentLoginID"}});
    EXPECT_EQ(host.page.answers.back().seq, c.seq);
  }
}

TEST(EventNotify, ReachesThePageUnchangedAndIsAnswered) {
  TestHost host;
  host.Bind();
  host.Invoke(L"workbench.im.event_notify", L"1", L"onAnything", L"not { json \x4F60");
  ASSERT_EQ(host.page.notifications.size(), 1u);
  EXPECT_EQ(host.page.notifications[0].event, L"onAnything");
  EXPECT_EQ(host.page.notifications[0].json, L"not { json \x4F60");
  ExpectLine(host.log->Lines(L"im.event_notify!!!"), 0, "CIMSDKBridge::JsInvoke",
             "_brief_,eventname");
  ASSERT_EQ(host.page.answers.size(), 1u);
  EXPECT_FALSE(host.page.answers[0].failed);
}

TEST(EventRegister, DecidesWhichNotificationsReachThePage) {
  test::MemoryEngine engine;
  TestHost host;
  host.Bind(test::kHarbor);
  const auto raise = [&] {
    host.page.notifications.clear();
    engine.accounts->events.on_net_reconnect_ok(test::kHarbor);
    host.RunLoop();
    return host.page.notifications.size();
  };
  const std::wstring registered = L"workbench.im.event_register";
  EXPECT_EQ(raise(), 0u);
  host.Invoke(registered, L"1", L"register", LR"({"events":["onNetReConnectOK"]})");
  EXPECT_EQ(raise(), 1u);
  EXPECT_EQ(host.page.notifications[0].json,
            LR"({"userid":{"appkey":"cnbazaro","nick":"harbor"}})");
  host.Invoke(registered, L"2", L"unregister", LR"({"events":["onNetReConnectOK"]})");
  EXPECT_EQ(raise(), 0u);
  host.Invoke(registered, L"3", L"register_all");
  ExpectLine(host.log->Lines(L"im.event_register(event_register)!!!"), 0, "CIMSDKBridge::JsInvoke",
             "_brief_,");
  EXPECT_EQ(raise(), 1u);
  host.Invoke(registered, L"4", L"unregister_all");
  EXPECT_EQ(raise(), 0u);
  for (const auto& answer : host.page.answers) EXPECT_FALSE(answer.failed);
}

TEST(EventRegister, RefusesWhatItDoesNotKnow) {
  TestHost host;
  host.Bind();
  const struct {
    const wchar_t* bizmethod;
    const wchar_t* json;
    const wchar_t* result;
  } cases[] = {
      {L"register", LR"({"events":["onIMLoginOK","onNothing"]})", L"unknown event: onNothing"},
      {L"register", L"{", L"invalid!"},
      {L"other", L"{}", L"unknown method"},
  };
  for (const auto& c : cases) {
    host.page.answers.clear();
    host.Invoke(L"workbench.im.event_register", L"1", c.bizmethod, c.json);
    ASSERT_EQ(host.page.answers.size(), 1u);
    EXPECT_TRUE(host.page.answers[0].failed);
    EXPECT_NE(host.page.answers[0].payload.find(c.result), std::wstring::npos);
  }
}

TEST(JsInvoke, NoLineShowsASecretWhereverItComes) {
  TestHost host;
  host.Bind();
  const std::wstring secret = LR"({"pass\u0077ord":"hunter2"})";
  const std::wstring unreadable = L"{hunter2";
  for (const std::wstring& json : {secret, unreadable}) {
    for (const wchar_t* method :
         {L"im.login.invoke", L"im.event_register", L"im.event_notify", L"im.nobody.invoke"}) {
      const std::wstring full = L"workbench." + std::wstring(method);
      host.bridge->now = 0;
      host.Invoke(full, L"1", L"DoLoginByPassWord", json);
      host.Invoke(full, L"2", L"DoLogout", json + std::wstring(5000, L' '));
      host.bridge->now = 1000;
      host.bridge->JSResponse(L"1", {});
      host.bridge->JsInvoke({L"view-2", full, {std::wstring(L"3"), std::wstring(L"x"), json}});
    }
  }
  const std::wstring tribes = L"workbench.im.tribemgr.invoke";
  for (const std::wstring& json : {std::wstring(LR"({"s\u0074r":["hunter2"]})"), unreadable}) {
    host.bridge->now = 0;
    host.Invoke(tribes, L"4", L"SetJoinPwd", json);
    host.Invoke(tribes, L"5", L"SetJoinPwd", json + std::wstring(5000, L' '));
    host.bridge->now = 1000;
    host.bridge->JSResponse(L"4", {});
    host.bridge->JsInvoke({L"view-2", tribes, {std::wstring(L"6"), std::wstring(L"x"), json}});
  }
  EXPECT_GT(host.log->Lines().size(), 20u);
  for (const auto& line : host.log->Lines()) {
    EXPECT_EQ(line.record.find(L"hunter2"), line.record.npos) << base::WideToUTF8(line.record);
  }
}

}  // namespace
}  // namespace imsdk
