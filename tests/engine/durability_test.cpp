// The process dies at any moment; what was promised is there.
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <map>
#include <random>
#include <set>

#include "engine_fixture.h"

namespace imsdk::test {
namespace {

const biz::IMUserID kHarbor = User(L"harbor");
const biz::IMUserID kMariner = User(L"mariner");

// The server dies with the client, so it is the one that keeps what it has on its disk.
std::unique_ptr<EmbeddedServer> StartServer(const std::filesystem::path& data) {
  return ServerKinds().front().start(data);
}

EngineSetup SetupOn(const std::filesystem::path& data, EmbeddedServer& server) {
  EngineSetup setup = QuickSetup(data);
  setup.options.link = [&server] { return server.Link(); };
  return setup;
}

// The words that the contract of a send makes promises with.
enum class Word : std::int64_t { kAnswer, kAnnounced, kStatus };

struct Told {
  Word word = Word::kAnswer;
  std::int64_t number = 0;  // of the text for an answer, else the msgid
};

struct Promises {
  std::set<std::int64_t> answered;
  std::set<std::int64_t> announced;
  std::set<std::int64_t> sent;
};

void Report(int pipe, Word word, std::int64_t number) {
  const Told told{word, number};
  if (write(pipe, &told, sizeof told) != sizeof told) _exit(3);
}

// Sends to a user or a tribe without end, and passes on each word that it gets.
[[noreturn]] void SendUntilKilled(const std::filesystem::path& data,
                                  const biz::IMConversationID& to, std::int64_t text, int pipe) {
  std::string error;
  const auto server = StartServer(data);
  if (!server) _exit(4);
  const auto engine = StartEngine(SetupOn(data, *server), &error);
  if (!engine) _exit(1);
  if (!Login(kHarbor).result.ok()) _exit(2);
  const auto listen = [pipe](auto& events) {
    events.on_send_new_msg.connect([pipe](const auto&, const auto& messages) {
      for (const auto& message : messages) Report(pipe, Word::kAnnounced, message.msgid);
    });
    events.on_send_msg_status.connect(
        [pipe](const auto&, auto, std::int64_t msgid, auto, const biz::ResultCode& result) {
          if (!result.ok()) _exit(5);
          Report(pipe, Word::kStatus, msgid);
        });
  };
  listen(Accounts()->GetAccount(kHarbor)->GetIMSingleChatMgr()->Events());
  listen(Accounts()->GetAccount(kHarbor)->GetIMTribeChatMgr()->Events());
  while (!Chat(kHarbor, to)) usleep(1000);
  const auto chat = Chat(kHarbor, to);
  std::atomic<int> open{0};
  for (;; ++text) {
    while (open > 200) usleep(500);
    ++open;
    biz::IMSendRequest request;
    request.body =
        std::make_shared<const std::vector<biz::IMBodyItem>>(1, Text(std::to_wstring(text)));
    chat->SendMsg(request, [pipe, text, &open](const biz::ResultCode& result) {
      --open;
      if (!result.ok()) _exit(6);
      Report(pipe, Word::kAnswer, text);
    });
    if (text % 20 == 0) usleep(1000);
  }
}

// Runs such a process until it has told `count` words of one kind, then kills it.
void RunAndKill(const std::filesystem::path& data, const biz::IMConversationID& to,
                std::int64_t text, Word until, std::size_t count, Promises* promises) {
  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  const pid_t child = fork();
  ASSERT_GE(child, 0);
  if (child == 0) {
    close(ends[0]);
    SendUntilKilled(data, to, text, ends[1]);
  }
  close(ends[1]);
  Told told;
  for (std::size_t got = 0; read(ends[0], &told, sizeof told) == sizeof told;) {
    auto& known = told.word == Word::kAnswer      ? promises->answered
                  : told.word == Word::kAnnounced ? promises->announced
                                                  : promises->sent;
    // Only what was still being sent when the process died has a status of a later life.
    EXPECT_TRUE(known.insert(told.number).second) << "told twice";
    got += told.word == until ? 1 : 0;
    if (got == count) kill(child, SIGKILL);
  }
  close(ends[0]);
  int status = 0;
  waitpid(child, &status, 0);
  EXPECT_TRUE(WIFSIGNALED(status)) << "the child gave up with " << WEXITSTATUS(status);
}

// More on request: IMSDK_KILLS=1000.
int Kills() {
  const char* wanted = std::getenv("IMSDK_KILLS");
  return wanted ? std::atoi(wanted) : 24;
}

class DurabilityEmbedded : public testing::TestWithParam<biz::IMConversationID> {};

TEST_P(DurabilityEmbedded, WhatWasPromisedSurvivesAKill) {
  TempFolder folder;
  const biz::IMConversationID to = GetParam();
  {
    const auto server = StartServer(folder.path());
    ASSERT_TRUE(server);
    server->CreateAccount(kHarbor, L"pass");
    server->CreateAccount(kMariner, L"pass");
    server->CreateTribe({{10001}, L"Harbour", kHarbor, {kMariner}});
  }
  Promises promises;
  std::mt19937 random(7);
  for (int i = 0; i < Kills(); ++i) {
    const auto until = static_cast<Word>(i % 3);
    RunAndKill(folder.path(), to, std::int64_t{i} * 1'000'000, until, random() % 60 + 1, &promises);
    if (HasFatalFailure()) return;
  }
  RecordProperty("answered", std::to_string(promises.answered.size()));
  RecordProperty("sent", std::to_string(promises.sent.size()));
  const auto server = StartServer(folder.path());
  ASSERT_TRUE(server);
  const auto engine = Start(SetupOn(folder.path(), *server));
  Witness mariner(kMariner);
  Login(kMariner);
  std::map<std::int64_t, int> received;
  const auto& came = to.is_tribe() ? mariner.tribe_received : mariner.received;
  mariner.Await([&](const Witness&) {
    std::set<std::int64_t> here;
    for (const auto& message : came) here.insert(message.msgid);
    return std::ranges::includes(here, promises.sent);
  });
  for (const auto& message : came) ++received[message.msgid];
  for (const std::int64_t msgid : promises.sent) EXPECT_EQ(received[msgid], 1);

  // The sender's own store has them too, before it has a chance to ask the server again.
  std::map<std::int64_t, std::int32_t> stored;
  std::set<std::int64_t> texts;
  Witness harbor(kHarbor);
  Login(kHarbor);
  biz::IMPageRequest request{.count = 500, .gohistory = true};
  for (;;) {
    const auto page = LocalPage(Chat(kHarbor, to), request);
    for (const auto& message : page.msgs) {
      stored[message.msgid] = message.msgstatus;
      EXPECT_TRUE(texts.insert(std::stoll(message.msgbody)).second) << "stored twice";
    }
    if (page.outofcache) break;
    request.msgtime = page.msgs.front().msgtime;
    request.msgid = page.msgs.front().msgid;
  }
  for (const std::int64_t text : promises.answered) EXPECT_TRUE(texts.contains(text)) << text;
  for (const std::int64_t msgid : promises.announced) EXPECT_TRUE(stored.contains(msgid)) << msgid;
  for (const std::int64_t msgid : promises.sent) EXPECT_EQ(stored[msgid], biz::kMsgSent);

  // And what was still being sent when the process died is sent now, once.
  mariner.Await([&](const Witness&) { return came.size() >= stored.size(); });
  received.clear();
  for (const auto& message : came) ++received[message.msgid];
  for (const auto& [msgid, status] : stored) EXPECT_EQ(received[msgid], 1);
}

INSTANTIATE_TEST_SUITE_P(To, DurabilityEmbedded,
                         testing::Values(biz::IMConversationID(kMariner),
                                         biz::IMConversationID(biz::IMTribeID{10001})),
                         [](const auto& of) { return of.param.is_tribe() ? "ATribe" : "AUser"; });

}  // namespace
}  // namespace imsdk::test
