#include "server/run_token.h"

#include <gtest/gtest.h>

#include <set>

#include "temp_folder.h"

namespace imsdk::host {
namespace {

constexpr std::int64_t kHour = 3600 * 1000;

TEST(RunTokenTest, OnlyTheTokenItselfIsAccepted) {
  const TempFolder folder;
  const auto token = RunToken::Open(folder.path() / "t", "", 1);
  const std::string text = token->text();
  EXPECT_TRUE(IsTokenText(text));
  EXPECT_GE(text.size(), 32u);
  EXPECT_TRUE(token->Accepts(text, 1));
  for (const std::string& wrong : {std::string(), text + "x", text.substr(1), std::string("x")}) {
    EXPECT_FALSE(token->Accepts(wrong, 1)) << wrong;
  }
  std::set<std::string> fresh;
  for (int i = 0; i < 20; ++i) fresh.insert(RunToken::Open(folder.path() / "t", "", 1)->text());
  EXPECT_EQ(fresh.size(), 20u);
}

TEST(RunTokenTest, AKilledRunsTokenStaysGoodForTwelveHours) {
  const TempFolder folder;
  const auto file = folder.path() / "run-token";
  const auto first = RunToken::Open(file, "", kHour);
  ASSERT_TRUE(first->Save());
  EXPECT_EQ(folder.Read("run-token").find(first->text()), std::string::npos);
  EXPECT_EQ(std::filesystem::status(file).permissions(),
            std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);

  // Killed, started again, killed again, started again: the first token ages from the first crash.
  const auto second = RunToken::Open(file, "", 20 * kHour);
  ASSERT_TRUE(second->Save());
  const auto third = RunToken::Open(file, "fixed", 30 * kHour);
  ASSERT_TRUE(third->Save());
  EXPECT_TRUE(second->Accepts(first->text(), 32 * kHour - 1));
  EXPECT_TRUE(third->Accepts(first->text(), 32 * kHour - 1));
  EXPECT_FALSE(third->Accepts(first->text(), 32 * kHour));
  EXPECT_TRUE(third->Accepts(second->text(), 42 * kHour - 1));
  EXPECT_FALSE(third->Accepts(second->text(), 42 * kHour));
  EXPECT_TRUE(third->Accepts("fixed", 1000 * kHour));

  // A clean end leaves nothing behind.
  third->Retire();
  const auto last = RunToken::Open(file, "", 31 * kHour);
  EXPECT_FALSE(last->Accepts("fixed", 31 * kHour));
  EXPECT_FALSE(last->Accepts(second->text(), 31 * kHour));
}

TEST(RunTokenTest, ABrokenFileGivesNobodyAccess) {
  const TempFolder folder;
  const auto file = folder.Write("run-token", "short 0\n" + std::string(64, 'z') + " soon\n");
  const auto token = RunToken::Open(file, "", 1);
  ASSERT_TRUE(token);
  EXPECT_FALSE(token->Accepts("short", 1));
  EXPECT_FALSE(token->Accepts("", 1));
}

}  // namespace
}  // namespace imsdk::host
