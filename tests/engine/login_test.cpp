// Accounts, passwords, tokens, sessions.
#include <algorithm>
#include <mutex>

#include "engine_fixture.h"

namespace imsdk::test {
namespace {

class LoginTest : public ServerTest {};

TEST_P(LoginTest, SaysWhatIsWrong) {
  ASSERT_TRUE(CreateAccount(User(L"harbor")));
  EXPECT_FALSE(CreateAccount(User(L"harbor"))) << "exists";
  EXPECT_FALSE(CreateAccount({L"cnbazaro", L""}));
  EXPECT_TRUE(TokenOf(*server_, User(L"nobody")).empty());

  std::mutex lock;
  std::vector<std::int32_t> failed;
  Accounts()->Events().on_login_failed.connect([&](const auto&, const auto& result) {
    std::lock_guard hold(lock);
    failed.push_back(result.code);
  });
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
  Eventually(
      [&] {
        std::lock_guard hold(lock);
        return failed.size() == expected.size();
      },
      "each failure is told");
  EXPECT_TRUE(std::is_permutation(failed.begin(), failed.end(), expected.begin()));
  EXPECT_EQ(Logout(User(L"harbor")).code, biz::kEngineNotLoggedIn);
}

TEST_P(LoginTest, TokensLiveOverRestarts) {
  CreateAccount(User(L"harbor"));
  CreateAccount(User(L"mariner"));
  const auto login = Login(User(L"harbor"));
  ASSERT_TRUE(login.result.ok());
  EXPECT_EQ(LoginByToken(User(L"mariner"), login.token).result.code, biz::kEngineTokenExpired)
      << "a token is good for its own account only";
  EXPECT_TRUE(Logout(User(L"harbor")).ok());
  EXPECT_TRUE(LoginByToken(User(L"harbor"), TokenOf(*server_, User(L"harbor"))).result.ok());
  Begin();
  const auto again = LoginByToken(User(L"harbor"), login.token);
  ASSERT_TRUE(again.result.ok()) << "logout and restart leave the token good";
  EXPECT_NE(again.token, login.token);
}

// Who subscribes when the login is answered misses nothing.
TEST_P(LoginTest, TheAnswerComesBeforeEveryEvent) {
  CreateAccount(User(L"harbor"));
  CreateAccount(User(L"mariner"));
  Login(User(L"mariner"));
  Witness mariner(User(L"mariner"));
  Send(User(L"mariner"), User(L"harbor"), L"waits");
  ASSERT_TRUE(mariner.AwaitStatuses(1));
  std::mutex lock;
  std::vector<std::string> order;
  const auto note = [&](const char* what) {
    std::lock_guard hold(lock);
    order.emplace_back(what);
  };
  Accounts()->Events().on_login_ok.connect([&](const auto&) { note("event"); });
  Accounts()->LoginByPassword({User(L"harbor"), L"pass"}, [&](const auto& result, const auto&) {
    note(result.ok() ? "answer" : "failure");
    Chats(User(L"harbor"))
        ->Events()
        .on_receive_offline_msg.connect([&](bool, const auto&, const auto& messages) {
          if (!messages.empty()) note("message");
        });
  });
  Eventually(
      [&] {
        std::lock_guard hold(lock);
        return order.size() >= 3;
      },
      "all three");
  engine_.reset();
  EXPECT_EQ(order, (std::vector<std::string>{"answer", "event", "message"}));
}

TEST_P(LoginTest, AgainWhileLoggedInKeepsTheSession) {
  CreateAccount(User(L"harbor"));
  const auto first = Login(User(L"harbor"));
  const auto account = Accounts()->GetAccount(User(L"harbor"));
  const auto second = Login(User(L"harbor"));
  EXPECT_TRUE(second.result.ok());
  EXPECT_NE(first.token, second.token);
  EXPECT_EQ(Login(User(L"harbor"), L"wrong").result.code, biz::kEngineWrongPassword);
  EXPECT_EQ(Accounts()->GetAccount(User(L"harbor")).get(), account.get());
  EXPECT_EQ(account->GetState(), biz::kAccountOnline);
}

TEST_P(LoginTest, WhatIsKeptAfterLogoutFails) {
  CreateAccount(User(L"harbor"));
  Login(User(L"harbor"));
  const auto account = Accounts()->GetAccount(User(L"harbor"));
  const auto chats = account->GetIMSingleChatMgr();
  const auto chat = chats->GetConversation(biz::IMConversationID(User(L"mariner")));
  int logouts = 0;
  Accounts()->Events().on_logouted.connect([&](const auto&) { ++logouts; });
  EXPECT_TRUE(Logout(User(L"harbor")).ok());
  EXPECT_EQ(logouts, 1);
  EXPECT_NE(account->GetState(), biz::kAccountOnline);
  EXPECT_FALSE(chats->GetConversation(biz::IMConversationID(User(L"mariner"))));
  EXPECT_EQ(SendItems(chat, {Text(L"late")}, {}), biz::kEngineNotLoggedIn);
  EXPECT_EQ(Resend(chat, 1, false), biz::kEngineNotLoggedIn);
  std::int32_t code = 0;
  chat->GetLocalHisMsg({}, [&](const auto& result, auto) { code = result.code; });
  EXPECT_EQ(code, biz::kEngineNotLoggedIn);
  EXPECT_TRUE(Login(User(L"harbor")).result.ok());
  EXPECT_EQ(SendItems(chat, {Text(L"late")}, {}), biz::kEngineNotLoggedIn);
}

TEST_P(LoginTest, OddNamesAreNamesLikeAnyOther) {
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
  CreateAccount(User(L"harbor"));
  Login(User(L"harbor"));
  for (const std::wstring& name : names) {
    ASSERT_TRUE(CreateAccount(User(name)));
    EXPECT_EQ(Send(User(L"harbor"), User(name), name), 0);
  }
  for (const std::wstring& name : names) {
    Witness witness(User(name));
    ASSERT_TRUE(Login(User(name)).result.ok());
    ASSERT_TRUE(witness.AwaitReceived(1));
  }
  std::size_t folders = 0;
  for (const auto& entry : std::filesystem::directory_iterator(folder_.path() / "accounts")) {
    EXPECT_TRUE(std::filesystem::exists(entry.path() / "messages.db"));
    ++folders;
  }
  EXPECT_EQ(folders, std::size(names) + 1);
}

TEST_P(LoginTest, ManyAccountsShareFewThreadsAndFiles) {
  constexpr int kAccounts = 120;
  const auto name = [](int i) { return User(L"user" + std::to_wstring(i)); };
  for (int i = 0; i < kAccounts; ++i) {
    ASSERT_TRUE(CreateAccount(name(i)));
    ASSERT_TRUE(LoginByToken(name(i), TokenOf(*server_, name(i))).result.ok());
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

INSTANTIATE_TEST_SUITE_P(Servers, LoginTest, testing::ValuesIn(ServerKinds()), NameOf);

}  // namespace
}  // namespace imsdk::test
