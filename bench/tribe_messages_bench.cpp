// What messages to tribes cost: their sender, their members, and an account that was away.
#include <benchmark/benchmark.h>

#include <atomic>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "account/session/account_mgr.h"
#include "account/session/device_name.h"
#include "embedded/embedded_server.h"
#include "kexbase/guid.h"
#include "kexbase/time.h"

namespace imsdk::bench {
namespace {

using Clock = std::chrono::steady_clock;

double Seconds(Clock::duration time) { return std::chrono::duration<double>(time).count(); }

biz::IMUserID User(std::int64_t number) { return {L"cnbazaro", L"m" + std::to_wstring(number)}; }

template <class Holds>
bool WaitFor(Holds holds, std::chrono::seconds most = std::chrono::seconds(120)) {
  const auto end = Clock::now() + most;
  while (!holds()) {
    if (Clock::now() > end) return false;
    std::this_thread::sleep_for(std::chrono::microseconds(200));
  }
  return true;
}

// A server of accounts that log in by tokens, in a folder of its own.
struct Town {
  explicit Town(std::int64_t users, const std::vector<NewTribe>& tribes)
      : folder(std::filesystem::temp_directory_path() / ("imsdk-" + base::GenerateGUID())) {
    std::filesystem::create_directories(folder);
    EmbeddedServerOptions options;
    options.data = base::FilePath::FromUTF8(folder.string());
    server = std::make_unique<embedded::Server>(options);
    embedded::Seeding seeding;
    for (std::int64_t i = 0; i < users; ++i) seeding.users.push_back(User(i));
    seeding.tribes = tribes;
    good = server->Seed(seeding, [](const auto&) {});
  }
  ~Town() {
    server.reset();
    std::error_code ignored;
    std::filesystem::remove_all(folder, ignored);
  }
  std::wstring Token(std::int64_t user) {
    std::wstring token;
    server->IssueToken(User(user), &token);
    return token;
  }

  const std::filesystem::path folder;
  std::unique_ptr<embedded::Server> server;
  bool good = false;
};

// A session that counts what it hears.
class Ear : public link::SessionListener {
 public:
  explicit Ear(std::atomic<std::int64_t>& heard) : heard_(heard) {}

  void OnBatch(link::Batch batch) override {
    for (const auto& entry : batch.entries) {
      if (std::holds_alternative<link::Message>(entry)) ++heard_;
    }
    if (session) session->Acknowledge(batch.position);
  }
  void OnTyping(const biz::IMConversationID&, std::int32_t) override {}
  void OnTribePresence(const link::TribePresence&) override {}
  void OnContactPresence(const link::ContactPresence&) override {}
  void OnEnded(const biz::ResultCode&) override {}

  std::shared_ptr<link::Session> session;

 private:
  std::atomic<std::int64_t>& heard_;
};

std::shared_ptr<Ear> Listen(Town& town, std::int64_t user, std::atomic<std::int64_t>& heard) {
  auto ear = std::make_shared<Ear>(heard);
  std::atomic<bool> done{false};
  town.server->Link()->Connect({User(user), town.Token(user), "desk", {}, ear},
                               [&](const biz::ResultCode&, const link::Connected& connected) {
                                 ear->session = connected.session;
                                 done = true;
                               });
  WaitFor([&] { return done.load(); });
  return ear;
}

link::Deliver Message(biz::IMTribeID tribe, std::int64_t msgid) {
  link::Message message;
  message.cid = biz::IMConversationID(tribe);
  message.msgid = message.msgtime = msgid;
  message.body = L"The light is on, the pier is free: come in. 灯亮了";
  return {std::move(message)};
}

// The time is that until the sender is answered; "all" is that until every session has it.
void BM_Deliver(benchmark::State& state) {
  const std::int64_t members = state.range(0);
  NewTribe tribe{{1}, L"t", User(0), {}};
  for (std::int64_t i = 1; i < members; ++i) tribe.members.push_back(User(i));
  Town town(members, {tribe});
  if (!town.good) return state.SkipWithError("no town");
  std::atomic<std::int64_t> heard{0};
  std::vector<std::shared_ptr<Ear>> ears;
  for (std::int64_t i = 0; i < std::min<std::int64_t>(members, 1000); ++i) {
    ears.push_back(Listen(town, i, heard));
  }
  std::int64_t msgid = 0;
  double all = 0;
  for (auto step : state) {
    heard = 0;
    std::atomic<bool> answered{false};
    const auto begun = Clock::now();
    std::atomic<Clock::duration::rep> took{0};
    ears[0]->session->Ask(link::Asked<link::Deliver>{
        Message({1}, ++msgid), [&](const biz::ResultCode& result, const auto&) {
          if (!result.ok()) state.SkipWithError("refused");
          took = (Clock::now() - begun).count();
          answered = true;
        }});
    if (!WaitFor([&] { return answered && heard == std::ssize(ears) - 1; })) {
      state.SkipWithError("not all have it");
    }
    all += Seconds(Clock::now() - begun);
    state.SetIterationTime(Seconds(Clock::duration(took.load())));
  }
  state.counters["all_ms"] = 1000 * all / static_cast<double>(state.iterations());
  for (const auto& ear : ears) ear->session.reset();
}
BENCHMARK(BM_Deliver)
    ->Name("BM_Tribe/deliver")
    ->Arg(10)
    ->Arg(100'000)
    ->UseManualTime()
    ->Iterations(50)
    ->Unit(benchmark::kMillisecond);

// An installation of one account.
struct Home {
  explicit Home(Town& town)
      : data(town.folder / "home"), pool(std::make_shared<account::WorkerPool>(2)) {
    std::filesystem::create_directories(data.MessageIds().parent_path());
    ids = std::make_shared<account::MessageIds>(
        data.MessageIds(), [] { return base::Time::Now().ToMilliseconds(); }, pool->First().runner);
    accounts = RefPtr(new account::AccountMgr(
        std::make_shared<const account::Environment>(account::Environment{
            town.server->Link(), ids, data, {}, account::DeviceName(data.DeviceName()), {}}),
        pool));
  }
  ~Home() {
    accounts->Stop();
    pool->Stop();
    ids->Close();
  }
  bool Login(Town& town, std::int64_t user) {
    std::atomic<int> outcome{1};
    accounts->LoginByToken(
        {User(user), town.Token(user)},
        [&](const biz::ResultCode& result, const auto&) { outcome = result.code; });
    WaitFor([&] { return outcome != 1; });
    return outcome == 0;
  }
  void Logout(std::int64_t user) {
    std::atomic<bool> done{false};
    accounts->Logout({User(user)}, [&](const biz::ResultCode&) { done = true; });
    WaitFor([&] { return done.load(); });
  }
  // The list's length, and its counts together.
  std::pair<std::int64_t, std::int64_t> List(std::int64_t user) {
    std::pair<std::int64_t, std::int64_t> found;
    accounts->GetAccount(User(user))
        ->GetIMTribeChatMgr()
        ->GetUnreadCounts({}, [&](const biz::ResultCode&, const biz::IMUnreads& all) {
          for (const auto& one : all.unreads) ++found.first, found.second += one.count;
        });
    return found;
  }

  const account::DataFolder data;
  const std::shared_ptr<account::WorkerPool> pool;
  std::shared_ptr<account::MessageIds> ids;
  RefPtr<account::AccountMgr> accounts;
};

std::vector<NewTribe> Tribes(std::int64_t count) {
  std::vector<NewTribe> tribes;
  for (std::int64_t i = 1; i <= count; ++i) {
    tribes.push_back({{i}, L"Tribe No. " + std::to_wstring(i), User(0), {User(1)}});
  }
  return tribes;
}

// A login until the list of tribes has the counts of all that came meanwhile.
void BM_ComeBack(benchmark::State& state) {
  constexpr std::int64_t kTribes = 500;
  const std::int64_t messages = state.range(0);
  for (auto step : state) {
    Town town(2, Tribes(kTribes));
    Home home(town);
    if (!town.good || !home.Login(town, 1)) return state.SkipWithError("no login");
    home.Logout(1);
    std::atomic<std::int64_t> heard{0};
    std::atomic<std::int64_t> archived{0};
    const auto sender = Listen(town, 0, heard);
    for (std::int64_t i = 1; i <= messages; ++i) {
      sender->session->Ask(link::Asked<link::Deliver>{
          Message({i % kTribes + 1}, i), [&](const auto&, const auto&) { ++archived; }});
    }
    WaitFor([&] { return archived == messages; });
    const auto begun = Clock::now();
    if (!home.Login(town, 1)) return state.SkipWithError("no login");
    const std::pair<std::int64_t, std::int64_t> wanted{kTribes, messages};
    if (!WaitFor([&] { return home.List(1) == wanted; })) state.SkipWithError("no list");
    state.SetIterationTime(Seconds(Clock::now() - begun));
    sender->session.reset();
  }
}
BENCHMARK(BM_ComeBack)
    ->Name("BM_Tribe/away")
    ->Arg(100'000)
    ->UseManualTime()
    ->Iterations(1)
    ->Unit(benchmark::kMillisecond);

// What the process has in memory, in MiB.
double Resident() {
  std::ifstream statm("/proc/self/statm");
  double size = 0;
  double resident = 0;
  statm >> size >> resident;
  return resident * 4096 / (1 << 20);
}

void BM_Memory(benchmark::State& state) {
  for (auto step : state) {
    Town town(2, Tribes(state.range(0)));
    Home home(town);
    const double before = Resident();
    if (!town.good || !home.Login(town, 1)) return state.SkipWithError("no login");
    const auto tribes = home.accounts->GetAccount(User(1))->GetIMTribeMgr();
    std::atomic<bool> done{false};
    tribes->ShallowLogin({}, [&](const biz::ResultCode&) { done = true; });
    WaitFor([&] { return done.load(); });
    state.counters["MiB"] = Resident() - before;
  }
}
BENCHMARK(BM_Memory)->Name("BM_Tribe/login")->Arg(1'000)->Iterations(1);

}  // namespace
}  // namespace imsdk::bench
