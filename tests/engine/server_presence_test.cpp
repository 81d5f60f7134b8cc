// Who is online in a tribe, for those who watch.
#include <thread>

#include "server_fixture.h"

namespace imsdk::test {
namespace {

constexpr biz::IMTribeID kId{77};

class ServerPresence : public ServerTest {};

TEST_F(ServerPresence, IsGatheredAndToldToWatchersAlone) {
  std::vector<std::wstring> nicks{L"harbor", L"mariner"};
  for (int i = 0; i < 250; ++i) nicks.push_back(L"m" + std::to_wstring(i));
  embedded::Seeding accounts;
  for (const auto& nick : nicks) accounts.users.push_back(Person(nick));
  ASSERT_TRUE(server_->Seed(accounts, [](const auto&) {}));
  Tribe(nicks);
  const auto harbor = Connect(L"harbor");
  const auto mariner = Connect(L"mariner");
  const auto list = harbor->Ask(link::GetTribeMembers{kId}).reply;
  EXPECT_EQ(list.online, 2);
  EXPECT_EQ(list.members.at(1).status, biz::kMemberOnline);
  EXPECT_EQ(list.members.at(2).status, biz::kMemberOffline);
  std::vector<std::shared_ptr<Device>> crowd;
  for (std::size_t i = 2; i < nicks.size(); ++i) crowd.push_back(Connect(nicks[i]));
  const auto heard = [](const Device& device) {
    std::size_t changed = 0;
    for (const auto& presence : device.presences) changed += presence.changed.size();
    return changed;
  };
  harbor->Until([&](const Device& device) { return heard(device) >= 250; });
  EXPECT_EQ(harbor->presences.back().online, 252);
  for (const auto& presence : harbor->presences) EXPECT_LE(presence.changed.size(), 200U);
  EXPECT_LT(harbor->presences.size(), 30U) << "gathered";
  EXPECT_TRUE(mariner->presences.empty()) << "does not watch";
  crowd.erase(crowd.begin());
  harbor->Until([](const Device& device) { return device.presences.back().online == 251; });
  ASSERT_EQ(harbor->presences.back().changed.size(), 1U);
  EXPECT_EQ(harbor->presences.back().changed[0],
            std::make_pair(Person(L"m0"), biz::kMemberOffline));

  // A member who was removed watches no more.
  const auto watcher = Connect(L"m0");
  EXPECT_EQ(watcher->Ask(link::GetTribeMembers{kId}).reply.online, 252);
  EXPECT_TRUE(SetMember(L"m0", false));
  crowd.erase(crowd.begin());
  harbor->Until([](const Device& device) { return device.presences.back().online == 250; });
  watcher->Settle();
  EXPECT_TRUE(watcher->presences.empty());
  const auto told = harbor->presences.size();
  EXPECT_TRUE(harbor->Ask(link::GetTribeMembers{kId, {}, false}).result.ok());
  crowd.clear();
  std::this_thread::sleep_for(std::chrono::milliseconds(1500));
  EXPECT_EQ(harbor->presences.size(), told);
}

}  // namespace
}  // namespace imsdk::test
