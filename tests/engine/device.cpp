#include "device.h"

#include <chrono>
#include <thread>

#include "account/session/device_name.h"
#include "kexbase/time.h"

namespace imsdk::test {

Device::Device(std::shared_ptr<link::ServerLink> server)
    : pool_(std::make_shared<account::WorkerPool>(1)) {
  const account::DataFolder data(folder_.path());
  std::filesystem::create_directories(data.MessageIds().parent_path());
  ids_ = std::make_shared<account::MessageIds>(
      data.MessageIds(), [] { return base::Time::Now().ToMilliseconds(); }, pool_->First().runner);
  accounts_ = RefPtr(
      new account::AccountMgr(std::make_shared<const account::Environment>(
                                  account::Environment{std::move(server),
                                                       ids_,
                                                       data,
                                                       QuickSetup(folder_.path()).timeouts,
                                                       account::DeviceName(data.DeviceName()),
                                                       {}}),
                              pool_));
}

Device::~Device() {
  accounts_->Stop();
  pool_->Stop();
  ids_->Close();
}

void Device::Login(const biz::IMUserID& user) {
  const auto login =
      Wait<biz::IMLoginResult>([&](auto done) { accounts_->LoginByPassword(user, L"pass", done); });
  ASSERT_TRUE(login.result.ok());
}

void Device::Logout(const biz::IMUserID& user) {
  EXPECT_TRUE(Done([&](auto done) { accounts_->Logout(user, done); }).ok());
}

void PeersTest::Begin() {
  setup_.wrap_link = [this](auto real) {
    server_ = real;
    return link_ = std::make_shared<FaultyLink>(real);
  };
  engine_ = Start(setup_);
  for (const auto& user : {kHarbor, kMariner}) {
    engine_->CreateAccount(user, L"pass");
    ASSERT_TRUE(test::Login(user).result.ok());
  }
}

void Eventually(const std::function<bool()>& holds, const char* what) {
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
  while (!holds()) {
    ASSERT_LT(std::chrono::steady_clock::now(), deadline) << what;
    std::this_thread::sleep_for(std::chrono::milliseconds(2));
  }
}

}  // namespace imsdk::test
