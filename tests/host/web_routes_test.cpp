#include "server/web_routes.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "temp_folder.h"

namespace imsdk::host {
namespace {

std::string Header(const HttpAnswer& answer, const std::string& name) {
  const auto found = std::find_if(answer.headers.begin(), answer.headers.end(),
                                  [&](const auto& header) { return header.first == name; });
  return found == answer.headers.end() ? "" : found->second;
}

class WebRoutesTest : public testing::Test {
 protected:
  HttpAnswer Get(std::string_view target, std::string_view range = {}) const {
    return routes_.Answer({"GET", target, "127.0.0.1:8787", {}, range});
  }

  const TempFolder folder_;
  const std::filesystem::path web_ = folder_.path() / "web";
  const std::filesystem::path data_ = folder_.path() / "data";
  const std::unique_ptr<RunToken> token_ = RunToken::Open(folder_.path() / "t", "secret", 1);
  const WebRoutes routes_{{web_, data_}, 8787, *token_};
};

TEST_F(WebRoutesTest, PagesNeedNoTokenAndLeaveTheirFolderNever) {
  folder_.Write("web/index.html", "<p>");
  folder_.Write("web/assets/a.js", "1");
  folder_.Write("web/inspector/index.html", "<p>");
  folder_.Write("secret.txt", "s");
  struct Case {
    const char* target;
    unsigned status;
    const char* type;
  };
  const Case cases[] = {
      {"/", 200, "text/html; charset=utf-8"},
      {"/?token=x#y", 200, "text/html; charset=utf-8"},
      {"/inspector/", 200, "text/html; charset=utf-8"},
      {"/assets/a.js", 200, "text/javascript; charset=utf-8"},
      {"/assets/b.js", 404, "application/json"},
      {"/../secret.txt", 403, "application/json"},
      {"/%2e%2e/secret.txt", 403, "application/json"},
      {"//etc/passwd", 403, "application/json"},
      {"/index.html%00.js", 403, "application/json"},
      {"/%zz", 400, "application/json"},
      {"http://127.0.0.1:8787/", 400, "application/json"},
  };
  for (const Case& c : cases) {
    const HttpAnswer answer = Get(c.target);
    EXPECT_EQ(answer.status, c.status) << c.target << answer.body;
    EXPECT_EQ(Header(answer, "Content-Type"), c.type) << c.target;
    EXPECT_EQ(Header(answer, "X-Content-Type-Options"), "nosniff") << c.target;
    EXPECT_EQ(Header(answer, "Referrer-Policy"), "no-referrer") << c.target;
    EXPECT_TRUE(Header(answer, "Content-Security-Policy").starts_with("default-src 'self'; "))
        << c.target;
  }
}

TEST_F(WebRoutesTest, WithoutBuiltPagesTheRootSaysSo) {
  const HttpAnswer answer = Get("/");
  EXPECT_EQ(answer.status, 404u);
  EXPECT_NE(answer.body.find("./dev run"), std::string::npos);
}

TEST_F(WebRoutesTest, OnlyTheUsersOwnPagesComeIn) {
  struct Case {
    const char* host;
    const char* origin;
    const char* target;
    unsigned status;  // 0: let in
    const char* reason;
  };
  const Case cases[] = {
      {"127.0.0.1:8787", "", "/channel?token=secret", 0, ""},
      {"localhost:8787", "http://localhost:8787", "/channel?token=secret", 0, ""},
      {"127.0.0.1:8787", "http://localhost:8787", "/channel?token=secret&account=h", 0, ""},
      {"127.0.0.1:8787", "http://127.0.0.1:8787", "/channel", 401, "bad token"},
      {"127.0.0.1:8787", "", "/channel?token=", 401, "bad token"},
      {"127.0.0.1:8787", "", "/channel?token=Secret", 401, "bad token"},
      {"127.0.0.1:8787", "", "/channel?token=secre", 401, "bad token"},
      {"127.0.0.1:8787", "http://evil.example", "/channel?token=secret", 403, "origin not allowed"},
      {"127.0.0.1:8787", "http://127.0.0.1:8788", "/channel?token=secret", 403,
       "origin not allowed"},
      {"127.0.0.1:8787", "https://127.0.0.1:8787", "/channel?token=secret", 403,
       "origin not allowed"},
      {"127.0.0.1:8787", "null", "/channel?token=secret", 403, "origin not allowed"},
      {"127.0.0.1:8787", "http://127.0.0.1:8787.evil.example", "/channel?token=secret", 403,
       "origin not allowed"},
      {"evil.example:8787", "", "/channel?token=secret", 403, "host not allowed"},
      {"127.0.0.1", "", "/channel?token=secret", 403, "host not allowed"},
      {"", "", "/channel?token=secret", 403, "host not allowed"},
  };
  for (const Case& c : cases) {
    const HttpRequest request{"GET", c.target, c.host, c.origin, {}, true};
    ASSERT_TRUE(WebRoutes::IsChannel(request));
    const ChannelRequest channel = routes_.CheckChannel(request);
    const unsigned status = channel.refusal ? channel.refusal->status : 0;
    EXPECT_EQ(status, c.status) << c.host << ' ' << c.origin << ' ' << c.target;
    if (!channel.refusal) continue;
    EXPECT_TRUE(channel.refusal->body.starts_with("{\"error\":\"" + std::string(c.reason)))
        << channel.refusal->body;
  }
  const ChannelRequest named = routes_.CheckChannel(
      {"GET", "/channel?account=a%20b&token=secret", "localhost:8787", {}, {}});
  EXPECT_EQ(named.nick, "a b");
  EXPECT_EQ(routes_.Answer({"GET", "/", "evil.example", {}, {}}).status, 403u);
  EXPECT_EQ(routes_.Answer({"POST", "/", "localhost:8787", {}, {}}).status, 405u);
}

TEST_F(WebRoutesTest, PagesOfTheNamedOriginComeInAndNoOthers) {
  folder_.Write("web/emotions/list.json", "[]");
  const WebRoutes routes{{web_, data_, {}, "http://localhost:5173"}, 8787, *token_};
  const struct {
    const char* origin;
    bool in;
  } cases[] = {{"http://localhost:5173", true},   {"http://127.0.0.1:8787", true},
               {"http://localhost:5174", false},  {"https://localhost:5173", false},
               {"http://127.0.0.1:5173", false},  {"http://localhost:51730", false},
               {"http://localhost:5173/", false}, {"null", false}};
  for (const auto& c : cases) {
    const HttpRequest wish{"GET", "/channel?token=secret", "localhost:8787", c.origin, {}, true};
    EXPECT_EQ(!routes.CheckChannel(wish).refusal, c.in) << c.origin;
    EXPECT_EQ(routes_.CheckChannel(wish).refusal.has_value(),
              c.origin != std::string("http://127.0.0.1:8787"));
    // Any page may read why it is refused, and only the named one anything else.
    HttpAnswer refusal;
    routes.LetRead(wish, &refusal);
    EXPECT_EQ(Header(refusal, "Access-Control-Allow-Origin"), c.origin);
    const HttpRequest list{"GET", "/emotions/list.json", "localhost:8787", c.origin, {}};
    const bool named = c.origin == std::string("http://localhost:5173");
    EXPECT_EQ(Header(routes.Answer(list), "Access-Control-Allow-Origin"), named ? c.origin : "");
    EXPECT_EQ(Header(routes_.Answer(list), "Access-Control-Allow-Origin"), "") << c.origin;
  }
  EXPECT_EQ(
      Header(routes.Answer({"GET", "/", "localhost:8787", {}, {}}), "Cross-Origin-Resource-Policy"),
      "cross-origin");
  EXPECT_EQ(Header(Get("/"), "Cross-Origin-Resource-Policy"), "same-origin");
}

TEST_F(WebRoutesTest, OwnPagesTakeThePlaceOfTheDemoBesideTheClient) {
  for (const char* name :
       {"web/index.html", "web/chat/app.js", "web/client/index.js", "web/emotions/list.json",
        "web/emotions/smile.svg", "mine/index.html", "mine/emotions/smile.svg"}) {
    folder_.Write(name, name);
  }
  folder_.Write("secret.txt", "s");
  std::filesystem::create_directories(folder_.path() / "empty");
  std::filesystem::create_symlink(folder_.path() / "secret.txt", folder_.path() / "mine/link.txt");
  const WebRoutes routes{{web_, data_, folder_.path() / "mine"}, 8787, *token_};
  const struct {
    const char* target;
    const char* file;  // empty: refused
  } cases[] = {{"/?token=x", "mine/index.html"},
               {"/chat/app.js", ""},
               {"/client/index.js", "web/client/index.js"},
               {"/emotions/list.json", "web/emotions/list.json"},
               {"/emotions/smile.svg", "mine/emotions/smile.svg"},
               {"/client/../chat/app.js", ""},
               {"/link.txt", ""}};
  for (const auto& c : cases) {
    const HttpAnswer answer = routes.Answer({"GET", c.target, "localhost:8787", {}, {}});
    EXPECT_EQ(answer.status == 200, *c.file != 0) << c.target << answer.status;
    EXPECT_EQ(answer.file, *c.file ? folder_.path() / c.file : "") << c.target;
  }
  const WebRoutes none{{web_, data_, folder_.path() / "empty"}, 8787, *token_};
  const HttpAnswer answer = none.Answer({"GET", "/", "localhost:8787", {}, {}});
  EXPECT_EQ(answer.status, 404u);
  EXPECT_NE(answer.body.find("--pages"), std::string::npos);
}

TEST_F(WebRoutesTest, DataFilesNeedTheTokenAndNothingInThemRuns) {
  folder_.Write("data/files/u/a.png", "0123456789");
  folder_.Write("data/files/page.html", "<script>");
  folder_.Write("data/files/p.svg", "<svg/>");
  folder_.Write("data/server/server.db", "d");
  EXPECT_EQ(Get("/file?path=files/u/a.png").status, 401u);
  EXPECT_EQ(Get("/file?path=files/u/a.png&token=no").status, 401u);
  EXPECT_EQ(Get("/file?token=secret").status, 400u);
  EXPECT_EQ(Get("/file?path=server/server.db&token=secret").status, 403u);
  EXPECT_EQ(Get("/file?path=files%2F..%2Fserver%2Fserver.db&token=secret").status, 403u);
  EXPECT_EQ(Get("/file?path=%2Fetc%2Fpasswd&token=secret").status, 403u);
  EXPECT_EQ(Get("/file?path=files/u/a.png%00&token=secret").status, 403u);

  const HttpAnswer picture = Get("/file?path=files/u/a.png&token=secret");
  EXPECT_EQ(picture.file, data_ / "files/u/a.png");
  EXPECT_EQ(Header(picture, "Content-Type"), "image/png");
  EXPECT_TRUE(Header(picture, "Content-Disposition").starts_with("inline"));
  for (const char* name : {"page.html", "p.svg"}) {
    const HttpAnswer active = Get("/file?token=secret&path=files/" + std::string(name));
    EXPECT_EQ(active.status, 200u) << name;
    EXPECT_EQ(Header(active, "Content-Type"), "application/octet-stream") << name;
    EXPECT_TRUE(Header(active, "Content-Disposition").starts_with("attachment")) << name;
  }

  const HttpAnswer part = Get("/file?path=files/u/a.png&token=secret", "bytes=2-4");
  EXPECT_EQ(part.status, 206u);
  EXPECT_EQ(part.body, "234");
  EXPECT_EQ(Header(part, "Content-Range"), "bytes 2-4/10");
  const HttpAnswer beyond = Get("/file?path=files/u/a.png&token=secret", "bytes=10-");
  EXPECT_EQ(beyond.status, 416u);
  EXPECT_EQ(Header(beyond, "Content-Range"), "bytes */10");
}

TEST_F(WebRoutesTest, HealthTellsWhetherTheTokenIsGood) {
  EXPECT_EQ(Get("/health?token=secret").body, R"({"ok":true})");
  EXPECT_EQ(Get("/health?token=secret").status, 200u);
  EXPECT_EQ(Get("/health").status, 401u);
  EXPECT_EQ(Get("/health?token=x").body, R"({"error":"bad token"})");
}

}  // namespace
}  // namespace imsdk::host
