// Events of one account: heard once for all its views, and without a gap after a login.

#include <gtest/gtest.h>

#include "kexbase/thread.h"
#include "tests/support/memory_engine.h"
#include "tests/support/test_host.h"

namespace imsdk::test {
namespace {

const std::wstring kLoginPath = L"im.login";
const std::wstring kLogin =
    LR"({"userid":{"appkey":"cnbazaro","nick":"lighthouse"},"password":"demo"})";

void Register(TestHost& host, const std::wstring& events) {
  host.Invoke(L"workbench.im.event_register", L"r", L"register",
              LR"({"events":[)" + events + L"]}");
}

TEST(Feeds, EachViewGetsWhatItRegisteredForAndTracesAreWrittenOnce) {
  MemoryEngine engine;
  TestHost first;
  TestHost second;
  TestHost third;
  for (TestHost* host : {&first, &second, &third}) host->Bind(kHarbor);
  Register(first, LR"("onReceiveNewMsg","onShakeMsgNotify")");
  Register(second, LR"("onReceiveNewMsg")");
  auto odd = MakeMessage(1, kLighthouse, kHarbor, L"x");
  odd.cid = biz::IMConversationID({L"cnbazaro", L"mariner"});
  auto& events = engine.Chats().events;
  events.on_receive_new_msg({kLighthouse}, {odd});
  events.on_shake_msg(kLighthouse);
  EXPECT_EQ(first.page.notifications.size(), 2u);
  ASSERT_EQ(second.page.notifications.size(), 1u);
  EXPECT_EQ(second.page.notifications[0].json, first.page.notifications[0].json);
  EXPECT_TRUE(third.page.notifications.empty());
  EXPECT_EQ(first.log->Lines(L"on receive msg. fromid is invalid!!").size(), 1u);

  first.bridge->UnbindPage();
  events.on_receive_new_msg({kLighthouse}, {odd});
  EXPECT_EQ(first.page.notifications.size(), 2u);
  EXPECT_EQ(second.page.notifications.size(), 2u);
}

TEST(Feeds, EndWithTheirLastViewAndBeginAnewAfterALogout) {
  MemoryEngine engine;
  TestHost host;
  host.Bind();
  host.Invoke(L"workbench.im.event_register", L"r", L"register_all");
  const auto shakes = [&](MemoryChats& chats) {
    host.page.notifications.clear();
    chats.events.on_shake_msg(kHarbor);
    return host.page.notifications.size();
  };
  host.Call(kLoginPath, L"DoLoginByPassWord", kLogin);
  RefPtr<MemoryChats> before = engine.Account(kLighthouse).chats;
  EXPECT_EQ(shakes(*before), 1u);
  host.Call(kLoginPath, L"DoLogout");
  EXPECT_EQ(shakes(*before), 0u);
  host.Call(kLoginPath, L"DoLoginByPassWord", kLogin);
  EXPECT_EQ(shakes(*before), 0u);  // the old session's
  EXPECT_EQ(shakes(engine.Chats(kLighthouse)), 1u);

  // A feed that lived on would keep its account, and with it what its events hold.
  const auto held = std::make_shared<int>();
  before->events.on_shake_msg.connect([held](const biz::IMUserID&) {});
  engine.Chats(kLighthouse).events.on_shake_msg.connect([held](const biz::IMUserID&) {});
  before = nullptr;
  EXPECT_EQ(held.use_count(), 2);
  TestHost other;
  other.Bind(kLighthouse);
  engine.accounts->Logout({kLighthouse}, [](const biz::ResultCode&) {});
  EXPECT_EQ(held.use_count(), 1);
}

TEST(Feeds, ForgetAViewThatGoesWhileOthersStay) {
  MemoryEngine engine;
  TestHost stays;
  stays.Bind(kHarbor);
  const std::shared_ptr<base::TaskRunner> runner = stays.loop.task_runner();
  KeepingPage page(runner);
  const long before = runner.use_count();
  for (int i = 0; i < 3; ++i) {
    const RefPtr goes(new component::CKexCOMObject<OpenBridge>);
    goes->BindPage({L"goes", &page, runner, kHarbor});
    EXPECT_GT(runner.use_count(), before);
    goes->UnbindPage();
  }
  EXPECT_EQ(runner.use_count(), before);
}

// The engine raises an event as soon as it has called the login back, on its own thread; the
// view's thread is busy until then.
TEST(Feeds, NothingFallsBetweenALoginAndItsAnswer) {
  MemoryEngine engine;
  base::Thread engine_thread("engine");
  engine_thread.Start();
  engine.accounts->on_login = [&](std::function<void()> finish) {
    engine_thread.task_runner()->PostTask(FROM_HERE, [&engine, finish] {
      finish();
      engine.Chats(kLighthouse)
          .events.on_receive_new_msg({kHarbor}, {MakeMessage(1, kHarbor, kLighthouse, L"first")});
    });
  };
  TestHost host;
  host.Bind();
  host.Invoke(L"workbench.im.event_register", L"r", L"register_all");
  host.bridge->JsInvoke({L"view-1",
                         L"workbench.im.login.invoke",
                         {std::wstring(L"1"), std::wstring(L"DoLoginByPassWord"), kLogin}});
  engine_thread.Stop();
  EXPECT_TRUE(host.page.notifications.empty());
  host.RunLoop();
  ASSERT_EQ(host.page.answers.size(), 2u);  // with that of the registration
  std::vector<std::wstring> order;
  for (const auto& notification : host.page.notifications) order.push_back(notification.event);
  EXPECT_EQ(order, (std::vector<std::wstring>{L"onIMLoginOK", L"onReceiveNewMsg"}));
}

TEST(Feeds, AViewThatClosesDuringItsLoginLeavesNothingBehind) {
  MemoryEngine engine;
  std::function<void()> finish;
  engine.accounts->on_login = [&](std::function<void()> open) { finish = std::move(open); };
  {
    TestHost host;
    host.Bind();
    host.Invoke(L"workbench.im.login.invoke", L"1", L"DoLoginByPassWord", kLogin);
    host.bridge->UnbindPage();
    finish();
    host.RunLoop();
    engine.Chats(kLighthouse).events.on_shake_msg(kHarbor);
    EXPECT_TRUE(host.page.answers.empty());
    EXPECT_EQ(host.page.refs, 0);
  }
  finish = nullptr;
  engine.Chats(kLighthouse).events.on_shake_msg(kHarbor);
}

}  // namespace
}  // namespace imsdk::test
