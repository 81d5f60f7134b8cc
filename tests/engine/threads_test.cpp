// Everything at once from many threads.
#include <algorithm>
#include <atomic>
#include <set>
#include <thread>

#include "engine_fixture.h"

namespace imsdk::test {
namespace {

const biz::IMUserID kHarbor = User(L"harbor");
const biz::IMUserID kMariner = User(L"mariner");

class ThreadsTest : public ServerTest {
 protected:
  void SetUp() override {
    setup_.timeouts.send = std::chrono::seconds(60);
    ServerTest::SetUp();
    for (const auto& user : {kHarbor, kMariner}) CreateAccount(user);
  }
};

TEST_P(ThreadsTest, SendersKeepOrderAndLoseNothing) {
  constexpr int kThreads = 4;
  constexpr int kEach = 150;
  Login(kHarbor);
  Login(kMariner);
  Witness harbor(kHarbor);
  Witness mariner(kMariner);
  std::atomic<bool> stop{false};
  std::thread reader([&] {
    while (!stop) {
      const auto chat = Chat(kMariner, kHarbor);
      NewMessages(chat);
      Unread(chat);
      chat->SetMsgRead({}, [](const auto&) {});
      Unreads(Chats(kMariner));
      std::this_thread::yield();
    }
  });
  std::vector<std::thread> senders;
  for (int thread = 0; thread < kThreads; ++thread) {
    senders.emplace_back([thread] {
      for (int i = 0; i < kEach; ++i) {
        Send(kHarbor, kMariner, std::to_wstring(thread) + L":" + std::to_wstring(i));
      }
    });
  }
  for (auto& sender : senders) sender.join();
  constexpr std::size_t kAll = std::size_t{kThreads} * kEach;
  ASSERT_TRUE(harbor.AwaitStatuses(kAll));
  ASSERT_TRUE(mariner.AwaitReceived(kAll));
  stop = true;
  reader.join();

  std::set<std::int64_t> ids;
  for (const auto& message : harbor.sent) ids.insert(message.msgid);
  EXPECT_EQ(ids.size(), kAll);
  EXPECT_TRUE(std::is_sorted(harbor.sent.begin(), harbor.sent.end(),
                             [](const auto& a, const auto& b) { return a.msgid < b.msgid; }));
  EXPECT_EQ(Bodies(mariner.received), Bodies(harbor.sent))
      << "in the order in which they were taken";
  for (const auto& status : harbor.statuses) EXPECT_EQ(status.code, 0);
}

// The server's word that a message is gone meets a page that reads it.
TEST_P(ThreadsTest, WithdrawalsMeetReads) {
  constexpr std::size_t kMessages = 60;
  Login(kHarbor);
  Login(kMariner);
  Witness harbor(kHarbor);
  Witness mariner(kMariner);
  std::atomic<bool> stop{false};
  std::atomic<bool> negative{false};
  std::thread reader([&] {
    const auto chat = Chat(kMariner, kHarbor);
    while (!stop) {
      chat->SetMsgRead({}, [](const auto&) {});
      if (Unread(chat) < 0) negative = true;
      chat->GetLocalHisMsg({.autoroam = true}, [](const auto&, auto) {});
      std::this_thread::yield();
    }
  });
  for (std::size_t i = 1; i <= kMessages; ++i) {
    Send(kHarbor, kMariner, std::to_wstring(i));
    ASSERT_TRUE(harbor.AwaitStatuses(i));
    const std::int64_t msgid = harbor.statuses[i - 1].msgid;
    EXPECT_TRUE(Done([&](auto done) { Chat(kHarbor, kMariner)->WithdrawMsg({msgid}, done); }).ok());
    if (i == kMessages / 2) {  // the rest without reads: what is withdrawn is not unread
      stop = true;
      reader.join();
    }
  }
  Send(kHarbor, kMariner, L"last");
  mariner.Await([](const Witness& seen) {
    return !seen.received.empty() && seen.received.back().msgbody == L"last";
  });
  EXPECT_FALSE(negative);
  const auto chat = Chat(kMariner, kHarbor);
  EXPECT_EQ(Unread(chat), 1);
  EXPECT_EQ(Bodies(NewMessages(chat).msgs), std::vector<std::wstring>{L"last"});
  Logout(kMariner);
  Login(kMariner);
  EXPECT_EQ(Unread(Chat(kMariner, kHarbor)), 1) << "the store says the same";
}

TEST_P(ThreadsTest, LoginsLogoutsAndSendsAtOnce) {
  std::atomic<bool> stop{false};
  std::vector<std::thread> threads;
  for (const auto& user : {kHarbor, kMariner}) {
    threads.emplace_back([&stop, user] {
      for (int i = 0; i < 15; ++i) {
        Login(user);
        Wait<biz::ResultCode>([&](auto done) { Accounts()->NetReConnect({user}, done); });
        Logout(user);
      }
      stop = true;
    });
  }
  std::atomic<int> taken{0};
  threads.emplace_back([&] {
    while (!stop) {
      const auto chat = Chat(kHarbor, kMariner);
      if (chat && SendItems(chat, {Text(L"text")}, {}) == 0) ++taken;
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
  });
  for (auto& thread : threads) thread.join();
  Logout(kMariner);

  Witness harbor(kHarbor);
  Login(kHarbor);
  biz::IMPageRequest request;
  request.count = 1000;
  const auto sent = History(kHarbor, kMariner, request);
  EXPECT_EQ(static_cast<int>(sent.msgs.size()), std::min(taken.load(), 1000));
  Login(kMariner);
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
  while (History(kMariner, kHarbor, request).msgs.size() < sent.msgs.size() &&
         std::chrono::steady_clock::now() < deadline) {
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
  EXPECT_EQ(Bodies(History(kMariner, kHarbor, request).msgs), Bodies(sent.msgs));
}

TEST_P(ThreadsTest, StoppingInTheMiddle) {
  Login(kHarbor);
  Login(kMariner);
  const auto chat = Chat(kHarbor, kMariner);
  std::atomic<int> taken{0};
  std::vector<std::thread> threads;
  for (int i = 0; i < 3; ++i) {
    threads.emplace_back([&] {
      while (SendItems(chat, {Text(L"text")}, {}) == 0) {
        ++taken;
        chat->GetLocalHisMsg({}, [](const auto&, auto) {});
        chat->SetMsgRead({}, [](const auto&) {});
        std::this_thread::yield();
      }
    });
  }
  while (taken < 200) std::this_thread::yield();
  engine_.reset();
  for (auto& thread : threads) thread.join();

  Begin();
  Login(kHarbor);
  std::size_t stored = 0;
  biz::IMPageRequest request{.count = 1000, .gohistory = true};
  for (;;) {
    const auto page = History(kHarbor, kMariner, request);
    stored += page.msgs.size();
    if (page.outofcache) break;
    request.msgtime = page.msgs.front().msgtime;
    request.msgid = page.msgs.front().msgid;
  }
  EXPECT_EQ(stored, static_cast<std::size_t>(taken)) << "what was taken is in the store";
}

INSTANTIATE_TEST_SUITE_P(Servers, ThreadsTest, testing::ValuesIn(ServerKinds()), NameOf);

}  // namespace
}  // namespace imsdk::test
