// Cloud files as an account has them: their names, their way here and there, and what is told.
#include <atomic>
#include <fstream>
#include <mutex>

#include "account/files/data_folder.h"
#include "account/files/file_names.h"
#include "device.h"
#include "imsdk/biz/file_transfer.h"
#include "kexbase/md5.h"
#include "kexbase/strings.h"

namespace imsdk::test {
namespace {

namespace fs = std::filesystem;

TEST(FileNames, AreFitForEveryDisk) {
  const std::wstring kLong(300, L'a');
  const std::pair<std::wstring, std::wstring> cases[] = {
      {L"report.pdf", L"report.pdf"},
      {L"../../etc/passwd", L"passwd"},
      {L"..\\..\\boot.ini", L"boot.ini"},
      {L"C:\\Windows\\x.dll", L"x.dll"},
      {L"C:x.txt", L"C_x.txt"},
      {L"..", L"file"},
      {L".", L"file"},
      {L"", L"file"},
      {L"a/", L"file"},
      {L"CON", L"_CON"},
      {L"con.txt", L"_con.txt"},
      {L"Lpt9 .log", L"_Lpt9 .log"},
      {L"COM\x00b2", L"_COM\x00b2"},
      {L"console.txt", L"console.txt"},
      {L"a\nb\x7f\x85"
       L"c.txt",
       L"abc.txt"},
      {std::wstring(L"a\0b", 3), L"ab"},
      {L"photo\x202Egpj.exe", L"photogpj.exe"},
      {L"\x2066x\x2069\x200F.txt", L"x.txt"},
      {L"name. . ", L"name"},
      {L"  x", L"x"},
      {L"a<b>c|d?e*f\"g", L"a_b_c_d_e_f_g"},
      {kLong + L".txt", std::wstring(251, L'a') + L".txt"},
      {kLong, std::wstring(255, L'a')},
      {std::wstring(200, L'\x6E2F') + L".png", std::wstring(83, L'\x6E2F') + L".png"},
  };
  for (const auto& [name, clean] : cases) {
    EXPECT_EQ(account::CleanFileName(name), clean) << base::WideToUTF8(name);
    EXPECT_EQ(account::CleanFileName(clean), clean);
    EXPECT_LE(base::Utf8Length(clean), 255U);
  }
}

class CloudFilesTest : public PeersTest {
 protected:
  using Info = biz::FileTransferInfo;
  struct Told {
    std::mutex lock;
    std::vector<std::pair<std::int64_t, biz::CloudFileMeta>> metas;
    std::vector<std::pair<std::int64_t, Info>> infos;
  };

  static RefPtr<biz::IIMFileTransfer> Files(const biz::IMUserID& user) {
    return Accounts()->GetAccount(user)->GetIMFileTransfer();
  }
  static std::shared_ptr<Told> Listen(const biz::IMUserID& user) {
    const auto told = std::make_shared<Told>();
    const auto files = Files(user);
    files->Events().on_update_cloud_file_meta.connect([told](std::int64_t id, const auto& meta) {
      const std::lock_guard hold(told->lock);
      told->metas.emplace_back(id, meta);
    });
    files->Events().on_update_transfer_info.connect([told](std::int64_t id, const Info& info) {
      const std::lock_guard hold(told->lock);
      told->infos.emplace_back(id, info);
    });
    return told;
  }
  static bool Ended(Told& told, std::int64_t id, biz::IMTransferStatus status) {
    const std::lock_guard hold(told.lock);
    return std::any_of(told.infos.begin(), told.infos.end(), [&](const auto& one) {
      return one.first == id && one.second.status == status;
    });
  }

  // A file in the data folder that may be sent.
  base::FilePath Make(const std::string& name, const std::string& content) {
    fs::create_directories(folder_.path() / "files");
    std::ofstream(folder_.path() / "files" / name, std::ios::binary) << content;
    return base::FilePath::FromUTF8("files/" + name);
  }
  static std::string Large(std::size_t size, unsigned seed = 7) {
    std::string content(size, '\0');
    for (char& letter : content)
      letter = static_cast<char>((seed = seed * 1664525 + 1013904223) >> 24);
    return content;
  }
  biz::CloudFileMeta SendFile(const std::string& content, const std::string& name = "tides.bin") {
    biz::IMBodyItem item;
    item.type = biz::kMsgFile;
    item.filepath = Make(name, content);
    Witness mariner(kMariner);
    EXPECT_EQ(SendItems(Chat(kHarbor, kMariner), {item}), 0);
    mariner.AwaitReceived(1);
    const auto [result, files] = List();
    EXPECT_TRUE(result.ok());
    return files.filesList.empty() ? biz::CloudFileMeta() : files.filesList.front();
  }
  std::pair<biz::ResultCode, biz::CloudFiles> List() {
    return Answer<biz::CloudFiles>([&](auto done) {
      Files(kMariner)->GetCloudFileList({biz::IMConversationID(kHarbor)}, done);
    });
  }
  std::string Here(const biz::CloudFileMeta& file) {
    const auto info =
        Answer<Info>([&](auto done) { Files(kMariner)->GetFileTransferInfo(file, done); }).second;
    if (info.filePath.empty()) return {};
    std::ifstream in(folder_.path() / base::WideToUTF8(info.filePath), std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
  }
  fs::path PartOf(const biz::CloudFileMeta& file) {
    const account::DataFolder folder(folder_.path());
    return folder.IncomingFolder(kMariner) / (base::WideToUTF8(file.md5) + ".bin");
  }
};

// The client was killed, and left as much of the file as it had.
TEST_P(CloudFilesTest, ADownloadGoesOnFromWhatAnEarlierRunLeft) {
  const std::string content = Large(2'000'003);
  const biz::CloudFileMeta file = SendFile(content);
  ASSERT_NE(file.id, 0);
  EXPECT_EQ(file.nodeName, L"tides.bin");
  EXPECT_EQ(file.nodeSize, 2'000'003);
  const account::DataFolder folder(folder_.path());
  const fs::path final_place = folder.FileOf(kMariner, PartOf(file).filename().string());
  for (const std::size_t part :
       {std::size_t{0}, std::size_t{1}, std::size_t{999'999}, content.size() - 1, content.size()}) {
    SCOPED_TRACE(part);
    Again();
    fs::remove(final_place);
    fs::create_directories(PartOf(file).parent_path());
    std::ofstream(PartOf(file), std::ios::binary) << content.substr(0, part);
    const auto told = Listen(kMariner);
    ASSERT_TRUE(Done([&](auto done) { Files(kMariner)->DownloadCloudFile(file, done); }).ok());
    // A second one of the same file, while the first is under way or just over.
    ASSERT_TRUE(Done([&](auto done) { Files(kMariner)->DownloadCloudFile(file, done); }).ok());
    Eventually([&] { return Ended(*told, file.id, biz::kTransferDone); }, "the file is here");
    EXPECT_TRUE(Here(file) == content);
    EXPECT_FALSE(fs::exists(PartOf(file)));
  }
  // A part that is no begin of it is found out, dropped, and the next try is good.
  fs::remove(final_place);
  std::ofstream(PartOf(file), std::ios::binary) << "something else";
  const auto preview = [&] {
    return Answer<Info>([&](auto done) { Files(kMariner)->PreviewCloudFile(file, done); });
  };
  EXPECT_EQ(preview().first.code, biz::kEngineStorage);
  EXPECT_FALSE(fs::exists(final_place));
  const auto [result, info] = preview();
  EXPECT_TRUE(result.ok());
  EXPECT_EQ(info.progress, 100);
  EXPECT_TRUE(Here(file) == content);
}

TEST_P(CloudFilesTest, CancelledDownloadsLeaveNothing) {
  const std::string content = Large(30'000'000);
  const biz::CloudFileMeta file = SendFile(content);
  const auto told = Listen(kMariner);
  const auto cancel = [&] {
    return Done([&](auto done) { Files(kMariner)->CancelDownloadCloudFile(file, done); }).code;
  };
  EXPECT_EQ(cancel(), biz::kEngineNotFound) << "nothing is under way";
  ASSERT_TRUE(Done([&](auto done) { Files(kMariner)->DownloadCloudFile(file, done); }).ok());
  ASSERT_EQ(cancel(), 0);
  Eventually([&] { return Ended(*told, file.id, biz::kTransferCancelled); }, "it is told");
  Eventually([&] { return !fs::exists(PartOf(file)); }, "nothing is left");
  EXPECT_EQ(Here(file), "");
  ASSERT_TRUE(Done([&](auto done) { Files(kMariner)->DownloadCloudFile(file, done); }).ok());
  Eventually([&] { return Ended(*told, file.id, biz::kTransferDone); }, "another try is good");
  EXPECT_TRUE(Here(file) == content);
}

// A text that is typed while a large file goes up is not held back, and the upload is told.
TEST_P(CloudFilesTest, ATextOvertakesALargeFile) {
  const auto told = Listen(kHarbor);
  Witness mariner(kMariner);
  Witness harbor(kHarbor);
  biz::IMBodyItem item;
  item.type = biz::kMsgFile;
  item.filepath = Make("large.bin", Large(20'000'000));
  ASSERT_EQ(SendItems(Chat(kHarbor, kMariner), {item}), 0);
  ASSERT_EQ(Send(kHarbor, kMariner, L"quick"), 0);
  ASSERT_TRUE(harbor.AwaitStatuses(2));
  ASSERT_TRUE(mariner.AwaitReceived(2));
  EXPECT_EQ(mariner.received[0].msgbody, L"quick");
  EXPECT_EQ(harbor.sent[0].msgtype, biz::kMsgFile) << "its own message appeared at once";
  const std::int64_t up = -harbor.sent[0].msgid;
  EXPECT_TRUE(Ended(*told, up, biz::kTransferDone));
  const std::lock_guard hold(told->lock);
  ASSERT_FALSE(told->metas.empty());
  EXPECT_EQ(told->metas[0].first, up);
  EXPECT_EQ(told->metas[0].second.nodeName, L"large.bin");
}

// Nor is it by the copy that is made of the file first, which a logout ends and leaves nothing of.
TEST_P(CloudFilesTest, ALargeFileIsCopiedAside) {
  biz::IMSendRequest large;
  biz::IMBodyItem item;
  item.type = biz::kMsgFile;
  const std::string content = Large(150'000'000, 5);
  item.filepath = Make("large.bin", content);
  large.body = std::make_shared<const std::vector<biz::IMBodyItem>>(1, item);
  const auto chat = Chat(kHarbor, kMariner);
  struct Answers {
    std::mutex lock;
    std::vector<std::int32_t> codes;
  };
  const auto answers = std::make_shared<Answers>();
  const auto answered = [answers](const biz::ResultCode& result) {
    const std::lock_guard hold(answers->lock);
    answers->codes.push_back(result.code);
  };
  const auto count = [answers] {
    const std::lock_guard hold(answers->lock);
    return answers->codes.size();
  };
  Witness mariner(kMariner);
  // The same body twice is copied once.
  for (int i = 0; i < 2; ++i) chat->SendMsg(large, answered);
  EXPECT_EQ(Send(kHarbor, kMariner, L"quick"), 0);
  EXPECT_EQ(count(), 0U) << "the text was stored before the file was copied";
  ASSERT_TRUE(mariner.AwaitReceived(3));
  EXPECT_EQ(mariner.received[0].msgbody, L"quick");
  EXPECT_EQ(count(), 2U);
  const auto files = List().second.filesList;
  ASSERT_EQ(files.size(), 2U);
  EXPECT_EQ(files[0].md5, files[1].md5);
  EXPECT_EQ(files[0].nodeSize, 150'000'000);

  const auto held = [&] {
    std::size_t files_here = 0;
    const account::DataFolder folder(folder_.path());
    for ([[maybe_unused]] const auto& one :
         fs::directory_iterator(folder.FileOf(kHarbor, "x").parent_path())) {
      ++files_here;
    }
    return files_here;
  };
  const std::size_t before = held();
  item.filepath = Make("other.bin", content + "!");
  large.body = std::make_shared<const std::vector<biz::IMBodyItem>>(1, item);
  chat->SendMsg(large, answered);
  ASSERT_TRUE(Done([&](auto done) { Accounts()->Logout({kHarbor}, done); }).ok());
  Eventually([&] { return count() == 3; }, "the message is answered");
  EXPECT_EQ(answers->codes[2], biz::kEngineNotLoggedIn);
  Eventually([&] { return held() == before; }, "nothing is left of the copy");
}

TEST_P(CloudFilesTest, ACancelledUploadIsAMessageThatFailed) {
  const auto told = Listen(kHarbor);
  Witness harbor(kHarbor);
  biz::IMBodyItem item;
  item.type = biz::kMsgFile;
  item.filepath = Make("large.bin", Large(30'000'000, 9));
  ASSERT_EQ(SendItems(Chat(kHarbor, kMariner), {item}), 0);
  Eventually(
      [&] {
        const std::lock_guard hold(told->lock);
        return !told->metas.empty();
      },
      "the upload is told");
  biz::CloudFileMeta file;
  file.id = told->metas[0].first;
  EXPECT_EQ(Done([&](auto done) { Files(kHarbor)->CancelUploadFile(file, done); }).code, 0);
  ASSERT_TRUE(harbor.AwaitStatuses(1));
  EXPECT_EQ(harbor.statuses[0].code, biz::kEngineRefused);
  EXPECT_TRUE(List().second.filesList.empty());
}

TEST_P(CloudFilesTest, FoldersOutsideTheFilesAreNotOpened) {
  Make("there.txt", "x");
  fs::create_symlink("/", folder_.path() / "files" / "out");
  const std::pair<std::wstring, std::int32_t> cases[] = {
      {L"files/there.txt", 0},
      {L"files", 0},
      {L"files/../client", biz::kEngineNotFound},
      {L"files/out/tmp", biz::kEngineNotFound},
      {L"client", biz::kEngineNotFound},
      {L"/tmp", biz::kEngineNotFound},
      {L"files/missing", biz::kEngineNotFound},
      {L"", biz::kEngineNotFound},
  };
  for (const auto& [path, code] : cases) {
    EXPECT_EQ(Done([&](auto done) { Files(kHarbor)->OpenFolder({path}, done); }).code, code)
        << base::WideToUTF8(path);
  }
}

INSTANTIATE_TEST_SUITE_P(Embedded, CloudFilesTest, testing::Values(ServerKinds().front()), NameOf);

}  // namespace
}  // namespace imsdk::test
