// Data folders that cannot be used, and numbers that must never repeat.
#include <atomic>
#include <fstream>

#include "account/files/data_folder.h"
#include "account/sending/message_ids.h"
#include "engine_fixture.h"
#include "far_server.h"
#include "kexbase/thread.h"
#include "kexbase/time.h"
#include "sqlite/database.h"

namespace imsdk::test {
namespace {

void Write(const std::filesystem::path& file, const std::string& content) {
  std::filesystem::create_directories(file.parent_path());
  std::ofstream(file, std::ios::binary) << content;
}

FarServer& Server() {
  static FarServer server;
  return server;
}

EngineSetup FarSetup(const std::filesystem::path& data) {
  EngineSetup setup = QuickSetup(data);
  setup.options.link = [] { return Server().Link(); };
  return setup;
}

TEST(StartEngine, SaysWhyAFolderCannotBeUsed) {
  const struct {
    const char* what;
    std::function<void(const account::DataFolder&)> spoil;
  } cases[] = {
      {"the folder is a file", [](const auto& data) { Write(data.root(), "not a folder"); }},
      {"a later version made it",
       [](const auto& data) {
         std::filesystem::create_directories(data.MessageIds().parent_path());
         sqlite::Database(data.MessageIds()).Execute("PRAGMA user_version=1000");
       }},
  };
  for (const auto& one : cases) {
    SCOPED_TRACE(one.what);
    TempFolder folder;
    const auto root = folder.path() / "data";
    one.spoil(account::DataFolder(root));
    std::string error;
    EXPECT_FALSE(StartEngine(FarSetup(root), &error));
    EXPECT_FALSE(error.empty());
    EXPECT_FALSE(Accounts());
  }
}

TEST(StartEngine, SaysWhyThereIsNoLink) {
  const std::function<std::shared_ptr<link::ServerLink>()> links[] = {
      nullptr,
      [] { return nullptr; },
      []() -> std::shared_ptr<link::ServerLink> { throw std::runtime_error("unplugged"); },
  };
  for (const auto& link : links) {
    TempFolder folder;
    EngineSetup setup = QuickSetup(folder.path());
    setup.options.link = link;
    std::string error;
    EXPECT_FALSE(StartEngine(setup, &error));
    EXPECT_FALSE(error.empty());
    EXPECT_FALSE(Accounts());
  }
}

TEST(StartEngine, OneEngineAtATimeHasTheFolder) {
  TempFolder folder;
  const auto engine = Start(FarSetup(folder.path()));
  std::string error;
  EXPECT_FALSE(StartEngine(FarSetup(folder.path()), &error));
  EXPECT_TRUE(Accounts()) << "the first one goes on";
}

TEST(StartEngine, NumbersThatAreLostAreTold) {
  TempFolder folder;
  const account::DataFolder data(folder.path());
  std::vector<std::string> told;
  EngineSetup setup = FarSetup(folder.path());
  setup.options.report = [&told](const std::string& text) { told.push_back(text); };
  Start(setup).reset();
  EXPECT_TRUE(told.empty());
  Write(data.MessageIds(), std::string(8192, '#'));
  Start(setup).reset();
  ASSERT_EQ(told.size(), 1U);
  EXPECT_NE(told[0].find("ids.db.aside-"), std::string::npos) << told[0];
  std::filesystem::remove(data.MessageIds());
  Start(setup).reset();
  EXPECT_EQ(told.size(), 2U);
}

TEST(Clock, SetBackItHidesNothingFromLocalHistory) {
  TempFolder folder;
  std::atomic<std::int64_t> back{0};
  EngineSetup setup = FarSetup(folder.path());
  setup.clock = [&back] { return base::Time::Now().ToMilliseconds() - back; };
  const auto harbor = User(L"clock harbor");
  const auto mariner = User(L"clock mariner");
  for (const auto& user : {harbor, mariner}) Server().CreateAccount(user, L"pass");
  auto engine = Start(setup);
  Login(harbor);
  Login(mariner);
  for (int i = 0; i < 25; ++i)
    Send(i % 2 == 0 ? harbor : mariner, i % 2 == 0 ? mariner : harbor, L"x");
  Eventually([&] { return History(harbor, mariner, {.count = 100}).msgs.size() == 25; }, "all");
  for (const bool restarts : {false, true}) {
    back += 15 * 60'000;
    if (restarts) {
      engine.reset();
      engine = Start(setup);
      Login(harbor);
    }
    EXPECT_EQ(Send(harbor, mariner, L"late"), 0);
    const auto page = History(harbor, mariner, {.count = 20});
    EXPECT_EQ(page.msgs.back().msgbody, L"late") << "at the newest end";
  }
}

TEST(MessageIds, GrowOverRestartsAndClocksSetBack) {
  TempFolder folder;
  base::Thread thread("ids");
  thread.Start();
  std::int64_t now = 1'700'000'000'000;
  std::int64_t last = 0;
  for (const std::int64_t step : {0LL, 1LL, -3'600'000LL, 50'000LL, -86'400'000LL}) {
    now += step;
    const auto ids = std::make_shared<account::MessageIds>(
        folder.path() / "ids.db", [&now] { return now; }, thread.task_runner());
    // More than a millisecond has numbers for.
    for (int i = 0; i < 3000; ++i) {
      const std::int64_t id = ids->Next();
      ASSERT_GT(id, last);
      last = id;
    }
    now -= 10'000;
    ASSERT_GT(ids->Next(), last);
    last = ids->Next();
  }
  EXPECT_LT(last >> 20, now + 100'000'000) << "numbers stay near the clock";
  thread.Stop();
}

}  // namespace
}  // namespace imsdk::test
