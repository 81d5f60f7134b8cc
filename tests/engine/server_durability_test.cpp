// The server's process dies at any moment; what it answered for is there, once.
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <map>

#include "server_fixture.h"
#include "sqlite/database.h"

namespace imsdk::test {
namespace {

class ServerDurability : public ServerTest {
 protected:
  // Sends without end, half of it to a tribe, and reports what the server has.
  [[noreturn]] void SendUntilKilled(std::int64_t msgid, int report) {
    Start();
    const auto harbor = Connect(L"harbor");
    for (;; ++msgid) {
      const auto cid = msgid % 2 == 0 ? kTribe : With(L"mariner");
      link::Deliver deliver;
      deliver.message.cid = cid;
      deliver.message.msgid = msgid;
      harbor->AskOnly(deliver,
                      [=](const biz::ResultCode& result, const link::Delivered& delivered) {
                        if (!result.ok()) _exit(3);
                        const std::int64_t told[2] = {msgid, std::stoll(delivered.place)};
                        if (write(report, told, sizeof told) != sizeof told) _exit(4);
                      });
      if (msgid % 20 == 0) usleep(1000);
    }
  }

  // Runs such a process until it has reported `count` messages more, then kills it.
  void RunAndKill(std::size_t count, std::map<std::int64_t, std::int64_t>* reported) {
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
      close(ends[0]);
      SendUntilKilled(static_cast<std::int64_t>(reported->size()) * 100'000 + 1, ends[1]);
    }
    close(ends[1]);
    std::int64_t told[2];
    for (std::size_t got = 0; read(ends[0], told, sizeof told) == sizeof told;) {
      EXPECT_TRUE(reported->emplace(told[0], told[1]).second);
      if (++got == count) kill(child, SIGKILL);
    }
    close(ends[0]);
    int status = 0;
    waitpid(child, &status, 0);
    EXPECT_TRUE(WIFSIGNALED(status)) << "the child gave up with " << WEXITSTATUS(status);
  }
};

TEST_F(ServerDurability, WhatWasAnsweredForSurvivesAKill) {
  CreateAccounts({L"harbor", L"mariner"});
  Tribe({L"harbor", L"mariner"});
  server_.reset();
  std::map<std::int64_t, std::int64_t> reported;
  for (const std::size_t count : {1, 150, 400}) {
    RunAndKill(count, &reported);
    if (HasFatalFailure()) return;
  }
  Start();
  const auto mariner = Connect(L"mariner");
  mariner->Settle();
  std::map<std::int64_t, std::int64_t> got;
  std::int64_t last = 0;
  for (const auto& message : mariner->All<link::Message>()) {
    const std::int64_t place = std::stoll(message.place);
    EXPECT_TRUE(got.emplace(message.msgid, place).second) << "twice";
    EXPECT_GT(place, last);
    last = place;
  }
  for (const auto& [msgid, place] : reported) EXPECT_EQ(got[msgid], place);
  EXPECT_GE(reported.size(), 551U);
}

TEST_F(ServerDurability, AStoreThatIsInUseOrOfAnotherVersionIsRefused) {
  std::string error;
  EXPECT_FALSE(StartEmbeddedServer(options_, &error)) << "two would count the same positions";
  EXPECT_FALSE(error.empty());
  server_.reset();
  EXPECT_TRUE(StartEmbeddedServer(options_, &error));
  sqlite::Database(folder_ / "server" / "server.db").Execute("PRAGMA user_version=7");
  EXPECT_FALSE(StartEmbeddedServer(options_, &error));
  EXPECT_NE(error.find("version 7"), std::string::npos) << error;
}

}  // namespace
}  // namespace imsdk::test
