// "im.singlemsg": sending.

#include <random>

#include "imsdk/client/emotion_list.h"
#include "kexbase/message_body.h"
#include "source/bridge/emotiontext.h"
#include "tests/bridge/chat_fixture.h"

namespace imsdk::test {
namespace {

TEST_F(SingleMsg, BroadcastReachesEveryoneAndReportsTheFirstRefusal) {
  auto& mariner = engine.Chats().Chat(biz::IMUserID{L"cnbazaro", L"mariner"});
  const std::wstring request =
      LR"({"cids":[{"appkey":"cnbazaro","nick":"lighthouse"},{"nick":"nobody"},)"
      LR"({"appkey":"cnbazaro","nick":"mariner"},{"appkey":"cnbazaro","nick":"lighthouse"}],)"
      LR"("msgbody":[{"type":0,"value":"all"}]})";
  EXPECT_EQ(host.Call(kPath, L"SendBroadcastMsg", request).payload,
            LR"({"code":-2147418113,"subcode":0,"result":"failed"})");
  EXPECT_EQ(chat.sent.size(), 1u) << "named twice";
  EXPECT_EQ(mariner.sent.size(), 1u);
  EXPECT_FALSE(
      host.Call(kPath, L"SendBroadcastMsg", LR"({"cids":[{"appkey":"cnbazaro","nick":"mariner"}]})")
          .failed);
  EXPECT_TRUE(mariner.sent.empty());
  EXPECT_TRUE(host.Call(kPath, L"SendBroadcastMsg", L"{}").failed);
}

TEST_F(SingleMsg, BroadcastIsAnsweredOnceWhenAllSendsAre) {
  auto& mariner = engine.Chats().Chat(biz::IMUserID{L"cnbazaro", L"mariner"});
  std::vector<Done> open;
  for (MemoryConversation* to : {&chat, &mariner}) {
    to->on_send = [&](Done done) { open.push_back(std::move(done)); };
  }
  const std::wstring request =
      LR"({"cids":[{"appkey":"cnbazaro","nick":"lighthouse"},)"
      LR"({"appkey":"cnbazaro","nick":"mariner"}],"msgbody":[{"type":0,"value":"all"}]})";
  const auto broadcast = [&] {
    open.clear();
    host.page.answers.clear();
    host.Invoke(L"workbench.im.singlemsg.invoke", L"b", L"SendBroadcastMsg", request);
    EXPECT_EQ(open.size(), 2u);
  };
  broadcast();
  open[1]({biz::kEngineBusy, 0, {}});
  EXPECT_TRUE(host.page.answers.empty());
  open[0]({biz::kEngineTooLarge, 0, {}});
  ASSERT_EQ(host.page.answers.size(), 1u);
  EXPECT_TRUE(host.page.answers[0].payload.starts_with(LR"({"code":-7,)"));  // the first one's

  broadcast();
  open[0]({});
  open.clear();  // an engine that stops
  ASSERT_EQ(host.page.answers.size(), 1u);
  EXPECT_TRUE(host.page.answers[0].failed);
}

class Emotions final : public RefPtrCounted<client::IEmotionListService> {
 public:
  std::vector<client::IMEmotion> GetEmotions() override {
    return {{L"/:)", L"a b.png"}, {L"/:))", L"\x4F60&.png"}, {L"/:", L"none.png"}, {L"", L"x"}};
  }
};

TEST_F(SingleMsg, ConvertsShortcutsLongestFirst) {
  const std::wstring request = LR"({"type":4,"jvale":"j","value":"/: x/:)/:))/:(y/:"})";
  EXPECT_EQ(host.Call(kPath, L"ConvertMsgText2Emotion", request).payload,
            LR"({"code":0,"subcode":0,"result":"success","type":4,)"
            LR"("value":"/: x/:)/:))/:(y/:","jvale":"j"})");
  const Registered<client::IEmotionListService> emotions(RefPtr(new Emotions));
  EXPECT_EQ(host.Call(kPath, L"ConvertMsgText2Emotion", request).payload,
            LR"({"code":0,"subcode":0,"result":"success","type":4,)"
            LR"("value":"/: xpic:imemotion|ID?filepath=a%20b.png&shortcut=%2F%3A))"
            L"\x200B"
            LR"(pic:imemotion|ID?filepath=%E4%BD%A0%26.png&shortcut=%2F%3A)))"
            L"\x200B"
            LR"(/:(y/:","jvale":"j"})");
}

TEST_F(SingleMsg, TypedTextArrivesAsItIsWithAndWithoutEmotions) {
  const auto emotions = RefPtr(new Emotions)->GetEmotions();
  const wchar_t* const pieces[] = {L"/:)",    L"/:))",
                                   L"/:",     L":)",
                                   L")",      L"!",
                                   L" ",      L"\n",
                                   L"\x4E2D", L"pic:imemotion",
                                   L"|",      L"ID?filepath=a&shortcut=b",
                                   L"file:",  L"filepath=",
                                   L"\x200B", L"%3A",
                                   L"\\"};
  std::mt19937 random(1);
  for (int round = 0; round < 5000; ++round) {
    std::wstring typed;
    for (auto left = random() % 12; left > 0; --left) typed += pieces[random() % std::size(pieces)];
    for (const auto& list : {emotions, std::vector<client::IMEmotion>()}) {
      std::wstring shown;
      const std::wstring body = bridge::TextToEmotion(typed, list);
      for (const base::BodyPart& part : base::ReadBody(body)) {
        const bool smile = part.path == L"a%20b.png";
        shown += part.kind == base::BodyPart::kText ? part.source : smile ? L"/:)" : L"/:))";
      }
      ASSERT_EQ(shown, typed);
    }
  }
}

TEST_F(SingleMsg, AutomaticRepliesAreSentAndShielded) {
  host.Call(kPath, L"SendAutoReplyMsg", kCid);
  EXPECT_TRUE(chat.sent_request.autoreply);
  EXPECT_FALSE(chat.sent_request.autosend);
  EXPECT_EQ(Payload(L"ShieldAutoReply", WithCid(LR"("setignore":1)")), kSuccess);
  EXPECT_TRUE(chat.ignored);
  Payload(L"ShieldAutoReply", kCid);
  EXPECT_FALSE(chat.ignored);
}

}  // namespace
}  // namespace imsdk::test
