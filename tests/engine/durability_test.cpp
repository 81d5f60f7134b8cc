// The process dies at any moment; what was reported is there.
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <map>
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

// Sends without end and reports each identifier whose status was sent.
[[noreturn]] void SendUntilKilled(const std::filesystem::path& data, int report) {
  std::string error;
  const auto server = StartServer(data);
  if (!server) _exit(4);
  const auto engine = StartEngine(SetupOn(data, *server), &error);
  if (!engine) _exit(1);
  if (!Login(kHarbor).result.ok()) _exit(2);
  Accounts()->GetAccount(kHarbor)->GetIMSingleChatMgr()->Events().on_send_msg_status.connect(
      [report](const auto&, auto, std::int64_t msgid, auto, const biz::ResultCode& result) {
        if (!result.ok() || write(report, &msgid, sizeof msgid) != sizeof msgid) _exit(3);
      });
  const auto chat = Chat(kHarbor, kMariner);
  for (int i = 0;; ++i) {
    while (SendItems(chat, {Text(L"text " + std::to_wstring(i))}, {}) != 0) usleep(1000);
    if (i % 20 == 0) usleep(1000);
  }
}

// Runs such a process until it has reported `count` more messages, then kills it.
void RunAndKill(const std::filesystem::path& data, std::size_t count,
                std::set<std::int64_t>* reported) {
  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  const pid_t child = fork();
  ASSERT_GE(child, 0);
  if (child == 0) {
    close(ends[0]);
    SendUntilKilled(data, ends[1]);
  }
  close(ends[1]);
  std::int64_t msgid = 0;
  for (std::size_t got = 0; read(ends[0], &msgid, sizeof msgid) == sizeof msgid;) {
    EXPECT_TRUE(reported->insert(msgid).second) << "an identifier was given twice";
    if (++got == count) kill(child, SIGKILL);
  }
  close(ends[0]);
  int status = 0;
  waitpid(child, &status, 0);
  EXPECT_TRUE(WIFSIGNALED(status)) << "the child gave up with " << WEXITSTATUS(status);
}

TEST(DurabilityEmbedded, AReportedMessageSurvivesAKill) {
  TempFolder folder;
  {
    const auto server = StartServer(folder.path());
    ASSERT_TRUE(server);
    server->CreateAccount(kHarbor, L"pass");
    server->CreateAccount(kMariner, L"pass");
  }
  std::set<std::int64_t> reported;
  for (const std::size_t count : {1, 150, 400}) {
    RunAndKill(folder.path(), count, &reported);
    if (HasFatalFailure()) return;
  }
  const auto server = StartServer(folder.path());
  ASSERT_TRUE(server);
  const auto engine = Start(SetupOn(folder.path(), *server));
  Witness mariner(kMariner);
  Login(kMariner);
  mariner.Await(
      [](const Witness& witness) { return !witness.more.empty() && !witness.more.back(); });
  std::map<std::int64_t, int> received;
  for (const auto& message : mariner.received) ++received[message.msgid];
  for (const std::int64_t msgid : reported) EXPECT_EQ(received[msgid], 1);

  // The sender's own store says so too, before it has a chance to ask the server again.
  std::map<std::int64_t, std::int32_t> stored;
  Witness harbor(kHarbor);
  Login(kHarbor);
  biz::IMPageRequest request{.count = 500, .gohistory = true};
  for (;;) {
    const auto page = History(kHarbor, kMariner, request);
    for (const auto& message : page.msgs) stored[message.msgid] = message.msgstatus;
    if (page.outofcache) break;
    request.msgtime = page.msgs.front().msgtime;
    request.msgid = page.msgs.front().msgid;
  }
  for (const std::int64_t msgid : reported) EXPECT_EQ(stored[msgid], biz::kMsgSent);
  RecordProperty("reported", std::to_string(reported.size()));
  RecordProperty("stored", std::to_string(stored.size()));

  // And what was still being sent when the process died is sent now, once.
  mariner.AwaitReceived(stored.size());
  received.clear();
  for (const auto& message : mariner.received) ++received[message.msgid];
  for (const auto& [msgid, status] : stored) EXPECT_EQ(received[msgid], 1);
}

}  // namespace
}  // namespace imsdk::test
