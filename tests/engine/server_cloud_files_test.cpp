// The files of conversations on the server: who sees which, in which order, and for how long.
#include <fstream>

#include "kexbase/md5.h"
#include "kexbase/message_body.h"
#include "server_fixture.h"

namespace imsdk::test {
namespace {

namespace fs = std::filesystem;

class CloudFiles : public ServerTest {
 protected:
  void SetUp() override {
    CreateAccounts({L"harbor", L"mariner", L"lighthouse"});
    fs::create_directories(folder_ / "client");
  }

  // Sends a file of this name; its number.
  std::int64_t Send(Device& from, const biz::IMConversationID& cid, const std::wstring& name) {
    const std::string content(name.begin(), name.end());
    const fs::path path = folder_ / "client" / "up";
    std::ofstream(path, std::ios::binary) << content;
    link::File file{base::MD5String(content) + ".txt", {}, content.size()};
    file.address = from.Ask(link::Upload{path, file, {}}).reply.address;
    link::Deliver deliver;
    deliver.message.cid = cid;
    deliver.message.msgid = ++last_;
    deliver.message.msgtype = biz::kMsgFile;
    deliver.message.body = base::FileToken(name, std::wstring(file.name.begin(), file.name.end()));
    deliver.message.files = {file};
    const auto sent = from.Ask(deliver);
    EXPECT_TRUE(sent.result.ok());
    return sent.reply.nodes.empty() ? 0 : sent.reply.nodes.front();
  }

  static std::vector<std::wstring> Names(const link::FilesPart& part) {
    std::vector<std::wstring> names;
    for (const link::CloudFile& file : part.files) names.push_back(file.name);
    return names;
  }
  std::vector<std::wstring> List(Device& who, const biz::IMConversationID& cid,
                                 const std::wstring& search = {}) {
    const auto part = who.Ask(link::ListFiles{cid, search});
    EXPECT_TRUE(part.result.ok());
    return Names(part.reply);
  }

  std::int64_t last_ = 0;
};

using Texts = std::vector<std::wstring>;

TEST_F(CloudFiles, PagesStayWhileFilesComeAndGo) {
  const auto harbor = Connect(L"harbor");
  const biz::IMConversationID cid = With(L"mariner");
  std::vector<std::int64_t> nodes;
  for (int i = 0; i < 7; ++i) nodes.push_back(Send(*harbor, cid, L"n" + std::to_wstring(i)));
  link::ListFiles ask{cid, {}, {}, 2};
  auto page = harbor->Ask(ask);
  EXPECT_EQ(Names(page.reply), (Texts{L"n6", L"n5"}));
  // A newer one, the one that the page ended with and the one it would begin with.
  Send(*harbor, cid, L"n7");
  for (const int gone : {5, 4}) {
    EXPECT_TRUE(harbor->Ask(link::DeleteFile{cid, nodes[gone]}).result.ok());
  }
  ask.place = page.reply.next;
  page = harbor->Ask(ask);
  EXPECT_EQ(Names(page.reply), (Texts{L"n3", L"n2"}));
  ask.place = page.reply.next;
  page = harbor->Ask(ask);
  EXPECT_EQ(Names(page.reply), (Texts{L"n1", L"n0"}));
  EXPECT_EQ(page.reply.next, "");
  ask.place = "x";
  EXPECT_EQ(harbor->Ask(ask).result.code, biz::kEngineRefused);

  Send(*harbor, cid, L"Überfahrt 100%.PDF");
  for (const auto& [search, found] :
       std::map<std::wstring, Texts>{{L"ÜBER", {L"Überfahrt 100%.PDF"}},
                                     {L".pdf", {L"Überfahrt 100%.PDF"}},
                                     {L"%", {L"Überfahrt 100%.PDF"}},
                                     {L"n3", {L"n3"}},
                                     {L"_", {}}}) {
    EXPECT_EQ(List(*harbor, cid, search), found);
  }
}

// Whatever identifiers somebody sends who is no part of a conversation.
TEST_F(CloudFiles, ForeignIdentifiersAreRefused) {
  const auto harbor = Connect(L"harbor");
  const auto mariner = Connect(L"mariner");
  const auto lighthouse = Connect(L"lighthouse");
  Tribe({L"harbor", L"mariner"});
  const std::int64_t single = Send(*harbor, With(L"mariner"), L"single");
  const std::int64_t early = Send(*harbor, kTribe, L"early");
  EXPECT_EQ(List(*mariner, {}), (Texts{L"early", L"single"})) << "all of the account";
  EXPECT_EQ(List(*mariner, With(L"harbor")), Texts{L"single"});

  const auto refuses_all = [&](Device& who, std::int64_t node, const char* what) {
    SCOPED_TRACE(what);
    for (const biz::IMConversationID& cid : {kTribe, With(L"harbor"), With(L"mariner"),
                                             With(L"lighthouse"), biz::IMConversationID()}) {
      EXPECT_NE(who.Ask(link::FindFile{cid, node}).result.code, 0);
      EXPECT_NE(who.Ask(link::DeleteFile{cid, node}).result.code, 0);
    }
  };
  for (const std::int64_t node : {single, early}) refuses_all(*lighthouse, node, "outsider");
  EXPECT_EQ(List(*lighthouse, {}), Texts{});
  EXPECT_EQ(List(*lighthouse, With(L"harbor")), Texts{});
  EXPECT_EQ(lighthouse->Ask(link::ListFiles{kTribe}).result.code, biz::kEngineRefused);

  // A member has what was sent since, and nothing once it has left.
  SetMember(L"lighthouse", true);
  refuses_all(*lighthouse, early, "from before its joining");
  const std::int64_t late = Send(*harbor, kTribe, L"late");
  EXPECT_EQ(List(*lighthouse, kTribe), Texts{L"late"});
  EXPECT_EQ(List(*lighthouse, {}), Texts{L"late"});
  const auto found = lighthouse->Ask(link::FindFile{kTribe, late});
  ASSERT_TRUE(found.result.ok());
  const auto deleted = lighthouse->Ask(link::DeleteFile{kTribe, late});
  EXPECT_EQ(deleted.result.code, biz::kEngineRefused) << "neither its sender nor a manager";
  SetMember(L"lighthouse", false);
  refuses_all(*lighthouse, late, "former member");
  EXPECT_EQ(List(*lighthouse, {}), Texts{});
  EXPECT_EQ(
      lighthouse->Ask(link::Download{found.reply.file, folder_ / "client" / "got", {}}).result.code,
      biz::kEngineNotFound);

  // Only its sender deletes a file of two; the owner of a tribe those of others too. All hear it.
  EXPECT_EQ(mariner->Ask(link::DeleteFile{With(L"harbor"), single}).result.code,
            biz::kEngineRefused);
  EXPECT_TRUE(harbor->Ask(link::DeleteFile{With(L"mariner"), single}).result.ok());
  const std::int64_t theirs = Send(*mariner, kTribe, L"theirs");
  EXPECT_TRUE(harbor->Ask(link::DeleteFile{kTribe, theirs}).result.ok());
  EXPECT_EQ(List(*mariner, {}), (Texts{L"late", L"early"}));
  mariner->Settle();
  std::vector<std::int64_t> gone;
  for (const auto& what : mariner->All<link::FileDeleted>()) gone.push_back(what.node);
  EXPECT_EQ(gone, (std::vector<std::int64_t>{single, theirs}));
}

TEST_F(CloudFiles, WhatIsOlderThanTheServerKeepsIsGone) {
  const biz::IMConversationID cid = With(L"mariner");
  const std::int64_t node = Send(*Connect(L"harbor"), cid, L"old");
  for (const auto& [life, there] : {std::pair(0, true), {3'600'000, true}, {1, false}}) {
    options_.file_life_ms = life;
    Start();
    const auto harbor = Connect(L"harbor");
    EXPECT_EQ(harbor->Ask(link::GetFileLife{}).reply.expireTime, life);
    EXPECT_EQ(List(*harbor, cid).size(), there ? 1U : 0U);
    EXPECT_EQ(harbor->Ask(link::FindFile{cid, node}).result.ok(), there);
  }
}

}  // namespace
}  // namespace imsdk::test
