// Business module "im.login".

#include <gtest/gtest.h>

#include <chrono>
#include <thread>

#include "imsdk/client/chat_window.h"
#include "tests/support/memory_engine.h"
#include "tests/support/test_host.h"

namespace imsdk {
namespace {

using test::TestHost;

const std::wstring kPath = L"im.login";
constexpr wchar_t kGoodLogin[] =
    LR"({"userid":{"appkey":"cnbazaro","nick":"lighthouse"},"password":"demo"})";
constexpr wchar_t kBadLogin[] =
    LR"({"userid":{"appkey":"cnbazaro","nick":"lighthouse"},"password":"no"})";

std::vector<std::wstring> Events(const TestHost& host) {
  std::vector<std::wstring> names;
  for (const auto& notification : host.page.notifications) names.push_back(notification.event);
  return names;
}

TEST(Login, RunsThroughItsLife) {
  test::MemoryEngine engine;
  TestHost host;
  host.Bind();
  host.Invoke(L"workbench.im.event_register", L"r", L"register_all");
  EXPECT_TRUE(host.Call(kPath, L"GetCurrentLoginID").failed);

  EXPECT_TRUE(host.Call(kPath, L"DoLoginByPassWord", kBadLogin).failed);
  const auto failed = host.log->Lines(L"DoLogin failed!!");
  ASSERT_EQ(failed.size(), 1u);
  EXPECT_EQ(failed[0].level, 3);
  EXPECT_EQ(failed[0].function, "CBridgeIMLogin::DoLoginByPassWord");

  const auto login = host.Call(kPath, L"DoLoginByPassWord", kGoodLogin);
  EXPECT_EQ(login.payload,
            LR"({"code":0,"subcode":0,"result":"success",)"
            LR"("userid":{"appkey":"cnbazaro","nick":"lighthouse"},"token":"demo","expires":"1"})");
  EXPECT_EQ(host.Call(kPath, L"GetCurrentLoginID").payload,
            LR"({"code":0,"subcode":0,"result":"success",)"
            LR"("userid":{"appkey":"cnbazaro","nick":"lighthouse"}})");
  EXPECT_NE(host.Call(kPath, L"DoLoginByPassWord", kGoodLogin).payload.find(L"Alread Login"),
            std::wstring::npos);
  EXPECT_FALSE(host.Call(kPath, L"DoNetReConnect").failed);
  EXPECT_FALSE(host.Call(kPath, L"DoLogout").failed);
  EXPECT_TRUE(host.Call(kPath, L"GetCurrentLoginID").failed);
  EXPECT_TRUE(host.Call(kPath, L"DoLogout").failed);
  EXPECT_EQ(host.log->Lines(L"DoLogout failed!!").size(), 1u);
  EXPECT_TRUE(host.Call(kPath, L"DoNetReConnect").failed);
  EXPECT_EQ(host.log->Lines(L"DoNetReConnect failed!!").size(), 1u);

  EXPECT_EQ(Events(host), (std::vector<std::wstring>{L"onIMLoginFailed", L"onIMLoginOK",
                                                     L"onNetReConnectOK", L"onIMLogouted"}));
}

// The table of include/bridge/imsdkbridge.h: what a view hears, and whether it is logged in then.
TEST(Login, AViewHearsOfItsOwnSession) {
  using test::kLighthouse;
  enum Before { kNobody, kRefused, kBound, kIn };
  const auto own = [](const wchar_t* json) {
    return [json](TestHost& host, test::MemoryEngine&) {
      host.Call(kPath, L"DoLoginByPassWord", json);
    };
  };
  const auto other = [](const wchar_t* password) {
    return [password](TestHost&, test::MemoryEngine& engine) {
      engine.accounts->LoginByPassword({kLighthouse, password}, [](const auto&...) {});
    };
  };
  const auto logout = [](TestHost&, test::MemoryEngine& engine) {
    engine.accounts->Logout({kLighthouse}, [](const auto&) {});
  };
  const auto late_logout = [](TestHost&, test::MemoryEngine& engine) {
    engine.accounts->events.on_logouted(kLighthouse);
  };
  const auto reconnect = [](TestHost&, test::MemoryEngine& engine) {
    engine.accounts->events.on_net_reconnect_ok(kLighthouse);
    engine.accounts->events.on_net_reconnect_failed(kLighthouse, {biz::kEngineNoLink, 0, {}});
  };
  const struct {
    const char* what;
    std::function<void(TestHost&, test::MemoryEngine&)> happens;
    struct {
      std::vector<std::wstring> hears;
      bool in;
    } then[4];  // by what the view was before
  } rows[] = {
      {"own login",
       own(kGoodLogin),
       {{{L"onIMLoginOK"}, true}, {{L"onIMLoginOK"}, true}, {{L"onIMLoginOK"}, true}, {{}, true}}},
      {"own failure",
       own(kBadLogin),
       {{{L"onIMLoginFailed"}, false},
        {{L"onIMLoginFailed"}, false},
        {{L"onIMLoginFailed"}, false},
        {{}, true}}},
      {"another view's login",
       other(L"demo"),
       {{{}, false}, {{}, false}, {{L"onIMLoginOK"}, true}, {{}, true}}},
      {"another view's failure", other(L"no"), {{{}, false}, {{}, false}, {{}, false}, {{}, true}}},
      {"logout", logout, {{{}, false}, {{}, false}, {{}, false}, {{L"onIMLogouted"}, false}}},
      {"logout of a session before",
       late_logout,
       {{{}, false}, {{}, false}, {{}, false}, {{}, true}}},
      {"link",
       reconnect,
       {{{}, false},
        {{}, false},
        {{}, false},
        {{L"onNetReConnectOK", L"onNetReConnectFailed"}, true}}},
  };
  for (const auto& row : rows) {
    for (const Before before : {kNobody, kRefused, kBound, kIn}) {
      test::MemoryEngine engine;
      TestHost host;
      host.Bind(before == kBound ? kLighthouse : biz::IMUserID());
      host.Invoke(L"workbench.im.event_register", L"r", L"register_all");
      if (before == kRefused) host.Call(kPath, L"DoLoginByPassWord", kBadLogin);
      if (before == kIn) host.Call(kPath, L"DoLoginByPassWord", kGoodLogin);
      host.page.notifications.clear();
      row.happens(host, engine);
      host.RunLoop();
      EXPECT_EQ(Events(host), row.then[before].hears) << row.what << before;
      EXPECT_EQ(!host.Call(kPath, L"GetCurrentLoginID").failed, row.then[before].in)
          << row.what << before;
      EXPECT_EQ(!host.Call(L"im.singlemsg", L"GetUnreadCountInBulk").failed, row.then[before].in)
          << row.what << before;
    }
  }
}

// Two accounts under way for one view: one of them would stay logged in for nobody.
TEST(Login, OneAtATime) {
  test::MemoryEngine engine;
  std::vector<std::function<void()>> open;
  engine.accounts->on_login = [&](std::function<void()> finish) { open.push_back(finish); };
  TestHost host;
  host.Bind();
  host.Invoke(L"workbench.im.login.invoke", L"1", L"DoLoginByPassWord", kGoodLogin);
  const auto second =
      host.Call(kPath, L"DoLoginByToken",
                LR"({"userid":{"appkey":"cnbazaro","nick":"mariner"},"token":"demo"})");
  EXPECT_EQ(second.payload,
            LR"({"code":-2147418113,"subcode":0,"result":"another login is under way"})");
  ASSERT_EQ(open.size(), 1u);
  // An engine that drops a login answers it, and another may begin.
  open.clear();
  ASSERT_EQ(host.page.answers.size(), 2u);
  EXPECT_TRUE(host.page.answers[1].failed);
  host.Invoke(L"workbench.im.login.invoke", L"2", L"DoLoginByPassWord", kGoodLogin);
  ASSERT_EQ(open.size(), 1u);
  open[0]();
  EXPECT_FALSE(host.Call(kPath, L"GetCurrentLoginID").failed);
}

// Going from one account to the next gains a view nothing, nor does a login of its own in between;
// nobody is shut out, and a token does not wait.
TEST(Login, AViewThatTriesPasswordsIsSlowed) {
  const auto login = [](const std::wstring& nick, const wchar_t* proof) {
    return LR"({"userid":{"appkey":"cnbazaro","nick":")" + nick + LR"("},)" + proof + L"}";
  };
  test::MemoryEngine engine;
  TestHost host;
  host.Bind();
  host.Call(kPath, L"DoLoginByPassWord", kGoodLogin);
  host.Call(kPath, L"DoLogout");
  for (const wchar_t* nick : {L"a", L"b", L"c", L"d"}) {
    EXPECT_TRUE(host.Call(kPath, L"DoLoginByPassWord", login(nick, LR"("password":"x")")).failed);
    if (*nick != L'b') continue;
    EXPECT_FALSE(host.Call(kPath, L"DoLoginByPassWord", kGoodLogin).failed);
    EXPECT_FALSE(host.Call(kPath, L"DoLogout").failed);
  }
  EXPECT_FALSE(
      host.Call(kPath, L"DoLoginByToken", login(L"lighthouse", LR"("token":"demo")")).failed);
  EXPECT_FALSE(host.Call(kPath, L"DoLogout").failed);

  const auto start = std::chrono::steady_clock::now();
  const size_t answers = host.page.answers.size();
  host.Invoke(L"workbench.im.login.invoke", L"last", L"DoLoginByPassWord", kGoodLogin);
  EXPECT_EQ(host.page.answers.size(), answers);
  const auto second =
      host.Call(kPath, L"DoLoginByToken", login(L"lighthouse", LR"("token":"demo")"));
  EXPECT_NE(second.payload.find(L"another login is under way"), second.payload.npos);
  while (host.page.answers.size() == answers + 1 &&
         std::chrono::steady_clock::now() - start < std::chrono::seconds(10)) {
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
    host.RunLoop();
  }
  ASSERT_EQ(host.page.answers.size(), answers + 2);
  EXPECT_EQ(host.page.answers.back().seq, L"last");
  EXPECT_FALSE(host.page.answers.back().failed);
  EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(200));
}

// The account that a view is bound to comes while the page tries another one.
TEST(Login, WhatABoundViewWaitsForIsNotLost) {
  for (const bool own : {true, false}) {
    test::MemoryEngine engine;
    std::function<void()> finish;
    TestHost host;
    host.Bind(test::kLighthouse);
    engine.accounts->on_login = [&](std::function<void()> open) { finish = std::move(open); };
    host.Invoke(L"workbench.im.login.invoke", L"1", L"DoLoginByToken",
                LR"({"userid":{"appkey":"cnbazaro","nick":"mariner"},"token":"demo"})");
    engine.accounts->on_login = nullptr;
    engine.accounts->LoginByToken({test::kLighthouse, L"demo"}, [](const auto&...) {});
    EXPECT_TRUE(host.Call(kPath, L"GetCurrentLoginID").failed);
    if (own) finish();
    finish = nullptr;
    host.RunLoop();
    const auto who = host.Call(kPath, L"GetCurrentLoginID").payload;
    EXPECT_NE(who.find(own ? L"mariner" : L"lighthouse"), who.npos) << own;
  }
}

class Windows final : public RefPtrCounted<client::IChatWindowService> {
 public:
  void SetViewAccount(const std::wstring& view, const biz::IMUserID& account) override {
    told += view + L":" + account.nick + L" ";
  }
  bool IsVisible(const biz::IMUserID&, const biz::IMConversationID&) override { return false; }
  bool IsActivated(const biz::IMUserID&, const biz::IMConversationID&) override { return false; }
  std::wstring told;
};

TEST(Login, TheClientKnowsWhoseWindowsAViewHas) {
  const RefPtr<Windows> windows(new Windows);
  GetKexCOM()->RegisterService(client::IChatWindowService::kServiceId, windows.get());
  test::MemoryEngine engine;
  {
    TestHost host;
    host.Bind();
    host.Call(kPath, L"DoLoginByPassWord", kGoodLogin);
    host.Call(kPath, L"DoLogout");
  }
  {
    TestHost host;
    host.Bind(test::kHarbor);
  }
  GetKexCOM()->UnregisterService(client::IChatWindowService::kServiceId);
  EXPECT_EQ(windows->told, L"view-1:lighthouse view-1: view-1: view-1:harbor view-1: ");
}

class AccountAtFirst final : public bridge::CBridgeBase {
 public:
  AccountAtFirst(bridge::ModuleContext context, std::vector<std::wstring>* seen)
      : CBridgeBase(std::move(context)), seen_(seen) {}
  void OwnerPreConstruct() override { seen_->push_back(L"construct " + Account().nick); }

 private:
  void OnAccountChanged(biz::IIMAccount* engine) override {
    seen_->push_back(engine ? L"engine" : L"no engine");
  }
  std::vector<std::wstring>* const seen_;
};

TEST(Login, AModuleHasItsAccountBeforeItIsConstructed) {
  test::MemoryEngine engine;
  std::vector<std::wstring> seen;
  TestHost host([&](bridge::ModuleTable& modules, const bridge::ModuleContext& context) {
    modules[L"im.contact"] = std::make_shared<AccountAtFirst>(context, &seen);
  });
  host.Bind(test::kHarbor);
  EXPECT_EQ(seen, (std::vector<std::wstring>{L"engine", L"construct harbor"}));
}

TEST(Login, ConcernsOnlyItsOwnView) {
  test::MemoryEngine engine;
  TestHost host;
  host.Bind(test::kHarbor);
  host.Invoke(L"workbench.im.event_register", L"r", L"register_all");
  engine.accounts->LoginByToken({test::kLighthouse, L"demo"}, [](const auto&...) {});
  engine.accounts->Logout({test::kLighthouse}, [](const biz::ResultCode&) {});
  EXPECT_TRUE(Events(host).empty());
  // Another account may not slip under the view's modules.
  EXPECT_TRUE(host.Call(kPath, L"DoLoginByToken",
                        LR"({"userid":{"appkey":"cnbazaro","nick":"mariner"},"token":"demo"})")
                  .failed);
}

TEST(Login, WithoutAnEngineAnswersUnexpected) {
  TestHost host;
  host.Bind();
  EXPECT_EQ(host.log->Lines(L"GetIMAccountMgr.").size(), 1u);
  EXPECT_EQ(host.Call(kPath, L"DoLoginByPassWord", kGoodLogin).payload,
            LR"({"code":-2147418113,"subcode":0,"result":"failed"})");
}

}  // namespace
}  // namespace imsdk
