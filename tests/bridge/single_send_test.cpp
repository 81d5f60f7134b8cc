// "im.singlemsg": sending.

#include <random>

#include "imsdk/client/emotion_list.h"
#include "imsdk/client/picture_editor.h"
#include "kexbase/message_body.h"
#include "source/bridge/emotiontext.h"
#include "tests/bridge/single_msg_fixture.h"

namespace imsdk::test {
namespace {

TEST_F(SingleMsg, SendsBodyItemsInOrderAndReportsTheStatus) {
  const std::wstring request =
      LR"({"cid":{"appkey":"cnbazaro","nick":"lighthouse"},"autosend":1,"msgbody":[)"
      LR"({"type":0,"value":"hi","jvale":"{\"k\":1}"},)"
      LR"({"type":1,"filepath":"a.png","filecontent":"AAEC"},{"type":1,"filecontent":"A"}]})";
  EXPECT_EQ(host.Call(kPath, L"SendNormalChatMsg", request).payload,
            LR"({"code":0,"subcode":0,"result":"success"})");
  ASSERT_EQ(chat.sent.size(), 3u);
  EXPECT_EQ(chat.sent[0].value, L"hi");
  EXPECT_EQ(chat.sent[0].jvale, L"{\"k\":1}");
  EXPECT_EQ(chat.sent[1].filepath.value(), L"a.png");
  EXPECT_EQ(chat.sent[1].filecontent, std::string("\0\1\2", 3));
  EXPECT_EQ(chat.sent[2].filecontent, "");
  EXPECT_TRUE(chat.sent_request.autosend);
  const auto traced = host.log->Lines(L"json");
  ASSERT_EQ(traced.size(), 1u);
  EXPECT_EQ(traced[0].items.at("it->filecontent"), L"A");

  chat.send_status = 3;
  const auto taken = host.Call(kPath, L"SendNormalChatMsg", request);
  EXPECT_EQ(taken.payload, LR"({"code":3,"subcode":0,"result":"success"})");
  EXPECT_FALSE(taken.failed);
  chat.send_status = -7;
  const auto refused = host.Call(kPath, L"SendNormalChatMsg", kCid);
  EXPECT_EQ(refused.payload, LR"({"code":-7,"subcode":0,"result":"failed"})");
  EXPECT_TRUE(refused.failed);
  EXPECT_TRUE(chat.sent.empty());  // an empty body is the engine's to judge
}

TEST_F(SingleMsg, BroadcastReachesEveryoneAndReportsTheFirstRefusal) {
  auto& mariner = engine.Chats().Chat(biz::IMUserID{L"cnbazaro", L"mariner"});
  const std::wstring request =
      LR"({"cids":[{"appkey":"cnbazaro","nick":"lighthouse"},{"nick":"nobody"},)"
      LR"({"appkey":"cnbazaro","nick":"mariner"}],"msgbody":[{"type":0,"value":"all"}]})";
  EXPECT_EQ(host.Call(kPath, L"SendBroadcastMsg", request).payload,
            LR"({"code":-2147418113,"subcode":0,"result":"failed"})");
  EXPECT_EQ(chat.sent.size(), 1u);
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

TEST_F(SingleMsg, AutoRepliesAndFastResends) {
  host.Call(kPath, L"SendAutoReplyMsg", kCid);
  EXPECT_TRUE(chat.sent_request.autoreply);
  EXPECT_FALSE(chat.sent_request.autosend);
  for (const auto& [method, msgid] :
       {std::pair{L"ReSendChatMsg", 11}, std::pair{L"FastReSendChatMsg", 12}}) {
    host.Call(kPath, method,
              LR"({"cid":{"appkey":"cnbazaro","nick":"lighthouse"},"msgid":")" +
                  std::to_wstring(msgid) + L"\"}");
    EXPECT_EQ(chat.msgids, std::vector<std::int64_t>{msgid});
    EXPECT_EQ(chat.at_once, msgid == 12);
  }
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

TEST_F(SingleMsg, ForwardingNamesTheMessage) {
  const std::wstring request =
      LR"({"cids":[{"appkey":"cnbazaro","nick":"lighthouse"}],"msgid":"9","msgtype":1})";
  EXPECT_EQ(Payload(L"ForwardChatMsg", request), kSuccess);
  EXPECT_EQ(chat.sent_request.forward_msgid, 9);
  EXPECT_EQ(chat.sent_request.forward_msgtype, biz::kMsgPicture);
  chat.send_status = biz::kEngineNotFound;
  EXPECT_EQ(Payload(L"ForwardChatMsg", request), LR"({"code":-9,"subcode":0,"result":"failed"})");
}

// Edits "good.png" only.
class Editor final : public RefPtrCounted<client::IPictureEditorService> {
 public:
  void EditImage(const base::FilePath& file, const std::wstring& md5,
                 client::IMEditCallback done) override {
    if (file.value() != L"good.png") return done({biz::kEngineNotFound, 0, L"why"}, {});
    done({}, base::FilePath(L"edited-" + md5));
  }
};

TEST_F(SingleMsg, EditedPicturesAreSentToEveryoneOrRefused) {
  const std::wstring good =
      LR"({"cids":[{"appkey":"cnbazaro","nick":"lighthouse"}],"fileMD5":"m","filepath":"good.png"})";
  const std::wstring no_editor = Payload(L"EditPic2SendMsg", good);
  EXPECT_EQ(no_editor, LR"({"code":-2147418113,"subcode":0,"result":"EditImage failed!"})");

  const Registered<client::IPictureEditorService> editor(RefPtr(new Editor));
  const struct {
    std::wstring request;
    const wchar_t* result;
  } refused[] = {
      {L"{}", L"invalid filepath"},
      {LR"({"cids":[{"appkey":"cnbazaro","nick":""}],"filepath":"good.png"})", L"IsInvalid cid"},
      {LR"({"cids":[{"appkey":"cnbazaro","nick":"lighthouse"}],"filepath":"bad.png"})",
       L"EditImage failed!"},
      {LR"({"filepath":"good.png"})", L"failed"},
  };
  for (const auto& c : refused) {
    EXPECT_TRUE(
        Payload(L"EditPic2SendMsg", c.request).ends_with(std::wstring(L"\"") + c.result + L"\"}"))
        << c.result;
  }
  EXPECT_EQ(host.log->Lines(L"IsInvalid cid").at(0).items.at("cid"), L"cnbazaro");
  EXPECT_TRUE(chat.sent.empty());

  EXPECT_EQ(Payload(L"EditPic2SendMsg", good), kSuccess);
  ASSERT_EQ(chat.sent.size(), 1u);
  EXPECT_EQ(chat.sent[0].type, biz::kMsgPicture);
  EXPECT_EQ(chat.sent[0].filepath.value(), L"edited-m");
  EXPECT_EQ(host.log->Lines(L"EditImage").back().items.at("vecCIDs"), L"cnbazarolighthouse");
}

TEST_F(SingleMsg, AutomaticRepliesAreShielded) {
  EXPECT_EQ(Payload(L"ShieldAutoReply", WithCid(LR"("setignore":1)")), kSuccess);
  EXPECT_TRUE(chat.ignored);
  Payload(L"ShieldAutoReply", kCid);
  EXPECT_FALSE(chat.ignored);
}

}  // namespace
}  // namespace imsdk::test
