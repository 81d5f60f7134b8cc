// Many sessions of many threads at once.
#include <atomic>
#include <fstream>
#include <map>
#include <thread>

#include "kexbase/md5.h"
#include "server_fixture.h"

namespace imsdk::test {
namespace {

class ServerThreads : public ServerTest {};

TEST_F(ServerThreads, SessionsComeAndGoWhileOthersSend) {
  constexpr int kSenders = 3;
  constexpr int kEach = 60;
  CreateAccounts({L"harbor", L"mariner", L"lighthouse"});
  Tribe({L"harbor", L"mariner", L"lighthouse"});
  std::ofstream(folder_ / "up") << "content";
  const auto stays = Connect(L"mariner");
  std::vector<std::thread> threads;
  for (int sender = 0; sender < kSenders; ++sender) {
    threads.emplace_back([this, sender] {
      const auto device = Connect(L"harbor", "desk" + std::to_string(sender));
      for (int i = 0; i < kEach; ++i) {
        const std::int64_t msgid = sender * 1000 + i + 1;
        EXPECT_TRUE(device->Say(i % 2 == 0 ? kTribe : With(L"mariner"), msgid).result.ok());
        if (i % 10 == 0) device->Ask(link::Withdraw{kTribe, msgid});
        if (i % 20 == 0) {
          const link::File file{base::MD5String("content"), {}, 7};
          EXPECT_TRUE(device->Ask(link::Upload{folder_ / "up", file, {}}).result.ok());
        }
      }
    });
  }
  std::atomic<bool> stop{false};
  threads.emplace_back([&] {
    for (bool member = false; !stop; member = !member) {
      SetMember(L"lighthouse", member);
      const auto device = Connect(L"lighthouse");
      device->Ask(link::GetHistory{.cid = kTribe, .count = 10});
      device->AskOnly(link::GetRoaming{}, [](const auto&, const auto&) {});
      device->Disconnect();
    }
  });
  for (int sender = 0; sender < kSenders; ++sender) {
    threads[static_cast<std::size_t>(sender)].join();
  }
  stop = true;
  threads.back().join();
  stays->Settle();
  std::map<std::int64_t, int> got;
  for (const std::int64_t msgid : stays->Msgids()) ++got[msgid];
  EXPECT_EQ(got.size(), std::size_t{kSenders * kEach});
  for (const auto& [msgid, times] : got) EXPECT_EQ(times, 1) << msgid;
}

TEST_F(ServerThreads, StoppingAnswersOrForgetsWhatIsOpenAndIsPrompt) {
  CreateAccounts({L"harbor", L"mariner"});
  std::ofstream(folder_ / "up") << std::string(20'000'000, 'x');
  const auto harbor = Connect(L"harbor");
  const link::File file{base::MD5String(std::string(20'000'000, 'x')), {}, 20'000'000};
  std::atomic<int> answers{0};
  const auto count = [&](const auto&, const auto&) { ++answers; };
  for (int i = 0; i < 20; ++i) {
    harbor->AskOnly(link::Upload{folder_ / "up", file, {}}, count);
    harbor->AskOnly(link::GetHistory{.cid = With(L"mariner")}, count);
    link_->Login({Person(L"harbor"), link::Password{L"pass"}}, count);
  }
  const auto begun = std::chrono::steady_clock::now();
  server_.reset();
  EXPECT_LT(std::chrono::steady_clock::now() - begun, std::chrono::seconds(5));
  const int at_the_end = answers;
  EXPECT_EQ(at_the_end, 60) << "what reached the server was answered";
  harbor->AskOnly(link::GetRoaming{}, count);
  link_->Login({Person(L"harbor"), link::Password{L"pass"}}, count);
  EXPECT_EQ(answers, at_the_end) << "nobody is there";
}

}  // namespace
}  // namespace imsdk::test
