// The account's tribes as the bridge sees them.
#pragma once

#include <memory>
#include <utility>

#include "account/session/account_state.h"
#include "imsdk/biz/tribe_mgr.h"

namespace imsdk::account {

class TribeMgr final : public RefPtrCounted<biz::IIMTribeMgr> {
 public:
  explicit TribeMgr(std::shared_ptr<AccountState> state) : state_(std::move(state)) {}

  void GetAllClass(const biz::IMNothing& request,
                   biz::IMCallback<biz::IMTribeClasses> done) override;
  void SetTribeName(const biz::IMTribeText& request, biz::IMCallback<> done) override;

 private:
  const std::shared_ptr<AccountState> state_;
};

}  // namespace imsdk::account
