// The files of all accounts as the bridge and the host ask for them.
#pragma once

#include <utility>

#include "account/session/account_mgr.h"
#include "imsdk/biz/files.h"

namespace imsdk::account {

class FileMgr final : public RefPtrCounted<biz::IIMFileMgr> {
 public:
  FileMgr(std::shared_ptr<const Environment> environment, RefPtr<AccountMgr> accounts)
      : environment_(std::move(environment)), accounts_(std::move(accounts)) {}

  void Fetch(const biz::IMFileRequest& request, biz::IMCallback<> done) override;

 private:
  const std::shared_ptr<const Environment> environment_;
  const RefPtr<AccountMgr> accounts_;
};

}  // namespace imsdk::account
