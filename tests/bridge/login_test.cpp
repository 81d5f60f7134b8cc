// Business module "im.login".

#include <gtest/gtest.h>

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
