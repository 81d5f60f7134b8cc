// The demo set, through the engine.
#include <fstream>
#include <map>

#include "engine_fixture.h"
#include "kexbase/strings.h"

namespace imsdk::test {
namespace {

TEST(Demo, FillsAnEmptyFolderOnce) {
  TempFolder folder;
  EngineSetup setup = QuickSetup(folder.path());
  setup.options.demo = true;
  std::int64_t newest = 0;
  for (const bool again : {false, true}) {
    const auto engine = Start(setup);
    for (const auto* nick : {L"harbor", L"lighthouse", L"mariner", L"navigator"}) {
      ASSERT_TRUE(Login(User(nick), L"demo").result.ok());
    }
    const auto chat = Chat(User(L"harbor"), User(L"lighthouse"));
    EXPECT_EQ(chat->GetUnreadCount(), 2);
    EXPECT_EQ(chat->GetNewMsg({}).msgs.size(), 2U);
    const auto page = History(User(L"harbor"), User(L"lighthouse"), {.count = 100});
    EXPECT_EQ(Bodies(page.msgs),
              Bodies(History(User(L"lighthouse"), User(L"harbor"), {.count = 100}).msgs));
    if (again) {
      EXPECT_EQ(page.msgs.back().msgid, newest) << "a filled folder stays as it is";
    }
    newest = page.msgs.back().msgid;

    std::map<std::int32_t, int> kinds;
    for (const auto& message : page.msgs) {
      if (++kinds[message.msgtype] > 1 || message.msgtype == biz::kMsgText) continue;
      std::wstring path = message.msgbody.substr(message.msgbody.find(L"filepath=") + 9);
      path = path.substr(0, path.find(L'&'));
      for (std::size_t at; (at = path.find(L"%2F")) != std::wstring::npos;) {
        path.replace(at, 3, L"/");
      }
      EXPECT_TRUE(std::filesystem::exists(folder.path() / base::WideToUTF8(path)));
    }
    for (const auto kind : {biz::kMsgText, biz::kMsgPicture, biz::kMsgAudio, biz::kMsgFile}) {
      EXPECT_GT(kinds[kind], 0) << kind;
    }
    const auto chats = Accounts()->GetAccount(User(L"harbor"))->GetIMVirtualChatMgr();
    ASSERT_EQ(chats->GetConversations().size(), 2U);
    EXPECT_EQ(chats->GetConversation(User(L"system"))->GetUnreadCount(), 1);
    EXPECT_TRUE(chats->GetConversation(User(L"coastguard")));
    Witness lighthouse(User(L"lighthouse"));
    Send(User(L"harbor"), User(L"lighthouse"), L"hello");
    ASSERT_TRUE(lighthouse.AwaitReceived(1));
    EXPECT_GT(lighthouse.received[0].msgid, newest);
    EXPECT_EQ(lighthouse.received.size(), 1U) << "the history is not delivered again";
    newest = lighthouse.received[0].msgid;
  }
}

}  // namespace
}  // namespace imsdk::test
