#include "host.h"

#include <cstdio>
#include <optional>
#include <utility>

#include "bridge_library.h"
#include "client/client_services.h"
#include "data_folder.h"
#include "imsdk/biz/account.h"
#include "imsdk/biz/files.h"
#include "imsdk/demo_set.h"
#include "imsdk/embedded_server.h"
#include "imsdk/engine.h"
#include "kexbase/strings.h"
#include "kexbase/time.h"
#include "kexcore/kexcom.h"
#include "log/host_trace.h"
#include "log/trace_log.h"
#include "registered.h"
#include "server/run_token.h"
#include "server/server.h"

namespace imsdk::host {
namespace {

constexpr wchar_t kAppKey[] = L"cnbazaro";

}  // namespace

class Host::Impl final : public Backend {
 public:
  bool Start(const HostOptions& options, std::string* error) {
    std::error_code failure;
    if (!options.pages.empty() && !std::filesystem::is_directory(options.pages, failure)) {
      *error = "there is no folder of pages " + options.pages.string();
      return false;
    }
    folder_ = DataFolder::Open(options.data, error);
    if (!folder_) return false;
    log_ = TraceLog::Open({folder_->path() / "logs", options.trace_file}, error);
    if (!log_) return false;
    log_service_.emplace(log_->Service());
    client_.emplace(folder_->path(), options.web);
    if (!StartMessaging(options.demo, error)) return false;
    library_ = BridgeLibrary::Load(options.library, error);
    if (!library_) return false;
    calls_.emplace(*library_);
    token_ = RunToken::Open(folder_->path() / "run-token", options.token,
                            base::Time::Now().ToMilliseconds());
    if (!token_) {
      *error = "the system gives no randomness";
      return false;
    }
    ServerOptions server;
    server.port = options.port;
    server.web = options.web;
    server.pages = options.pages;
    server.origin = options.origin;
    server.data = folder_->path();
    server_ = Server::Start(
        server,
        {*this, *token_, client_->windows(), log_->Logger(), client_->translation(), &*calls_},
        error);
    if (!server_) return false;
    if (!token_->Save()) {
      WriteTrace(*log_->Logger(), ns_log::kWarning, {"Host::Start", "host\\host"},
                 L"the token cannot be kept: pages will not survive a crash of the host");
    }
    WriteTrace(*log_->Logger(), ns_log::kRoutine, {"Host::Start", "host\\host"}, L"listening",
               "_brief_,port", {base::NumberToString(server_->port())});
    return true;
  }

  // The server's threads end first, then the library's business layer, then the engine whose
  // threads call into it, then what the engine's accounts are linked to. Also after a start that
  // failed halfway.
  void Stop() {
    if (server_) {
      server_->Stop();
      token_->Retire();
    }
    if (client_) client_->Stop();
    library_.reset();
    engine_.reset();
    messaging_.reset();
  }

  RefPtr<bridge::IIMSDKBridge> NewBridge() override { return library_->NewBridge(); }

  void LogIn(const std::string& nick, std::function<void(LoginOutcome)> done) override {
    const biz::IMUserID user{kAppKey, base::UTF8ToWide(nick)};
    const auto accounts = kexcore::GetService<biz::IIMAccountMgr>();
    if (accounts->GetAccount(user)) return done({200, {}, user});
    const auto answer = [user, done = std::move(done)](const biz::ResultCode& result,
                                                       const biz::IMLoginGrant&) {
      if (result.ok()) return done({200, {}, user});
      if (result.code == biz::kEngineUnknownUser) return done({404, "unknown account", user});
      done({503, "the account cannot be logged in: " + base::WideToUTF8(result.text), user});
    };
    std::wstring token;
    const biz::ResultCode issued = messaging_->IssueToken(user, &token);
    if (!issued.ok()) return answer(issued, {});
    accounts->LoginByToken({user, token}, answer);
  }

  void Fetch(const std::string& path, std::function<void()> done) override {
    const auto files = kexcore::GetService<biz::IIMFileMgr>();
    files->Fetch({base::UTF8ToWide(path)}, [done = std::move(done)](const auto&) { done(); });
  }

  const Server& server() const { return *server_; }
  const RunToken& token() const { return *token_; }

 private:
  bool StartMessaging(bool demo, std::string* error) {
    const base::FilePath data = base::FilePath::FromUTF8(folder_->path().string());
    EmbeddedServerOptions server;
    server.data = data;
    server.report = [this](const std::string& text) { Report(text); };
    const bool fresh = !HoldsMessages(data);
    messaging_ = StartEmbeddedServer(server, error);
    if (!messaging_) return false;
    if (demo && fresh && !FillDemoSet(data, *messaging_, error)) return false;
    if (demo && !messaging_->HasAccounts()) {
      Report("there are no accounts, and the demo set is made only in a folder that is empty");
    }
    EngineOptions engine;
    engine.data = data;
    engine.report = server.report;
    engine.link = [this] { return messaging_->Link(); };
    engine_ = StartEngine(engine, error);
    return engine_ != nullptr;
  }

  // What a person should know, whether anybody reads the log or not.
  void Report(const std::string& text) {
    std::fprintf(stderr, "bridgehost: %s\n", text.c_str());
    WriteTrace(*log_->Logger(), ns_log::kWarning, {"Host::Report", "host\\host"},
               base::UTF8ToWide(text));
  }

  std::unique_ptr<DataFolder> folder_;
  std::unique_ptr<TraceLog> log_;
  std::optional<Registered<ns_log::ILogService>> log_service_;
  std::optional<ClientServices> client_;
  std::unique_ptr<RunToken> token_;
  // The server object outlives the engine: an open login holds its connection.
  std::unique_ptr<Server> server_;
  std::unique_ptr<EmbeddedServer> messaging_;
  std::unique_ptr<Engine> engine_;
  std::unique_ptr<BridgeLibrary> library_;
  std::optional<HostCalls> calls_;
};

std::unique_ptr<Host> Host::Start(const HostOptions& options, std::string* error) {
  auto impl = std::make_unique<Impl>();
  if (!impl->Start(options, error)) {
    impl->Stop();
    return nullptr;
  }
  return std::unique_ptr<Host>(new Host(std::move(impl)));
}

Host::Host(std::unique_ptr<Impl> impl) : impl_(std::move(impl)) {}
Host::~Host() { Stop(); }

std::uint16_t Host::port() const { return impl_->server().port(); }
const std::string& Host::token() const { return impl_->token().text(); }
std::string Host::Address() const {
  return "http://127.0.0.1:" + base::NumberToString(port()) + "/?token=" + token();
}
std::size_t Host::ViewCount() const { return impl_->server().ViewCount(); }
void Host::Stop() { impl_->Stop(); }

}  // namespace imsdk::host
