#include "kexbase/message_loop.h"

#include <gtest/gtest.h>

#include <atomic>
#include <condition_variable>
#include <mutex>
#include <stdexcept>
#include <thread>
#include <vector>

#include "kexbase/callback.h"
#include "kexbase/thread.h"

namespace {

using std::chrono::milliseconds;

// Its use count tells which closures still hold it.
using Tracked = std::shared_ptr<int>;

TEST(MessageLoop, RunsInOrderWhateverTasksThrow) {
  base::MessageLoop loop;
  const auto runner = loop.task_runner();
  std::string log;
  runner->PostDelayedTask(
      FROM_HERE, [&] { log += "d"; }, milliseconds(20));
  runner->PostDelayedTask(
      FROM_HERE, [&] { log += "e"; }, milliseconds(20));
  runner->PostDelayedTask(
      FROM_HERE, [&] { log += "c"; }, milliseconds(10));
  runner->PostDelayedTask(
      FROM_HERE, [&] { loop.Quit(); }, milliseconds(40));
  runner->PostDelayedTask(
      FROM_HERE, [&] { log += "never"; }, milliseconds::max());
  runner->PostTask(FROM_HERE, [&] {
    runner->PostTask(FROM_HERE, [&] { log += "b"; });
    throw std::runtime_error("a task failed");
  });
  runner->PostDelayedTask(
      FROM_HERE, [&] { log += "a"; }, milliseconds(-5));
  loop.RunUntilIdle();
  EXPECT_EQ(log, "ab");
  EXPECT_TRUE(runner->RunsTasksOnCurrentThread());
  loop.Run();
  EXPECT_EQ(log, "abcde");
}

TEST(MessageLoop, QuitDestroysWhatHasNotRun) {
  Tracked held = std::make_shared<int>();
  std::shared_ptr<base::TaskRunner> runner;
  bool ran = false;
  {
    base::MessageLoop loop;
    runner = loop.task_runner();
    // A task that posts as it dies, as an answer callback does.
    const Tracked last_words(
        nullptr, [runner](int*) { EXPECT_FALSE(runner->PostTask(FROM_HERE, [] { FAIL(); })); });
    runner->PostTask(FROM_HERE, [&] { loop.Quit(); });
    runner->PostTask(FROM_HERE, [&ran, held, last_words] { ran = true; });
    runner->PostDelayedTask(
        FROM_HERE, [&ran, held] { ran = true; }, milliseconds(1));
    loop.Run();
    EXPECT_EQ(held.use_count(), 1) << "destroyed as Run returns";
    EXPECT_FALSE(runner->RunsTasksOnCurrentThread()) << "an ended loop has no thread";
    EXPECT_FALSE(runner->PostTask(FROM_HERE, [held] {}));
    EXPECT_FALSE(runner->PostDelayedTask(
        FROM_HERE, [held] {}, milliseconds(1)));
    EXPECT_EQ(held.use_count(), 1) << "a refused task is destroyed by the caller";
    loop.Run();  // returns at once
  }
  EXPECT_FALSE(runner->PostTask(FROM_HERE, [] {}));
  EXPECT_FALSE(ran);

  auto never_run = std::make_unique<base::MessageLoop>();
  never_run->task_runner()->PostTask(FROM_HERE, [held] {});
  EXPECT_EQ(held.use_count(), 2);
  never_run.reset();
  EXPECT_EQ(held.use_count(), 1);
}

TEST(MessageLoop, DestroysATaskBeforeTheNextRuns) {
  base::MessageLoop loop;
  Tracked held = std::make_shared<int>();
  loop.task_runner()->PostTask(FROM_HERE, [copy = held] {});
  loop.task_runner()->PostTask(FROM_HERE, [&held] { EXPECT_EQ(held.use_count(), 1); });
  loop.RunUntilIdle();
}

TEST(MessageLoop, TakesPostsFromManyThreads) {
  constexpr int kThreads = 8;
  constexpr int kPosts = 5000;
  base::MessageLoop loop;
  const auto runner = loop.task_runner();
  std::vector<std::vector<int>> got(kThreads);  // touched by the loop's thread only
  int left = kThreads * kPosts;
  std::vector<std::thread> posters;
  posters.reserve(kThreads);
  for (int t = 0; t < kThreads; ++t) {
    posters.emplace_back([&, t] {
      for (int i = 0; i < kPosts; ++i) {
        runner->PostTask(FROM_HERE, [&, t, i] {
          got[static_cast<size_t>(t)].push_back(i);
          if (--left == 0) loop.Quit();
        });
      }
    });
  }
  loop.Run();
  for (std::thread& poster : posters) poster.join();
  for (const std::vector<int>& numbers : got) {
    ASSERT_EQ(numbers.size(), static_cast<size_t>(kPosts));
    EXPECT_TRUE(std::is_sorted(numbers.begin(), numbers.end()));
  }
}

TEST(MessageLoop, WakesForWhatAnotherThreadDoes) {
  const std::function<void(base::MessageLoop&)> kQuits[] = {
      [](base::MessageLoop& loop) { loop.Quit(); },
      [](base::MessageLoop& loop) {
        loop.task_runner()->PostTask(FROM_HERE, [&] { loop.Quit(); });
      },
      [](base::MessageLoop& loop) {
        loop.task_runner()->PostDelayedTask(
            FROM_HERE, [&] { loop.Quit(); }, milliseconds(1));
      },
  };
  for (const auto& quit : kQuits) {
    base::MessageLoop loop;
    std::thread other([&] {
      std::this_thread::sleep_for(milliseconds(20));  // the loop waits by then
      quit(loop);
    });
    loop.Run();
    other.join();
  }
}

TEST(Thread, StopRunsWhatWasPostedBefore) {
  base::Thread thread("a name longer than fifteen bytes");
  const auto runner = thread.task_runner();
  int ran = 0;
  bool on_thread = false;
  Tracked held = std::make_shared<int>();
  EXPECT_TRUE(runner->PostTask(FROM_HERE, [&] { on_thread = runner->RunsTasksOnCurrentThread(); }));
  ASSERT_TRUE(thread.Start());
  EXPECT_FALSE(thread.Start());
  for (int i = 0; i < 1000; ++i) runner->PostTask(FROM_HERE, [&] { ++ran; });
  runner->PostDelayedTask(
      FROM_HERE, [held] { FAIL() << "not due"; }, std::chrono::hours(1));
  thread.Stop();
  EXPECT_EQ(ran, 1000);
  EXPECT_TRUE(on_thread);
  EXPECT_FALSE(runner->RunsTasksOnCurrentThread());
  EXPECT_EQ(held.use_count(), 1);
  EXPECT_FALSE(runner->PostTask(FROM_HERE, [] {}));
  EXPECT_FALSE(thread.Start());
}

TEST(Thread, NeverStartedDestroysItsTasks) {
  Tracked held = std::make_shared<int>();
  {
    base::Thread thread("idle");
    thread.task_runner()->PostTask(FROM_HERE, [held] { FAIL(); });
  }
  EXPECT_EQ(held.use_count(), 1);
}

// An object that owns a thread may be let go by a task of that thread.
TEST(Thread, MayBeDestroyedByItsOwnTask) {
  auto thread = std::make_shared<base::Thread>("self");
  const auto runner = thread->task_runner();
  std::mutex mutex;
  std::condition_variable changed;
  bool last_ran = false;
  thread->Start();
  std::unique_lock hold(mutex);
  runner->PostTask(FROM_HERE, [&, thread]() mutable {
    { const std::lock_guard until_the_test_has_let_go(mutex); }
    runner->PostTask(FROM_HERE, [&] {
      const std::lock_guard report(mutex);
      last_ran = true;
      changed.notify_one();
    });
    thread.reset();
    EXPECT_FALSE(runner->PostTask(FROM_HERE, [] {}));
  });
  thread.reset();
  EXPECT_TRUE(changed.wait_for(hold, std::chrono::seconds(10), [&] { return last_ran; }));
}

struct Counter {
  void Add(int amount) { total += amount; }
  void AddMoved(std::unique_ptr<int> amount) { total += *amount; }
  int total = 0;
};

TEST(BindWeak, CallsOnlyWhileTheObjectLives) {
  auto counter = std::make_shared<Counter>();
  const std::function<void(int)> add = base::BindWeak(std::weak_ptr(counter), &Counter::Add);
  const std::function<void()> drop = base::BindWeak(std::weak_ptr(counter), [&](Counter& c) {
    counter.reset();
    c.Add(100);  // still held
  });
  add(2);
  base::BindWeak(std::weak_ptr(counter), &Counter::AddMoved)(std::make_unique<int>(3));
  EXPECT_EQ(counter->total, 5);
  drop();
  EXPECT_EQ(counter, nullptr);
  add(7);
  drop();
}

}  // namespace
