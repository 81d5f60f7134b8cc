// Accounts, passwords, tokens, sessions.
#include <thread>

#include "engine_fixture.h"
#include "imsdk/biz/single_chat.h"

namespace imsdk::test {
namespace {

TEST(Login, SaysWhatIsWrong) {
  TempFolder folder;
  const auto engine = Start(QuickSetup(folder.path()));
  ASSERT_TRUE(engine->CreateAccount(User(L"harbor"), L"pass"));
  EXPECT_FALSE(engine->CreateAccount(User(L"harbor"), L"other")) << "exists";
  EXPECT_FALSE(engine->CreateAccount({L"cnbazaro", L""}, L"pass"));
  EXPECT_TRUE(engine->IssueToken(User(L"nobody")).empty());

  std::vector<std::int32_t> failed;
  const auto handle = Accounts()->Events().on_login_failed.connect(
      [&](const auto&, const auto& result) { failed.push_back(result.code); });
  const struct {
    biz::IMUserID user;
    std::wstring password;
    std::int32_t code;
  } cases[] = {
      {User(L"harbor"), L"Pass", biz::kEngineWrongPassword},
      {User(L"harbor"), L"", biz::kEngineWrongPassword},
      {User(L"Harbor"), L"pass", biz::kEngineUnknownUser},
      {{L"other", L"harbor"}, L"pass", biz::kEngineUnknownUser},
      {{L"", L""}, L"", biz::kEngineUnknownUser},
      {User(std::wstring(257, L'x')), L"pass", biz::kEngineUnknownUser},
  };
  std::vector<std::int32_t> expected;
  for (const auto& one : cases) {
    EXPECT_EQ(Login(one.user, one.password).result.code, one.code);
    EXPECT_FALSE(Accounts()->GetAccount(one.user));
    expected.push_back(one.code);
  }
  EXPECT_EQ(LoginByToken(User(L"harbor"), L"made up").result.code, biz::kEngineTokenExpired);
  expected.push_back(biz::kEngineTokenExpired);
  EXPECT_EQ(failed, expected);
  EXPECT_EQ(Logout(User(L"harbor")).code, biz::kEngineNotLoggedIn);
}

TEST(Login, TokensLiveOverRestartsUntilTheyExpire) {
  TempFolder folder;
  EngineSetup setup = QuickSetup(folder.path());
  std::wstring token;
  {
    const auto engine = Start(setup);
    engine->CreateAccount(User(L"harbor"), L"pass");
    engine->CreateAccount(User(L"mariner"), L"pass");
    const auto login = Login(User(L"harbor"));
    ASSERT_TRUE(login.result.ok());
    token = login.token;
    EXPECT_EQ(LoginByToken(User(L"mariner"), token).result.code, biz::kEngineTokenExpired)
        << "a token is good for its own account only";
    EXPECT_TRUE(Logout(User(L"harbor")).ok());
    EXPECT_TRUE(LoginByToken(User(L"harbor"), engine->IssueToken(User(L"harbor"))).result.ok());
  }
  setup.options.token_life_ms = 150;
  const auto engine = Start(setup);
  const auto again = LoginByToken(User(L"harbor"), token);
  ASSERT_TRUE(again.result.ok()) << "logout and restart leave the token good";
  EXPECT_NE(again.token, token);
  std::this_thread::sleep_for(std::chrono::milliseconds(200));
  EXPECT_EQ(LoginByToken(User(L"harbor"), again.token).result.code, biz::kEngineTokenExpired);
}

TEST(Login, AgainWhileLoggedInKeepsTheSession) {
  TempFolder folder;
  const auto engine = Start(QuickSetup(folder.path()));
  engine->CreateAccount(User(L"harbor"), L"pass");
  const auto first = Login(User(L"harbor"));
  const auto account = Accounts()->GetAccount(User(L"harbor"));
  const auto second = Login(User(L"harbor"));
  EXPECT_TRUE(second.result.ok());
  EXPECT_NE(first.token, second.token);
  EXPECT_EQ(Login(User(L"harbor"), L"wrong").result.code, biz::kEngineWrongPassword);
  EXPECT_EQ(Accounts()->GetAccount(User(L"harbor")).get(), account.get());
  EXPECT_TRUE(account->IsOnline());
}

TEST(Login, WhatIsKeptAfterLogoutFails) {
  TempFolder folder;
  const auto engine = Start(QuickSetup(folder.path()));
  engine->CreateAccount(User(L"harbor"), L"pass");
  Login(User(L"harbor"));
  const auto account = Accounts()->GetAccount(User(L"harbor"));
  const auto chats = account->GetIMSingleChatMgr();
  const auto chat = chats->GetConversation(User(L"mariner"));
  int logouts = 0;
  Accounts()->Events().on_logouted.connect([&](const auto&) { ++logouts; });
  EXPECT_TRUE(Logout(User(L"harbor")).ok());
  EXPECT_EQ(logouts, 1);
  EXPECT_FALSE(account->IsOnline());
  EXPECT_FALSE(chats->GetConversation(User(L"mariner")));
  EXPECT_EQ(chat->SendMsg({Text(L"late")}, {}), biz::kEngineNotLoggedIn);
  EXPECT_EQ(chat->ReSendMsg(1, false), biz::kEngineNotLoggedIn);
  std::int32_t code = 0;
  chat->GetLocalHisMsg({}, [&](const auto& result, auto) { code = result.code; });
  EXPECT_EQ(code, biz::kEngineNotLoggedIn);
  EXPECT_TRUE(Login(User(L"harbor")).result.ok());
  EXPECT_EQ(chat->SendMsg({Text(L"late")}, {}), biz::kEngineNotLoggedIn);
}

TEST(Login, OddNamesAreNamesLikeAnyOther) {
  TempFolder folder;
  const auto engine = Start(QuickSetup(folder.path()));
  const std::wstring names[] = {
      L"../../etc/passwd",
      L"a/b\\c",
      L".",
      L"con",
      L"NAME",
      L"name",
      L"na:me",
      L"\U0001F600\u05D0\u4E2D",
      L"'; DROP TABLE",
      L"%00",
      std::wstring(L"nul\0l", 5),
      std::wstring(256, L'\u6E2F'),
      std::wstring(1, static_cast<wchar_t>(0xD800)),  // not text: becomes U+FFFD
  };
  engine->CreateAccount(User(L"harbor"), L"pass");
  Login(User(L"harbor"));
  for (const std::wstring& name : names) {
    ASSERT_TRUE(engine->CreateAccount(User(name), L"pass"));
    EXPECT_EQ(Send(User(L"harbor"), User(name), name), 0);
  }
  for (const std::wstring& name : names) {
    Witness witness(User(name));
    ASSERT_TRUE(Login(User(name)).result.ok());
    ASSERT_TRUE(witness.AwaitReceived(1));
  }
  std::size_t folders = 0;
  for (const auto& entry : std::filesystem::directory_iterator(folder.path() / "accounts")) {
    EXPECT_TRUE(std::filesystem::exists(entry.path() / "messages.db"));
    ++folders;
  }
  EXPECT_EQ(folders, std::size(names) + 1);
}

TEST(Login, ManyAccountsShareFewThreadsAndFiles) {
  TempFolder folder;
  const auto engine = Start(QuickSetup(folder.path()));
  constexpr int kAccounts = 120;
  const auto name = [](int i) { return User(L"user" + std::to_wstring(i)); };
  for (int i = 0; i < kAccounts; ++i) {
    ASSERT_TRUE(engine->CreateAccount(name(i), L"pass"));
    ASSERT_TRUE(LoginByToken(name(i), engine->IssueToken(name(i))).result.ok());
  }
  const auto count = [](const char* path) {
    return std::distance(std::filesystem::directory_iterator(path),
                         std::filesystem::directory_iterator());
  };
  EXPECT_LT(count("/proc/self/task"), 20);
  EXPECT_LT(count("/proc/self/fd"), 300) << "idle stores are closed";
  Witness last(name(kAccounts - 1));
  for (int i = 0; i < kAccounts - 1; i += 10) Send(name(i), name(kAccounts - 1), L"hello");
  last.AwaitReceived(kAccounts / 10);
}

}  // namespace
}  // namespace imsdk::test
