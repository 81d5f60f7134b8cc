// Another installation with accounts of one server.
#pragma once

#include <memory>

#include "account/session/account_mgr.h"
#include "engine_fixture.h"
#include "faulty_link.h"

namespace imsdk::test {

// Accounts, stores and files of its own. The server outlives it.
class Device {
 public:
  explicit Device(std::shared_ptr<link::ServerLink> server);
  ~Device();

  const RefPtr<account::AccountMgr>& accounts() const { return accounts_; }
  // Logs the account in or fails the test.
  void Login(const biz::IMUserID& user);
  void Logout(const biz::IMUserID& user);
  RefPtr<biz::IIMConversation> Chat(const biz::IMUserID& self, const biz::IMUserID& peer) {
    return test::Chat(self, peer, accounts_);
  }

 private:
  const TempFolder folder_;
  const std::shared_ptr<account::WorkerPool> pool_;
  std::shared_ptr<account::MessageIds> ids_;
  RefPtr<account::AccountMgr> accounts_;
};

// Two accounts on one engine, harbor and mariner, both logged in.
class PeersTest : public ServerTest {
 protected:
  const biz::IMUserID kHarbor = User(L"harbor");
  const biz::IMUserID kMariner = User(L"mariner");

  void SetUp() override;
  // Starts the engine anew and logs both in.
  void Again();

  std::shared_ptr<FaultyLink> link_;
};

}  // namespace imsdk::test
