// Contents of files cross the link in pieces, are kept once, and reach only who may have them.
#include <atomic>
#include <fstream>
#include <iterator>

#include "kexbase/md5.h"
#include "server_fixture.h"

namespace imsdk::test {
namespace {

namespace fs = std::filesystem;

std::string ContentOf(const fs::path& file) {
  std::ifstream in(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), {}};
}

class ServerFiles : public ServerTest {
 protected:
  void SetUp() override {
    CreateAccounts({L"harbor", L"mariner", L"lighthouse"});
    fs::create_directories(folder_ / "client");
  }

  fs::path Write(const std::string& name, const std::string& content) {
    std::ofstream(folder_ / "client" / name, std::ios::binary) << content;
    return folder_ / "client" / name;
  }

  static link::File FileOf(const std::string& content) {
    return {base::MD5String(content) + ".bin", {}, content.size()};
  }

  // Every file below the server's, whole or not.
  std::vector<std::string> Kept() {
    std::vector<std::string> names;
    for (const auto& entry : fs::recursive_directory_iterator(folder_ / "server" / "files")) {
      if (entry.is_regular_file()) names.push_back(ContentOf(entry.path()));
    }
    return names;
  }

  Answered<link::Delivered> Send(Device& from, const biz::IMConversationID& cid, std::int64_t msgid,
                                 const link::File& file) {
    link::Deliver deliver;
    deliver.message.cid = cid;
    deliver.message.msgid = msgid;
    deliver.message.files = {file};
    return from.Ask(deliver);
  }

  std::int32_t Fetch(Device& device, const link::File& file, std::string* content = nullptr) {
    const fs::path to = folder_ / "client" / "fetched";
    fs::remove(to);
    const auto answer = device.Ask(link::Download{file, to, {}});
    if (content) *content = ContentOf(to);
    return answer.result.code;
  }
};

TEST_F(ServerFiles, AFileCrossesInPiecesAndIsKeptOnce) {
  std::string large(3'000'001, '\0');
  for (std::size_t i = 0; i < large.size(); ++i) large[i] = static_cast<char>(i * i >> 7);
  const auto harbor = Connect(L"harbor");
  const auto mariner = Connect(L"mariner");
  std::int64_t msgid = 0;
  for (const std::string& content : {large, std::string("x"), std::string(), large}) {
    SCOPED_TRACE(content.size());
    std::vector<std::uint64_t> steps;
    link::File file = FileOf(content);
    const auto up = harbor->Ask(link::Upload{Write("up", content), file,
                                             [&](std::uint64_t bytes) { steps.push_back(bytes); }});
    ASSERT_TRUE(up.result.ok());
    EXPECT_TRUE(std::is_sorted(steps.begin(), steps.end()));
    EXPECT_EQ(steps.empty() ? 0 : steps.back(), content.size());
    EXPECT_GE(steps.size(), content.size() / 1'000'000);
    file.address = up.reply.address;
    ASSERT_TRUE(Send(*harbor, With(L"mariner"), ++msgid, file).result.ok());
    mariner->Settle();
    EXPECT_EQ(mariner->All<link::Message>().back().files, std::vector<link::File>{file});
    std::string got;
    EXPECT_EQ(Fetch(*mariner, file, &got), biz::kEngineOk);
    EXPECT_TRUE(got == content);
  }
  EXPECT_EQ(Kept().size(), 3U);
}

TEST_F(ServerFiles, WhatIsNotWhatItsNameSaysIsRefusedAndLeavesNothing) {
  const std::string content = "what it is";
  const auto harbor = Connect(L"harbor");
  link::File larger = FileOf(content);
  ++larger.size;
  link::File smaller = FileOf(content);
  --smaller.size;
  const struct {
    link::File file;
    const char* from;
    std::int32_t code;
  } cases[] = {
      {FileOf("something else"), "up", biz::kEngineRefused},
      {larger, "up", biz::kEngineRefused},
      {smaller, "up", biz::kEngineRefused},
      {{"../../evil", {}, content.size()}, "up", biz::kEngineRefused},
      {{"", {}, content.size()}, "up", biz::kEngineRefused},
      {FileOf(content), "missing", biz::kEngineNotFound},
      {FileOf(content), "", biz::kEngineStorage},
  };
  Write("up", content);
  // The second time the server has a content of the right name already.
  for (const bool known : {false, true}) {
    if (known) {
      ASSERT_TRUE(
          harbor->Ask(link::Upload{folder_ / "client" / "up", FileOf(content), {}}).result.ok());
    }
    for (const auto& [file, from, code] : cases) {
      EXPECT_EQ(harbor->Ask(link::Upload{folder_ / "client" / from, file, {}}).result.code, code)
          << file.name << ' ' << from;
    }
    EXPECT_EQ(Kept(), std::vector<std::string>(known ? 1 : 0, content));
  }
}

TEST_F(ServerFiles, OnlyWhoIsPartOfTheConversationFetches) {
  const auto harbor = Connect(L"harbor");
  const auto mariner = Connect(L"mariner");
  const auto lighthouse = Connect(L"lighthouse");
  link::File file = FileOf("private");
  file.address = harbor->Ask(link::Upload{Write("up", "private"), file, {}}).reply.address;
  EXPECT_EQ(Fetch(*mariner, file), biz::kEngineNotFound) << "nobody sent it yet";
  // Knowing a name is not having the content.
  EXPECT_EQ(Send(*lighthouse, With(L"lighthouse"), 1, file).result.code, biz::kEngineNotFound);
  ASSERT_TRUE(Send(*harbor, With(L"mariner"), 2, file).result.ok());
  EXPECT_EQ(Fetch(*harbor, file), biz::kEngineOk);
  EXPECT_EQ(Fetch(*mariner, file), biz::kEngineOk);
  EXPECT_EQ(Fetch(*lighthouse, file), biz::kEngineNotFound);
  for (const char* address : {"", "../../client/up", "x"}) {
    EXPECT_EQ(Fetch(*mariner, {file.name, address, file.size}), biz::kEngineNotFound);
  }
  // Who got it may pass it on; a tribe's members have it from their joining on.
  Tribe({L"mariner"});
  ASSERT_TRUE(Send(*mariner, kTribe, 3, file).result.ok());
  SetMember(L"lighthouse", true);
  EXPECT_EQ(Fetch(*lighthouse, file), biz::kEngineNotFound);
  server_->Change(embedded::SetOpenHistory{kTribe.tribe, true});
  EXPECT_EQ(Fetch(*lighthouse, file), biz::kEngineOk);
  ASSERT_TRUE(Send(*mariner, kTribe, 4, file).result.ok());
  SetMember(L"lighthouse", false);
  EXPECT_EQ(Fetch(*lighthouse, file), biz::kEngineNotFound);
  // What was taken back is out of reach.
  EXPECT_TRUE(harbor->Ask(link::Withdraw{With(L"mariner"), 2}).result.ok());
  for (const std::int64_t msgid : {3, 4}) {
    EXPECT_TRUE(mariner->Ask(link::Withdraw{kTribe, msgid}).result.ok());
  }
  EXPECT_EQ(Fetch(*mariner, file), biz::kEngineNotFound);
  mariner->Settle();
  EXPECT_TRUE(mariner->Ask(link::GetHistory{.cid = With(L"harbor"), .count = 1})
                  .reply.msgs[0]
                  .files.empty());
}

TEST_F(ServerFiles, AnUploadThatIsCutOffGoesOnWhereItEnded) {
  std::string content(50'000'000, 'x');
  for (std::size_t i = 0; i < content.size(); i += 97) content[i] = static_cast<char>(i >> 5);
  auto harbor = Connect(L"harbor");
  const fs::path from = Write("up", content);
  const link::File file = FileOf(content);
  // Cut off after the first piece, and again somewhere behind it.
  std::uint64_t had = 0;
  for (const std::uint64_t cut : {1U, 9'000'000U}) {
    SCOPED_TRACE(cut);
    const auto begun = std::make_shared<std::promise<void>>();
    std::atomic<bool> told{false};
    std::atomic<std::uint64_t> first{0};
    const auto answer = Await<link::Uploaded>([&](auto done) {
      harbor->AskOnly(link::Upload{from, file,
                                   [&](std::uint64_t bytes) {
                                     if (first == 0) first = bytes;
                                     if (bytes >= cut && !told.exchange(true)) begun->set_value();
                                   }},
                      done);
      begun->get_future().wait();
      server_.reset();
    });
    EXPECT_EQ(answer.result.code, biz::kEngineNoLink);
    EXPECT_GT(first.load(), had) << "what was there did not cross again";
    EXPECT_FALSE(fs::exists(folder_ / "server" / "files" / file.name.substr(0, 2)));
    had = Kept().at(0).size();
    EXPECT_GE(had, cut);
    Start();
    harbor = Connect(L"harbor");
  }
  ASSERT_TRUE(harbor->Ask(link::Upload{from, file, {}}).result.ok());
  EXPECT_TRUE(Kept() == std::vector<std::string>{content});

  // A part that somebody spoiled is found out, and does not stay.
  const std::string other = content + "more";
  std::ofstream(folder_ / "server" / "files" / "coming" / ("1-" + base::MD5String(other)))
      << "not its begin";
  const fs::path again = Write("up", other);
  EXPECT_EQ(harbor->Ask(link::Upload{again, FileOf(other), {}}).result.code, biz::kEngineRefused);
  EXPECT_TRUE(harbor->Ask(link::Upload{again, FileOf(other), {}}).result.ok());
}

TEST_F(ServerFiles, ACancelledUploadLeavesNothing) {
  const std::string content(50'000'000, 'x');
  const auto harbor = Connect(L"harbor");
  const auto cancelled = std::make_shared<std::atomic<bool>>(false);
  const auto answer = harbor->Ask(link::Upload{
      Write("up", content), FileOf(content), [&](std::uint64_t) { *cancelled = true; }, cancelled});
  EXPECT_EQ(answer.result.code, biz::kEngineRefused);
  EXPECT_TRUE(Kept().empty());
}

TEST_F(ServerFiles, TooLargeAndTooMuchAreRefusedBeforeTheyCross) {
  options_.largest_file = 1000;
  options_.file_quota = 1500;
  Start();
  const auto harbor = Connect(L"harbor");
  const struct {
    std::size_t size;
    std::int32_t code;
  } cases[] = {{1001, biz::kEngineTooLarge},
               {1000, biz::kEngineOk},
               {501, biz::kEngineTooLarge},
               {500, biz::kEngineOk},
               {1000, biz::kEngineOk}};  // it is there already
  for (const auto& [size, code] : cases) {
    const std::string content(size, 'y');
    const auto up = harbor->Ask(link::Upload{Write("up", content), FileOf(content), {}});
    EXPECT_EQ(up.result.code, code) << size;
    EXPECT_EQ(up.result.text.empty(), code == 0);
  }
}

}  // namespace
}  // namespace imsdk::test
