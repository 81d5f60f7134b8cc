// The life of one call: answered, late, twice, dropped, with no page left.

#include <gtest/gtest.h>

#include "kexcom/result.h"
#include "tests/support/memory_engine.h"
#include "tests/support/test_host.h"

namespace imsdk {
namespace {

using test::TestHost;

const std::wstring kWait = L"workbench.im.nobody.invoke";  // a call that nobody answers

TEST(JSResponse, TracesTheTimeAndDeliversAllTheSame) {
  const struct {
    std::int64_t elapsed;
    const wchar_t* text;
    int level;
    const char* brief;
  } cases[] = {
      {0, L"js invoke!", 0, "_brief_,strSeqID, timeDiff, method"},
      {499, L"js invoke!", 0, "_brief_,strSeqID, timeDiff, method"},
      {-5, L"js invoke!", 0, "_brief_,strSeqID, timeDiff, method"},
      {500, L"js invoke take too much time!", 2, "_brief_,strSeqID, timeDiff, method, params"},
  };
  for (const auto& c : cases) {
    TestHost host;
    host.Bind();
    host.bridge->now = 10'000;
    host.Invoke(kWait, L"1", L"m", L"{\"a\":1}");
    host.bridge->now += c.elapsed;
    host.bridge->JSResponse(L"1", {0, L"{}"});
    const auto lines = host.log->Lines(c.text);
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_EQ(lines[0].level, c.level);
    EXPECT_EQ(lines[0].brief, c.brief);
    EXPECT_EQ(lines[0].function, "CIMSDKBridge::JSResponse");
    EXPECT_EQ(lines[0].items.at("timeDiff"), std::to_wstring(c.elapsed));
    EXPECT_EQ(lines[0].items.at("method"), kWait);
    if (c.level == 2) {
      EXPECT_EQ(lines[0].items.at("params"), L"{\"a\":1}");
    }
    ASSERT_EQ(host.page.answers.size(), 1u);
    EXPECT_EQ(host.page.answers[0].page, L"view-1");
    EXPECT_EQ(host.page.answers[0].payload, L"{}");
  }
}

TEST(JSResponse, FailedFlagFollowsTheCode) {
  TestHost host;
  host.Bind();
  for (const auto& [code, failed] :
       {std::pair{0, false}, {1, true}, {-1, true}, {E_NOTIMPL, true}}) {
    host.Invoke(kWait, L"1", L"m");
    host.bridge->JSResponse(L"1", {code, L""});
    EXPECT_EQ(host.page.answers.back().failed, failed) << code;
  }
}

TEST(JSResponse, AnswersOnceEvenWhenAnIdentifierIsUsedAgain) {
  TestHost host;
  host.Bind();
  host.Invoke(kWait, L"1", L"m");
  host.Invoke(kWait, L"1", L"m");  // replaces the first record
  host.bridge->JSResponse(L"1", {0, L"first"});
  host.bridge->JSResponse(L"1", {0, L"second"});
  ASSERT_EQ(host.page.answers.size(), 1u);
  EXPECT_EQ(host.page.answers[0].payload, L"first");
  ASSERT_EQ(host.log->Lines(L"already done!!!").size(), 1u);
  EXPECT_EQ(host.log->Lines(L"already done!!!")[0].level, 0);
}

TEST(JSResponse, WithoutAPageNothingIsDelivered) {
  TestHost host;
  host.Bind();
  host.Invoke(kWait, L"1", L"m");
  host.bridge->UnbindPage();
  host.bridge->JSResponse(L"1", {0, L""});
  host.bridge->JSResponse(L"1", {0, L""});  // the record stays, so this is no second answer
  EXPECT_EQ(host.log->Lines(L"ERROR!!!").size(), 2u);
  EXPECT_TRUE(host.page.answers.empty());
}

TEST(AnswerCallback, DroppedUncalledAnswersUnexpected) {
  test::MemoryEngine engine;
  TestHost host;
  host.Bind(test::kHarbor);
  test::PageDone kept;
  engine.Chats().Chat(test::kLighthouse).on_history = [&](test::PageDone done) {
    kept = std::move(done);
  };
  const std::wstring request = LR"({"cid":{"appkey":"cnbazaro","nick":"lighthouse"}})";
  host.Invoke(L"workbench.im.singlemsg.invoke", L"1", L"GetLocalHisMsg", request);
  EXPECT_TRUE(host.page.answers.empty());
  kept = nullptr;
  ASSERT_EQ(host.page.answers.size(), 1u);
  EXPECT_TRUE(host.page.answers[0].failed);
  EXPECT_EQ(host.log->Lines(L"never answered!!!").at(0).function,
            "CBridgeSingleMsg::GetLocalHisMsg");

  // Answering twice, also after the first was delivered, is answering once.
  host.Invoke(L"workbench.im.singlemsg.invoke", L"2", L"GetLocalHisMsg", request);
  kept({}, {});
  kept({}, {});
  kept = nullptr;
  EXPECT_EQ(host.log->Lines(L"already done!!!").size(), 1u);
  EXPECT_EQ(host.page.answers.size(), 2u);
  EXPECT_FALSE(host.page.answers[1].failed);
}

TEST(AnswerCallback, OutlivesTheBridge) {
  test::MemoryEngine engine;
  test::PageDone kept;
  {
    TestHost host;
    host.Bind(test::kHarbor);
    auto& chat = engine.Chats().Chat(test::kLighthouse);
    chat.on_history = [&](test::PageDone done) { kept = std::move(done); };
    host.Invoke(L"workbench.im.singlemsg.invoke", L"1", L"GetLocalHisMsg",
                LR"({"cid":{"appkey":"cnbazaro","nick":"lighthouse"}})");
    host.bridge->UnbindPage();
    chat.on_history = nullptr;
    EXPECT_EQ(host.page.refs, 0);
  }
  kept({}, {});  // the view's loop is gone
  kept = nullptr;
}

TEST(AnswerCallback, KeepsNoBridgeThatItHasAnsweredTo) {
  test::MemoryEngine engine;
  TestHost host;
  test::PageDone kept;
  engine.Chats().Chat(test::kLighthouse).on_history = [&](test::PageDone done) { kept = done; };
  const auto alive = std::make_shared<int>();  // held by the bridge
  RefPtr view(new component::CKexCOMObject<test::OpenBridge>);
  view->change = [alive](const auto&...) {};
  view->BindPage({L"v", &host.page, host.loop.task_runner(), test::kHarbor});
  view->JsInvoke(
      {L"v",
       L"workbench.im.singlemsg.invoke",
       {L"1", L"GetLocalHisMsg", LR"({"cid":{"appkey":"cnbazaro","nick":"lighthouse"}})"}});
  view->UnbindPage();
  view = nullptr;
  EXPECT_EQ(alive.use_count(), 2);  // the answer is still to come
  kept({}, {});
  EXPECT_EQ(alive.use_count(), 1);
}

TEST(PendingCalls, GiveWayFromTheOldestWhenFull) {
  bridge::PendingCalls calls;
  const std::wstring half(bridge::PendingCalls::kMaxText / 2, L'x');
  calls.Add(L"a", {L"", half, 0});
  EXPECT_FALSE(calls.Overdue());
  calls.Add(L"b", {L"", half, 0});
  ASSERT_EQ(calls.Overdue(), L"a");
  calls.Take(L"a");
  EXPECT_FALSE(calls.Overdue());
  calls.Add(L"b", {L"", L"", 0});  // replacing counts the new text
  calls.Add(L"c", {L"", half, 0});
  EXPECT_FALSE(calls.Overdue());
}

}  // namespace
}  // namespace imsdk
