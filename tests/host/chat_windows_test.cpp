#include "client/chat_windows.h"

#include <gtest/gtest.h>

namespace imsdk::host {
namespace {

const biz::IMUserID kHarbor{L"cnbazaro", L"harbor"};
const biz::IMUserID kMariner{L"cnbazaro", L"mariner"};
const biz::IMConversationID kPeer{biz::IMUserID{L"cnbazaro", L"lighthouse"}};

std::string State(int visible, int activated, const std::string& more = "") {
  return R"({"cid":{"appkey":"cnbazaro","nick":"lighthouse"},"visible":)" +
         std::to_string(visible) + R"(,"activated":)" + std::to_string(activated) + more + "}";
}

TEST(ChatWindowsTest, AWindowCountsForItsAccountUntilItIsHiddenOrItsViewEnds) {
  const RefPtr<ChatWindows> windows(new ChatWindows);
  windows->SetViewAccount(L"a", kHarbor);
  windows->SetViewAccount(L"b", kHarbor);
  ASSERT_TRUE(windows->Report(L"a", State(1, 0)));
  EXPECT_TRUE(windows->IsVisible(kHarbor, kPeer));
  EXPECT_FALSE(windows->IsActivated(kHarbor, kPeer));
  EXPECT_FALSE(windows->IsVisible(kMariner, kPeer));
  EXPECT_FALSE(windows->IsVisible(kHarbor, biz::IMConversationID(kMariner)));
  // A page names a virtual user as any other; a tribe has no name that it could mean.
  EXPECT_TRUE(windows->IsVisible(kHarbor, biz::IMConversationID(kPeer.user, biz::kCIDSystem)));
  EXPECT_FALSE(windows->IsVisible(kHarbor, biz::IMConversationID(biz::IMTribeID{1})));

  // A second view on the same conversation, and the first hidden.
  ASSERT_TRUE(windows->Report(L"b", State(1, 1)));
  ASSERT_TRUE(windows->Report(L"a", State(0, 0)));
  EXPECT_TRUE(windows->IsVisible(kHarbor, kPeer));
  EXPECT_TRUE(windows->IsActivated(kHarbor, kPeer));
  windows->Drop(L"b");
  EXPECT_FALSE(windows->IsVisible(kHarbor, kPeer));
}

// Pages report before and after they log in; whose window it is follows the view.
TEST(ChatWindowsTest, AWindowIsThatOfTheAccountOfItsView) {
  const RefPtr<ChatWindows> windows(new ChatWindows);
  const std::string mariner = R"(,"account":{"appkey":"cnbazaro","nick":"mariner"})";
  for (const bool named : {false, true}) {
    ASSERT_TRUE(windows->Report(L"a", State(1, 1, named ? mariner : "")));
    const struct {
      biz::IMUserID account;
      bool harbor, mariner;
    } steps[] = {
        {{}, false, false}, {kHarbor, !named, false}, {kMariner, false, true}, {{}, false, false}};
    for (const auto& step : steps) {
      windows->SetViewAccount(L"a", step.account);
      EXPECT_EQ(windows->IsVisible(kHarbor, kPeer), step.harbor);
      EXPECT_EQ(windows->IsActivated(kMariner, kPeer), step.mariner);
      EXPECT_FALSE(windows->IsVisible({}, kPeer));
    }
    windows->Drop(L"a");
  }
}

TEST(ChatWindowsTest, RefusesOtherTextsAndForgetsWhatAViewPilesUp) {
  const RefPtr<ChatWindows> windows(new ChatWindows);
  windows->SetViewAccount(L"a", kHarbor);
  const std::string bads[] = {"",
                              "[]",
                              "{}",
                              R"({"visible":1})",
                              R"({"cid":"lighthouse"})",
                              R"({"cid":{"appkey":"cnbazaro"},"visible":1})",
                              State(1, 1, R"(,"more":")" + std::string(2048, 'x') + '"')};
  for (const std::string& bad : bads) {
    EXPECT_FALSE(windows->Report(L"a", bad)) << bad;
  }
  ASSERT_TRUE(windows->Report(L"a", State(1, 1)));
  for (int i = 0; i < 100; ++i) {
    windows->Report(L"a",
                    R"({"visible":1,"cid":{"appkey":"a","nick":")" + std::to_string(i) + "\"}}");
  }
  EXPECT_FALSE(windows->IsVisible(kHarbor, kPeer));
  EXPECT_TRUE(windows->IsVisible(kHarbor, biz::IMConversationID(biz::IMUserID{L"a", L"99"})));
}

}  // namespace
}  // namespace imsdk::host
