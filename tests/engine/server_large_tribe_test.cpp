// What does not grow with the number of members.
#include <sqlite3.h>

#include <chrono>

#include "embedded/desks.h"
#include "server_fixture.h"
#include "sqlite/database.h"

namespace imsdk::test {
namespace {

using embedded::Caller;

class ServerLargeTribe : public ServerTest {
 protected:
  ServerLargeTribe() { server_.reset(); }

  template <class Work>
  auto Counted(Work work) {
    steps_ = 0;
    const auto begun = std::chrono::steady_clock::now();
    sqlite3_progress_handler(
        store_.database().handle(), 1, [](void* steps) { return ++*static_cast<int*>(steps), 0; },
        &steps_);
    sqlite::Transaction transaction(store_.database());
    auto outcome = work();
    sqlite3_progress_handler(store_.database().handle(), 0, nullptr, nullptr);
    transaction.Commit();
    EXPECT_TRUE(outcome.result.ok());
    took_ = std::chrono::duration_cast<std::chrono::microseconds>(std::chrono::steady_clock::now() -
                                                                  begun)
                .count();
    return outcome;
  }
  Caller CallerOf(const std::wstring& nick) {
    return {Person(nick), store_.accounts().Find(Person(nick))->id, 0};
  }

  embedded::ServerStore store_{folder_ / "large.db"};
  embedded::Presence presence_{store_};
  embedded::Desks desks_{store_, presence_, std::chrono::milliseconds(0), {}};
  int steps_ = 0;          // of SQLite's machine
  std::int64_t took_ = 0;  // microseconds
};

TEST_F(ServerLargeTribe, OneJoinCostsTheSame) {
  constexpr int kMany = 100'000;
  NewTribe tribe{{1}, L"t", Person(L"harbor"), {}};
  {
    sqlite::Transaction transaction(store_.database());
    for (const auto* nick : {L"harbor", L"joins0", L"joins1", L"joins2"}) {
      store_.accounts().Add(Person(nick), {});
    }
    for (int i = 0; i < kMany; ++i) {
      tribe.members.push_back(Person(L"m" + std::to_wstring(i)));
      store_.accounts().Add(tribe.members.back(), {});
    }
    transaction.Commit();
  }
  const auto all = tribe.members;
  tribe.members.resize(99);
  Counted([&] { return desks_.Answer({}, tribe); });
  tribe = {{2}, L"t", Person(L"harbor"), all};
  Counted([&] { return desks_.Answer({}, tribe); });
  RecordProperty("making_us", std::to_string(took_));

  const auto owner = CallerOf(L"harbor");
  int steps[2] = {};
  for (const int i : {0, 1}) {
    const biz::IMTribeID id{i + 1};
    const auto open = link::ChangeTribe{id, biz::kTribeKeyAuthType, L"0"};
    Counted([&] { return desks_.Answer(owner, open); });
    for (const auto* nick : {L"joins0", L"joins1", L"joins2"}) {
      Counted([&] { return desks_.Answer(CallerOf(nick), link::JoinTribe{{id, {}, {}}}); });
    }
    steps[i] = steps_;
    RecordProperty("join_us_" + std::to_string(i), std::to_string(took_));
    Counted([&] { return desks_.Answer(owner, link::RemoveMember{id, Person(L"joins2")}); });
  }
  EXPECT_LT(steps[0], 2000);
  EXPECT_LE(steps[1], steps[0] + steps[0] / 10);

  std::size_t members = 0;
  std::int64_t listing = 0;
  link::GetTribeMembers ask{{2}};
  for (;;) {
    const auto part = Counted([&] { return desks_.Answer(owner, ask); }).reply;
    listing += took_;
    members += part.members.size();
    EXPECT_LE(part.members.size(), 1000U);
    EXPECT_EQ(part.total, kMany + 3);
    EXPECT_LT(steps_, 60'000) << "a part is read, not the tribe";
    if (part.next.empty()) break;
    ask.place = part.next;
  }
  EXPECT_EQ(members, static_cast<std::size_t>(kMany + 3));
  RecordProperty("listing_us", std::to_string(listing));
  EXPECT_EQ(store_.tribes().Find({2})->level, 5);
}

}  // namespace
}  // namespace imsdk::test
