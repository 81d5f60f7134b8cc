// One logged-in account as its conversations use it.
#pragma once

#include <memory>

#include "account/contacts/contact_book.h"
#include "account/conversations/mentions.h"
#include "account/conversations/reporter.h"
#include "account/conversations/roamer.h"
#include "account/files/courier.h"
#include "account/files/transfers.h"
#include "account/sending/outbox.h"
#include "account/session/account_state.h"
#include "account/tribes/tribe_book.h"

namespace imsdk::account {

struct AccountParts {
  std::shared_ptr<AccountState> state;
  std::shared_ptr<Outbox> outbox;
  std::shared_ptr<Roamer> roamer;
  std::shared_ptr<Reporter> reporter;
  std::shared_ptr<Mentions> mentions;
  std::shared_ptr<Courier> courier;
  std::shared_ptr<TribeBook> tribes;
  std::shared_ptr<Transfers> transfers;
  std::shared_ptr<ContactBook> contacts;
};

}  // namespace imsdk::account
