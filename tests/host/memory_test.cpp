// The bound of the host's memory, from the rule to the socket.
#include "memory/budget.h"

#include <deque>
#include <vector>

#include "memory/turn.h"
#include "page/frames.h"
#include "server/view.h"
#include "server_fixture.h"

namespace imsdk::host {
namespace {

using MemoryTest = ServerTest;

TEST(MemoryBudgetTest, NobodyHoldsMoreThanIsLeftForTheOthers) {
  const auto budget = std::make_shared<MemoryBudget>(1200);
  MemoryShare greedy(budget);
  EXPECT_FALSE(greedy.Take(601));
  EXPECT_TRUE(greedy.Take(600));
  EXPECT_FALSE(greedy.Take(1));
  {
    MemoryShare second(budget);
    EXPECT_TRUE(second.Take(300));
    EXPECT_FALSE(second.Take(1));
    MemoryShare third(budget);
    EXPECT_FALSE(third.Take(~std::size_t{0}));
    EXPECT_TRUE(third.Take(150));
    EXPECT_EQ(budget->used(), 1050u);
    second.Give(200);
    EXPECT_TRUE(third.Take(100));
  }
  EXPECT_EQ(budget->used(), 600u);
}

TEST(TurnTest, PassesGoRoundInOrderAndNobodyIsLetInAtTheEnd) {
  Turn turn;
  std::vector<int> went;
  std::vector<Turn::Pass> passes;
  for (int i = 0; i < 3; ++i) {
    turn.Enter([&, i](Turn::Pass pass) {
      went.push_back(i);
      passes.push_back(std::move(pass));
    });
  }
  EXPECT_EQ(went, (std::vector<int>{0}));
  passes.erase(passes.begin());
  EXPECT_EQ(went, (std::vector<int>{0, 1}));
  turn.Close();
  passes.clear();
  turn.Enter([&](Turn::Pass) { went.push_back(9); });
  EXPECT_EQ(went, (std::vector<int>{0, 1}));
}

// What pages do to fill the memory, each with what tells them that it is full. A second page must
// not notice, and with the first page everything is given back.
TEST_F(MemoryTest, WhoeverFillsTheMemoryIsRefusedAndOthersDoNotNotice) {
  constexpr std::size_t kPiece = 128u << 10;
  const std::string text(kPiece, 'x');
  struct Case {
    std::string frame;    // sent until it is refused
    const char* refusal;  // in a frame or, when the page is cut off, in the traces
    bool cut;
    bool read;
  };
  const Case cases[] = {
      {Call("keep", R"(["SEQ",")" + text + "\"]"), "too many calls wait for their answers", false,
       true},
      {Call("nowhere", R"(["SEQ",")" + text + "\"]"), "too many calls wait for their answers",
       false, true},
      {Call("flood", R"(["30","400000"])"), "the page left ", true, false},
      {"[\"" + std::string(20 * kPiece, 'x') + "\"]", "a frame of this size has no room", false,
       true},
      {"[" + std::string(400'000, ',') + "]", "so many values", false, true},
  };
  ServerOptions options;
  options.memory = 8 * View::kMemory;
  options.costliest_frame = 64'000'000;
  for (const Case& c : cases) {
    Start(options);
    TestPage calm = Page();
    {
      TestPage greedy = Page();
      std::string refused;
      for (int i = 0; i < 40 && refused.empty(); ++i) {
        std::string frame = c.frame;
        if (const auto at = frame.find("SEQ"); at != std::string::npos) {
          frame.replace(at, 3, "s" + std::to_string(i));
        }
        greedy.Send(frame);
        if (!c.read) {
          const auto told = [&] { return Traces().find(c.refusal) != std::string::npos; };
          if (Eventually(told)) refused = c.refusal;
          continue;
        }
        while (const auto got = greedy.Receive(std::chrono::milliseconds(30))) {
          if (got->find("refused") != std::string::npos) refused = *got;
        }
      }
      EXPECT_NE(refused.find(c.refusal), std::string::npos) << refused;
      calm.Send(Call("echo", "[\"" + text + "\"]"));
      EXPECT_TRUE(calm.Receive()) << c.refusal;
      if (c.cut) {
        EXPECT_TRUE(Eventually([&] { return server_->ViewCount() == 1; })) << c.refusal;
      } else {
        greedy.Send(Call("echo", R"(["still here"])"));
        EXPECT_TRUE(greedy.Receive()) << c.refusal;
      }
    }
    EXPECT_TRUE(Eventually([&] { return server_->MemoryUsed() == View::kMemory; })) << c.refusal;
  }
}

TEST_F(MemoryTest, ACallThatThereIsNoMemoryForIsAnsweredOnce) {
  ServerOptions options;
  options.memory = 4u << 20;
  Start(options);
  TestPage page = Page();
  page.Send(Call("keep", "[7,\"" + std::string(500'000, 'x') + "\"]"));
  EXPECT_NE(page.Receive()->find("refused"), std::string::npos);
  EXPECT_NE(page.Receive()->find(R"("seq":"7","failed":true,"payload":"")"), std::string::npos);
  EXPECT_EQ(backend_.KeptCount(), 0u);
  // Answers make room again, however many calls there are.
  for (int i = 0; i < 20; ++i) {
    page.Send(Call("echo", "[\"s\",\"" + std::string(100'000, 'x') + "\"]"));
    EXPECT_NE(page.Receive()->find("\"failed\":false"), std::string::npos) << i;
  }
}

TEST_F(MemoryTest, ViewsBeyondTheMemoryAreRefusedWithAReason) {
  ServerOptions options;
  options.memory = 8 * View::kMemory;
  Start(options);
  std::deque<TestPage> pages;
  for (int i = 0; i < 5; ++i) pages.push_back(Page());
  const TestPage late(port(), "/channel?token=secret");
  EXPECT_EQ(late.status(), 503);
  EXPECT_NE(late.refusal().find("too many views"), std::string::npos);
}

TEST_F(MemoryTest, LargeFramesTakeTurnsAndLeaveAThreadToOthers) {
  std::deque<TestPage> busy;
  for (int i = 0; i < 4; ++i) {
    busy.push_back(Page());
    busy.back().Send(Call("block", "[\"s\",\"" + std::string(300'000, 'x') + "\"]"));
  }
  ASSERT_TRUE(Eventually([&] { return backend_.blocked() == 1; }));
  TestPage calm = Page();
  calm.Send(Call("echo", R"(["s"])"));
  EXPECT_TRUE(calm.Receive());
  EXPECT_EQ(backend_.blocked(), 1);
  backend_.Unblock();
  for (TestPage& page : busy) EXPECT_TRUE(page.Receive());
}

}  // namespace
}  // namespace imsdk::host
