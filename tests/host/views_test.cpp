// The life of views: opened, reloaded, closed, cut off by the end of the host.
#include <deque>
#include <thread>

#include "server_fixture.h"

namespace imsdk::host {
namespace {

using ViewsTest = ServerTest;

TEST_F(ViewsTest, AReloadInTheMiddleOfOpenCallsDeliversNoneOfTheirAnswers) {
  constexpr std::size_t kCalls = 1000;
  TestPage before = Page();
  for (std::size_t i = 0; i < kCalls; ++i) before.Send(Call("keep", R"(["old"])"));
  ASSERT_TRUE(Eventually([&] { return backend_.KeptCount() == kCalls; }));
  before.Vanish();
  TestPage after = Page();
  after.Send(Call("keep", R"(["new"])"));
  ASSERT_TRUE(Eventually([&] { return backend_.KeptCount() == kCalls + 1; }));
  ASSERT_TRUE(Eventually([&] { return backend_.bound() == 1; }));
  backend_.AnswerKept();
  EXPECT_NE(after.Receive()->find(R"("seq":"new")"), std::string::npos);
  EXPECT_FALSE(after.Receive(std::chrono::milliseconds(100)));
  // The old page's bridge goes with the last of its calls.
  EXPECT_TRUE(Eventually([&] { return backend_.bridges() == 1; }));
}

TEST_F(ViewsTest, StoppingEndsManyViewsCleanlyAndSoon) {
  std::deque<TestPage> pages;
  for (int i = 0; i < 50; ++i) pages.push_back(Page());
  for (TestPage& page : pages) page.Send(Call("keep", R"(["s"])"));
  ASSERT_TRUE(Eventually([&] { return backend_.KeptCount() == pages.size(); }));
  TestPage mute = Page();
  mute.Send(Call("flood", R"(["40","400000"])"));  // its goodbye waits behind this
  const auto start = std::chrono::steady_clock::now();
  std::thread stop([this] { server_->Stop(); });
  for (TestPage& page : pages) EXPECT_EQ(page.WaitClosed(), 1001);
  stop.join();
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(1500));
  EXPECT_EQ(server_->ViewCount(), 0u);
  EXPECT_EQ(backend_.bound(), 0);
  backend_.AnswerKept();  // refused by the views' runners
  EXPECT_EQ(backend_.bridges(), 0);
}

TEST_F(ViewsTest, StoppingDoesNotWaitForALongQueueOfTasks) {
  TestPage page = Page();
  page.Send(Call("keep", R"(["s"])"));
  ASSERT_TRUE(Eventually([&] { return backend_.KeptCount() == 1; }));
  std::atomic<int> ran{0};
  const auto runner = backend_.KeptRunner();
  for (int i = 0; i < 5000; ++i) {
    runner->PostTask(FROM_HERE, [&ran] {
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
      ++ran;
    });
  }
  const auto start = std::chrono::steady_clock::now();
  server_->Stop();
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(2));
  EXPECT_LT(ran, 5000);
}

TEST_F(ViewsTest, TheServerMayEndInTheMiddleOfHandshakes) {
  for (int i = 0; i < 6; ++i) {
    Start({});
    const TestPage first(port(), "/channel?token=secret");
    const TestPage second(port(), "/channel?token=secret");
    server_->Stop();
    EXPECT_EQ(backend_.bound(), 0);
  }
}

TEST_F(ViewsTest, TheServerMayEndWhileALoginIsOpen) {
  std::thread asking([this] { TestPage(port(), "/channel?token=secret&account=slow"); });
  ASSERT_TRUE(Eventually([&] { return backend_.SlowLogins() == 1; }));
  server_->Stop();
  backend_.DropSlowLogins();
  server_.reset();
  asking.join();
}

}  // namespace
}  // namespace imsdk::host
