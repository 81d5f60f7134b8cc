// Pages of the server's history, by place and by time, and the switch of roaming.
#include <algorithm>
#include <thread>

#include "server_fixture.h"

namespace imsdk::test {
namespace {

using Ids = std::vector<std::int64_t>;

class ServerHistory : public ServerTest {
 protected:
  void SetUp() override {
    CreateAccounts({L"harbor", L"mariner"});
    Tribe({L"harbor", L"mariner"});
  }

  // Walks the whole range in pages.
  Ids Walk(Device& device, link::GetHistory request) {
    Ids all;
    for (int pages = 0; pages < 100; ++pages) {
      const auto page = device.Ask(request);
      EXPECT_TRUE(page.result.ok());
      const Ids ids = MsgidsOf(page.reply.msgs);
      EXPECT_LE(ids.size(), static_cast<std::size_t>(request.count));
      // From the newest end there is but one direction.
      if (request.place.empty() && request.time == 0) request.older = true;
      all.insert(request.older ? all.begin() : all.end(), ids.begin(), ids.end());
      if (page.reply.next.empty()) return all;
      request.place = page.reply.next;
    }
    ADD_FAILURE() << "no end";
    return all;
  }
};

TEST_F(ServerHistory, PagesAreExactInBothDirectionsWhateverTheSendersClocksSay) {
  const auto harbor = Connect(L"harbor");
  const auto mariner = Connect(L"mariner");
  constexpr std::int64_t kCount = 60;
  Ids expected;
  for (const auto& cid : {With(L"mariner"), kTribe}) {
    SCOPED_TRACE(cid.is_tribe());
    std::vector<link::Delivered> sent;
    expected.clear();
    for (std::int64_t i = 0; i < kCount; ++i) {
      // Identifiers and times jump about; two senders; another conversation lies between.
      const std::int64_t msgid = 1 + (i * 37) % kCount;
      expected.push_back(msgid);
      Device& sender = i % 3 == 0 ? *mariner : *harbor;
      sent.push_back(
          sender.Say(&sender == harbor.get() || cid.is_tribe() ? cid : With(L"harbor"), msgid)
              .reply);
      harbor->Say(With(L"harbor"), 1000 + i);
    }
    for (const std::int32_t count : {1, 7, 59, 60, 61}) {
      SCOPED_TRACE(count);
      EXPECT_EQ(Walk(*harbor, {.cid = cid, .count = count}), expected);
      EXPECT_EQ(Walk(*harbor, {.cid = cid, .older = false, .count = count}), expected)
          << "the newest end has nothing newer";
      EXPECT_EQ(Walk(*harbor, {.cid = cid, .time = 1, .older = false, .count = count}), expected);
      for (const std::size_t at : {0, 1, 30, 59}) {
        link::GetHistory request{.cid = cid, .place = sent[at].place, .count = count};
        const auto split = expected.begin() + static_cast<std::ptrdiff_t>(at);
        EXPECT_EQ(Walk(*harbor, request), Ids(expected.begin(), split));
        request.older = false;
        EXPECT_EQ(Walk(*harbor, request), Ids(split + 1, expected.end()));
      }
    }
    EXPECT_EQ(harbor->Ask(link::GetHistory{.cid = cid, .place = "x", .count = 1}).result.code,
              biz::kEngineNotFound);
  }
}

TEST_F(ServerHistory, TimesAreTheServersAndBothEndsBelongToTheRange) {
  const auto harbor = Connect(L"harbor");
  std::vector<std::int64_t> times;
  for (std::int64_t msgid = 1; msgid <= 5; ++msgid) {
    times.push_back(harbor->Say(kTribe, msgid).reply.svrtime);
    std::this_thread::sleep_for(std::chrono::milliseconds(3));
  }
  const struct {
    std::int64_t time, btime, etime;
    bool older;
    Ids ids;
  } cases[] = {
      {0, times[1], times[3], true, {2, 3, 4}},
      {0, times[1] + 1, times[3] - 1, true, {3}},
      {0, 0, times[0], true, {1}},
      {0, times[4] + 1, 0, true, {}},
      {times[2], 0, 0, true, {1, 2, 3}},
      {times[2], 0, 0, false, {3, 4, 5}},
      {times[2], times[3], 0, false, {4, 5}},
      {times[2] + 1, 0, times[3], false, {4}},
      {times[0] - 1, 0, 0, true, {}},
  };
  for (const auto& [time, btime, etime, older, ids] : cases) {
    for (const std::int32_t count : {1, 2, 100}) {
      EXPECT_EQ(Walk(*harbor, {.cid = kTribe,
                               .time = time,
                               .older = older,
                               .btime = btime,
                               .etime = etime,
                               .count = count}),
                ids);
    }
  }
}

TEST_F(ServerHistory, RoamingIsSwitchedAndOpensAtATime) {
  const auto harbor = Connect(L"harbor");
  const auto mariner = Connect(L"mariner");
  harbor->Say(With(L"mariner"), 1);
  harbor->Say(kTribe, 2);
  EXPECT_EQ(harbor->Ask(link::GetRoaming{}).reply.roamstatus, biz::kRoamingOn);
  EXPECT_EQ(harbor->Ask(link::SetRoaming{7}).result.code, biz::kEngineRefused);
  EXPECT_TRUE(harbor->Ask(link::SetRoaming{biz::kRoamingOn}).result.ok());
  EXPECT_EQ(harbor->Ask(link::GetRoaming{}).reply.opentime, 0) << "it was on";
  EXPECT_TRUE(harbor->Ask(link::SetRoaming{biz::kRoamingOff}).result.ok());
  for (const auto& cid : {With(L"mariner"), kTribe}) {
    EXPECT_EQ(harbor->Ask(link::GetHistory{.cid = cid, .count = 9}).result.code,
              biz::kEngineRefused);
  }
  EXPECT_EQ(MsgidsOf(mariner->Ask(link::GetHistory{.cid = kTribe, .count = 9}).reply.msgs), Ids{2});
  EXPECT_TRUE(harbor->Ask(link::SetRoaming{biz::kRoamingOn}).result.ok());
  EXPECT_GT(harbor->Ask(link::GetRoaming{}).reply.opentime, 0);
  const auto after = harbor->Say(With(L"mariner"), 3).reply;
  EXPECT_GE(after.svrtime, harbor->Ask(link::GetRoaming{}).reply.opentime);
  harbor->Say(kTribe, 4);
  EXPECT_EQ(Walk(*harbor, {.cid = With(L"mariner"), .count = 9}), Ids{3});
  EXPECT_EQ(Walk(*harbor, {.cid = kTribe, .count = 9}), Ids{4});
  EXPECT_EQ(Walk(*mariner, {.cid = With(L"harbor"), .count = 9}), (Ids{1, 3}));
  EXPECT_EQ(Walk(*mariner, {.cid = With(L"nobody"), .count = 9}), Ids{});
}

TEST_F(ServerHistory, WhatIsNewComesAsNewBeforeItComesAsHistory) {
  const auto harbor = Connect(L"harbor");
  for (std::int64_t msgid = 1; msgid <= 2500; ++msgid) harbor->Say(With(L"mariner"), msgid);
  const auto mariner = Connect(L"mariner", "desk", {}, false);
  mariner->Until([](const Device& told) { return told.batches.size() == 4; });
  std::thread later([&] {
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    mariner->Acknowledge(mariner->batches[3].position);
  });
  const auto page = mariner->Ask(link::GetHistory{.cid = With(L"harbor"), .count = 9});
  later.join();
  EXPECT_EQ(page.reply.msgs.size(), 9U);
  EXPECT_EQ(mariner->Msgids().size(), 2500U);
}

}  // namespace
}  // namespace imsdk::test
