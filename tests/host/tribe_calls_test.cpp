// What bridgehost serves beside the bridge: tribes made, joined and handed over by pages.
#include <gtest/gtest.h>

#include <regex>

#include "host.h"
#include "temp_folder.h"
#include "test_client.h"

namespace imsdk::host {
namespace {

class TribeCallsTest : public testing::Test {
 protected:
  void SetUp() override {
    HostOptions options;
    options.port = 0;
    options.data = folder_.path() / "data";
    options.demo = true;
    options.trace_file = folder_.path() / "trace.jsonl";
    std::string error;
    host_ = Host::Start(options, &error);
    ASSERT_TRUE(host_) << error;
  }

  TestPage Page(const std::string& account) {
    TestPage page(host_->port(), "/channel?token=" + host_->token() + account);
    EXPECT_TRUE(page.Receive()) << page.refusal();
    return page;
  }

  // The payload that `name` is answered with; quotes are left out of it, and written as ' in
  // `json`.
  static std::string Ask(TestPage& page, const std::string& name, const std::string& json,
                         const std::string& method = "bridgehost.tribes") {
    page.Send(R"({"kind":"invoke","method":")" + method + R"(.invoke","args":["s",")" + name +
              R"(",")" + std::regex_replace(json, std::regex("'"), "\\\"") + R"("]})");
    const auto frame = page.Receive();
    if (!frame) return "no answer";
    std::smatch payload;
    const std::regex form(R"re(^\{"kind":"answer",.*"failed":(true|false),"payload":"(.*)"\}$)re");
    if (!std::regex_match(*frame, payload, form)) return *frame;
    const std::string text = std::regex_replace(payload[2].str(), std::regex(R"(\\")"), "");
    EXPECT_EQ(payload[1] == "false", text.starts_with("{code:0,")) << *frame;
    return text;
  }

  const TempFolder folder_;
  std::unique_ptr<Host> host_;
};

TEST_F(TribeCallsTest, EveryCallHasOneAnswerAndServesTheAccountOfItsView) {
  TestPage harbor = Page("&account=harbor");
  TestPage navigator = Page("&account=navigator");
  TestPage nobody = Page("");
  for (TestPage* page : {&harbor, &navigator})
    Ask(*page, "InitTribe", "{}", "workbench.im.tribemgr");
  const std::string made =
      Ask(harbor, "CreateTribe",
          "{'tribeName':'Pilots','userList':[{'userId':'lighthouse'}],'password':'low tide'}");
  std::smatch number;
  ASSERT_TRUE(std::regex_search(made, number, std::regex("tribeid:([0-9]+)\\}"))) << made;
  const std::string tribe = "'stTribeID':{'llTribeID':'" + number[1].str() + "'}";
  const auto user = [](const std::string& nick) {
    return "{'strAppKey':'cnbazaro','strUserID':'" + nick + "'}";
  };

  struct Case {
    TestPage& page;
    std::string name;
    std::string json;
    std::string answer;  // begins so
  };
  const Case cases[] = {
      {nobody, "JoinTribe", "{" + tribe + "}", "{code:-2147418113,subcode:0,result:failed}"},
      {harbor, "jointribe", "{" + tribe + "}", "{code:-2147467263,subcode:0,result:failed}"},
      {harbor, "QuitTribe", "[]", "{code:-2147024809,subcode:0,result:invalid!}"},
      {harbor, "QuitTribe", "", "{code:-2147024809,subcode:0,result:invalid!}"},
      {navigator, "JoinTribe", "{" + tribe + "}", "{code:-11,subcode:9,"},
      {navigator, "JoinTribe", "{" + tribe + ",'password':7}", "{code:-11,subcode:9,"},
      {navigator, "JoinTribe", "{" + tribe + ",'password':'low tide'}",
       "{code:0,subcode:0,result:success,waiting:0}"},
      {navigator, "SetTribe", "{" + tribe + ",'key':5,'value':'Fog'}", "{code:-11,subcode:4,"},
      {navigator, "TransferTribe", "{" + tribe + ",'stUID':" + user("harbor") + "}",
       "{code:-11,subcode:3,"},
      {harbor, "SetTribe", "{" + tribe + ",'key':5,'value':'Fog'}", "{code:0,"},
      {harbor, "SetTribe", "{" + tribe + ",'key':99,'value':'Fog'}", "{code:-"},
      {harbor, "SetTribe", "{" + tribe + ",'value':'Fog'}", "{code:-"},
      {harbor, "QuitTribe", "{" + tribe + "}", "{code:-11,subcode:14,"},
      {harbor, "EnableTribe", "{" + tribe + "}", "{code:-11,subcode:17,"},
      {harbor, "InviteToTribe", "{" + tribe + ",'stUIDs':[" + user("mariner") + "]}", "{code:0,"},
      {harbor, "SetAttention", "{" + tribe + ",'stUID':" + user("lighthouse") + "}", "{code:0,"},
      {harbor, "TransferTribe", "{" + tribe + ",'stUID':" + user("lighthouse") + "}", "{code:0,"},
      {navigator, "QuitTribe", "{" + tribe + "}", "{code:0,"},
  };
  for (const Case& one : cases) {
    const std::string answer = Ask(one.page, one.name, one.json);
    EXPECT_TRUE(answer.starts_with(one.answer)) << one.name << " " << one.json << ": " << answer;
  }
  EXPECT_FALSE(harbor.Receive(std::chrono::milliseconds(50)));
  ASSERT_TRUE(Eventually([&] {
    return folder_.Read("trace.jsonl").find("call of the host failed!!!") != std::string::npos;
  }));
  EXPECT_EQ(folder_.Read("trace.jsonl").find("low tide"), std::string::npos);
}

TEST_F(TribeCallsTest, AViewThatGoesInTheMiddleOfItsCallsIsNotAnswered) {
  for (int i = 0; i < 20; ++i) {
    TestPage page = Page("&account=harbor");
    for (int call = 0; call < 20; ++call) {
      page.Send(R"({"kind":"invoke","method":"bridgehost.tribes.invoke","args":["s)" +
                std::to_string(call) + R"(","CreateTribe","{\"tribeName\":\"gone\"}"]})");
    }
    page.Vanish();
  }
  EXPECT_TRUE(Eventually([&] { return host_->ViewCount() == 0; }));
  TestPage after = Page("&account=harbor");
  EXPECT_TRUE(Ask(after, "CreateTribe", "{'tribeName':'kept'}").starts_with("{code:0,"));
}

}  // namespace
}  // namespace imsdk::host
