// One logged-in account as its conversations use it.
#pragma once

#include <memory>

#include "account/account_state.h"
#include "account/outbox.h"
#include "account/reporter.h"
#include "account/roamer.h"

namespace imsdk::account {

struct AccountParts {
  std::shared_ptr<AccountState> state;
  std::shared_ptr<Outbox> outbox;
  std::shared_ptr<Roamer> roamer;
  std::shared_ptr<Reporter> reporter;
};

}  // namespace imsdk::account
