// The whole host in this process: real engine, library loaded from its file, real sockets.
#include "host.h"

#include <gtest/gtest.h>
#include <malloc.h>

#include <fstream>
#include <regex>

#include "temp_folder.h"
#include "test_client.h"

namespace imsdk::host {
namespace {

// How much a process may grow over a thousand views and still count as flat, in kilobytes.
// Sanitizers keep freed memory; they look for what is lost by themselves.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr long kFlatKb = 1L << 30;
#else
constexpr long kFlatKb = 2000;
#endif

// Kilobytes of memory that this process really uses.
long ResidentKb() {
  ::malloc_trim(0);
  std::ifstream statm("/proc/self/statm");
  long pages = 0;
  statm >> pages >> pages;
  return pages * 4;
}

class HostTest : public testing::Test {
 protected:
  static void SetUpTestSuite() {
    folder_ = std::make_unique<TempFolder>();
    HostOptions options;
    options.port = 0;
    options.data = folder_->path() / "data";
    options.demo = true;
    options.trace_file = folder_->path() / "trace.jsonl";
    std::string error;
    host_ = Host::Start(options, &error);
    ASSERT_TRUE(host_) << error;
  }
  static void TearDownTestSuite() {
    host_.reset();
    folder_.reset();
  }
  void SetUp() override { ASSERT_TRUE(host_); }

  // A greeted page of `account`, or of nobody.
  static TestPage Page(const std::string& account = "") {
    const std::string more = account.empty() ? "" : "&account=" + account;
    TestPage page(host_->port(), "/channel?token=" + host_->token() + more);
    const auto hello = page.Receive();
    EXPECT_TRUE(hello && hello->find("hello") != std::string::npos) << page.refusal();
    return page;
  }

  // `json` is the argument of the business method, its quotes written as '.
  static std::string Call(const std::string& path, const std::string& seq,
                          const std::string& method, std::string json) {
    std::string quoted;
    for (const char c : json) quoted += c == '\'' ? "\\\"" : std::string(1, c);
    return R"({"kind":"invoke","method":"workbench.im.)" + path + R"(","args":[")" + seq +
           R"(",")" + method + R"(",")" + quoted + R"("]})";
  }

  // Reads on until a frame holds `text`.
  static std::string Await(TestPage& page, const std::string& text) {
    while (const auto frame = page.Receive()) {
      if (frame->find(text) != std::string::npos) return *frame;
    }
    ADD_FAILURE() << "no frame with " << text;
    return {};
  }

  static bool Traced(const std::string& text) {
    return Eventually([&] { return folder_->Read("trace.jsonl").find(text) != std::string::npos; });
  }

  static std::unique_ptr<TempFolder> folder_;
  static std::unique_ptr<Host> host_;
};

std::unique_ptr<TempFolder> HostTest::folder_;
std::unique_ptr<Host> HostTest::host_;

TEST_F(HostTest, TwoPagesChat) {
  TestPage harbor = Page("harbor");
  TestPage lighthouse = Page("lighthouse");
  for (TestPage* page : {&harbor, &lighthouse}) {
    page->Send(Call("event_register", "r", "register_all", ""));
    page->Send(Call("login.invoke", "id", "GetCurrentLoginID", "{}"));
  }
  EXPECT_NE(Await(harbor, R"("seq":"id")").find("harbor"), std::string::npos);
  EXPECT_NE(Await(lighthouse, R"("seq":"id")").find("lighthouse"), std::string::npos);
  const std::string text = "<img onerror=x>\xF0\x9F\x98\x80\xD7\xA9";
  harbor.Send(Call("singlemsg.invoke", "send", "SendNormalChatMsg",
                   "{'cid':{'appkey':'cnbazaro','nick':'lighthouse'},'autosend':0,"
                   "'msgbody':[{'type':0,'value':'" +
                       text + "'}]}"));
  Await(harbor, "onSendMsgStatus");
  EXPECT_NE(Await(lighthouse, R"("event":"onReceiveNewMsg")").find(text), std::string::npos);
}

TEST_F(HostTest, APageGetsAFileThatAnotherAccountSent) {
  TestPage harbor = Page("harbor");
  TestPage lighthouse = Page("lighthouse");
  lighthouse.Send(Call("event_register", "r", "register_all", ""));
  Await(lighthouse, R"("seq":"r")");
  harbor.Send(Call("singlemsg.invoke", "send", "SendNormalChatMsg",
                   "{'cid':{'appkey':'cnbazaro','nick':'lighthouse'},'autosend':0,"
                   "'msgbody':[{'type':3,'filepath':'light.txt','filecontent':'bGlnaHQ='}]}"));
  const std::string received = Await(lighthouse, "file:light.txt|");
  std::smatch path;
  ASSERT_TRUE(std::regex_search(received, path, std::regex("filepath=([-\\w.%]+)"))) << received;
  const HttpResult file =
      Request(host_->port(), "/file?token=" + host_->token() + "&path=" + path[1].str());
  EXPECT_EQ(file.status, 200) << file.body;
  EXPECT_EQ(file.body, "light");
}

TEST_F(HostTest, APageLogsInByItselfAndStrangersAreUnknown) {
  TestPage page = Page();
  page.Send(Call("login.invoke", "in", "DoLoginByPassWord",
                 "{'userid':{'appkey':'cnbazaro','nick':'navigator'},'password':'demo'}"));
  EXPECT_NE(Await(page, R"("seq":"in")").find(R"("failed":false)"), std::string::npos);
  const TestPage stranger(host_->port(), "/channel?account=nobody&token=" + host_->token());
  EXPECT_EQ(stranger.status(), 404);
  EXPECT_EQ(stranger.refusal(), R"({"error":"unknown account"})");
}

TEST_F(HostTest, FailuresOfCallsShowInTheTraceFile) {
  TestPage page = Page("harbor");
  const std::string in_bridge =
      R"(,"function":"CIMSDKBridge::JsInvoke","source":"source\\bridge\\imsdkbridge")";
  struct Case {
    std::string frame;
    std::string traced;
  };
  const Case cases[] = {
      {R"({"kind":"invoke","method":"workbench.login.invoke","args":["f1"]})",
       R"("level":3,"text":"NOT Register! method workbench.login.invoke")" + in_bridge},
      {R"({"kind":"invoke","browserId":"x","method":"workbench.im.login.invoke","args":["f2"]})",
       R"("level":3,"text":"browserId NOT match!!!")" + in_bridge},
      {Call("login.invoke", "", "GetCurrentLoginID", "{}"),
       R"("level":2,"text":"invalid seqid")" + in_bridge},
      {Call("login.invoke", "f4", "GetCurrentLoginID", std::string(4097, ' ')),
       R"("level":3,"text":"unexpected json!!! too large.")" + in_bridge},
      {Call("login.invoke", "f5", "NoSuchMethod", "{}"),
       R"("level":3,"text":"Invalid js invoke!!! path,method")" + in_bridge},
      {"no frame", R"("level":2,"text":"frame refused!!!")"},
  };
  for (const Case& c : cases) {
    page.Send(c.frame);
    EXPECT_TRUE(Traced(c.traced)) << c.frame.substr(0, 100);
  }
}

TEST_F(HostTest, AReloadInTheMiddleOfAThousandCallsStartsClean) {
  const std::string history =
      "{'cid':{'appkey':'cnbazaro','nick':'lighthouse'},'count':20,'gohistory':1}";
  TestPage before = Page("harbor");
  for (int i = 0; i < 1000; ++i) {
    before.Send(Call("singlemsg.invoke", "old", "GetLocalHisMsg", history));
  }
  before.Vanish();
  TestPage after = Page("harbor");
  after.Send(Call("singlemsg.invoke", "new", "GetLocalHisMsg", history));
  EXPECT_NE(after.Receive()->find(R"("seq":"new")"), std::string::npos);
  EXPECT_FALSE(after.Receive(std::chrono::milliseconds(200)));
}

TEST_F(HostTest, AThousandViewsOnTheRealLibraryLeaveMemoryFlat) {
  const auto open_and_close = [](int views) {
    for (int i = 0; i < views; ++i) {
      TestPage page = Page("harbor");
      page.Send(Call("event_register", "r", "register_all", ""));
      page.Send(Call("login.invoke", "id", "GetCurrentLoginID", "{}"));
      Await(page, R"("seq":"id")");
    }
    EXPECT_TRUE(Eventually([] { return host_->ViewCount() == 0; }));
  };
  open_and_close(200);
  const long before = ResidentKb();
  open_and_close(1000);
  EXPECT_LT(ResidentKb() - before, kFlatKb) << "kilobytes grown";
}

TEST_F(HostTest, AFolderInUseIsAClearError) {
  HostOptions options;
  options.port = 0;
  options.data = folder_->path() / "data";
  std::string error;
  EXPECT_FALSE(Host::Start(options, &error));
  EXPECT_NE(error.find("in use"), std::string::npos) << error;
}

}  // namespace
}  // namespace imsdk::host
