#include <algorithm>
#include <chrono>
#include <filesystem>
#include <thread>
#include <utility>

#include "account/conversations/single_chat.h"
#include "account/session/account_mgr.h"
#include "account/session/device_name.h"
#include "demo/demo_set.h"
#include "embedded/embedded_server.h"
#include "engine_setup.h"
#include "kexbase/time.h"
#include "kexcore/kexcom.h"

namespace imsdk {

namespace {

// Enough that one account's large file or slow listener does not stop the others.
constexpr std::size_t kFewestWorkers = 2;
constexpr std::size_t kMostWorkers = 4;

class EmbeddedEngine final : public Engine {
 public:
  explicit EmbeddedEngine(const EngineSetup& setup)
      : folder_(std::filesystem::absolute(account::ToPath(setup.options.data))),
        pool_(std::make_shared<account::WorkerPool>(std::clamp<std::size_t>(
            std::thread::hardware_concurrency(), kFewestWorkers, kMostWorkers))) {
    std::filesystem::create_directories(folder_.ServerStore().parent_path());
    std::filesystem::create_directories(folder_.MessageIds().parent_path());
    const auto clock =
        setup.clock ? setup.clock : [] { return base::Time::Now().ToMilliseconds(); };
    // First, because it holds the data folder against other engines.
    ids_ =
        std::make_shared<account::MessageIds>(folder_.MessageIds(), clock, pool_->First().runner);
    server_ = std::make_shared<embedded::EmbeddedServer>(
        embedded::ServerOptions{folder_.ServerStore(), setup.options.token_life_ms, setup.hash_cost,
                                std::chrono::milliseconds(setup.options.withdraw_limit_ms)});
    if (setup.options.demo && !server_->HasAccounts()) demo::Fill(folder_, *server_);
    const std::shared_ptr<link::ServerLink> link =
        setup.wrap_link ? setup.wrap_link(server_) : server_;
    account::Environment environment{
        link, ids_, folder_, setup.timeouts, account::DeviceName(folder_.DeviceName()), {}};
    for (const base::FilePath& folder : setup.options.send_from) {
      environment.send_from.push_back(account::ToPath(folder));
    }
    accounts_ = RefPtr(new account::AccountMgr(
        std::make_shared<const account::Environment>(std::move(environment)), pool_));
    GetKexCOM()->RegisterService(biz::IIMAccountMgr::kServiceId, accounts_.get());
  }

  ~EmbeddedEngine() override {
    GetKexCOM()->UnregisterService(biz::IIMAccountMgr::kServiceId);
    accounts_->Stop();
    pool_->Stop();
    server_->Stop();
    // Whoever keeps a conversation keeps no file open.
    ids_->Close();
  }

  bool CreateAccount(const biz::IMUserID& user, const std::wstring& password) override {
    return account::CanNameUser(user) &&
           server_->CreateAccount(account::WellFormed(user), password);
  }

  std::wstring IssueToken(const biz::IMUserID& user) override {
    return server_->IssueToken(account::WellFormed(user));
  }

  bool Publish(VirtualKind kind, const biz::IMUserID& from, const biz::IMUserID& to,
               const std::wstring& body) override {
    const bool known = kind == VirtualKind::kSystem || kind == VirtualKind::kSubscription;
    if (!known || !account::CanNameUser(from) || body.empty()) return false;
    link::Message message;
    message.msgid = ids_->Next();
    message.msgtime = base::Time::Now().ToMilliseconds();
    message.from = account::WellFormed(from);
    message.to = account::WellFormed(to);
    message.body = body;
    message.channel = static_cast<link::Channel>(static_cast<std::int32_t>(kind));
    return server_->Publish(message);
  }

 private:
  const account::DataFolder folder_;
  const std::shared_ptr<account::WorkerPool> pool_;
  std::shared_ptr<account::MessageIds> ids_;
  std::shared_ptr<embedded::EmbeddedServer> server_;
  RefPtr<account::AccountMgr> accounts_;
};

}  // namespace

std::unique_ptr<Engine> StartEngine(const EngineSetup& setup, std::string* error) {
  try {
    return std::make_unique<EmbeddedEngine>(setup);
  } catch (const std::exception& failure) {
    *error = failure.what();
    return nullptr;
  }
}

std::unique_ptr<Engine> StartEngine(const EngineOptions& options, std::string* error) {
  EngineSetup setup;
  setup.options = options;
  return StartEngine(setup, error);
}

}  // namespace imsdk
