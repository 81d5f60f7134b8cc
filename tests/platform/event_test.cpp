#include "kexbase/event.h"

#include <gtest/gtest.h>

#include <atomic>
#include <stdexcept>
#include <string>
#include <thread>

namespace {

using base::event;
using base::event_handle;

TEST(Event, CallsHandlersInOrderWithTheSameArguments) {
  event<void(std::string, int&)> changed;
  std::string log;
  for (const char* name : {"a", "b"}) {
    changed.connect([&log, name](std::string text, int& count) {
      log += name + std::exchange(text, "taken") + " ";
      ++count;
    });
  }
  int count = 0;
  changed("x", count);
  EXPECT_EQ(log, "ax bx ");
  EXPECT_EQ(count, 2);
}

TEST(Event, HandlersMayChangeTheListDuringARaise) {
  event<void()> raised;
  std::string log;
  event_handle second;
  event_handle first = raised.connect([&] {
    log += "1";
    second.disconnect();
    first.disconnect();
    raised.connect([&] { log += "4"; });
    if (log == "1") raised();  // inside, the new list
  });
  second = raised.connect([&] { log += "2"; });
  raised.connect([&] { log += "3"; });
  raised();
  EXPECT_EQ(log, "1343");
  raised();
  EXPECT_EQ(log, "134334");
}

TEST(Event, AThrowingHandlerIsItsOwnAffair) {
  event<void()> raised;
  int calls = 0;
  raised.connect([] { throw std::runtime_error("a handler failed"); });
  raised.connect([&] { ++calls; });
  EXPECT_NO_THROW(raised());
  EXPECT_EQ(calls, 1);
}

TEST(Event, Handles) {
  const auto held = std::make_shared<int>();
  event_handle outlives;
  {
    event<void()> raised;
    const event_handle a = raised.connect([held] {});
    const event_handle b = raised.connect([held] {});
    event_handle copy = a;
    EXPECT_TRUE(copy == a);
    EXPECT_FALSE(a == b);
    EXPECT_TRUE(event_handle() == raised.connect(nullptr));
    EXPECT_FALSE(a == event_handle());
    EXPECT_TRUE(a.connected());
    copy.disconnect();
    copy.disconnect();
    EXPECT_FALSE(a.connected());
    EXPECT_TRUE(copy == a);
    EXPECT_EQ(held.use_count(), 2) << "what a handler holds goes with its connection";
    outlives = b;
  }
  EXPECT_EQ(held.use_count(), 1);
  EXPECT_FALSE(outlives.connected());
  outlives.disconnect();
  event_handle().disconnect();
}

TEST(Event, MayBeDestroyedByAHandler) {
  auto raised = std::make_unique<event<void()>>();
  int calls = 0;
  raised->connect([&] {
    ++calls;
    raised.reset();
  });
  raised->connect([&] { ++calls; });
  (*raised)();
  EXPECT_EQ(calls, 1);
}

TEST(Event, ManyThreadsConnectRaiseAndDisconnect) {
  event<void(int)> raised;
  std::atomic<int> steady{0};
  std::atomic<int> after_disconnect{0};
  raised.connect([&](int by) { steady += by; });
  std::vector<std::thread> threads;
  constexpr int kRounds = 2000;
  for (int t = 0; t < 2; ++t) {
    threads.emplace_back([&] {
      for (int i = 0; i < kRounds; ++i) raised(1);
    });
    threads.emplace_back([&] {
      for (int i = 0; i < kRounds; ++i) {
        // Called by this thread's own raise once, and never after it was disconnected.
        bool disconnected = false;
        const std::thread::id self = std::this_thread::get_id();
        auto handle = raised.connect([&, self, state = std::make_shared<int>(i)](int) {
          if (std::this_thread::get_id() == self && disconnected) ++after_disconnect;
        });
        handle.disconnect();
        disconnected = true;
        raised(0);
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(steady, 2 * kRounds);
  EXPECT_EQ(after_disconnect, 0);
}

}  // namespace
