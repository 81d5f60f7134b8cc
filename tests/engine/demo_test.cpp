// The demo set, through the engine and through the server's link.
#include <fstream>
#include <iterator>
#include <map>

#include "imsdk/biz/account.h"
#include "imsdk/demo_set.h"
#include "imsdk/engine.h"
#include "kexbase/md5.h"
#include "kexcore/kexcom.h"
#include "server_fixture.h"

namespace imsdk::test {
namespace {

const biz::IMConversationID kRegatta{biz::IMTribeID{10001}};
constexpr const wchar_t* kPeople[] = {L"harbor", L"lighthouse", L"mariner", L"navigator"};

class Demo : public ServerTest {
 protected:
  void Fill() {
    std::string error;
    ASSERT_TRUE(FillDemoSet(options_.data, *server_, &error)) << error;
  }

  static RefPtr<biz::IIMAccount> Login(const wchar_t* nick) {
    const auto accounts = kexcore::GetService<biz::IIMAccountMgr>();
    const auto grant = Await<biz::IMLoginGrant>([&](auto done) {
      accounts->LoginByPassword({Person(nick), L"demo"}, done);
    });
    EXPECT_TRUE(grant.result.ok());
    return accounts->GetAccount(Person(nick));
  }

  static std::vector<biz::IMMessage> Page(const RefPtr<biz::IIMConversation>& chat) {
    return Await<biz::IMMessagePage>([&](auto done) { chat->GetLocalHisMsg({.count = 100}, done); })
        .reply.msgs;
  }
};

TEST_F(Demo, TheServerHasAPastOfEveryKind) {
  Fill();
  std::string error;
  EXPECT_FALSE(FillDemoSet(options_.data, *server_, &error));
  EXPECT_FALSE(error.empty());
  for (const auto* nick : kPeople) {
    const auto device = Connect(nick);
    device->Settle();
    EXPECT_TRUE(device->batches.empty()) << "nothing is delivered again";
  }
  const auto harbor = Connect(L"harbor");
  const auto mariner = Connect(L"mariner");
  for (const auto& cid : {kRegatta, With(L"harbor")}) {
    std::map<std::int32_t, int> kinds;
    const auto past = mariner->Ask(link::GetHistory{.cid = cid, .count = 100}).reply.msgs;
    for (const auto& message : past) {
      ++kinds[message.msgtype];
      for (const auto& file : message.files) {
        std::filesystem::remove(folder_ / "fetched");  // else it would be gone on with
        EXPECT_TRUE(mariner->Ask(link::Download{file, folder_ / "fetched", {}}).result.ok());
        std::ifstream in(folder_ / "fetched", std::ios::binary);
        const std::string content{std::istreambuf_iterator<char>(in), {}};
        EXPECT_EQ(file.name.find(base::MD5String(content)), 0U);
      }
    }
    for (const auto kind : {biz::kMsgText, biz::kMsgPicture, biz::kMsgAudio, biz::kMsgFile}) {
      EXPECT_GT(kinds[kind], 0) << kind;
    }
  }
  const auto chat = With(L"mariner");
  EXPECT_FALSE(harbor->Ask(link::GetHistory{.cid = chat, .count = 1}).reply.next.empty());
}

// Whatever became of the server's store: what the accounts have is theirs.
TEST_F(Demo, NothingIsRemovedToMakeRoomForIt) {
  Fill();
  EXPECT_TRUE(HoldsMessages(options_.data));
  server_.reset();
  const auto content = [this] {
    std::map<std::string, std::string> files;
    for (const char* part : {"accounts", "files"}) {
      for (const auto& entry : std::filesystem::recursive_directory_iterator(folder_ / part)) {
        if (!entry.is_regular_file()) continue;
        std::ifstream in(entry.path(), std::ios::binary);
        files[entry.path().string()] = {std::istreambuf_iterator<char>(in), {}};
      }
    }
    return files;
  };
  const auto before = content();
  EXPECT_GT(before.size(), 4U);
  for (const char* gone : {"server/server.db", "server", "stores", "client"}) {
    std::filesystem::remove_all(folder_ / gone);
    EXPECT_TRUE(HoldsMessages(options_.data)) << gone;
    Start();
    std::string error;
    EXPECT_FALSE(FillDemoSet(options_.data, *server_, &error)) << gone;
    EXPECT_FALSE(error.empty());
    server_.reset();
    EXPECT_EQ(content(), before) << gone;
  }
}

TEST_F(Demo, TheAccountsHaveItInTheirStoresUnreadWhereItIsNew) {
  Fill();
  std::int64_t newest = 0;
  for (const bool again : {false, true}) {
    std::string error;
    const auto engine = StartEngine(
        {.data = options_.data, .link = [this] { return link_; }, .send_from = {}}, &error);
    ASSERT_TRUE(engine) << error;
    const auto harbor = Login(L"harbor");
    const auto lighthouse = Login(L"lighthouse");
    ASSERT_TRUE(harbor && lighthouse);
    const auto chat = harbor->GetIMSingleChatMgr()->GetConversation(With(L"lighthouse"));
    const auto page = Page(chat);
    ASSERT_FALSE(page.empty());
    EXPECT_EQ(again ? page.back().msgid : 0, newest) << "a filled folder stays as it is";
    newest = page.back().msgid;
    EXPECT_EQ(page.size(),
              Page(lighthouse->GetIMSingleChatMgr()->GetConversation(With(L"harbor"))).size());

    const auto unread = [](const RefPtr<biz::IIMChatMgr>& chats) {
      std::map<biz::IMConversationID, std::int32_t> counts;
      for (const auto& [cid, count] : Await<biz::IMUnreads>([&](auto done) {
                                        chats->GetUnreadCounts({}, done);
                                      }).reply.unreads) {
        counts[cid] = count;
      }
      return counts;
    };
    EXPECT_EQ(unread(harbor->GetIMSingleChatMgr())[With(L"lighthouse")], 2);
    EXPECT_EQ(unread(harbor->GetIMTribeChatMgr())[kRegatta], 2);
    EXPECT_EQ(unread(harbor->GetIMVirtualChatMgr()).size(), 2U);
    const auto tribe = harbor->GetIMTribeChatMgr()->GetConversation(kRegatta);
    ASSERT_TRUE(tribe);
    EXPECT_EQ(Page(tribe).size(),
              Page(lighthouse->GetIMTribeChatMgr()->GetConversation(kRegatta)).size());
    EXPECT_FALSE(Login(L"navigator")->GetIMTribeChatMgr()->GetConversation(kRegatta));
  }
}

}  // namespace
}  // namespace imsdk::test
