#include "device.h"

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
  const auto login = Answer<biz::IMLoginGrant>([&](auto done) {
    accounts_->LoginByPassword({user, L"pass"}, done);
  });
  ASSERT_TRUE(login.first.ok());
}

void Device::Logout(const biz::IMUserID& user) {
  EXPECT_TRUE(Done([&](auto done) { accounts_->Logout({user}, done); }).ok());
}

void PeersTest::SetUp() {
  setup_.wrap_link = [this](auto real) { return link_ = std::make_shared<FaultyLink>(real); };
  ServerTest::SetUp();
  for (const auto& user : {kHarbor, kMariner}) CreateAccount(user);
  Again();
}

void PeersTest::Again() {
  Begin();
  for (const auto& user : {kHarbor, kMariner}) ASSERT_TRUE(test::Login(user).result.ok());
}

}  // namespace imsdk::test
