// Pages of history, and how fast they come from a large store.
#include <algorithm>
#include <chrono>

#include "store_fixture.h"

namespace imsdk::test {
namespace {

class PagingTest : public StoreTest {};

TEST_F(PagingTest, BothDirectionsOverEqualTimes) {
  // Stored out of order; 2 to 6 have one time, 7 to 9 another.
  for (const std::int64_t id : {6, 3, 9, 1, 5, 2, 8, 4, 7}) {
    store_.AddOutgoing(Sent(kPeer, id == 1 ? 100 : id <= 6 ? 200 : 300, id), true);
    store_.AddOutgoing(Sent(User(L"other"), 200, 100 + id), true);
  }
  const struct {
    biz::IMPageRequest request;
    std::vector<std::int64_t> ids;
    bool end;
  } cases[] = {
      {{.count = 4}, {6, 7, 8, 9}, false},
      {{.count = 4, .gohistory = true}, {6, 7, 8, 9}, false},
      {{.msgtime = 200, .msgid = 6, .count = 3, .gohistory = true}, {3, 4, 5}, false},
      {{.msgtime = 200, .msgid = 3, .count = 3, .gohistory = true}, {1, 2}, true},
      {{.msgtime = 200, .msgid = 3, .count = 2, .gohistory = true}, {1, 2}, true},
      {{.msgtime = 100, .msgid = 1, .count = 3, .gohistory = true}, {}, true},
      {{.msgtime = 200, .msgid = 4, .count = 3}, {5, 6, 7}, false},
      {{.msgtime = 300, .msgid = 7, .count = 3}, {8, 9}, true},
      {{.msgtime = 200, .count = 2}, {2, 3}, false},
      {{.count = 0}, {1, 2, 3, 4, 5, 6, 7, 8, 9}, true},
  };
  for (const auto& one : cases) {
    SCOPED_TRACE(std::to_string(one.request.msgid) + (one.request.gohistory ? " back" : " on"));
    const auto page = store_.Page(kChat, one.request);
    EXPECT_EQ(Ids(page.msgs), one.ids);
    EXPECT_EQ(page.outofcache, one.end);
  }
  EXPECT_TRUE(store_.Page(With(User(L"unknown")), {}).msgs.empty());
}

TEST_F(PagingTest, APageOfLongMessagesEndsEarly) {
  const std::wstring body(3 * 1024 * 1024, L' ');
  for (const std::int64_t id : {1, 2, 3}) store_.AddIncoming(Received(kPeer, 100, id, body));
  using Ids = std::vector<std::int64_t>;
  const struct {
    biz::IMPageRequest request;
    Ids ids;
    bool end;
  } cases[] = {
      {{}, {2, 3}, false},
      {{.msgtime = 100, .msgid = 2, .gohistory = true}, {1}, true},
      {{.msgtime = 99}, {1, 2}, false},
      {{.msgtime = 100, .msgid = 1}, {2, 3}, true},
  };
  for (const auto& one : cases) {
    const auto page = store_.Page(kChat, one.request);
    EXPECT_EQ(test::Ids(page.msgs), one.ids);
    EXPECT_EQ(page.outofcache, one.end);
  }
}

TEST_F(PagingTest, ALargeStoreAnswersAtOnce) {
  constexpr int kMessages = 100'000;
  {
    sqlite::Transaction transaction(store_.database());
    for (int i = 1; i <= kMessages; ++i) {
      store_.AddOutgoing(
          Sent(i % 2 == 0 ? kPeer : User(L"p" + std::to_wstring(i % 50)), 1000 + i / 3, i), true);
    }
    transaction.Commit();
  }
  const auto median = [&](const biz::IMPageRequest& request) {
    std::vector<std::chrono::steady_clock::duration> times;
    for (int i = 0; i < 21; ++i) {
      const auto start = std::chrono::steady_clock::now();
      EXPECT_EQ(store_.Page(kChat, request).msgs.size(), 20U);
      times.push_back(std::chrono::steady_clock::now() - start);
    }
    std::nth_element(times.begin(), times.begin() + 10, times.end());
    return std::chrono::duration<double, std::milli>(times[10]).count();
  };
  const double first = median({.count = 20});
  const double deep = median({.msgtime = 1100, .msgid = 300, .count = 20, .gohistory = true});
  RecordProperty("first_page_ms", std::to_string(first));
  RecordProperty("deep_page_ms", std::to_string(deep));
  EXPECT_LT(first, 20);
  EXPECT_LT(deep, 20);

  // The same by what SQLite plans to do: no query of a login or a page walks the messages.
  for (const char* query :
       {"SELECT arrival FROM messages WHERE conversation=1 AND place BETWEEN 0 AND 5 "
        "ORDER BY place DESC LIMIT 20",
        "SELECT msgid FROM messages WHERE msgstatus IN (0, 2) AND msgstatus=0 ORDER BY msgid",
        "SELECT count(*) FROM messages WHERE conversation=1 AND readflag=0 AND msgstatus=3",
        "UPDATE messages SET readflag=1 WHERE conversation=1 AND arrival<=9 AND readflag=0 "
        "AND msgstatus=3"}) {
    const std::string explain = std::string("EXPLAIN QUERY PLAN ") + query;
    auto plan = store_.database().Prepare(explain.c_str());
    while (plan.Step()) {
      EXPECT_EQ(plan.Text(3).find("SCAN"), std::string::npos) << query << ": " << plan.Text(3);
      EXPECT_EQ(plan.Text(3).find("TEMP B-TREE"), std::string::npos) << query;
    }
  }
}

}  // namespace
}  // namespace imsdk::test
