#include <filesystem>
#include <stdexcept>
#include <utility>

#include "account/files/file_mgr.h"
#include "account/session/account_mgr.h"
#include "account/session/device_name.h"
#include "engine_setup.h"
#include "kexbase/time.h"
#include "kexcore/kexcom.h"

namespace imsdk {

namespace {

// An account has one of them at a time, whatever it does. Enough that some with large files, long
// searches or slow listeners leave one for the others.
constexpr std::size_t kWorkers = 8;

class AccountEngine final : public Engine {
 public:
  explicit AccountEngine(const EngineSetup& setup)
      : folder_(std::filesystem::absolute(account::ToPath(setup.options.data))),
        pool_(std::make_shared<account::WorkerPool>(kWorkers)) {
    std::filesystem::create_directories(folder_.MessageIds().parent_path());
    const auto clock =
        setup.clock ? setup.clock : [] { return base::Time::Now().ToMilliseconds(); };
    // First, because it holds the data folder against other engines.
    ids_ = std::make_shared<account::MessageIds>(
        sqlite::StorePlace{folder_.MessageIds(), folder_.MessageIdsRecord()}, clock,
        pool_->First().runner);
    if (ids_->loss() && setup.options.report) {
      setup.options.report(ids_->loss()->Text("the store of message numbers"));
    }
    std::shared_ptr<link::ServerLink> link = setup.options.link ? setup.options.link() : nullptr;
    if (!link) throw std::runtime_error("there is no link to a server");
    if (setup.wrap_link) link = setup.wrap_link(std::move(link));
    account::Environment environment{std::move(link),
                                     ids_,
                                     folder_,
                                     setup.timeouts,
                                     account::DeviceName(folder_.DeviceName()),
                                     {},
                                     setup.options.report};
    for (const base::FilePath& folder : setup.options.send_from) {
      environment.send_from.push_back(account::ToPath(folder));
    }
    const auto shared = std::make_shared<const account::Environment>(std::move(environment));
    accounts_ = RefPtr(new account::AccountMgr(shared, pool_));
    files_ = RefPtr(new account::FileMgr(shared, accounts_));
    GetKexCOM()->RegisterService(biz::IIMAccountMgr::kServiceId, accounts_.get());
    GetKexCOM()->RegisterService(biz::IIMFileMgr::kServiceId, files_.get());
  }

  ~AccountEngine() override {
    GetKexCOM()->UnregisterService(biz::IIMFileMgr::kServiceId);
    GetKexCOM()->UnregisterService(biz::IIMAccountMgr::kServiceId);
    accounts_->Stop();
    pool_->Stop();
    // Whoever keeps a conversation keeps no file open.
    ids_->Close();
  }

 private:
  const account::DataFolder folder_;
  const std::shared_ptr<account::WorkerPool> pool_;
  std::shared_ptr<account::MessageIds> ids_;
  RefPtr<account::AccountMgr> accounts_;
  RefPtr<account::FileMgr> files_;
};

}  // namespace

std::unique_ptr<Engine> StartEngine(const EngineSetup& setup, std::string* error) {
  try {
    return std::make_unique<AccountEngine>(setup);
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
