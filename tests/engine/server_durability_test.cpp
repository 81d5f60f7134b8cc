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

// Every operation that changes a tribe, over and over; reports each round.
[[noreturn]] void ChangeUntilKilled(Device& harbor, Device& mariner, int report) {
  const biz::IMTribeID id = kTribe.tribe;
  const auto who = Person(L"mariner");
  const auto good = [](const auto& answered) {
    if (!answered.result.ok()) _exit(3);
  };
  link::CreateTribe fresh;
  fresh.tribe.name = L"new";
  fresh.tribe.members = {Person(L"harbor")};
  for (std::int64_t round = 1;; ++round) {
    good(harbor.Ask(link::ChangeTribe{id, biz::kTribeKeyAuthType, L"2"}));
    good(mariner.Ask(link::JoinTribe{{id, {}, L"please"}}));
    const auto asked = harbor.Ask(link::GetVerifyMsgs{}).reply.msgs.back();
    good(harbor.Ask(link::DecideVerify{{asked.fromid, id, {}, asked.msgid}}));
    good(mariner.Ask(link::SetTribeNickname{id, who, std::to_wstring(round)}));
    good(harbor.Ask(link::SetTribeLevel{id, who, biz::kTribeOwner}));
    good(mariner.Ask(link::EnableTribe{id, false}));
    good(mariner.Ask(link::EnableTribe{id, true}));
    good(mariner.Ask(link::SetTribeLevel{id, Person(L"harbor"), biz::kTribeOwner}));
    good(harbor.Ask(link::SetTribeLevel{id, who, biz::kTribeMember}));
    good(harbor.Ask(link::RemoveMember{id, who}));
    good(harbor.Ask(link::InviteToTribe{{id, {who}, {}}}));
    const auto invited = mariner.Ask(link::GetVerifyMsgs{}).reply.msgs.back();
    good(mariner.Ask(link::DecideVerify{{invited.fromid, id, {}, invited.msgid}, true}));
    good(mariner.Ask(link::RemoveMember{id, who}));
    good(harbor.Ask(link::SetTribeBlack{id, who, true}));
    good(harbor.Ask(link::SetTribeBlack{id, who, false}));
    good(harbor.Ask(link::ChangeTribe{id, biz::kTribeKeyVisitors, L"1"}));
    good(mariner.Ask(link::GetTribe{id}));
    good(harbor.Ask(link::CountVisitors{id, true}));
    good(mariner.Ask(fresh));
    if (write(report, &round, sizeof round) != sizeof round) _exit(4);
  }
}

TEST_F(ServerDurability, ATribeIsWholeAfterAKillInTheMiddleOfAChange) {
  CreateAccounts({L"harbor", L"mariner"});
  for (int run = 0; run < 8; ++run) {
    server_.reset();
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
      close(ends[0]);
      Start();
      NewTribe tribe{kTribe.tribe, L"t", Person(L"harbor"), {}};
      server_->CreateTribe(tribe);  // refused when it is there
      const auto harbor = Connect(L"harbor");
      const auto mariner = Connect(L"mariner");
      for (const auto* nick : {L"mariner", L"harbor"}) {
        auto& other = *nick == L'm' ? *mariner : *harbor;
        other.Ask(link::EnableTribe{kTribe.tribe, true});
        other.Ask(link::SetTribeLevel{kTribe.tribe, Person(L"harbor"), biz::kTribeOwner});
      }
      mariner->Ask(link::RemoveMember{kTribe.tribe, Person(L"mariner")});
      harbor->Ask(link::SetTribeBlack{kTribe.tribe, Person(L"mariner"), false});
      ChangeUntilKilled(*harbor, *mariner, ends[1]);
    }
    close(ends[1]);
    std::int64_t round = 0;
    EXPECT_EQ(read(ends[0], &round, sizeof round), static_cast<ssize_t>(sizeof round));
    usleep(static_cast<useconds_t>(run) * 3571);
    kill(child, SIGKILL);
    close(ends[0]);
    int status = 0;
    waitpid(child, &status, 0);
    ASSERT_TRUE(WIFSIGNALED(status)) << "the child gave up with " << WEXITSTATUS(status);
    Start();
    const std::pair<const char*, const char*> whole[] = {
        {"SELECT sum(members) FROM tribes", "SELECT count(*) FROM members"},
        {"SELECT count(*) FROM members",
         "SELECT count(*) FROM stays WHERE until="
         "9223372036854775807"},
        {"SELECT count(*) FROM tribes",
         "SELECT count(*) FROM tribes t JOIN members m ON m.conversation=t.conversation AND "
         "m.level=3 AND m.account=t.owner"},
        {"SELECT count(*) FROM tribes", "SELECT count(*) FROM members WHERE level=3"},
        // The owner came with the first tribe; all other coming and going was told.
        {"SELECT sum(members)-1 FROM tribes",
         "SELECT sum(CASE kind WHEN 5 THEN 1 WHEN 6 THEN -1 ELSE 0 END) FROM entries"},
        {"SELECT enabled FROM tribes WHERE id=77",
         "SELECT coalesce((SELECT CAST(numbers AS INTEGER) FROM entries WHERE kind=11 ORDER BY "
         "position DESC LIMIT 1), 1)"},
        // A decision and what the one who waits for it is told.
        {"SELECT count(*) FROM verify WHERE type IN (3,5) AND audience<>sender AND "
         "(type=3 OR manager=subject)",
         "SELECT count(*) FROM verify WHERE type IN (3,5) AND audience=sender"},
    };
    for (const auto& [one, other] : whole) EXPECT_EQ(Count(one), Count(other)) << one;
  }
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
