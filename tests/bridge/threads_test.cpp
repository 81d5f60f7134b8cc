// Answers and events from many engine threads at once.

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <future>
#include <thread>

#include "kexbase/thread.h"
#include "tests/support/memory_engine.h"
#include "tests/support/test_host.h"
#include "trace/tracetarget.h"

namespace imsdk {
namespace {

using test::kHarbor;
using test::kLighthouse;

constexpr int kThreads = 8;
constexpr wchar_t kCid[] = LR"({"cid":{"appkey":"cnbazaro","nick":"lighthouse"}})";

// Engine threads that answer history requests, each in turn.
class Answering {
 public:
  explicit Answering(test::MemoryConversation& chat) : chat_(chat) {
    for (int i = 0; i < kThreads; ++i) {
      threads_.push_back(std::make_unique<base::Thread>("engine"));
      threads_.back()->Start();
    }
    chat_.on_history = [this](test::PageDone done) {
      threads_[next_++ % kThreads]->task_runner()->PostTask(
          FROM_HERE, [done = std::move(done)] { done({}, {}); });
    };
  }
  ~Answering() {
    chat_.on_history = nullptr;
    for (auto& thread : threads_) thread->Stop();
  }

 private:
  test::MemoryConversation& chat_;
  std::vector<std::unique_ptr<base::Thread>> threads_;
  std::size_t next_ = 0;
};

TEST(Threads, EveryAnswerArrivesOnceOnTheViewsThread) {
  constexpr std::size_t kCalls = 100'000;
  test::MemoryEngine engine;
  test::TestHost host;
  // A hundred thousand kept trace lines would measure the test, not the bridge.
  GetKexCOM()->UnregisterService(ns_log::ILogService::kServiceId);
  ns_log::TraceTarget::Attach();
  host.Bind(kHarbor);
  host.page.answers.reserve(kCalls);
  {
    Answering answering(engine.Chats().Chat(kLighthouse));
    for (std::size_t i = 0; i < kCalls; ++i) {
      host.bridge->JsInvoke(
          {L"view-1",
           L"workbench.im.singlemsg.invoke",
           {std::to_wstring(i), std::wstring(L"GetLocalHisMsg"), std::wstring(kCid)}});
      if (i % 64 == 0) host.RunLoop();
    }
  }
  host.RunLoop();
  ASSERT_EQ(host.page.answers.size(), kCalls);
  std::vector<int> seen(kCalls);
  for (const auto& answer : host.page.answers) {
    ++seen[static_cast<std::size_t>(std::stol(answer.seq))];
    ASSERT_TRUE(answer.on_view_thread);
    ASSERT_FALSE(answer.failed);
  }
  EXPECT_EQ(std::count(seen.begin(), seen.end(), 1), static_cast<std::ptrdiff_t>(kCalls));
}

TEST(Threads, ViewsComeAndGoWhileTheEngineRaisesEvents) {
  test::MemoryEngine engine;
  auto& chats = engine.Chats();
  std::atomic<bool> stop{false};
  std::vector<std::thread> raising;
  for (int i = 0; i < 3; ++i) {
    raising.emplace_back([&, i] {
      const auto msg = test::MakeMessage(i, kLighthouse, kHarbor, L"text");
      while (!stop) {
        chats.events.on_receive_new_msg({kLighthouse}, {msg});
        engine.accounts->events.on_net_reconnect_ok(kHarbor);
        std::this_thread::sleep_for(std::chrono::milliseconds(1));  // a loop must get idle
      }
    });
  }
  std::size_t notified = 0;
  {
    Answering answering(chats.Chat(kLighthouse));
    for (int view = 0; view < 200; ++view) {
      test::TestHost host;
      GetKexCOM()->UnregisterService(ns_log::ILogService::kServiceId);
      ns_log::TraceTarget::Attach();
      host.Bind(kHarbor);
      host.Invoke(L"workbench.im.event_register", L"r", L"register_all");
      for (int i = 0; i < 20; ++i) {
        host.Invoke(L"workbench.im.singlemsg.invoke", std::to_wstring(i), L"GetLocalHisMsg", kCid);
      }
      const std::size_t before = host.page.answers.size();
      notified += host.page.notifications.size();
      host.bridge->UnbindPage();
      host.RunLoop();
      EXPECT_EQ(host.page.answers.size(), before);  // nothing reaches a page that is gone
      EXPECT_EQ(host.page.refs, 0);
    }
  }
  stop = true;
  for (auto& thread : raising) thread.join();
  EXPECT_GT(notified, 0u);
}

// Numbers of the messages that a page was notified of.
std::vector<std::int64_t> Received(const test::KeepingPage& page) {
  std::vector<std::int64_t> ids;
  for (const auto& notification : page.notifications) {
    if (notification.event != L"onReceiveNewMsg") continue;
    const std::wstring_view key = L"\"msgid\":\"";
    ids.push_back(std::stol(notification.json.substr(notification.json.find(key) + key.size())));
  }
  return ids;
}

TEST(Threads, ViewsOfManyThreadsShareAnAccountThatComesAndGoes) {
  test::MemoryEngine engine;
  test::TestHost host;  // the business layer runs
  GetKexCOM()->UnregisterService(ns_log::ILogService::kServiceId);
  ns_log::TraceTarget::Attach();
  base::Thread engine_thread("engine");
  engine_thread.Start();
  engine.accounts->on_login = [&](std::function<void()> finish) {
    engine_thread.task_runner()->PostTask(FROM_HERE, std::move(finish));
  };
  std::atomic<bool> stop{false};
  std::thread raising([&] {
    for (std::int64_t id = 1; !stop; ++id) {
      const auto account = engine.accounts->GetAccount(kLighthouse);
      if (account) {
        static_cast<test::MemoryAccount&>(*account).chats->events.on_receive_new_msg(
            {kHarbor}, {test::MakeMessage(id, kHarbor, kLighthouse, L"text")});
      }
      std::this_thread::sleep_for(std::chrono::microseconds(200));
    }
  });
  std::atomic<std::size_t> received{0};
  std::vector<std::thread> views;
  for (int i = 0; i < 4; ++i) {
    views.emplace_back([&, i] {
      for (int round = 0; round < 25; ++round) {
        base::MessageLoop loop;
        test::KeepingPage page(loop.task_runner());
        const RefPtr view(new component::CKexCOMObject<test::OpenBridge>);
        // Every other one is bound to whatever of the account there is.
        const bool bound = (round + i) % 2 == 0;
        view->BindPage({L"v", &page, loop.task_runner(), bound ? kLighthouse : biz::IMUserID()});
        view->JsInvoke({L"v", L"workbench.im.event_register", {L"r", L"register_all", L"{}"}});
        const std::wstring login =
            LR"({"userid":{"appkey":"cnbazaro","nick":"lighthouse"},"token":"demo"})";
        view->JsInvoke({L"v", L"workbench.im.login.invoke", {L"1", L"DoLoginByToken", login}});
        for (int wait = 0; wait < 5; ++wait) {
          std::this_thread::sleep_for(std::chrono::milliseconds(1));
          loop.RunUntilIdle();
        }
        if (round % 5 == 0) {
          view->JsInvoke({L"v", L"workbench.im.login.invoke", {L"2", L"DoLogout", L"{}"}});
        }
        view->UnbindPage();
        const std::size_t before = page.notifications.size();
        loop.RunUntilIdle();
        EXPECT_EQ(page.notifications.size(), before);
        const auto ids = Received(page);
        EXPECT_EQ(std::adjacent_find(ids.begin(), ids.end(), std::greater_equal<>()), ids.end());
        received += ids.size();
      }
    });
  }
  for (auto& view : views) view.join();
  stop = true;
  raising.join();
  engine_thread.Stop();
  EXPECT_GT(received, 100u);
}

class CountingPage final : public bridge::IPageHandler {
 public:
  void AddRef() override { ++refs; }
  void Release() override { --refs; }
  void DeliverAnswer(const std::wstring&, const std::wstring&, bool, const std::wstring&) override {
  }
  void Reserved() override {}
  void Notify(const std::wstring&, const std::wstring&) override {
    notified.fetch_add(1, std::memory_order_relaxed);
  }
  std::atomic<int> refs{0};
  std::atomic<int> notified{0};
};

// A host that stops in the middle of everything: nobody unbinds, the host has let go of the bridge,
// its loop is quit between two of many events, and the answer that comes then has the last
// reference. Relaxed, so that nothing but the bridge puts the threads in order.
TEST(Threads, StopsUnderLoadTouchNothingThatIsGone) {
  test::MemoryEngine engine;
  test::TestHost host;  // the business layer runs
  GetKexCOM()->UnregisterService(ns_log::ILogService::kServiceId);
  ns_log::TraceTarget::Attach();
  auto& chats = engine.Chats();
  test::PageDone kept;
  chats.Chat(kLighthouse).on_history = [&](test::PageDone done) { kept = std::move(done); };
  const auto msg = test::MakeMessage(1, kLighthouse, kHarbor, L"text");
  for (int round = 0; round < 100; ++round) {
    CountingPage page;
    std::promise<base::MessageLoop*> running;
    std::thread view_thread([&] {
      base::MessageLoop loop;
      RefPtr view(new component::CKexCOMObject<test::OpenBridge>);
      view->BindPage({L"v", &page, loop.task_runner(), kHarbor});
      view->JsInvoke({L"v", L"workbench.im.event_register", {L"r", L"register_all", L"{}"}});
      view->JsInvoke({L"v", L"workbench.im.singlemsg.invoke", {L"1", L"GetLocalHisMsg", kCid}});
      view = nullptr;
      running.set_value(&loop);
      loop.Run();
    });
    base::MessageLoop* const loop = running.get_future().get();
    for (int i = 0; i < 300; ++i) {
      chats.events.on_receive_new_msg({kLighthouse}, {msg});
      engine.accounts->events.on_net_reconnect_ok(kHarbor);
    }
    while (page.notified.load(std::memory_order_relaxed) < round % 60) std::this_thread::yield();
    loop->Quit();
    kept({}, {});
    kept = nullptr;
    view_thread.join();
    EXPECT_EQ(page.refs, 0);
  }
}

}  // namespace
}  // namespace imsdk
