// A page marks messages as read on its thread while the account's worker withdraws them.
#include <atomic>
#include <mutex>
#include <thread>

#include "account/conversations/chat_state.h"
#include "store_fixture.h"

namespace imsdk::test {
namespace {

TEST_F(StoreTest, WithdrawingWhatIsBeingRead) {
  constexpr int kMessagesEach = 3000;
  account::ChatState chat;
  std::atomic<bool> stop{false};
  std::atomic<std::int32_t> least{0};
  std::mutex lock;
  std::vector<std::int64_t> marked;  // on their way to the store
  std::thread page([&] {
    while (!stop) {
      const std::int64_t arrival = chat.MarkRead(kChat);
      least = std::min(least.load(), chat.Unread(kChat));
      std::lock_guard hold(lock);
      if (arrival != 0) marked.push_back(arrival);
    }
  });
  const auto store_marks = [&] {
    std::vector<std::int64_t> taken;
    {
      std::lock_guard hold(lock);
      taken.swap(marked);
    }
    for (const std::int64_t arrival : taken) store_.MarkRead(kChat, arrival);
  };
  sqlite::Transaction transaction(store_.database());
  for (std::int64_t id = 1; id <= kMessagesEach; ++id) {
    if (id == kMessagesEach - 5) {  // the last ones stay unread
      stop = true;
      page.join();
    }
    const auto message = Received(kPeer, 1000 + id, id);
    chat.AddIncoming({{message, *store_.AddIncoming(message)}});
    if (id % 3 == 0) store_marks();
    if (id % 2 == 0) chat.Forget(kChat, store_.Withdraw(kChat, kPeer, id - 1)->unread);
    if (id % 7 == 0) {
      const auto removed = store_.Delete(kChat, {id - 2});
      chat.Remove(kChat, removed.unread, removed.newest);
    }
    least = std::min(least.load(), chat.Unread(kChat));
  }
  store_marks();
  transaction.Commit();
  EXPECT_EQ(least, 0);
  EXPECT_GT(chat.Unread(kChat), 0);
  EXPECT_EQ(chat.Unread(kChat), store_.Conversations().at(0).unread);
  EXPECT_EQ(chat.NewMessages(kChat, {}).msgs.size(), static_cast<std::size_t>(chat.Unread(kChat)));
}

}  // namespace
}  // namespace imsdk::test
