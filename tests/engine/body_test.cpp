// What becomes of body items.
#include "account/sending/body_composer.h"

#include <algorithm>
#include <fstream>
#include <random>

#include "account/files/data_folder.h"
#include "engine_fixture.h"
#include "kexbase/md5.h"
#include "kexbase/message_body.h"
#include "kexbase/strings.h"

namespace imsdk::test {
namespace {

using account::ComposeBody;
using account::FileBox;

biz::IMBodyItem Item(biz::IMMsgType type, const std::wstring& value,
                     const std::string& content = {}, const std::wstring& path = {},
                     const std::wstring& jvale = {}) {
  return {type, jvale, value, base::FilePath(path), content};
}

const std::string kPng = "\x89PNG\r\n\x1a\n....";

TEST(Body, PictureTokensAreEscapedPartByPart) {
  const struct {
    account::KeptFile picture;
    const wchar_t* token;
  } cases[] = {
      {{L"", L"", L""}, L"pic:impicture|?filepath="},
      {{L"a.png", L"", L"png"}, L"pic:impicture|?filepath=a.png&filetype=png"},
      {{L"a b", L"a b", L"p=g"}, L"pic:impicture|a b?filepath=a%20b&fileMD5=a%20b&filetype=p%3Dg"},
      {{L"50%+1/#'()*!~.png", L"", L""}, L"pic:impicture|?filepath=50%25%2B1%2F%23'()*!~.png"},
  };
  for (const auto& [picture, token] : cases) {
    EXPECT_EQ(base::PictureToken(picture.path, picture.md5, picture.type), token);
  }
}

TEST(Body, ItemsAndTheirTokens) {
  TempFolder folder;
  const FileBox files(folder.path(), "files/harbor");
  const std::wstring md5 = base::UTF8ToWide(base::MD5String(kPng));
  const std::wstring picture = L"pic:impicture|" + md5 + L"?filepath=files%2Fharbor%2F" + md5 +
                               L".png&fileMD5=" + md5 + L"&filetype=png";
  const std::wstring hello_md5 = base::UTF8ToWide(base::MD5String("hello"));
  const std::wstring emotion = L"pic:imemotion|ID?filepath=a.gif&shortcut=%2F%3A%29";
  const struct {
    const char* what;
    std::vector<biz::IMBodyItem> items;
    std::wstring body;
    std::int32_t type;
    std::wstring others;
  } cases[] = {
      {"text", {Text(L"a\n\u4E2D")}, L"a\n\u4E2D", biz::kMsgText, L""},
      {"texts join as they are", {Text(L"a"), Text(L"b")}, L"ab", biz::kMsgText, L""},
      {"picture", {Item(biz::kMsgPicture, L"", kPng)}, picture, biz::kMsgPicture, L""},
      {"picture that is a token already",
       {Item(biz::kMsgPicture, picture)},
       picture,
       biz::kMsgPicture,
       L""},
      {"emotion", {Item(biz::kMsgEmotion, emotion)}, emotion, biz::kMsgEmotion, L""},
      {"mixed",
       {Text(L"see"), Item(biz::kMsgPicture, L"", kPng), Text(L"\nthere")},
       L"see" + picture + L"\x200B\nthere",
       biz::kMsgText,
       L""},
      {"tokens in a text, and one that only two texts together would be",
       {Text(L"a" + emotion + L"\x200B!"), Item(biz::kMsgPicture, L"", kPng), Text(emotion),
        Text(L"pic:impicture"), Text(L"|?filepath=x")},
       L"a" + emotion + L"\x200B!" + picture + L"\x200B" + emotion +
           L"\x200Bpic:impicture|\x200B?filepath=x",
       biz::kMsgText,
       L""},
      {"file",
       {Item(biz::kMsgFile, L"", "hello", L"/no/where/My | notes.TXT")},
       L"file:My _ notes.TXT|filepath=files%2Fharbor%2F" + hello_md5 + L".txt",
       biz::kMsgFile,
       L""},
      {"audio named by its value",
       {Item(biz::kMsgAudio, L"note", "hello")},
       L"file:note|filepath=files%2Fharbor%2F" + hello_md5,
       biz::kMsgAudio,
       L""},
      {"extra of the only item that has one",
       {Text(L"a"), Item(biz::kMsgText, L"b", "", L"", L"{\"k\":1}")},
       L"ab",
       biz::kMsgText,
       L"{\"k\":1}"},
      {"extras of two items",
       {Item(biz::kMsgText, L"a", "", L"", L"1"), Item(biz::kMsgText, L"b", "", L"", L"2")},
       L"ab",
       biz::kMsgText,
       L""},
  };
  for (const auto& one : cases) {
    SCOPED_TRACE(one.what);
    const auto composed = ComposeBody(one.items, files);
    EXPECT_TRUE(composed.result.ok());
    EXPECT_EQ(composed.body, one.body);
    EXPECT_EQ(composed.msgtype, one.type);
    EXPECT_EQ(composed.others, one.others);
  }
  std::ifstream kept(folder.path() / base::WideToUTF8(L"files/harbor/" + md5 + L".png"),
                     std::ios::binary);
  EXPECT_EQ(std::string(std::istreambuf_iterator<char>(kept), {}), kPng);
}

// Texts arrive as they were typed, however they are cut into items and what stands between them.
TEST(Body, TypedTextsArriveAsTheyAre) {
  TempFolder folder;
  const FileBox files(folder.path(), "files/harbor");
  const wchar_t* const pieces[] = {L"pic:impicture", L"|", L"?filepath=", L"filepath=", L"file:",
                                   L"\x200B",        L" ", L"\n",         L"a",         L"\x4E2D"};
  std::mt19937 random(1);
  for (int round = 0; round < 2000; ++round) {
    std::vector<biz::IMBodyItem> items;
    std::wstring typed;
    for (auto left = random() % 5; left > 0; --left) {
      std::wstring text;
      for (auto more = random() % 5; more > 0; --more) text += pieces[random() % std::size(pieces)];
      typed += text;
      base::BodyWriter value;
      value.AddText(text);
      items.push_back(Text(value.Finish()));
      if (random() % 2) continue;
      typed += L'*';
      items.push_back(Item(biz::kMsgEmotion, base::EmotionToken(L"a", text)));
    }
    std::wstring shown;
    const auto composed = ComposeBody(items, files);
    for (const auto& part : base::ReadBody(composed.body)) {
      shown += part.kind == base::BodyPart::kText ? part.source : L"*";
    }
    ASSERT_EQ(shown, typed);
  }
}

TEST(Body, FilesAreCopiedIntoTheDataFolder) {
  TempFolder folder;
  TempFolder elsewhere;
  const FileBox files(folder.path(), "files/harbor", {elsewhere.path()});
  const auto source = elsewhere.path() / std::u8string(u8"b\u00FCro \u6E2F.PNG");
  std::ofstream(source, std::ios::binary) << kPng;
  const std::wstring path = account::FromPath(source).value();
  const auto composed = ComposeBody({Item(biz::kMsgPicture, L"", "", path)}, files);
  ASSERT_TRUE(composed.result.ok());
  std::filesystem::remove(source);
  const std::wstring md5 = base::UTF8ToWide(base::MD5String(kPng));
  // What a message names lies in the data folder and may be sent on under that name.
  const std::wstring relative = L"files/harbor/" + md5 + L".png";
  EXPECT_EQ(ComposeBody({Item(biz::kMsgPicture, L"", "", relative)}, files).body, composed.body);

  EXPECT_EQ(ComposeBody({Item(biz::kMsgFile, L"", "", path)}, files).result.code,
            biz::kEngineNotFound);
  EXPECT_EQ(ComposeBody({Item(biz::kMsgFile, L"", "", L"files")}, files).result.code,
            biz::kEngineNotFound)
      << "a folder";
}

// A page names these files, so it must not reach what it may not see.
TEST(Body, OnlyFilesThatMayBeSentAreCopied) {
  TempFolder above;
  const auto data = above.path() / "data";
  const auto allowed = above.path() / "allowed";
  const auto sibling = above.path() / "allowed-not";
  for (const auto& folder : {data / "files", data / "server", allowed, sibling}) {
    std::filesystem::create_directories(folder);
    std::ofstream(folder / "a.txt") << "content";
  }
  std::filesystem::create_symlink(data / "server" / "a.txt", data / "files" / "link.txt");
  std::filesystem::create_symlink(data / "server", allowed / "server");
  std::filesystem::create_symlink(allowed / "a.txt", data / "server" / "out.txt");
  std::filesystem::create_symlink(allowed, above.path() / "by-link");
  const auto full = [](const std::filesystem::path& path) {
    return account::FromPath(path).value();
  };
  const std::vector<std::filesystem::path> nothing;
  const struct {
    const char* what;
    std::vector<std::filesystem::path> send_from;
    std::wstring path;
    bool sent;
  } cases[] = {
      {"a file of the data folder", nothing, L"files/a.txt", true},
      {"by its full path", nothing, full(data / "files" / "a.txt"), true},
      {"a store", nothing, L"server/a.txt", false},
      {"a store by its full path", nothing, full(data / "server" / "a.txt"), false},
      {"a store by a detour", nothing, L"files/../server/a.txt", false},
      {"a store by a link", nothing, L"files/link.txt", false},
      {"elsewhere", nothing, full(allowed / "a.txt"), false},
      {"allowed", {allowed}, full(allowed / "a.txt"), true},
      {"a folder's beginning", {allowed}, full(sibling / "a.txt"), false},
      {"out of an allowed one", {allowed}, full(allowed / ".." / "allowed-not" / "a.txt"), false},
      {"a store by an allowed link", {allowed}, full(allowed / "server" / "a.txt"), false},
      {"allowed by a link", {above.path() / "by-link"}, full(allowed / "a.txt"), true},
      {"a link in the data folder to it", {allowed}, L"server/out.txt", true},
      {"allowed with the stores inside", {above.path()}, full(data / "server" / "a.txt"), false},
      {"allowed, the stores beside", {above.path()}, full(sibling / "a.txt"), true},
      {"the stores themselves allowed", {data / "server"}, full(data / "server" / "a.txt"), false},
      {"an allowed folder that is not there",
       {above.path() / "no"},
       full(allowed / "a.txt"),
       false},
      {"nothing", {allowed}, full(allowed / "no.txt"), false},
  };
  for (const auto& one : cases) {
    SCOPED_TRACE(one.what);
    const FileBox files(data, "files/harbor", one.send_from);
    account::KeptFile kept;
    const auto result = files.KeepCopy(base::FilePath(one.path), &kept);
    EXPECT_EQ(result.code, one.sent ? 0 : biz::kEngineNotFound);
    EXPECT_EQ(kept.path.empty(), !one.sent);
  }
}

TEST(Body, Limits) {
  const struct {
    const char* what;
    std::vector<biz::IMBodyItem> items;
    biz::EngineCode code;
  } cases[] = {
      {"no items", {}, biz::kEngineEmpty},
      {"empty items", {Text(L""), Item(biz::kMsgPicture, L"")}, biz::kEngineEmpty},
      {"white space", {Text(L" ")}, biz::kEngineOk},
      {"1 MiB", {Text(std::wstring(1024 * 1024, L'x'))}, biz::kEngineOk},
      {"more", {Text(std::wstring(1024 * 1024, L'x')), Text(L"x")}, biz::kEngineTooLarge},
      {"in bytes", {Text(std::wstring(400 * 1024, L'\u6E2F'))}, biz::kEngineTooLarge},
      {"a shake", {Item(biz::kMsgShake, L"")}, biz::kEngineOk},
      {"two shakes", {Item(biz::kMsgShake, L""), Item(biz::kMsgShake, L"")}, biz::kEngineEmpty},
      {"32 MiB", {Item(biz::kMsgFile, L"", std::string(32 << 20, 'x'))}, biz::kEngineOk},
      {"more", {Item(biz::kMsgFile, L"", std::string((32 << 20) + 1, 'x'))}, biz::kEngineTooLarge},
  };
  for (const auto& one : cases) {
    std::size_t content = 0;
    EXPECT_EQ(account::CheckBody(one.items, &content), one.code) << one.what;
  }
}

class BodyTest : public ServerTest {};

// Refusals as the caller of a conversation sees them.
TEST_P(BodyTest, ThroughTheEngine) {
  CreateAccount(User(L"harbor"));
  CreateAccount(User(L"mariner"));
  Login(User(L"harbor"));
  Login(User(L"mariner"));
  Witness harbor(User(L"harbor"));
  Witness mariner(User(L"mariner"));
  const auto chat = Chat(User(L"harbor"), User(L"mariner"));
  EXPECT_EQ(SendItems(chat, {}, {}), biz::kEngineEmpty);
  EXPECT_EQ(SendItems(chat, {Text(std::wstring(2 << 20, L'x'))}, {}), biz::kEngineTooLarge);
  EXPECT_TRUE(History(User(L"harbor"), User(L"mariner")).msgs.empty()) << "nothing is stored";

  const std::wstring large(100 * 1024, L'\u6E2F');
  EXPECT_EQ(SendItems(chat, {Text(large)}, {}), 0);
  ASSERT_TRUE(mariner.AwaitReceived(1));
  EXPECT_EQ(mariner.received[0].msgbody, large);

  ASSERT_TRUE(harbor.AwaitStatuses(1));
  EXPECT_EQ(SendItems(chat, {Item(biz::kMsgPicture, L"", "", L"/no/such.png")}, {}), 0);
  ASSERT_TRUE(harbor.AwaitStatuses(2));
  EXPECT_EQ(harbor.statuses[1].code, biz::kEngineNotFound);
  EXPECT_EQ(harbor.sent[1].msgstatus, biz::kMsgFailed);
  EXPECT_EQ(Resend(chat, harbor.sent[1].msgid, false), 0);
  ASSERT_TRUE(harbor.AwaitStatuses(3));
  EXPECT_EQ(harbor.statuses[2].code, biz::kEngineNotFound) << "its file is still not there";
}

INSTANTIATE_TEST_SUITE_P(Servers, BodyTest, testing::ValuesIn(ServerKinds()), NameOf);

}  // namespace
}  // namespace imsdk::test
