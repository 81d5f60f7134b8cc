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
  const int views[2] = {};
  ASSERT_TRUE(windows->Report(&views[0], kHarbor, State(1, 0)));
  EXPECT_TRUE(windows->IsVisible(kHarbor, kPeer));
  EXPECT_FALSE(windows->IsActivated(kHarbor, kPeer));
  EXPECT_FALSE(windows->IsVisible(kMariner, kPeer));
  EXPECT_FALSE(windows->IsVisible(kHarbor, biz::IMConversationID(kMariner)));
  // A page names a virtual user as any other; a tribe has no name that it could mean.
  EXPECT_TRUE(windows->IsVisible(kHarbor, biz::IMConversationID(kPeer.user, biz::kCIDSystem)));
  EXPECT_FALSE(windows->IsVisible(kHarbor, biz::IMConversationID(biz::IMTribeID{1})));

  // A second view on the same conversation, and the first hidden.
  ASSERT_TRUE(windows->Report(&views[1], kHarbor, State(1, 1)));
  ASSERT_TRUE(windows->Report(&views[0], kHarbor, State(0, 0)));
  EXPECT_TRUE(windows->IsVisible(kHarbor, kPeer));
  EXPECT_TRUE(windows->IsActivated(kHarbor, kPeer));
  windows->Drop(&views[1]);
  EXPECT_FALSE(windows->IsVisible(kHarbor, kPeer));
}

TEST(ChatWindowsTest, ThePageMayNameTheAccount) {
  const RefPtr<ChatWindows> windows(new ChatWindows);
  const int view = 0;
  const std::string mariner = R"(,"account":{"appkey":"cnbazaro","nick":"mariner"})";
  ASSERT_TRUE(windows->Report(&view, {}, State(1, 1, mariner)));
  EXPECT_TRUE(windows->IsVisible(kMariner, kPeer));
  EXPECT_FALSE(windows->IsVisible(kHarbor, kPeer));
  // A view without an account speaks for any.
  ASSERT_TRUE(windows->Report(&view, {}, State(1, 0)));
  EXPECT_TRUE(windows->IsVisible(kHarbor, kPeer));
}

TEST(ChatWindowsTest, RefusesOtherTextsAndForgetsWhatAViewPilesUp) {
  const RefPtr<ChatWindows> windows(new ChatWindows);
  const int view = 0;
  for (const char* bad : {"", "[]", "{}", R"({"visible":1})", R"({"cid":"lighthouse"})",
                          R"({"cid":{"appkey":"cnbazaro"},"visible":1})"}) {
    EXPECT_FALSE(windows->Report(&view, kHarbor, bad)) << bad;
  }
  ASSERT_TRUE(windows->Report(&view, kHarbor, State(1, 1)));
  for (int i = 0; i < 100; ++i) {
    windows->Report(&view, kHarbor,
                    R"({"visible":1,"cid":{"appkey":"a","nick":")" + std::to_string(i) + "\"}}");
  }
  EXPECT_FALSE(windows->IsVisible(kHarbor, kPeer));
  EXPECT_TRUE(windows->IsVisible(kHarbor, biz::IMConversationID(biz::IMUserID{L"a", L"99"})));
}

}  // namespace
}  // namespace imsdk::host
