#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "log/trace_log.h"
#include "server/server.h"
#include "stub_backend.h"
#include "temp_folder.h"
#include "test_client.h"

namespace imsdk::host {

// A server on a free port, with stub bridges and a trace file.
class ServerTest : public testing::Test {
 protected:
  void SetUp() override { Start({}); }

  void Start(ServerOptions options) {
    server_.reset();
    options.data = folder_.path() / "data";
    options.web = folder_.path() / "web";
    std::string error;
    server_ = Server::Start(options, {backend_, *token_, windows_, log_->Logger()}, &error);
    ASSERT_TRUE(server_) << error;
  }

  std::uint16_t port() const { return server_->port(); }

  // A page that has been greeted.
  TestPage Page(const std::string& more = "") {
    TestPage page(port(), "/channel?token=secret" + more);
    const auto hello = page.Receive();
    EXPECT_TRUE(hello && hello->starts_with(R"({"kind":"hello","browserId":")"))
        << page.status() << page.refusal();
    return page;
  }

  static std::string Call(const std::string& method, const std::string& args) {
    return R"({"kind":"invoke","method":")" + method + R"(","args":)" + args + "}";
  }

  // What the trace file holds so far; what is routine arrives in it a little later.
  std::string Traces() const { return folder_.Read("trace.jsonl"); }

  const TempFolder folder_;
  std::string error_;
  std::unique_ptr<TraceLog> log_ =
      TraceLog::Open({folder_.path() / "logs", folder_.path() / "trace.jsonl"}, &error_);
  const std::unique_ptr<RunToken> token_ = RunToken::Open(folder_.path() / "t", "secret", 1);
  const RefPtr<ChatWindows> windows_{new ChatWindows};
  StubBackend backend_;
  std::unique_ptr<Server> server_;
};

}  // namespace imsdk::host
