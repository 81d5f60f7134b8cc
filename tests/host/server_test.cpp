// Requests, refusals and frames, over real sockets.
#include <future>
#include <map>

#include "kexbase/strings.h"
#include "server_fixture.h"

namespace imsdk::host {
namespace {

TEST_F(ServerTest, ServesFilesAndRefusesMethods) {
  folder_.Write("web/index.html", "<p>chat</p>");
  folder_.Write("data/files/a.txt", std::string(300000, 'x'));
  const HttpResult page = Request(port(), "/");
  EXPECT_EQ(page.status, 200);
  EXPECT_EQ(page.body, "<p>chat</p>");
  const HttpResult head = Request(port(), "/", {}, "HEAD");
  EXPECT_EQ(head.status, 200);
  EXPECT_EQ(head.headers.at("content-length"), "11");
  EXPECT_EQ(head.body, "");
  const HttpResult file = Request(port(), "/file?token=secret&path=files/a.txt");
  EXPECT_EQ(file.body.size(), 300000u);
  EXPECT_TRUE(file.headers.at("content-disposition").starts_with("attachment"));
  EXPECT_EQ(Request(port(), "/", {}, "POST").status, 405);
  EXPECT_EQ(Request(port(), "/", {{"Content-Length", "3"}}, "DELETE").status, 405);
  EXPECT_EQ(Request(port(), "/" + std::string(20000, 'a')).status, 400);
}

TEST_F(ServerTest, AMissingFileIsFetchedFirstAndHoldsUpNobodyElse) {
  ServerOptions options;
  options.longest_fetch = std::chrono::milliseconds(300);
  Start(options);
  folder_.Write("data/files/here/a.txt", "a");
  const auto get = [this](const std::string& path) {
    return std::async(std::launch::async,
                      [this, path] { return Request(port(), "/file?token=secret&path=" + path); });
  };
  for (const char* never : {"server/server.db", "files/../a", "files/here", "files/here/a.txt"}) {
    get(never).get();
  }
  EXPECT_EQ(Request(port(), "/file?token=wrong&path=files/a.txt").status, 401);
  EXPECT_TRUE(backend_.TakeFetches().empty());

  // More of them than the server has threads, asked by one name or another.
  std::map<std::string, std::future<HttpResult>> asked;
  for (const char* path : {"files/u/comes.txt", "files/u/./late.txt", "files/u//fails.txt"}) {
    asked[path] = get(path);
  }
  std::map<std::string, std::function<void()>> fetches;
  EXPECT_TRUE(Eventually([&] {
    for (auto& [path, done] : backend_.TakeFetches()) fetches[path] = std::move(done);
    return fetches.size() == asked.size();
  }));
  EXPECT_EQ(Request(port(), "/health?token=secret").status, 200);
  folder_.Write("data/files/u/comes.txt", "it came");
  fetches.at("files/u/comes.txt")();
  fetches.at("files/u/fails.txt")();
  const HttpResult came = asked["files/u/comes.txt"].get();
  EXPECT_EQ(came.status, 200);
  EXPECT_EQ(came.body, "it came");
  EXPECT_EQ(asked["files/u//fails.txt"].get().status, 404);
  EXPECT_EQ(asked["files/u/./late.txt"].get().status, 404);
  fetches.at("files/u/late.txt")();
  EXPECT_EQ(Request(port(), "/health?token=secret").status, 200);
}

TEST_F(ServerTest, RefusedChannelsSayWhyAndAreTraced) {
  struct Case {
    const char* target;
    HttpHeaders headers;
    int status;
    const char* reason;
  };
  const Case cases[] = {
      {"/channel", {}, 401, "bad token"},
      {"/channel?token=wrong", {}, 401, "bad token"},
      {"/channel?token=secret", {{"Origin", "http://evil.example"}}, 403, "origin not allowed"},
      {"/channel?token=secret", {{"Host", "evil.example"}}, 403, "host not allowed"},
      {"/channel?token=secret&account=absent", {}, 404, "unknown account"},
  };
  for (const Case& c : cases) {
    TestPage page(port(), c.target, c.headers);
    EXPECT_EQ(page.status(), c.status) << c.target;
    EXPECT_TRUE(page.refusal().starts_with("{\"error\":\"" + std::string(c.reason)));
    // A browser shows a page neither, so it may ask, from wherever it comes.
    HttpResult asked = Request(port(), c.target, c.headers);
    EXPECT_EQ(asked.status, c.status) << c.target;
    EXPECT_EQ(asked.body, page.refusal());
    const auto origin = c.headers.find("Origin");
    EXPECT_EQ(asked.headers["access-control-allow-origin"],
              origin == c.headers.end() ? "" : origin->second);
    EXPECT_NE(Traces().find(c.reason), std::string::npos) << c.reason;
  }
  EXPECT_EQ(Traces().find("secret"), std::string::npos) << "a token was traced";
  const std::string own = "http://127.0.0.1:" + std::to_string(port());
  TestPage page(port(), "/channel?token=secret&account=harbor", {{"Origin", own}});
  EXPECT_EQ(page.status(), 101);
  EXPECT_EQ(Request(port(), "/channel?token=secret&account=harbor").status, 426);
  EXPECT_EQ(Request(port(), "/channel?token=secret", {}, "HEAD").status, 426);
  EXPECT_EQ(Request(port(), "/channel?token=secret", {}, "POST").status, 405);
  EXPECT_EQ(server_->ViewCount(), 1u) << "asking opened a view";
}

TEST_F(ServerTest, CallsGoInAndAnswersComeOut) {
  TestPage page(port(), "/channel?token=secret");
  const std::string hello = *page.Receive();
  const std::string id = hello.substr(29, 36);
  EXPECT_EQ(hello, R"({"kind":"hello","browserId":")" + id + "\"}");

  page.Send(Call("echo", R"(["s1",true,-7,{"a":[]},"\ud83d\ude00"])"));
  EXPECT_EQ(page.Receive(), R"({"kind":"answer","browserId":")" + id +
                                R"(","seq":"s1","failed":false,"payload":)"
                                R"("own|s1|true|-7|{\"a\":[]}|)"
                                "\xF0\x9F\x98\x80\"}");
  page.Send(R"({"kind":"invoke","browserId":"foreign","method":"echo","args":["s2"]})");
  EXPECT_NE(page.Receive()->find("foreign|s2"), std::string::npos);
  page.Send(Call("notify", R"(["s3","onX","{\"n\":1}"])"));
  EXPECT_EQ(page.Receive(),
            R"({"kind":"notify","event":"onX","payload":"{\"n\":1}","path":"im.stub"})");

  const std::string large(3 << 20, 'y');
  page.Send(Call("echo", "[\"s4\",\"" + large + "\"]"));
  EXPECT_NE(page.Receive()->find(large), std::string::npos);
}

TEST_F(ServerTest, BadFramesAreRefusedAndThePageStays) {
  TestPage page = Page();
  struct Case {
    std::string frame;
    bool text;
    const char* reason;
  };
  const Case cases[] = {
      {"hello?", true, "not JSON"},
      {"[]", true, "not an object"},
      {R"({"kind":"notify"})", true, "kind is not"},
      {R"({"kind":"invoke","method":"echo","args":"s"})", true, "args is not a list"},
      {std::string(100000, '['), true, "not JSON"},
      {Call("echo", R"(["s"])"), false, "binary frame"},
  };
  for (const Case& c : cases) {
    page.Send(c.frame, c.text);
    const auto refused = page.Receive();
    ASSERT_TRUE(refused) << c.reason;
    EXPECT_TRUE(refused->starts_with(R"({"kind":"refused","reason":")")) << *refused;
    EXPECT_NE(refused->find(c.reason), std::string::npos) << *refused;
  }
  page.Send(Call("echo", R"(["still here"])"));
  EXPECT_NE(page.Receive()->find("still here"), std::string::npos);
  EXPECT_NE(Traces().find(R"("text":"frame refused!!!","function":"Page::OnFrame")"),
            std::string::npos);
}

TEST_F(ServerTest, WindowStatesStayWithTheHost) {
  const biz::IMUserID harbor{L"cnbazaro", L"harbor"};
  const biz::IMConversationID peer{biz::IMUserID{L"cnbazaro", L"lighthouse"}};
  TestPage page = Page("&account=harbor");
  page.Send(Call("echo", R"(["s"])"));
  const auto echo = page.Receive();  // {"kind":"answer","browserId":"…
  windows_->SetViewAccount(base::UTF8ToWide(echo->substr(30, 36)), harbor);
  page.Send(Call("notify", R"(["s","chatWindowState","{\"cid\":{\"appkey\":\"cnbazaro\",)"
                           R"(\"nick\":\"lighthouse\"},\"visible\":1,\"activated\":0}"])"));
  page.Send(Call("notify", R"(["s","chatWindowState","{}"])"));
  EXPECT_NE(page.Receive()->find("chatWindowState is not of the agreed form"), std::string::npos);
  EXPECT_TRUE(windows_->IsVisible(harbor, peer));
  EXPECT_FALSE(windows_->IsActivated(harbor, peer));
  page.Vanish();
  EXPECT_TRUE(Eventually([&] { return !windows_->IsVisible(harbor, peer); }));
}

TEST_F(ServerTest, AFrameOverTheLimitEndsTheViewWithAReason) {
  ServerOptions options;
  options.longest_frame = 10000;
  Start(options);
  TestPage page = Page();
  page.Send(Call("echo", "[\"" + std::string(9000, 'x') + "\"]"));
  EXPECT_TRUE(page.Receive());
  page.Send(std::string(10001, ' '));
  EXPECT_EQ(page.WaitClosed(), 1009);
  EXPECT_TRUE(
      Eventually([&] { return Traces().find("a frame over 10000 bytes") != std::string::npos; }));
  EXPECT_EQ(Page().status(), 101);
}

TEST_F(ServerTest, APageThatDoesNotReadIsCutOffAndTheHostGoesOn) {
  ServerOptions options;
  options.longest_queue = 1 << 20;
  Start(options);
  TestPage slow = Page();
  slow.Send(Call("flood", R"(["5","300000"])"));
  const auto cut = "the page reads too slowly: over 1048576 bytes wait for it";
  EXPECT_TRUE(Eventually([&] { return Traces().find(cut) != std::string::npos; }));
  EXPECT_EQ(server_->ViewCount(), 0U);
  EXPECT_EQ(backend_.bound(), 0);
  TestPage other = Page();
  other.Send(Call("echo", R"(["s"])"));
  EXPECT_TRUE(other.Receive());
}

TEST_F(ServerTest, ATakenPortIsAClearError) {
  ServerOptions options;
  options.port = port();
  std::string error;
  EXPECT_FALSE(Server::Start(options, {backend_, *token_, windows_, log_->Logger()}, &error));
  EXPECT_NE(error.find("port " + std::to_string(port())), std::string::npos) << error;
}

}  // namespace
}  // namespace imsdk::host
