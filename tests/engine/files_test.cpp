// The content of files between two accounts that share nothing but their server.
#include <atomic>
#include <fstream>

#include "account/files/data_folder.h"
#include "account/files/file_tokens.h"
#include "device.h"
#include "far_server.h"
#include "imsdk/biz/files.h"
#include "kexbase/md5.h"
#include "kexbase/strings.h"
#include "kexcore/kexcom.h"

namespace imsdk::test {
namespace {

const std::string kContent = "\x89PNG\r\n\x1a\n the harbour at night";

class FilesTest : public PeersTest {
 protected:
  static biz::IMBodyItem Picture(const std::string& content = kContent) {
    biz::IMBodyItem item;
    item.type = biz::kMsgPicture;
    item.filecontent = content;
    item.filepath = base::FilePath(L"a.png");
    return item;
  }
  // The path of a message's only picture, as files are asked for.
  static std::wstring PathIn(const std::wstring& body) {
    const auto paths = account::PicturePaths(body);
    if (paths.size() != 1) return L"?";
    std::wstring path(paths[0]);
    for (std::size_t at; (at = path.find(L"%2F")) != path.npos;) path.replace(at, 3, L"/");
    return path;
  }
  std::int32_t Fetch(const std::wstring& path) {
    const auto files = kexcore::GetService<biz::IIMFileMgr>();
    return Done([&](auto done) { files->Fetch({path}, done); }).code;
  }
  std::string ContentOf(const std::wstring& path) {
    std::ifstream in(folder_.path() / base::WideToUTF8(path), std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
  }
  std::wstring FolderOf(const biz::IMUserID& user) {
    return base::UTF8ToWide(account::DataFolder({}).FilesFolder(user));
  }
};

TEST_P(FilesTest, SentFetchedAndPassedOn) {
  CreateAccount(User(L"lighthouse"));
  Login(User(L"lighthouse"));
  Witness mariner(kMariner);
  Witness lighthouse(User(L"lighthouse"));
  ASSERT_EQ(SendItems(Chat(kHarbor, kMariner), {Text(L"see "), Picture()}), 0);
  ASSERT_TRUE(mariner.AwaitReceived(1));
  const std::wstring theirs = PathIn(mariner.received[0].msgbody);
  EXPECT_EQ(theirs,
            FolderOf(kMariner) + L"/" + base::UTF8ToWide(base::MD5String(kContent)) + L".png")
      << "as if it were the account's own";
  EXPECT_EQ(ContentOf(theirs), "") << "nobody asked for it yet";

  // Passed on before it is here, and after.
  biz::IMSendRequest forward;
  forward.forward_msgid = mariner.received[0].msgid;
  for (const std::size_t round : {1U, 2U}) {
    SendItems(Chat(kMariner, User(L"lighthouse")), {}, forward);
    ASSERT_TRUE(lighthouse.AwaitReceived(round));
    const std::wstring last = PathIn(lighthouse.received.back().msgbody);
    EXPECT_EQ(last.substr(0, last.rfind(L'/')), FolderOf(User(L"lighthouse")));
    EXPECT_EQ(Fetch(round == 1 ? theirs : last), 0);
    EXPECT_EQ(ContentOf(round == 1 ? theirs : last), kContent);
  }
  EXPECT_EQ(Fetch(theirs), 0) << "it is here";

  // Over a restart.
  Again();
  std::filesystem::remove(folder_.path() / base::WideToUTF8(theirs));
  EXPECT_EQ(Fetch(theirs), 0);
  EXPECT_EQ(ContentOf(theirs), kContent);
}

TEST_P(FilesTest, PathsThatNameNoFile) {
  const std::wstring digest(32, L'a');
  const std::wstring cases[] = {
      L"",
      L"files",
      L"files/" + digest,
      FolderOf(kHarbor) + L"/" + digest + L".png",  // none that it knows of
      L"files/nobody-0/" + digest,
      L"files/../accounts/" + digest,
      FolderOf(kHarbor) + L"/../" + digest,
      FolderOf(kHarbor) + L"/a.png",
      L"/" + FolderOf(kHarbor) + L"/" + digest,
      L"client/device",
  };
  for (const auto& path : cases) {
    EXPECT_EQ(Fetch(path), biz::kEngineNotFound) << base::WideToUTF8(path);
  }
}

TEST_P(FilesTest, OneThatWasCutShortComesAgain) {
  Witness mariner(kMariner);
  SendItems(Chat(kHarbor, kMariner), {Picture()});
  ASSERT_TRUE(mariner.AwaitReceived(1));
  const std::wstring path = PathIn(mariner.received[0].msgbody);
  for (int i = 0; i < 2; ++i) {
    ASSERT_EQ(Fetch(path), 0);
    EXPECT_EQ(ContentOf(path), kContent);
    std::filesystem::resize_file(folder_.path() / base::WideToUTF8(path), 3);
  }
}

TEST_P(FilesTest, OnceHoweverManyAsk) {
  Witness mariner(kMariner);
  for (int i = 0; i < 3; ++i) SendItems(Chat(kHarbor, kMariner), {Picture()});
  ASSERT_TRUE(mariner.AwaitReceived(3));
  EXPECT_EQ(link_->Asked(Operation::kUpload), 1) << "one content, one upload";
  const std::wstring path = PathIn(mariner.received[0].msgbody);
  const auto files = kexcore::GetService<biz::IIMFileMgr>();
  std::atomic<int> good{0};
  for (int i = 0; i < 20; ++i) {
    files->Fetch({path}, [&](const biz::ResultCode& result) { good += result.ok() ? 1 : 0; });
  }
  Eventually([&] { return good == 20; }, "all are answered");
  EXPECT_EQ(link_->Asked(Operation::kDownload), 1);
}

// A text behind a file stays behind it, whatever becomes of the link.
TEST_P(FilesTest, TheOrderOfAConversationStays) {
  Witness harbor(kHarbor);
  Witness mariner(kMariner);
  link_->FailNext(Operation::kUpload, Fault::kBreak);
  SendItems(Chat(kHarbor, kMariner), {Picture()});
  Send(kHarbor, kMariner, L"behind");
  ASSERT_TRUE(mariner.AwaitReceived(2));
  EXPECT_EQ(mariner.received[1].msgbody, L"behind");
  ASSERT_TRUE(harbor.AwaitStatuses(2));
  for (const auto& status : harbor.statuses) EXPECT_EQ(status.code, 0);
  // An upload that is not answered fails its message and keeps nothing up.
  link_->FailNext(Operation::kUpload, Fault::kDropRequest);
  SendItems(Chat(kHarbor, kMariner), {Picture("other")});
  Send(kHarbor, kMariner, L"after");
  ASSERT_TRUE(harbor.AwaitStatuses(4));
  EXPECT_EQ(harbor.statuses[2].code, biz::kEngineTimeout);
  EXPECT_EQ(harbor.statuses[3].code, 0);
  EXPECT_EQ(Resend(Chat(kHarbor, kMariner), harbor.statuses[2].msgid, false), 0);
  ASSERT_TRUE(mariner.AwaitReceived(4));
  EXPECT_EQ(Fetch(PathIn(mariner.received[3].msgbody)), 0);
}

TEST_P(FilesTest, ThousandsMayWaitBehindOneFile) {
  constexpr std::size_t kCount = 5000;
  Witness harbor(kHarbor);
  const auto chat = Chat(kHarbor, kMariner);
  SendItems(chat, {Picture()});
  ASSERT_TRUE(harbor.AwaitStatuses(1));
  link_->FailNext(Operation::kUpload, Fault::kRefuse);
  SendItems(chat, {Picture("other")});
  biz::IMSendRequest known;
  known.body = std::make_shared<const std::vector<biz::IMBodyItem>>(1, Picture());
  std::atomic<std::size_t> taken{2};
  for (std::size_t i = 2; i < kCount; ++i) {
    chat->SendMsg(known, [&](const biz::ResultCode& result) { taken += result.ok() ? 1 : 0; });
  }
  ASSERT_TRUE(harbor.AwaitStatuses(kCount));
  std::size_t failed = 0;
  for (const auto& status : harbor.statuses) failed += status.code != 0;
  EXPECT_EQ(failed, 1U) << "the one that the server did not want";
  EXPECT_EQ(taken, kCount);
}

INSTANTIATE_TEST_SUITE_P(Servers, FilesTest, testing::ValuesIn(ServerKinds()), NameOf);

class FarFilesTest : public FilesTest {};

TEST_P(FarFilesTest, AnotherContentThanPromisedIsRefused) {
  Witness mariner(kMariner);
  auto& server = static_cast<FarServer&>(*server_);
  SendItems(Chat(kHarbor, kMariner), {Picture()});
  ASSERT_TRUE(mariner.AwaitReceived(1));
  server.SpoilFiles();
  const std::wstring path = PathIn(mariner.received[0].msgbody);
  EXPECT_EQ(Fetch(path), biz::kEngineStorage);
  EXPECT_FALSE(std::filesystem::exists(folder_.path() / base::WideToUTF8(path)));
}

// Across the link a token names its file alone.
TEST_P(FarFilesTest, NoFolderCrossesTheLink) {
  Witness harbor(kHarbor);
  const std::wstring stranger = L"pic:impicture|m?filepath=files%2Fsomebody%2Fa.png";
  SendItems(Chat(kHarbor, kMariner), {Picture(), Text(L" and " + stranger)});
  ASSERT_TRUE(harbor.AwaitStatuses(1));
  const auto body = static_cast<FarServer&>(*server_).Archived(kHarbor, kMariner).at(0).body;
  const std::wstring name = base::UTF8ToWide(base::MD5String(kContent)) + L".png";
  EXPECT_NE(body.find(L"?filepath=" + name + L"&"), body.npos);
  EXPECT_NE(body.find(stranger), body.npos) << "not this account's to change";
}

INSTANTIATE_TEST_SUITE_P(Servers, FarFilesTest, testing::Values(ServerKinds().at(1)), NameOf);

}  // namespace
}  // namespace imsdk::test
